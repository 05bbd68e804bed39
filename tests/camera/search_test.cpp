// The search for a camera that is not there, or not yet. A minute of it takes a second on the hurried clock.
#include <thread>

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

class SearchTest : public CameraTest {
  protected:
    void PlugInWithoutPower() {
        sim::Options options = sim::Options::fast();
        options.start = sim::Power::off;
        PlugIn(options);
    }
};

TEST_F(SearchTest, GivesUpAfterTwentyAttemptsAndStartUpGoesOn) {
    PlugInWithoutPower();
    SetLibraryTimeScale(100);
    const double begin = LibrarySeconds();
    EXPECT_EQ(VISCA_Init(0), 0u);
    EXPECT_GE(LibrarySeconds() - begin, 50.0) << "20 times three rates of half a second and a second's pause";
    SetLibraryTimeScale(1);

    EXPECT_THAT(HostSteps("ERROR AdaptCamComBaudRate fail"), SizeIs(20));
    EXPECT_EQ(HostCount("ERROR AdaptCamComBaudRate fail 20 times, try it after 1 sec"), 1u);
    EXPECT_THAT(HostSteps("rate "), SizeIs(60));
    EXPECT_EQ(HostCount("ERROR --------------Can not ctrl the sony camera module-------------"), 20u);
    EXPECT_EQ(HostCount("ERROR Visca Cam Com Init fail exit"), 1u);
    EXPECT_EQ(ViscaIsCamCanCtrl(), 0u);
    EXPECT_EQ(VISCA_ZoomIn(), 1u);
}

TEST_F(SearchTest, ThatFoundNothingIsNotRepeatedByASecondInit) {
    PlugInWithoutPower();
    SetLibraryTimeScale(200);
    EXPECT_EQ(ViscaCamComInit(0), 1u);
    SetLibraryTimeScale(1);
    Camera().powerApply();
    EXPECT_EQ(ViscaCamComInit(0), 0u);
    EXPECT_EQ(HostCount("WARN No need to done initialization again"), 1u);
    EXPECT_EQ(ViscaIsCamCanCtrl(), 0u);
}

TEST_F(SearchTest, FindsACameraThatGetsItsPowerLater) {
    PlugInWithoutPower();
    HurryUntil("AdaptCamComBaudRate fail 1 times");
    std::thread power([this] {
        EXPECT_TRUE(AwaitHost("ERROR AdaptCamComBaudRate fail 1 times"));
        Camera().powerApply();
    });
    EXPECT_EQ(VISCA_Init(0), 0u);
    power.join();
    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
    EXPECT_EQ(HostCount("INFO The current baudrate is 9600"), 1u);
    EXPECT_LT(HostCount("ERROR AdaptCamComBaudRate fail"), 20u);
}

TEST_F(SearchTest, FindsACameraOfAnotherRateThatBootsSilently) {
    sim::Options options = sim::Options::fast();
    options.baud = 19200;
    options.start = sim::Power::booting;
    options.silentWhileBooting = true;
    options.bootTime = std::chrono::milliseconds(500);
    PlugIn(options);
    SetLibraryTimeScale(10);
    EXPECT_EQ(VISCA_Init(0), 0u);
    SetLibraryTimeScale(1);
    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
    EXPECT_EQ(State().power, sim::Power::on);
    EXPECT_EQ(HostCount("INFO The current baudrate is 19200"), 1u);
}

TEST_F(SearchTest, FindsACameraThatAnswersWhileItBoots) {
    sim::Options options = sim::Options::fast();
    options.start = sim::Power::booting;
    options.bootTime = std::chrono::minutes(10);
    PlugIn(options);
    HurryUntil(kTimeOut); // digital zoom off is ignored by a camera that boots
    StartLibrary();
    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
    EXPECT_EQ(State().power, sim::Power::booting);
    EXPECT_EQ(State().setting("dzoom"), 2);
}

} // namespace camera
