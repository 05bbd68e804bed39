#include "desk.h"

using namespace std::chrono_literals;
using sim::Options;

namespace {

constexpr const char *MANUAL = "81 01 04 39 03 FF";
constexpr const char *SHUTTER_VALUE = "81 01 04 CB 00 00 03 02 FF";
constexpr const char *SHUTTER = "81 01 04 4A 00 00 01 00 FF";
constexpr const char *IRIS = "81 01 04 4B 00 00 01 00 FF";
constexpr const char *GAIN = "81 01 04 4C 00 00 03 02 FF";
constexpr const char *COMPENSATION = "81 01 04 4E 00 00 00 0E FF";

} // namespace

TEST(KovaExposure, HasEightModes) {
    Desk desk("kova");
    desk.expectStored({
        {"81 01 04 39 0F FF", "exposureMode", 0x0F},
        {"81 01 04 39 0A FF", "exposureMode", 0x0A},
        {"81 01 04 39 0B FF", "exposureMode", 0x0B},
        {"81 01 04 39 0E FF", "exposureMode", 0x0E},
        {"81 01 04 39 0C FF", "exposureMode", 0x0C},
        {"81 01 04 39 0D FF", "exposureMode", 0x0D},
        {"81 01 04 39 03 FF", "exposureMode", 0x03},
        {"81 01 04 39 00 FF", "exposureMode", 0x00},
    });
    desk.expectEach({"81 01 04 39 01 FF", "81 01 04 39 02 FF", "81 01 04 39 04 FF", "81 01 04 39 09 FF"},
                    SYNTAX);
}

TEST(KovaExposure, AutomaticModesRefuseShutterIrisAndGain) {
    Desk desk("kova2");
    for (const char *mode :
         {"81 01 04 39 00 FF", "81 01 04 39 0F FF", "81 01 04 39 0C FF", "81 01 04 39 0D FF"}) {
        EXPECT_EQ(desk.host.command(mode), DONE);
        desk.expectEach({SHUTTER_VALUE, SHUTTER, IRIS, GAIN}, REFUSED);
        EXPECT_EQ(desk.host.command(COMPENSATION), DONE);
    }
}

TEST(KovaExposure, FixedGainTakesTheGainAlone) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 39 0E FF"), DONE);
    EXPECT_EQ(desk.host.command(GAIN), DONE);
    desk.expectEach({SHUTTER_VALUE, SHUTTER, IRIS}, REFUSED);
    EXPECT_EQ(desk.host.command(COMPENSATION), DONE);
}

TEST(KovaExposure, PrioritiesTakeTheirOwnValue) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command("81 01 04 39 0A FF"), DONE);
    EXPECT_EQ(desk.host.command(SHUTTER_VALUE), DONE);
    desk.expectEach({IRIS, GAIN}, REFUSED);
    EXPECT_EQ(desk.host.command("81 01 04 39 0B FF"), DONE);
    EXPECT_EQ(desk.host.command(IRIS), DONE);
    desk.expectEach({SHUTTER_VALUE, GAIN}, REFUSED);
}

TEST(KovaExposure, ManualTakesEverythingButCompensation) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    desk.expectStored({
        {"81 01 04 CB 01 02 03 04 FF", "shutterValue", 0x1234},
        {"81 01 04 CB 00 00 00 01 FF", "shutterValue", 1},
        {"81 01 04 CB 0F 0F 0F 0F FF", "shutterValue", 65535},
        {"81 01 04 4C 00 00 00 00 FF", "gain", 0},
        {"81 01 04 4C 00 00 06 04 FF", "gain", 100},
        {"81 01 04 4B 00 00 01 01 FF", "iris", 0x11},
    });
    EXPECT_EQ(desk.host.ask(COMPENSATION), REFUSED);
    EXPECT_EQ(desk.host.ask("81 09 04 4C FF"), "90 50 00 00 06 04 FF");
}

TEST(KovaExposure, ValuesOutOfRangeAreNone) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    desk.expectEach({"81 01 04 CB 00 00 00 00 FF", "81 01 04 CB 00 00 01 FF", "81 01 04 CB 10 00 00 01 FF",
                     "81 01 04 4C 00 00 06 05 FF", "81 01 04 4C 00 00 0F 0F FF", "81 01 04 4A 00 00 01 06 FF",
                     "81 01 04 4B 00 00 01 02 FF"},
                    SYNTAX);
}

TEST(KovaExposure, AShutterPositionTakesThePlaceOfAValue) {
    Desk desk("kova2");
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    EXPECT_EQ(desk.host.command(SHUTTER_VALUE), DONE);
    EXPECT_EQ(desk.setting("shutterValue"), 50);
    EXPECT_EQ(desk.host.command(SHUTTER), DONE);
    EXPECT_EQ(desk.setting("shutterValue"), 0);
    EXPECT_EQ(desk.setting("shutter"), 0x10);
}

