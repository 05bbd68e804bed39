#include "sim/block.h"

namespace sim {

namespace {

constexpr int OFF = 3; // 2 is on

Handler assignsOrientation(const std::string &name) {
    return [=](Block &block, const Args &args) {
        const unsigned value = args.nibble(0);
        if (value != 2 && value != 3)
            return refused(SYNTAX_ERROR);
        if (block.kova().has(ABILITY_TURNS_AT_POWER_ON))
            block.settings().setAtPowerOn(name, static_cast<int>(value));
        else
            block.settings().set(name, static_cast<int>(value));
        return done();
    };
}

} // namespace

// A Kova module keeps its orientation, a block begins anew.
void addOrientationSettings(Settings &settings, const Traits &traits) {
    for (const char *name : {"mirror", "flip"}) {
        if (isKova(traits))
            settings.addKept(name, OFF);
        else
            settings.add(name, OFF);
    }
}

std::vector<Row> orientationRows() {
    return {
        {"01 04 61 0p", assignsOrientation("mirror")},
        {"09 04 61", tells("mirror")},
        {"01 04 66 0p", assignsOrientation("flip")},
        {"09 04 66", tells("flip")},
    };
}

} // namespace sim
