// The library's time limits, and what comes after one has passed.
#include <algorithm>
#include <cstring>

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

namespace {

constexpr char kZoomIn[] = "81 01 04 07 26 FF";

} // namespace

class TimeLimitsTest : public CameraTest {
  protected:
    // One command whose completion does not come; returns when the sender has given up.
    void LoseOneCompletion() {
        HoldNextCompletion();
        HurryUntil(kTimeOut);
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
        Drain();
        ASSERT_EQ(TimeOuts(), 1u);
    }
};

TEST_F(TimeLimitsTest, ALostCompletionCostsOnePauseOfTwoSeconds) {
    Start();
    HoldNextCompletion();
    HurryUntil(kTimeOut);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(VISCA_ZoomIn(), 0u);
    }
    Drain();

    EXPECT_THAT(Commands(), ElementsAre(kZoomIn, kZoomIn, kZoomIn, kZoomIn));
    EXPECT_GE(PauseAfterCommand(0), 2.0);
    EXPECT_EQ(HostCount(std::string("DEBUG ") + kTimeOut), 1u);
    EXPECT_EQ(TimeOuts(), 1u) << "no further pause";
    EXPECT_EQ(host::GetCounters().ullCompletions, 3u);
}

TEST_F(TimeLimitsTest, EachCommandToASilentCameraCostsTwoSeconds) {
    Start();
    Camera().setFault("mute");
    SetLibraryTimeScale(20);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(VISCA_ZoomIn(), 0u);
    }
    Drain();
    SetLibraryTimeScale(1);
    EXPECT_EQ(TimeOuts(), 3u);
    EXPECT_GE(PauseAfterCommand(0), 2.0);
    EXPECT_GE(PauseAfterCommand(1), 2.0);

    Camera().clearFault("mute");
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    Drain();
    EXPECT_EQ(State().setting("focusMode"), 3);
    EXPECT_EQ(TimeOuts(), 3u) << "works at once when the camera is back";
}

// A completion that comes too late belongs to nobody any more. It releases no later command.
TEST_F(TimeLimitsTest, ALateCompletionIsDroppedBeforeTheNextCommand) {
    Start();
    LoseOneCompletion();
    Complete();
    ASSERT_TRUE(AwaitDepth(VISCA_CMD_RESULT_QUEUE_ID, 1));
    CatchUp();
    Forget();

    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    Complete();
    Drain();
    EXPECT_EQ(HostCount("DEBUG Drop 1 results of earlier commands"), 1u);
    EXPECT_THAT(Line(), ElementsAre("> 81 01 04 07 26 FF", "< 90 41 FF", "< 90 51 FF", //
                                    "> 81 01 04 07 00 FF", "< 90 41 FF", "< 90 51 FF"));
    ExpectOneInFlight();
}

TEST_F(TimeLimitsTest, ALateCompletionReleasesAtMostTheCommandThatIsInFlightThen) {
    Start();
    LoseOneCompletion();
    Forget();
    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    Complete(); // the late one; it releases zoom in early
    ASSERT_TRUE(AwaitHost("take 1 90 51 FF"));
    Complete(); // that of zoom in
    ASSERT_TRUE(AwaitDepth(VISCA_CMD_RESULT_QUEUE_ID, 1));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    Drain();
    EXPECT_EQ(HostCount("results of earlier commands"), 1u) << "in step again";
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(host::QueueDepth(VISCA_CMD_RESULT_QUEUE_ID), 0u);
}

// 2.4 s from end to end: later than the sender waits.
TEST_F(TimeLimitsTest, AFullZoomTravelOutlastsTheWaitAndLeavesNoDrift) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 4; // 0.6 s
    Start(options);
    HurryUntil(kTimeOut, 10); // 0.2 s
    EXPECT_EQ(VISCA_SetZoomPos(0x4000), 0u);
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    ASSERT_TRUE(host::WaitDrained(kLimit));
    EXPECT_GE(PauseAfterCommand(0), 2.0);
    ASSERT_TRUE(
        AwaitCamera([](const sim::State &state) { return !state.socketBusy[0] && !state.zoomMoving; }));
    ASSERT_TRUE(AwaitDepth(VISCA_CMD_RESULT_QUEUE_ID, 1)) << "the completion of the travel";
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(SonySetRegisterVal(0x20, static_cast<uint8_t>(i)), 0u);
    }
    Drain();
    EXPECT_EQ(Zoom(), 0x4000u);
    EXPECT_EQ(TimeOuts(), 1u);
    EXPECT_EQ(HostCount("DEBUG Drop 1 results of earlier commands"), 1u);
    EXPECT_EQ(host::QueueDepth(VISCA_CMD_RESULT_QUEUE_ID), 0u);
}

