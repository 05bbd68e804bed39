#include "desk.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <set>

using namespace std::chrono_literals;
using sim::Camera;
using sim::Options;
using sim::Power;
using sim::State;
using testing::HasSubstr;

namespace {

constexpr const char *PROGRAM = "71 09 04 B2 FF";
constexpr const char *EXTENSION = "71 09 04 B5 FF";
constexpr const char *MANUAL_FOCUS = "81 01 04 38 03 FF";

Options withAbility(uint32_t ability) {
    Options options = quick("kova2");
    options.kova.ability = ability;
    return options;
}

std::string refusalOf(const Options &options) {
    try {
        Camera camera(options);
    } catch (const std::invalid_argument &error) {
        return error.what();
    }
    return "accepted";
}

} // namespace

/* ---- Which modules there are ---- */

TEST(KovaModules, AreFoundByNameAndByCode) {
    const std::vector<std::pair<const char *, uint32_t>> modules = {
        {"kova1", 0x02012000},     {"kova-2000", 0x02012000}, {"kova", 0x02012001},
        {"kova-2001", 0x02012001}, {"kova-2002", 0x02012002}, {"kova-2003", 0x02012003},
        {"kova-2004", 0x02012004}, {"kova-2005", 0x02012005}, {"kova-2100", 0x02012100},
        {"kova-2200", 0x02012200}, {"kova-2A00", 0x02012A00}, {"kova2", 0x02012A01},
        {"kova-2A01", 0x02012A01}, {"kova-2A02", 0x02012A02}};
    for (const auto &[name, code] : modules)
        EXPECT_EQ(sim::findCamera(name).code, code) << name;
    EXPECT_EQ(sim::findCamera("0x02012A01").name, "kova2");
    EXPECT_EQ(sim::findCamera("0x02012001").name, "kova-2001");
    EXPECT_THROW(sim::findCamera("kova3"), std::invalid_argument);
}

TEST(KovaModules, LeaveTheFactoryWithTheNormOfTheirType) {
    EXPECT_EQ(Desk("kova1").host.ask("81 09 04 24 72 FF"), "90 50 00 06 FF");
    EXPECT_EQ(Desk("kova2").host.ask("81 09 04 24 72 FF"), "90 50 00 06 FF");
    EXPECT_EQ(Desk("kova-2100").host.ask("81 09 04 24 72 FF"), "90 50 00 0E FF");
    EXPECT_EQ(Desk("kova-2200").host.ask("81 09 04 24 72 FF"), "90 50 01 05 FF");
}

TEST(KovaModules, NameTheirMakerAndModel) {
    EXPECT_EQ(Desk("kova2").host.ask("81 09 00 02 FF"), "90 50 80 26 A0 00 02 01 02 FF");
    EXPECT_EQ(Desk("kova-2100").host.ask("81 09 00 02 FF"), "90 50 80 26 B0 00 01 10 02 FF");
}

TEST(KovaModules, NormRegistersTakeEffectAtPowerOn) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 24 72 01 03 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 24 72 FF"), "90 50 00 06 FF");
    desk.powerCycle();
    EXPECT_EQ(desk.host.ask("81 09 04 24 72 FF"), "90 50 01 03 FF");
}

/* ---- Headers and power ---- */

TEST(KovaHeader, VersionInquiriesHaveAHeaderOfTheirOwn) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.ask("71 09 04 B1 FF"), "90 50 00 01 02 03 FF");
    EXPECT_EQ(desk.camera.state().seenCount("09 04 B1"), 1u);
    desk.expectEach({"81 09 04 B1 FF", "81 09 04 B2 FF", "81 09 04 B5 FF", "71 09 04 AB FF", "71 09 04 00 FF",
                     "71 01 04 07 02 FF"},
                    SYNTAX);
}

TEST(KovaHeader, TheSecondHeaderBeginsNoPacketOfABlock) {
    Desk desk("sony1");
    desk.host.send("71 09 04 B1 FF");
    // 71 09 04 is noise, B1 FF a packet for somebody else.
    EXPECT_TRUE(desk.until([](const State &s) { return s.ignoredPackets == 1; }));
    EXPECT_EQ(desk.camera.state().noiseBytes, 3u);
}

