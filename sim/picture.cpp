#include "sim/image.h"

#include "sim/block.h"

namespace sim {

namespace {

constexpr int SWITCHED_OFF = 3; // 2 is on
constexpr int LAST_WHITE_BALANCE = 0x08;
constexpr int LAST_COLOUR_GAIN = 0x0E;
constexpr int LAST_APERTURE = 0x0F;
constexpr int LAST_NOISE_REDUCTION = 5;
constexpr int LAST_WDR_LEVEL = 9;
constexpr int BYTE = 0xFF;
constexpr int MIDDLE = 0x80;

constexpr uint32_t SONY3 = 0x02000003;
constexpr uint32_t SONY5 = 0x02000005;

std::vector<int> wdrCodes(const Traits &traits) {
    if (isKova(traits))
        return {0x00, 0x01, 0x03};
    if (traits.type.code == SONY5)
        return {0x00, 0x03, 0x06};
    return {0x00, 0x02, 0x03};
}

// On with the levels from least to most, off with level 0.
Handler assignsDefog(unsigned least, unsigned most) {
    return [=](Block &block, const Args &args) {
        const unsigned mode = args.nibble(0);
        const unsigned level = args.nibble(1);
        const bool on = mode == 2 && level >= least && level <= most;
        const bool off = mode == 3 && level == 0;
        if (!on && !off)
            return refused(SYNTAX_ERROR);
        block.settings().set("defog", static_cast<int>(mode));
        block.settings().set("defogLevel", static_cast<int>(level));
        return done();
    };
}

std::vector<Row> commonRows(const Traits &traits) {
    return {
        {"01 04 35 0p", assigns("wbMode", 0, LAST_WHITE_BALANCE)},
        {"09 04 35", tells("wbMode")},
        {"01 04 43 00 00 0p 0q", assigns("redGain", 0, BYTE)},
        {"09 04 43", tellsNibbles("redGain", 4)},
        {"01 04 44 00 00 0p 0q", assigns("blueGain", 0, BYTE)},
        {"09 04 44", tellsNibbles("blueGain", 4)},
        {"01 04 49 00 00 0p 0q", assigns("colourGain", 0, isKova(traits) ? BYTE : LAST_COLOUR_GAIN)},
        {"09 04 49", tellsNibbles("colourGain", 4)},
        {"01 04 42 00 00 0p 0q", assigns("aperture", 0, LAST_APERTURE)},
        {"09 04 42", tellsNibbles("aperture", 4)},
        {"01 04 53 0p", assigns("noiseReduction", 0, LAST_NOISE_REDUCTION)},
        {"09 04 53", tells("noiseReduction")},
        {"01 04 3D 0p", assignsOneOf("wdr", wdrCodes(traits))},
        {"09 04 3D", tells("wdr")},
        {"01 04 01 0p", assignsOneOf("icr", {2, 3})},
        {"09 04 01", tells("icr")},
        {"01 04 51 0p", assignsOneOf("autoIcr", {2, 3})},
        {"09 04 51", tells("autoIcr")},
    };
}

std::vector<Row> defogRows(const Traits &traits) {
    const Handler assign = traits.type.code == SONY5 ? assignsDefog(1, 3) : assignsDefog(0, 0);
    return {
        {"01 04 37 0p 0q", assign},
        {"09 04 37", tellsPair("defog", "defogLevel", 1)},
    };
}

std::vector<Row> kovaRows() {
    return {
        {"01 04 A1 00 00 0p 0q", assigns("brightness", 0, BYTE)},
        {"01 04 A2 00 00 0p 0q", assigns("contrast", 0, BYTE)},
        {"01 04 54 00 00 0p 0q", assigns("noise2d", 0, BYTE)},
        {"01 04 55 00 00 0p 0q", assigns("noise3d", 0, BYTE)},
        {"01 04 C8 pq", assigns("defogMode", 0, BYTE)},
        {"01 04 C9 pq", assigns("defogSense", 0, BYTE)},
        {"01 04 2D 00 00 00 pq", assigns("wdrLevel", 0, LAST_WDR_LEVEL)},
    };
}

bool hasDefog(const Traits &traits) {
    return traits.type.code == SONY3 || traits.type.code == SONY5;
}

} // namespace

void addPictureSettings(Settings &settings, const Traits &traits) {
    settings.add("wbMode", 0);
    settings.add("redGain", MIDDLE);
    settings.add("blueGain", MIDDLE);
    settings.add("colourGain", isKova(traits) ? MIDDLE : 4);
    settings.add("aperture", 8);
    settings.add("noiseReduction", 3);
    settings.add("wdr", SWITCHED_OFF);
    settings.add("icr", SWITCHED_OFF);
    settings.add("autoIcr", SWITCHED_OFF);
    if (hasDefog(traits)) {
        settings.add("defog", SWITCHED_OFF);
        settings.add("defogLevel", 0);
    }
    if (!isKova(traits))
        return;
    for (const char *name : {"brightness", "contrast", "noise2d", "noise3d"})
        settings.add(name, MIDDLE);
    for (const char *name : {"defogMode", "defogSense", "wdrLevel"})
        settings.add(name, 0);
}

std::vector<Row> pictureRows(const Traits &traits) {
    std::vector<Row> rows = commonRows(traits);
    for (const auto &more : {hasDefog(traits) ? defogRows(traits) : std::vector<Row>(),
                             isKova(traits) ? kovaRows() : std::vector<Row>()})
        rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

} // namespace sim
