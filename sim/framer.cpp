#include "sim/framer.h"

#include "sim/af_debug.h"

#include <utility>

namespace sim {

bool Framer::begins(uint8_t byte) const {
    return (byte >= 0x80 && byte != 0xFF) || (m_header != 0 && byte == m_header);
}

bool Framer::ends(uint8_t byte) const {
    return m_packet.afDebug ? afDebugSize(m_packet.bytes) == m_packet.length : byte == 0xFF;
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
    if (m_packet.afDebug || m_packet.bytes.size() < LONGEST_PACKET)
        m_packet.bytes.push_back(byte);
    m_packet.afDebug = m_afDebug && isAfDebug(m_packet.bytes);
    if (!ends(byte))
        return std::nullopt;
    m_packet.end = end;
    return std::exchange(m_packet, Packet());
}

void Framer::abandon() {
    const Packet packet = std::exchange(m_packet, Packet());
    m_junk.insert(m_junk.end(), packet.bytes.begin(), packet.bytes.end());
}

Bytes Framer::takeJunk() {
    return std::exchange(m_junk, Bytes());
}

void Framer::reset() {
    m_packet = Packet();
    m_junk.clear();
}

} // namespace sim