TEST(KovaPower, StandbyServesPowerAndRegistersOnly) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 00 03 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 24 72 00 08 FF"), DONE);
    desk.expectEach(
        {"81 09 04 AB FF", "71 09 04 B1 FF", "71 09 04 B2 FF", "81 09 04 CE FF", "81 09 04 B4 03 FF"},
        "90 60 41 FF");
    desk.expectEach({"81 01 04 CD 01 FF", "81 01 04 A4 00 00 00 00 00 00 00 01 FF", "81 01 04 AE 02 FF"},
                    REFUSED);
}

TEST(KovaPower, BootingAnswersThePowerInquiryOnly) {
    Options options = quick("kova2");
    options.start = Power::booting;
    options.bootTime = 600s;
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.packet(), "90 38 FF");
    desk.host.send("71 09 04 B1 FF 81 09 04 AB FF 81 01 04 CD 01 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.camera.state().ignoredPackets, 3u);
}

/* ---- Capabilities and versions ---- */

TEST(KovaVersions, TheCapabilityWordComesBehindAByteOfNoMeaning) {
    Desk desk(withAbility(0x12345678));
    EXPECT_EQ(desk.host.ask("81 09 04 AB FF"), "90 50 08 01 02 03 04 05 06 07 08 FF");
    EXPECT_EQ(desk.camera.state().kova.ability, 0x12345678u);
}

TEST(KovaVersions, CapabilitiesAreThoseOfTheGeneration) {
    EXPECT_EQ(Desk("kova2").host.ask("81 09 04 AB FF"), "90 50 08 00 00 00 00 00 00 01 0C FF");
    EXPECT_EQ(Desk("kova-2A02").host.ask("81 09 04 AB FF"), "90 50 08 00 00 00 00 00 00 01 0C FF");
    EXPECT_EQ(Desk("kova").host.ask("81 09 04 AB FF"), "90 50 08 00 00 00 00 00 00 00 00 FF");
}

TEST(KovaVersions, UimageVersionIsFourDigits) {
    Options options = quick("kova");
    options.kova.uimageVersion = {1, 2, 3, 0};
    Desk desk(options);
    EXPECT_EQ(desk.host.ask("71 09 04 B1 FF"), "90 50 01 02 03 00 FF");
}

TEST(KovaVersions, WithoutSegmentsTheProgramVersionIsOneReply) {
    Options options = withAbility(0);
    options.kova.oldProgramVersion = {0, 12, 0, 3};
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 0C 00 03 FF");
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 0C 00 03 FF");
}

TEST(KovaVersions, ProgramVersionComesInSegmentsBehindTheirCount) {
    Options options = withAbility(0x04);
    options.kova.programVersion = "B02D014SP05"; // 3+2 +3+3 +3+3 +2 = 19 entries
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 02 FF");
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 0A 00 01 00 02 0A 00 03 00 01 04 0A FF");
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 01 08 0A 01 05 00 05 FF");
}

TEST(KovaVersions, BehindTheLastSegmentANewSeriesBegins) {
    Options options = withAbility(0x04);
    options.kova.programVersion = "7";
    Desk desk(options);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 01 FF");
        EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 07 FF");
    }
}

TEST(KovaVersions, AnEmptyVersionHasNoSegments) {
    Options options = withAbility(0x04);
    options.kova.programVersion = "";
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 00 FF");
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 00 FF");
}

TEST(KovaVersions, ASeriesOutlivesOtherPackets) {
    Options options = withAbility(0x14);
    options.timeScale = 1;
    options.kova.programVersion = "8";
    options.kova.extensionVersion = "9";
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 01 FF");
    EXPECT_EQ(desk.host.ask(EXTENSION), "90 50 00 00 00 01 FF");
    EXPECT_EQ(desk.host.command("81 01 04 CD 01 FF"), DONE);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 08 FF");
    EXPECT_EQ(desk.host.ask(EXTENSION), "90 50 09 FF");
}

TEST(KovaVersions, ASeriesThatWasGivenUpIsForgottenAfterEightSeconds) {
    Options options = withAbility(0x04);
    options.timeScale = 1000;
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 02 FF");
    const auto begin = sim::Clock::now();
    while (sim::Clock::now() - begin < 9ms)
        desk.host.ask("81 09 04 00 FF");
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 02 FF");
}

