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

// Wait for the next byte of an answer that is under way. False after more than 1 s of silence by the
// monotonic clock, which means that its end was lost; a wait that ends early is taken up again. Where waiting
// is not possible: true, and the read decides.
bool WaitForNextByte(int32_t iFd);

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
