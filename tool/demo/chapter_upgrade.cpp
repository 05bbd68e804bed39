/* The story of a firmware upgrade: which files, on their way, and what the module is afterwards. */
#include <future>
#include <memory>
#include <optional>

#include "host/host.h"
#include "tool/demo/chapters.h"
#include "tool/demo/package.h"
#include "tool/kova_upgrade.h"
#include "tool/module_types.h"
#include "tool/transfer_progress.h"
#include "viscacam.h"

namespace tool {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds TELL_EVERY{500};
constexpr seconds DRAIN_LIMIT{2};
constexpr size_t VERSION_ROOM = 100;

std::string read(Stage &stage, uint32_t (*version)(char *), const std::string &what) {
    char text[VERSION_ROOM] = "";
    stage.checkRead(version(text), what);
    return text;
}

DemoPackage::Versions newerThan(Stage &stage, uint32_t moduleType) {
    DemoPackage::Versions versions;
    versions.uimage = read(stage, KovaGetCurKovaUimageVer, "the module's uImage version");
    versions.program = nextVersion(read(stage, KovaGetCurKovaProgramVer, "the module's program version"));
    versions.secondKova = isSecondKova(moduleType);
    return versions;
}

UpgradePlan plan(Stage &stage) {
    try {
        return planUpgrade();
    } catch (const std::runtime_error &unread) {
        stage.checkAnswering();
        throw StoryOver(unread.what());
    }
}

UpgradePlan tellPlan(Stage &stage) {
    stage.heading("What an upgrade sends: the files whose versions differ from the module's");
    const UpgradePlan found = plan(stage);
    for (const std::string &line : found.lines())
        stage.say(line);
    if (const UpgradeFile *missing = found.missing())
        throw StoryOver(missing->path + " is missing");
    return found;
}

// The result comes on the library's thread, perhaps after the story was given up.
std::future<bool> start(Stage &stage) {
    const auto verdict = std::make_shared<std::promise<bool>>();
    std::future<bool> result = verdict->get_future();
    if (!startUpgrade([verdict](bool succeeded) { verdict->set_value(succeeded); })) {
        stage.checkAnswering();
        throw StoryOver("the library did not start the upgrade");
    }
    return result;
}

void run(Stage &stage, const UpgradePlan &found) {
    stage.heading("The upgrade: announced, sent by XMODEM, written into the module's flash");
    TransferProgress progress(found.bytesToSend());
    std::future<bool> result = start(stage);
    while (result.wait_for(TELL_EVERY) != std::future_status::ready) {
        if (const std::optional<std::string> line = progress.news())
            stage.say(*line);
        if (!host::IsPortPresent(Stage::PORT_NUMBER))
            throw StoryOver("the device at the port is gone; the module may need the upgrade again");
    }
    if (!result.get())
        throw StoryOver("the module says that the upgrade failed");
    stage.say("the module says that the upgrade succeeded");
}

void compareVersion(Stage &stage, const std::string &asked, const std::string &expected,
                    const std::string &told) {
    stage.table().add(asked + " " + expected, told, told == expected);
}

} // namespace

void tellUpgrade(Stage &stage, uint32_t moduleType, const UpgradeStory &story) {
    std::optional<DemoPackage> package;
    DemoPackage::Versions versions;
    if (story.simulated) {
        stage.heading("Write a package under /tmp/update with a newer program for the module");
        versions = newerThan(stage, moduleType);
        package.emplace(versions);
        stage.say("package with program " + versions.program + " and uImage " + versions.uimage);
    }
    const UpgradePlan found = tellPlan(stage);
    if (story.dryRun)
        return;
    stage.perform([&] {
        run(stage, found);
        return VISCA_SUCCESS;
    });
    (void)host::WaitDrained(DRAIN_LIMIT);
    stage.heading("Ask the module for its versions");
    const std::string uimage = read(stage, KovaGetCurKovaUimageVer, "the module's uImage version");
    const std::string program = read(stage, KovaGetCurKovaProgramVer, "the module's program version");
    stage.say("the module runs program " + program + ", uImage " + uimage);
    if (!package)
        return;
    compareVersion(stage, "program", versions.program, program);
    compareVersion(stage, "uImage", versions.uimage, uimage);
}

} // namespace tool
