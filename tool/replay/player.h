#ifndef VISCACAM_TOOL_REPLAY_PLAYER_H
#define VISCACAM_TOOL_REPLAY_PLAYER_H

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "decode/capture.h"

namespace tool {

/*
 * A capture played as the camera of it: waits for each packet that the host of the capture sent, then sends
 * what the camera sent behind it, as long after it as then. Has no line and no clock of its own.
 *
 * A host that sends something else is told apart by packets. If its packet comes a little later in the
 * capture, the capture goes on there; else it gets no answer. Both are complaints.
 */
class Player {
  public:
    using Clock = std::chrono::steady_clock;

    /* fullSpeed: without the delays. complain: is told each mismatch as a line of text. */
    Player(const decode::Capture &capture, bool fullSpeed, std::function<void(const std::string &)> complain);

    /* The host opened its end: what the camera sent by itself counts from here. The first call does it. */
    void begin(Clock::time_point now);

    /* Bytes from the host, which has set this rate; 0 when it is not known. */
    void take(Clock::time_point now, unsigned baud, const decode::Bytes &bytes);

    /* When something is to be sent; nothing while the host's turn it is. */
    std::optional<Clock::time_point> due() const;

    /* What is to be sent now; empty when nothing is. */
    decode::Bytes next(Clock::time_point now);

    bool isOver() const { return m_next == m_steps.size(); }
    size_t mismatches() const { return m_mismatches; }
    /* Packets to the camera in the capture. */
    size_t packets() const;

  private:
    struct Step {
        decode::Direction direction;
        decode::Microseconds time;
        unsigned baud; /* that the line had; 0 when not known */
        decode::Bytes bytes;
    };

    static std::vector<Step> stepsOf(const decode::Capture &capture);
    void match(Clock::time_point now);
    void mismatch(const Step &packet, Clock::time_point now);
    bool isSame(const Step &expected, const Step &packet) const;
    std::optional<size_t> findAhead(const Step &packet) const;
    void passed(size_t step, Clock::time_point now);
    void say(const std::string &text);

    const std::vector<Step> m_steps;
    const bool m_fullSpeed;
    const std::function<void(const std::string &)> m_complain;
    decode::Splitter m_splitter{decode::Direction::ToCamera};
    std::deque<Step> m_heard; /* packets of the host that had no turn yet */
    size_t m_next = 0;
    bool m_begun = false;
    Clock::time_point m_base{};         /* when what the next delay counts from happened, */
    decode::Microseconds m_recorded{0}; /* and when in the capture */
    size_t m_mismatches = 0;
};

} // namespace tool

#endif
