/* The chapter of the start-up: find the camera, and what the library learns and sets by itself. */
#include <ctime>
#include <fstream>
#include <thread>

#include "host/host.h"
#include "tool/demo/chapters.h"
#include "tool/module_types.h"
#include "viscacam.h"

namespace tool {

namespace {

constexpr Item DIGITAL_ZOOM = {"dzoom", 0x06, 1};
constexpr Item MIRROR = {"mirror", 0x61, 1};
constexpr Item FLIP = {"flip", 0x66, 1};
constexpr unsigned SWITCH_OFF = 3;
constexpr uint8_t ITEM_POWER = 0x00;
constexpr uint8_t POWER_ON = 0x02;

constexpr std::chrono::milliseconds POLL_EVERY{200};
constexpr std::chrono::seconds POWER_LIMIT{6};

constexpr size_t STAMP_LENGTH = 14;
constexpr size_t VERSION_LENGTH = 16; // what a version file keeps of it
const char VERSION_FILE[] = "/tmp/kova_interversion";

void initialise(Stage &stage, uint32_t moduleType) {
    VISCA_SetCamModuleType(moduleType);
    if (stage.perform([] { return VISCA_Init(Stage::PORT_NUMBER); }) != VISCA_SUCCESS)
        throw StoryOver("the library could not start its threads");
    if (ViscaGetCamComFd() < 0)
        throw StoryOver("the port could not be opened");
    if (ViscaIsCamCanCtrl() != 1)
        throw StoryOver("no camera answered in 20 attempts at 9600, 19200 and 38400 bit/s");
}

void waitUntilOn(Stage &stage) {
    const Clock::time_point end = Clock::now() + POWER_LIMIT;
    for (;;) {
        const std::optional<sim::Bytes> power = inquire(ITEM_POWER);
        stage.checkAnswering();
        if (power && *power == sim::Bytes{POWER_ON})
            return;
        if (Clock::now() > end)
            throw StoryOver("the camera is in standby; switch it on first");
        std::this_thread::sleep_for(POLL_EVERY);
    }
}

// A camera answers the search while it boots already, but what it is told then is lost. A module, which alone
// is asked for anything, cannot simply be asked again: it counts what it tells in pieces.
void makeSureItHeard(Stage &stage, uint32_t moduleType) {
    const host::Counters counters = host::GetCounters();
    if (counters.ullInquiryTimeouts > 0)
        throw StoryOver("the module was still starting when it was found; try again");
    waitUntilOn(stage);
    if (counters.ullCommandTimeouts == 0)
        return;
    host::ResetCounters();
    stage.heading("The camera was still starting: what start-up had set is set once more");
    stage.order([moduleType] { return SonyRestoreCamEnv(moduleType); });
}

std::string clockText(std::time_t time) {
    std::tm parts = {};
    char text[32] = "";
    gmtime_r(&time, &parts);
    std::strftime(text, sizeof text, "%H:%M:%S UTC", &parts);
    return text;
}

void compareClock(Stage &stage, std::time_t from, std::time_t to) {
    const Belief clock = stage.witness().clock();
    const std::string asked = "the clock of this machine";
    if (!clock.asked)
        stage.table().addNotAskedBack(asked);
    else if (clock.value) {
        const std::time_t believed = *clock.value;
        stage.table().add(asked, clockText(believed), believed >= from && believed <= to);
    }
}

// What the file says against what the module says of its version now.
void compareVersionFile(Stage &stage) {
    std::ifstream file(VERSION_FILE);
    std::string written;
    std::getline(file, written);
    char version[128] = "";
    stage.checkRead(VISCA_KOVA_GetCamVer(version), "the module's version");
    const std::string told = std::string(version).substr(0, STAMP_LENGTH + VERSION_LENGTH);
    stage.table().add("version file " + written, told, written == told);
}

void compareModule(Stage &stage, std::time_t from) {
    const std::time_t to = std::time(nullptr);
    stage.heading("What start-up has learnt, set and written");
    const uint32_t ability = KovaGetCamAbility();
    stage.compare("capability word, read as " + hexLong(ability), stage.witness().ability(), ability,
                  hexLong);
    compareClock(stage, from, to);
    stage.compare("picture not mirrored", MIRROR, SWITCH_OFF, switchWord);
    stage.compare("picture not flipped", FLIP, SWITCH_OFF, switchWord);
    compareVersionFile(stage);
}

} // namespace

void tellStartUp(Stage &stage, uint32_t moduleType) {
    const bool kova = isKova(moduleType);
    stage.heading(kova
                      ? "Start-up: find the module's baud rate, start the threads, then capabilities, clock, "
                        "orientation, version files"
                      : "Start-up: find the camera's baud rate, start the threads, switch digital zoom off");
    const std::time_t began = std::time(nullptr);
    initialise(stage, moduleType);
    stage.follow();
    makeSureItHeard(stage, moduleType);
    if (kova)
        compareModule(stage, began);
    else
        stage.compare("digital zoom off", DIGITAL_ZOOM, SWITCH_OFF, switchWord);
}

void countCommands(Stage &stage) {
    const host::Counters counters = host::GetCounters();
    stage.table().add(std::to_string(counters.ullCommandsQueued) + " commands",
                      std::to_string(counters.ullCompletions) + " completed, " +
                          std::to_string(counters.ullErrors) + " refused",
                      counters.ullCompletions == counters.ullCommandsQueued && counters.ullErrors == 0);
}

} // namespace tool
