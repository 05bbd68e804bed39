#include "sim/image.h"

#include "sim/block.h"

#include <iterator>

namespace sim {

namespace {

constexpr int AVERAGE = 3;
constexpr int SWITCHED_OFF = 3; // 2 is on
constexpr int HALF_OPEN = 0x09;
constexpr int SIXTIETH = 0x06;
constexpr int FULL_SHUTTER_RANGE = 10000;

constexpr int LAST_SHUTTER = 0x15;
constexpr int LAST_IRIS = 0x11;
constexpr int LAST_GAIN = 0x0F;
constexpr int FULL_GAIN = 100; // a Kova module's gain is a percentage
constexpr int LAST_COMPENSATION = 0x0E;

/* What the host may set in each exposure mode; the rest belongs to the automatic. */
struct ExposureMode {
    int code;
    bool sony;
    bool kova;
    bool shutter;
    bool iris;
    bool gain;
    bool compensation;
};

constexpr bool yes = true;
constexpr bool no = false;

// clang-format off
const ExposureMode MODES[] = {
    // code  sony  kova  shutter  iris  gain  compensation
    {0x00,   yes,  yes,  no,      no,   no,   yes}, // automatic
    {0x03,   yes,  yes,  yes,     yes,  yes,  no},  // manual
    {0x0A,   yes,  yes,  yes,     no,   no,   yes}, // shutter priority
    {0x0B,   yes,  yes,  no,      yes,  no,   yes}, // iris priority
    {0x0C,   no,   yes,  no,      no,   no,   yes}, // the module's own
    {0x0D,   no,   yes,  no,      no,   no,   yes}, // the module's own
    {0x0E,   no,   yes,  no,      no,   yes,  yes}, // gain fixed by the host
    {0x0F,   no,   yes,  no,      no,   no,   yes}, // automatic within the ranges of gain and shutter
};
// clang-format on

/* Shutter positions that are longer than a vertical period, as N of 1/N s; the later ones are not. */
struct SlowShutter {
    int at60;
    int at50;
};

const SlowShutter SLOW_SHUTTERS[] = {{1, 1}, {2, 2}, {4, 3}, {8, 6}, {15, 12}, {30, 25}};

const ExposureMode &modeOf(const Settings &settings) {
    const int code = settings.get("exposureMode");
    for (const ExposureMode &mode : MODES) {
        if (mode.code == code)
            return mode;
    }
    return MODES[0];
}

std::vector<int> modeCodes(bool kova) {
    std::vector<int> codes;
    for (const ExposureMode &mode : MODES) {
        if (kova ? mode.kova : mode.sony)
            codes.push_back(mode.code);
    }
    return codes;
}

Condition where(bool ExposureMode::*allowed) {
    return [=](Block &block) { return modeOf(block.settings()).*allowed; };
}

// N of 1/N s of a shutter position; 0 where it is shorter than a vertical period at any norm.
int slowShutter(int position, double frameRate) {
    if (position >= static_cast<int>(std::size(SLOW_SHUTTERS)))
        return 0;
    const SlowShutter &shutter = SLOW_SHUTTERS[position];
    return frameRate <= 50 ? shutter.at50 : shutter.at60;
}

// A shutter position takes the place of the shutter value that was set before.
Handler forgets(const std::string &name, const Handler &handler) {
    return [=](Block &block, const Args &args) {
        const Outcome outcome = handler(block, args);
        if (outcome.kind == Outcome::Kind::done)
            block.settings().set(name, 0);
        return outcome;
    };
}

std::vector<Row> commonRows() {
    return {
        {"09 04 39", tells("exposureMode")},
        {"09 04 4A", tellsNibbles("shutter", 4)},
        {"01 04 4B 00 00 0p 0q", assigns("iris", 0, LAST_IRIS, where(&ExposureMode::iris))},
        {"09 04 4B", tellsNibbles("iris", 4)},
        {"09 04 4C", tellsNibbles("gain", 4)},
        {"01 04 3E 0p", assignsOneOf("expComp", {2, 3}, where(&ExposureMode::compensation))},
        {"09 04 3E", tells("expComp")},
        {"01 04 4E 00 00 0p 0q",
         assigns("expCompLevel", 0, LAST_COMPENSATION, where(&ExposureMode::compensation))},
        {"09 04 4E", tellsNibbles("expCompLevel", 4)},
        {"09 04 59", tells("metering")},
        {"01 04 29 00 0p 00 0q", assignsPair("spotX", "spotY", 1, 0, 15)},
        {"09 04 29", tellsPair("spotX", "spotY", 2)},
        {"01 04 5A 0p", assignsOneOf("slowShutter", {2, 3})},
        {"09 04 5A", tells("slowShutter")},
    };
}

std::vector<Row> sonyRows() {
    return {
        {"01 04 39 0p", assignsOneOf("exposureMode", modeCodes(no))},
        {"01 04 4A 00 00 0p 0q", assigns("shutter", 0, LAST_SHUTTER, where(&ExposureMode::shutter))},
        {"01 04 4C 00 00 0p 0q", assigns("gain", 0, LAST_GAIN, where(&ExposureMode::gain))},
        {"01 04 59 0p", assignsOneOf("metering", {2, 3})},
    };
}

std::vector<Row> kovaRows() {
    const Handler shutter = assigns("shutter", 0, LAST_SHUTTER, where(&ExposureMode::shutter));
    const Handler value = assigns("shutterValue", 1, 0xFFFF, where(&ExposureMode::shutter));
    return {
        {"01 04 39 0p", assignsOneOf("exposureMode", modeCodes(yes))},
        {"01 04 4A 00 00 0p 0q", forgets("shutterValue", shutter)},
        {"01 04 CB 0p 0q 0r 0s", value},
        {"01 04 4C 00 00 0p 0q", assigns("gain", 0, FULL_GAIN, where(&ExposureMode::gain))},
        {"01 04 59 0p", assignsOneOf("metering", {2, 3, 4})},
        {"01 04 A3 0p 0q 0r 0s 0t 0u 0v 0w",
         assignsPair("shutterLow", "shutterHigh", 4, 1, 0xFFFF, Order::rising)},
        {"01 04 2C 0p 0q 0r 0s", assignsPair("gainLow", "gainHigh", 2, 0, FULL_GAIN, Order::rising)},
        {"01 04 CA 00 00 0p 0q", assigns("slowShutterLimit", 1, 0xFF)},
    };
}

} // namespace

void addExposureSettings(Settings &settings, const Traits &traits) {
    settings.add("exposureMode", 0);
    settings.add("shutter", SIXTIETH);
    settings.add("iris", HALF_OPEN);
    settings.add("gain", isKova(traits) ? 0 : 1);
    settings.add("expComp", SWITCHED_OFF);
    settings.add("expCompLevel", LAST_COMPENSATION / 2);
    settings.add("metering", AVERAGE);
    settings.add("spotX", 8);
    settings.add("spotY", 8);
    settings.add("slowShutter", SWITCHED_OFF);
    if (!isKova(traits))
        return;
    settings.add("shutterValue", 0);
    settings.add("shutterLow", 1);
    settings.add("shutterHigh", FULL_SHUTTER_RANGE);
    settings.add("gainLow", 0);
    settings.add("gainHigh", FULL_GAIN);
    settings.add("slowShutterLimit", 1);
}

std::vector<Row> exposureRows(const Traits &traits) {
    std::vector<Row> rows = isKova(traits) ? kovaRows() : sonyRows();
    const std::vector<Row> common = commonRows();
    rows.insert(rows.end(), common.begin(), common.end());
    return rows;
}

double shutterSeconds(const Settings &settings, const Traits &traits, double frameRate) {
    if (!modeOf(settings).shutter)
        return 0;
    const int value = isKova(traits) ? settings.get("shutterValue") : 0;
    const int n = value > 0 ? value : slowShutter(settings.get("shutter"), frameRate);
    return n > 0 ? 1.0 / n : 0;
}

} // namespace sim
