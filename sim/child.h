#ifndef VISCACAM_SIM_CHILD_H
#define VISCACAM_SIM_CHILD_H

#include "sim/sim.h"

#include <sys/types.h>

namespace sim {

/*
 * A program that runs beside the camera, in a process group of its own. Its standard input and output are one
 * end of a socket, the other end is here and never blocks.
 */
class Child {
  public:
    /* The program, found along PATH, and its arguments. Throws std::runtime_error if it cannot be started. */
    explicit Child(const std::vector<std::string> &command);
    /* Kills it and what it has started. */
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    int descriptor() const { return m_socket; }
    /* What it has written since the last call. */
    Bytes read();
    /* What it does not take is lost, as in a port whose program does not read. */
    void write(const Bytes &bytes) const;
    /* Whether a read() has found that it has closed its end. */
    bool over() const { return m_over; }
    /* Its exit status is 0. Waits for its exit, so only when it is over. */
    bool succeeded();

  private:
    void spawn(const std::vector<std::string> &command, int socket);
    int reap();

    int m_socket = -1;
    pid_t m_process = -1;
    bool m_over = false;
};

/* Run a program to its end, at most a few seconds. Whether it could be started and succeeded. */
bool runToEnd(const std::vector<std::string> &command);

} // namespace sim

#endif
