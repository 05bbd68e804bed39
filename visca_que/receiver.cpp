// The receiver: reads what the camera sends, cuts it into replies and routes them.
//
// A reply begins with 0x90, ends with 0xFF and holds 3 to 16 bytes. The line has no checksum and bytes get
// lost, so the receiver falls into step again at the next 0xFF: bytes that do not begin a reply are skipped
// one by one up to a 0xFF, and a reply that is too long, too short or torn off is rejected where that is
// noticed. Bytes are read one at a time, since others read the port too: whoever owns the line during an
// upgrade or a log export must find every byte that follows.
//
//   HUNT     no byte of a reply has been seen
//   COLLECT  0x90 has been seen, and no 0xFF since
//   ROUTE    a whole reply stands in the packet
//   REJECT   what was collected is no reply
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t RECEIVER_WAIT_MS = 6000;
constexpr uint32_t REPLY_MIN = 3;
constexpr uint32_t THREAD_TYPE_RECEIVER = 3;
constexpr uint8_t REPLY_START = 0x90;    // an answer of camera 1
constexpr uint8_t AF_DEBUG_START = 0x66; // an answer of the Kova module's auto-focus tuning

// The log lines of a pass all name the exported function, whichever helper notices the trouble.
constexpr char DEAL_ONE_ACK[] = "ViscaDealOneAck";

enum PassResult {
    PASS_HANDLED,     // at least one byte was read
    PASS_STOOD_ASIDE, // somebody else owns the line
    PASS_READ_FAILED, // nothing could be read
};

enum CollectResult { COLLECT_REPLY, COLLECT_REJECT, COLLECT_STOOD_ASIDE };

bool ReadByte(int32_t iFd, uint8_t *pucByte) {
    return read(iFd, pucByte, 1) == 1;
}

CollectResult StandAside(const ViscaPkt *pstReply) {
    ViscaPrintPkt(pstReply, 0);
    return COLLECT_STOOD_ASIDE;
}

// COLLECT. The packet holds the 0x90. A failed read ends the reply as a terminator would.
CollectResult CollectReply(int32_t iFd, ViscaPkt *pstReply) {
    for (;;) {
        if (ViscaIsCamComBusy() == 1) {
            return StandAside(pstReply);
        }
        const bool bInTime = WaitForNextByte(iFd);
        if (ViscaIsCamComBusy() == 1) {
            return StandAside(pstReply); // the byte that ended the wait belongs to the new owner of the line
        }
        uint8_t ucByte = 0;
        const bool bRead = bInTime && ReadByte(iFd, &ucByte);
        if (bRead) {
            pstReply->aucData[pstReply->ulLength] = ucByte;
            ++pstReply->ulLength;
        }
        if (!bRead || ucByte == VISCA_TERMINATOR || pstReply->ulLength == VISCA_PKT_MAX) {
            ViscaPrintPkt(pstReply, 0);
            const bool bEnded = pstReply->aucData[pstReply->ulLength - 1] == VISCA_TERMINATOR;
            return bEnded && pstReply->ulLength >= REPLY_MIN ? COLLECT_REPLY : COLLECT_REJECT;
        }
    }
}

void Reject(const ViscaPkt *pstReply) {
    ViscaPrintPkt(pstReply, 0); // a second dump, deliberately: it stands beside the error line
    LOG_ERROR_AS(DEAL_ONE_ACK, "Unexpected Ack, fail exit\n");
}

bool PutReply(uint32_t ulQueueId, const ViscaPkt *pstReply) {
    return QUEUE_PutRawData(VISCA_QUEUE_TYPE, ulQueueId, pstReply, VISCA_QUEUE_ELEM_SIZE) == 0;
}

void RouteCompletion(const ViscaPkt *pstReply) {
    const uint32_t ulSocket = pstReply->aucData[1] & 0x0FU;
    if (ulSocket == 0) {
        if (!PutReply(VISCA_INQUIRY_RESULT_QUEUE_ID, pstReply)) {
            LOG_ERROR_AS(DEAL_ONE_ACK, "Put Inquiry Result msg to queue failed!\n");
        }
    } else if (!PutReply(VISCA_CMD_RESULT_QUEUE_ID, pstReply)) {
        LOG_ERROR_AS(DEAL_ONE_ACK, "Put CMD Result msg to queue failed!\n");
    }
}

