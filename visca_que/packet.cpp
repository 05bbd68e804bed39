// Packets and the command queue.
#include <pthread.h>
#include <string.h>

#include "visca_que/command.h"
#include "visca_que/inquiry_lock.h"
#include "visca_que/log.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr size_t BYTE_TEXT = 5; // "0x81 "

// Every packet is put into words, whether the host keeps them or not: snprintf would cost more than the rest
// of the line.
void WriteByteText(char *pcText, uint8_t ucByte) {
    constexpr char szDigits[] = "0123456789abcdef";
    const char acText[BYTE_TEXT] = {'0', 'x', szDigits[ucByte >> 4U], szDigits[ucByte & 0x0FU], ' '};
    memcpy(pcText, acText, sizeof(acText));
}

} // namespace

static_assert(sizeof(ViscaPkt) == VISCA_QUEUE_ELEM_SIZE, "a packet is a queue element");

uint32_t ViscaInitPkt(ViscaPkt *pstPkt) {
    pstPkt->aucData[0] = 0x81;
    pstPkt->ulLength = 1;
    return VISCA_SUCCESS;
}

uint32_t ViscaInitPkt4Kova(ViscaPkt *pstPkt) {
    pstPkt->aucData[0] = 0x71;
    pstPkt->ulLength = 1;
    return VISCA_SUCCESS;
}

void ViscaAppendByte(uint8_t ucByte, ViscaPkt *pstPkt) {
    if (pstPkt->ulLength >= VISCA_PKT_MAX) {
        LOG_ERROR("Visca packet too long, fail exit\n");
        return;
    }
    pstPkt->aucData[pstPkt->ulLength] = ucByte;
    ++pstPkt->ulLength;
}

uint32_t ViscaEnQueueCmd(ViscaPkt *pstQueueElem) {
    if (pstQueueElem == nullptr) {
        LOG_ERROR("pstQueueElem == NULL\n");
        return VISCA_NULL_POINTER;
    }
    if (ViscaIsCamCanCtrl() != 1) {
        LOG_WARN("Cam Can't Ctrl return directly\n");
        return VISCA_FAILURE;
    }
    if (ViscaIsCamComBusy() == 1) {
        LOG_DEBUG("ViscaIsCamComBusy true\n");
        return VISCA_FAILURE;
    }
    // A packet that is full already goes out without a terminator, deliberately. The camera then waits for
    // one and takes the next packet for the rest of this.
    ViscaAppendByte(VISCA_TERMINATOR, pstQueueElem);
    if (QUEUE_PutRawData(VISCA_QUEUE_TYPE, VISCA_CMD_QUEUE_ID, pstQueueElem, VISCA_QUEUE_ELEM_SIZE) != 0) {
        LOG_ERROR("Visca QueueCmdCushion fail\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t ViscaIsCmdQueueEmpty(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (pthread_mutex_lock(&g_stInquiryMutex) != 0) {
        LOG_ERROR("pthread_mutex_lock fail exit\n");
        return 0;
    }
    uint32_t ulFlag = 0;
    const uint32_t ulRet = QUEUE_IsEmpty(VISCA_QUEUE_TYPE, VISCA_CMD_QUEUE_ID, &ulFlag);
    const uint32_t ulEmpty = (ulRet == 0 && ulFlag == 1) ? 1 : 0;
    if (pthread_mutex_unlock(&g_stInquiryMutex) != 0) {
        LOG_ERROR("pthread_mutex_unlock fail exit\n");
    }
    return ulEmpty;
}

uint32_t ViscaWaitCmdQueueEmpty(uint32_t ulWaitTime) {
    LOG_DEBUG("FUN_ENTRY--param:ulWaitTime[%lu]\n", UL(ulWaitTime));
    const uint32_t ulLimit = ulWaitTime * 10;
    uint32_t ulCount = 0;
    while (ViscaIsCmdQueueEmpty() == 0 && ulCount != ulLimit) {
        ++ulCount;
        LOG_WARN("[%3ld] Wait queue empty, usleep(100,000)\n", static_cast<long>(ulCount));
        SleepMs(100);
    }
    // The last look is not believed even when it found the queue empty, deliberately; a limit of 0 therefore
    // always times out.
    if (ulCount == ulLimit) {
        LOG_WARN("MsgQueue is busy time out [%lu]\n", UL(ulLimit));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

void ViscaPrintPkt(const ViscaPkt *pstPkt, uint32_t ulDirection) {
    const uint32_t ulLength = pstPkt->ulLength;
    if (ulLength > VISCA_PKT_MAX) {
        LOG_DUMP("The Visca packet is too long to print[%lu]\n", UL(ulLength));
        return;
    }
    constexpr char szHead[] = "ViscaPacket: ";
    constexpr size_t ulBytesAt = sizeof(szHead) - 1;
    char szText[128] = {};
    static_assert(ulBytesAt + VISCA_PKT_MAX * BYTE_TEXT < sizeof(szText), "a full packet fits");
    memcpy(szText, szHead, ulBytesAt);
    for (uint32_t i = 0; i < ulLength; ++i) {
        WriteByteText(szText + ulBytesAt + i * BYTE_TEXT, pstPkt->aucData[i]);
    }
    if (ulDirection == 1) {
        LOG_DUMP("send:%s\n", szText);
    } else {
        LOG_DUMP("recv:%s\n", szText);
    }
}
