#include "xmodem_end.h"

#include <algorithm>
#include <future>
#include <gmock/gmock.h>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sys/ioctl.h>

using namespace std::chrono_literals;
using sim::Bytes;
using sim::Camera;
using sim::Options;
using sim::State;
using testing::HasSubstr;

namespace {

constexpr const char *UIMAGE = "81 01 04 AA 00 00 00 00 00 00 00 01 FF";
constexpr const char *PROGRAM = "81 01 04 AA 00 00 00 00 00 00 00 02 FF";
constexpr const char *PATCH = "81 01 04 AA 00 00 00 00 00 04 00 00 FF";
constexpr const char *STATE = "81 09 04 A9 FF";
constexpr const char *POWER = "81 09 04 00 FF";
constexpr const char *IS_ON = "90 50 02 FF";
constexpr const char *ASK_UIMAGE = "71 09 04 B1 FF";
constexpr const char *ASK_PROGRAM = "71 09 04 B2 FF";
constexpr const char *INVITATION = "43"; // 'C'
constexpr const char *CANCEL = "18 18 18 18 18";

Options upgradable(const std::string &camera = "kova2") {
    Options options = Options::fast(camera);
    options.kova.flashTime = 20ms;
    return options;
}

/* A module that has been told to take one file. */
struct Upgrade : Desk {
    explicit Upgrade(const char *start, const Options &options = upgradable()) : Desk(options) {
        host.send(start);
    }
    bool reaches(unsigned state) const {
        return until([=](const State &s) { return s.kova.upgradeState == state; });
    }
    unsigned end() const {
        EXPECT_TRUE(until([](const State &s) { return s.kova.upgradeState >= 4; }));
        return camera.state().kova.upgradeState;
    }
};

// The program version in segments, of which there is one.
std::string programOf(HostEnd &host) {
    EXPECT_EQ(host.ask(ASK_PROGRAM), "90 50 00 00 00 01 FF");
    return host.ask(ASK_PROGRAM);
}

void expectArrives(size_t size, bool longBlocks) {
    Upgrade upgrade(PATCH);
    const Bytes sent = pattern(size);
    EXPECT_TRUE(sendFile(upgrade.host, sent, longBlocks)) << size;
    EXPECT_EQ(upgrade.end(), 4u) << size;
    const Bytes received = upgrade.camera.receivedFile("patch");
    EXPECT_EQ(received.size(), (size + 127) / 128 * 128) << size;
    ASSERT_GE(received.size(), size);
    EXPECT_TRUE(std::equal(sent.begin(), sent.end(), received.begin())) << size;
    EXPECT_EQ(static_cast<size_t>(std::count(received.begin(), received.end(), 0x1A)),
              received.size() - size);
}

void expectEachArrives(bool longBlocks) {
    std::vector<std::future<void>> runs;
    for (size_t size : {0u, 1u, 127u, 128u, 129u, 1023u, 1024u, 1025u})
        runs.push_back(std::async(std::launch::async, expectArrives, size, longBlocks));
    for (std::future<void> &run : runs)
        run.get();
}

} // namespace

/* ---- Files ---- */

TEST(KovaUpgrade, FilesOfEverySizeArriveInShortBlocks) {
    expectEachArrives(false);
}

TEST(KovaUpgrade, FilesOfEverySizeArriveInLongBlocks) {
    expectEachArrives(true);
}

TEST(KovaUpgrade, FilesOfTheMaskComeInAscendingOrderAndOtherBitsMeanNone) {
    Upgrade upgrade("81 01 04 AA 04 00 00 00 00 04 00 06 FF");
    EXPECT_TRUE(sendFile(upgrade.host, bytesOf("program")));
    EXPECT_TRUE(sendFile(upgrade.host, bytesOf("patch")));
    EXPECT_EQ(upgrade.end(), 4u);
    const State state = upgrade.camera.state();
    EXPECT_EQ(state.kova.upgradeMask, 0x40000406u);
    ASSERT_EQ(state.kova.filesReceived.size(), 2u);
    EXPECT_EQ(state.kova.filesReceived[0].kind, "program");
    EXPECT_EQ(state.kova.filesReceived[0].size, 128u);
    EXPECT_EQ(state.kova.filesReceived[1].kind, "patch");
    EXPECT_EQ(upgrade.camera.receivedFile("program")[2], 'o');
    EXPECT_EQ(upgrade.camera.receivedFile("patch")[2], 't');
    EXPECT_TRUE(upgrade.camera.receivedFile("uimage").empty());
    EXPECT_EQ(state.kova.transfersCompleted, 2u);
}

