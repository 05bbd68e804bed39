/**
 * @file command.h
 * The viscacam command in a process of its own, for a test that plays its user.
 */
#ifndef VISCACAM_E2E_COMMAND_H
#define VISCACAM_E2E_COMMAND_H

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

namespace e2e {

/** Patience of a test: passed only when something is broken. */
constexpr std::chrono::seconds kPatience{60};

/** How the command is run. */
struct Setting {
    bool terminal = false; ///< standard input, output and error are a terminal instead of pipes
    bool asNobody = false; ///< without root's rights, when the test has them
    std::string preload;   ///< a library that is loaded before all others
};

/** One run. It is told to end at the end of its scope if it still runs; a sanitizer's report fails the test.
 */
class Command {
  public:
    explicit Command(const std::vector<std::string> &arguments, const Setting &setting = Setting());
    ~Command();
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    /** Wait for a line of standard output that holds a text, behind the one that was waited for last. Returns
     * it without newline; empty when it never came. */
    std::string waitFor(const std::string &text);
    /** Wait until the output ends with a text that has no newline: a prompt. */
    void waitForPrompt(const std::string &text);
    /** Wait for the end. Returns the exit status, or the negative number of the signal that ended it. */
    int finish();

    /** What was printed so far; on a terminal standard error is part of out(). */
    const std::string &out() const { return m_out; }
    const std::string &err() const { return m_err; }

    void send(int signal);
    /** Type a text, on the terminal or into standard input. */
    void type(const std::string &text);
    void closeInput();
    /** Nobody reads standard output any more. */
    void closeOutput();
    pid_t pid() const { return m_pid; }

  private:
    void start(const std::vector<std::string> &arguments, const Setting &setting);
    bool pump(std::chrono::milliseconds limit);

    pid_t m_pid = -1;
    int m_input = -1;
    int m_output = -1;
    int m_error = -1;
    bool m_ended = false;
    int m_status = 0;
    std::string m_out;
    size_t m_waitedFor = 0; // lines of m_out
    std::string m_err;
};

/** The lines of a text, without newlines and carriage returns. */
std::vector<std::string> linesOf(const std::string &text);

/** A name for a file of this test in the folder for temporary files; the file does not exist. */
std::string temporaryPath(const std::string &what);

} // namespace e2e

#endif
