/* Preloaded into a program: its pauses last a hundredth. */
#include <time.h>
#include <unistd.h>

#define SHORTER 100

int usleep(useconds_t ulMicroseconds) {
    struct timespec stTime = {0, (long)(ulMicroseconds / SHORTER) * 1000};
    return nanosleep(&stTime, NULL);
}

unsigned int sleep(unsigned int ulSeconds) {
    struct timespec stTime = {0, (long)ulSeconds * (1000000000L / SHORTER)};
    (void)nanosleep(&stTime, NULL);
    return 0;
}
