#include "sim/block.h"
#include "sim/lens.h"

namespace sim {

namespace {

constexpr int FOCUS_AUTO = 2;
constexpr int FOCUS_MANUAL = 3;
constexpr unsigned STANDARD_SPEED = 4; // of the drive commands without a speed
constexpr unsigned TOP_SPEED = 7;

bool focusIsAuto(Block &block) {
    return block.settings().get("focusMode") == FOCUS_AUTO;
}

Handler zoomsTo(bool tele) {
    return [=](Block &block, const Args &args) {
        const unsigned speed = args.count() > 0 ? args.nibble(0) : STANDARD_SPEED;
        if (speed > TOP_SPEED)
            return refused(SYNTAX_ERROR);
        block.lens().driveZoom(tele ? ZOOM_DIGITAL_END : 0, speed, block.now());
        return done();
    };
}

Handler focusesTo(unsigned target) {
    return [=](Block &block, const Args &args) {
        const unsigned speed = args.count() > 0 ? args.nibble(0) : STANDARD_SPEED;
        if (speed > TOP_SPEED)
            return refused(SYNTAX_ERROR);
        if (focusIsAuto(block))
            return refused(NOT_EXECUTABLE);
        block.lens().driveFocus(target, speed, block.now());
        return done();
    };
}

Outcome zoomStop(Block &block, const Args &) {
    block.lens().stop(ZOOM_AXIS, block.now());
    return done();
}

Outcome focusStop(Block &block, const Args &) {
    if (focusIsAuto(block))
        return refused(NOT_EXECUTABLE);
    block.lens().stop(FOCUS_AXIS, block.now());
    return done();
}

// Beyond the digital end is no position at all; between the optical end and it is one, but not with digital
// zoom off.
uint8_t zoomFault(Block &block, unsigned zoom) {
    if (zoom > ZOOM_DIGITAL_END)
        return SYNTAX_ERROR;
    return zoom > block.lens().zoomEnd() ? NOT_EXECUTABLE : 0;
}

bool isFocusPosition(unsigned focus) {
    return focus >= FOCUS_FAR && focus <= FOCUS_NEAR;
}

Outcome zoomPosition(Block &block, const Args &args) {
    const unsigned zoom = args.number(0, 4);
    if (const uint8_t fault = zoomFault(block, zoom))
        return refused(fault);
    block.lens().driveZoom(zoom, TOP_SPEED, block.now());
    return motion(ZOOM_AXIS);
}

// Executable in auto focus too: the focus goes there and stays until auto focus has a reason to search again.
Outcome zoomFocusPosition(Block &block, const Args &args) {
    const unsigned zoom = args.number(0, 4);
    const unsigned focus = args.number(4, 4);
    if (!isFocusPosition(focus))
        return refused(SYNTAX_ERROR);
    if (const uint8_t fault = zoomFault(block, zoom))
        return refused(fault);
    block.lens().driveZoom(zoom, TOP_SPEED, block.now());
    block.lens().driveFocus(focus, TOP_SPEED, block.now());
    return motion(ZOOM_AXIS | FOCUS_AXIS);
}

Outcome focusPosition(Block &block, const Args &args) {
    const unsigned focus = args.number(0, 4);
    if (!isFocusPosition(focus))
        return refused(SYNTAX_ERROR);
    if (focusIsAuto(block))
        return refused(NOT_EXECUTABLE);
    block.lens().driveFocus(focus, TOP_SPEED, block.now());
    return motion(FOCUS_AXIS);
}

Outcome focusInfinity(Block &block, const Args &) {
    if (focusIsAuto(block))
        return refused(NOT_EXECUTABLE);
    block.lens().driveFocus(FOCUS_FAR, TOP_SPEED, block.now());
    return motion(FOCUS_AXIS);
}

Outcome onePush(Block &block, const Args &) {
    block.lens().focusOnScene(block.now());
    return done();
}

void changeFocusMode(Block &block, int mode) {
    block.settings().set("focusMode", mode);
    if (mode == FOCUS_AUTO)
        block.lens().focusOnScene(block.now());
    else
        block.lens().stop(FOCUS_AXIS, block.now());
}

Outcome setFocusMode(Block &block, const Args &args) {
    const unsigned mode = args.nibble(0);
    if (mode < 2 || mode > 4)
        return refused(SYNTAX_ERROR);
    changeFocusMode(block, static_cast<int>(mode));
    return done();
}

Outcome toggleFocusMode(Block &block, const Args &) {
    changeFocusMode(block, focusIsAuto(block) ? FOCUS_MANUAL : FOCUS_AUTO);
    return done();
}

// A setting that the lens has to follow.
Handler limits(const std::string &name, int least, int most) {
    const Handler assign = assigns(name, least, most);
    return [assign](Block &block, const Args &args) {
        const Outcome outcome = assign(block, args);
        block.lens().obeyLimits(block.now());
        return outcome;
    };
}

Outcome tellZoom(Block &block, const Args &) {
    return answerNibbles(block.lens().zoom(block.now()), 4);
}

Outcome tellFocus(Block &block, const Args &) {
    return answerNibbles(block.lens().focus(block.now()), 4);
}

Outcome lensReset(Block &block, const Args &) {
    block.lens().driveZoom(0, TOP_SPEED, block.now());
    block.lens().focusOnScene(block.now());
    return motion(ZOOM_AXIS | FOCUS_AXIS);
}

Outcome accepted(Block &, const Args &) {
    return done();
}

} // namespace

void addLensSettings(Settings &settings) {
    settings.add("focusMode", FOCUS_AUTO);
    settings.add("dzoom", 2);
    settings.add("nearLimit", static_cast<int>(FOCUS_NEAR));
    settings.add("irCorrection", 0);
    settings.add("afMode", 0);
}

std::vector<Row> lensRows() {
    return {
        {"01 04 07 00", zoomStop},
        {"01 04 07 02", zoomsTo(true)},
        {"01 04 07 03", zoomsTo(false)},
        {"01 04 07 2p", zoomsTo(true)},
        {"01 04 07 3p", zoomsTo(false)},
        {"01 04 47 0p 0q 0r 0s", zoomPosition},
        {"01 04 47 0p 0q 0r 0s 0t 0u 0v 0w", zoomFocusPosition},
        {"09 04 47", tellZoom},
        {"01 04 06 0p", limits("dzoom", 2, 3)},
        {"09 04 06", tells("dzoom")},
        {"01 04 08 00", focusStop},
        {"01 04 08 02", focusesTo(FOCUS_FAR)},
        {"01 04 08 03", focusesTo(FOCUS_NEAR)},
        {"01 04 08 2p", focusesTo(FOCUS_FAR)},
        {"01 04 08 3p", focusesTo(FOCUS_NEAR)},
        {"01 04 48 0p 0q 0r 0s", focusPosition},
        {"09 04 48", tellFocus},
        {"01 04 28 0p 0q 0r 0s",
         limits("nearLimit", static_cast<int>(FOCUS_FAR), static_cast<int>(FOCUS_NEAR))},
        {"09 04 28", tellsNibbles("nearLimit", 4)},
        {"01 04 38 10", toggleFocusMode},
        {"01 04 38 0p", setFocusMode},
        {"09 04 38", tells("focusMode")},
        {"01 04 18 01", onePush},
        {"01 04 18 02", focusInfinity},
        {"01 04 11 0p", assigns("irCorrection", 0, 1)},
        {"09 04 11", tells("irCorrection")},
        {"01 04 57 0p", assigns("afMode", 0, 2)},
        {"09 04 57", tells("afMode")},
        {"01 04 19 01", lensReset},
        {"01 04 BA", accepted},
    };
}

} // namespace sim
