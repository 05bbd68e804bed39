// Start-up under faults: a camera that is late, never there, or hard to understand.
#include "tests/faults/fault_test.h"

namespace faults {

namespace {

struct StartFault {
    const char *name;
    std::vector<std::string> faults;
};

void PrintTo(const StartFault &value, std::ostream *out) {
    *out << value.name;
}

const StartFault kFaults[] = {
    {"F01_BytesLostOnTheWayToTheCamera", {"drop-tx=0.03"}},
    {"F02_BytesOfRepliesLost", {"drop-rx=0.03"}},
    {"F03_TerminatorsLost", {"drop-ff=0.1"}},
    {"F04_BytesDoubled", {"dup=0.05"}},
    {"F05_BitsChanged", {"flip=0.03"}},
    {"F06_GapsInsidePackets", {"split=10"}},
    {"F08_NoiseBetweenPackets", {"noise=0.3"}},
    {"F11_F14_AcknowledgementsLostOrLate", {"no-ack=0.5", "reorder=0.5"}},
    {"F12_CompletionsLost", {"no-completion=0.3"}},
    {"F15_CompletionsForAnIdleSocket", {"wrong-socket=7"}},
    {"F18_BufferFull", {"busy"}},
    {"F27_ReportsBeforeAnybodyAsked", {"report=random#20"}},
};

const unsigned kRates[] = {9600, 19200, 38400};

std::string Name(const ::testing::TestParamInfo<std::tuple<StartFault, unsigned>> &test) {
    return std::string(std::get<0>(test.param).name) + "At" + std::to_string(std::get<1>(test.param));
}

} // namespace

class StartFaults : public FaultTest,
                    public ::testing::WithParamInterface<std::tuple<StartFault, unsigned>> {};

TEST_P(StartFaults, AreSurvivedAndTheCameraIsFound) {
    const auto &[start, baud] = GetParam();
    sim::Options options = Paced(baud, 3);
    options.faults = start.faults;
    ASSERT_NO_FATAL_FAILURE(BeginUnder(options));
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Rates, StartFaults,
                         ::testing::Combine(::testing::ValuesIn(kFaults), ::testing::ValuesIn(kRates)), Name);

class LateCameras : public FaultTest, public ::testing::WithParamInterface<unsigned> {
  protected:
    // The library searches with its pauses cut short, but between two attempts the camera gets its time.
    uint32_t Search(const std::function<void()> &betweenAttempts) {
        OnPause([betweenAttempts](double seconds) {
            if (seconds >= 0.5) {
                betweenAttempts();
            }
            return seconds >= 0.5;
        });
        SetLibraryTimeScale(5);
        const uint32_t result = ViscaCamComInit(0);
        SetLibraryTimeScale(1);
        OnPause(nullptr);
        return result;
    }
};

TEST_P(LateCameras, F10_AreFoundWithinOneAttempt) {
    sim::Options options = Paced(GetParam());
    options.faults = {"boot=0.6"};
    options.bootTime = std::chrono::milliseconds(0);
    PlugIn(options);
    const auto untilItHasAnnouncedItself = [] { EXPECT_TRUE(AwaitWire("< 90 38 FF")); };
    EXPECT_EQ(Search(untilItHasAnnouncedItself), 0u);
    EXPECT_LE(HostCount("AdaptCamComBaudRate fail"), 1u);
    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Rates, LateCameras, ::testing::ValuesIn(kRates),
                         ::testing::PrintToStringParamName());

using NoCamera = FaultTest;

TEST_F(NoCamera, F10_IsGivenUpAfterTwentyAttemptsAndRefusesEverything) {
    sim::Options options = sim::Options::fast();
    options.start = sim::Power::off;
    PlugIn(options);
    OnPause([](double) { return true; });
    EXPECT_EQ(ViscaCamComInit(0), 1u);
    OnPause(nullptr);
    EXPECT_EQ(HostCount("AdaptCamComBaudRate fail"), 20u);
    EXPECT_EQ(ViscaIsCamCanCtrl(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 1u);
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_THAT(Commands(), IsEmpty());
}

} // namespace faults