TEST(KovaUpgrade, AMaskWithoutAKnownFileFailsAtOnce) {
    Upgrade upgrade("81 01 04 AA 00 00 00 00 00 00 00 04 FF");
    EXPECT_EQ(upgrade.end(), 5u);
    EXPECT_EQ(upgrade.host.ask(STATE), "90 50 00 05 FF");
}

TEST(KovaUpgrade, AByteTakesItsTimeOnTheLine) {
    Options options = upgradable();
    options.paced = true;
    options.baud = 38400;
    Desk desk(options);
    desk.host.setBaud(38400);
    desk.host.send(PATCH);
    EXPECT_EQ(desk.host.bytes(1), INVITATION);
    const auto begin = sim::Clock::now();
    desk.host.send("02 01 FE" + [] {
        std::string block;
        for (int i = 0; i < 1024; ++i)
            block += " 00";
        return block + " 00 00"; // the CRC of zeros
    }());
    EXPECT_EQ(desk.host.bytes(1), "06");
    EXPECT_GE(sim::Clock::now() - begin, 267ms); // 1029 bytes of 10 bits
}

/* ---- Images ---- */

struct ImageCase {
    const char *what;
    const char *start;
    const char *content; // the CRC-32 of "123456789" is CBF43926
    unsigned end;
    const char *uimage;
    const char *program;
};

constexpr const char *OLD_UIMAGE = "90 50 00 01 02 03 FF";
constexpr const char *OLD_PROGRAM = "90 50 0A 00 01 01 02 FF"; // "B12"

void expectImage(const ImageCase &row) {
    Options options = upgradable();
    options.kova.programVersion = "B12";
    Upgrade upgrade(row.start, options);
    EXPECT_TRUE(sendFile(upgrade.host, bytesOf(row.content))) << row.what;
    EXPECT_EQ(upgrade.end(), row.end) << row.what;
    EXPECT_EQ(upgrade.host.ask(ASK_UIMAGE), row.uimage) << row.what;
    EXPECT_EQ(programOf(upgrade.host), row.program) << row.what;
}

TEST(KovaUpgrade, AnImageIsCheckedAndItsVersionRunsAfterwards) {
    const ImageCase rows[] = {
        {"program", PROGRAM, "viscacam-image program C34 9 CBF43926\n123456789", 4, OLD_UIMAGE,
         "90 50 0A 00 02 03 04 FF"},
        {"uimage", UIMAGE, "viscacam-image uimage 12.3 9 cbf43926\n123456789", 4, "90 50 01 02 03 00 FF",
         OLD_PROGRAM},
        {"patch", PATCH, "viscacam-image patch 9 9 CBF43926\n123456789", 4, OLD_UIMAGE, "90 50 09 FF"},
        {"no image line", PROGRAM, "123456789", 4, OLD_UIMAGE, OLD_PROGRAM},
        {"CRC", PROGRAM, "viscacam-image program C34 9 CBF43927\n123456789", 5, OLD_UIMAGE, OLD_PROGRAM},
        {"too long", PROGRAM, "viscacam-image program C34 500 CBF43926\n123456789", 5, OLD_UIMAGE,
         OLD_PROGRAM},
        {"too short", PROGRAM, "viscacam-image program C34 8 CBF43926\n123456789", 5, OLD_UIMAGE,
         OLD_PROGRAM},
        {"more behind it", PROGRAM, "viscacam-image program C34 9 CBF43926\n123456789!", 5, OLD_UIMAGE,
         OLD_PROGRAM},
        {"kind", PROGRAM, "viscacam-image uimage 12.3 9 CBF43926\n123456789", 5, OLD_UIMAGE, OLD_PROGRAM},
        {"cut line", PROGRAM, "viscacam-image program\n123456789", 5, OLD_UIMAGE, OLD_PROGRAM},
        {"version", UIMAGE, "viscacam-image uimage C34 9 CBF43926\n123456789", 5, OLD_UIMAGE, OLD_PROGRAM},
    };
    std::vector<std::future<void>> runs;
    for (const ImageCase &row : rows)
        runs.push_back(std::async(std::launch::async, expectImage, row));
    for (std::future<void> &run : runs)
        run.get();
}

