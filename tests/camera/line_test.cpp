// What a bad line does to replies, as far as nothing has to be waited for: the receiver stays in step.
#include "tests/camera/camera_test.h"

namespace camera {

class LineTest : public CameraTest {
  protected:
    // The camera's zoom is at 0x2345, so that a right answer is told from no answer.
    void StartAtZoom() {
        sim::Options options = sim::Options::fast();
        options.timeScale = 500;
        Start(options);
        EXPECT_EQ(VISCA_SetZoomPos(0x2345), 0u);
        Drain();
        ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoom == 0x2345; }));
        Forget();
    }
};

TEST_F(LineTest, JunkBeforeAReplyIsSkippedAndLoggedByteByByte) {
    StartAtZoom();
    SendRaw("00 12 34");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_THAT(
        HostSteps("WARN unexpected byte"),
        ElementsAre("WARN unexpected byte[0x0]", "WARN unexpected byte[0x12]", "WARN unexpected byte[0x34]"));
}

TEST_F(LineTest, JunkThatEndsInATerminatorIsDropped) {
    StartAtZoom();
    SendRaw("12 34 FF");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(HostCount("WARN unexpected byte"), 3u);
    EXPECT_EQ(HostCount("Unexpected Ack"), 0u);
}

TEST_F(LineTest, BurstsOfTerminatorsAndZerosCostALogLineAByte) {
    StartAtZoom();
    SendRaw("FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(HostCount("WARN unexpected byte"), 16u);
    EXPECT_EQ(HostCount("Unexpected Ack"), 0u);
}

TEST_F(LineTest, AReplyOfTwoBytesIsRejected) {
    StartAtZoom();
    SendRaw("90 FF");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(HostCount("dump recv:ViscaPacket: 0x90 0xff"), 2u) << "dumped again beside the error";
    EXPECT_EQ(HostCount("ERROR Unexpected Ack, fail exit"), 1u);
}

TEST_F(LineTest, AReplyWithoutEndIsRejectedAtSixteenBytesAndTheNextIsGood) {
    StartAtZoom();
    SendRaw("90 50 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F FF");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(HostCount("ERROR Unexpected Ack, fail exit"), 1u);
    EXPECT_THAT(HostSteps("WARN unexpected byte"),
                ElementsAre("WARN unexpected byte[0xf]", "WARN unexpected byte[0xff]"));
}

TEST_F(LineTest, AReplyOfSixteenBytesIsTaken) {
    StartAtZoom();
    SendRaw("90 50 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D FF");
    ASSERT_TRUE(AwaitHost("put 3 90 50 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D FF unasked"));
}

TEST_F(LineTest, ManyRepliesInOneReadAreAllHandledInOrder) {
    StartAtZoom();
    SendRaw("90 41 FF 90 51 FF 90 50 01 02 03 04 FF 90 42 FF 12 FF 90 62 41 FF 90 60 41 FF 90 52 FF");
    ASSERT_TRUE(AwaitHost("put 1 90 52 FF"));
    EXPECT_THAT(HostSteps("put"),
                ElementsAre("put 1 90 51 FF", "put 3 90 50 01 02 03 04 FF unasked", "put 1 90 62 41 FF",
                            "put 3 90 60 41 FF unasked", "put 1 90 52 FF"));
}

TEST_F(LineTest, MergedRepliesOfACommandAndAnInquiryReachTheRightOnes) {
    StartAtZoom();
    Camera().setFault("merge=100");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
        EXPECT_EQ(Zoom(), 0x2345u);
    }
    Drain();
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(HostCount("unexpected byte"), 0u);
    ExpectOneInFlight();
}

class SplitTest : public LineTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(SplitTest, RepliesAreAssembled) {
    StartAtZoom();
    Camera().setFault("split=" + std::to_string(GetParam() * 500)); // the camera's time runs 500 times faster
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(Zoom(), 0x2345u);
    Drain();
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(HostCount("Unexpected Ack"), 0u);
}

INSTANTIATE_TEST_SUITE_P(WithGapsOfMilliseconds, SplitTest, ::testing::Values(1u, 20u),
                         ::testing::PrintToStringParamName());

TEST_F(LineTest, AGapOfHalfASecondInsideAReplyIsWaitedFor) {
    Start();
    Camera().setFault("split=500#1");
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(HostCount("Unexpected Ack"), 0u);
    EXPECT_THAT(HostSteps("take 3"), ElementsAre("take 3 90 50 00 00 00 00 FF"));
}

TEST_F(LineTest, UnknownKindsOfReplyAreLoggedAndDropped) {
    StartAtZoom();
    for (const char *reply :
         {"90 10 FF", "90 2A 01 FF", "90 38 FF", "90 70 FF", "90 A1 02 03 FF", "90 F0 FF"}) {
        SendRaw(reply);
    }
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(HostCount("ERROR Unexpected Ack, fail exit"), 6u);
    EXPECT_THAT(HostSteps("put"), ElementsAre("put 3 90 50 02 03 04 05 FF"));
}

TEST_F(LineTest, ReportsAndTuningAnswersOfAModuleReachNoQueue) {
    StartAtZoom();
    SendRaw("90 03 01 FF 66 02 61 62");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(HostCount("WARN"), 1u) << "the report is of no kind that is known";
    EXPECT_THAT(HostSteps("put"), ElementsAre("put 3 90 50 02 03 04 05 FF"));
}

TEST_F(LineTest, AFloodOfAcknowledgementsStopsNeitherCommandsNorInquiries) {
    sim::Options options = sim::Options::fast();
    options.baud = 38400;
    Start(options);
    Camera().setFault("flood");
    ASSERT_TRUE(AwaitWire("< 90 41 FF", 50));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(SonySetRegisterVal(0x20, static_cast<uint8_t>(i + 1)), 0u);
        EXPECT_EQ(Zoom(), 0u);
    }
    Drain();
    EXPECT_EQ(State().registers[0x20], 10u);
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(HostCount("unexpected byte"), 0u);
    ExpectOneInFlight();
}

TEST_F(LineTest, AnEndlessReplyCostsALogLineAByteAndTwoDumps) {
    StartAtZoom();
    Camera().setFault("length=1000#1");
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    Camera().clearFault("length");
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_LE(HostCount("WARN unexpected byte"), 1000u);
    EXPECT_LE(HostCount("dump recv"), 2u + 5u) << "two of the endless one, one or two of each good one";
}

} // namespace camera
