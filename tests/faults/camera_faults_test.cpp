// Faults of the camera itself: supply, standby, its rate, and a camera that no longer reads its line.
#include <thread>

#include "tests/faults/fault_test.h"

namespace faults {

using CameraFaults = FaultTest;

// Between acknowledgement and completion of each of the first commands.
class PowerCuts : public FaultTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(PowerCuts, F20_InTheMiddleOfACommandAreWaitedForAndTheSettingsComeBack) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 10; // 0.02 s without supply, 0.3 s to boot
    Begin(options);
    EXPECT_EQ(SonyImgEnableDzoom(0), 0u);
    Drain();
    Strike("power-cut=" + std::to_string(GetParam()));
    HurryUntil(kTimeOut, kHurry);
    for (unsigned i = 0; i < GetParam(); ++i) {
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
    }
    EXPECT_TRUE(host::WaitDrained(kLimit));
    EXPECT_EQ(TimeOuts(), 1u);
    ASSERT_TRUE(AwaitHost("dump recv:ViscaPacket: 0x90 0x38 0xff")) << "the camera says that it is back";
    EXPECT_EQ(SonyWaitPowerOn(), 0u);
    EXPECT_EQ(State().setting("dzoom"), 2) << "the camera has forgotten";
    EXPECT_EQ(SonyRestoreCamEnv(COMDRV_GetCamModuleType()), 0u);
    Drain();
    EXPECT_EQ(State().setting("dzoom"), 3);
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Commands, PowerCuts, ::testing::Values(1u, 2u, 3u),
                         ::testing::PrintToStringParamName());

TEST_F(CameraFaults, F21_InStandbyCommandsAndInquiriesAreNotExecutable) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 10; // 0.3 s to boot
    Begin(options);
    Strike("standby");
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.power == sim::Power::standby; }));
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[0x41], 2u);
    EXPECT_EQ(TimeOuts(), 0u);
    EXPECT_EQ(SonySetPower(1), 0u);
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.power != sim::Power::standby; }));
    EXPECT_EQ(SonyWaitPowerOn(), 0u);
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 0u);
    Recover();
}

class OtherRates : public FaultTest, public ::testing::WithParamInterface<std::tuple<unsigned, unsigned>> {};

TEST_P(OtherRates, F22_EndEveryWaitAndCostALineAByteAtMost) {
    const auto [before, after] = GetParam();
    if (before == after) {
        return;
    }
    Begin(Paced(before));
    Strike("rate=" + std::to_string(after));
    HurryUntil(kTimeOut, kHurry);
    uint8_t value = 0;
    EXPECT_EQ(Read(&value), 0u);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(TimeOuts(), 1u);
    SendRaw("90 50 01 02 FF 90 51 FF"); // heard at the wrong rate: fewer bytes or more, and others
    CatchUp();
    Expect(8 * BytesSent());
    Recover();
}

std::string FromTo(const ::testing::TestParamInfo<std::tuple<unsigned, unsigned>> &test) {
    return std::to_string(std::get<0>(test.param)) + "To" + std::to_string(std::get<1>(test.param));
}

const unsigned kRates[] = {9600, 19200, 38400};
INSTANTIATE_TEST_SUITE_P(Rates, OtherRates,
                         ::testing::Combine(::testing::ValuesIn(kRates), ::testing::ValuesIn(kRates)),
                         FromTo);

// Until the line takes nothing more, then once more from two threads at a time.
TEST_F(CameraFaults, F28_ACameraThatStopsReadingFailsSendsInBoundedTime) {
    Begin();
    Strike("stall");
    const uint8_t terminators[16] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                     0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    const auto begin = std::chrono::steady_clock::now();
    int sent = 0;
    while (sent < 100000 && ViscaCamComSend(sizeof terminators, terminators) == 0) {
        ++sent;
    }
    EXPECT_LT(sent, 100000);
    EXPECT_EQ(HostCount("ERROR DRV_ComSend fail"), 1u);

    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    std::thread other([] {
        uint8_t value = 0;
        EXPECT_EQ(SonyGetRegisterVal(kRegister, &value), 1u);
    });
    other.join();
    ASSERT_TRUE(AwaitHost("DEBUG ViscaCamComSend failed!"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10 * host::kSendLimit);
    EXPECT_EQ(VISCA_IsMsgQueueEmpty(), 1u);
    Recover();
}

// No answer is waited for that cannot come any more, but everything that is sent is read.
TEST_F(CameraFaults, F25_AFloodLeavesNoQueueFullAndNoCommandWaiting) {
    Begin(Paced(38400));
    Strike("flood");
    ASSERT_TRUE(AwaitWire("< 90 41 FF", 200));
    WorkWithoutLoss(4);
    for (uint32_t queue : {VISCA_CMD_QUEUE_ID, VISCA_CMD_RESULT_QUEUE_ID, VISCA_INQUIRY_RESULT_QUEUE_ID}) {
        EXPECT_EQ(host::QueueDepth(queue), 0u);
    }
    Recover();
}

} // namespace faults
