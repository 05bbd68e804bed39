// What a Kova module tells about itself and its picture, end to end.
#include <cstring>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

// Room as the header asks for, and a mark that shows what was not written.
struct Text {
    char data[114 + 1];

    Text() { memset(data, '#', sizeof data); }
    std::string Get() const { return {data, strnlen(data, sizeof data)}; }
};

} // namespace

class KovaInfoTest : public CameraTest {
  protected:
    void StartWith(const sim::KovaOptions &kova, const std::string &camera = "kova2") {
        sim::Options options = sim::Options::fast(camera);
        options.kova = kova;
        StartWithoutFiles(options);
    }

    // Asks until the luma is as wanted.
    static bool AwaitLuma(const std::function<bool(int32_t)> &wanted) {
        const auto end = std::chrono::steady_clock::now() + kLimit;
        int32_t luma = 0;
        do {
            EXPECT_EQ(VISCA_KOVA_GetCurLuma(0, &luma), 0u);
        } while (!wanted(luma) && std::chrono::steady_clock::now() < end);
        return wanted(luma);
    }

    static std::string ProgramVersion() {
        Text text;
        EXPECT_EQ(KovaGetCurKovaProgramVer(text.data), 0u);
        return text.Get();
    }
};

/* Capabilities and versions */

TEST_F(KovaInfoTest, TheCapabilityWordIsReadWhole) {
    sim::KovaOptions kova;
    kova.ability = 0x9ABCDEF4;
    StartWith(kova);
    EXPECT_EQ(KovaGetCamAbility(), 0x9ABCDEF4u);
    EXPECT_EQ(State().kova.ability, 0x9ABCDEF4u);
    EXPECT_EQ(VISCA_KOVA_HasCamAbility(0x80000014), 1u);
    EXPECT_EQ(VISCA_KOVA_HasCamAbility(0x00000008), 0u);
}

TEST_F(KovaInfoTest, ARefusedCapabilityInquiryKeepsTheWord) {
    StartWith({});
    Camera().setFault("error=65#1");
    EXPECT_EQ(KovaDetectCamAbility(), 1u);
    EXPECT_EQ(KovaGetCamAbility(), 0x1Cu);
}

TEST_F(KovaInfoTest, TheOldProgramVersionComesInOneAnswer) {
    StartWith({}, "kova1");
    EXPECT_EQ(ProgramVersion(), "D012SP03");
    CatchUp();
    EXPECT_THAT(Heard(), ElementsAre("71 09 04 B2 FF"));
}

TEST_F(KovaInfoTest, TheOldProgramVersionIsEightDigitsWhenItBeginsOtherwise) {
    sim::KovaOptions kova;
    kova.oldProgramVersion = {10, 2, 99, 0};
    StartWith(kova, "kova-2001");
    EXPECT_EQ(ProgramVersion(), "10029900");
}

TEST_F(KovaInfoTest, TheProgramVersionComesInSegments) {
    StartWith({});
    EXPECT_EQ(ProgramVersion(), "B02D014SP05");
    EXPECT_EQ(ProgramVersion(), "B02D014SP05") << "and begins anew";
    CatchUp();
    EXPECT_THAT(Heard(), SizeIs(6));
    EXPECT_EQ(HostCount("INFO ulSegCnt[2]"), 2u);
}

TEST_F(KovaInfoTest, AVersionOfNinetyNineCharactersIsReadWhole) {
    sim::KovaOptions kova;
    kova.programVersion = std::string(98, '7') + "8";
    StartWith(kova);
    EXPECT_EQ(ProgramVersion(), kova.programVersion);
    EXPECT_EQ(HostCount("INFO ulSegCnt[9]"), 1u);
}

TEST_F(KovaInfoTest, AnEmptyVersionIsRead) {
    sim::KovaOptions kova;
    kova.programVersion = "";
    StartWith(kova);
    EXPECT_EQ(ProgramVersion(), "");
}

TEST_F(KovaInfoTest, ASeparatorInAProgramVersionIsATransmissionError) {
    sim::KovaOptions kova;
    kova.programVersion = "B02-1";
    StartWith(kova);
    Text text;
    EXPECT_EQ(KovaGetCurKovaProgramVer(text.data), 1u);
    EXPECT_EQ(HostCount("ERROR Serial Transmit error, please try again"), 1u);
    EXPECT_EQ(text.data[0], '#');
}

TEST_F(KovaInfoTest, TheCameraVersionIsTheStampAndTheProgramVersion) {
    StartWith({});
    Text text;
    EXPECT_EQ(VISCA_KOVA_GetCamVer(text.data), 0u);
    EXPECT_EQ(text.Get(), "QDMV200R001B02B02D014SP05");
}