TEST(KovaVersions, PowerOnBeginsANewSeries) {
    Options options = withAbility(0x04);
    options.timeScale = 1;
    options.bootTime = 0ms;
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 02 FF");
    desk.powerCycle();
    EXPECT_EQ(desk.host.ask(PROGRAM), "90 50 00 00 00 02 FF");
}

TEST(KovaVersions, SeparatorsOfTheExtensionVersionHaveACode) {
    Options options = withAbility(0x10);
    options.kova.extensionVersion = "1C-3_";
    Desk desk(options);
    EXPECT_EQ(desk.host.ask(EXTENSION), "90 50 00 00 00 01 FF");
    EXPECT_EQ(desk.host.ask(EXTENSION), "90 50 01 0A 00 02 0B 00 03 0B 01 FF");
}

TEST(KovaVersions, WithoutItsCapabilityThereIsNoExtensionVersion) {
    Desk desk(withAbility(0x0C));
    EXPECT_EQ(desk.host.ask(EXTENSION), SYNTAX);
}

TEST(KovaVersions, SoftVersionIsText) {
    Options options = quick("kova2");
    options.kova.softVersion = "V2.1";
    Desk desk(options);
    EXPECT_EQ(desk.host.ask("81 09 04 B4 03 FF"), "90 50 56 32 2E 31 FF");
}

TEST(KovaVersions, BoardsTellVersionAndType) {
    Options options = quick("kova2");
    options.kova.boards = {{{1, 16}, {2, 32}, {3, 48}}};
    Desk desk(options);
    EXPECT_EQ(desk.host.ask("81 09 04 B4 00 FF"), "90 50 01 10 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 B4 01 FF"), "90 50 02 20 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 B4 02 FF"), "90 50 03 30 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 B4 04 FF"), SYNTAX);
}

TEST(KovaVersions, TemperatureIsToldInNibblesFrom127Below) {
    Options options = quick("kova2");
    const std::vector<std::pair<int, const char *>> rows = {{-127, "90 50 00 00 00 00 FF"},
                                                            {0, "90 50 00 00 07 0F FF"},
                                                            {41, "90 50 00 00 0A 08 FF"},
                                                            {128, "90 50 00 00 0F 0F FF"}};
    for (const auto &[degrees, reply] : rows) {
        options.kova.temperature = degrees;
        EXPECT_EQ(Desk(options).host.ask("81 09 04 68 FF"), reply);
    }
}

TEST(KovaVersions, WhatCannotBeToldIsRefused) {
    Options options = quick("kova2");
    options.kova.uimageVersion = {0, 255, 0, 0};
    EXPECT_THAT(refusalOf(options), HasSubstr("below 255"));
    options = quick("kova2");
    options.kova.programVersion = "a b";
    EXPECT_THAT(refusalOf(options), HasSubstr("99 digits"));
    options.kova.programVersion = std::string(100, '1');
    EXPECT_THAT(refusalOf(options), HasSubstr("99 digits"));
    options.kova.programVersion = std::string(99, '~');
    EXPECT_EQ(refusalOf(options), "accepted");
    options.kova.softVersion = "12345678901234";
    EXPECT_THAT(refusalOf(options), HasSubstr("13 printable"));
    options = quick("kova2");
    options.kova.boards[2].type = 255;
    EXPECT_THAT(refusalOf(options), HasSubstr("board"));
    options = quick("kova2");
    options.kova.temperature = 129;
    EXPECT_THAT(refusalOf(options), HasSubstr("-127 to 128"));
}

/* ---- Orientation, offset and housekeeping ---- */

TEST(KovaOrientation, TakesEffectAtOnceWithoutTheCapability) {
    Desk desk(withAbility(0));
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 02 FF");
    EXPECT_TRUE(desk.camera.state().pendingSettings.empty());
}

TEST(KovaOrientation, TakesEffectAtPowerOnWithTheCapability) {
    Desk desk(withAbility(0x08));
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 66 02 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 66 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.camera.state().pendingSettings.at("flip"), 2);
    desk.powerCycle();
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 66 FF"), "90 50 02 FF");
    EXPECT_TRUE(desk.camera.state().pendingSettings.empty());
    EXPECT_EQ(desk.host.ask("81 01 04 61 01 FF"), SYNTAX);
}

