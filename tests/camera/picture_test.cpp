// White balance, picture profile, day and night, defog, end to end: what the camera believes afterwards.
#include <cstring>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

constexpr char kRedAtZero[] = "81 01 04 43 00 00 07 0F FF";
constexpr char kBlueAtZero[] = "81 01 04 44 00 00 07 0F FF";

bool IsKova(const std::string &name) {
    return StartsWith(name, "kova");
}

uint32_t SetWhiteBalance(uint32_t mode, int32_t blue, int32_t red) {
    const WhiteBalanceParam balance = {mode, blue, red};
    return VISCA_SetWhiteBalance(0, 0, &balance);
}

ImageEnhanceParam Picture() {
    return {100, 150, 200, 0, 0, 100, 30, 200};
}

uint32_t Enhance(const ImageEnhanceParam &picture) {
    return VISCA_SetImageEnhance(0, 0, &picture);
}

// Message 30: two words, mode and sensitivity.
uint32_t SetDefog(uint32_t mode, uint32_t sensitivity) {
    DrvMsgInfo message = {1, 30, 0, 0, 0, 8, {}};
    memcpy(message.aucMsgData, &mode, 4);
    memcpy(message.aucMsgData + 4, &sensitivity, 4);
    return VISCA_MessageProcess(&message);
}

} // namespace

class PictureTest : public CameraTest, public ::testing::WithParamInterface<const char *> {
  protected:
    void SetUp() override {
        CameraTest::SetUp();
        StartWithoutFiles(GetParam());
    }

    std::vector<std::string> Sent() {
        Drain();
        ExpectNothingRefused();
        const std::vector<std::string> commands = Commands();
        Forget();
        return commands;
    }
};

TEST_P(PictureTest, ManualWhiteBalanceSetsTheOffsets) {
    EXPECT_EQ(SetWhiteBalance(1, -30, 20), 0u);
    EXPECT_THAT(Sent(), SizeIs(3));
    ExpectSettings({{"wbMode", 5}, {"redGain", 147}, {"blueGain", 97}}); // 127 + 20, 127 - 30

    WhiteBalanceParam read = {99, 0, 0};
    EXPECT_EQ(VISCA_GetWhiteBalance(0, 0, &read), 0u);
    EXPECT_EQ(read.ulWbMode, 99u);
    EXPECT_EQ(read.lBlueOffset, -30);
    EXPECT_EQ(read.lRedOffset, 20);
}

TEST_P(PictureTest, ManualOffsetsAreAlwaysSent) {
    EXPECT_EQ(SetWhiteBalance(1, 0, 0), 0u);
    EXPECT_THAT(Sent(), ElementsAre("81 01 04 35 05 FF", kRedAtZero, kBlueAtZero));
    EXPECT_EQ(SetWhiteBalance(1, 0, 0), 0u);
    EXPECT_THAT(Sent(), ElementsAre(kRedAtZero, kBlueAtZero));
    ExpectSettings({{"wbMode", 5}, {"redGain", 127}, {"blueGain", 127}});
}

TEST_P(PictureTest, AutomaticWhiteBalanceModesAreSentOnce) {
    const std::map<uint32_t, int> modes = {{2, 0}, {6, 7}, {0, 4}};
    for (const auto &[mode, code] : modes) {
        EXPECT_EQ(SetWhiteBalance(mode, 1, 2), 0u);
        EXPECT_THAT(Sent(), SizeIs(1)) << mode;
        ExpectSettings({{"wbMode", code}, {"redGain", 0x80}, {"blueGain", 0x80}});
        EXPECT_EQ(SetWhiteBalance(mode, 1, 2), 0u);
        EXPECT_THAT(Sent(), IsEmpty()) << mode;
    }
}

TEST_P(PictureTest, AnUnknownWhiteBalanceModeIsTakenForAutoTracing) {
    EXPECT_EQ(SetWhiteBalance(2, 0, 0), 0u);
    EXPECT_EQ(SetWhiteBalance(5, 0, 0), 0u);
    Drain();
    EXPECT_EQ(HostCount("WARN Invalid WhiteBalance Mode(5), correct to ATW."), 1u);
    ExpectSettings({{"wbMode", 4}});
}

