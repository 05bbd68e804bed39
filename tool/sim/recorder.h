#ifndef VISCACAM_TOOL_SIM_RECORDER_H
#define VISCACAM_TOOL_SIM_RECORDER_H

#include <chrono>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "decode/decode.h"
#include "sim/sim.h"
#include "tool/sim/screen.h"

namespace tool {

/* Remembers the last things that happened on the line of one camera, in words. Any thread. */
class Recorder {
  public:
    /* Times are shown from then on. */
    explicit Recorder(sim::Clock::time_point start) : m_start(start) {}

    void record(const sim::TraceEvent &event);
    /* The last ones, the latest at the end, at most so many. */
    std::vector<Row> last(size_t count) const;

  private:
    Row packetRow(const sim::TraceEvent &event);

    const sim::Clock::time_point m_start;
    mutable std::mutex m_mutex;
    decode::Conversation m_conversation;
    decode::Microseconds m_latest{0};
    std::deque<Row> m_rows;
};

} // namespace tool

#endif