TEST(KovaOrientation, OutlivesAPowerCut) {
    Desk desk(withAbility(0));
    EXPECT_EQ(desk.host.command("81 01 04 66 02 FF"), DONE);
    desk.camera.powerCut();
    desk.camera.powerApply();
    EXPECT_TRUE(desk.isOn());
    EXPECT_EQ(desk.setting("flip"), 2);
}

TEST(KovaOffset, TakesEffectAtPowerOnAndIsToldSigned) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 BD 0F 0F 0F 0E 00 01 02 0C 01 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 BD FF"), "90 50 00 00 00 00 00 00 00 00 FF");
    EXPECT_EQ(desk.setting("offsetFlag"), 1);
    desk.powerCycle();
    EXPECT_EQ(desk.host.ask("81 09 04 BD FF"), "90 50 0F 0F 0F 0E 00 01 02 0C FF");
    EXPECT_EQ(desk.setting("offsetX"), -2);
    EXPECT_EQ(desk.setting("offsetY"), 300);
    desk.expectEach({"81 01 04 BD 0F 0F 0F 0E 00 01 02 0C FF", "81 01 04 BD FF"}, SYNTAX);
}

TEST(KovaHousekeeping, SettingsAreStored) {
    Desk desk("kova2");
    desk.expectStored({
        {"81 01 04 BF 02 FF", "lowDelay", 2},
        {"81 01 04 BF 03 FF", "lowDelay", 3},
        {"81 01 04 B4 05 FF", "irCut", 5},
        {"81 01 04 B4 04 FF", "irCut", 4},
        {"81 01 04 D1 00 00 00 04 FF", "domeType", 4},
        {"81 01 04 D1 00 00 00 00 FF", "domeType", 0},
        {"81 01 04 CF 05 01 01 0B FF", "debugItem", 0x51},
        {"81 01 04 CF 05 01 01 0B FF", "debugValue", 0x1B},
    });
    desk.expectEach({"81 01 04 BF 01 FF", "81 01 04 BF 04 FF", "81 01 04 B4 03 FF", "81 01 04 B4 06 FF",
                     "81 01 04 D1 00 00 00 05 FF", "81 01 04 D1 00 00 00 10 FF", "81 01 04 D1 04 FF",
                     "81 01 04 CF 05 01 01 FF"},
                    SYNTAX);
}

TEST(KovaHousekeeping, TheFilterIsKeptThroughAPowerCycleAndTheSceneModeIsNot) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 B4 05 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 CD 06 FF"), DONE);
    desk.powerCycle();
    EXPECT_EQ(desk.setting("irCut"), 5);
    EXPECT_EQ(desk.setting("sceneMode"), 0x0F);
}

TEST(KovaHousekeeping, TheClockHas32Bits) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 A4 0F 0E 0D 0C 0B 0A 09 08 FF"), DONE);
    EXPECT_EQ(desk.camera.state().kova.clock, 0xFEDCBA98u);
    EXPECT_EQ(desk.host.ask("81 01 04 A4 00 00 00 01 FF"), SYNTAX);
}

TEST(KovaHousekeeping, SceneModesAreThoseThatThereAre) {
    Desk desk("kova2");
    for (unsigned code = 0; code < 0x20; ++code) {
        char packet[24];
        std::snprintf(packet, sizeof packet, "81 01 04 CD %02X FF", code);
        const bool known = code <= 0x07 || (code >= 0x0D && code <= 0x0F);
        if (known)
            desk.expectStored({{packet, "sceneMode", static_cast<int>(code)}});
        else
            EXPECT_EQ(desk.host.ask(packet), SYNTAX) << packet;
    }
}

/* ---- Picture analysis and one-push focus ---- */

TEST(KovaAnalysis, LumaAndFocusValueOfAStillSceneAreToldInTheirForms) {
    Options options = quick("kova2");
    options.kova.sceneMoves = false;
    Desk desk(options);
    EXPECT_EQ(desk.host.ask("81 09 04 CE FF"), "90 50 00 00 08 00 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 AD FF"), "90 50 00 02 00 00 FF");
    EXPECT_EQ(desk.camera.state().kova.luma, 0x80u);
    EXPECT_EQ(desk.camera.state().kova.focusValue, 0x20000u);
}

