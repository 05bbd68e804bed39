/* The chapter of the lens: drive zoom and focus, stop them, and ask where they stand. */
#include <thread>

#include "tool/demo/chapters.h"
#include "viscacam.h"

namespace tool {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr Item ZOOM = {"zoom", 0x47, 4};
constexpr Item FOCUS = {"focus", 0x48, 4};
constexpr Item FOCUS_MODE = {"focusMode", 0x38, 1};

constexpr unsigned FOCUS_AUTO = 2;
constexpr unsigned FOCUS_MANUAL = 3;
constexpr unsigned FOCUS_FAR_END = 0x1000;
constexpr unsigned ZOOM_TARGET = 0x2800;
constexpr unsigned ZOOM_ROOM = 0x2000; // from further in there may be no room left to zoom in

constexpr milliseconds ZOOM_TIME{900};
constexpr milliseconds FOCUS_TIME{600};
constexpr milliseconds POLL_EVERY{200};
constexpr milliseconds REST_LOOK{150};
constexpr seconds ARRIVAL_LIMIT{10};

using MotionRule = bool (*)(unsigned from, unsigned to);

bool grew(unsigned from, unsigned to) {
    return to > from;
}
// A lens that was at the far end already has nowhere to go.
bool shrank(unsigned from, unsigned to) {
    return to < from || from <= FOCUS_FAR_END;
}

std::string focusModeWord(unsigned value) {
    if (value == FOCUS_AUTO)
        return "auto";
    return value == FOCUS_MANUAL ? "manual" : std::to_string(value);
}

unsigned readZoom(Stage &stage) {
    uint32_t zoom = 0;
    stage.checkRead(VISCA_GetZoomPos(&zoom), "the zoom position");
    return zoom;
}

unsigned readFocus(Stage &stage) {
    int16_t focus = 0;
    stage.checkRead(VISCA_GetFocusPos(&focus), "the focus position");
    return static_cast<uint16_t>(focus);
}

// Two looks at a lens that was stopped see the same.
void compareMotion(Stage &stage, const std::string &asked, const Item &item, MotionRule agrees,
                   unsigned from) {
    std::this_thread::sleep_for(REST_LOOK);
    const Belief first = stage.look(item);
    std::this_thread::sleep_for(REST_LOOK);
    const Belief second = stage.look(item);
    if (!first.value || !second.value) {
        stage.table().add(asked, "does not tell", false);
        return;
    }
    const bool rests = *first.value == *second.value;
    stage.table().add(asked, hexWord(*second.value) + (rests ? ", at rest" : ", still moving"),
                      rests && agrees(from, *second.value));
}

// Ends when the lens is there, or when it stands still elsewhere: the comparison then tells.
void zoomToPosition(Stage &stage, unsigned target) {
    constexpr int STILL_LOOKS = 4;
    stage.begin([target] { return VISCA_SetZoomPos(static_cast<int32_t>(target)); });
    const Clock::time_point end = Clock::now() + ARRIVAL_LIMIT;
    unsigned last = ~target;
    for (int still = 0; last != target && still < STILL_LOOKS && Clock::now() < end;) {
        std::this_thread::sleep_for(POLL_EVERY);
        const unsigned now = readZoom(stage);
        still = now == last ? still + 1 : 0;
        last = now;
    }
    stage.follow();
}

void zoomInAndStop(Stage &stage) {
    stage.heading("Ask for the zoom position, zoom in for a while, stop");
    unsigned from = readZoom(stage);
    if (from >= ZOOM_ROOM) {
        stage.heading("To the wide end first, to have room");
        zoomToPosition(stage, 0);
        from = readZoom(stage);
    }
    stage.drive(VISCA_ZoomIn, VISCA_ZoomStop, ZOOM_TIME);
    compareMotion(stage, "zoom in from " + hexWord(from) + ", stop", ZOOM, grew, from);
    stage.heading("Read the zoom position");
    const unsigned zoom = readZoom(stage);
    stage.compare("zoom position, read as " + hexWord(zoom), ZOOM, zoom, hexWord);
}

void driveFocusOneWay(Stage &stage, const std::string &way, Drives::Command command, MotionRule agrees) {
    const unsigned from = readFocus(stage);
    stage.drive(command, VISCA_FocusStop, FOCUS_TIME);
    compareMotion(stage, "focus " + way + " from " + hexWord(from) + ", stop", FOCUS, agrees, from);
}

void driveFocus(Stage &stage) {
    stage.heading("Manual focus: the camera powers up in auto focus, where it refuses to be driven");
    stage.order([] { return VISCA_SetFocusMode(0); });
    stage.compare("manual focus", FOCUS_MODE, FOCUS_MANUAL, focusModeWord);
    stage.heading("Focus far for a while, stop");
    driveFocusOneWay(stage, "far", VISCA_FocusFar, shrank);
    stage.heading("Focus near for a while, stop");
    driveFocusOneWay(stage, "near", VISCA_FocusNear, grew);
    stage.heading("Read the focus position");
    const unsigned focus = readFocus(stage);
    stage.compare("focus position, read as " + hexWord(focus), FOCUS, focus, hexWord);
}

} // namespace

void tellLens(Stage &stage) {
    zoomInAndStop(stage);
    stage.heading("Zoom to " + hexWord(ZOOM_TARGET) + ", ask for the position until it has arrived");
    zoomToPosition(stage, ZOOM_TARGET);
    stage.compare("zoom to " + hexWord(ZOOM_TARGET), ZOOM, ZOOM_TARGET, hexWord);
    driveFocus(stage);
    stage.heading("Back to auto focus");
    stage.order([] { return VISCA_EnableAF(1); });
    stage.compare("auto focus", FOCUS_MODE, FOCUS_AUTO, focusModeWord);
}

} // namespace tool
