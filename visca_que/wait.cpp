#include "visca_que/wait.h"

#include <errno.h>
#include <sys/select.h>
#include <time.h>
#include <unistd.h>

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

int64_t MonotonicMs() {
    struct timespec stNow = {};
    (void)clock_gettime(CLOCK_MONOTONIC, &stNow);
    return static_cast<int64_t>(stNow.tv_sec) * 1000 + stNow.tv_nsec / 1000000;
}

void SleepMs(uint32_t ulMilliseconds) {
    (void)usleep(ulMilliseconds * 1000U);
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
