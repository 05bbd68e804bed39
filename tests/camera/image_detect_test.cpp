// The Kova module's image detection after a change of the video norm: what the host asks for meanwhile is
// held back and applied when it ends.
#include <utility>

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

namespace {

constexpr VideoNormParam kHd30 = {1920, 1080, 30};
constexpr VideoNormParam kHd25 = {1920, 1080, 25};

constexpr char kAutoIcrOff[] = "81 01 04 51 03 FF";
constexpr char kDay[] = "81 01 04 01 03 FF";
constexpr char kNight[] = "81 01 04 01 02 FF";
constexpr char kWbManual[] = "81 01 04 35 05 FF";

} // namespace

class ImageDetectTest : public CameraTest {
  protected:
    void StartModule(const std::string &camera = "kova2") {
        sim::Options options = sim::Options::fast(camera);
        options.bootTime = std::chrono::milliseconds(0);
        StartWithoutFiles(options);
        // The module has done all that it was told when a pause is over.
        OnPause([this](double seconds) {
            m_paused += seconds;
            return host::WaitDrained(kLimit);
        });
    }

    void TearDown() override {
        OnPause(nullptr);
        CameraTest::TearDown();
    }

    // Into the detection, by a norm that is set already.
    void Begin(const std::string &camera = "kova2") {
        StartModule(camera);
        ASSERT_EQ(VISCA_SetVin(&kHd30), 0u);
        Drain();
        Forget();
        m_paused = 0;
    }

    static void SetWhiteBalance(uint32_t mode, int32_t blue, int32_t red) {
        const WhiteBalanceParam balance = {mode, blue, red};
        EXPECT_EQ(VISCA_SetWhiteBalance(0, 0, &balance), 0u);
    }

    std::vector<std::string> Resume() {
        EXPECT_EQ(KOVA_ResumeDetectImgParam(), 0u);
        Drain();
        ExpectNothingRefused();
        return Commands();
    }

    double m_paused = 0;
};

TEST_F(ImageDetectTest, BeginsWithDayAndAFixedWhiteBalance) {
    StartModule();
    EXPECT_EQ(VISCA_SetVin(&kHd30), 0u);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre(kAutoIcrOff, kDay, kWbManual, "81 01 04 43 00 00 00 00 FF",
                                        "81 01 04 44 00 00 0F 0E FF"));
    ExpectSettings({{"icr", 3}, {"autoIcr", 3}, {"wbMode", 5}, {"redGain", 0}, {"blueGain", 254}});
    EXPECT_DOUBLE_EQ(m_paused, 3.0);
    ExpectNothingRefused();
}

TEST_F(ImageDetectTest, BeginsWhenANormWasChangedToo) {
    StartModule("kova1");
    EXPECT_EQ(VISCA_SetVin(&kHd25), 0u);
    Drain();
    EXPECT_THAT(Commands(),
                ElementsAre("81 01 04 00 03 FF", "81 01 04 24 72 00 08 FF", "81 01 04 00 02 FF", kAutoIcrOff,
                            kDay, kWbManual, "81 01 04 43 00 00 00 00 FF", "81 01 04 44 00 00 0F 0E FF"));
    ExpectSettings({{"wbMode", 5}, {"redGain", 0}, {"blueGain", 254}});
}

TEST_F(ImageDetectTest, HoldsDayNightAndWhiteBalanceBackAndNothingElse) {
    Begin();
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 2), 0u);
    SetWhiteBalance(1, -30, 20);
    EXPECT_EQ(SonySetVideoBrightness(0, 77), 0u);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 A1 00 00 04 0D FF"));
    EXPECT_EQ(gstImgDetectParam.lBlackWhiteMode, 2);
    EXPECT_EQ(gstImgDetectParam.lWbMode, 1);
    EXPECT_EQ(gstImgDetectParam.lBlueOffset, -30);
    EXPECT_EQ(gstImgDetectParam.lRedOffset, 20);
    ExpectSettings({{"icr", 3}, {"wbMode", 5}, {"redGain", 0}, {"blueGain", 254}, {"brightness", 77}});
}

TEST_F(ImageDetectTest, EndsWithNightAndThenWhatWasHeldBack) {
    Begin();
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 2), 0u);
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 0), 0u) << "the last request counts";
    SetWhiteBalance(1, -30, 20);
    EXPECT_THAT(Resume(), ElementsAre(kAutoIcrOff, kNight, "81 01 04 51 02 FF", "81 01 04 43 00 00 09 03 FF",
                                      "81 01 04 44 00 00 06 01 FF"))
        << "the manual mode is set already";
    ExpectSettings({{"icr", 2}, {"autoIcr", 2}, {"wbMode", 5}, {"redGain", 147}, {"blueGain", 97}});
    EXPECT_DOUBLE_EQ(m_paused, 0.5);
}

TEST_F(ImageDetectTest, EndsWithNightAloneWhenNothingWasHeldBack) {
    Begin();
    EXPECT_THAT(Resume(), ElementsAre(kAutoIcrOff, kNight));
    ExpectSettings({{"icr", 2}, {"wbMode", 5}, {"redGain", 0}});
}

TEST_F(ImageDetectTest, IsOverAfterItsEnd) {
    Begin();
    Resume();
    Forget();
    EXPECT_EQ(VISCA_SetBlackWhiteMode(0, 1), 0u);
    SetWhiteBalance(0, 0, 0);
    EXPECT_THAT(Resume(), ElementsAre(kAutoIcrOff, kDay, "81 01 04 35 04 FF"))
        << "sent at once, and a second end does nothing";
}

TEST_F(ImageDetectTest, RunsOnceInAProcess) {
    Begin();
    Resume();
    Forget();
    EXPECT_EQ(VISCA_SetVin(&kHd25), 0u);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 00 03 FF", "81 01 04 24 72 00 08 FF", "81 01 04 00 02 FF"));
    EXPECT_LT(m_paused, 1.0);
}

TEST_F(ImageDetectTest, IsNotForSonyBlocks) {
    StartModule("sony1");
    EXPECT_EQ(VISCA_SetVin(&kHd30), 0u);
    Drain();
    EXPECT_THAT(Commands(), IsEmpty());
    EXPECT_EQ(m_paused, 0);
}

TEST_F(ImageDetectTest, IsUsedUpByAHostThatLeavesItOut) {
    StartModule();
    host::Board board = host::GetBoard();
    board.ulCaller = 2;
    host::SetBoard(board);
    EXPECT_EQ(VISCA_SetVin(&kHd30), 0u);
    board.ulCaller = 0;
    host::SetBoard(board);
    EXPECT_EQ(VISCA_SetVin(&kHd30), 0u);
    EXPECT_THAT(Resume(), IsEmpty());
}

TEST_F(ImageDetectTest, GoesOnAfterARefusedStep) {
    StartModule();
    Camera().setFault("error=65#1"); // 90 60 41 to the first register
    EXPECT_EQ(VISCA_SetVin(&kHd30), 1u);
    EXPECT_EQ(m_paused, 0) << "no norm, no detection";
    OnPause([this, first = true](double) mutable {
        if (std::exchange(first, false)) {
            Camera().setFault("error=3#1"); // 90 60 03 to the first command
        }
        return host::WaitDrained(kLimit);
    });
    EXPECT_EQ(VISCA_SetVin(&kHd30), 0u);
    Drain();
    EXPECT_THAT(Commands(), SizeIs(5));
    ExpectSettings({{"icr", 3}, {"wbMode", 5}, {"redGain", 0}, {"blueGain", 254}});
    EXPECT_EQ(TimeOuts(), 0u);
}

} // namespace camera
