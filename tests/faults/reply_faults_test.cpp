// What comes of bytes that a sound camera would not send: to the byte, what reaches the queues and what is
// logged about it.
#include <malloc.h>

#include "tests/faults/fault_test.h"

namespace faults {

namespace {

struct Stream {
    const char *name;
    const char *bytes;
    std::vector<std::string> puts; // results and answers that come of it, in order
    size_t skipped;                // bytes, a line each
    size_t rejected;               // replies, with two dumps and a line each
};

void PrintTo(const Stream &value, std::ostream *out) {
    *out << value.name;
}

// Each stream is followed by a sound answer, which has to arrive.
const Stream kStreams[] = {
    {"F02_WithoutSecondByte", "90 FF", {}, 0, 1},
    {"F02_WithoutFirstByte", "50 01 02 FF", {}, 4, 0},
    {"F03_TwoMerged",
     "90 50 01 01 90 51 FF 90 51 FF",
     {"put 3 90 50 01 01 90 51 FF", "put 1 90 51 FF"},
     0,
     0},
    {"F03_MergedBeyondTheRecord",
     "90 50 01 02 03 04 05 06 07 08 09 90 50 01 02 03 04 FF 90 51 FF",
     {"put 1 90 51 FF"},
     2,
     1},
    {"F04_Doubled", "90 90 50 50 02 02 FF FF 90 51 51 FF", {"put 1 90 51 51 FF"}, 1, 1},
    {"F04_DoubledBeyondTheRecord",
     "90 50 50 01 01 02 02 03 03 04 04 05 05 06 06 FF FF",
     {"put 3 90 50 50 01 01 02 02 03 03 04 04 05 05 06 06 FF"},
     1,
     0},
    {"F05_UnknownTypes", "90 10 FF 90 2A 01 FF 90 38 FF 90 70 FF 90 C1 FF 90 F0 FF", {}, 0, 6},
    {"F05_ChangedValue", "90 50 01 03 FF", {"put 3 90 50 01 03 FF"}, 0, 0},
    {"F07_ManyAtOnce",
     "90 41 FF 90 51 FF 90 42 FF 90 50 01 02 FF 90 62 41 FF 90 60 41 FF 90 52 FF",
     {"put 1 90 51 FF", "put 3 90 50 01 02 FF", "put 1 90 62 41 FF", "put 3 90 60 41 FF", "put 1 90 52 FF"},
     0,
     0},
    {"F08_Zeros", "00 00 00 00 00 00 00 00", {}, 8, 0},
    {"F08_Terminators", "FF FF FF FF FF FF FF FF", {}, 8, 0},
    {"F08_BeginsAnAnswer", "12 90 13 FF", {}, 1, 1},
    {"F08_SwallowsByAStart", "12 90 90 51 FF 90 51 FF", {"put 1 90 51 FF"}, 1, 1},
    {"F08_SwallowsAsATuningAnswer", "12 66 03 90 51 FF 90 52 FF", {"put 1 90 52 FF"}, 1, 0},
    {"F14_SocketsOutOfOrder",
     "90 52 FF 90 42 FF 90 51 FF 90 41 FF",
     {"put 1 90 52 FF", "put 1 90 51 FF"},
     0,
     0},
    {"F15_ImpossibleSockets",
     "90 53 FF 90 5F FF 90 50 FF",
     {"put 1 90 53 FF", "put 1 90 5F FF", "put 3 90 50 FF"},
     0,
     0},
    {"F16_OtherAddresses", "A0 51 FF F0 50 01 FF 80 41 FF", {}, 10, 0},
    {"F16_OtherAddressWithAStart", "A0 50 90 51 FF", {"put 1 90 51 FF"}, 2, 0},
    {"F26_TwoBytesWithoutEnd", "90 50 90 51 FF", {"put 3 90 50 90 51 FF"}, 0, 0},
    {"F26_FifteenBytesAndAnEnd",
     "90 50 01 01 01 01 01 01 01 01 01 01 01 01 01 FF",
     {"put 3 90 50 01 01 01 01 01 01 01 01 01 01 01 01 01 FF"},
     0,
     0},
    {"F26_SixteenBytesWithoutEnd", "90 50 01 01 01 01 01 01 01 01 01 01 01 01 01 01 FF", {}, 1, 1},
    {"F26_SeventeenBytesWithoutEnd", "90 50 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 FF", {}, 2, 1},
};

// Of the whole process, the camera's side included.
size_t MemoryInUse() {
    return mallinfo2().uordblks;
}

constexpr char kSound[] = "90 50 0A 0B FF";

std::vector<std::string> PutsWithoutMarks() {
    std::vector<std::string> puts;
    for (const Step &step : Journal::Get().Host()) {
        if (StartsWith(step.text, "put ")) {
            puts.push_back(step.text.substr(0, step.text.find(" unasked")));
        }
    }
    return puts;
}

std::string ErrorReply(unsigned socket, unsigned code) {
    const uint8_t reply[] = {0x90, static_cast<uint8_t>(0x60 + socket), static_cast<uint8_t>(code), 0xFF};
    return Hex(reply, sizeof reply);
}

constexpr uint32_t kCodes = 0xFF; // all but the terminator

// Of one error of each code: a command's errors carry its socket, and of socket 0 the codes 02 and 03 are a
// command's.
uint32_t ForCommands(unsigned socket) {
    return socket == 0 ? 2 : kCodes;
}

} // namespace

class Streams : public FaultTest, public ::testing::WithParamInterface<Stream> {};

TEST_P(Streams, AreCutAndRoutedAsStated) {
    const Stream &stream = GetParam();
    Begin();
    SendRaw(stream.bytes);
    SendRaw(kSound);
    ASSERT_TRUE(AwaitHost(std::string("put 3 ") + kSound));
    std::vector<std::string> puts = stream.puts;
    puts.push_back(std::string("put 3 ") + kSound);
    EXPECT_EQ(PutsWithoutMarks(), puts);
    EXPECT_EQ(HostCount("WARN unexpected byte"), stream.skipped);
    EXPECT_EQ(HostCount("ERROR Unexpected Ack, fail exit"), stream.rejected);
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Bytes, Streams, ::testing::ValuesIn(kStreams),
                         [](const auto &stream) { return std::string(stream.param.name); });

using ReplyFaults = FaultTest;

TEST_F(ReplyFaults, F15_CompletionsForEverySocketButZeroAreResults) {
    Begin();
    for (int socket = 1; socket <= 15; ++socket) {
        Strike("wrong-socket=" + std::to_string(socket));
        WorkWithoutLoss(1);
    }
    Recover();
}

TEST_F(ReplyFaults, F17_EveryErrorCodeUnaskedGoesWhereItBelongs) {
    Begin();
    for (unsigned socket : {0u, 1u, 2u, 15u}) {
        for (unsigned code = 0; code < kCodes; ++code) {
            SendRaw(ErrorReply(socket, code));
        }
        // A put is reported before it is made, so the queues themselves must say that all are there.
        ASSERT_TRUE(AwaitDepth(VISCA_CMD_RESULT_QUEUE_ID, ForCommands(socket)));
        ASSERT_TRUE(AwaitDepth(VISCA_INQUIRY_RESULT_QUEUE_ID, kCodes - ForCommands(socket)));
        host::EmptyQueue(VISCA_CMD_RESULT_QUEUE_ID);
        host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID);
    }
    EXPECT_EQ(HostSteps("put").size(), 4 * kCodes);
    EXPECT_EQ(host::GetCounters().ullErrors, 4 * kCodes);
    Recover();
}

