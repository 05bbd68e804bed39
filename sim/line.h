#ifndef VISCACAM_SIM_LINE_H
#define VISCACAM_SIM_LINE_H

#include "sim/faults.h"
#include "sim/pty.h"
#include "sim/random.h"
#include "sim/sim.h"

#include <cstdint>
#include <deque>
#include <optional>

namespace sim {

/*
 * The serial line as the camera has it: when each byte is on the wire, in both directions, and what a wrong
 * rate makes of it. A pty carries bytes in no time and knows no rate; both are added here.
 */
class Line {
  public:
    Line(Pty &pty, const Options &options)
        : m_pty(pty), m_paced(options.paced), m_scale(options.timeScale), m_garble(options.seed) {}

    /* One byte that has just been read: when it began and ended on the wire. */
    struct Span {
        Clock::time_point begin;
        Clock::time_point end;
    };
    Span received(Clock::time_point now, unsigned baud);
    /* Until when the host's port is full: bytes go out of it at the line's rate, however fast they are
     * written. The past: it has room. */
    Clock::time_point portFullUntil(unsigned baud) const;

    /* How bytes leave. gapAfter: index of the byte behind which the line pauses. */
    struct Sending {
        Bytes bytes;
        std::string text; /* for the trace, as the number of bytes that it shows */
        size_t shown = SIZE_MAX;
        size_t gapAfter = 0;
        Clock::duration gap{0};
        bool burst = false; /* all bytes at the time of the last */
    };
    void send(const Sending &sending, Clock::time_point now, unsigned baud);
    /* The next time at which write() has something to do. */
    std::optional<Clock::time_point> next() const;
    /* Put out what is due. Returns what has left as a whole. */
    std::vector<TraceEvent> write(Clock::time_point now, unsigned baud);
    /* The host does not read and the camera is to wait for it. */
    bool blocked() const { return m_blocked; }
    void unblock() { m_blocked = false; }
    bool idle() const { return m_out.empty(); }
    /* What is sent now begins at once. */
    bool isFree(Clock::time_point now) const { return m_outFree <= now && !m_blocked; }
    void clear();
    Clock::duration byteTime(unsigned baud) const;
    unsigned long lostBytes() const { return m_lost; }

  private:
    struct Outgoing {
        Clock::time_point due;
        uint8_t byte;
    };
    void put(Bytes bytes, unsigned baud);

    Pty &m_pty;
    bool m_paced;
    double m_scale;
    Random m_garble;
    Clock::time_point m_inFree{};
    Clock::time_point m_outFree{};
    std::deque<Outgoing> m_out;
    std::deque<TraceEvent> m_marks;
    bool m_blocked = false;
    unsigned long m_lost = 0;
};

} // namespace sim

#endif
