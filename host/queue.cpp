/*
 * A put has two steps, so that it is reported before a taker can see the element and yet without holding the
 * lock during the report: a place in the ring is reserved, the put is reported, the element goes in.
 */
#include <cstring>
#include <mutex>

#include <sys/eventfd.h>
#include <sys/select.h>
#include <unistd.h>

#include "host/host.h"
#include "host/observer.h"

namespace {

constexpr uint32_t kSize = VISCA_QUEUE_ELEM_SIZE;
constexpr uint32_t kPacketMax = 16; // an element is a packet of this size and its 32-bit count

struct Queue {
    uint32_t ulId;
    std::mutex stLock = {};
    int iReadFd = -1; // holds a count other than 0 exactly while ulCount is not 0
    uint32_t ulHead = 0;
    uint32_t ulCount = 0;
    uint32_t ulReserved = 0;
    uint8_t aaucRing[host::kQueueCapacity][kSize] = {};
    alignas(8) uint8_t aucTaken[kSize] = {}; // what the last take handed out
};

Queue g_astQueues[] = {{VISCA_CMD_QUEUE_ID}, {VISCA_CMD_RESULT_QUEUE_ID}, {VISCA_INQUIRY_RESULT_QUEUE_ID}};

Queue *FindQueue(uint32_t ulQueueId) {
    for (Queue &st : g_astQueues) {
        if (st.ulId == ulQueueId) {
            return &st;
        }
    }
    return nullptr;
}

Queue *FindQueue(uint32_t ulType, uint32_t ulQueueId) {
    return ulType == VISCA_QUEUE_TYPE ? FindQueue(ulQueueId) : nullptr;
}

bool OpenReadFd(Queue &st) {
    if (st.iReadFd >= 0) {
        return true;
    }
    const int iFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (iFd >= FD_SETSIZE) {
        close(iFd);
        return false;
    }
    st.iReadFd = iFd;
    return iFd >= 0;
}

// Without a descriptor nobody would wake for the element, so that put fails too.
bool Reserve(Queue &st) {
    std::lock_guard<std::mutex> stGuard(st.stLock);
    if (st.ulCount + st.ulReserved >= host::kQueueCapacity || !OpenReadFd(st)) {
        return false;
    }
    st.ulReserved++;
    return true;
}

void Append(Queue &st, const void *pData) {
    std::lock_guard<std::mutex> stGuard(st.stLock);
    std::memcpy(st.aaucRing[(st.ulHead + st.ulCount) % host::kQueueCapacity], pData, kSize);
    st.ulReserved--;
    st.ulCount++;
    if (st.ulCount == 1) {
        eventfd_write(st.iReadFd, 1);
    }
}

bool TakeOldest(Queue &st, uint8_t *pucElem) {
    std::lock_guard<std::mutex> stGuard(st.stLock);
    if (st.ulCount == 0) {
        return false;
    }
    std::memcpy(pucElem, st.aaucRing[st.ulHead], kSize);
    st.ulHead = (st.ulHead + 1) % host::kQueueCapacity;
    st.ulCount--;
    if (st.ulCount == 0) {
        eventfd_t ullIgnored = 0;
        eventfd_read(st.iReadFd, &ullIgnored);
    }
    return true;
}

void ReportElement(host::EventKind enKind, uint32_t ulQueueId, const void *pElem, int32_t iResult) {
    host::Event stEvent;
    uint32_t ulCount = 0;
    stEvent.enKind = enKind;
    stEvent.ulQueueId = ulQueueId;
    stEvent.pucElem = static_cast<const uint8_t *>(pElem);
    stEvent.pucData = stEvent.pucElem;
    std::memcpy(&ulCount, stEvent.pucElem + kPacketMax, sizeof(ulCount));
    stEvent.ulLength = ulCount < kPacketMax ? ulCount : kPacketMax;
    stEvent.iResult = iResult;
    host::Report(stEvent);
}

} // namespace

uint32_t QUEUE_PutRawData(uint32_t ulType, uint32_t ulQueueId, const void *pData, uint32_t ulLength) {
    Queue *pstQueue = FindQueue(ulType, ulQueueId);
    if (pstQueue == nullptr || pData == nullptr || ulLength != kSize) {
        return 1;
    }
    const bool bReserved = Reserve(*pstQueue);
    ReportElement(host::EventKind::kQueuePut, ulQueueId, pData, bReserved ? 0 : 1);
    if (!bReserved) {
        return 1;
    }
    Append(*pstQueue, pData);
    return 0;
}

uint32_t QUEUE_GetSerialData(uint32_t ulQueueId, void **ppElem) {
    Queue *pstQueue = FindQueue(ulQueueId);
    if (pstQueue == nullptr || ppElem == nullptr || !TakeOldest(*pstQueue, pstQueue->aucTaken)) {
        return 1;
    }
    ReportElement(host::EventKind::kQueueTake, ulQueueId, pstQueue->aucTaken, 0);
    *ppElem = pstQueue->aucTaken;
    return 0;
}

uint32_t QUEUE_IsEmpty(uint32_t ulType, uint32_t ulQueueId, uint32_t *pulFlag) {
    Queue *pstQueue = FindQueue(ulType, ulQueueId);
    if (pstQueue == nullptr || pulFlag == nullptr) {
        return 1;
    }
    std::lock_guard<std::mutex> stGuard(pstQueue->stLock);
    *pulFlag = pstQueue->ulCount == 0 ? 1 : 0;
    return 0;
}

uint32_t QUEUE_GetQueueReadFd(uint32_t ulType, uint32_t ulQueueId, int32_t *piFd) {
    Queue *pstQueue = FindQueue(ulType, ulQueueId);
    if (pstQueue == nullptr || piFd == nullptr) {
        return 1;
    }
    std::lock_guard<std::mutex> stGuard(pstQueue->stLock);
    if (!OpenReadFd(*pstQueue)) {
        return 1;
    }
    *piFd = pstQueue->iReadFd;
    return 0;
}

namespace host {

uint32_t EmptyQueue(uint32_t ulQueueId) {
    Queue *pstQueue = FindQueue(ulQueueId);
    uint8_t aucElem[kSize];
    uint32_t ulDropped = 0;
    // Bounded, so that a busy producer cannot keep us here.
    while (pstQueue != nullptr && ulDropped < kQueueCapacity && TakeOldest(*pstQueue, aucElem)) {
        ReportElement(EventKind::kQueueDrop, ulQueueId, aucElem, 0);
        ulDropped++;
    }
    return ulDropped;
}

uint32_t QueueDepth(uint32_t ulQueueId) {
    Queue *pstQueue = FindQueue(ulQueueId);
    if (pstQueue == nullptr) {
        return 0;
    }
    std::lock_guard<std::mutex> stGuard(pstQueue->stLock);
    return pstQueue->ulCount;
}

} // namespace host
