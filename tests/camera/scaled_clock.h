/**
 * @file scaled_clock.h
 * Hurries the library's time limits, so that a test need not wait 6 s for an inquiry without answer.
 *
 * The library waits by select(), usleep() and sleep() and reads the clock by clock_gettime(). This executable
 * wraps these four by the linker: waits are divided by the scale, the monotonic clock runs that much faster.
 * In the same executable the simulated camera and GoogleTest call none of them (the camera has a scale of its
 * own, sim::Options::timeScale), and of the reference host only the time stamps of its events do, which thus
 * are library seconds. Condition variables, poll() and std::chrono stay in real time.
 *
 * A hurried limit is also a limit on how slow the machine may be: at scale 20 the 2 s for a command are 100
 * ms. So tests hurry while nothing is expected to happen in time, and HurryUntil() ends the hurry exactly
 * when the limit has passed, before the library does anything else.
 */
#ifndef VISCACAM_TESTS_CAMERA_SCALED_CLOCK_H
#define VISCACAM_TESTS_CAMERA_SCALED_CLOCK_H

#include <cstdint>
#include <functional>
#include <string>

namespace camera {

/** The library's time runs this many times faster from now on; 1 is real time. Waits that have begun keep
 * their end. */
void SetLibraryTimeScale(double scale);

/** Hurry until the journal's host side gets a step that contains this text. */
void HurryUntil(const std::string &part, double scale = 20);

/**
 * Called at every pause (sleep, usleep) that the library makes in the calling thread, with its seconds. True
 * takes the place of the pause, after false the library pauses as usual. So a test waits for what the camera
 * does in a pause, which no machine is too slow for. Empty: no longer called.
 */
void OnPause(std::function<bool(double)> hook);

/** Seconds of the library's monotonic clock. */
double LibrarySeconds();

/** Waits and pauses that all threads of the library have begun so far. */
uint64_t LibraryWaits();

} // namespace camera

#endif
