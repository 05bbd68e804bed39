// The world in which the library runs here: a port and queues in memory, and a clock that moves only while
// everybody waits. Nothing sleeps, nothing is formatted, nothing is allocated, and the same input always does
// the same.
//
// The library's threads, where a target wants them, are fibers of the one thread that there is: they hand
// over where they wait. The calls of libc that the library makes are wrapped (libc.cpp) and end up here.
#ifndef VISCACAM_FUZZ_WORLD_H
#define VISCACAM_FUZZ_WORLD_H

#include "fuzz/input.h"
#include "viscacam.h"
#include "viscacam_host.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace fuzz {

/** Descriptors that belong to nobody: below FD_SETSIZE, far above those of the process. */
constexpr int PORT_FD = 900;
constexpr int FIRST_QUEUE_FD = 901;
constexpr int NO_FD = -1;
constexpr uint64_t SECOND = 1000000; // the clock counts microseconds
constexpr uint64_t NEVER = UINT64_MAX;

/** Whether the calling thread is inside a run: outside, the wrapped calls are the real ones. */
bool Inside();

/** One run of a target: from here to the end of the scope the library lives in a fresh world. */
class Run {
  public:
    Run();
    ~Run();
};

/* ---- The clock ---- */

uint64_t Now();
/** Microseconds until anybody's wait may end are jumped over. True: the descriptor is readable. */
bool WaitUntil(int fd, uint64_t deadline);
/** Waits so far in this run; a busy loop shows here. */
unsigned long Waits();

/* ---- The port ---- */

/** The camera says these bytes at that time. They must stay where they are until the end of the run. */
void Feed(Span bytes, uint64_t when);
/** What a read of the port gives, at most so many bytes at once; 0: the line was hung up. Blocks as a port
 * does. */
size_t ReadPort(uint8_t *to, size_t size);
void LimitReads(size_t most);
size_t Unread();
unsigned long BytesRead();

/* ---- What the host was asked to do ---- */

/** Called before each read, send and put, to interfere and to look. Null members are not called. */
struct Hooks {
    void (*read)() = nullptr;
    /** What DRV_ComSend returns. */
    int32_t (*send)(Span bytes) = nullptr;
    /** False: the put fails. */
    bool (*put)(uint32_t queue, const ViscaPkt &packet) = nullptr;
    void (*taken)(uint32_t queue, const ViscaPkt &packet) = nullptr;
    void (*log)(uint32_t level, const char *format, __builtin_va_list arguments) = nullptr;
    void (*system)(const char *command) = nullptr;
    /** A wait or a sleep has ended without anything to read. */
    void (*idle)() = nullptr;
};
Hooks &World();

void SetModuleType(uint32_t type);
unsigned long LogLines();
unsigned long Dumps(); // lines of the camera log
void AddLogLine(bool dump);
constexpr size_t QUEUE_CAPACITY = 32;
void LimitQueue(uint32_t queue, size_t capacity);
size_t QueueLength(uint32_t queue);
/** From outside, unseen by the hooks. */
bool Preload(uint32_t queue, const ViscaPkt &packet);
void EmptyQueue(uint32_t queue);

/* ---- Fibers ---- */

/** The library's next threads become fibers, which live as long as the process. */
void StartFiber(void *(*body)(void *), void *argument);
/** 0 for the one that runs the target. */
size_t CurrentFiber();

/* ---- Files that the library opens ---- */

/** A file in memory, which may grow while it is open. */
struct MemoryFile {
    const char *path = nullptr;
    Span content;
    bool missing = false;
    unsigned opened = 0;    // attempts
    FILE *handle = nullptr; // while it is open
};
void PlaceFile(MemoryFile *file); // until the end of the run
void RemoveFiles();

} // namespace fuzz

#endif
