#include "desk.h"

#include <nlohmann/json.hpp>

using namespace std::chrono_literals;
using sim::Options;
using sim::State;

namespace {

constexpr const char *MANUAL = "81 01 04 39 03 FF";
constexpr const char *SHUTTER_PRIORITY = "81 01 04 39 0A FF";
constexpr const char *IRIS_PRIORITY = "81 01 04 39 0B FF";

constexpr const char *SHUTTER = "81 01 04 4A 00 00 01 00 FF";
constexpr const char *IRIS = "81 01 04 4B 00 00 01 00 FF";
constexpr const char *GAIN = "81 01 04 4C 00 00 00 05 FF";
constexpr const char *COMPENSATION_ON = "81 01 04 3E 02 FF";
constexpr const char *COMPENSATION = "81 01 04 4E 00 00 00 0E FF";

} // namespace

/* ---- Exposure ---- */

TEST(Exposure, ModesOfTheBlocksAreStoredAndOthersAreNone) {
    for (const char *name : {"sony1", "sony3", "sony4", "sony5"}) {
        Desk desk(name);
        desk.expectStored({
            {"81 01 04 39 03 FF", "exposureMode", 0x03},
            {"81 01 04 39 0A FF", "exposureMode", 0x0A},
            {"81 01 04 39 0B FF", "exposureMode", 0x0B},
            {"81 01 04 39 00 FF", "exposureMode", 0x00},
        });
        desk.expectEach({"81 01 04 39 01 FF", "81 01 04 39 02 FF", "81 01 04 39 04 FF", "81 01 04 39 09 FF",
                         "81 01 04 39 0C FF", "81 01 04 39 0D FF", "81 01 04 39 0E FF", "81 01 04 39 0F FF",
                         "81 01 04 39 10 FF", "81 01 04 39 FF", "81 01 04 39 00 00 FF"},
                        SYNTAX);
    }
}

TEST(Exposure, ManualTakesShutterIrisAndGainUpToTheirEnds) {
    Desk desk;
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    desk.expectStored({
        {"81 01 04 4A 00 00 00 00 FF", "shutter", 0x00},
        {"81 01 04 4A 00 00 01 05 FF", "shutter", 0x15},
        {"81 01 04 4B 00 00 00 00 FF", "iris", 0x00},
        {"81 01 04 4B 00 00 01 01 FF", "iris", 0x11},
        {"81 01 04 4C 00 00 00 00 FF", "gain", 0x00},
        {"81 01 04 4C 00 00 00 0F FF", "gain", 0x0F},
    });
}

TEST(Exposure, PositionsBeyondTheEndAreNone) {
    Desk desk;
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    desk.expectEach({"81 01 04 4A 00 00 01 06 FF", "81 01 04 4A 00 00 0F 0F FF", "81 01 04 4A 00 01 00 00 FF",
                     "81 01 04 4B 00 00 01 02 FF", "81 01 04 4B 01 00 00 00 FF", "81 01 04 4C 00 00 01 00 FF",
                     "81 01 04 4C 00 00 10 05 FF"},
                    SYNTAX);
    EXPECT_EQ(desk.setting("shutter"), 0x06);
    EXPECT_EQ(desk.setting("gain"), 0x01);
}

TEST(Exposure, WrongLengthsAreNone) {
    Desk desk;
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    desk.expectEach({"81 01 04 4A 00 00 05 FF", "81 01 04 4A 00 00 00 00 05 FF", "81 01 04 4B 05 FF",
                     "81 01 04 4C FF", "81 01 04 3E FF", "81 01 04 4E 00 00 07 FF", "81 01 04 59 02 00 FF",
                     "81 01 04 29 08 08 FF", "81 01 04 5A FF"},
                    SYNTAX);
}

TEST(Exposure, AutomaticLeavesTheHostTheCompensation) {
    Desk desk;
    desk.expectEach({SHUTTER, IRIS, GAIN}, REFUSED);
    EXPECT_EQ(desk.setting("iris"), 0x09);
    EXPECT_EQ(desk.host.command(COMPENSATION_ON), DONE);
    EXPECT_EQ(desk.host.command(COMPENSATION), DONE);
}

TEST(Exposure, ShutterPriorityLeavesTheHostShutterAndCompensation) {
    Desk desk;
    EXPECT_EQ(desk.host.command(SHUTTER_PRIORITY), DONE);
    EXPECT_EQ(desk.host.command(SHUTTER), DONE);
    desk.expectEach({IRIS, GAIN}, REFUSED);
    EXPECT_EQ(desk.host.command(COMPENSATION), DONE);
}

