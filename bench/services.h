#ifndef VISCACAM_BENCH_SERVICES_H
#define VISCACAM_BENCH_SERVICES_H

/*
 * The leanest host: its queues are rings with a mutex and an eventfd, its port one descriptor, its log is
 * off. So what is measured is the library. The queue stands here for the bare model too, which is built of
 * the same parts.
 */

#include <cstdint>
#include <string>

#include <pthread.h>

namespace bench {

class Queue {
  public:
    static constexpr uint32_t ELEMENT = 20;
    static constexpr uint32_t CAPACITY = 256;

    Queue();
    bool put(const void *element);
    void *take(); /* null when empty; the element stays until the next take */
    bool empty();
    int readFd() const { return m_fd; }
    /* Elements put so far. */
    uint64_t puts() const { return m_puts; }
    /* From now on every element is gone as soon as it is in and its reader has been woken; one after the
     * other, they are shown to this function. */
    void sink(void (*show)(const void *element) = nullptr) {
        m_show = show;
        m_sink = true;
    }

  private:
    pthread_mutex_t m_lock = PTHREAD_MUTEX_INITIALIZER;
    int m_fd;
    bool m_sink = false;
    void (*m_show)(const void *element) = nullptr;
    uint64_t m_puts = 0;
    uint32_t m_head = 0;
    uint32_t m_count = 0;
    uint8_t m_ring[CAPACITY][ELEMENT] = {};
    uint8_t m_taken[ELEMENT] = {};
};

/* What port 0 is, and which module is on it. Set before the library starts. */
void serve(const std::string &device, uint32_t moduleType);

/* The queues that the library uses. */
Queue &commandQueue();

/* Where log lines go: nowhere, or to a descriptor. */
void logTo(int fd);

/* Lines at INFO and above since the start, whether they go anywhere or not. */
uint64_t logLines();

} // namespace bench

#endif
