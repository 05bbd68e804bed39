/* Zoom and focus. */
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

using std::chrono::milliseconds;

// Positions are 16 bits wide; which of them a lens reaches it alone knows.
Domain position() {
    return Domain::hex(0, 0xFFFF);
}

// Of a point in the picture.
Domain coordinate() {
    return Domain::number(0, 0xFFFF);
}

Domain driveTime() {
    return Domain::time(milliseconds(1), std::chrono::minutes(1));
}

milliseconds timeOf(const Arguments &arguments) {
    return milliseconds(arguments.number("time"));
}

void showZoom(Job &job, const Arguments &) {
    uint32_t zoom = 0;
    if (job.ask([&] { return VISCA_GetZoomPos(&zoom); }, "the zoom position"))
        job.position("zoom", zoom);
}

void showFocus(Job &job, const Arguments &) {
    int16_t focus = 0;
    if (job.ask([&] { return VISCA_GetFocusPos(&focus); }, "the focus position"))
        job.position("focus", static_cast<uint16_t>(focus));
}

constexpr int64_t KIND_POINT = 10;
constexpr int64_t KIND_RECTANGLE = 11;

void focusOnce(Job &job, const Arguments &arguments) {
    const uint32_t kind = arguments.word("kind");
    const uint32_t places[] = {arguments.word("x1"), arguments.word("y1"), arguments.word("x2"),
                               arguments.word("y2")};
    job.order([&] { return VISCA_OnePushAutoFocus(kind, places); });
}

std::vector<Row> zoomRows() {
    return {
        {"zoom in",
         {optional("time", driveTime())},
         "drive towards tele, for a time or until \"zoom stop\"",
         {"zoom in 2s"},
         [](Job &job, const Arguments &arguments) {
             job.drive(Axis::zoom, VISCA_ZoomIn, VISCA_ZoomStop, timeOf(arguments));
         },
         {"VISCA_ZoomIn", "VISCA_ZoomStop"}},
        {"zoom out",
         {optional("time", driveTime())},
         "drive towards wide, for a time or until \"zoom stop\"",
         {"zoom out 500ms"},
         [](Job &job, const Arguments &arguments) {
             job.drive(Axis::zoom, VISCA_ZoomOut, VISCA_ZoomStop, timeOf(arguments));
         },
         {"VISCA_ZoomOut", "VISCA_ZoomStop"}},
        {"zoom stop",
         {},
         "stop the zoom",
         {"zoom stop"},
         [](Job &job, const Arguments &) { job.stop(Axis::zoom, VISCA_ZoomStop); },
         {"VISCA_ZoomStop"}},
        {"zoom to",
         {needed("position", position())},
         "drive to a position and wait until it is there",
         {"zoom to 0x4000"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_SetZoomPos(static_cast<int32_t>(arguments.number("position"))); });
         },
         {"VISCA_SetZoomPos"},
         MOTION},
        {"zoom show", {}, "ask for the position", {"zoom show"}, showZoom, {"VISCA_GetZoomPos"}},
        {"zoom digital",
         {needed("switch", Domain::onOff())},
         "switch digital zoom",
         {"zoom digital off"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgEnableDzoom(arguments.word("switch")); });
         },
         {"SonyImgEnableDzoom"}},
        {"zoom cut",
         {needed("register", Domain::choice({{"0x50", 0}, {"0x51", 1}})),
          needed("value", Domain::number(0, 255))},
         "write a zoom-cut register",
         {"zoom cut 0x50 16"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_SetZoomCut(arguments.word("register"), arguments.word("value")); });
         },
         {"VISCA_SetZoomCut"}},
        {"lens to",
         {needed("zoom", position()), needed("focus", position())},
         "drive zoom and focus to positions with one command",
         {"lens to 0x2000 0x3000"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] {
                 return VISCA_SetZoomFocusPos(static_cast<int32_t>(arguments.number("zoom")),
                                              static_cast<int32_t>(arguments.number("focus")));
             });
         },
         {"VISCA_SetZoomFocusPos"},
         MOTION},
        {"lens return",
         {},
         "the camera's own zoom-focus return",
         {"lens return"},
         [](Job &job, const Arguments &) { job.order(VISCA_RetSetZoomFocus); },
         {"VISCA_RetSetZoomFocus"},
         MOTION},
    };
}

