#ifndef VISCACAM_BENCH_LINE_H
#define VISCACAM_BENCH_LINE_H

/*
 * A pseudo-terminal with a camera at its other end that thinks for no time at all: a process of its own that
 * answers each packet as soon as its 0xFF has been read. An inquiry is answered by 90 50 00 00 00 00 FF, the
 * power inquiry by 90 50 02 FF, a command by acknowledgement and completion in one write.
 */

#include <string>
#include <vector>

#include <sys/types.h>

namespace bench {

class Line {
  public:
    Line(); /* throws std::runtime_error */
    ~Line();
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;
    const std::string &path() const { return m_path; }
    /* Seconds from each completion to the first byte of the next command, the latest ones. */
    std::vector<double> turnarounds() const;
    /* Commands that were completed. */
    size_t commands() const;

    struct Record; /* shared with the camera's process */

  private:
    std::string m_path;
    int m_slave = -1; /* keeps the line up while nobody else has it open */
    pid_t m_camera = -1;
    Record *m_record;
};

/* A new pseudo-terminal: returns its master, and in path the device that others open. Throws
 * std::runtime_error. */
int newTerminal(std::string &path);

/* Open a line as the library's hosts do: raw, blocking, one byte at least. Negative when refused. */
int openLine(const std::string &path);

} // namespace bench

#endif
