#include "visca_que/wait.h"

#include <errno.h>
#include <sys/select.h>
#include <time.h>
#include <unistd.h>

namespace viscacam {

WaitResult WaitReadable(int32_t iFd, uint32_t ulMilliseconds) {
    if (iFd < 0 || iFd >= FD_SETSIZE) {
        return WAIT_FAILED;
    }
    fd_set stReadable;
    FD_ZERO(&stReadable);
    FD_SET(iFd, &stReadable);
    struct timeval stTimeout;
    stTimeout.tv_sec = static_cast<time_t>(ulMilliseconds / 1000U);
    stTimeout.tv_usec = static_cast<suseconds_t>(ulMilliseconds % 1000U) * 1000;

    const int iReady = select(iFd + 1, &stReadable, nullptr, nullptr, &stTimeout);
    if (iReady > 0) {
        return WAIT_READABLE;
    }
    if (iReady == 0) {
        return WAIT_TIMEOUT;
    }
    return errno == EINTR ? WAIT_INTERRUPTED : WAIT_FAILED;
}

int64_t MonotonicUs() {
    struct timespec stNow = {};
    (void)clock_gettime(CLOCK_MONOTONIC, &stNow);
    return static_cast<int64_t>(stNow.tv_sec) * 1000000 + stNow.tv_nsec / 1000;
}

void SleepMs(uint32_t ulMilliseconds) {
    const int64_t llEnd = MonotonicUs() + static_cast<int64_t>(ulMilliseconds) * 1000;
    // usleep takes less than a second. A signal ends either call early; what is left is then slept by the
    // clock.
    const bool bInterrupted = (ulMilliseconds >= 1000 && sleep(ulMilliseconds / 1000) != 0) ||
                              (ulMilliseconds % 1000 != 0 && usleep(ulMilliseconds % 1000 * 1000) != 0);
    if (!bInterrupted) {
        return;
    }
    for (int64_t llLeft = llEnd - MonotonicUs(); llLeft > 0; llLeft = llEnd - MonotonicUs()) {
        (void)usleep(static_cast<useconds_t>(llLeft < 999999 ? llLeft : 999999));
    }
}

bool WaitForNextByte(int32_t iFd) {
    constexpr int64_t BYTE_GAP_US = 1000000;
    const int64_t llStart = MonotonicUs();
    int64_t llGap = 0;
    while (llGap <= BYTE_GAP_US) {
        const uint32_t ulLeftMs = static_cast<uint32_t>((BYTE_GAP_US - llGap) / 1000 + 1);
        const WaitResult enWait = WaitReadable(iFd, ulLeftMs);
        if (enWait == WAIT_READABLE || enWait == WAIT_FAILED) {
            return true;
        }
        llGap = MonotonicUs() - llStart;
    }
    return false;
}

void PauseAndGrow(GrowingPause *pstPause) {
    constexpr uint32_t ulGrowth = 10;
    SleepMs(pstPause->ulNextMs);
    pstPause->ulNextMs *= ulGrowth;
    if (pstPause->ulNextMs > PAUSE_LONGEST_MS) {
        pstPause->ulNextMs = PAUSE_LONGEST_MS;
    }
}

void PauseReset(GrowingPause *pstPause) {
    pstPause->ulNextMs = PAUSE_FIRST_MS;
}

} // namespace viscacam
