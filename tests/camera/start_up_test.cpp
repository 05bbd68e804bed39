// Start-up with a camera that is there, and with a port that is not.
#include <termios.h>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

unsigned LineRate() {
    termios settings{};
    EXPECT_EQ(tcgetattr(ViscaGetCamComFd(), &settings), 0);
    switch (cfgetospeed(&settings)) {
    case B9600:
        return 9600;
    case B19200:
        return 19200;
    case B38400:
        return 38400;
    default:
        return 0;
    }
}

} // namespace

class StartUpTest : public CameraTest {};

class StartUpRateTest : public CameraTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(StartUpRateTest, FindsTheCameraAndLeavesItsRateSet) {
    sim::Options options = sim::Options::fast();
    options.baud = GetParam();
    PlugIn(options);
    StartLibrary();

    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
    EXPECT_EQ(LineRate(), GetParam());
    EXPECT_EQ(HostCount("INFO The current baudrate is " + std::to_string(GetParam())), 1u);
    EXPECT_THAT(Heard(), ElementsAre(kProbe, kDzoomOff));
    EXPECT_EQ(State().setting("dzoom"), 3);
    EXPECT_EQ(State().ignoredPackets, 0u);
}

INSTANTIATE_TEST_SUITE_P(AtEachRate, StartUpRateTest, ::testing::Values(9600u, 19200u, 38400u),
                         ::testing::PrintToStringParamName());

TEST_F(StartUpTest, TriesTheSlowerRatesBeforeTheFastest) {
    sim::Options options = sim::Options::fast();
    options.baud = 38400;
    PlugIn(options);
    StartLibrary();

    EXPECT_THAT(HostSteps("rate "), ElementsAre("rate 9600", "rate 19200", "rate 38400"));
    EXPECT_THAT(HostSteps("DEBUG i="), ElementsAre("DEBUG i=0 j=0", "DEBUG i=1 j=0", "DEBUG i=2 j=2"));
    EXPECT_EQ(State().noiseBytes, 10u) << "two probes of 5 bytes at rates that the camera does not hear";
}

class StartUpTypeTest : public CameraTest, public ::testing::WithParamInterface<const char *> {};

TEST_P(StartUpTypeTest, SwitchesDigitalZoomOffAndZoomsAtSpeedSix) {
    PlugIn(sim::Options::fast(GetParam()));
    StartLibrary();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();

    EXPECT_THAT(Heard(), ElementsAre(kProbe, kDzoomOff, "81 01 04 07 26 FF", kZoomStop));
    EXPECT_EQ(State().setting("dzoom"), 3);
}

INSTANTIATE_TEST_SUITE_P(OfEachBlock, StartUpTypeTest, ::testing::Values("sony1", "sony3", "sony4", "sony5"),
                         [](const auto &block) { return std::string(block.param); });

TEST_F(StartUpTest, SendsNothingToAnUnknownTypeOfTheFamily) {
    PlugIn();
    SetModuleType(0x02000002);
    StartLibrary();
    EXPECT_EQ(State().setting("dzoom"), 2) << "digital zoom stays as the block has it at power-up";
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();

    EXPECT_THAT(Heard(), ElementsAre(kProbe, "81 01 04 07 25 FF", kZoomStop));
}

TEST_F(StartUpTest, OnlyFindsTheRateForAModuleOfAnotherFamily) {
    PlugIn();
    SetModuleType(0x01000001);
    EXPECT_EQ(VISCA_Init(5), 0u) << "port 0 is opened whatever was asked for";
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    CatchUp();

    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
    EXPECT_THAT(Heard(), ElementsAre(kProbe));
    EXPECT_EQ(HostCount("DEBUG create"), 0u);
    EXPECT_THAT(HostSteps("put "), IsEmpty());
}

TEST_F(StartUpTest, RegistersBothThreadsWithTheHost) {
    Start();
    std::vector<std::string> names;
    for (const host::ThreadInfo &thread : host::Threads()) {
        EXPECT_TRUE(thread.bAlive) << thread.strName;
        names.push_back(std::to_string(thread.ulType) + " " + thread.strName);
    }
    EXPECT_THAT(names, ::testing::IsSupersetOf({"4 ViscaQueueMsgProc", "3 ViscaAckMsgProc"}));
}

TEST_F(StartUpTest, OpeningThePortASecondTimeDoesNothing) {
    Start();
    const int32_t fd = ViscaGetCamComFd();
    EXPECT_EQ(ViscaCamComInit(0), 0u);
    EXPECT_EQ(ViscaCamComInit(3), 0u);
    CatchUp();

    EXPECT_EQ(HostCount("WARN No need to done initialization again"), 2u);
    EXPECT_EQ(ViscaGetCamComFd(), fd);
    EXPECT_THAT(HostSteps("opened"), IsEmpty());
    EXPECT_THAT(Heard(), IsEmpty());
}

TEST_F(StartUpTest, GoesOnWithoutAPortThatCannotBeOpened) {
    ASSERT_EQ(host::MapPort(0, "/dev/viscacam-no-such-device"), "");
    SetModuleType(0x02000001);
    EXPECT_EQ(VISCA_Init(0), 0u);

    EXPECT_EQ(HostCount("ERROR Open sony ctrl serial port fail exit"), 1u);
    EXPECT_EQ(HostCount("ERROR Visca Cam Com Init fail exit"), 1u);
    EXPECT_EQ(ViscaGetCamComFd(), -1);
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_ZoomIn(), 1u);
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(zoom, 7u);
    EXPECT_EQ(HostCount("WARN Cam Can't Ctrl return directly"), 3u)
        << "digital zoom off, zoom in, the inquiry";
}

TEST_F(StartUpTest, DoesNotSpinOnAPortThatCannotBeOpened) {
    ASSERT_EQ(host::MapPort(0, "/dev/viscacam-no-such-device"), "");
    SetModuleType(0x02000001);
    ASSERT_EQ(VISCA_Init(0), 0u);
    while (host::Threads().size() < 2) { // sender and receiver
        Pass(std::chrono::milliseconds(1));
    }
    Forget();

    EXPECT_GT(ReceiverSleeps(std::chrono::milliseconds(600)), 0.5);
    EXPECT_LE(HostCount(""), 8u) << "the log is not flooded either";
}

// 6 byte times in, 7 out and the block's own latencies: nothing here may rely on a camera that answers at
// once.
TEST_F(StartUpTest, WorksAtThePaceOfARealBlock) {
    sim::Options options;
    options.start = sim::Power::on;
    options.latency = sim::Latency::realLine();
    Start(options);
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    Zoom();
    Drain();

    EXPECT_THAT(Commands(), ElementsAre("81 01 04 07 26 FF", kZoomStop, "81 01 04 38 03 FF"));
    EXPECT_GE(PauseAfterCommand(0), 0.050) << "a completion takes its time on a real line";
    EXPECT_GE(PauseAfterCommand(1), 0.050);
    EXPECT_EQ(TimeOuts(), 0u);
    ExpectOneInFlight();
    EXPECT_EQ(State().setting("focusMode"), 3);
}

} // namespace camera
