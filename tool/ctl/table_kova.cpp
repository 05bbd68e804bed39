/* Kova modules: what they measure, say of themselves and report. */
#include <ctime>

#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

constexpr size_t VERSION_ROOM = 128;
constexpr uint32_t REPORT_ZOOM = 0;
constexpr uint32_t REPORT_FOCUS = 1;

Bench *reportsTo = nullptr; // set before reports are switched on

void tell(const std::string &text) {
    if (reportsTo != nullptr)
        reportsTo->follower.note("report: " + text);
}
void onZoomReport(uint32_t active) {
    tell(active == 1 ? "the zoom has begun to move" : "the zoom stands");
}
void onFocusReport(uint32_t active) {
    tell(active == 1 ? "the focus has begun to move" : "the focus stands");
}
void onReconfiguration() {
    tell("the module wants its image parameters set again");
}

using ReadText = uint32_t (*)(char *text);

void readText(Job &job, const std::string &name, ReadText read, const std::string &what) {
    char text[VERSION_ROOM] = "";
    if (job.ask([&] { return read(text); }, what))
        job.text(name, text);
}

void showVersions(Job &job, const Arguments &) {
    readText(job, "version", VISCA_KOVA_GetCamVer, "stamp and program version");
    readText(job, "uimage", KovaGetCurKovaUimageVer, "the uImage version");
    readText(job, "program", KovaGetCurKovaProgramVer, "the program version");
    readText(job, "extension", VISCA_KOVA_GetExtVer, "the extension version");
    readText(job, "software", VISCA_KOVA_GetSoftVer, "the encoder's software version");
}

using ReadBoard = uint32_t (*)(uint32_t *version, uint32_t *type);

void readBoard(Job &job, const std::string &name, ReadBoard read) {
    uint32_t version = 0;
    uint32_t type = 0;
    if (!job.ask([&] { return read(&version, &type); }, "the " + name + " board"))
        return;
    job.number(name + "-version", version);
    job.number(name + "-type", type);
}

void showBoards(Job &job, const Arguments &) {
    readBoard(job, "encoder", VISCA_KOVA_GetEncBoardVerType);
    readBoard(job, "sensor", VISCA_KOVA_GetSensorBoardVerType);
    readBoard(job, "motor", VISCA_KOVA_GetMotorBoardVerType);
}

void showTemperature(Job &job, const Arguments &) {
    int32_t degrees = 0;
    if (job.ask([&] { return VISCA_KOVA_GetTemperature(0, &degrees); }, "the temperature"))
        job.number("temperature", degrees, std::to_string(degrees) + " degrees Celsius");
}

void showLuma(Job &job, const Arguments &) {
    int32_t luma = 0;
    if (job.ask([&] { return VISCA_KOVA_GetCurLuma(0, &luma); }, "the picture's brightness"))
        job.number("luma", luma);
}

void showFocusValue(Job &job, const Arguments &) {
    int32_t value = 0;
    if (job.ask([&] { return KovaGetImageFocusValue(0, &value); }, "the picture's sharpness"))
        job.number("focus-value", value);
}

void showAbility(Job &job, const Arguments &) {
    const uint32_t ability = KovaGetCamAbility();
    job.number("ability", ability, inHex(ability, 8));
    job.flag("program-in-segments", VISCA_KOVA_HasCamAbility(0x04) == 1, "yes", "no");
    job.flag("reverse-needs-power-cycle", VISCA_KOVA_HasCamAbility(0x08) == 1, "yes", "no");
    job.flag("extension-version", VISCA_KOVA_HasCamAbility(0x10) == 1, "yes", "no");
}

void setReports(Job &job, const Arguments &arguments) {
    const uint32_t which = arguments.word("axis");
    const ViscaStatusCallback callback = which == REPORT_ZOOM ? onZoomReport : onFocusReport;
    const bool on = arguments.number("switch") == 1;
    reportsTo = &job.bench();
    job.order([&] { return VISCA_KOVA_SetSigCallback(which, on ? callback : nullptr); });
}

