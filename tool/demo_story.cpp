#include "tool/demo_story.h"

#include <cstdio>
#include <thread>

#include "host/host.h"
#include "viscacam.h"

namespace tool {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr uint32_t PORT_NUMBER = 0;
constexpr unsigned SWITCH_ON = 2;
constexpr unsigned SWITCH_OFF = 3;
constexpr unsigned FOCUS_AUTO = 2;
constexpr unsigned FOCUS_MANUAL = 3;
constexpr unsigned FOCUS_FAR_END = 0x1000;
constexpr unsigned ZOOM_TARGET = 0x2800;
constexpr unsigned ZOOM_ROOM = 0x2000; // from further in there may be no room left to zoom in
constexpr uint8_t ITEM_POWER = 0x00;
constexpr uint8_t POWER_ON = 0x02;

constexpr milliseconds ZOOM_TIME{900};
constexpr milliseconds FOCUS_TIME{600};
constexpr milliseconds POLL_EVERY{200};
constexpr milliseconds REST_LOOK{150};
constexpr seconds ARRIVAL_LIMIT{10};
constexpr seconds POWER_LIMIT{6};
constexpr seconds DRAIN_LIMIT{4}; // a command's result is awaited for 2 s, after the one in front of it

std::string hexWord(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", value);
    return text;
}

std::string switchWord(unsigned value) {
    if (value == SWITCH_ON)
        return "on";
    return value == SWITCH_OFF ? "off" : std::to_string(value);
}

std::string focusModeWord(unsigned value) {
    if (value == FOCUS_AUTO)
        return "auto";
    return value == FOCUS_MANUAL ? "manual" : std::to_string(value);
}

bool grew(unsigned from, unsigned to) {
    return to > from;
}
// A lens that was at the far end already has nowhere to go.
bool shrank(unsigned from, unsigned to) {
    return to < from || from <= FOCUS_FAR_END;
}

} // namespace

void Story::startUp(uint32_t moduleType) {
    m_trace.heading("Start-up: find the camera's baud rate, start the threads, switch digital zoom off");
    VISCA_SetCamModuleType(moduleType);
    if (VISCA_Init(PORT_NUMBER) != VISCA_SUCCESS)
        throw StoryOver("the library could not start its threads");
    if (ViscaGetCamComFd() < 0)
        throw StoryOver("the port could not be opened");
    if (ViscaIsCamCanCtrl() != 1)
        throw StoryOver("no camera answered in 20 attempts at 9600, 19200 and 38400 bit/s");
    follow();
    waitUntilOn();
    compareValue("digital zoom off", &Witness::digitalZoom, SWITCH_OFF, switchWord);
}

// A camera answers the search while it boots already, but what it is told then is lost.
void Story::waitUntilOn() {
    const bool unheard = host::GetCounters().ullCommandTimeouts > 0;
    const Clock::time_point end = Clock::now() + POWER_LIMIT;
    for (;;) {
        const std::optional<sim::Bytes> power = inquire(ITEM_POWER);
        checkAnswering();
        if (power && *power == sim::Bytes{POWER_ON})
            break;
        if (Clock::now() > end)
            throw StoryOver("the camera is in standby; switch it on first");
        std::this_thread::sleep_for(POLL_EVERY);
    }
    if (unheard) {
        host::ResetCounters();
        m_trace.heading("The camera was still starting: what start-up had set is set once more");
        accept(m_drives.queue([] { return SonyRestoreCamEnv(host::GetBoard().ulCamModType); }));
        follow();
    }
}

void Story::tell() {
    zoomInAndStop();
    m_trace.heading("Zoom to " + hexWord(ZOOM_TARGET) + ", ask for the position until it has arrived");
    zoomToPosition(ZOOM_TARGET);
    compareValue("zoom to " + hexWord(ZOOM_TARGET), &Witness::zoom, ZOOM_TARGET, hexWord);
    driveFocus();
    backToAutoFocus();
    countCommands();
}

void Story::zoomInAndStop() {
    m_trace.heading("Ask for the zoom position, zoom in for a while, stop");
    unsigned from = readZoom();
    if (from >= ZOOM_ROOM) {
        m_trace.heading("To the wide end first, to have room");
        zoomToPosition(0);
        from = readZoom();
    }
    drive(VISCA_ZoomIn, VISCA_ZoomStop, ZOOM_TIME);
    compareMotion("zoom in from " + hexWord(from) + ", stop", &Witness::zoom, grew, from);
    m_trace.heading("Read the zoom position");
    const unsigned zoom = readZoom();
    compareValue("zoom position, read as " + hexWord(zoom), &Witness::zoom, zoom, hexWord);
}

