/* A host applies its settings again though nothing has changed, as many do once a second. */
#include "bench/groups.h"
#include "bench/library.h"
#include "bench/services.h"
#include "viscacam.h"

namespace bench {

namespace {

constexpr unsigned TIMES = 20000;
constexpr double MICROSECONDS = 1e6;
constexpr uint32_t SHUTTER_PRIORITY = 2;

ExposureParam exposure() {
    ExposureParam profile = {};
    profile.ulExposureMode = SHUTTER_PRIORITY;
    profile.ulShutter = 250;
    profile.ulIris = 280;
    profile.ulGain = 4;
    profile.ulMaxGain = 80;
    return profile;
}

Numbers again() {
    serve("", SONY_BLOCK);
    VISCA_SetCamModuleType(SONY_BLOCK);
    ViscaSetCamCanCtrl(1);
    commandQueue().sink();
    ExposureParam profile = exposure();
    (void)VISCA_SetExposure(0, 0, &profile);
    const unsigned count = times(TIMES);
    const uint64_t before = commandQueue().puts();
    const double from = seconds();
    for (unsigned i = 0; i < count; ++i)
        (void)VISCA_SetExposure(0, 0, &profile);
    return {(seconds() - from) / count * MICROSECONDS,
            static_cast<double>(commandQueue().puts() - before) / count};
}

} // namespace

void profileFigures(unsigned runs, std::vector<Row> &rows) {
    Row time = {"an exposure profile applied again", "limit", "us", {}, {}, Row::Bound::atMost, 1};
    Row packets = {"packets that it sends", "none", "packets"};
    for (unsigned run = 0; run < runs; ++run) {
        const Numbers numbers = inChild(again);
        time.add(numbers[0], 10);
        packets.values.push_back(numbers[1]);
    }
    rows.insert(rows.end(), {time, packets});
}

} // namespace bench
