#include "visca_que/command.h"

#include <string.h>

namespace viscacam {

namespace {

void AppendBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstPkt) {
    for (uint32_t i = 0; i < ulLength; ++i) {
        ViscaAppendByte(pucPayload[i], pstPkt);
    }
}

// pstPkt holds the header.
uint32_t InquirePkt(ViscaPkt *pstPkt, const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstReply) {
    memset(pstReply, 0, sizeof(*pstReply));
    AppendBytes(pucPayload, ulLength, pstPkt);
    return ViscaInquiry(pstPkt, pstReply);
}

} // namespace

uint32_t QueueCommandBytes(const uint8_t *pucPayload, uint32_t ulLength) {
    ViscaPkt stPkt = {};
    (void)ViscaInitPkt(&stPkt);
    AppendBytes(pucPayload, ulLength, &stPkt);
    return ViscaEnQueueCmd(&stPkt);
}

uint32_t InquireBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstReply) {
    ViscaPkt stPkt = {};
    (void)ViscaInitPkt(&stPkt);
    return InquirePkt(&stPkt, pucPayload, ulLength, pstReply);
}

uint32_t InquireKovaBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstReply) {
    ViscaPkt stPkt = {};
    (void)ViscaInitPkt4Kova(&stPkt);
    return InquirePkt(&stPkt, pucPayload, ulLength, pstReply);
}

} // namespace viscacam
