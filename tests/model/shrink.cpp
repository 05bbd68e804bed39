#include "tests/model/shrink.h"

#include <algorithm>

namespace model {

namespace {

Plan Without(const Plan &plan, size_t begin, size_t count) {
    Plan shorter = plan;
    const auto first = shorter.steps.begin() + static_cast<std::ptrdiff_t>(begin);
    shorter.steps.erase(first, first + static_cast<std::ptrdiff_t>(count));
    return shorter;
}

} // namespace

Plan Shrink(Plan plan, const std::function<bool(const Plan &)> &fails, unsigned tries) {
    size_t piece = std::max<size_t>(1, plan.steps.size() / 2);
    while (tries > 0) {
        bool shortened = false;
        for (size_t at = 0; at < plan.steps.size() && tries > 0;) {
            const Plan shorter = Without(plan, at, std::min(piece, plan.steps.size() - at));
            --tries;
            if (fails(shorter)) {
                plan = shorter;
                shortened = true;
            } else {
                at += piece;
            }
        }
        if (piece == 1 && !shortened) {
            break;
        }
        piece = std::max<size_t>(1, piece / 2);
    }
    return plan;
}

} // namespace model
