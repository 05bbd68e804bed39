#ifndef VISCACAM_TOOL_CTL_INTERRUPT_H
#define VISCACAM_TOOL_CTL_INTERRUPT_H

#include <chrono>
#include <stdexcept>

#include <atomic>

namespace tool::ctl {

/* Ctrl-C was pressed during work that can be broken off, and it was. */
struct Interrupted : std::runtime_error {
    Interrupted() : std::runtime_error("interrupted") {}
};

/*
 * Brings a Ctrl-C from the thread that waits for signals to the one that works. Work that can be broken off
 * says so by a Scope; outside of one a Ctrl-C is not taken.
 */
class Interrupt {
  public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt &) = delete;
    Interrupt &operator=(const Interrupt &) = delete;

    class Scope {
      public:
        explicit Scope(Interrupt &interrupt) : m_interrupt(interrupt) { ++m_interrupt.m_scopes; }
        ~Scope() { --m_interrupt.m_scopes; }
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

      private:
        Interrupt &m_interrupt;
    };

    /* Any thread. False when nothing can be broken off, and when the one before has not been taken yet. */
    bool raise();
    /* Wait for a time, or for a Ctrl-C. True when it came; it is then forgotten. In a Scope. */
    bool wait(std::chrono::milliseconds time);
    /* Readable when a Ctrl-C came. */
    int descriptor() const { return m_fd; }
    /* Forget one that came. Returns whether there was one. */
    bool take();

  private:
    std::atomic<int> m_scopes{0};
    std::atomic<bool> m_pending{false};
    int m_fd;
};

} // namespace tool::ctl

#endif
