#ifndef VISCACAM_SIM_WORLD_H
#define VISCACAM_SIM_WORLD_H

#include "sim/faults.h"
#include "sim/random.h"
#include "sim/scheduler.h"
#include "sim/sim.h"

namespace sim {

/* What all parts of one camera share: its time, its dice, its faults and its diary. */
struct World {
    World(const Options &given, Clock::time_point start)
        : options(given), now(start), faults(given.seed), dice(given.seed) {}

    const Options options;
    Clock::time_point now; /* set on entry from outside, and to its own for what is due */
    Scheduler scheduler;
    Faults faults;
    Random dice;
    std::vector<TraceEvent> diary; /* not yet handed to the trace callback */

    /* A duration of the camera's time as real time. */
    Clock::duration real(std::chrono::duration<double> cameraTime) const {
        return std::chrono::duration_cast<Clock::duration>(cameraTime / options.timeScale);
    }
    /* One value of a latency, as real time. */
    Clock::duration draw(const Range &range);
    void after(std::chrono::duration<double> cameraTime, Scheduler::Action action) {
        scheduler.at(now + real(cameraTime), std::move(action));
    }
    void remark(const std::string &text);
    void record(TraceEvent event);
};

} // namespace sim

#endif
