#ifndef VISCACAM_SIM_SCHEDULER_H
#define VISCACAM_SIM_SCHEDULER_H

#include "sim/sim.h"

#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace sim {

/* Things to do later, in order of time; those due at the same time in the order in which they were asked for.
 */
class Scheduler {
  public:
    using Action = std::function<void()>;

    void at(Clock::time_point when, Action action) { m_due[{when, m_next++}] = std::move(action); }
    /* The time of the next action, or nothing to wait for. */
    std::optional<Clock::time_point> next() const;
    /* Run the next action, which there must be. */
    void runNext();

  private:
    std::map<std::pair<Clock::time_point, uint64_t>, Action> m_due;
    uint64_t m_next = 0;
};

} // namespace sim

#endif
