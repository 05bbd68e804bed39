// Inquiries: between commands, from several threads, and what a running one holds up.
#include <future>
#include <thread>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

sim::Options QuickLens() {
    sim::Options options = sim::Options::fast();
    options.timeScale = 500; // a full travel of the lens takes milliseconds
    return options;
}

constexpr int kRounds = 25;

void AskZoom() {
    for (int i = 0; i < kRounds; ++i) {
        uint32_t zoom = 0;
        EXPECT_EQ(VISCA_GetZoomPos(&zoom), 0u);
        EXPECT_EQ(zoom, 0x1234u);
    }
}

void AskFocus() {
    for (int i = 0; i < kRounds; ++i) {
        int16_t focus = 0;
        EXPECT_EQ(VISCA_GetFocusPos(&focus), 0u);
        EXPECT_EQ(focus, 0x5678);
    }
}

void AskRegister(uint8_t number, uint8_t expected) {
    for (int i = 0; i < kRounds; ++i) {
        uint8_t value = 0;
        EXPECT_EQ(SonyGetRegisterVal(number, &value), 0u);
        EXPECT_EQ(value, expected);
    }
}

} // namespace

class InquiriesTest : public CameraTest {
  protected:
    // Zoom 0x1234, focus 0x5678, register 0x20 0xA5, register 0x21 0x3C.
    void GiveTheCameraValues() {
        EXPECT_EQ(VISCA_SetZoomFocusPos(0x1234, 0x5678), 0u);
        EXPECT_EQ(SonySetRegisterVal(0x20, 0xA5), 0u);
        EXPECT_EQ(SonySetRegisterVal(0x21, 0x3C), 0u);
        Drain();
        ASSERT_TRUE(
            AwaitCamera([](const sim::State &state) { return !state.zoomMoving && !state.focusMoving; }));
        Forget();
    }
};

TEST_F(InquiriesTest, AreAnsweredBetweenACommandAndItsCompletion) {
    Start(QuickLens());
    GiveTheCameraValues();
    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    EXPECT_EQ(Zoom(), 0x1234u);
    CatchUp();
    Complete();
    Drain();

    EXPECT_THAT(Line(), ElementsAre("> 81 01 04 07 00 FF", "< 90 41 FF", //
                                    "> 81 09 04 47 FF", "< 90 50 01 02 03 04 FF", "< 90 51 FF"));
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(InquiriesTest, OfFourThreadsGoOneByOneWhileCommandsFlow) {
    Start(QuickLens());
    GiveTheCameraValues();
    std::vector<std::thread> threads;
    threads.emplace_back(AskZoom);
    threads.emplace_back(AskFocus);
    threads.emplace_back(AskRegister, uint8_t{0x20}, uint8_t{0xA5});
    threads.emplace_back(AskRegister, uint8_t{0x21}, uint8_t{0x3C});
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    Drain();

    bool open = false;
    for (const std::string &step : Line()) {
        if (StartsWith(step, "> 81 09")) {
            EXPECT_FALSE(open) << "a second inquiry before the answer to the first";
            open = true;
        } else if (StartsWith(step, "< 90 50")) {
            open = false;
        }
    }
    ExpectOneInFlight();
    EXPECT_THAT(Commands(), SizeIs(100));
    EXPECT_EQ(host::GetCounters().ullAnswers, 4u * kRounds);
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 0u);
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(InquiriesTest, HoldUpWhoeverAsksWhetherTheQueueIsEmpty) {
    Start();
    Camera().setFault("late-answer=0.3#1");
    auto inquiry = std::async(std::launch::async, [] { return Zoom(); });
    ASSERT_TRUE(AwaitWire("> 81 09 04 47 FF"));
    EXPECT_EQ(VISCA_IsMsgQueueEmpty(), 1u);
    EXPECT_THAT(HostSteps("take 3"), ElementsAre("take 3 90 50 00 00 00 00 FF"))
        << "the inquiry was over first";
    EXPECT_EQ(inquiry.get(), 0u);
}

TEST_F(InquiriesTest, HoldUpWhoeverWaitsForTheQueueToRunEmpty) {
    Start();
    Camera().setFault("late-answer=0.3#1");
    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    auto inquiry = std::async(std::launch::async, [] { return Zoom(); });
    ASSERT_TRUE(AwaitWire("> 81 09 04 47 FF"));
    auto wait = std::async(std::launch::async, [] { return ViscaWaitCmdQueueEmpty(20); });
    inquiry.get();
    ASSERT_TRUE(AwaitHost("WARN [  1] Wait queue empty, usleep(100,000)")) << "zoom stop still waits";
    Complete();
    EXPECT_EQ(wait.get(), 0u);
    EXPECT_EQ(VISCA_IsMsgQueueEmpty(), 1u);
    EXPECT_EQ(ViscaWaitCmdQueueEmpty(0), 1u) << "no time at all is always too short";
}

TEST_F(InquiriesTest, RefusedByTheCameraFailAndLeaveTheRecordAlone) {
    Start();
    Camera().setFault("error=65#1"); // 90 60 41 FF
    ViscaPkt reply = {};
    reply.ulLength = 99;
    EXPECT_EQ(Ask("81 09 04 47", &reply), 1u);
    EXPECT_EQ(reply.ulLength, 99u);
    EXPECT_EQ(Ask("81 09 04 47", &reply), 0u);
    EXPECT_EQ(Hex(reply.aucData, reply.ulLength), "90 50 00 00 00 00 FF");
}

// An answer that comes twice is taken by the next inquiry as its own, and so on until somebody empties the
// queue: that is how it is, and tools name it.
TEST_F(InquiriesTest, AreShiftedByADoubledAnswerUntilTheHostEmptiesTheQueue) {
    Start(QuickLens());
    GiveTheCameraValues();
    Camera().setFault("dup-answer#1");
    EXPECT_EQ(Zoom(), 0x1234u);
    ASSERT_TRUE(AwaitHost("put 3 90 50 01 02 03 04 FF unasked"));

    int16_t focus = 0;
    EXPECT_EQ(VISCA_GetFocusPos(&focus), 0u);
    EXPECT_EQ(focus, 0x1234);
    ASSERT_TRUE(AwaitHost("put 3 90 50 05 06 07 08 FF"));
    uint8_t value = 0;
    EXPECT_EQ(SonyGetRegisterVal(0x20, &value), 0u);
    EXPECT_EQ(value, 0x56) << "the first two bytes of the focus position";
    ASSERT_TRUE(AwaitHost("put 3 90 50 0A 05 FF"));

    ASSERT_TRUE(AwaitDepth(VISCA_INQUIRY_RESULT_QUEUE_ID, 1));
    EXPECT_EQ(host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID), 1u);
    EXPECT_EQ(Zoom(), 0x1234u);
    EXPECT_EQ(host::QueueDepth(VISCA_INQUIRY_RESULT_QUEUE_ID), 0u);
}

} // namespace camera