// Ends when the lens is there, or when it stands still elsewhere: the comparison then tells.
void Story::zoomToPosition(unsigned target) {
    constexpr int STILL_LOOKS = 4;
    accept(m_drives.queue([target] { return VISCA_SetZoomPos(static_cast<int32_t>(target)); }));
    const Clock::time_point end = Clock::now() + ARRIVAL_LIMIT;
    unsigned last = ~target;
    for (int still = 0; last != target && still < STILL_LOOKS && Clock::now() < end;) {
        std::this_thread::sleep_for(POLL_EVERY);
        const unsigned now = readZoom();
        still = now == last ? still + 1 : 0;
        last = now;
    }
    follow();
}

void Story::driveFocus() {
    m_trace.heading("Manual focus: the camera powers up in auto focus, where it refuses to be driven");
    accept(m_drives.queue([] { return VISCA_SetFocusMode(0); }));
    follow();
    compareValue("manual focus", &Witness::focusMode, FOCUS_MANUAL, focusModeWord);
    m_trace.heading("Focus far for a while, stop");
    driveFocusOneWay("far", VISCA_FocusFar, shrank);
    m_trace.heading("Focus near for a while, stop");
    driveFocusOneWay("near", VISCA_FocusNear, grew);
    m_trace.heading("Read the focus position");
    const unsigned focus = readFocus();
    compareValue("focus position, read as " + hexWord(focus), &Witness::focus, focus, hexWord);
}

void Story::driveFocusOneWay(const char *way, Drives::Command command, MotionRule agrees) {
    const unsigned from = readFocus();
    drive(command, VISCA_FocusStop, FOCUS_TIME);
    compareMotion(std::string("focus ") + way + " from " + hexWord(from) + ", stop", &Witness::focus, agrees,
                  from);
}

void Story::backToAutoFocus() {
    m_trace.heading("Back to auto focus");
    accept(m_drives.queue([] { return VISCA_EnableAF(1); }));
    follow();
    compareValue("auto focus", &Witness::focusMode, FOCUS_AUTO, focusModeWord);
}

void Story::countCommands() {
    const host::Counters counters = host::GetCounters();
    m_table.add(std::to_string(counters.ullCommandsQueued) + " commands",
                std::to_string(counters.ullCompletions) + " completed, " +
                    std::to_string(counters.ullErrors) + " refused",
                counters.ullCompletions == counters.ullCommandsQueued && counters.ullErrors == 0);
}

unsigned Story::readZoom() {
    uint32_t zoom = 0;
    const uint32_t result = VISCA_GetZoomPos(&zoom);
    checkAnswering();
    if (result != VISCA_SUCCESS)
        throw StoryOver("the zoom position could not be read");
    return zoom;
}

unsigned Story::readFocus() {
    int16_t focus = 0;
    const uint32_t result = VISCA_GetFocusPos(&focus);
    checkAnswering();
    if (result != VISCA_SUCCESS)
        throw StoryOver("the focus position could not be read");
    return static_cast<uint16_t>(focus);
}

void Story::drive(Drives::Command command, Drives::Command stop, Clock::duration time) {
    accept(m_drives.start(command, stop));
    std::this_thread::sleep_for(time);
    accept(m_drives.stop());
    follow();
}

void Story::accept(uint32_t result) const {
    if (result != VISCA_SUCCESS)
        throw StoryOver("the library did not take a command");
}

void Story::follow() {
    (void)host::WaitDrained(DRAIN_LIMIT);
}

// An inquiry that nobody answers is a success to the library, and its value reads as zero.
void Story::checkAnswering() const {
    if (!host::IsPortPresent(PORT_NUMBER))
        throw StoryOver("the device at the port is gone");
    if (host::GetCounters().ullInquiryTimeouts > 0)
        throw StoryOver("the camera stopped answering");
}

// Two looks at a lens that was stopped see the same.
void Story::compareMotion(const std::string &asked, Look look, MotionRule agrees, unsigned from) {
    std::this_thread::sleep_for(REST_LOOK);
    const std::optional<unsigned> first = (m_witness.*look)();
    checkAnswering();
    std::this_thread::sleep_for(REST_LOOK);
    const std::optional<unsigned> second = (m_witness.*look)();
    checkAnswering();
    if (!first || !second) {
        m_table.add(asked, "does not tell", false);
        return;
    }
    const bool rests = *first == *second;
    m_table.add(asked, hexWord(*second) + (rests ? ", at rest" : ", still moving"),
                rests && agrees(from, *second));
}

void Story::compareValue(const std::string &asked, Look look, unsigned expected, Words words) {
    const std::optional<unsigned> value = (m_witness.*look)();
    checkAnswering();
    m_table.add(asked, value ? words(*value) : "does not tell", value == expected);
}

} // namespace tool
