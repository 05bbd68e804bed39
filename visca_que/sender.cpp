// The sender: takes queued commands and writes them, one in flight at a time.
//
// After each command it waits up to 2 s for one element of the command-result queue, where the receiver puts
// completions and errors, and drops it. A result that arrives later than that stays queued and would release
// the next command at once, and every command after it: results that are left over are therefore dropped
// before a command is written.
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_que/thread.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t SENDER_WAIT_MS = 6000;
constexpr uint32_t RESULT_WAIT_MS = 2000;
constexpr uint32_t STALE_RESULTS_MAX = 256;
constexpr uint32_t THREAD_TYPE_SENDER = 4;

// The lines about one command name the exported function, whichever helper writes them.
constexpr char SEND_ONE_CMD[] = "ViscaSendOneCmd";

enum SendResult {
    SEND_WRITTEN,   // a result is awaited
    SEND_NOTHING,   // a command was lost, or was none: nothing to wait for
    SEND_NO_ELEMENT // the queue gave nothing although it was said to be readable
};

bool IsResultWaiting() {
    uint32_t ulEmpty = 1;
    return QUEUE_IsEmpty(VISCA_QUEUE_TYPE, VISCA_CMD_RESULT_QUEUE_ID, &ulEmpty) == 0 && ulEmpty != 1;
}

void DropStaleResults() {
    uint32_t ulDropped = 0;
    void *pElem = nullptr;
    while (ulDropped < STALE_RESULTS_MAX && IsResultWaiting() &&
           QUEUE_GetSerialData(VISCA_CMD_RESULT_QUEUE_ID, &pElem) == 0) {
        ++ulDropped;
    }
    if (ulDropped != 0) {
        LOG_DEBUG_AS(SEND_ONE_CMD, "Drop %lu results of earlier commands\n", UL(ulDropped));
    }
}

SendResult SendOneCmd() {
    void *pElem = nullptr;
    if (QUEUE_GetSerialData(VISCA_CMD_QUEUE_ID, &pElem) != 0 || pElem == nullptr) {
        LOG_DEBUG_AS(SEND_ONE_CMD, "QUEUE GetSerialData failed!\n");
        return SEND_NO_ELEMENT;
    }
    ViscaPkt stPkt;
    memcpy(&stPkt, pElem, sizeof(stPkt));
    if (stPkt.aucData[1] != 0x01 || stPkt.ulLength > VISCA_PKT_MAX) {
        LOG_DEBUG_AS(SEND_ONE_CMD, "Get GET REQ msg in SET Req msg queue,discard it!\n");
        return SEND_NOTHING;
    }
    DropStaleResults();
    ViscaPrintPkt(&stPkt, 1);
    if (ViscaCamComSend(stPkt.ulLength, stPkt.aucData) != VISCA_SUCCESS) {
        LOG_DEBUG_AS(SEND_ONE_CMD, "ViscaCamComSend failed!\n");
        return SEND_NOTHING;
    }
    return SEND_WRITTEN;
}

// One turn of the sender's thread.
void ServeQueue(int32_t iQueueFd, GrowingPause *pstPause) {
    switch (WaitReadable(iQueueFd, SENDER_WAIT_MS)) {
    case WAIT_READABLE:
        break;
    case WAIT_FAILED:
        PauseAndGrow(pstPause);
        return;
    default:
        return;
    }
    const SendResult enResult = SendOneCmd();
    if (enResult == SEND_NO_ELEMENT) {
        PauseAndGrow(pstPause);
        return;
    }
    PauseReset(pstPause);
    if (enResult == SEND_WRITTEN) {
        ViscaDropOneCmdAck();
    }
}

} // namespace

uint32_t ViscaStartMsgProc(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    int iRet = StartDetached(ViscaQueueMsgProc, nullptr);
    if (iRet != 0) {
        LOG_ERROR("create Queue Msg Proc fail exit Ret[%ld]\n", SL(iRet));
        return VISCA_FAILURE;
    }
    iRet = StartDetached(ViscaAckMsgProc, nullptr);
    if (iRet != 0) {
        LOG_ERROR("create Ack Msg Proc fail exit Ret[%ld]\n", SL(iRet));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

void *ViscaQueueMsgProc(void *) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    (void)COMDRV_DBG_RegisterThreadInfo(THREAD_TYPE_SENDER, static_cast<uint32_t>(syscall(SYS_gettid)),
                                        "ViscaQueueMsgProc");
    (void)prctl(PR_SET_NAME, "ViscaQueueMsg");

    int32_t iQueueFd = -1;
    if (QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, VISCA_CMD_QUEUE_ID, &iQueueFd) != 0) {
        LOG_ERROR("Get VISCA_CMD_QUEUE_ID fd failed.\n");
        return nullptr;
    }
    GrowingPause stPause = {PAUSE_FIRST_MS};
    for (;;) {
        ServeQueue(iQueueFd, &stPause);
    }
}

uint32_t ViscaSendOneCmd(void) {
    return SendOneCmd() == SEND_WRITTEN ? VISCA_SUCCESS : VISCA_FAILURE;
}

void ViscaDropOneCmdAck(void) {
    int32_t iFd = -1;
    if (QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, VISCA_CMD_RESULT_QUEUE_ID, &iFd) != 0) {
        LOG_ERROR("Get VISCA_CMD_RESULT_QUEUE_ID fd failed.\n");
        return;
    }
    WaitResult enWait = WAIT_INTERRUPTED;
    while (enWait == WAIT_INTERRUPTED) {
        enWait = WaitReadable(iFd, RESULT_WAIT_MS); // a signal starts the 2 s afresh
    }
    if (enWait == WAIT_READABLE) {
        void *pElem = nullptr; // completion or error, it releases the next command
        (void)QUEUE_GetSerialData(VISCA_CMD_RESULT_QUEUE_ID, &pElem);
    } else if (enWait == WAIT_TIMEOUT) {
        LOG_DEBUG("Wait VISCA RSP msg tiemout!\n");
    } else {
        LOG_DEBUG("Wait VISCA RSP msg failed!\n");
    }
}
