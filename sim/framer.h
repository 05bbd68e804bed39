#ifndef VISCACAM_SIM_FRAMER_H
#define VISCACAM_SIM_FRAMER_H

#include "sim/sim.h"

#include <optional>

namespace sim {

constexpr size_t LONGEST_PACKET = 16;

/* Bytes between a header (0x80 to 0x8F and so on: bit 7 set) and the terminator 0xFF, both included; or an AF
   debug packet. */
struct Packet {
    Bytes bytes; /* of a packet that is too long, the first LONGEST_PACKET */
    size_t length = 0;
    bool afDebug = false;    /* whole whatever its length, see af_debug.h */
    Clock::time_point begin; /* of its first byte on the line */
    Clock::time_point end;   /* of its last byte */

    bool tooLong() const { return !afDebug && length > LONGEST_PACKET; }
};

/* Cuts the byte stream into packets. Bytes that belong to none (no header yet, a lone 0xFF) are collected as
 * junk. */
class Framer {
  public:
    /* header: a byte below 0x80 that begins a packet too; 0: there is none. afDebug: such packets are known.
     */
    explicit Framer(uint8_t header = 0, bool afDebug = false) : m_header(header), m_afDebug(afDebug) {}
    /* begin and end: when this byte was on the line. The packet that it completes, if it does. */
    std::optional<Packet> push(uint8_t byte, Clock::time_point begin, Clock::time_point end);
    /* The junk since the last call. */
    Bytes takeJunk();
    void reset();
    bool insidePacket() const { return m_packet.length > 0; }
    /* Inside an AF debug packet, which no terminator ends if bytes are missing. */
    bool insideAfDebug() const { return m_packet.afDebug; }
    /* The packet that has begun will not be whole: it is junk. */
    void abandon();

  private:
    bool begins(uint8_t byte) const;
    bool ends(uint8_t byte) const;

    uint8_t m_header;
    bool m_afDebug;
    Packet m_packet;
    Bytes m_junk;
};

} // namespace sim

#endif
