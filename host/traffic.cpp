/*
 * What the traffic means. The record follows one command and one inquiry at a time, as the link does:
 *
 * A command is put on the command queue, taken by the sender, written by the same thread, and done when the
 * sender takes something from the command-result queue. Results taken between take and write are left over
 * from earlier commands. When no result comes, the sender says so in the log after 2 s. An element that is no
 * command (second byte not 0x01, or more than 16 bytes) is thrown away by the sender.
 *
 * An inquiry (second byte 0x09) is written by the thread that asks, which then takes one answer from the
 * inquiry-result queue or says in the log after 6 s that none came. Answers put while nobody waits stay there
 * and are taken by the next inquiry as its own.
 *
 * The deadlines below stand behind the log lines, should those not come.
 */
#include "host/traffic.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using host::Event;
using host::EventKind;

constexpr uint32_t kPacketMax = 16;
constexpr uint8_t kCommandMark = 0x01;
constexpr uint8_t kInquiryMark = 0x09;

constexpr std::chrono::milliseconds kCommandLimit{2000};
constexpr std::chrono::milliseconds kInquiryLimit{6000};
constexpr std::chrono::milliseconds kGrace{100}; // lets the log line come first

enum class Stage : uint8_t {
    kNone,  // no command is under way
    kTaken, // the sender has taken one and not written it yet
    kSent   // written, no result yet
};

struct Traffic {
    std::mutex stLock;
    std::condition_variable stProgress; // a command was settled or sent

    host::Counters stCounters;

    // Commands since the start of the process; the difference is what WaitDrained waits for.
    uint64_t ullQueued = 0;
    uint64_t ullSettled = 0;

    Stage enStage = Stage::kNone;
    std::thread::id tSender;
    Clock::time_point tCommandEnd;

    bool bInquiryOpen = false;
    bool bInquiryAnswered = false;
    std::thread::id tInquirer;
    Clock::time_point tInquiryEnd;
};

// Lives until the process is gone: the library's threads never end.
Traffic &g_stTraffic = *new Traffic;

void SettleCommand(Traffic &st) {
    st.enStage = Stage::kNone;
    st.ullSettled++;
    st.stProgress.notify_all();
}

void SettleUnsent(Traffic &st) {
    st.stCounters.ullCommandsUnsent++;
    SettleCommand(st);
}

void SettleTimedOut(Traffic &st) {
    st.stCounters.ullCommandTimeouts++;
    SettleCommand(st);
}

void CloseTimedOutInquiry(Traffic &st) {
    st.stCounters.ullInquiryTimeouts++;
    st.bInquiryOpen = false;
}

void Expire(Traffic &st, Clock::time_point tNow) {
    if (st.enStage == Stage::kSent && tNow >= st.tCommandEnd) {
        SettleTimedOut(st);
    }
    if (st.bInquiryOpen && tNow >= st.tInquiryEnd) {
        CloseTimedOutInquiry(st);
    }
}

uint32_t ElementCount(const Event &stEvent) {
    uint32_t ulCount = 0;
    std::memcpy(&ulCount, stEvent.pucElem + kPacketMax, sizeof(ulCount));
    return ulCount;
}

void CountReply(host::Counters &stCounters, const Event &stEvent) {
    if (stEvent.iResult != 0) {
        stCounters.ullResultsLost++;
        return;
    }
    const uint8_t ucType = stEvent.pucElem[1] & 0xF0;
    if (ucType == 0x60) {
        stCounters.ullErrors++;
        stCounters.aullErrorsByCode[stEvent.pucElem[2]]++;
    } else if (stEvent.ulQueueId == VISCA_CMD_RESULT_QUEUE_ID) {
        stCounters.ullCompletions++;
    } else {
        stCounters.ullAnswers++;
    }
}

bool IsUnasked(Traffic &st, const Event &stEvent) {
    if (stEvent.iResult != 0) {
        return false;
    }
    if (st.bInquiryOpen && !st.bInquiryAnswered) {
        st.bInquiryAnswered = true;
        return false;
    }
    st.stCounters.ullUnaskedAnswers++;
    return true;
}