TEST(KovaAnalysis, OutOfFocusTheFocusValueFalls) {
    Options options = quick("kova2");
    options.kova.sceneMoves = false;
    Desk desk(options);
    EXPECT_EQ(desk.host.command(MANUAL_FOCUS), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 48 05 00 00 00 FF"), DONE); // a depth of field off
    EXPECT_EQ(desk.host.ask("81 09 04 AD FF"), "90 50 00 01 00 00 FF");
}

TEST(KovaAnalysis, LumaMovesWithTheSceneWithinItsBounds) {
    Options options = quick("kova2");
    options.timeScale = 1000; // 20 ms from dark to bright and back
    Desk desk(options);
    std::set<unsigned> seen;
    const auto deadline = sim::Clock::now() + HostEnd::PATIENCE;
    while (seen.size() < 20 && sim::Clock::now() < deadline)
        seen.insert(desk.camera.state().kova.luma);
    EXPECT_GE(seen.size(), 20u);
    EXPECT_GE(*seen.begin(), 0x40u);
    EXPECT_LE(*seen.rbegin(), 0xC0u);
}

TEST(KovaOnePush, EveryTriggerFocusesOnTheScene) {
    Desk desk("kova2");
    const unsigned scene = desk.camera.state().focus;
    EXPECT_EQ(desk.host.command(MANUAL_FOCUS), DONE);
    const std::vector<Stored> triggers = {
        {"81 01 04 18 01 01 FF", "afTrigger", 1},
        {"81 01 04 18 01 06 FF", "afTrigger", 6},
        {"81 01 04 18 01 07 FF", "afTrigger", 7},
        {"81 01 04 18 01 08 FF", "afTrigger", 8},
        {"81 01 04 18 01 09 FF", "afTrigger", 9},
        {"81 01 04 18 0A 00 01 02 03 00 04 05 06 FF", "afTrigger", 10},
        {"81 01 04 18 0B 00 01 02 03 04 05 06 07 FF", "afTrigger", 11},
    };
    for (const Stored &trigger : triggers) {
        EXPECT_EQ(desk.host.command("81 01 04 48 0D 00 00 00 FF"), DONE);
        desk.expectStored({trigger});
        EXPECT_TRUE(desk.rests());
        EXPECT_EQ(desk.camera.state().focus, scene);
    }
}

TEST(KovaOnePush, PointAndRectangleAreKept) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 18 0A 00 01 02 03 0F 0F 0F 0E FF"), DONE);
    EXPECT_EQ(desk.setting("afValue1"), 0x0123);
    EXPECT_EQ(desk.setting("afValue2"), 0xFFFE);
    EXPECT_EQ(desk.host.command("81 01 04 18 0B 01 02 03 04 05 06 07 FE FF"), DONE);
    EXPECT_EQ(desk.setting("afValue1"), 0x0102);
    EXPECT_EQ(desk.setting("afValue2"), 0x0304);
    EXPECT_EQ(desk.setting("afValue3"), 0x0506);
    EXPECT_EQ(desk.setting("afValue4"), 0x07FE);
}

TEST(KovaOnePush, OtherTriggersAreNone) {
    Desk desk("kova2");
    desk.expectEach({"81 01 04 18 01 00 FF", "81 01 04 18 01 02 FF", "81 01 04 18 01 05 FF",
                     "81 01 04 18 01 0A FF", "81 01 04 18 01 16 FF", "81 01 04 18 0A 00 01 FF",
                     "81 01 04 18 0B 01 02 03 04 FF", "81 01 04 18 0C FF"},
                    SYNTAX);
    EXPECT_EQ(desk.setting("afTrigger"), 0);
}

/* ---- Reports ---- */

TEST(KovaReports, ZoomIsReportedFromBeginningToEnd) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 AE 02 FF"), DONE);
    EXPECT_EQ(desk.setting("zoomReports"), 2);
    desk.host.send("81 01 04 47 04 00 00 00 FF");
    EXPECT_EQ(desk.host.packet(), "90 41 FF");
    EXPECT_EQ(desk.host.packet(), "90 07 00 AE 01 FF");
    const std::string end = desk.host.packet() + " " + desk.host.packet();
    EXPECT_THAT(end, testing::AnyOf("90 07 00 AE 00 FF 90 51 FF", "90 51 FF 90 07 00 AE 00 FF"));
    EXPECT_EQ(desk.camera.state().sentCount("report"), 2u);
}

