#include "sim/options.h"

#include "sim/kova.h"

#include <algorithm>
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

bool isByte(uint8_t byte) {
    return byte != 0xFF; // it would end the reply
}

bool areBytes(const std::array<uint8_t, 4> &version) {
    return std::all_of(version.begin(), version.end(), isByte);
}

bool isSoftVersion(const std::string &text) {
    return text.size() <= 13 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void check(const KovaOptions &kova) {
    require(areBytes(kova.uimageVersion) && areBytes(kova.oldProgramVersion),
            "a Kova version's numbers are below 255");
    require(isVersionText(kova.programVersion) && isVersionText(kova.extensionVersion),
            "a Kova version has at most 99 digits, '-', '_' and characters from 'A' to '~'");
    require(isSoftVersion(kova.softVersion), "a Kova soft version has at most 13 printable characters");
    for (const KovaOptions::Board &board : kova.boards)
        require(isByte(board.version) && isByte(board.type), "a Kova board's numbers are below 255");
    require(kova.flashTime.count() >= 0 && kova.flashTime <= std::chrono::minutes(10),
            "a Kova flash time is 0 to 600000 ms");
    require(kova.upgradeEndsIn == 4 || kova.upgradeEndsIn == 5, "a Kova upgrade ends in state 4 or 5");
    require(kova.transferPatience.count() >= 1 && kova.transferPatience <= std::chrono::minutes(10),
            "a Kova transfer's patience is 1 to 600000 ms");
    require(kova.temperature >= -127 && kova.temperature <= 128, "a Kova temperature is -127 to 128 degrees");
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
    check(options.kova);
    return options;
}

} // namespace sim