TEST(Exposure, IrisPriorityLeavesTheHostIrisAndCompensation) {
    Desk desk;
    EXPECT_EQ(desk.host.command(IRIS_PRIORITY), DONE);
    EXPECT_EQ(desk.host.command(IRIS), DONE);
    desk.expectEach({SHUTTER, GAIN}, REFUSED);
    EXPECT_EQ(desk.host.command(COMPENSATION), DONE);
}

TEST(Exposure, ManualHasNoCompensation) {
    Desk desk;
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    desk.expectEach({COMPENSATION_ON, COMPENSATION}, REFUSED);
    EXPECT_EQ(desk.setting("expCompLevel"), 7);
}

TEST(Exposure, AWrongValueIsASyntaxErrorAlsoWhereTheRightOneIsNotExecutable) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 01 04 4A 00 00 01 06 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 01 04 4B 00 00 01 02 FF"), SYNTAX);
}

TEST(Exposure, AutomaticSlowShutterAndMeteringAreAcceptedInEveryMode) {
    Desk desk;
    for (const char *mode : {"81 01 04 39 00 FF", MANUAL, SHUTTER_PRIORITY, IRIS_PRIORITY}) {
        EXPECT_EQ(desk.host.command(mode), DONE);
        desk.expectStored({
            {"81 01 04 5A 02 FF", "slowShutter", 2},
            {"81 01 04 5A 03 FF", "slowShutter", 3},
            {"81 01 04 59 02 FF", "metering", 2},
            {"81 01 04 59 03 FF", "metering", 3},
        });
    }
    desk.expectEach({"81 01 04 5A 00 FF", "81 01 04 5A 04 FF", "81 01 04 59 00 FF", "81 01 04 59 04 FF"},
                    SYNTAX);
}

TEST(Exposure, CompensationHasFifteenSteps) {
    Desk desk;
    desk.expectStored({
        {"81 01 04 4E 00 00 00 00 FF", "expCompLevel", 0},
        {"81 01 04 4E 00 00 00 0E FF", "expCompLevel", 14},
        {"81 01 04 3E 02 FF", "expComp", 2},
        {"81 01 04 3E 03 FF", "expComp", 3},
    });
    desk.expectEach({"81 01 04 4E 00 00 00 0F FF", "81 01 04 4E 00 00 0F 0E FF", "81 01 04 3E 00 FF",
                     "81 01 04 3E 01 FF", "81 01 04 3E 04 FF"},
                    SYNTAX);
}

TEST(Exposure, TheSpotHasSixteenPlacesEachWay) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 29 00 0F 00 01 FF"), DONE);
    EXPECT_EQ(desk.setting("spotX"), 15);
    EXPECT_EQ(desk.setting("spotY"), 1);
    EXPECT_EQ(desk.host.ask("81 09 04 29 FF"), "90 50 00 0F 00 01 FF");
    desk.expectEach({"81 01 04 29 01 00 00 00 FF", "81 01 04 29 00 00 00 10 FF"}, SYNTAX);
}

TEST(Exposure, IsToldAsItWasSet) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 09 04 39 FF"), "90 50 00 FF");
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    for (const char *packet : {SHUTTER, IRIS, GAIN, "81 01 04 59 02 FF", "81 01 04 5A 02 FF"})
        EXPECT_EQ(desk.host.command(packet), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 39 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 4A FF"), "90 50 00 00 01 00 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 4B FF"), "90 50 00 00 01 00 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 4C FF"), "90 50 00 00 00 05 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 3E FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 4E FF"), "90 50 00 00 00 07 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 59 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 5A FF"), "90 50 02 FF");
}