std::vector<Row> measureRows() {
    return {
        {"temperature",
         {},
         "of the module",
         {"temperature"},
         showTemperature,
         {"VISCA_KOVA_GetTemperature"},
         KOVA_ONLY},
        {"luma", {}, "the picture's brightness", {"luma"}, showLuma, {"VISCA_KOVA_GetCurLuma"}, KOVA_ONLY},
        {"focus-value",
         {},
         "the picture's sharpness",
         {"focus-value"},
         showFocusValue,
         {"KovaGetImageFocusValue"},
         KOVA_ONLY},
        {"kova version",
         {},
         "every version that the module tells",
         {"kova version"},
         showVersions,
         {"VISCA_KOVA_GetCamVer", "KovaGetCurKovaUimageVer", "KovaGetCurKovaProgramVer",
          "VISCA_KOVA_GetExtVer", "VISCA_KOVA_GetSoftVer"},
         KOVA_ONLY},
        {"kova boards",
         {},
         "versions and types of its boards",
         {"kova boards"},
         showBoards,
         {"VISCA_KOVA_GetEncBoardVerType", "VISCA_KOVA_GetSensorBoardVerType",
          "VISCA_KOVA_GetMotorBoardVerType"},
         KOVA_ONLY},
        {"kova ability",
         {},
         "the capability word as it is known",
         {"kova ability"},
         showAbility,
         {"KovaGetCamAbility", "VISCA_KOVA_HasCamAbility"},
         KOVA_ONLY},
        {"kova ability ask",
         {},
         "ask the module for it",
         {"kova ability ask"},
         [](Job &job, const Arguments &arguments) {
             if (job.ask(KovaDetectCamAbility, "the capability word"))
                 showAbility(job, arguments);
         },
         {"KovaDetectCamAbility", "KovaGetCamAbility", "VISCA_KOVA_HasCamAbility"},
         KOVA_ONLY},
        {"kova ability set",
         {needed("word", Domain::hex(0, 0xFFFFFFFF))},
         "have the library believe another one",
         {"kova ability set 0x1C"},
         [](Job &job, const Arguments &arguments) {
             KovaSetCamAbility(arguments.word("word"));
             showAbility(job, arguments);
         },
         {"KovaSetCamAbility", "KovaGetCamAbility", "VISCA_KOVA_HasCamAbility"},
         KOVA_ONLY},
    };
}

std::vector<Row> settingRows() {
    return {
        {"kova scene",
         {needed("scene", Domain::steps({0, 1, 2, 3, 4, 5, 6, 7, 8, 80, 81}))},
         "which scene the module is to expect",
         {"kova scene 1"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_KOVA_SetSceneInfo(arguments.word("scene")); });
         },
         {"VISCA_KOVA_SetSceneInfo"},
         KOVA_ONLY},
        {"kova ir-cut",
         {needed("switch", Domain::onOff())},
         "the infrared-cut filter",
         {"kova ir-cut on"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return VISCA_KOVA_SetIRcut(static_cast<int32_t>(arguments.number("switch"))); });
         },
         {"VISCA_KOVA_SetIRcut"},
         KOVA_ONLY},
        {"kova low-delay",
         {needed("switch", Domain::onOff())},
         "low-delay mode",
         {"kova low-delay on"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return KOVA_SetLowDelayMode(arguments.word("switch")); });
         },
         {"KOVA_SetLowDelayMode"},
         KOVA_ONLY},
        {"kova time",
         {optional("seconds", Domain::number(0, 0xFFFFFFFF, "seconds since 1970"))},
         "set its clock, to now unless told otherwise",
         {"kova time"},
         [](Job &job, const Arguments &arguments) {
             const auto now = static_cast<uint32_t>(std::time(nullptr));
             job.order([&] { return KOVA_SetTime(arguments.word("seconds", now)); });
         },
         {"KOVA_SetTime"},
         KOVA_ONLY},
        {"kova dome",
         {},
         "tell it the dome type that the device model calls for",
         {"kova dome"},
         [](Job &job, const Arguments &) {
             job.order([] {
                 KovaSetDomeTypeToCam();
                 return VISCA_SUCCESS;
             });
         },
         {"KovaSetDomeTypeToCam"},
         KOVA_ONLY | MAY_SEND_NOTHING},
        {"kova reports",
         {needed("axis", Domain::choice({{"zoom", REPORT_ZOOM}, {"focus", REPORT_FOCUS}})),
          needed("switch", Domain::onOff())},
         "have it report when the lens moves",
         {"kova reports zoom on"},
         setReports,
         {"VISCA_KOVA_SetSigCallback"},
         KOVA_ONLY},
        {"kova reports settings",
         {needed("switch", Domain::onOff())},
         "say when it wants its image parameters set again",
         {"kova reports settings on"},
         [](Job &job, const Arguments &arguments) {
             reportsTo = &job.bench();
             KOVA_SetRecfgImgParamCallback(arguments.number("switch") == 1 ? onReconfiguration : nullptr);
             job.flag("reported", arguments.number("switch") == 1, "yes", "no");
         },
         {"KOVA_SetRecfgImgParamCallback"},
         KOVA_ONLY},
    };
}

} // namespace

Subject kovaCommands() {
    Subject subject = {"Kova modules", measureRows()};
    const std::vector<Row> rows = settingRows();
    subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