bool RecordPut(Traffic &st, const Event &stEvent) {
    if (stEvent.ulQueueId == VISCA_CMD_QUEUE_ID) {
        const bool bQueued = stEvent.iResult == 0;
        (bQueued ? st.stCounters.ullCommandsQueued : st.stCounters.ullCommandsRefused)++;
        st.ullQueued += bQueued ? 1 : 0;
        return false;
    }
    CountReply(st.stCounters, stEvent);
    return stEvent.ulQueueId == VISCA_INQUIRY_RESULT_QUEUE_ID && IsUnasked(st, stEvent);
}

void RecordCommandTake(Traffic &st, const Event &stEvent) {
    if (st.enStage == Stage::kSent) {
        SettleTimedOut(st);
    } else if (st.enStage == Stage::kTaken) {
        SettleUnsent(st);
    }
    if (stEvent.pucElem[1] != kCommandMark || ElementCount(stEvent) > kPacketMax) {
        SettleUnsent(st);
        return;
    }
    st.enStage = Stage::kTaken;
    st.tSender = std::this_thread::get_id();
}

void RecordTake(Traffic &st, const Event &stEvent) {
    switch (stEvent.ulQueueId) {
    case VISCA_CMD_QUEUE_ID:
        RecordCommandTake(st, stEvent);
        break;
    case VISCA_CMD_RESULT_QUEUE_ID:
        if (st.enStage == Stage::kSent) {
            SettleCommand(st);
        }
        break;
    default:
        st.bInquiryOpen = false;
        break;
    }
}

bool IsSendOfCommand(const Traffic &st) {
    return st.enStage == Stage::kTaken && st.tSender == std::this_thread::get_id();
}

// Opened before the first byte goes out: a quick camera answers before the write returns.
void RecordSending(Traffic &st, const Event &stEvent, Clock::time_point tNow) {
    if (IsSendOfCommand(st) || stEvent.ulLength < 2 || stEvent.pucData[1] != kInquiryMark) {
        return;
    }
    st.bInquiryOpen = true;
    st.bInquiryAnswered = false;
    st.tInquirer = std::this_thread::get_id();
    st.tInquiryEnd = tNow + kInquiryLimit + kGrace + host::kSendLimit;
}

void RecordSentCommand(Traffic &st, bool bWritten, Clock::time_point tNow) {
    if (!bWritten) {
        SettleUnsent(st);
        return;
    }
    st.stCounters.ullCommandsSent++;
    st.enStage = Stage::kSent;
    st.tCommandEnd = tNow + kCommandLimit + kGrace;
    st.stProgress.notify_all();
}

void RecordSent(Traffic &st, const Event &stEvent, Clock::time_point tNow) {
    const bool bWritten = stEvent.iResult >= 0 && static_cast<uint32_t>(stEvent.iResult) == stEvent.ulLength;
    st.stCounters.ullSends++;
    st.stCounters.ullSendFailures += bWritten ? 0 : 1;
    st.stCounters.ullBytesSent += static_cast<uint64_t>(std::max(stEvent.iResult, 0));

    if (IsSendOfCommand(st)) {
        RecordSentCommand(st, bWritten, tNow);
    } else if (st.bInquiryOpen && st.tInquirer == std::this_thread::get_id()) {
        st.stCounters.ullInquiriesSent += bWritten ? 1 : 0;
        st.bInquiryOpen = bWritten;
        st.tInquiryEnd = tNow + kInquiryLimit + kGrace;
    }
}

void RecordWaitEnd(Traffic &st, bool bTimedOut) {
    const std::thread::id tSelf = std::this_thread::get_id();
    if (st.enStage == Stage::kSent && st.tSender == tSelf) {
        st.stCounters.ullCommandTimeouts += bTimedOut ? 1 : 0;
        SettleCommand(st);
    } else if (st.bInquiryOpen && st.tInquirer == tSelf) {
        st.stCounters.ullInquiryTimeouts += bTimedOut ? 1 : 0;
        st.bInquiryOpen = false;
    }
}