TEST(Exposure, ASlowShutterStretchesTheVerticalPeriod) {
    Options options = quick();
    options.vertical = true;
    options.frameRate = 60;
    options.timeScale = 10;
    Desk desk(options);
    EXPECT_EQ(desk.host.command(SHUTTER_PRIORITY), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 4A 00 00 00 01 FF"), DONE); // 1/2 s
    desk.host.ask("81 09 04 39 FF");
    const auto begin = sim::Clock::now();
    EXPECT_EQ(desk.host.ask("81 09 04 39 FF"), "90 50 0A FF");
    EXPECT_EQ(desk.host.ask("81 09 04 39 FF"), "90 50 0A FF");
    EXPECT_GE(sim::Clock::now() - begin, 50ms); // a whole period, and what was left of one
}

TEST(Exposure, ASlowShutterIsWithoutEffectWhenTheAutomaticChooses) {
    Options options = quick();
    options.vertical = true;
    options.timeScale = 4;
    Desk desk(options);
    EXPECT_EQ(desk.host.command(SHUTTER_PRIORITY), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 4A 00 00 00 00 FF"), DONE); // 1 s
    EXPECT_EQ(desk.host.command("81 01 04 39 00 FF"), DONE);
    const auto begin = sim::Clock::now();
    for (int i = 0; i < 10; ++i)
        desk.host.ask("81 09 04 39 FF");
    EXPECT_LT(sim::Clock::now() - begin, 2s); // ten periods of 1 s would take 2.5 s at this scale
}

/* ---- Picture ---- */

TEST(Picture, WhiteBalanceModesAreStored) {
    Desk desk;
    for (int mode = 8; mode >= 0; --mode) {
        const std::string packet = "81 01 04 35 0" + std::to_string(mode) + " FF";
        EXPECT_EQ(desk.host.command(packet), DONE);
        EXPECT_EQ(desk.setting("wbMode"), mode);
    }
    desk.expectEach({"81 01 04 35 09 FF", "81 01 04 35 0F FF", "81 01 04 35 10 FF", "81 01 04 35 FF"},
                    SYNTAX);
}

TEST(Picture, ValuesAreStoredUpToTheirEnds) {
    Desk desk;
    desk.expectStored({
        {"81 01 04 43 00 00 00 00 FF", "redGain", 0},
        {"81 01 04 43 00 00 0F 0F FF", "redGain", 255},
        {"81 01 04 44 00 00 00 00 FF", "blueGain", 0},
        {"81 01 04 44 00 00 0F 0F FF", "blueGain", 255},
        {"81 01 04 49 00 00 00 00 FF", "colourGain", 0},
        {"81 01 04 49 00 00 00 0E FF", "colourGain", 14},
        {"81 01 04 42 00 00 00 00 FF", "aperture", 0},
        {"81 01 04 42 00 00 00 0F FF", "aperture", 15},
        {"81 01 04 53 00 FF", "noiseReduction", 0},
        {"81 01 04 53 05 FF", "noiseReduction", 5},
        {"81 01 04 01 02 FF", "icr", 2},
        {"81 01 04 01 03 FF", "icr", 3},
        {"81 01 04 51 02 FF", "autoIcr", 2},
        {"81 01 04 51 03 FF", "autoIcr", 3},
    });
}

TEST(Picture, ValuesBeyondTheirEndsAreNone) {
    Desk desk;
    desk.expectEach({"81 01 04 43 00 01 00 00 FF", "81 01 04 44 01 00 00 00 FF", "81 01 04 49 00 00 00 0F FF",
                     "81 01 04 49 00 00 08 00 FF", "81 01 04 42 00 00 01 00 FF", "81 01 04 53 06 FF",
                     "81 01 04 53 15 FF", "81 01 04 01 00 FF", "81 01 04 01 04 FF", "81 01 04 51 01 FF",
                     "81 01 04 51 04 FF", "81 01 04 42 00 0F FF", "81 01 04 43 0F 0F FF"},
                    SYNTAX);
}

TEST(Picture, IsToldAsItWasSet) {
    Desk desk;
    for (const char *packet :
         {"81 01 04 35 05 FF", "81 01 04 43 00 00 01 02 FF", "81 01 04 44 00 00 03 04 FF",
          "81 01 04 49 00 00 00 09 FF", "81 01 04 42 00 00 00 0A FF", "81 01 04 53 04 FF",
          "81 01 04 3D 02 FF", "81 01 04 01 02 FF", "81 01 04 51 02 FF"})
        EXPECT_EQ(desk.host.command(packet), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 35 FF"), "90 50 05 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 43 FF"), "90 50 00 00 01 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 44 FF"), "90 50 00 00 03 04 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 49 FF"), "90 50 00 00 00 09 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 42 FF"), "90 50 00 00 00 0A FF");
    EXPECT_EQ(desk.host.ask("81 09 04 53 FF"), "90 50 04 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 3D FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 01 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 51 FF"), "90 50 02 FF");
}

TEST(Picture, WideDynamicRangeHasTheCodesOfItsBlock) {
    for (const char *name : {"sony1", "sony3", "sony4"}) {
        Desk desk(name);
        desk.expectStored({{"81 01 04 3D 02 FF", "wdr", 2},
                           {"81 01 04 3D 00 FF", "wdr", 0},
                           {"81 01 04 3D 03 FF", "wdr", 3}});
        desk.expectEach({"81 01 04 3D 01 FF", "81 01 04 3D 06 FF", "81 01 04 3D 04 FF"}, SYNTAX);
    }
    Desk sony5("sony5");
    sony5.expectStored(
        {{"81 01 04 3D 06 FF", "wdr", 6}, {"81 01 04 3D 00 FF", "wdr", 0}, {"81 01 04 3D 03 FF", "wdr", 3}});
    sony5.expectEach({"81 01 04 3D 01 FF", "81 01 04 3D 02 FF", "81 01 04 3D 07 FF"}, SYNTAX);
}

TEST(Picture, DefogIsOnAndOffOnSony3) {
    Desk desk("sony3");
    desk.expectStored({{"81 01 04 37 02 00 FF", "defog", 2}, {"81 01 04 37 03 00 FF", "defog", 3}});
    desk.expectEach(
        {"81 01 04 37 02 01 FF", "81 01 04 37 03 01 FF", "81 01 04 37 00 00 FF", "81 01 04 37 02 FF"},
        SYNTAX);
}

TEST(Picture, DefogHasThreeLevelsOnSony5) {
    Desk desk("sony5");
    desk.expectStored({{"81 01 04 37 02 01 FF", "defogLevel", 1},
                       {"81 01 04 37 02 03 FF", "defogLevel", 3},
                       {"81 01 04 37 02 03 FF", "defog", 2}});
    EXPECT_EQ(desk.host.ask("81 09 04 37 FF"), "90 50 02 03 FF");
    desk.expectStored({{"81 01 04 37 03 00 FF", "defogLevel", 0}, {"81 01 04 37 03 00 FF", "defog", 3}});
    desk.expectEach({"81 01 04 37 02 00 FF", "81 01 04 37 02 04 FF", "81 01 04 37 03 02 FF"}, SYNTAX);
}

TEST(Picture, OtherBlocksHaveNoDefog) {
    for (const char *name : {"sony1", "sony4", "kova", "kova2"}) {
        Desk desk(name);
        desk.expectEach({"81 01 04 37 02 00 FF", "81 01 04 37 03 00 FF", "81 09 04 37 FF"}, SYNTAX);
        EXPECT_THROW(desk.setting("defog"), std::invalid_argument);
    }
}

TEST(Picture, ABlockKnowsNoneOfTheKovaCommands) {
    Desk desk;
    desk.expectEach({"81 01 04 CB 00 00 03 02 FF", "81 01 04 A1 00 00 08 00 FF", "81 01 04 A2 00 00 08 00 FF",
                     "81 01 04 54 00 00 08 00 FF", "81 01 04 55 00 00 08 00 FF", "81 01 04 C8 01 FF",
                     "81 01 04 2D 00 00 00 05 FF", "81 01 04 18 01 01 FF", "81 01 04 AE 02 FF",
                     "81 01 04 CF 05 01 01 0B FF", "81 09 04 AB FF", "81 09 04 CE FF", "81 09 04 B2 FF"},
                    SYNTAX);
}

TEST(Picture, PowerCycleRestoresTheDefaults) {
    Desk desk("sony5");
    for (const char *packet : {"81 01 04 39 03 FF", "81 01 04 4A 00 00 00 03 FF", "81 01 04 3D 06 FF",
                               "81 01 04 35 05 FF", "81 01 04 37 02 02 FF", "81 01 04 01 02 FF"})
        EXPECT_EQ(desk.host.command(packet), DONE);
    desk.powerCycle();
    const State state = desk.camera.state();
    EXPECT_EQ(state.setting("exposureMode"), 0);
    EXPECT_EQ(state.setting("shutter"), 6);
    EXPECT_EQ(state.setting("wdr"), 3);
    EXPECT_EQ(state.setting("wbMode"), 0);
    EXPECT_EQ(state.setting("defogLevel"), 0);
    EXPECT_EQ(state.setting("icr"), 3);
}

TEST(Picture, IsInTheJson) {
    Desk desk;
    desk.host.command("81 01 04 49 00 00 00 0B FF");
    const auto json = nlohmann::json::parse(desk.camera.stateJson());
    EXPECT_EQ(json["settings"]["colourGain"], 11);
    EXPECT_EQ(json["settings"]["exposureMode"], 0);
    EXPECT_FALSE(json.contains("kova"));
}

TEST(Picture, NothingOfItIsExecutedInStandby) {
    Desk desk;
    desk.host.command("81 01 04 00 03 FF");
    desk.expectEach({"81 01 04 39 03 FF", "81 01 04 35 05 FF", "81 01 04 01 02 FF"}, REFUSED);
    EXPECT_EQ(desk.host.ask("81 09 04 4C FF"), "90 60 41 FF");
}
