/* White balance, and day and night. */
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

constexpr uint32_t WB_MANUAL = 1;

Domain offset() {
    return Domain::number(-127, 127);
}

void setWhiteBalance(Job &job, uint32_t mode, const Arguments &arguments) {
    WhiteBalanceParam balance = {};
    VISCA_GetWhiteBalance(0, 0, &balance);
    balance.ulWbMode = mode;
    balance.lRedOffset = static_cast<int32_t>(arguments.number("red", balance.lRedOffset));
    balance.lBlueOffset = static_cast<int32_t>(arguments.number("blue", balance.lBlueOffset));
    job.order([&] { return VISCA_SetWhiteBalance(0, 0, &balance); });
}

void showWhiteBalance(Job &job, const Arguments &) {
    WhiteBalanceParam balance = {};
    VISCA_GetWhiteBalance(0, 0, &balance);
    job.number("red", balance.lRedOffset);
    job.number("blue", balance.lBlueOffset);
    job.line("as they were set last; the camera was not asked");
}

void showDayNight(Job &job, const Arguments &) {
    uint32_t mode = 0;
    if (VISCA_GetBlackWhiteMode(&mode) != VISCA_SUCCESS) {
        job.mute("BlackWhiteMode[");
        job.text("daynight", "auto, or not set yet");
        return;
    }
    job.text("daynight", mode == 2 ? "night" : "day");
}

} // namespace

Subject colourCommands() {
    return {"Colour, day and night",
            {
                {"wb",
                 {needed("mode", Domain::choice({{"tracing", 0}, {"auto", 2}, {"sodium", 6}}))},
                 "white balance: auto tracing, auto, or for sodium vapour lamps",
                 {"wb auto"},
                 [](Job &job, const Arguments &arguments) {
                     setWhiteBalance(job, arguments.word("mode"), arguments);
                 },
                 {"VISCA_GetWhiteBalance", "VISCA_SetWhiteBalance"},
                 MAY_SEND_NOTHING},
                {"wb manual",
                 {together("red", offset()), together("blue", offset())},
                 "white balance by offsets, both set together",
                 {"wb manual red=10 blue=-5"},
                 [](Job &job, const Arguments &arguments) { setWhiteBalance(job, WB_MANUAL, arguments); },
                 {"VISCA_GetWhiteBalance", "VISCA_SetWhiteBalance"},
                 MAY_SEND_NOTHING},
                {"wb show",
                 {},
                 "the offsets that were set last",
                 {"wb show"},
                 showWhiteBalance,
                 {"VISCA_GetWhiteBalance"}},
                {"wb mode",
                 {needed("mode", Domain::choice({{"auto", 0},
                                                 {"indoor", 6},
                                                 {"outdoor", 7},
                                                 {"sodium", 8},
                                                 {"manual", 10},
                                                 {"tracing", 11},
                                                 {"outdoor-auto", 12},
                                                 {"sodium-auto", 13},
                                                 {"one-push", 14}}))},
                 "one of the camera's own white-balance modes",
                 {"wb mode indoor"},
                 [](Job &job, const Arguments &arguments) {
                     job.order([&] {
                         return SonySetVideoWBMode(0, static_cast<int32_t>(arguments.number("mode")));
                     });
                 },
                 {"SonySetVideoWBMode"},
                 MAY_SEND_NOTHING},
                {"wb offset",
                 {needed("red", offset()), needed("blue", offset())},
                 "the manual offsets alone",
                 {"wb offset 10 -5"},
                 [](Job &job, const Arguments &arguments) {
                     job.order([&] {
                         return SonySetManualWB(0, static_cast<int16_t>(arguments.number("red")),
                                                static_cast<int16_t>(arguments.number("blue")));
                     });
                 },
                 {"SonySetManualWB"}},
                {"daynight",
                 {needed("mode", Domain::choice({{"auto", 0}, {"day", 1}, {"night", 2}}))},
                 "auto: the camera decides; day: colour; night: black and white",
                 {"daynight night"},
                 [](Job &job, const Arguments &arguments) {
                     job.order([&] { return VISCA_SetBlackWhiteMode(0, arguments.word("mode")); });
                 },
                 {"VISCA_SetBlackWhiteMode"},
                 MAY_SEND_NOTHING},
                {"daynight show",
                 {},
                 "what was set last",
                 {"daynight show"},
                 showDayNight,
                 {"VISCA_GetBlackWhiteMode"}},
            }};
}

} // namespace tool::ctl