TEST_F(TimeLimitsTest, AnInquiryWithoutAnswerSucceedsAfterSixSecondsAndLeavesTheRecordAlone) {
    Start();
    Camera().setFault("mute");
    HurryUntil(kTimeOut);
    ViscaPkt reply;
    std::fill(std::begin(reply.aucData), std::end(reply.aucData), uint8_t{0xA5});
    reply.ulLength = 77;
    const ViscaPkt before = reply;
    const double begin = LibrarySeconds();
    EXPECT_EQ(Ask("81 09 04 47", &reply), 0u);
    EXPECT_GE(LibrarySeconds() - begin, 6.0);
    EXPECT_EQ(memcmp(&reply, &before, sizeof reply), 0);
    EXPECT_EQ(HostCount(std::string("ERROR ") + kTimeOut), 1u);
    EXPECT_EQ(host::GetCounters().ullInquiryTimeouts, 1u);
}

TEST_F(TimeLimitsTest, ReadersOfASilentCameraGetZeroAndWorkAtOnceAfterwards) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 500;
    Start(options);
    EXPECT_EQ(VISCA_SetZoomPos(0x2345), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoom == 0x2345; }));
    Camera().setFault("mute");
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    Camera().clearFault("mute");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(TimeOuts(), 1u);
}

// The stale answer goes to the next inquiry and every later one is shifted: that is how it is.
TEST_F(TimeLimitsTest, AnAnswerLaterThanSixSecondsShiftsTheNextOnes) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 500;
    Start(options);
    EXPECT_EQ(VISCA_SetZoomFocusPos(0x1234, 0x5678), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return !state.zoomMoving && !state.focusMoving; }));
    Camera().setFault("late-answer=400#1"); // 0.8 s; 6 library seconds are 0.3 s
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    ASSERT_TRUE(AwaitHost("put 3 90 50 01 02 03 04 FF unasked"));

    int16_t focus = 0;
    EXPECT_EQ(VISCA_GetFocusPos(&focus), 0u);
    EXPECT_EQ(focus, 0x1234);
    ASSERT_TRUE(AwaitHost("put 3 90 50 05 06 07 08 FF"));
    EXPECT_EQ(Zoom(), 0x5678u);
    ASSERT_TRUE(AwaitHost("put 3 90 50 01 02 03 04 FF", 2));
    EXPECT_EQ(VISCA_GetFocusPos(&focus), 0u);
    EXPECT_EQ(focus, 0x1234);
}

TEST_F(TimeLimitsTest, TheShiftEndsWhenOneAnswerIsLost) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 500;
    Start(options);
    EXPECT_EQ(VISCA_SetZoomPos(0x1234), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoom == 0x1234; }));
    SendRaw("90 50 01 01 01 01 FF");
    ASSERT_TRUE(AwaitHost("put 3 90 50 01 01 01 01 FF unasked"));
    Camera().setFault("mute");
    EXPECT_EQ(Zoom(), 0x1111u); // takes the stale one; its own answer is lost
    CatchUp();
    Camera().clearFault("mute");
    EXPECT_EQ(Zoom(), 0x1234u);
}

TEST_F(TimeLimitsTest, ASecondOfSilenceInsideAReplyEndsIt) {
    Start();
    SendRaw("90 50 01 02");
    HurryUntil("Unexpected Ack");
    ASSERT_TRUE(AwaitHost("ERROR Unexpected Ack, fail exit"));
    EXPECT_EQ(HostCount("dump recv:ViscaPacket: 0x90 0x50 0x01 0x02"), 2u);
    EXPECT_EQ(Zoom(), 0u) << "the next reply is good";
    EXPECT_THAT(HostSteps("put"), ElementsAre("put 3 90 50 00 00 00 00 FF"));
}

TEST_F(TimeLimitsTest, WaitingForTheQueueGivesUpAfterItsSeconds) {
    Start();
    Camera().setFault("mute");
    SetLibraryTimeScale(10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u); // 20 s of silence
    }
    const double begin = LibrarySeconds();
    EXPECT_EQ(ViscaWaitCmdQueueEmpty(3), 1u);
    EXPECT_GE(LibrarySeconds() - begin, 3.0);
    EXPECT_EQ(HostCount("WARN [ 30] Wait queue empty, usleep(100,000)"), 1u);
    EXPECT_EQ(HostCount("WARN MsgQueue is busy time out [30]"), 1u);
    host::EmptyQueue(VISCA_CMD_QUEUE_ID);
}

} // namespace camera