TEST(KovaExposure, AShutterValueOfOneSecondStretchesTheVerticalPeriod) {
    Options options = quick("kova2");
    options.vertical = true;
    options.timeScale = 10;
    Desk desk(options);
    EXPECT_EQ(desk.host.command(MANUAL), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 CB 00 00 00 01 FF"), DONE);
    desk.host.ask("81 09 04 39 FF");
    const auto begin = sim::Clock::now();
    desk.host.ask("81 09 04 39 FF");
    desk.host.ask("81 09 04 39 FF");
    EXPECT_GE(sim::Clock::now() - begin, 100ms);
}

TEST(KovaExposure, ScopesAreRisingPairs) {
    Desk desk("kova2");
    desk.expectStored({
        {"81 01 04 A3 00 00 01 09 02 07 01 00 FF", "shutterLow", 25},
        {"81 01 04 A3 00 00 01 09 02 07 01 00 FF", "shutterHigh", 10000},
        {"81 01 04 A3 00 00 00 01 00 00 00 01 FF", "shutterHigh", 1},
        {"81 01 04 2C 00 0A 05 0A FF", "gainLow", 10},
        {"81 01 04 2C 00 0A 05 0A FF", "gainHigh", 90},
        {"81 01 04 2C 00 00 06 04 FF", "gainHigh", 100},
    });
    desk.expectEach({"81 01 04 A3 02 07 01 00 00 00 01 09 FF", "81 01 04 A3 00 00 00 00 00 00 01 09 FF",
                     "81 01 04 A3 00 00 01 09 FF", "81 01 04 2C 05 0A 00 0A FF", "81 01 04 2C 00 00 06 05 FF",
                     "81 01 04 2C 00 0A FF"},
                    SYNTAX);
}

TEST(KovaExposure, SlowShutterHasALimit) {
    Desk desk("kova2");
    desk.expectStored({
        {"81 01 04 CA 00 00 01 09 FF", "slowShutterLimit", 25},
        {"81 01 04 CA 00 00 0F 0F FF", "slowShutterLimit", 255},
        {"81 01 04 5A 02 FF", "slowShutter", 2},
    });
    desk.expectEach({"81 01 04 CA 00 00 00 00 FF", "81 01 04 CA 00 01 00 00 FF", "81 01 04 CA 01 09 FF"},
                    SYNTAX);
}

TEST(KovaExposure, MeteringHasAThirdCode) {
    Desk desk("kova2");
    desk.expectStored({{"81 01 04 59 02 FF", "metering", 2},
                       {"81 01 04 59 04 FF", "metering", 4},
                       {"81 01 04 59 03 FF", "metering", 3},
                       {"81 01 04 29 00 08 00 0F FF", "spotY", 15}});
    desk.expectEach({"81 01 04 59 00 FF", "81 01 04 59 01 FF", "81 01 04 59 05 FF"}, SYNTAX);
}

TEST(KovaPicture, ValuesAreStoredUpToTheirEnds) {
    Desk desk("kova2");
    desk.expectStored({
        {"81 01 04 A1 00 00 00 00 FF", "brightness", 0},
        {"81 01 04 A1 00 00 0F 0F FF", "brightness", 255},
        {"81 01 04 A2 00 00 00 00 FF", "contrast", 0},
        {"81 01 04 A2 00 00 0F 0F FF", "contrast", 255},
        {"81 01 04 49 00 00 00 00 FF", "colourGain", 0},
        {"81 01 04 49 00 00 0F 0F FF", "colourGain", 255},
        {"81 01 04 54 00 00 00 00 FF", "noise2d", 0},
        {"81 01 04 54 00 00 0F 0F FF", "noise2d", 255},
        {"81 01 04 55 00 00 00 00 FF", "noise3d", 0},
        {"81 01 04 55 00 00 0F 0F FF", "noise3d", 255},
        {"81 01 04 C8 00 FF", "defogMode", 0},
        {"81 01 04 C8 FE FF", "defogMode", 254},
        {"81 01 04 C9 00 FF", "defogSense", 0},
        {"81 01 04 C9 FE FF", "defogSense", 254},
        {"81 01 04 2D 00 00 00 00 FF", "wdrLevel", 0},
        {"81 01 04 2D 00 00 00 09 FF", "wdrLevel", 9},
        {"81 01 04 3D 03 FF", "wdr", 3},
        {"81 01 04 3D 01 FF", "wdr", 1},
        {"81 01 04 3D 00 FF", "wdr", 0},
        {"81 01 04 42 00 00 00 0F FF", "aperture", 15},
        {"81 01 04 43 00 00 07 0F FF", "redGain", 127},
        {"81 01 04 44 00 00 0F 0E FF", "blueGain", 254},
        {"81 01 04 35 08 FF", "wbMode", 8},
        {"81 01 04 01 02 FF", "icr", 2},
        {"81 01 04 51 02 FF", "autoIcr", 2},
    });
}

TEST(KovaPicture, ValuesBeyondTheirEndsAreNone) {
    Desk desk("kova2");
    desk.expectEach({"81 01 04 A1 00 01 00 00 FF", "81 01 04 A2 0F 0F FF", "81 01 04 49 00 10 00 00 FF",
                     "81 01 04 54 00 00 08 FF", "81 01 04 55 01 00 00 00 FF", "81 01 04 C8 FF",
                     "81 01 04 C8 01 02 FF", "81 01 04 C9 FF", "81 01 04 2D 00 00 00 0A FF",
                     "81 01 04 2D 00 00 00 10 FF", "81 01 04 2D 05 FF", "81 01 04 3D 02 FF",
                     "81 01 04 3D 06 FF", "81 01 04 35 09 FF"},
                    SYNTAX);
}

TEST(KovaPicture, PowerCycleRestoresTheDefaults) {
    Desk desk("kova2");
    for (const char *packet : {"81 01 04 39 0E FF", "81 01 04 4C 00 00 03 02 FF",
                               "81 01 04 A1 00 00 01 00 FF", "81 01 04 2D 00 00 00 05 FF"})
        EXPECT_EQ(desk.host.command(packet), DONE);
    desk.powerCycle();
    EXPECT_EQ(desk.setting("exposureMode"), 0);
    EXPECT_EQ(desk.setting("gain"), 0);
    EXPECT_EQ(desk.setting("brightness"), 128);
    EXPECT_EQ(desk.setting("wdrLevel"), 0);
}
