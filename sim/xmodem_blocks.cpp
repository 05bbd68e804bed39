#include "sim/xmodem_blocks.h"

namespace sim {

namespace {

constexpr uint8_t SHORT_BLOCK = 0x01;
constexpr uint8_t LONG_BLOCK = 0x02;
constexpr uint8_t REFUSED = 0x15;
constexpr uint8_t CRC_WANTED = 'C';
constexpr size_t NUMBERS = 2;

} // namespace

bool XmodemBlocks::fromSender(uint8_t byte) {
    if (m_left > 0) {
        const bool ends = --m_left == 0;
        m_count += ends ? 1 : 0;
        return ends;
    }
    if (byte == SHORT_BLOCK || byte == LONG_BLOCK)
        m_left = NUMBERS + (byte == LONG_BLOCK ? 1024 : 128) + (m_crc ? 2 : 1);
    return false;
}

void XmodemBlocks::fromReceiver(uint8_t byte) {
    m_left = 0;
    if (m_count == 0 && (byte == CRC_WANTED || byte == REFUSED))
        m_crc = byte == CRC_WANTED;
}

} // namespace sim