TEST(KovaReports, FocusIsReportedFromBeginningToEnd) {
    Options options = quick("kova2");
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 AF 02 FF"), DONE);
    EXPECT_EQ(desk.host.command(MANUAL_FOCUS), DONE);
    EXPECT_EQ(desk.host.ask("81 01 04 08 37 FF"), "90 41 FF");
    EXPECT_THAT(desk.host.packet() + " " + desk.host.packet(), HasSubstr("90 07 00 AF 01 FF"));
    EXPECT_EQ(desk.host.ask("81 01 04 08 00 FF"), "90 41 FF");
    EXPECT_THAT(desk.host.packet() + " " + desk.host.packet(), HasSubstr("90 07 00 AF 00 FF"));
}

TEST(KovaReports, AMotionThatReplacesAnotherIsNotReportedAnew) {
    Options options = quick("kova2");
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 AE 02 FF"), DONE);
    desk.host.send("81 01 04 07 21 FF");
    EXPECT_TRUE(desk.until([](const State &s) { return s.sentCount("report") == 1; }));
    desk.host.send("81 01 04 07 22 FF 81 09 04 47 FF");
    EXPECT_TRUE(desk.until([](const State &s) { return s.seenCount("09 04 47") == 1; }));
    EXPECT_EQ(desk.camera.state().sentCount("report"), 1u);
    desk.host.send("81 01 04 07 00 FF");
    EXPECT_TRUE(desk.until([](const State &s) { return s.sentCount("report") == 2; }));
}

TEST(KovaReports, AreOffUntilAskedForAndAfterPowerOn) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 47 01 00 00 00 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 AE 02 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 AE 03 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 47 02 00 00 00 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 AE 02 FF"), DONE);
    desk.powerCycle();
    EXPECT_EQ(desk.host.command("81 01 04 47 01 00 00 00 FF"), DONE);
    EXPECT_EQ(desk.camera.state().sentCount("report"), 0u);
    desk.expectEach({"81 01 04 AE 01 FF", "81 01 04 AF 04 FF", "81 01 04 AF FF"}, SYNTAX);
}

TEST(KovaReports, ZoomReportsSayNothingOfFocus) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command(MANUAL_FOCUS), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 AE 02 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 48 0D 00 00 00 FF"), DONE);
    EXPECT_EQ(desk.camera.state().sentCount("report"), 0u);
}

TEST(KovaReports, StandbyEndsAMotionWithItsReport) {
    Options options = quick("kova2");
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 AE 02 FF"), DONE);
    desk.host.send("81 01 04 07 21 FF");
    EXPECT_TRUE(desk.until([](const State &s) { return s.sentCount("report") == 1; }));
    desk.host.send("81 01 04 00 03 FF");
    EXPECT_TRUE(desk.until([](const State &s) { return s.sentCount("report") == 2; }));
}

TEST(KovaReports, ReconfigurationIsRequestedOnDemand) {
    Desk desk("kova2");
    desk.camera.requestConfiguration();
    EXPECT_EQ(desk.host.packet(), "90 07 00 EF FF");
    desk.camera.powerCut();
    desk.camera.requestConfiguration();
    EXPECT_EQ(desk.camera.state().sentCount("report"), 1u);
}

TEST(KovaReports, ABlockHasNone) {
    Desk desk("sony1");
    EXPECT_THROW(desk.camera.requestConfiguration(), std::invalid_argument);
    EXPECT_EQ(desk.host.command("81 01 04 47 01 00 00 00 FF"), DONE);
    EXPECT_EQ(desk.camera.state().sentCount("report"), 0u);
}

/* ---- State ---- */

TEST(KovaState, IsInTheJson) {
    Options options = quick("kova2");
    options.kova.sceneMoves = false;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 A4 00 00 00 00 00 00 01 00 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), DONE);
    const auto json = nlohmann::json::parse(desk.camera.stateJson());
    EXPECT_EQ(json["camera"], "kova2");
    EXPECT_EQ(json["type"], "0x02012A01");
    EXPECT_EQ(json["kova"]["ability"], "0x0000001C");
    EXPECT_EQ(json["kova"]["clock"], 16);
    EXPECT_EQ(json["kova"]["luma"], 128);
    EXPECT_EQ(json["kova"]["focusValue"], 131072);
    EXPECT_EQ(json["pendingSettings"]["mirror"], 2);
    EXPECT_EQ(json["settings"]["sceneMode"], 15);
}
