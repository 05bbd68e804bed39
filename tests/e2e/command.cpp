#include "tests/e2e/command.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace e2e {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr uid_t kNobody = 65534;

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
};

Pipe makePipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    return {ends[0], ends[1]};
}

// The program is opened before root's rights go: whoever has none may not reach the folder of the build.
[[noreturn]] void become(int program, char *const *arguments, const Setting &setting) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
    if (!setting.preload.empty())
        setenv("LD_PRELOAD", setting.preload.c_str(), 1);
    if (setting.asNobody && geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0))
        _exit(126);
    fexecve(program, arguments, environ);
    _exit(127);
}

void closeFd(int &fd) {
    if (fd >= 0)
        close(fd);
    fd = -1;
}

// False at the end of what there is to read.
bool readInto(int fd, std::string &text) {
    char bytes[4096];
    const ssize_t count = read(fd, bytes, sizeof bytes);
    if (count > 0)
        text.append(bytes, static_cast<size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

} // namespace

Command::Command(const std::vector<std::string> &arguments, const Setting &setting) {
    start(arguments, setting);
}

Command::~Command() {
    if (!m_ended) {
        kill(m_pid, SIGTERM); // a simulated camera then removes its link
        finish();
    }
    for (int *fd : {&m_input, &m_output, &m_error})
        closeFd(*fd);
    EXPECT_EQ((m_out + m_err).find("Sanitizer"), std::string::npos) << m_out << m_err;
}

void Command::start(const std::vector<std::string> &arguments, const Setting &setting) {
    std::vector<char *> words = {const_cast<char *>("viscacam")};
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);
    const int program = open(VISCACAM_COMMAND, O_RDONLY | O_CLOEXEC);
    if (setting.terminal) {
        m_pid = forkpty(&m_output, nullptr, nullptr, nullptr);
        if (m_pid == 0)
            become(program, words.data(), setting);
        fcntl(m_output, F_SETFD, FD_CLOEXEC);
        m_input = fcntl(m_output, F_DUPFD_CLOEXEC, 0);
    } else {
        const Pipe input = makePipe();
        const Pipe output = makePipe();
        const Pipe error = makePipe();
        m_pid = fork();
        if (m_pid == 0) {
            dup2(input.readEnd, STDIN_FILENO);
            dup2(output.writeEnd, STDOUT_FILENO);
            dup2(error.writeEnd, STDERR_FILENO);
            become(program, words.data(), setting);
        }
        for (const int childs : {input.readEnd, output.writeEnd, error.writeEnd})
            close(childs);
        m_input = input.writeEnd;
        m_output = output.readEnd;
        m_error = error.readEnd;
    }
    close(program);
    EXPECT_GT(m_pid, 0);
}

// Takes what was printed; false when nothing can come any more, or nothing came in time.
bool Command::pump(milliseconds limit) {
    pollfd sources[] = {{m_output, POLLIN, 0}, {m_error, POLLIN, 0}};
    if (m_output < 0 && m_error < 0)
        return false;
    if (poll(sources, 2, static_cast<int>(limit.count())) <= 0)
        return false;
    if (sources[0].revents != 0 && !readInto(m_output, m_out))
        closeFd(m_output);
    if (sources[1].revents != 0 && !readInto(m_error, m_err))
        closeFd(m_error);
    return true;
}

std::string Command::waitFor(const std::string &text) {
    const Clock::time_point end = Clock::now() + kPatience;
    for (;;) {
        const std::vector<std::string> lines = linesOf(m_out.substr(0, m_out.rfind('\n') + 1));
        while (m_waitedFor < lines.size()) {
            const std::string &line = lines[m_waitedFor++];
            if (line.find(text) != std::string::npos)
                return line;
        }
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (left.count() <= 0 || !pump(left)) {
            ADD_FAILURE() << "\"" << text << "\" was never printed, but:\n" << m_out << m_err;
            return "";
        }
    }
}

void Command::waitForPrompt(const std::string &text) {
    const Clock::time_point end = Clock::now() + kPatience;
    while (m_out.size() < text.size() || m_out.compare(m_out.size() - text.size(), text.size(), text) != 0) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (left.count() <= 0 || !pump(left)) {
            ADD_FAILURE() << "no prompt \"" << text << "\" behind:\n" << m_out << m_err;
            return;
        }
    }
}

int Command::finish() {
    const Clock::time_point end = Clock::now() + kPatience;
    while (Clock::now() < end && pump(std::chrono::duration_cast<milliseconds>(end - Clock::now()))) {}
    if (Clock::now() >= end) {
        ADD_FAILURE() << "the command does not end:\n" << m_out << m_err;
        kill(m_pid, SIGKILL);
    }
    int status = 0;
    if (!m_ended && waitpid(m_pid, &status, 0) == m_pid) {
        m_ended = true;
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    return m_status;
}

void Command::send(int signal) {
    EXPECT_EQ(kill(m_pid, signal), 0);
}

void Command::type(const std::string &text) {
    EXPECT_EQ(write(m_input, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void Command::closeInput() {
    closeFd(m_input);
}

void Command::closeOutput() {
    closeFd(m_output);
}

std::vector<std::string> linesOf(const std::string &text) {
    std::vector<std::string> lines;
    std::string line;
    for (const char c : text) {
        if (c == '\n') {
            lines.push_back(line);
            line.clear();
        } else if (c != '\r') {
            line += c;
        }
    }
    if (!line.empty())
        lines.push_back(line);
    return lines;
}

std::string temporaryPath(const std::string &what) {
    const std::string path = ::testing::TempDir() + "viscacam-e2e-" + std::to_string(getpid()) + "-" + what;
    unlink(path.c_str());
    return path;
}

} // namespace e2e
