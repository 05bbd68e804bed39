// Waiting for a descriptor, and standing back when waiting makes no sense.
#ifndef VISCACAM_VISCA_QUE_WAIT_H
#define VISCACAM_VISCA_QUE_WAIT_H

#include <stdint.h>

namespace viscacam {

enum WaitResult {
    WAIT_READABLE,
    WAIT_TIMEOUT,
    WAIT_INTERRUPTED, // by a signal, before anything else happened
    WAIT_FAILED,      // select failed, or the descriptor lies outside 0 to FD_SETSIZE - 1
};

// Wait until a descriptor is readable, for at most ulMilliseconds.
WaitResult WaitReadable(int32_t iFd, uint32_t ulMilliseconds);

// The monotonic clock.
int64_t MonotonicUs();

// Sleep for at least so long; signals do not cut it short.
void SleepMs(uint32_t ulMilliseconds);

// A pause that grows while the same trouble goes on, so that neither the processor nor the log is flooded: 20
// ms at first, 1 s after a few rounds. One thread owns one.
struct GrowingPause {
    uint32_t ulNextMs;
};

constexpr uint32_t PAUSE_FIRST_MS = 20;
constexpr uint32_t PAUSE_LONGEST_MS = 1000;

void PauseAndGrow(GrowingPause *pstPause);
void PauseReset(GrowingPause *pstPause);

} // namespace viscacam

#endif
