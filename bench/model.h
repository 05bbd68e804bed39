#ifndef VISCACAM_BENCH_MODEL_H
#define VISCACAM_BENCH_MODEL_H

/*
 * What no library with these threads can be faster than: a thread that waits for the line with select() and
 * reads byte by byte, with the gap wait before each byte of a reply, and hands a reply over through a queue
 * with an eventfd; a caller that writes its question and waits for that queue with select(); a second thread
 * that writes a command when the last one's result has come. Nothing is checked, logged or looked up.
 */

#include <cstdint>
#include <string>

#include "bench/services.h"

namespace bench {

class Model {
  public:
    explicit Model(const std::string &device); /* starts its threads, which never end */

    /* Ask and wait for the answer, as one inquiry of the library does. */
    void ask();
    /* Queue a command; the sender's thread writes it. */
    void command();

  private:
    void receive();
    void send();
    void collect(uint8_t *reply, uint32_t *length) const;

    int m_port;
    Queue m_commands;
    Queue m_results;
    Queue m_answers;
};

} // namespace bench

#endif
