#include "visca_que/command.h"

#include <string.h>

namespace {

void AppendBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstPkt) {
    for (uint32_t i = 0; i < ulLength; ++i) {
        ViscaAppendByte(pucPayload[i], pstPkt);
    }
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
    memset(pstReply, 0, sizeof(*pstReply));
    (void)ViscaInitPkt(&stPkt);
    AppendBytes(pucPayload, ulLength, &stPkt);
    return ViscaInquiry(&stPkt, pstReply);
}

uint32_t InquireKovaBytes(const uint8_t *pucPayload, uint32_t ulLength, ViscaPkt *pstReply) {
    ViscaPkt stPkt = {};
    memset(pstReply, 0, sizeof(*pstReply));
    (void)ViscaInitPkt4Kova(&stPkt);
    AppendBytes(pucPayload, ulLength, &stPkt);
    return ViscaInquiry(&stPkt, pstReply);
}
