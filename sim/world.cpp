#include "sim/world.h"

namespace sim {

Clock::duration World::draw(const Range &range) {
    const auto span = static_cast<uint64_t>((range.most - range.least).count());
    return real(range.least + std::chrono::microseconds(dice.below(span + 1)));
}

void World::remark(const std::string &text) {
    record({now, Direction::remark, {}, text});
}

void World::record(TraceEvent event) {
    if (options.trace)
        diary.push_back(std::move(event));
}

} // namespace sim
