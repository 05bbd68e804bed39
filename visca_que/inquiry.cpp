// Inquiries: one question on the line at a time, its answer handed over by the receiver through the
// inquiry-result queue.
//
// The queue is never emptied before a question, deliberately: an answer that comes later than 6 s is taken by
// the next inquiry.
#include <pthread.h>
#include <string.h>

#include "visca_que/command.h"
#include "visca_que/inquiry_lock.h"
#include "visca_que/log.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

pthread_mutex_t viscacam::g_stInquiryMutex = PTHREAD_MUTEX_INITIALIZER;

namespace {

constexpr uint32_t ANSWER_WAIT_MS = 6000;
constexpr uint8_t ITEM_UPGRADE_STATE =
    0xA9; // 81 09 04 A9: how a module upgrade goes on is asked while it runs

bool IsInquiryAllowed(const ViscaPkt *pstPkt, const char *pcCaller) {
    if (ViscaIsCamCanCtrl() != 1) {
        LOG_WARN_AS(pcCaller, "Cam Can't Ctrl return directly\n");
        return false;
    }
    if (ViscaIsExportLog() == 1) {
        LOG_DEBUG_AS(pcCaller, "ViscaIsExportLog true\n");
        return false;
    }
    return ViscaIsUpdatingCam() != 1 || pstPkt->aucData[3] == ITEM_UPGRADE_STATE;
}

// The oldest element of the inquiry-result queue, or nullptr when none came within 6 s or the wait failed.
const void *WaitForAnswer(int32_t iFd, const char *pcCaller) {
    WaitResult enWait = WAIT_INTERRUPTED;
    while (enWait == WAIT_INTERRUPTED) {
        enWait = WaitReadable(iFd, ANSWER_WAIT_MS); // a signal starts the 6 s afresh
    }
    if (enWait == WAIT_TIMEOUT) {
        LOG_ERROR_AS(pcCaller, "Wait VISCA RSP msg tiemout!\n");
        return nullptr;
    }
    if (enWait == WAIT_FAILED) {
        LOG_ERROR_AS(pcCaller, "Wait VISCA RSP msg failed!\n");
        return nullptr;
    }
    void *pElem = nullptr;
    return QUEUE_GetSerialData(VISCA_INQUIRY_RESULT_QUEUE_ID, &pElem) == 0 ? pElem : nullptr;
}

// No answer is a success that leaves the reply as the caller zeroed it, deliberately; an error reply is a
// failure.
uint32_t TakeAnswer(int32_t iFd, ViscaPkt *pstReply, const char *pcCaller) {
    const void *pElem = WaitForAnswer(iFd, pcCaller);
    if (pElem == nullptr) {
        return VISCA_SUCCESS;
    }
    ViscaPkt stAnswer;
    memcpy(&stAnswer, pElem, sizeof(stAnswer));
    if ((stAnswer.aucData[1] & 0xF0U) != 0x50U) {
        return VISCA_FAILURE;
    }
    *pstReply = stAnswer;
    return VISCA_SUCCESS;
}

} // namespace

uint32_t ViscaInquiry(ViscaPkt *pstPkt, ViscaPkt *pstReply) {
    if (!IsInquiryAllowed(pstPkt, __func__)) {
        return VISCA_FAILURE;
    }
    int32_t iFd = -1;
    if (QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, VISCA_INQUIRY_RESULT_QUEUE_ID, &iFd) != 0) {
        LOG_ERROR("Get VISCA_INQUIRY_RESULT_QUEUE_ID fd failed.\n");
        return VISCA_FAILURE;
    }
    if (pthread_mutex_lock(&g_stInquiryMutex) != 0) {
        LOG_ERROR("pthread_mutex_lock fail exit\n");
        return VISCA_FAILURE;
    }
    ViscaAppendByte(VISCA_TERMINATOR, pstPkt);
    ViscaPrintPkt(pstPkt, 1);
    // The caller's count may lie beyond the record, whose bytes are all that there is to send.
    const uint32_t ulLength = pstPkt->ulLength < VISCA_PKT_MAX ? pstPkt->ulLength : VISCA_PKT_MAX;
    if (ViscaCamComSend(ulLength, pstPkt->aucData) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaCamComSend fail\n");
        if (pthread_mutex_unlock(&g_stInquiryMutex) != 0) {
            LOG_ERROR("pthread_mutex_unlock fail exit\n");
        }
        return VISCA_FAILURE;
    }
    const uint32_t ulRet = TakeAnswer(iFd, pstReply, __func__);
    if (pthread_mutex_unlock(&g_stInquiryMutex) != 0) {
        LOG_WARN("pthread_mutex_unlock fail\n");
    }
    return ulRet;
}
