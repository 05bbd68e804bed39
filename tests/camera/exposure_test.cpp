// Whole exposure profiles, end to end: what the camera believes afterwards, and that a second application of
// the same profile sends only what is always sent.
#include <ostream>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

constexpr char kExposureInquiry[] = "81 09 04 4C FF";

ExposureParam Profile(uint32_t mode) {
    ExposureParam profile = {};
    profile.ulExposureMode = mode;
    profile.lExpCompValue = 42;
    profile.ulIris = 400;
    profile.ulShutter = 250;
    profile.ulGain = 10;
    profile.ulSlowShutter = 10000;
    profile.ulFastShutter = 25;
    profile.ulMaxGain = 90;
    profile.ulMinGain = 10;
    profile.bIsAutoSlowShutter = 1;
    profile.ulMaxSlowShutter = 12;
    profile.ulWdr = 1;
    profile.ulWdrLevel = 5;
    profile.ulBlackWhiteMode = 2;
    return profile;
}

uint32_t Apply(const ExposureParam &profile) {
    return VISCA_SetExposure(0, 0, &profile);
}

} // namespace

class ExposureTest : public CameraTest {
  protected:
    // The profile once; the camera has obeyed all of it.
    void ApplyWhole(const ExposureParam &profile) {
        ASSERT_EQ(Apply(profile), 0u);
        Drain();
        ExpectNothingRefused();
    }

    // What the same profile sends when it is applied once more.
    std::vector<std::string> SentAgain(const ExposureParam &profile) {
        Forget();
        EXPECT_EQ(Apply(profile), 0u);
        Drain();
        ExpectNothingRefused();
        return Commands();
    }
};

/* Sony blocks: the names, and the codes in which the blocks differ */

struct Block {
    const char *name;
    int iris400;
    int wdrOn;
};

void PrintTo(const Block &block, std::ostream *out) {
    *out << block.name;
}

class SonyExposureTest : public ExposureTest, public ::testing::WithParamInterface<Block> {
  protected:
    void SetUp() override {
        CameraTest::SetUp();
        StartWithoutFiles(GetParam().name);
    }
};

TEST_P(SonyExposureTest, ManualSetsShutterIrisAndGain) {
    ApplyWhole(Profile(7));
    ExpectSettings({{"exposureMode", 0x03},
                    {"shutter", 0x0B},
                    {"iris", GetParam().iris400},
                    {"gain", 6},
                    {"slowShutter", 2},
                    {"wdr", GetParam().wdrOn},
                    {"icr", 2},
                    {"autoIcr", 3},
                    {"expComp", 3},  // as at power-up
                    {"metering", 3}, // as at power-up
                    {"expCompLevel", 7}});
    EXPECT_THAT(SentAgain(Profile(7)), IsEmpty());
}

TEST_P(SonyExposureTest, AutomaticSetsCompensationAndMetering) {
    ExposureParam profile = Profile(0);
    profile.ulMeteringMode = 1;
    profile.TopX = 20; // 8 * (20 + 30) / 100 = 4
    profile.BotX = 30;
    profile.TopY = 40; // 8 * (40 + 60) / 100 = 8
    profile.BotY = 60;
    ApplyWhole(profile);
    ExpectSettings({{"exposureMode", 0x00},
                    {"expComp", 2},
                    {"expCompLevel", 10}, // (42 + 100) / 14
                    {"metering", 2},
                    {"spotX", 4},
                    {"spotY", 8},
                    {"slowShutter", 2},
                    {"shutter", 0x06}, // as at power-up
                    {"gain", 1}});
    EXPECT_THAT(SentAgain(profile), ElementsAre("81 01 04 29 00 04 00 08 FF")) << "the spot is always sent";
}

TEST_P(SonyExposureTest, ShutterPrioritySetsTheShutterAlone) {
    ExposureParam profile = Profile(2);
    profile.ulShutter = 1000;
    profile.lExpCompValue = -50; // (-50 + 100) / 14 = 3
    profile.bIsAutoSlowShutter = 0;
    ApplyWhole(profile);
    ExpectSettings({{"exposureMode", 0x0A},
                    {"shutter", 0x0F},
                    {"expCompLevel", 3},
                    {"slowShutter", 3},
                    {"iris", 0x09}, // as at power-up
                    {"gain", 1}});
    EXPECT_THAT(SentAgain(profile), IsEmpty());
}

TEST_P(SonyExposureTest, IrisPrioritySetsTheIrisAndForbidsTheSlowShutter) {
    ApplyWhole(Profile(3));
    ExpectSettings({{"exposureMode", 0x0B},
                    {"iris", GetParam().iris400},
                    {"slowShutter", 3},
                    {"expCompLevel", 10},
                    {"shutter", 0x06}});
    EXPECT_THAT(SentAgain(Profile(3)), IsEmpty());
}

