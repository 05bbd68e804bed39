/**
 * @file wrapped_libc.h
 * The libc calls of the library, wrapped by the linker: a virtual clock, waits that end at once, failures.
 *
 * Virtual time, the state after Reset(): usleep() and sleep() return at once and move the clock; select()
 * looks at the real descriptors once and, when nothing is ready, does the next scripted step (Then()), or
 * parks a ThreadUnderTest, or moves the clock by its whole time-out and returns 0. clock_gettime(),
 * gettimeofday() and time() tell the virtual clock. Everything goes into the journal of Host(), and
 * Host().Fail(Call::Select, ...) and its like make the calls fail.
 *
 * read(), write() and fcntl() are the real ones, on Host().PortFd() with journal and faults; a write() to the
 * port goes nowhere but to Host().AnswerProbe(). A read() of the port that would block for ever fails the
 * test. pthread_create() records and starts nothing until StartThreads().
 */
#ifndef VISCACAM_UNIT_WRAPPED_LIBC_H
#define VISCACAM_UNIT_WRAPPED_LIBC_H

#include "tests/unit/recording_host.h"

#include <ctime>
#include <map>
#include <memory>
#include <sys/types.h>

namespace unit {

/** What happens at a select() that finds nothing ready. */
struct SelectStep {
    uint64_t advance = 0;              /**< microseconds that pass before it returns */
    std::function<void()> action = {}; /**< then this is done, e.g. bytes are fed */
    int error = 0;                     /**< then -1 with this errno; 0: the descriptors are looked at again */
};

struct ThreadStart {
    void *(*body)(void *);
    void *argument;
    bool default_attributes;
};

class Libc {
  public:
    /** Virtual time, empty script, wall clock at 2026-02-03 04:05:06.000789 UTC, no thread is started. */
    void Reset();
    /** Real clock, real waits. For tests whose subject is several real threads. */
    void UseRealTime();
    void StartThreads(); /**< pthread_create() really creates */

    void SetWallClock(time_t seconds, long micros);
    uint64_t Now(); /**< virtual microseconds since Reset */
    void Advance(uint64_t micros);
    std::vector<uint64_t> Pauses(); /**< length of each usleep, sleep and select without descriptors */
    uint64_t Slept();               /**< their sum in microseconds */

    void Then(SelectStep step);
    /** Called at every pause with its number, from 1, on the thread that pauses. */
    void OnPause(std::function<void(unsigned)> hook);
    /** Park a ThreadUnderTest at its n-th pause since Reset (and every later one) until Resume. */
    void ParkAtPause(unsigned number);
    /** A signal ends the n-th pause since Reset when so many microseconds have passed. */
    void InterruptPause(unsigned number, uint64_t after);
    std::vector<ThreadStart> ThreadStarts();

    // For the wrapped functions.
    bool Virtual();
    int DoSelect(int nfds, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout);
    uint64_t DoPause(uint64_t micros); /**< what a signal left of it */
    int DoThreadCreate(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                       void *argument);
    int DoThreadDetach(pthread_t thread);
    timespec WallClock();

  private:
    bool NextStep(SelectStep *step);

    SupportMutex m_mutex;
    bool m_virtual = true, m_start_threads = false;
    uint64_t m_now = 0;
    timespec m_wall{};
    std::deque<SelectStep> m_script;
    std::vector<uint64_t> m_pauses;
    std::function<void(unsigned)> m_on_pause;
    unsigned m_park_at_pause = 0;
    std::map<unsigned, uint64_t> m_interrupted_pauses;
    std::vector<ThreadStart> m_starts;
};

Libc &Clib();

/** How many descriptors this process has open. */
size_t OpenDescriptors();

/**
 * A function of the library on a thread of its own, stepped by the test. It parks at every select() that
 * finds nothing ready and has no scripted step, at a read() that would block, and where ParkAtPause says. It
 * stays parked until Resume() or TimeOut(), for ever if neither comes: bodies without an end are left parked.
 *
 *     ThreadUnderTest sender([] { ViscaQueueMsgProc(nullptr); });
 *     sender.WaitParked();                    // "select queue 0 6000000"
 *     Host().Preload(0, "81 01 04 07 00 FF");
 *     sender.Resume();                        // looks again, sends, parks at "select queue 1 2000000"
 */
class ThreadUnderTest {
  public:
    struct State;
    explicit ThreadUnderTest(std::function<void()> body);
    /** Wait until it is parked or has ended; where it stands: "select queue 0 6000000", "read", "pause
     * 20000", "ended". Fails the test after 20 s. */
    std::string WaitParked();
    std::string Resume();  /**< look again; then WaitParked() */
    std::string TimeOut(); /**< let the select's time-out pass; then WaitParked() */
    pid_t Id();            /**< kernel thread id; once parked or ended */
    std::string Name();    /**< kernel name of the thread, while it is parked */

  private:
    std::string Continue(bool time_out);
    std::shared_ptr<State> m_state;
};

} // namespace unit

#endif
