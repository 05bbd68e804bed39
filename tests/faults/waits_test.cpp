// Waits without bound, which end when what they wait for comes, and waits that signals interrupt every few
// milliseconds for a minute. On the virtual clock: no machine is too slow.
#include "tests/unit/unit_test.h"

#include <cerrno>

namespace unit {
namespace {

constexpr unsigned kMany = 1000;
constexpr uint64_t kSignalEvery = 5000; // microseconds
constexpr unsigned kSignals = 12000;    // in a minute
constexpr uint64_t kSecond = 1000000;

using UnboundedWaits = UnitTest;
using F30_Signals = UnitTest;

void SignalsForAMinute() {
    for (unsigned i = 0; i < kSignals; ++i) {
        Clib().Then({kSignalEvery, {}, EINTR});
    }
}

} // namespace

TEST_F(UnboundedWaits, F29_TheLineIsFlushedUntilTheHostSucceeds) {
    AsAtLoad();
    Host().AnswerProbe(9600, "90 50 02 FF");
    Host().Fail(Call::Flush, 1, kMany);
    EXPECT_EQ(0u, ViscaCamComInit(0));
    EXPECT_EQ(kMany,
              Host().CountLogged(VISCA_LOG_WARN, "AdaptCamComBaudRate", "DRV_FlushCom fail, try it again\n"));
    EXPECT_GE(Clib().Slept(), kMany * kSecond / 10) << "100 ms each";
}

TEST_F(UnboundedWaits, F29_ACameraIsAskedUntilItIsOn) {
    for (unsigned i = 0; i < kMany; ++i) {
        Host().AnswerInquiry("90 50 03 FF");
    }
    Host().AnswerInquiry("90 50 02 FF");
    EXPECT_EQ(0u, SonyWaitPowerOn());
    EXPECT_EQ(kMany + 1, Host().Sent().size());
    EXPECT_GE(Clib().Slept(), kMany * kSecond / 10);
}

TEST_F(UnboundedWaits, F32_AModuleThatUpgradesIsAskedUntilItHasDone) {
    static uint32_t verdict;
    verdict = kUnset;
    for (unsigned i = 0; i < kMany; ++i) {
        Host().AnswerInquiry("90 50 00 03 FF");
    }
    Host().AnswerInquiry("90 50 00 04 FF");
    gulUpdateFileforKova = 0x400;
    KovaUpgradeThread(reinterpret_cast<void *>(+[](uint32_t result) { verdict = result; }));
    gulUpdateFileforKova = 0;
    EXPECT_EQ(0u, verdict);
    EXPECT_EQ(0u, ViscaIsUpdatingCam());
    EXPECT_GE(Clib().Slept(), kMany * kSecond / 2) << "500 ms each";
}

TEST_F(F30_Signals, EachStartsTheWaitForAnAnswerAfresh) {
    SignalsForAMinute();
    uint8_t value = 7;
    EXPECT_EQ(0u, SonyGetRegisterVal(0x20, &value));
    EXPECT_EQ(0, value);
    EXPECT_EQ(66 * kSecond, Clib().Now()) << "6 s behind the last signal";
}

TEST_F(F30_Signals, AnAnswerAmongThemIsTaken) {
    SignalsForAMinute();
    Clib().Then({kSignalEvery, [] { Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 05 0A FF"); }});
    uint8_t value = 7;
    EXPECT_EQ(0u, SonyGetRegisterVal(0x20, &value));
    EXPECT_EQ(0x5A, value);
    EXPECT_EQ(60 * kSecond + kSignalEvery, Clib().Now());
}

TEST_F(F30_Signals, EachStartsTheWaitForAResultAfresh) {
    SignalsForAMinute();
    ViscaDropOneCmdAck();
    EXPECT_EQ(62 * kSecond, Clib().Now());
}

TEST_F(F30_Signals, DoNotProlongTheWaitForTheRestOfAReply) {
    SignalsForAMinute();
    Host().Feed("90 50 05");
    ViscaDealOneAck();
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "ViscaDealOneAck", "Unexpected Ack, fail exit\n"));
    EXPECT_GE(Clib().Now(), kSecond);
    EXPECT_LE(Clib().Now(), kSecond + 2 * kSignalEvery);
}

} // namespace unit