TEST_P(SonyExposureTest, AModeThatTheBlockLacksLeavesTheModeAndAppliesTheRest) {
    ExposureParam profile = Profile(1);
    ApplyWhole(profile);
    ExpectSettings({{"exposureMode", 0x00}, {"expCompLevel", 10}, {"wdr", GetParam().wdrOn}, {"icr", 2}});
    EXPECT_EQ(HostCount("ERROR unSupported ulExposureMode[1], fail exit"), 1u);
    EXPECT_THAT(SentAgain(profile), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(OfEachBlock, SonyExposureTest,
                         ::testing::Values(Block{"sony1", 0x0C, 2}, Block{"sony3", 0x0C, 2},
                                           Block{"sony4", 0x0B, 2}, Block{"sony5", 0x0C, 6}),
                         [](const auto &block) { return std::string(block.param.name); });

/* Kova modules */

struct Module {
    const char *name;
    std::vector<std::string> alwaysSent; // the second generation is told its dome type with every profile
};

void PrintTo(const Module &module, std::ostream *out) {
    *out << module.name;
}

class KovaExposureTest : public ExposureTest, public ::testing::WithParamInterface<Module> {
  protected:
    void SetUp() override {
        CameraTest::SetUp();
        StartWithoutFiles(GetParam().name);
        host::Board board = host::GetBoard();
        board.strDeviceModel = "ITC-4410-IR";
        host::SetBoard(board);
    }

    void ApplyTwice(const ExposureParam &profile, const std::map<std::string, int> &expected) {
        ApplyWhole(profile);
        ExpectSettings(expected);
        EXPECT_EQ(SentAgain(profile), GetParam().alwaysSent);
        ExpectSettings(expected);
    }
};

TEST_P(KovaExposureTest, ManualSetsShutterIrisAndGain) {
    ExposureParam profile = Profile(7);
    profile.ulGain = 60;
    ApplyTwice(profile, {{"exposureMode", 0x03},
                         {"shutterValue", 250},
                         {"iris", 0x0C},
                         {"gain", 60},
                         {"slowShutter", 2},
                         {"slowShutterLimit", 12},
                         {"wdr", 1},
                         {"wdrLevel", 5},
                         {"icr", 3}, // day and night are not a module's profile's business
                         {"expComp", 3}});
}

TEST_P(KovaExposureTest, AutomaticWithinRangesSetsTheRangesOfGainAndShutter) {
    ApplyTwice(Profile(1), {{"exposureMode", 0x0F},
                            {"gainLow", 10},
                            {"gainHigh", 90},
                            {"shutterLow", 25},
                            {"shutterHigh", 10000},
                            {"expCompLevel", 10},
                            {"metering", 3},
                            {"shutterValue", 0}});
}

TEST_P(KovaExposureTest, AutomaticMetersByTheModulesOwnMode) {
    ExposureParam profile = Profile(0);
    profile.ulMeteringMode = 2;
    ApplyTwice(profile, {{"exposureMode", 0x00}, {"metering", 4}, {"expComp", 2}, {"expCompLevel", 10}});
}

TEST_P(KovaExposureTest, FixedGainSetsTheGainAndForbidsTheSlowShutter) {
    ExposureParam profile = Profile(4);
    profile.ulGain = 75;
    ApplyTwice(profile, {{"exposureMode", 0x0E},
                         {"gain", 75},
                         {"slowShutter", 3},
                         {"slowShutterLimit", 1}, // as at power-up
                         {"shutterValue", 0}});
}

TEST_P(KovaExposureTest, ShutterPrioritySetsAnyShutter) {
    ExposureParam profile = Profile(2);
    profile.ulShutter = 1234;
    ApplyTwice(profile, {{"exposureMode", 0x0A}, {"shutterValue", 1234}, {"gain", 0}});
}

TEST_P(KovaExposureTest, TheModulesOwnModesSetNeitherShutterNorIrisNorGain) {
    const std::map<std::string, int> untouched = {{"shutterValue", 0}, {"iris", 0x09}, {"gain", 0}};
    ApplyTwice(Profile(5), {{"exposureMode", 0x0C}});
    ExpectSettings(untouched);
    ApplyTwice(Profile(6), {{"exposureMode", 0x0D}});
    ExpectSettings(untouched);
}

INSTANTIATE_TEST_SUITE_P(OfEachGeneration, KovaExposureTest,
                         ::testing::Values(Module{"kova1", {}},
                                           Module{"kova2", {"81 01 04 D1 00 00 00 02 FF"}}),
                         [](const auto &module) { return std::string(module.param.name); });

TEST_F(ExposureTest, TheDomeTypeComesFromTheDeviceModel) {
    StartWithoutFiles("kova2");
    host::Board board = host::GetBoard();
    board.strDeviceModel = "IT-4410-WH";
    host::SetBoard(board);
    ApplyWhole(Profile(0));
    ExpectSettings({{"domeType", 3}});
}

/* From one profile to the next */

TEST_F(ExposureTest, AnotherModeSendsWhatDependsOnItAgain) {
    StartWithoutFiles("sony1");
    ApplyWhole(Profile(2));
    Forget();
    ApplyWhole(Profile(7));
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 39 03 FF", "81 01 04 4A 00 00 00 0B FF",
                                        "81 01 04 4B 00 00 00 0C FF", "81 01 04 4C 00 00 00 06 FF"))
        << "the shutter too, though it is the same";
    Forget();
    ApplyWhole(Profile(2));
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 39 0A FF", "81 01 04 4A 00 00 00 0B FF"));
    ExpectSettings({{"exposureMode", 0x0A}, {"shutter", 0x0B}});
}

