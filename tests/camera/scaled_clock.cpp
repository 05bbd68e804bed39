#include "tests/camera/scaled_clock.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <ctime>
#include <mutex>
#include <utility>

#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/camera/journal.h"

extern "C" {
int __real_select(int count, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout);
int __real_usleep(useconds_t micros);
int __real_clock_gettime(clockid_t clock, timespec *now);
}

namespace camera {

namespace {

double RealSeconds() {
    timespec now = {};
    __real_clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

struct ScaledClock {
    std::mutex mutex;
    double scale = 1;
    double real = RealSeconds(); // when the scale was set
    double library = real;       // what the library's clock said then
};

ScaledClock &TheClock() {
    static ScaledClock &clock = *new ScaledClock;
    return clock;
}

double Scale() {
    const std::lock_guard lock(TheClock().mutex);
    return TheClock().scale;
}

double Now(const ScaledClock &clock) {
    return clock.library + (RealSeconds() - clock.real) * clock.scale;
}

timeval Hurried(const timeval &time) {
    const double seconds =
        (static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6) / Scale();
    timeval hurried;
    hurried.tv_sec = static_cast<time_t>(seconds);
    hurried.tv_usec = static_cast<suseconds_t>((seconds - std::floor(seconds)) * 1e6);
    return hurried;
}

thread_local std::function<bool(double)> t_pauseHook;
std::atomic<uint64_t> g_waits;

void Pause(double seconds) {
    ++g_waits;
    if (t_pauseHook && t_pauseHook(seconds)) {
        return;
    }
    double left = seconds / Scale();
    while (left > 0) {
        const double part = std::min(left, 0.9); // usleep() need not take a second
        __real_usleep(static_cast<useconds_t>(part * 1e6) + 1);
        left -= part;
    }
}

} // namespace

void SetLibraryTimeScale(double scale) {
    ScaledClock &clock = TheClock();
    const std::lock_guard lock(clock.mutex);
    clock.library = Now(clock);
    clock.real = RealSeconds();
    clock.scale = scale;
}

void HurryUntil(const std::string &part, double scale) {
    Journal::Get().OnHostStep([part](const std::string &step) {
        if (Contains(step, part)) {
            SetLibraryTimeScale(1);
        }
    });
    SetLibraryTimeScale(scale);
}

void OnPause(std::function<bool(double)> hook) {
    t_pauseHook = std::move(hook);
}

double LibrarySeconds() {
    const std::lock_guard lock(TheClock().mutex);
    return Now(TheClock());
}

uint64_t LibraryWaits() {
    return g_waits;
}

} // namespace camera

extern "C" {

int __wrap_select(int count, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout) {
    ++camera::g_waits;
    if (timeout == nullptr) {
        return __real_select(count, reads, writes, errors, nullptr);
    }
    timeval hurried = camera::Hurried(*timeout);
    return __real_select(count, reads, writes, errors, &hurried);
}

int __wrap_usleep(useconds_t micros) {
    camera::Pause(micros / 1e6);
    return 0;
}

unsigned __wrap_sleep(unsigned seconds) {
    camera::Pause(seconds);
    return 0;
}

int __wrap_clock_gettime(clockid_t clock, timespec *now) {
    if (clock != CLOCK_MONOTONIC) {
        return __real_clock_gettime(clock, now);
    }
    const double seconds = camera::LibrarySeconds();
    now->tv_sec = static_cast<time_t>(seconds);
    now->tv_nsec = static_cast<long>((seconds - std::floor(seconds)) * 1e9);
    return 0;
}

} // extern "C"