void expectOldForm(const std::string &version, unsigned end, const char *told) {
    Upgrade upgrade(PROGRAM, upgradable("kova1"));
    EXPECT_TRUE(sendFile(upgrade.host, bytesOf("viscacam-image program " + version + " 0 00000000\n")));
    EXPECT_EQ(upgrade.end(), end) << version;
    EXPECT_EQ(upgrade.host.ask(ASK_PROGRAM), told) << version;
}

TEST(KovaUpgrade, AModuleOfTheOldFormRunsTheVersionsThatItCanTell) {
    std::vector<std::future<void>> runs;
    const auto add = [&](const char *version, unsigned end, const char *told) {
        runs.push_back(std::async(std::launch::async, expectOldForm, version, end, told));
    };
    add("D012SP04", 4, "90 50 00 0C 00 04 FF");
    add("D005", 4, "90 50 00 05 00 00 FF");
    add("01020399", 4, "90 50 01 02 03 63 FF");
    add("B02D014SP05", 5, "90 50 00 0C 00 03 FF");
    for (std::future<void> &run : runs)
        run.get();
}

/* ---- States ---- */

TEST(KovaUpgrade, WhileItFlashesTheModuleServesTheHostButNoOtherUpgrade) {
    Options options = upgradable();
    options.kova.flashTime = 10min;
    Upgrade upgrade(PATCH, options);
    EXPECT_TRUE(sendFile(upgrade.host, bytesOf("x")));
    EXPECT_TRUE(upgrade.reaches(3));
    EXPECT_EQ(upgrade.host.ask(STATE), "90 50 00 03 FF");
    EXPECT_EQ(upgrade.host.command("81 01 04 61 02 FF"), DONE);
    EXPECT_EQ(upgrade.host.ask(PATCH), REFUSED);
    upgrade.camera.powerCut();
    EXPECT_EQ(upgrade.camera.state().kova.upgradeState, 5u);
}

TEST(KovaUpgrade, FlashingTakesItsTimeAndEndsAsTold) {
    Options options = upgradable();
    options.kova.flashTime = 100s;
    options.kova.upgradeEndsIn = 5;
    options.timeScale = 1000;
    std::mutex lock;
    std::map<std::string, sim::Clock::time_point> times;
    options.trace = [&](const sim::TraceEvent &event) {
        const std::lock_guard guard(lock);
        times[event.text] = event.time;
    };
    Upgrade upgrade(PROGRAM, options);
    EXPECT_TRUE(sendFile(upgrade.host, bytesOf("viscacam-image program C34 0 00000000\n")));
    EXPECT_EQ(upgrade.end(), 5u);
    EXPECT_EQ(upgrade.host.ask(ASK_PROGRAM), "90 50 00 00 00 02 FF"); // B02D014SP05 as before
    const std::lock_guard guard(lock);
    EXPECT_GE(times.at("upgrade failed: as it was told to") - times.at("upgrade: flashing"), 100ms);
}

TEST(KovaUpgrade, BeforeTheFirstUpgradeThereIsNone) {
    EXPECT_EQ(Desk("kova2").host.ask(STATE), "90 50 00 00 FF");
    EXPECT_EQ(Desk("sony1").host.ask(STATE), SYNTAX);
    EXPECT_EQ(Desk("sony1").host.ask(PATCH), SYNTAX);
}

TEST(KovaUpgrade, TheStateIsToldUntilTheHostHasBegunAndNothingElseIsHeard) {
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    EXPECT_EQ(upgrade.host.ask(STATE), "90 50 00 01 FF");
    upgrade.host.send("81 01 04 61 02 FF 81 09 04 00 FF");
    EXPECT_EQ(upgrade.host.ask(STATE), "90 50 00 01 FF");
    const State state = upgrade.camera.state();
    EXPECT_EQ(state.ignoredPackets, 2u);
    EXPECT_EQ(state.setting("mirror"), 3);
    EXPECT_TRUE(state.kova.transferring);
}

TEST(KovaUpgrade, WhatComesAfterTheBeginOfAFileIsTheFilesOwn) {
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    upgrade.host.send("01 01 FE");
    upgrade.host.send(STATE);
    upgrade.camera.sendRaw({0x77});
    EXPECT_EQ(upgrade.host.bytes(1), "77");
    EXPECT_EQ(upgrade.camera.state().seenCount("09 04 A9"), 0u);
}

