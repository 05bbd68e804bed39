// Building and sending in one line: the payload is everything between the header, which is put in front, and
// the terminator, which the queue or the inquiry appends.
#ifndef VISCACAM_VISCA_QUE_COMMAND_H
#define VISCACAM_VISCA_QUE_COMMAND_H

#include <stdint.h>

#include "viscacam.h"

namespace viscacam {

constexpr uint32_t VISCA_PKT_MAX = 16;
constexpr uint8_t VISCA_TERMINATOR = 0xFF;
constexpr uint32_t VISCA_PAYLOAD_MAX = VISCA_PKT_MAX - 2; // header and terminator

// Digit ulIndex (0 the lowest) of a value that travels one nibble a byte.
constexpr uint8_t Nibble(uint32_t ulValue, uint32_t ulIndex) {
    return static_cast<uint8_t>((ulValue >> (4U * ulIndex)) & 0x0FU);
}

// Four reply bytes from ulFirst on, most significant first, one nibble each. The bytes are not masked to
// their low nibble, so a camera that fills the upper ones is read as it always was, and the sum may exceed 16
// bits.
constexpr uint32_t ReplyWord(const ViscaPkt *pstReply, uint32_t ulFirst) {
    return (static_cast<uint32_t>(pstReply->aucData[ulFirst]) << 12U) +
           (static_cast<uint32_t>(pstReply->aucData[ulFirst + 1]) << 8U) +
           (static_cast<uint32_t>(pstReply->aucData[ulFirst + 2]) << 4U) + pstReply->aucData[ulFirst + 3];
}

uint32_t QueueCommandBytes(const uint8_t *pucPayload, uint32_t ulLength);
uint32_t InquireBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstReply);
uint32_t InquireKovaBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstReply);

// Queue a command: 81 payload FF. The result is ViscaEnQueueCmd's.
template <uint32_t N>
uint32_t QueueCommand(const uint8_t (&aucPayload)[N]) {
    static_assert(N <= VISCA_PAYLOAD_MAX, "a packet holds 16 bytes, header and terminator included");
    return QueueCommandBytes(aucPayload, N);
}

// Ask a question: 81 payload FF. The reply record is zeroed first, as a time-out leaves it untouched. The
// result is ViscaInquiry's.
template <uint32_t N>
uint32_t Inquire(const uint8_t (&aucPayload)[N], ViscaPkt *pstReply) {
    static_assert(N <= VISCA_PAYLOAD_MAX, "a packet holds 16 bytes, header and terminator included");
    return InquireBytes(aucPayload, N, pstReply);
}

// The same with the header of the Kova module's own inquiries: 71 payload FF.
template <uint32_t N>
uint32_t InquireKova(const uint8_t (&aucPayload)[N], ViscaPkt *pstReply) {
    static_assert(N <= VISCA_PAYLOAD_MAX, "a packet holds 16 bytes, header and terminator included");
    return InquireKovaBytes(aucPayload, N, pstReply);
}

} // namespace viscacam

#endif
