#ifndef VISCACAM_SIM_XMODEM_BLOCKS_H
#define VISCACAM_SIM_XMODEM_BLOCKS_H

#include <cstddef>
#include <cstdint>

namespace sim {

/*
 * Follows an XMODEM transfer from beside the line, to know where its blocks end:
 *
 *   01  number  255-number  128 bytes   checksum, or CRC of two bytes
 *   02  number  255-number  1024 bytes  the same
 *
 * The receiver decides between the two by what it begins with, NAK or 'C'. Only one side speaks at a time, so
 * an answer of the receiver also ends a block that lost a byte on its way.
 */
class XmodemBlocks {
  public:
    /* A byte of the sender. Whether a block ends with it. */
    bool fromSender(uint8_t byte);
    /* A byte of the receiver. */
    void fromReceiver(uint8_t byte);
    /* Blocks so far, repeated ones too. */
    unsigned long count() const { return m_count; }

  private:
    size_t m_left = 0; /* bytes of this block to come */
    bool m_crc = false;
    unsigned long m_count = 0;
};

} // namespace sim

#endif
