#include "sim/block.h"

namespace sim {

namespace {

constexpr int OFF = 3; // 2 is on

} // namespace

void addOrientationSettings(Settings &settings) {
    settings.add("mirror", OFF);
    settings.add("flip", OFF);
}

std::vector<Row> orientationRows() {
    return {
        {"01 04 61 0p", assigns("mirror", 2, 3)},
        {"09 04 61", tells("mirror")},
        {"01 04 66 0p", assigns("flip", 2, 3)},
        {"09 04 66", tells("flip")},
    };
}

} // namespace sim
