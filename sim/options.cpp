#include "sim/options.h"

#include <stdexcept>

namespace sim {

namespace {

using std::chrono::microseconds;

Range milliseconds(int least, int most) {
    return {microseconds(1000 * least), microseconds(1000 * most)};
}

void require(bool holds, const char *text) {
    if (!holds)
        throw std::invalid_argument(text);
}

bool isRange(const Range &range) {
    return range.least.count() >= 0 && range.most >= range.least;
}

} // namespace

Latency Latency::none() {
    return {};
}

// The observed times are to the end of a reply; three bytes at 9600 bit/s take 3.1 ms of them.
Latency Latency::realLine() {
    Latency latency;
    latency.acknowledge = milliseconds(33, 39);
    latency.complete = milliseconds(52, 54);
    latency.refuse = milliseconds(21, 33);
    latency.answer = milliseconds(21, 33);
    return latency;
}

Options Options::fast(const std::string &camera) {
    Options options;
    options.camera = camera;
    options.paced = false;
    options.vertical = false;
    options.start = Power::on;
    return options;
}

const Options &checked(const Options &options) {
    const Latency &latency = options.latency;
    findCamera(options.camera);
    require(options.baud == 9600 || options.baud == 19200 || options.baud == 38400,
            "a camera's rate is 9600, 19200 or 38400 bit/s");
    require(options.frameRate >= 1 && options.frameRate <= 1000, "a frame rate is 1 to 1000 a second");
    require(options.bootTime.count() >= 0 && options.bootTime <= std::chrono::minutes(10),
            "a boot time is 0 to 600000 ms");
    require(options.timeScale >= 0.01 && options.timeScale <= 1000, "a time scale is 0.01 to 1000");
    require(isRange(latency.acknowledge) && isRange(latency.complete) && isRange(latency.refuse) &&
                isRange(latency.answer),
            "a latency is not negative, and its least value not above its most");
    return options;
}

} // namespace sim