TEST_F(ExposureTest, OneChangedValueIsOnePacket) {
    StartWithoutFiles("sony3");
    ExposureParam profile = Profile(7);
    ApplyWhole(profile);
    profile.ulGain = 28;
    EXPECT_THAT(SentAgain(profile), ElementsAre("81 01 04 4C 00 00 00 0F FF"));
    ExpectSettings({{"gain", 15}});
}

TEST_F(ExposureTest, WhatAModeDoesNotAllowIsRefusedAndTheQueueGoesOn) {
    StartWithoutFiles("sony1"); // in automatic exposure
    EXPECT_EQ(SonyImgSetShutter(0, 250), 0u);
    EXPECT_EQ(SonyImgSetIris(0, 400), 0u);
    EXPECT_EQ(SonyImgSetGain(0, 10), 0u);
    EXPECT_EQ(SonySetAEMetering(0, 1), 0u);
    Drain();
    EXPECT_EQ(State().sentCount("error 41"), 3u);
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[0x41], 3u);
    EXPECT_EQ(TimeOuts(), 0u);
    ExpectSettings({{"shutter", 0x06}, {"iris", 0x09}, {"gain", 1}, {"metering", 2}});
    ExpectOneInFlight();
}

TEST_F(ExposureTest, AProfileIsAppliedWholeAlthoughTheCameraRefusesOneCommand) {
    StartWithoutFiles("sony1");
    Camera().setFault("error=3#1"); // 90 60 03 to the automatic slow shutter, the first of the profile
    EXPECT_EQ(Apply(Profile(7)), 0u);
    Drain();
    EXPECT_EQ(State().sentCount("error 03"), 1u);
    EXPECT_EQ(TimeOuts(), 0u);
    ExpectSettings({{"slowShutter", 3}, {"exposureMode", 0x03}, {"shutter", 0x0B}, {"gain", 6}, {"icr", 2}});
}

TEST_F(ExposureTest, AfterAPowerCycleTheProfileGoesOutWhole) {
    sim::Options options = sim::Options::fast();
    options.bootTime = std::chrono::milliseconds(0);
    StartWithoutFiles(options);
    ApplyWhole(Profile(7));
    EXPECT_EQ(SonyResetCam(), 0u);
    Drain();
    ExpectSettings({{"exposureMode", 0x00}, {"shutter", 0x06}, {"icr", 3}});
    EXPECT_EQ(SonyRestoreCamEnv(0x02000001), 0u);
    ApplyWhole(Profile(7));
    ExpectSettings({{"exposureMode", 0x03}, {"shutter", 0x0B}, {"iris", 0x0C}, {"gain", 6}, {"icr", 2}});
}

/* The current gain */

TEST_F(ExposureTest, TheCurrentGainOfABlockIsReadInDecibels) {
    StartWithoutFiles("sony1");
    ApplyWhole(Profile(7)); // 10 dB, position 6
    uint32_t gain = 0;
    EXPECT_EQ(VISCA_GetGain(0, &gain), 0u);
    EXPECT_EQ(gain, 10u);
    ExposureParam read = Profile(0);
    EXPECT_EQ(VISCA_GetExposure(0, 0, &read), 0u);
    EXPECT_EQ(read.ulGain, 10000u);
    EXPECT_EQ(read.ulShutter, 250u) << "nothing else is written";
    CatchUp();
    EXPECT_THAT(Heard(), ::testing::Contains(kExposureInquiry).Times(2));
}

TEST_F(ExposureTest, TheCurrentGainOfAModuleIsReadByTheSameFormula) {
    StartWithoutFiles("kova2");
    ExposureParam profile = Profile(4);
    profile.ulGain = 60;
    ApplyWhole(profile);
    uint32_t gain = 0;
    EXPECT_EQ(VISCA_GetGain(0, &gain), 0u);
    EXPECT_EQ(gain, 118u) << "(60 - 1) * 2";
}

TEST_F(ExposureTest, ARefusedGainInquiryIsAFailure) {
    StartWithoutFiles("sony1");
    Camera().setFault("error=65");
    uint32_t gain = 7;
    EXPECT_EQ(VISCA_GetGain(0, &gain), 1u);
    EXPECT_EQ(gain, 0u);
    ExposureParam read = Profile(0);
    EXPECT_EQ(VISCA_GetExposure(0, 0, &read), 1u);
    EXPECT_EQ(read.ulGain, 10u);
}

} // namespace camera
