#include "sim/kova.h"

#include "sim/block.h"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {

constexpr int FILTER_ENABLED = 4;
constexpr int LAST_DOME_TYPE = 4;
constexpr int SCENE_DEFAULT = 0x0F;
constexpr int SWITCHED_OFF = 3; // 2 is on

constexpr double SCENE_PERIOD = 20; // seconds from dark to bright and back
constexpr unsigned DARK = 0x40;
constexpr unsigned BRIGHT = 0xC0;
constexpr unsigned STILL = 0x80;
constexpr double SHARPEST = 0x20000;      // focus value of a scene of luma STILL in focus
constexpr double DEPTH_OF_FIELD = 0x0800; // this far off, the focus value is half as large

constexpr const char *AF_VALUES[] = {"afValue1", "afValue2", "afValue3", "afValue4"};

int signed16(unsigned value) {
    return static_cast<int16_t>(value);
}

Outcome setClock(Block &block, const Args &args) {
    block.kova().clock = args.number(0, 8);
    return done();
}

// The picture moves on the sensor at the next power-on; the flag is only remembered.
Outcome setOffset(Block &block, const Args &args) {
    Settings &settings = block.settings();
    settings.setAtPowerOn("offsetX", signed16(args.number(0, 4)));
    settings.setAtPowerOn("offsetY", signed16(args.number(4, 4)));
    settings.set("offsetFlag", static_cast<int>(args.number(8, 2)));
    return done();
}

Outcome triggerFocus(Block &block, unsigned type) {
    block.settings().set("afTrigger", static_cast<int>(type));
    block.lens().focusOnScene(block.now());
    return done();
}

Outcome focusByType(Block &block, const Args &args) {
    const unsigned type = args.nibble(0);
    if (type != 1 && (type < 6 || type > 9))
        return refused(SYNTAX_ERROR);
    return triggerFocus(block, type);
}

// On a point (0A) or in a rectangle (0B), each value as four nibbles of the pattern.
Handler focusAt(unsigned type, size_t values) {
    return [=](Block &block, const Args &args) {
        for (size_t i = 0; i < values; ++i)
            block.settings().set(AF_VALUES[i], static_cast<int>(args.number(4 * i, 4)));
        return triggerFocus(block, type);
    };
}

Outcome tellLuma(Block &block, const Args &) {
    return answerNibbles(block.kova().scene.luma(block.now()), 4);
}

Outcome tellFocusValue(Block &block, const Args &) {
    const uint32_t value = block.kova().scene.focusValue(block.now(), block.lens().focus(block.now()));
    return answer({static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                   static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)});
}

uint32_t abilityOf(const Options &options, const Traits &traits) {
    constexpr uint32_t SECOND_GENERATION =
        ABILITY_SEGMENTED_VERSION | ABILITY_TURNS_AT_POWER_ON | ABILITY_EXTENSION_VERSION;
    if (!isKova(traits))
        return 0;
    return options.kova.ability.value_or(isSecondKova(traits) ? SECOND_GENERATION : 0);
}

// A whole byte of 0xFF would end the answer.
uint32_t withoutTerminator(uint32_t value) {
    for (unsigned shift : {0u, 8u, 16u, 24u}) {
        if ((value >> shift & 0xFF) == 0xFF)
            value -= 1u << shift;
    }
    return value;
}

} // namespace

unsigned Scene::luma(Clock::time_point now) const {
    if (!m_moves)
        return STILL;
    const double seconds = std::chrono::duration<double>(now - m_begin).count() * m_scale;
    const double phase = std::fmod(seconds / SCENE_PERIOD, 1);
    const double light = phase < 0.5 ? 2 * phase : 2 - 2 * phase;
    return DARK + static_cast<unsigned>(light * (BRIGHT - DARK));
}

uint32_t Scene::focusValue(Clock::time_point now, unsigned focus) const {
    const double off = std::abs(static_cast<double>(focus) - SCENE_FOCUS) / DEPTH_OF_FIELD;
    const double light = static_cast<double>(luma(now)) / STILL;
    return withoutTerminator(static_cast<uint32_t>(SHARPEST * light / (1 + off)));
}

Kova::Kova(const Options &given, const Traits &traits, Clock::time_point now)
    : options(given.kova), uimageVersion(given.kova.uimageVersion),
      oldProgramVersion(given.kova.oldProgramVersion), program(given.kova.programVersion),
      extension(given.kova.extensionVersion), scene(now, given.timeScale, given.kova.sceneMoves),
      m_present(isKova(traits)), m_ability(abilityOf(given, traits)) {}

void Kova::restart() {
    program.restart();
    extension.restart();
}

void Kova::describe(State &state, Clock::time_point now) const {
    if (!m_present)
        return;
    state.kova.ability = m_ability;
    state.kova.clock = clock;
    state.kova.luma = scene.luma(now);
    state.kova.focusValue = scene.focusValue(now, state.focus);
}

void addKovaSettings(Settings &settings) {
    settings.addKept("irCut", FILTER_ENABLED);
    settings.addKept("lowDelay", SWITCHED_OFF);
    settings.addKept("domeType", 0);
    for (const char *name : {"offsetX", "offsetY", "offsetFlag"})
        settings.addKept(name, 0);
    settings.add("sceneMode", SCENE_DEFAULT);
    settings.add("afTrigger", 0);
    for (const char *name : AF_VALUES)
        settings.add(name, 0);
    settings.add("debugItem", 0);
    settings.add("debugValue", 0);
    settings.add("zoomReports", SWITCHED_OFF);
    settings.add("focusReports", SWITCHED_OFF);
}

std::vector<Row> kovaServiceRows() {
    return {
        {"01 04 A4 0p 0q 0r 0s 0t 0u 0v 0w", setClock},
        {"01 04 BF 0p", assignsOneOf("lowDelay", {2, 3})},
        {"01 04 BD 0p 0q 0r 0s 0t 0u 0v 0w xy", setOffset},
        {"09 04 BD", tellsPair("offsetX", "offsetY", 4)},
        {"01 04 B4 0p", assignsOneOf("irCut", {4, 5})},
        {"01 04 D1 00 00 00 pq", assigns("domeType", 0, LAST_DOME_TYPE)},
        {"01 04 CD pq",
         assignsOneOf("sceneMode", {0x0F, 0x01, 0x00, 0x03, 0x02, 0x04, 0x05, 0x06, 0x07, 0x0D, 0x0E})},
        {"01 04 18 01 0p", focusByType},
        {"01 04 18 0A 0p 0q 0r 0s 0t 0u 0v 0w", focusAt(0x0A, 2)},
        {"01 04 18 0B pq rs tu vw gh ij kl mn", focusAt(0x0B, 4)},
        {"01 04 CF 0p 0q 0r 0s", assignsPair("debugItem", "debugValue", 2, 0, 0xFF)},
        {"09 04 CE", tellLuma},
        {"09 04 AD", tellFocusValue},
    };
}

} // namespace sim