void CountJunk(Traffic &st) {
    st.stCounters.ullJunkBytes++;
}
void CountBadReply(Traffic &st) {
    st.stCounters.ullBadReplies++;
}
void CountReadError(Traffic &st) {
    st.stCounters.ullReadErrors++;
}
void EndWaitByTime(Traffic &st) {
    RecordWaitEnd(st, true);
}
void EndWaitByError(Traffic &st) {
    RecordWaitEnd(st, false);
}

// Every format ends in its message; what stands before it is the line's prefix.
struct KnownLine {
    const char *pcMessage;
    size_t ulLength;
    void (*pfnRecord)(Traffic &st);
};

template <size_t N>
constexpr KnownLine Known(const char (&acMessage)[N], void (*pfnRecord)(Traffic &st)) {
    return {acMessage, N - 1, pfnRecord};
}

constexpr KnownLine kKnownLines[] = {
    Known("unexpected byte[0x%x]\n", CountJunk),
    Known("Unexpected Ack, fail exit\n", CountBadReply),
    Known("read error, fail exit\n", CountReadError),
    Known("Wait VISCA RSP msg tiemout!\n", EndWaitByTime),
    Known("Wait VISCA RSP msg failed!\n", EndWaitByError),
};

bool EndsWith(const char *pcFormat, size_t ulFormat, const KnownLine &stLine) {
    return ulFormat >= stLine.ulLength &&
           std::memcmp(pcFormat + ulFormat - stLine.ulLength, stLine.pcMessage, stLine.ulLength) == 0;
}

} // namespace

namespace host {

bool RecordTraffic(const Event &stEvent) {
    const Clock::time_point tNow = Clock::now();
    Traffic &st = g_stTraffic;
    std::lock_guard<std::mutex> stGuard(st.stLock);
    Expire(st, tNow);
    switch (stEvent.enKind) {
    case EventKind::kQueuePut:
        return RecordPut(st, stEvent);
    case EventKind::kQueueTake:
        RecordTake(st, stEvent);
        return false;
    case EventKind::kQueueDrop:
        if (stEvent.ulQueueId == VISCA_CMD_QUEUE_ID) {
            st.stCounters.ullCommandsUnsent++;
            st.ullSettled++;
            st.stProgress.notify_all();
        }
        return false;
    case EventKind::kComSending:
        RecordSending(st, stEvent, tNow);
        return false;
    case EventKind::kComSent:
        RecordSent(st, stEvent, tNow);
        return false;
    default:
        return false;
    }
}

void RecordLogLine(const char *pcFormat) {
    const size_t ulFormat = std::strlen(pcFormat);
    for (const KnownLine &stLine : kKnownLines) {
        if (EndsWith(pcFormat, ulFormat, stLine)) {
            std::lock_guard<std::mutex> stGuard(g_stTraffic.stLock);
            stLine.pfnRecord(g_stTraffic);
            return;
        }
    }
}

Counters GetCounters() {
    std::lock_guard<std::mutex> stGuard(g_stTraffic.stLock);
    Expire(g_stTraffic, Clock::now());
    return g_stTraffic.stCounters;
}

void ResetCounters() {
    std::lock_guard<std::mutex> stGuard(g_stTraffic.stLock);
    g_stTraffic.stCounters = Counters{};
}

bool WaitDrained(std::chrono::milliseconds tLimit) {
    Traffic &st = g_stTraffic;
    const Clock::time_point tEnd = Clock::now() + tLimit;
    std::unique_lock<std::mutex> stGuard(st.stLock);
    const uint64_t ullTarget = st.ullQueued;
    for (;;) {
        const Clock::time_point tNow = Clock::now();
        Expire(st, tNow);
        if (st.ullSettled >= ullTarget) {
            return true;
        }
        if (tNow >= tEnd) {
            return false;
        }
        const bool bSent = st.enStage == Stage::kSent;
        st.stProgress.wait_until(stGuard, bSent ? std::min(tEnd, st.tCommandEnd) : tEnd);
    }
}

} // namespace host
