/*
 * Observers are called without a lock, so that they may use the services, and yet an observer that was
 * removed may be gone the next moment. Each place therefore counts the calls that are running: a caller first
 * counts itself and then looks for the observer; whoever removes it first takes the observer out and then
 * waits for the count to become 0. In this order (sequentially consistent) one of the two always sees the
 * other.
 */
#include "host/observer.h"

#include <atomic>
#include <iterator>
#include <mutex>

#include <time.h>
#include <unistd.h>

#include "host/traffic.h"

namespace {

struct Place {
    std::atomic<host::Observer> pfnObserver{nullptr};
    std::atomic<uint32_t> ulRunning{0};
    void *pContext = nullptr; // written while no observer is in place
};

std::mutex g_stLock; // for those who add and remove
Place g_astPlaces[host::kMaxObservers];
std::atomic<uint32_t> g_ulObservers{0};

constexpr useconds_t kRemovePause = 200; // microseconds

uint64_t MonotonicNs() {
    timespec stNow = {};
    clock_gettime(CLOCK_MONOTONIC, &stNow);
    return static_cast<uint64_t>(stNow.tv_sec) * 1000000000U + static_cast<uint64_t>(stNow.tv_nsec);
}

} // namespace

namespace host {

void Report(Event stEvent) {
    stEvent.ullTimeNs = MonotonicNs();
    stEvent.bUnasked = RecordTraffic(stEvent);
    if (g_ulObservers.load() == 0) {
        return;
    }
    for (Place &stPlace : g_astPlaces) {
        stPlace.ulRunning.fetch_add(1);
        const Observer pfnObserver = stPlace.pfnObserver.load();
        if (pfnObserver != nullptr) {
            pfnObserver(stEvent, stPlace.pContext);
        }
        stPlace.ulRunning.fetch_sub(1);
    }
}

int32_t AddObserver(Observer pfnObserver, void *pContext) {
    if (pfnObserver == nullptr) {
        return -1;
    }
    std::lock_guard<std::mutex> stGuard(g_stLock);
    for (uint32_t i = 0; i < kMaxObservers; i++) {
        Place &stPlace = g_astPlaces[i];
        if (stPlace.pfnObserver.load() == nullptr) {
            stPlace.pContext = pContext;
            stPlace.pfnObserver.store(pfnObserver);
            g_ulObservers.fetch_add(1);
            return static_cast<int32_t>(i);
        }
    }
    return -1;
}

void RemoveObserver(int32_t iObserver) {
    if (iObserver < 0 || iObserver >= static_cast<int32_t>(kMaxObservers)) {
        return;
    }
    std::lock_guard<std::mutex> stGuard(g_stLock);
    Place &stPlace = g_astPlaces[iObserver];
    if (stPlace.pfnObserver.exchange(nullptr) == nullptr) {
        return;
    }
    g_ulObservers.fetch_sub(1);
    while (stPlace.ulRunning.load() != 0) {
        usleep(kRemovePause);
    }
}

const char *EventName(EventKind enKind) {
    static constexpr const char *kNames[] = {"queue put",   "queue take", "queue drop",  "sending",    "sent",
                                             "port opened", "rate set",   "device gone", "device back"};
    const auto ulKind = static_cast<size_t>(enKind);
    return ulKind < std::size(kNames) ? kNames[ulKind] : "unknown";
}

} // namespace host
