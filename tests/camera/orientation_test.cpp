// The Kova module's sensor: orientation and offset, with the power cycle where the module needs one.
#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

namespace {

constexpr char kStandby[] = "81 01 04 00 03 FF";
constexpr char kPowerOn[] = "81 01 04 00 02 FF";

} // namespace

class OrientationTest : public CameraTest {
  protected:
    // Its boot takes 40 ms. Long pauses of the library last until the module has done all that it was told.
    void StartModule(const std::string &camera) {
        sim::Options options = sim::Options::fast(camera);
        options.bootTime = std::chrono::milliseconds(40);
        StartWithoutFiles(options);
        OnPause([this](double seconds) {
            const bool isLong = seconds >= 1;
            if (isLong) {
                m_longPauses.push_back(seconds);
            }
            return isLong && host::WaitDrained(kLimit);
        });
    }

    void TearDown() override {
        OnPause(nullptr);
        CameraTest::TearDown();
    }

    void ExpectRunning() {
        Drain();
        EXPECT_EQ(State().power, sim::Power::on);
        EXPECT_THAT(State().pendingSettings, IsEmpty());
        ExpectNothingRefused();
    }

    std::vector<double> m_longPauses;
};

TEST_F(OrientationTest, TurnsAtOnceInAModuleThatCan) {
    StartModule("kova1");
    EXPECT_EQ(KOVA_SetSensorReverse(2, 0), 0u);
    ExpectRunning();
    EXPECT_THAT(Heard(), ElementsAre("81 01 04 61 02 FF", "81 01 04 66 03 FF"));
    EXPECT_THAT(m_longPauses, IsEmpty());
    ExpectSettings({{"mirror", 2}, {"flip", 3}});
}

TEST_F(OrientationTest, TurnsWithAPowerCycleInAModuleThatNeedsIt) {
    StartModule("kova2");
    EXPECT_EQ(KOVA_SetSensorReverse(3, 0), 0u);
    ExpectRunning();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 61 03 FF", "81 01 04 66 02 FF", kStandby, kPowerOn));
    EXPECT_THAT(m_longPauses, ElementsAre(1, 3));
    ExpectSettings({{"mirror", 3}, {"flip", 2}});
}

TEST_F(OrientationTest, AModuleThatStandsRightIsAskedAndLeftAlone) {
    StartModule("kova2");
    EXPECT_EQ(KOVA_SetSensorReverse(0, 0), 0u);
    ExpectRunning();
    EXPECT_THAT(Heard(), ElementsAre("81 09 04 61 FF", "81 09 04 66 FF"));
    EXPECT_THAT(m_longPauses, IsEmpty());
}

TEST_F(OrientationTest, ForceTurnsAndPowerCyclesInAnyCase) {
    StartModule("kova1");
    EXPECT_EQ(KOVA_SetSensorReverse(1, 1), 0u);
    ExpectRunning();
    EXPECT_EQ(KOVA_SetSensorReverse(1, 1), 0u);
    ExpectRunning();
    const char *const turn[] = {"81 01 04 61 02 FF", "81 01 04 66 02 FF", kStandby, kPowerOn};
    EXPECT_THAT(Heard(), ::testing::Contains(turn[0]).Times(2));
    EXPECT_THAT(Commands(),
                ElementsAre(turn[0], turn[1], turn[2], turn[3], turn[0], turn[1], turn[2], turn[3]));
    EXPECT_EQ(HostCount("INFO mirror_mode"), 0u) << "it is not asked";
    ExpectSettings({{"mirror", 2}, {"flip", 2}});
}

TEST_F(OrientationTest, AModuleThatDoesNotComeBackIsGivenUpWhenItAnswersWithAnError) {
    sim::Options options = sim::Options::fast("kova2");
    options.bootTime = std::chrono::minutes(10);
    StartWithoutFiles(options);
    int polls = 0;
    OnPause([&](double seconds) {
        if (seconds < 1 && ++polls == 2) {
            Camera().setFault("error=65#1");
        }
        return host::WaitDrained(kLimit);
    });
    EXPECT_EQ(KOVA_SetSensorReverse(1, 0), 1u);
    EXPECT_EQ(polls, 2);
    EXPECT_EQ(HostCount("ERROR SonyWaitPowerOn fail exit"), 1u);
}

TEST_F(OrientationTest, TheOffsetIsSetWithAPowerCycleAndReadBack) {
    StartModule("kova1");
    EXPECT_EQ(KOVA_SetSensorOffset(-2, 300, 5), 0u);
    ExpectRunning();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 BD 0F 0F 0F 0E 00 01 02 0C 05 FF", kStandby, kPowerOn));
    EXPECT_THAT(m_longPauses, ElementsAre(1));
    ExpectSettings({{"offsetX", -2}, {"offsetY", 300}, {"offsetFlag", 5}});
    int32_t x = 0;
    int32_t y = 0;
    EXPECT_EQ(KOVA_GetSensorOffset(&x, &y), 0u);
    EXPECT_EQ(x, -2);
    EXPECT_EQ(y, 300);
}

} // namespace camera
