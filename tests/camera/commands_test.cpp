// Commands: one in flight, in order, each released by its result.
#include <cstdio>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

// Writing a value to register 0x20, without header and terminator added.
std::string RegisterWrite(unsigned value) {
    char text[40];
    std::snprintf(text, sizeof text, "81 01 04 24 20 %02X %02X", value >> 4, value & 0x0F);
    return text;
}

} // namespace

class CommandsTest : public CameraTest {};

TEST_F(CommandsTest, TheSecondIsWrittenAfterTheCompletionOfTheFirst) {
    Start();
    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    Complete();
    Drain();

    EXPECT_THAT(Line(), ElementsAre("> 81 01 04 07 26 FF", "< 90 41 FF", "< 90 51 FF", //
                                    "> 81 01 04 07 00 FF", "< 90 41 FF", "< 90 51 FF"));
    ExpectOneInFlight();
}

TEST_F(CommandsTest, AnAcknowledgementAloneReleasesNothing) {
    Start();
    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    for (int i = 0; i < 5; ++i) {
        SendRaw("90 41 FF");
        Zoom(); // the answer comes behind the acknowledgement, which has been dealt with then
    }
    EXPECT_THAT(HostSteps("send 81 01"), ElementsAre("send 81 01 04 07 26 FF"));
    EXPECT_THAT(HostSteps("put 1"), IsEmpty());
    Complete();
    Drain();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 07 26 FF", kZoomStop));
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(CommandsTest, FiftyKeepTheirOrderAndGoOneByOne) {
    Start();
    std::vector<std::string> expected;
    for (unsigned value = 0; value < 50; ++value) {
        EXPECT_EQ(SonySetRegisterVal(0x20, static_cast<uint8_t>(value)), 0u);
        expected.push_back(RegisterWrite(value) + " FF");
    }
    Drain();

    EXPECT_THAT(Commands(), ::testing::ElementsAreArray(expected));
    ExpectOneInFlight();
    EXPECT_EQ(State().registers[0x20], 49u);
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(host::GetCounters().ullCompletions, 50u);
}

TEST_F(CommandsTest, AFullQueueRefusesOneAndLosesNone) {
    Start();
    HoldNextCompletion();
    EXPECT_EQ(Queue(RegisterWrite(1)), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF")) << "the sender holds the first, the queue is empty again";
    for (uint32_t i = 0; i < host::kQueueCapacity; ++i) {
        EXPECT_EQ(Queue(RegisterWrite(i % 200)), 0u);
    }
    EXPECT_EQ(VISCA_ZoomStop(), 1u);
    EXPECT_EQ(HostCount("ERROR Visca QueueCmdCushion fail"), 1u);
    EXPECT_EQ(VISCA_IsMsgQueueEmpty(), 0u);
    Complete();
    Drain();

    EXPECT_EQ(State().seenCount("01 04 24"), host::kQueueCapacity + 1);
    EXPECT_EQ(State().seenCount("01 04 07"), 0u);
    EXPECT_EQ(State().registers[0x20], 55u) << "the last of 256 has the value 255 % 200";
    EXPECT_EQ(VISCA_IsMsgQueueEmpty(), 1u);
}

TEST_F(CommandsTest, ARefusalReleasesTheNextAtOnce) {
    Start();
    EXPECT_EQ(VISCA_FocusNear(), 0u);       // not in auto focus: 90 61 41
    EXPECT_EQ(Queue("81 01 04 7F 05"), 0u); // no such command: 90 60 02
    Drain();
    Camera().setFault("error=3#1"); // buffer full: 90 60 03
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();

    EXPECT_THAT(Commands(), SizeIs(4));
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(host::GetCounters().ullErrors, 3u);
    ExpectOneInFlight();
}

TEST_F(CommandsTest, AFullCameraIsVisibleAndNothingIsSentAgain) {
    Start();
    Camera().setFault("busy");
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    Drain();

    EXPECT_EQ(State().seenCount("01 04 07"), 9u);
    EXPECT_EQ(State().sentCount("error 03"), 3u);
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[0x03], 3u);
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(CommandsTest, InStandbyTheRefusalIsVisible) {
    Start();
    Camera().setFault("standby");
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    Drain();

    EXPECT_EQ(State().power, sim::Power::standby);
    EXPECT_FALSE(State().zoomMoving);
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[0x41], 1u);
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(zoom, 7u);
}

TEST_F(CommandsTest, ALostAcknowledgementHasNoEffect) {
    Start();
    Camera().setFault("no-ack");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    Drain();

    EXPECT_EQ(State().sentCount("ack"), 1u) << "the one of start-up";
    EXPECT_EQ(State().sentCount("completion"), 6u);
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(CommandsTest, ACompletionBeforeItsAcknowledgementIsAccepted) {
    Start();
    Camera().setFault("reorder#1");
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(host::WaitDrained(kLimit));
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    EXPECT_THAT(Line(), ElementsAre("> 81 01 04 07 00 FF", "< 90 51 FF", "< 90 41 FF"));
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(host::GetCounters().ullCompletions, 2u);
}

class WrongSocketTest : public CameraTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(WrongSocketTest, IsAcceptedAsAResult) {
    Start();
    Camera().setFault("wrong-socket=" + std::to_string(GetParam()));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    Drain();
    EXPECT_THAT(Commands(), SizeIs(3));
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(Zoom(), 0u);
}

INSTANTIATE_TEST_SUITE_P(OfCompletions, WrongSocketTest, ::testing::Values(2u, 3u, 15u),
                         ::testing::PrintToStringParamName());

TEST_F(CommandsTest, AnInquiryOnTheCommandQueueIsThrownAway) {
    Start();
    HoldNextCompletion();
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_EQ(Queue("81 09 04 47"), 0u);
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    Complete();
    Drain();
    EXPECT_THAT(Heard(), ElementsAre(kZoomStop, "81 01 04 07 26 FF"));
    EXPECT_EQ(HostCount("DEBUG Get GET REQ msg in SET Req msg queue,discard it!"), 1u);
}

} // namespace camera
