// Signals that interrupt every call of every thread, and a wall clock that is set while all waits are under
// way.
#include <atomic>
#include <csignal>
#include <ctime>
#include <thread>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/faults/fault_test.h"

extern "C" {
int __real_gettimeofday(timeval *now, void *zone);
time_t __real_time(time_t *now);
}

namespace faults {

namespace {

std::atomic<long> g_clockStep; // seconds that somebody has set the wall clock by
std::atomic<uint64_t> g_signals;

void OnSignal(int) {
    ++g_signals;
}

// Signals all threads of the library, and one more, every few milliseconds until it is destroyed.
class Signals {
  public:
    Signals() : m_asker(static_cast<uint32_t>(syscall(SYS_gettid))) {
        struct sigaction action = {};
        action.sa_handler = OnSignal; // no SA_RESTART: calls end with EINTR
        sigaction(SIGUSR1, &action, nullptr);
        m_thread = std::thread([this] { Run(); });
    }
    ~Signals() {
        m_end = true;
        m_thread.join();
    }
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

  private:
    void Run() {
        while (!m_end) {
            syscall(SYS_tgkill, getpid(), m_asker, SIGUSR1);
            for (const host::ThreadInfo &thread : host::Threads()) {
                syscall(SYS_tgkill, getpid(), thread.ulThreadId, SIGUSR1);
            }
            g_clockStep = g_clockStep == 0 ? -86400 * 365 : g_clockStep > 0 ? 0 : 86400 * 365;
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
    }

    uint32_t m_asker;
    std::atomic<bool> m_end{false};
    std::thread m_thread;
};

} // namespace

class SignalFaults : public FaultTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(SignalFaults, F30_AndClockStepsEveryFewMillisecondsLoseNothing) {
    Begin(Paced(GetParam()));
    {
        const Signals signals;
        WorkWithoutLoss(8);
    }
    Expect(8 * g_signals);
    EXPECT_GT(g_signals, 0u);
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Rates, SignalFaults, ::testing::Values(9600u, 19200u, 38400u),
                         ::testing::PrintToStringParamName());

} // namespace faults

extern "C" {

int __wrap_gettimeofday(timeval *now, void *zone) {
    const int result = __real_gettimeofday(now, zone);
    now->tv_sec += faults::g_clockStep;
    return result;
}

time_t __wrap_time(time_t *now) {
    const time_t shifted = __real_time(nullptr) + faults::g_clockStep;
    if (now != nullptr) {
        *now = shifted;
    }
    return shifted;
}

} // extern "C"