// A syntax error (02) and a full command buffer (03) carry socket 0 although they refuse a command; every
// other error of socket 0 answers an inquiry.
void RouteError(const ViscaPkt *pstReply) {
    const uint32_t ulSocket = pstReply->aucData[1] & 0x0FU;
    const uint8_t ucCode = pstReply->aucData[2];
    const bool bAnswersInquiry = ulSocket == 0 && ucCode != 0x02 && ucCode != 0x03;
    if (!PutReply(bAnswersInquiry ? VISCA_INQUIRY_RESULT_QUEUE_ID : VISCA_CMD_RESULT_QUEUE_ID, pstReply)) {
        // This wording also where the put went to the command-result queue, deliberately.
        LOG_ERROR_AS(DEAL_ONE_ACK, "Put Inquiry Result msg to queue failed!\n");
    }
}

void RouteReply(const ViscaPkt *pstReply) {
    switch (pstReply->aucData[1] >> 4U) {
    case 0x0:
        KovaDealReport(pstReply); // the one call upwards; the host's callbacks run inside it
        break;
    case 0x4: // an acknowledgement; the sender waits for the completion
        break;
    case 0x5:
        RouteCompletion(pstReply);
        break;
    case 0x6:
        RouteError(pstReply);
        break;
    default:
        Reject(pstReply);
        break;
    }
}

void CollectAndRoute(int32_t iFd) {
    ViscaPkt stReply = {};
    stReply.aucData[0] = REPLY_START;
    stReply.ulLength = 1;
    switch (CollectReply(iFd, &stReply)) {
    case COLLECT_REPLY:
        RouteReply(&stReply);
        break;
    case COLLECT_REJECT:
        Reject(&stReply);
        break;
    case COLLECT_STOOD_ASIDE:
        break;
    }
}

// HUNT, and what follows from the byte that ends it.
PassResult DealOneAck(int32_t iFd) {
    bool bReadAny = false;
    for (;;) {
        if (ViscaIsCamComBusy() == 1) {
            return bReadAny ? PASS_HANDLED : PASS_STOOD_ASIDE;
        }
        uint8_t ucByte = 0;
        if (!ReadByte(iFd, &ucByte)) {
            LOG_ERROR_AS(DEAL_ONE_ACK, "read error, fail exit\n");
            return bReadAny ? PASS_HANDLED : PASS_READ_FAILED;
        }
        bReadAny = true;
        if (ucByte == REPLY_START) {
            CollectAndRoute(iFd);
            return PASS_HANDLED;
        }
        if (ucByte == AF_DEBUG_START) {
            AF_DebugAck(); // reads the rest
            return PASS_HANDLED;
        }
        LOG_WARN_AS(DEAL_ONE_ACK, "unexpected byte[0x%x]\n", ucByte);
        if (ucByte == VISCA_TERMINATOR) {
            return PASS_HANDLED;
        }
    }
}

// One turn of the receiver's thread.
void ServePort(int32_t iFd, GrowingPause *pstPause) {
    switch (WaitReadable(iFd, RECEIVER_WAIT_MS)) {
    case WAIT_READABLE:
        break;
    case WAIT_FAILED:
        PauseAndGrow(pstPause);
        return;
    default:
        return;
    }
    switch (DealOneAck(iFd)) {
    case PASS_HANDLED:
        PauseReset(pstPause);
        break;
    case PASS_STOOD_ASIDE:
        SleepMs(PAUSE_FIRST_MS);
        break;
    case PASS_READ_FAILED:
        PauseAndGrow(pstPause);
        break;
    }
}

} // namespace

void *ViscaAckMsgProc(void *) {
    const int32_t iFd = ViscaGetCamComFd();
    (void)prctl(PR_SET_NAME, "ViscaAckMsgProc");
    (void)COMDRV_DBG_RegisterThreadInfo(THREAD_TYPE_RECEIVER, static_cast<uint32_t>(syscall(SYS_gettid)),
                                        "ViscaAckMsgProc");
    GrowingPause stPause = {PAUSE_FIRST_MS};
    for (;;) {
        ServePort(iFd, &stPause);
    }
}

void ViscaDealOneAck(void) {
    (void)DealOneAck(ViscaGetCamComFd());
}
