#include "sim/scheduler.h"

namespace sim {

std::optional<Clock::time_point> Scheduler::next() const {
    if (m_due.empty())
        return std::nullopt;
    return m_due.begin()->first.first;
}

void Scheduler::runNext() {
    const Action action = std::move(m_due.begin()->second);
    m_due.erase(m_due.begin());
    action();
}

} // namespace sim