TEST_F(KovaInfoTest, TheExtensionVersionHasSeparators) {
    StartWith({});
    Text text;
    EXPECT_EQ(VISCA_KOVA_GetExtVer(text.data), 0u);
    EXPECT_EQ(text.Get(), "R01-B02_C3");
    CatchUp();
    EXPECT_THAT(Heard(), ::testing::Each("71 09 04 B5 FF"));
}

TEST_F(KovaInfoTest, TheExtensionVersionIsUnknownWithoutTheCapability) {
    StartWith({}, "kova1");
    Text text;
    EXPECT_EQ(VISCA_KOVA_GetExtVer(text.data), 0u);
    EXPECT_EQ(text.Get(), "UNKNOWN");
    CatchUp();
    EXPECT_THAT(Heard(), IsEmpty());
}

TEST_F(KovaInfoTest, TheKernelVersionLeavesOutZerosAtItsEnds) {
    sim::KovaOptions kova;
    kova.uimageVersion = {0, 2, 0, 0};
    StartWith(kova);
    Text text;
    EXPECT_EQ(KovaGetCurKovaUimageVer(text.data), 0u);
    EXPECT_EQ(text.Get(), "2.0");
}

TEST_F(KovaInfoTest, TheSoftVersionIsUpToThirteenCharacters) {
    sim::KovaOptions kova;
    kova.softVersion = "V1.0.3 build7";
    StartWith(kova);
    char version[16];
    memset(version, '#', sizeof version);
    EXPECT_EQ(VISCA_KOVA_GetSoftVer(version), 0u);
    EXPECT_EQ(std::string(version, sizeof version), std::string("V1.0.3 build7\0\0\0", 16));
}

TEST_F(KovaInfoTest, TheBoardsHaveVersionsAndTypes) {
    sim::KovaOptions kova;
    kova.boards = {{{11, 12}, {21, 22}, {31, 0xFE}}};
    StartWith(kova);
    uint32_t version = 0;
    uint32_t type = 0;
    EXPECT_EQ(VISCA_KOVA_GetEncBoardVerType(&version, &type), 0u);
    EXPECT_EQ(version * 1000 + type, 11012u);
    EXPECT_EQ(VISCA_KOVA_GetSensorBoardVerType(&version, &type), 0u);
    EXPECT_EQ(version * 1000 + type, 21022u);
    EXPECT_EQ(VISCA_KOVA_GetMotorBoardVerType(&version, &type), 0u);
    EXPECT_EQ(version * 1000 + type, 31254u);
}

TEST_F(KovaInfoTest, RefusedInquiriesLeaveTheOutputsAlone) {
    StartWith({});
    Camera().setFault("error=65");
    uint32_t version = 7;
    uint32_t type = 8;
    int32_t value = 9;
    EXPECT_EQ(VISCA_KOVA_GetMotorBoardVerType(&version, &type), 1u);
    EXPECT_EQ(VISCA_KOVA_GetTemperature(0, &value), 1u);
    EXPECT_EQ(VISCA_KOVA_GetCurLuma(0, &value), 1u);
    EXPECT_EQ(KovaGetImageFocusValue(0, &value), 1u);
    EXPECT_EQ(version, 7u);
    EXPECT_EQ(type, 8u);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(HostCount("ERROR ViscaInquiry failed exit"), 4u);
}

class TemperatureTest : public KovaInfoTest, public ::testing::WithParamInterface<int> {};

TEST_P(TemperatureTest, IsReadInDegrees) {
    sim::KovaOptions kova;
    kova.temperature = GetParam();
    StartWith(kova, "kova1");
    int32_t degrees = 999;
    EXPECT_EQ(VISCA_KOVA_GetTemperature(0, &degrees), 0u);
    EXPECT_EQ(degrees, GetParam());
}

INSTANTIATE_TEST_SUITE_P(OverItsRange, TemperatureTest, ::testing::Values(-127, -1, 0, 41, 128),
                         [](const auto &degrees) {
                             return (degrees.param < 0 ? "Minus" : "Plus") +
                                    std::to_string(std::abs(degrees.param));
                         });

/* The picture */

TEST_F(KovaInfoTest, TheLumaOfAStillSceneIsRead) {
    sim::KovaOptions kova;
    kova.sceneMoves = false;
    StartWith(kova);
    int32_t luma = 0;
    EXPECT_EQ(VISCA_KOVA_GetCurLuma(0, &luma), 0u);
    EXPECT_EQ(luma, 0x80);
    CatchUp();
    EXPECT_THAT(Heard(), ElementsAre("81 09 04 CE FF"));
}