TEST(KovaUpgrade, AReportWaitsNotForTheEndOfATransferButIsLost) {
    Options options = upgradable();
    options.kova.transferPatience = 200ms;
    Upgrade upgrade(PATCH, options);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    upgrade.camera.requestConfiguration();
    EXPECT_EQ(upgrade.host.bytes(5), CANCEL);
    EXPECT_EQ(upgrade.camera.state().sentCount("report"), 0u);
}

/* ---- Faults and hosts that give up ---- */

TEST(KovaUpgrade, AnAbortedTransferFailsAndTheOtherFilesAreStillTaken) {
    Desk desk(upgradable());
    desk.camera.setFault("transfer-abort=2#1");
    desk.host.send("81 01 04 AA 00 00 00 00 00 00 00 03 FF");
    EXPECT_FALSE(sendFile(desk.host, pattern(300), false));
    EXPECT_TRUE(sendFile(desk.host, bytesOf("program")));
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.upgradeState == 5; }));
    const State state = desk.camera.state();
    ASSERT_EQ(state.kova.filesReceived.size(), 1u);
    EXPECT_EQ(state.kova.filesReceived[0].kind, "program");
    EXPECT_EQ(state.kova.transfersFailed, 1u);
    EXPECT_EQ(state.kova.transferBlocks, 3u);
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaUpgrade, ABlockWithAWrongChecksumIsAskedForAgain) {
    Desk desk(upgradable());
    desk.camera.setFault("transfer-checksum=1#1");
    desk.host.send(PATCH);
    EXPECT_EQ(desk.host.bytes(1), INVITATION);
    const std::string block = "01 01 FE" + [] {
        std::string zeros;
        for (int i = 0; i < 130; ++i)
            zeros += " 00";
        return zeros;
    }();
    desk.host.send(block);
    EXPECT_EQ(desk.host.bytes(1), INVITATION); // once more: there was no block yet
    desk.host.send(block);
    EXPECT_EQ(desk.host.bytes(1), "06");
    EXPECT_EQ(desk.camera.state().kova.transferBlocks, 2u);
}

TEST(KovaUpgrade, AStuckModuleFlashesUntilTheFaultIsOver) {
    Desk desk(upgradable());
    desk.camera.setFault("upgrade-stuck");
    desk.host.send(PATCH);
    EXPECT_TRUE(sendFile(desk.host, bytesOf("x")));
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.upgradeState == 3; }));
    EXPECT_FALSE(desk.camera.waitFor([](const State &s) { return s.kova.upgradeState != 3; }, 100ms));
    EXPECT_EQ(desk.host.ask(STATE), "90 50 00 03 FF");
    desk.camera.clearFault("upgrade-stuck");
    EXPECT_EQ(desk.host.ask(STATE), "90 50 00 04 FF");
}

TEST(KovaUpgrade, AStateOutsideTheTableIsToldAsOftenAsWanted) {
    Desk desk("kova2");
    desk.camera.setFault("upgrade-state=0x1A#2");
    EXPECT_EQ(desk.host.ask(STATE), "90 50 01 0A FF");
    EXPECT_EQ(desk.host.ask(STATE), "90 50 01 0A FF");
    EXPECT_EQ(desk.host.ask(STATE), "90 50 00 00 FF");
    EXPECT_EQ(desk.camera.state().kova.upgradeState, 0u);
}

TEST(KovaUpgrade, ASilentHostIsGivenUp) {
    Options options = upgradable();
    options.kova.transferPatience = 200ms;
    Upgrade upgrade("81 01 04 AA 00 00 00 00 00 00 00 03 FF", options);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    upgrade.host.send("01 01 FE 30 31");
    EXPECT_EQ(upgrade.host.bytes(5), CANCEL);
    EXPECT_EQ(upgrade.end(), 5u);
    EXPECT_EQ(upgrade.host.ask(POWER), IS_ON);
}

TEST(KovaUpgrade, AHostThatCancelsIsUnderstoodAtOnce) {
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    upgrade.host.send(CANCEL);
    EXPECT_EQ(upgrade.end(), 5u);
    EXPECT_EQ(upgrade.camera.state().kova.transfersFailed, 1u);
}

