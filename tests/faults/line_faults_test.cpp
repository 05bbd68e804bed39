// Faults of the line, at each of the rates: start-up, commands, inquiries and reports with the fault at work,
// and everything right when it is over.
#include "tests/faults/fault_test.h"

namespace faults {

namespace {

enum class Loss {
    kNone,   // all is handled, in order: no time-out, no wrong answer
    kSome,   // what is hit is lost, and every wait ends
    kProbes, // the same, and the search for the camera would see nothing but the fault
};

struct LineFault {
    const char *name;
    const char *fault;
    Loss loss;
};

void PrintTo(const LineFault &value, std::ostream *out) {
    *out << value.name;
}

const LineFault kFaults[] = {
    {"F01_BytesLostOnTheWayToTheCamera", "drop-tx=0.03", Loss::kSome},
    {"F02_BytesOfRepliesLost", "drop-rx=0.05", Loss::kSome},
    {"F03_TerminatorsLost", "drop-ff=0.2", Loss::kSome},
    {"F04_BytesDoubled", "dup=0.1", Loss::kSome},
    {"F05_BitsChanged", "flip=0.05", Loss::kSome},
    {"F06_GapsInsidePackets", "split=20", Loss::kNone},
    {"F07_ManyRepliesInOneRead", "merge=10", Loss::kNone},
    {"F08_NoiseBetweenPackets", "noise=0.3", Loss::kSome},
    {"F11_AcknowledgementsLost", "no-ack", Loss::kNone},
    {"F12_CompletionsLost", "no-completion=0.3", Loss::kSome},
    {"F14_CompletionsBeforeAcknowledgements", "reorder", Loss::kNone},
    {"F15_CompletionsForAnIdleSocket", "wrong-socket=3", Loss::kNone},
    {"F16_RepliesFromAnotherAddress", "address=3", Loss::kProbes},
    {"F18_BufferFullOnEveryThirdCommand", "busy", Loss::kNone},
    {"F25_AcknowledgementsAtLineSpeed", "flood", Loss::kNone},
    {"F27_ReportsOfEveryKind", "report=random", Loss::kNone},
};

const unsigned kRates[] = {9600, 19200, 38400};

using Parameter = std::tuple<LineFault, unsigned>;

std::string Name(const ::testing::TestParamInfo<Parameter> &info) {
    return std::string(std::get<0>(info.param).name) + "At" + std::to_string(std::get<1>(info.param));
}

} // namespace

class LineFaults : public FaultTest, public ::testing::WithParamInterface<Parameter> {};

TEST_P(LineFaults, EndEveryWaitAndLeaveNothingBehind) {
    const auto &[fault, baud] = GetParam();
    Begin(Paced(baud, 1 + baud / 9600));
    Strike(fault.fault);
    if (fault.loss == Loss::kNone) {
        WorkWithoutLoss(4);
    } else {
        Work(4);
    }
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Rates, LineFaults,
                         ::testing::Combine(::testing::ValuesIn(kFaults), ::testing::ValuesIn(kRates)), Name);

} // namespace faults
