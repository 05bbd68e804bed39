/* From VISCA_Init to the first command, beyond the pauses that the search itself makes. */
#include <atomic>

#include "bench/groups.h"
#include "bench/library.h"
#include "bench/line.h"
#include "bench/services.h"
#include "sim/sim.h"
#include "viscacam.h"

namespace bench {

namespace {

const sim::Bytes DIGITAL_ZOOM_OFF = {0x81, 0x01, 0x04, 0x06, 0x03, 0xFF};
constexpr double MILLISECONDS = 1e3;
constexpr double SEARCH = 20 * (3 * 0.5 + 1); // attempts, rates, the pause of each, and after an attempt

Numbers untilFirstCommand(unsigned baud) {
    std::atomic<bool> heard{false};
    std::atomic<double> at{0};
    sim::Options options = sim::Options::fast();
    options.baud = baud;
    options.paced =
        true; // an answer in no time could be there before the search's first look, as none can be
    options.trace = [&](const sim::TraceEvent &event) {
        if (event.direction == sim::Direction::toCamera && event.bytes == DIGITAL_ZOOM_OFF &&
            !heard.exchange(true))
            at = std::chrono::duration<double>(event.time.time_since_epoch()).count();
    };
    const sim::Camera camera(options);
    const double begun = seconds();
    startLibrary(camera.path(), SONY_BLOCK);
    camera.waitFor([&](const sim::State &) { return at != 0; }, std::chrono::seconds(10));
    const double onTheLine = static_cast<double>(10 * DIGITAL_ZOOM_OFF.size()) / baud;
    return {at - onTheLine - begun};
}

Numbers withoutCamera() {
    std::string path;
    (void)newTerminal(path);
    serve(path, SONY_BLOCK);
    const double begun = seconds();
    (void)VISCA_Init(0);
    return {seconds() - begun};
}

} // namespace

void startFigures(unsigned runs, std::vector<Row> &rows) {
    struct Rate {
        unsigned baud;
        double pauses; // seconds that the search waits before it has found this rate, and after
    };
    for (const Rate &rate : {Rate{9600, 0.1}, Rate{19200, 0.6}, Rate{38400, 1.1}}) {
        Row row = {"start-up at " + std::to_string(rate.baud) + " bit/s, beyond the search's " +
                       std::to_string(static_cast<int>(rate.pauses * MILLISECONDS)) + " ms",
                   "limit", "ms"};
        row.bound = Row::Bound::atMost;
        row.target = 1;
        for (unsigned run = 0; run < runs; ++run) {
            const double time = inChild([&] { return untilFirstCommand(rate.baud); })[0];
            row.add((time - rate.pauses) * MILLISECONDS, 20);
        }
        rows.push_back(row);
    }
    Row none = {"start-up without a camera, beyond the search's 50 s", "limit", "ms"};
    none.bound = Row::Bound::atMost;
    none.target = 1;
    none.add((inChild(withoutCamera)[0] - SEARCH) * MILLISECONDS, 200);
    none.note = "one run";
    rows.push_back(none);
}

} // namespace bench