TEST_F(ReplyFaults, F17_AnErrorReleasesTheCommandAndAnswersTheInquiry) {
    Begin();
    for (const char *code : {"0x00", "0x01", "0x04", "0x05", "0x41", "0x7F", "0xFE"}) {
        Strike(std::string("error=") + code);
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
        Drain();
        uint8_t value = 7;
        EXPECT_EQ(Read(&value), 1u) << code;
        EXPECT_EQ(value, 0) << code;
    }
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[0x41], 2u);
    Recover();
}

TEST_F(ReplyFaults, F17_AnErrorThatNobodyAskedForIsMarked) {
    Begin();
    Strike("error-unasked=0x41");
    ASSERT_TRUE(AwaitHost("put 3 90 60 41 FF unasked"));
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 1u);
    Recover();
}

TEST_F(ReplyFaults, F18_ARefusedCommandIsVisibleAndNotSentAgain) {
    Begin();
    Strike("busy");
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    Drain();
    EXPECT_THAT(Commands(), SizeIs(6));
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[0x03], 2u);
    EXPECT_EQ(TimeOuts(), 0u);
    Recover();
}

// The second half finds all buffers grown. A slow machine gets the time that it needs.
TEST_F(ReplyFaults, F26_AMegabyteWithoutEndCostsALineAByteAndNoMemory) {
    Begin();
    host::SetLogLevel(host::Log::kGeneral, host::kLogOff);
    host::SetLogLevel(host::Log::kCamera, host::kLogOff);
    SetLibraryTimeScale(0.1);
    size_t before = 0;
    for (int i = 0; i < 2; ++i) {
        before = MemoryInUse();
        Strike("length=524288#1");
        uint8_t value = 0;
        EXPECT_EQ(Read(&value), 0u);
        EXPECT_EQ(value, kValue) << "the next packet is good";
        Forget();
    }
    EXPECT_LT(MemoryInUse(), before + 4096 * 1024);
    Expect(2 * 524288);
    Recover();
}

TEST_F(ReplyFaults, F27_AReportIsReadNoFurtherThanItReaches) {
    Begin();
    SendRaw("90 07 00 AE 01 FF 90 07 FF"); // the second is shorter than where its kind would stand
    ASSERT_TRUE(AwaitHost("WARN Not support 0 yet"));
    EXPECT_EQ(ReportsHeard(), 1u);
    Recover();
}

TEST_F(ReplyFaults, F27_ReportsOfEveryNibbleAndLengthDisturbNothing) {
    sim::Options options = sim::Options::fast("kova2");
    options.timeScale = 20; // of the line's time: half of it is reports
    Begin(options);
    Strike("report=random");
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.sentCount("report") >= 16 * 14; }));
    WorkWithoutLoss(2);
    EXPECT_GT(ReportsHeard(), 0u);
    Recover();
}

} // namespace faults
