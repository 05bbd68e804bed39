#include "sim/line.h"

#include <algorithm>

namespace sim {

namespace {

constexpr int BITS_PER_BYTE = 10; // start, eight data, stop
constexpr size_t MOST_QUEUED = 4u << 20;
constexpr int PORT_BUFFER = 4096; // bytes that a serial port takes from the host before they are on the line

} // namespace

Clock::duration Line::byteTime(unsigned baud) const {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(BITS_PER_BYTE / (baud * m_scale)));
}

Line::Span Line::received(Clock::time_point now, unsigned baud) {
    if (!m_paced)
        return {now, now};
    const Clock::time_point begin = std::max(now, m_inFree);
    m_inFree = begin + byteTime(baud);
    return {begin, m_inFree};
}

Clock::time_point Line::portFullUntil(unsigned baud) const {
    return m_inFree - PORT_BUFFER * byteTime(baud);
}

void Line::send(const Sending &sending, Clock::time_point now, unsigned baud) {
    if (!m_pty.isOpen() || m_out.size() > MOST_QUEUED)
        return;
    const size_t first = m_out.size();
    m_outFree = std::max(now, m_outFree);
    for (size_t i = 0; i < sending.bytes.size(); ++i) {
        if (m_paced)
            m_outFree += byteTime(baud);
        m_out.push_back({m_outFree, sending.bytes[i]});
        if (sending.gap > Clock::duration::zero() && i == sending.gapAfter)
            m_outFree += sending.gap;
    }
    if (sending.burst) {
        for (size_t i = first; i < m_out.size(); ++i)
            m_out[i].due = m_outFree;
    }
    Bytes shown = sending.bytes;
    shown.resize(std::min(shown.size(), sending.shown));
    m_marks.push_back({m_outFree, Direction::toHost, shown, sending.text});
}

std::optional<Clock::time_point> Line::next() const {
    if (m_blocked)
        return std::nullopt;
    if (!m_out.empty())
        return m_out.front().due;
    return m_marks.empty() ? std::nullopt : std::optional(m_marks.front().time);
}

std::vector<TraceEvent> Line::write(Clock::time_point now, unsigned baud) {
    Bytes due;
    while (!m_out.empty() && m_out.front().due <= now) {
        due.push_back(m_out.front().byte);
        m_out.pop_front();
    }
    if (!due.empty())
        put(std::move(due), baud);
    std::vector<TraceEvent> gone;
    while (!m_blocked && !m_marks.empty() && m_marks.front().time <= now) {
        gone.push_back(std::move(m_marks.front()));
        m_marks.pop_front();
    }
    return gone;
}

/*
 * A real line does not wait for a host that does not read: what the port cannot hold is lost. At full speed
 * there is no line whose time would run out, and the camera waits.
 */
void Line::put(Bytes bytes, unsigned baud) {
    if (m_pty.hostBaud() != baud) {
        for (uint8_t &byte : bytes)
            byte = static_cast<uint8_t>(byte ^ (1 + m_garble.below(0xFF))); // never by chance as it was
    }
    const size_t taken = m_pty.write(bytes.data(), bytes.size());
    if (taken == bytes.size())
        return;
    if (m_paced) {
        m_lost += bytes.size() - taken;
        return;
    }
    m_blocked = true;
    for (size_t i = bytes.size(); i > taken; --i)
        m_out.push_front({Clock::time_point(), bytes[i - 1]});
}

void Line::clear() {
    m_out.clear();
    m_marks.clear();
    m_blocked = false;
}

} // namespace sim
