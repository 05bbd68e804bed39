/* The chapter of the Kova module: what it says of itself, its reports, and its norm. */
#include <condition_variable>
#include <mutex>
#include <vector>

#include "tool/demo/chapters.h"
#include "tool/module_types.h"
#include "viscacam.h"

namespace tool {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr Item ZOOM_REPORTS = {"zoomReports", NO_INQUIRY, 0};
constexpr unsigned SWITCH_OFF = 3;
constexpr uint32_t OF_ZOOM = 0; // which reports
constexpr milliseconds ZOOM_TIME{500};
constexpr seconds REPORT_LIMIT{2};
constexpr size_t REPORTS_EXPECTED = 2;

constexpr uint8_t MONITOR_MODE = 0x72; // the register that holds the norm

/* ---- What it says of itself ---- */

void tellVersions(Stage &stage) {
    char software[16 + 1] = "";
    char extension[128] = "";
    stage.checkRead(VISCA_KOVA_GetSoftVer(software), "the software version");
    stage.checkRead(VISCA_KOVA_GetExtVer(extension), "the extension version");
    stage.say(std::string("software version ") + software + ", extension version " + extension);
}

void tellBoards(Stage &stage) {
    struct Board {
        const char *name;
        uint32_t (*read)(uint32_t *version, uint32_t *type);
    };
    const Board boards[] = {{"encoder", VISCA_KOVA_GetEncBoardVerType},
                            {"sensor", VISCA_KOVA_GetSensorBoardVerType},
                            {"motor", VISCA_KOVA_GetMotorBoardVerType}};
    std::string text;
    for (const Board &board : boards) {
        uint32_t version = 0;
        uint32_t type = 0;
        stage.checkRead(board.read(&version, &type), std::string("the ") + board.name + " board");
        text += std::string(text.empty() ? "" : ", ") + board.name + " board version " +
                std::to_string(version) + " type " + std::to_string(type);
    }
    stage.say(text);
}

void tellMeasurements(Stage &stage) {
    int32_t temperature = 0;
    int32_t luma = 0;
    int32_t focusValue = 0;
    stage.checkRead(VISCA_KOVA_GetTemperature(0, &temperature), "the temperature");
    stage.checkRead(VISCA_KOVA_GetCurLuma(0, &luma), "the luma");
    stage.checkRead(KovaGetImageFocusValue(0, &focusValue), "the focus value");
    stage.say(std::to_string(temperature) + " degrees Celsius, luma " + std::to_string(luma) +
              ", focus value " + std::to_string(focusValue));
}

/* ---- Its reports ---- */

/* What the callback was told. Never destroyed: the library's receiver thread has no end. */
struct Reports {
    Stage *stage = nullptr;
    std::mutex mutex;
    std::condition_variable came;
    std::vector<uint32_t> told;
};

Reports &zoomReports() {
    static Reports &reports = *new Reports;
    return reports;
}

// On the library's receiver thread.
void onZoomReport(uint32_t isActive) {
    Reports &reports = zoomReports();
    reports.stage->say(isActive != 0 ? "told that the zoom moves" : "told that the zoom is at rest");
    const std::lock_guard<std::mutex> lock(reports.mutex);
    reports.told.push_back(isActive);
    reports.came.notify_all();
}

std::string awaitReports() {
    Reports &reports = zoomReports();
    std::unique_lock<std::mutex> lock(reports.mutex);
    reports.came.wait_for(lock, REPORT_LIMIT, [&reports] { return reports.told.size() >= REPORTS_EXPECTED; });
    std::string text;
    for (const uint32_t isActive : reports.told)
        text += std::string(text.empty() ? "" : ", ") + (isActive != 0 ? "moving" : "at rest");
    return text.empty() ? "no report" : text;
}

void switchZoomReports(Stage &stage, ViscaStatusCallback callback) {
    stage.order([callback] { return VISCA_KOVA_SetSigCallback(OF_ZOOM, callback); });
}

void tellReports(Stage &stage) {
    stage.heading("Zoom reports on: the host is called while the zoom moves, unasked");
    zoomReports().stage = &stage;
    switchZoomReports(stage, onZoomReport);
    stage.drive(VISCA_ZoomOut, VISCA_ZoomStop, ZOOM_TIME);
    const std::string told = awaitReports();
    stage.table().add("zoom out, stop, and report it", told, told == "moving, at rest");
    stage.heading("Zoom reports off");
    switchZoomReports(stage, nullptr);
    stage.compare("zoom reports off", ZOOM_REPORTS, SWITCH_OFF, switchWord);
}

/* ---- Its norm ---- */

/* A norm, and the value of the register that stands for it. */
struct Norm {
    uint32_t rate;
    uint8_t code;
};

struct Norms {
    Norm at30;
    Norm at25;
};

constexpr Norms USUAL_NORMS = {{30, 0x06}, {25, 0x08}};
constexpr Norms NORMS_OF_2100 = {{30, 0x0E}, {25, 0x11}};

const Norms &normsOf(uint32_t moduleType) {
    return moduleType == 0x02012100 ? NORMS_OF_2100 : USUAL_NORMS;
}

// Two modules have no norm to choose, one has a single one.
bool hasNorms(uint32_t moduleType) {
    return moduleType != 0x02012003 && moduleType != 0x02012004 && moduleType != 0x02012200;
}

std::string frames(uint32_t rate) {
    return std::to_string(rate) + " frames a second";
}

void changeNorm(Stage &stage, const Norm &norm, const std::string &heading) {
    stage.heading(heading);
    const VideoNormParam wanted = {1920, 1080, norm.rate};
    if (stage.procedure([wanted] { return VISCA_SetVin(&wanted); }) != VISCA_SUCCESS)
        throw StoryOver("the norm could not be changed; the camera may be off");
    stage.compare(frames(norm.rate), stage.witness().registerValue(MONITOR_MODE), norm.code,
                  [](unsigned code) { return "register 0x72 is " + hexByte(code); });
}

// There and back: a module keeps its norm for ever.
void tellNorm(Stage &stage, uint32_t moduleType) {
    uint8_t code = 0;
    stage.heading("Ask for the norm");
    stage.checkRead(SonyGetRegisterVal(MONITOR_MODE, &code), "the norm");
    const Norms &norms = normsOf(moduleType);
    if (!hasNorms(moduleType) || (code != norms.at30.code && code != norms.at25.code)) {
        stage.say("norm " + hexByte(code) + " is left as it is");
        return;
    }
    const bool at30 = code == norms.at30.code;
    const Norm &found = at30 ? norms.at30 : norms.at25;
    const Norm &other = at30 ? norms.at25 : norms.at30;
    changeNorm(stage, other,
               "Change the norm from " + std::to_string(found.rate) + " to " + frames(other.rate) +
                   ": off, set the register, on, wait");
    changeNorm(stage, found, "And back, as it was found");
}

} // namespace

void tellKova(Stage &stage, uint32_t moduleType) {
    stage.heading("What the module says of itself");
    tellVersions(stage);
    tellBoards(stage);
    tellMeasurements(stage);
    tellReports(stage);
    tellNorm(stage, moduleType);
}

} // namespace tool