TEST_P(PictureTest, AProfileSetsThePictureOnce) {
    EXPECT_EQ(Enhance(Picture()), 0u);
    Drain();
    ExpectNothingRefused();
    if (IsKova(GetParam())) {
        ExpectSettings({{"brightness", 100},
                        {"contrast", 150},
                        {"colourGain", 200},
                        {"aperture", 6},
                        {"noise2d", 30},
                        {"noise3d", 200},
                        {"noiseReduction", 3}}); // the block's own, as at power-up
    } else {
        // colour gain (10 * 200 - 1280) / 127 + 4, aperture 100 / 16, noise reduction (200 - 1) / 51 + 1
        ExpectSettings({{"colourGain", 9}, {"aperture", 6}, {"noiseReduction", 4}});
    }
    Forget();
    EXPECT_EQ(Enhance(Picture()), 0u);
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_P(PictureTest, ValuesAboveTheirRangeAreLimited) {
    EXPECT_EQ(Enhance({300, 300, 255, 0, 0, 255, 300, 300}), 0u);
    Drain();
    ExpectNothingRefused();
    if (IsKova(GetParam())) {
        ExpectSettings({{"brightness", 255},
                        {"contrast", 255},
                        {"colourGain", 255},
                        {"aperture", 15},
                        {"noise2d", 255},
                        {"noise3d", 255}});
    } else {
        ExpectSettings({{"colourGain", 14}, {"aperture", 15}, {"noiseReduction", 5}});
    }
}

TEST_P(PictureTest, NightAndDayAndTheCamerasOwnChoice) {
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 2), 0u);
    EXPECT_THAT(Sent(), ElementsAre("81 01 04 51 03 FF", "81 01 04 01 02 FF"));
    ExpectSettings({{"autoIcr", 3}, {"icr", 2}});
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 2), 0u);
    EXPECT_THAT(Sent(), IsEmpty());
    uint32_t mode = 0;
    EXPECT_EQ(VISCA_GetBlackWhiteMode(&mode), 0u);
    EXPECT_EQ(mode, 2u);

    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 1), 0u);
    EXPECT_THAT(Sent(), ElementsAre("81 01 04 51 03 FF", "81 01 04 01 03 FF"));
    ExpectSettings({{"autoIcr", 3}, {"icr", 3}});

    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 0), 0u);
    EXPECT_THAT(Sent(), ElementsAre("81 01 04 51 02 FF"));
    ExpectSettings({{"autoIcr", 2}});
    EXPECT_EQ(VISCA_GetBlackWhiteMode(&mode), 1u) << "the camera's own choice is not known";
}

INSTANTIATE_TEST_SUITE_P(OfEachFamily, PictureTest,
                         ::testing::Values("sony1", "sony3", "sony4", "sony5", "kova1", "kova2"),
                         [](const auto &camera) { return std::string(camera.param); });

/* What only some have */

class KovaPictureTest : public PictureTest {};

TEST_P(KovaPictureTest, ContrastIsSentAgainAfterDayTurnedToNight) {
    EXPECT_EQ(Enhance(Picture()), 0u);
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 2), 0u);
    Sent();
    EXPECT_EQ(Enhance(Picture()), 0u);
    EXPECT_THAT(Sent(), ElementsAre("81 01 04 A2 00 00 09 06 FF"));
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 2), 0u);
    EXPECT_EQ(Enhance(Picture()), 0u);
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_P(KovaPictureTest, DefogIsAlwaysSentWithItsSensitivity) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(SetDefog(3, 7), 0u);
        EXPECT_THAT(Sent(), ElementsAre("81 01 04 C8 03 FF", "81 01 04 C9 07 FF"));
        ExpectSettings({{"defogMode", 3}, {"defogSense", 7}});
    }
}

INSTANTIATE_TEST_SUITE_P(OfEachGeneration, KovaPictureTest, ::testing::Values("kova1", "kova2"),
                         [](const auto &camera) { return std::string(camera.param); });

class DefogTest : public CameraTest {};

TEST_F(DefogTest, IsSwitchedOnAndOff) {
    StartWithoutFiles("sony3");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(SetDefog(5, 1), 0u);
    }
    Drain();
    ExpectSettings({{"defog", 2}, {"defogLevel", 0}});
    EXPECT_EQ(SetDefog(0, 1), 0u);
    Drain();
    ExpectSettings({{"defog", 3}});
    EXPECT_THAT(Commands(),
                ElementsAre("81 01 04 37 02 00 FF", "81 01 04 37 02 00 FF", "81 01 04 37 03 00 FF"));
    ExpectNothingRefused();
}

TEST_F(DefogTest, HasThreeLevels) {
    StartWithoutFiles("sony5");
    const std::map<uint32_t, int> levels = {{1, 1}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {255, 3}};
    for (const auto &[mode, level] : levels) {
        EXPECT_EQ(SetDefog(mode, 0), 0u);
        Drain();
        ExpectSettings({{"defog", 2}, {"defogLevel", level}});
    }
    EXPECT_EQ(SetDefog(256, 0), 0u); // the low byte counts
    Drain();
    ExpectSettings({{"defog", 3}, {"defogLevel", 0}});
    ExpectNothingRefused();
}

TEST_F(DefogTest, IsNothingToABlockWithoutIt) {
    StartWithoutFiles("sony1");
    EXPECT_EQ(SetDefog(3, 7), 0u);
    Drain();
    EXPECT_THAT(Commands(), IsEmpty());
    EXPECT_EQ(HostCount("WARN not support defog, do nothing!"), 1u);
}

} // namespace camera
