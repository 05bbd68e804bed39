#ifndef VISCACAM_BENCH_LOOP_H
#define VISCACAM_BENCH_LOOP_H

/*
 * What a program pays that does nothing but ask, in one thread: it writes its question, waits with poll() and
 * reads the whole answer at once. It can neither send a command meanwhile nor hear what comes unasked.
 */

#include <string>

namespace bench {

class Loop {
  public:
    explicit Loop(const std::string &device); /* stays open */

    /* Ask and wait for the answer. Throws std::runtime_error. */
    void ask() const;

  private:
    int m_port;
};

} // namespace bench

#endif