TEST_F(KovaInfoTest, TheLumaMovesWithTheScene) {
    sim::Options options = sim::Options::fast("kova1");
    options.timeScale = 100; // from dark to bright in 0.1 s
    StartWithoutFiles(options);
    EXPECT_TRUE(AwaitLuma([](int32_t luma) { return luma >= 0x40 && luma < 0x60; }));
    EXPECT_TRUE(AwaitLuma([](int32_t luma) { return luma > 0xA0 && luma <= 0xC0; }));
    EXPECT_TRUE(AwaitLuma([](int32_t luma) { return luma >= 0x40 && luma < 0x60; }));
}

TEST_F(KovaInfoTest, TheFocusValueFallsAwayFromTheSharpPoint) {
    sim::Options options = sim::Options::fast("kova2");
    options.timeScale = 100;
    options.kova.sceneMoves = false;
    StartWithoutFiles(options);
    int32_t value = 0;
    EXPECT_EQ(KovaGetImageFocusValue(0, &value), 0u);
    EXPECT_EQ(value, 0x20000) << "in focus";

    // Twice the depth of field away it is a third: AA AA 00 00 in memory, two characters as text.
    EXPECT_EQ(VISCA_SetZoomFocusPos(0, 0x5800), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.focus == 0x5800; }));
    EXPECT_EQ(KovaGetImageFocusValue(0, &value), 0u);
    EXPECT_EQ(value, 0xAAAA);
    DrvMsgInfo message = {0, 34, 0, 0, 0, 4, {9, 9, 9, 9, 9, 9, 9, 9}};
    EXPECT_EQ(VISCA_MessageProcess(&message), 0u);
    EXPECT_EQ(message.ulMsgLen, 3u);
    EXPECT_THAT(message.aucMsgData, ElementsAre(0xAA, 0xAA, 0, 0, 9, 9, 9, 9));
}

TEST_F(KovaInfoTest, TheTuningMessageReadsLumaAndGain) {
    sim::KovaOptions kova;
    kova.sceneMoves = false;
    StartWith(kova);
    DrvMsgInfo message = {1, 2, 0x51, 0, 0, 1, {0x1B}};
    EXPECT_EQ(VISCA_MessageProcess(&message), 0u);
    Drain();
    ExpectSettings({{"debugItem", 0x51}, {"debugValue", 0x1B}});
    EXPECT_EQ(HostCount("INFO *****IQ info luma[128], gain[1]"), 1u) << "gain 0 is shown as position 1";
}

/* Services */

TEST_F(KovaInfoTest, SceneIrCutLowDelayAndClockAreSet) {
    StartWith({});
    EXPECT_EQ(VISCA_KOVA_SetSceneInfo(2), 0u);
    EXPECT_EQ(VISCA_KOVA_SetIRcut(0), 0u);
    EXPECT_EQ(KOVA_SetLowDelayMode(1), 0u);
    EXPECT_EQ(KOVA_SetTime(0x89ABCDEF), 0u);
    Drain();
    ExpectNothingRefused();
    ExpectSettings({{"sceneMode", 0x00}, {"irCut", 5}, {"lowDelay", 2}});
    EXPECT_EQ(State().kova.clock, 0x89ABCDEFu);
    EXPECT_EQ(VISCA_KOVA_SetIRcut(1), 0u);
    EXPECT_EQ(VISCA_KOVA_SetSceneInfo(81), 0u);
    EXPECT_EQ(VISCA_KOVA_SetSceneInfo(9), 1u);
    Drain();
    ExpectSettings({{"sceneMode", 0x0E}, {"irCut", 4}});
}

TEST_F(KovaInfoTest, FocusIsTriggeredPlainOnAPointAndInARectangle) {
    StartWith({});
    const uint32_t point[] = {0x1234, 0x5678};
    const uint32_t rectangle[] = {0x0102, 0x0304, 0x0506, 0x0708};
    EXPECT_EQ(VISCA_OnePushAutoFocus(0, nullptr), 0u);
    Drain();
    ExpectSettings({{"afTrigger", 1}});
    EXPECT_EQ(VISCA_OnePushAutoFocus(10, point), 0u);
    Drain();
    ExpectSettings({{"afTrigger", 0x0A}, {"afValue1", 0x1234}, {"afValue2", 0x5678}});
    EXPECT_EQ(VISCA_OnePushAutoFocus(11, rectangle), 0u);
    Drain();
    ExpectSettings({{"afTrigger", 0x0B}, {"afValue1", 0x0102}, {"afValue3", 0x0506}, {"afValue4", 0x0708}});
    ExpectNothingRefused();
}

TEST_F(KovaInfoTest, ANearLimitLetsTheModuleFocusAgain) {
    StartWith({});
    EXPECT_EQ(VISCA_SetFocusMinLen(1000), 0u);
    Drain();
    ExpectSettings({{"afTrigger", 1}});
    ExpectNothingRefused();
}

} // namespace camera
