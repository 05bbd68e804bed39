// The adapter is pulled while everything runs, and plugged in again.
#include <unistd.h>

#include "tests/camera/camera_test.h"

namespace camera {

class AdapterTest : public CameraTest {
  protected:
    // Behind a link, as a device of a fixed name that comes back under another number.
    void StartBehindALink() {
        sim::Options options = sim::Options::fast();
        options.baud = 19200;
        options.timeScale = 500;
        options.link = ::testing::TempDir() + "viscacam-adapter-" + std::to_string(getpid());
        Start(options);
        EXPECT_EQ(VISCA_SetZoomPos(0x2345), 0u);
        Drain();
        ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoom == 0x2345; }));
        Forget();
    }

    void Pull() {
        Camera().hangUp();
        ASSERT_TRUE(AwaitHost("vanished"));
    }
};

TEST_F(AdapterTest, PulledOutCostsNeitherProcessorNorLog) {
    StartBehindALink();
    Pull();
    const double before = ProcessorSeconds();
    EXPECT_GT(ReceiverSleeps(std::chrono::milliseconds(2400)), 0.5);
    EXPECT_LT(ProcessorSeconds() - before, 0.6);
    EXPECT_GE(HostCount("ERROR read error, fail exit"), 1u);
    // The library's pauses grow from 20 ms to 1 s: 3 lines while they grow, then one a second. The host adds
    // one.
    EXPECT_LE(HostSteps("ERROR").size() + HostSteps("WARN").size(), 8u);
}

TEST_F(AdapterTest, PulledOutMakesWritersFailFast) {
    StartBehindALink();
    Pull();
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(zoom, 7u);
    EXPECT_EQ(VISCA_ZoomIn(), 0u) << "queued; the sender sees what comes of it";
    ASSERT_TRUE(host::WaitDrained(kLimit));
    ASSERT_TRUE(AwaitHost("ERROR DRV_ComSend fail", 2));
    EXPECT_THAT(HostSteps("sent"), ElementsAre("sent -1", "sent -1"));
    EXPECT_EQ(TimeOuts(), 0u) << "nothing is waited for that was not written";
    EXPECT_EQ(VISCA_IsMsgQueueEmpty(), 1u);
}

TEST_F(AdapterTest, PluggedInAgainGoesOnAtTheLastRateBehindTheSameDescriptor) {
    StartBehindALink();
    const int32_t fd = ViscaGetCamComFd();
    Pull();
    Camera().replug();
    ASSERT_TRUE(AwaitHost("back 19200"));
    EXPECT_EQ(Zoom(), 0x2345u) << "the camera ran on";
    EXPECT_EQ(VISCA_SetZoomPos(0x1111), 0u);
    Drain();
    EXPECT_EQ(State().zoom, 0x1111u);
    EXPECT_EQ(ViscaGetCamComFd(), fd);
}

TEST_F(AdapterTest, ComesBackFromBeingPulledOutTwice) {
    StartBehindALink();
    for (size_t i = 1; i <= 2; ++i) {
        Camera().hangUp();
        ASSERT_TRUE(AwaitHost("vanished", i));
        Camera().replug();
        ASSERT_TRUE(AwaitHost("back 19200", i));
        EXPECT_EQ(Zoom(), 0x2345u);
    }
    EXPECT_EQ(TimeOuts(), 0u);
}

} // namespace camera
