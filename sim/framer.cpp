#include "sim/framer.h"

#include <utility>

namespace sim {

bool Framer::begins(uint8_t byte) const {
    return (byte >= 0x80 && byte != 0xFF) || (m_header != 0 && byte == m_header);
}

std::optional<Packet> Framer::push(uint8_t byte, Clock::time_point begin, Clock::time_point end) {
    if (!insidePacket()) {
        if (!begins(byte)) {
            m_junk.push_back(byte);
            return std::nullopt;
        }
        m_packet.begin = begin;
    }
    ++m_packet.length;
    if (m_packet.bytes.size() < LONGEST_PACKET)
        m_packet.bytes.push_back(byte);
    if (byte != 0xFF)
        return std::nullopt;
    m_packet.end = end;
    return std::exchange(m_packet, Packet());
}

Bytes Framer::takeJunk() {
    return std::exchange(m_junk, Bytes());
}

void Framer::reset() {
    m_packet = Packet();
    m_junk.clear();
}

} // namespace sim