std::vector<Row> focusDriveRows() {
    return {
        {"focus near",
         {optional("time", driveTime())},
         "drive nearer, for a time or until \"focus stop\"",
         {"focus near 1s"},
         [](Job &job, const Arguments &arguments) {
             job.drive(Axis::focus, VISCA_FocusNear, VISCA_FocusStop, timeOf(arguments));
         },
         {"VISCA_FocusNear", "VISCA_FocusStop"}},
        {"focus far",
         {optional("time", driveTime())},
         "drive farther, for a time or until \"focus stop\"",
         {"focus far 1s"},
         [](Job &job, const Arguments &arguments) {
             job.drive(Axis::focus, VISCA_FocusFar, VISCA_FocusStop, timeOf(arguments));
         },
         {"VISCA_FocusFar", "VISCA_FocusStop"}},
        {"focus stop",
         {},
         "stop the focus",
         {"focus stop"},
         [](Job &job, const Arguments &) { job.stop(Axis::focus, VISCA_FocusStop); },
         {"VISCA_FocusStop"}},
        {"focus show", {}, "ask for the position", {"focus show"}, showFocus, {"VISCA_GetFocusPos"}},
    };
}

std::vector<Row> focusModeRows() {
    return {
        {"focus auto",
         {},
         "the camera focuses",
         {"focus auto"},
         [](Job &job, const Arguments &) { job.order([] { return VISCA_EnableAF(1); }); },
         {"VISCA_EnableAF"}},
        {"focus manual",
         {},
         "the camera leaves the focus alone",
         {"focus manual"},
         [](Job &job, const Arguments &) { job.order([] { return VISCA_EnableAF(0); }); },
         {"VISCA_EnableAF"}},
        {"focus mode",
         {needed("mode", Domain::choice({{"auto", 1}, {"manual", 0}, {"third", 2}}))},
         "choose among the camera's three focus modes",
         {"focus mode third"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_SetFocusMode(arguments.word("mode")); });
         },
         {"VISCA_SetFocusMode"}},
        {"focus type",
         {needed("number", Domain::number(0, 255))},
         "choose the auto-focus mode by its number",
         {"focus type 1"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_SetAFType(arguments.word("number")); });
         },
         {"VISCA_SetAFType"}},
        {"focus limit",
         {needed("distance", Domain::steps({100, 1000, 3000, 10000}, "millimetres"))},
         "how close the camera focuses; it then focuses again",
         {"focus limit 1000"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_SetFocusMinLen(arguments.word("distance")); });
         },
         {"VISCA_SetFocusMinLen"},
         MOTION},
        {"focus infrared",
         {needed("switch", Domain::onOff())},
         "infrared focus correction",
         {"focus infrared on"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_EnableIrCurve(arguments.word("switch")); });
         },
         {"VISCA_EnableIrCurve"}},
        {"focus once",
         {optional("kind", Domain::choice({{"plain", 0}, {"6", 6}, {"7", 7}, {"8", 8}, {"9", 9}}))},
         "focus once; 6 to 9 are a Kova module's own kinds",
         {"focus once"},
         focusOnce,
         {"VISCA_OnePushAutoFocus"},
         MOTION},
    };
}

std::vector<Row> focusPlaceRows() {
    return {
        {"focus once at",
         {needed("x1", coordinate()), needed("y1", coordinate())},
         "focus once on a point",
         {"focus once at 960 540"},
         [](Job &job, const Arguments &arguments) {
             Arguments all = arguments;
             all.set("kind", {"point", KIND_POINT});
             focusOnce(job, all);
         },
         {"VISCA_OnePushAutoFocus"},
         MOTION | KOVA_ONLY},
        {"focus once in",
         {needed("x1", coordinate()), needed("y1", coordinate()), needed("x2", coordinate()),
          needed("y2", coordinate())},
         "focus once in a rectangle",
         {"focus once in 100 100 800 600"},
         [](Job &job, const Arguments &arguments) {
             Arguments all = arguments;
             all.set("kind", {"rectangle", KIND_RECTANGLE});
             focusOnce(job, all);
         },
         {"VISCA_OnePushAutoFocus"},
         MOTION | KOVA_ONLY},
    };
}

} // namespace

Subject lensCommands() {
    Subject subject = {"Lens", zoomRows()};
    for (const std::vector<Row> &rows : {focusDriveRows(), focusModeRows(), focusPlaceRows()})
        subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
