// Faults that cost time: what the library waits for in vain, and not longer.
#include "tests/faults/fault_test.h"

namespace faults {

namespace {

struct Cost {
    const char *name;
    const char *fault;
};

void PrintTo(const Cost &value, std::ostream *out) {
    *out << value.name;
}

// Each costs the command that it hits 2 s.
const Cost kOfCommands[] = {
    {"F01_LostOnTheWay", "drop-tx=1#1"},
    {"F03_MergedWithItsAcknowledgement", "drop-ff=1#1"},
    {"F05_Changed", "flip=1"},
    {"F09_Silence", "mute"},
    {"F12_CompletionLost", "no-completion=1"},
    {"F15_CompletionForSocketZero", "wrong-socket=0"},
    {"F16_AnotherAddress", "address=2"},
    {"F22_AnotherRate", "rate=38400"},
};

// Each costs the inquiry that it hits 6 s.
const Cost kOfInquiries[] = {
    {"F01_LostOnTheWay", "drop-tx=1#1"},
    {"F02_WithoutFirstByte", "drop-rx=1#1"},
    {"F03_WithoutEnd", "drop-ff=1#1"},
    {"F04_Doubled", "dup=1"},
    {"F09_Silence", "mute"},
    {"F16_AnotherAddress", "address=2#1"},
    {"F17_SyntaxErrorTakenForACommandsResult", "error=0x02"},
    {"F17_BufferFullTakenForACommandsResult", "error=0x03"},
    {"F19_AnsweredTooLate", "late-answer=0.6#1"}, // of the camera's time; 6 s are 0.3 s of it
    {"F22_AnotherRate", "rate=19200"},
    {"F28_NotRead", "stall"},
};

std::string Name(const ::testing::TestParamInfo<Cost> &info) {
    return info.param.name;
}

} // namespace

class CommandCosts : public FaultTest, public ::testing::WithParamInterface<Cost> {};

TEST_P(CommandCosts, AreTwoSeconds) {
    Begin();
    Expect(20); // what comes at a wrong rate is not what the camera has sent
    Strike(GetParam().fault);
    HurryUntil(kTimeOut, kHurry);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_TRUE(host::WaitDrained(kLimit));
    Camera().clearFaults();
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_TRUE(host::WaitDrained(kLimit));
    EXPECT_GE(PauseAfterCommand(0), kCommandLimit);
    EXPECT_LE(PauseAfterCommand(0), kCommandLimit + kSlack);
    EXPECT_EQ(host::GetCounters().ullCommandTimeouts, 1u);
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Faults, CommandCosts, ::testing::ValuesIn(kOfCommands), Name);

class InquiryCosts : public FaultTest, public ::testing::WithParamInterface<Cost> {};

TEST_P(InquiryCosts, AreSixSecondsAndTheAnswerIsNone) {
    Begin();
    Expect(20);
    Strike(GetParam().fault);
    HurryUntil(kTimeOut, kHurry);
    const double begin = LibrarySeconds();
    uint8_t value = 7;
    EXPECT_EQ(Read(&value), 0u);
    EXPECT_GE(LibrarySeconds() - begin, kInquiryLimit);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(host::GetCounters().ullInquiryTimeouts, 1u);
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Faults, InquiryCosts, ::testing::ValuesIn(kOfInquiries), Name);

using TimeFaults = FaultTest;

TEST_F(TimeFaults, F06_AGapOfHalfASecondIsWaitedFor) {
    Begin();
    SetLibraryTimeScale(0.5); // what is stated of 1 s then takes 2 s, and a slow machine may add one
    Strike("split=1000#1");
    WorkWithoutLoss(1);
    Recover();
}

TEST_F(TimeFaults, F13_LateCompletionsReleaseAtMostOneLaterCommandEach) {
    Begin();
    Strike("late=0.3"); // of the camera's time; 2 s are 0.1 s of it
    SetLibraryTimeScale(kHurry);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    EXPECT_TRUE(host::WaitDrained(kLimit));
    SetLibraryTimeScale(1);
    EXPECT_LE(TimeOuts(), 3u);
    EXPECT_GE(TimeOuts(), 1u);
    Camera().clearFault("late");
    EXPECT_TRUE(
        AwaitCamera([](const sim::State &state) { return !state.socketBusy[0] && !state.socketBusy[1]; }));
    CatchUp();
    Recover();
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_EQ(host::QueueDepth(VISCA_CMD_RESULT_QUEUE_ID), 0u) << "no drift";
}

class Shifts : public FaultTest {
  protected:
    // Question and answer of two registers, so that a shifted answer is told from a right one.
    static uint8_t First() { return ReadOf(kRegister); }
    static uint8_t Second() { return ReadOf(kRegister + 1); }
    static uint8_t ReadOf(uint8_t number) {
        uint8_t value = 0;
        EXPECT_EQ(SonyGetRegisterVal(number, &value), 0u);
        return value;
    }
    void BeginWithTwo() {
        Begin();
        EXPECT_EQ(SonySetRegisterVal(kRegister + 1, 0x22), 0u);
        Drain();
        Strike("dup-answer=1#1");
        EXPECT_EQ(First(), kValue);
        ASSERT_TRUE(AwaitDepth(VISCA_INQUIRY_RESULT_QUEUE_ID, 1));
        EXPECT_EQ(Second(), kValue) << "the stale answer goes to the next inquiry";
        ASSERT_TRUE(AwaitDepth(VISCA_INQUIRY_RESULT_QUEUE_ID, 1));
        EXPECT_EQ(First(), 0x22) << "and every later one is shifted";
        ASSERT_TRUE(AwaitDepth(VISCA_INQUIRY_RESULT_QUEUE_ID, 1));
    }
};

TEST_F(Shifts, F19_EndWhenTheHostEmptiesTheQueueAndAreMarked) {
    BeginWithTwo();
    EXPECT_GE(HostCount("unasked"), 1u);
    EXPECT_EQ(host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID), 1u);
    EXPECT_EQ(Second(), 0x22);
    Recover();
}

TEST_F(Shifts, F19_EndWhenOneAnswerIsLost) {
    BeginWithTwo();
    Strike("mute");
    EXPECT_EQ(Second(), kValue) << "what the inquiry before left; its own answer is lost";
    CatchUp();
    Camera().clearFault("mute");
    EXPECT_EQ(Second(), 0x22);
    Recover();
}

} // namespace faults
