/* Preloaded into the XMODEM programs: their pauses and time limits, which are alarms, last a tenth. */
#include <sys/time.h>
#include <unistd.h>

#define SHORTER 10

unsigned int alarm(unsigned int ulSeconds) {
    const long lMicroseconds = (long)ulSeconds * (1000000L / SHORTER);
    const struct itimerval stNext = {{0, 0}, {lMicroseconds / 1000000L, lMicroseconds % 1000000L}};
    struct itimerval stBefore = {{0, 0}, {0, 0}};
    (void)setitimer(ITIMER_REAL, &stNext, &stBefore);
    return (unsigned int)stBefore.it_value.tv_sec * SHORTER;
}