TEST(KovaUpgrade, APowerCutEndsATransfer) {
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    upgrade.camera.powerCut();
    EXPECT_EQ(upgrade.camera.state().kova.upgradeState, 5u);
    EXPECT_FALSE(upgrade.camera.state().kova.transferring);
    EXPECT_TRUE(hasNoChild());
}

TEST(KovaUpgrade, AnInvitationThatTheHostHasTakenIsRepeated) {
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(2), "43 43");
}

TEST(KovaUpgrade, AWaitingModuleSleepsAndDoesNotRepeatWhatWaitsInThePort) {
    Upgrade upgrade(PATCH);
    EXPECT_TRUE(upgrade.until([](const State &s) { return s.kova.transferring; }));
    const unsigned long before = upgrade.camera.state().wakeUps;
    EXPECT_FALSE(upgrade.camera.waitFor([](const State &) { return false; }, 1200ms));
    EXPECT_LE(upgrade.camera.state().wakeUps, before + 5);
    int unread = 0;
    EXPECT_EQ(ioctl(upgrade.host.descriptor(), FIONREAD, &unread), 0);
    EXPECT_EQ(unread, 1);
}

TEST(KovaUpgrade, WithoutLrzszItFailsWithARemark) {
    std::mutex mutex;
    std::string remarks;
    Options options = upgradable();
    options.trace = [&](const sim::TraceEvent &event) {
        const std::lock_guard lock(mutex);
        remarks += event.text + "\n";
    };
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/nowhere", 1);
    {
        Upgrade upgrade(PATCH, options);
        EXPECT_EQ(upgrade.end(), 5u);
        EXPECT_EQ(upgrade.host.ask(POWER), IS_ON);
    }
    setenv("PATH", path.c_str(), 1);
    const std::lock_guard lock(mutex);
    EXPECT_THAT(remarks, HasSubstr("cannot run rx: No such file"));
    EXPECT_THAT(remarks, HasSubstr("lrzsz"));
}

/* ---- What is left behind ---- */

TEST(KovaUpgrade, ACameraThatEndsInTheMiddleLeavesNothing) {
    const TempHere temp;
    const size_t before = openDescriptors();
    sim::Clock::time_point ending;
    {
        Upgrade upgrade(PATCH);
        EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
        EXPECT_FALSE(temp.isEmpty());
        ending = sim::Clock::now();
    }
    EXPECT_LT(sim::Clock::now() - ending, 1s);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(hasNoChild());
    EXPECT_TRUE(temp.isEmpty());
}

TEST(KovaUpgrade, AfterwardsTheCameraIsIdleAndHasCleanedUp) {
    const TempHere temp;
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    const size_t during = openDescriptors();
    upgrade.host.send(CANCEL);
    EXPECT_EQ(upgrade.end(), 5u);
    EXPECT_EQ(openDescriptors(), during - 1);
    EXPECT_TRUE(hasNoChild());
    EXPECT_TRUE(temp.isEmpty());
    EXPECT_EQ(upgrade.host.bytes(2), "18 18"); // what rx said last
    const unsigned long wakeUps = upgrade.camera.state().wakeUps;
    EXPECT_FALSE(upgrade.camera.waitFor([](const State &) { return false; }, 100ms));
    EXPECT_EQ(upgrade.camera.state().wakeUps, wakeUps);
}

TEST(KovaUpgrade, IsInTheJson) {
    Upgrade upgrade(PATCH);
    EXPECT_EQ(upgrade.host.bytes(1), INVITATION);
    const auto kova = nlohmann::json::parse(upgrade.camera.stateJson())["kova"];
    EXPECT_EQ(kova["upgradeState"], 1);
    EXPECT_EQ(kova["upgradeMask"], "0x00000400");
    EXPECT_EQ(kova["filesReceived"], nlohmann::json::array());
    EXPECT_EQ(kova["transferring"], true);
    EXPECT_EQ(kova["transfersCompleted"], 0);
    EXPECT_EQ(kova["transferBlocks"], 0);
}

TEST(KovaUpgrade, OptionsThatMeanNothingAreRefused) {
    Options options = upgradable();
    options.kova.upgradeEndsIn = 3;
    EXPECT_THROW(Camera camera(options), std::invalid_argument);
    options = upgradable();
    options.kova.flashTime = 11min;
    EXPECT_THROW(Camera camera(options), std::invalid_argument);
    options = upgradable();
    options.kova.transferPatience = 0ms;
    EXPECT_THROW(Camera camera(options), std::invalid_argument);
}
