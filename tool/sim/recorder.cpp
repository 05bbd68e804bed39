#include "tool/sim/recorder.h"

#include <algorithm>
#include <cstdio>

#include "decode/trace.h"

namespace tool {

namespace {

constexpr size_t MOST_ROWS = 500;
constexpr size_t BYTE_COLUMNS = 9;

} // namespace

void Recorder::record(const sim::TraceEvent &event) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (event.direction == sim::Direction::remark) {
        char stamp[32];
        const std::chrono::duration<double, std::milli> since = event.time - m_start;
        std::snprintf(stamp, sizeof stamp, "%9.1f ms  ", std::max(since.count(), 0.0));
        m_rows.push_back({{stamp + event.text, Style::dim}});
    } else {
        m_rows.push_back(packetRow(event));
    }
    if (m_rows.size() > MOST_ROWS)
        m_rows.pop_front();
}

Row Recorder::packetRow(const sim::TraceEvent &event) {
    const auto direction = event.direction == sim::Direction::toCamera ? decode::Direction::ToCamera
                                                                       : decode::Direction::FromCamera;
    const auto since = std::chrono::duration_cast<decode::Microseconds>(event.time - m_start);
    m_latest = std::max(m_latest, since);
    const decode::Meaning meaning = m_conversation.Next(direction, m_latest, event.bytes);
    const bool trouble =
        meaning.surprise || meaning.kind == decode::Kind::Error || meaning.kind == decode::Kind::Noise;
    const std::string note = event.text.empty() ? "" : " [" + event.text + "]";
    const std::string line = decode::TraceLine(since, direction, event.bytes.data(), event.bytes.size(),
                                               meaning.text + note, BYTE_COLUMNS);
    return {{line, trouble ? Style::warning : Style::plain}};
}

std::vector<Row> Recorder::last(size_t count) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const size_t skipped = m_rows.size() - std::min(count, m_rows.size());
    return {m_rows.begin() + static_cast<std::ptrdiff_t>(skipped), m_rows.end()};
}

} // namespace tool
