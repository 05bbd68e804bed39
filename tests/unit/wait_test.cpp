// Waiting and sleeping: to the microsecond, whatever signals come.
#include "tests/unit/unit_test.h"
#include "visca_que/wait.h"

#include <cerrno>
#include <unistd.h>

namespace unit {
namespace {

using namespace viscacam;

class SleepTest : public UnitTest {
  protected:
    static std::vector<uint64_t> Sleep(uint32_t milliseconds) {
        SleepMs(milliseconds);
        return Clib().Pauses();
    }
};

TEST_F(SleepTest, ASleepIsOneCallWhereSecondsOrMillisecondsWillDo) {
    EXPECT_THAT(Sleep(1), ElementsAre(1000U));
    EXPECT_EQ(1000U, Clib().Now());
    Clib().Reset();
    EXPECT_THAT(Sleep(999), ElementsAre(999000U));
    Clib().Reset();
    EXPECT_THAT(Sleep(1000), ElementsAre(1000000U));
    Clib().Reset();
    EXPECT_THAT(Sleep(3000), ElementsAre(3000000U));
}

TEST_F(SleepTest, SecondsAndARestAreTwoCalls) {
    EXPECT_THAT(Sleep(1001), ElementsAre(1000000U, 1000U));
    Clib().Reset();
    EXPECT_THAT(Sleep(2300), ElementsAre(2000000U, 300000U));
}

TEST_F(SleepTest, NothingToSleepIsNoCall) {
    EXPECT_THAT(Sleep(0), IsEmpty());
}

TEST_F(SleepTest, WhatASignalLeavesOfMillisecondsIsSleptAfterwards) {
    Clib().InterruptPause(1, 40000);
    EXPECT_THAT(Sleep(100), ElementsAre(100000U, 60000U));
    EXPECT_EQ(100000U, Clib().Now());
}

TEST_F(SleepTest, OneMicrosecondThatIsLeftIsSlept) {
    Clib().InterruptPause(1, 99999);
    EXPECT_THAT(Sleep(100), ElementsAre(100000U, 1U));
}

TEST_F(SleepTest, WhatASignalLeavesOfSecondsIsSleptInPiecesOfLessThanASecond) {
    Clib().InterruptPause(1, 500000);
    EXPECT_THAT(Sleep(3000), ElementsAre(3000000U, 999999U, 999999U, 500002U));
    EXPECT_EQ(3000000U, Clib().Now());
}

TEST_F(SleepTest, ASignalInTheSecondsLeavesTheRestToTheClock) {
    Clib().InterruptPause(1, 900000);
    EXPECT_THAT(Sleep(1250), ElementsAre(1000000U, 350000U));
    EXPECT_EQ(1250000U, Clib().Now());
}

TEST_F(SleepTest, ASignalAfterTheSecondsCostsTheRestOnly) {
    Clib().InterruptPause(2, 50000);
    EXPECT_THAT(Sleep(1250), ElementsAre(1000000U, 250000U, 200000U));
    EXPECT_EQ(1250000U, Clib().Now());
}

TEST_F(SleepTest, SignalsThatKeepComingDoNotEndIt) {
    for (unsigned pause = 1; pause <= 5; ++pause) {
        Clib().InterruptPause(pause, 10000);
    }
    EXPECT_THAT(Sleep(100), ElementsAre(100000U, 90000U, 80000U, 70000U, 60000U, 50000U));
    EXPECT_EQ(100000U, Clib().Now());
}

class WaitTest : public UnitTest {};

TEST_F(WaitTest, TheTimeOutIsGivenInSecondsAndMicroseconds) {
    EXPECT_EQ(WAIT_TIMEOUT, WaitReadable(Host().PortFd(), 2345));
    EXPECT_EQ(WAIT_TIMEOUT, WaitReadable(Host().PortFd(), 999));
    EXPECT_THAT(Host().Story({Call::Select}),
                ElementsAre("select port 2345000: time-out", "select port 999000: time-out"));
}

TEST_F(WaitTest, TellsASignalFromAFailure) {
    Host().Fail(Call::Select, Fault{1, 1, -1, EINTR});
    Host().Fail(Call::Select, Fault{2, 1, -1, EBADF});
    EXPECT_EQ(WAIT_INTERRUPTED, WaitReadable(Host().PortFd(), 10));
    EXPECT_EQ(WAIT_FAILED, WaitReadable(Host().PortFd(), 10));
}

TEST_F(WaitTest, DescriptorsThatDoNotFitIntoASetAreNotLookedAt) {
    EXPECT_EQ(WAIT_FAILED, WaitReadable(-1, 10));
    EXPECT_EQ(WAIT_FAILED, WaitReadable(1024, 10));
    EXPECT_THAT(Host().Events(Call::Select), IsEmpty());
}

TEST_F(WaitTest, DescriptorZeroIsOneLikeOthers) {
    const int kept = dup(0);
    ASSERT_EQ(0, dup2(Host().PortFd(), 0));
    EXPECT_EQ(WAIT_TIMEOUT, WaitReadable(0, 10));
    Host().Feed("FF");
    EXPECT_EQ(WAIT_READABLE, WaitReadable(0, 10));
    dup2(kept, 0);
    close(kept);
}

TEST_F(WaitTest, AByteIsWaitedForAMillisecondMoreThanASecond) {
    EXPECT_FALSE(WaitForNextByte(Host().PortFd()));
    EXPECT_THAT(Host().Story({Call::Select}), ElementsAre("select port 1001000: time-out"));
    Host().Forget();
    Clib().Then({600500});
    EXPECT_FALSE(WaitForNextByte(Host().PortFd()));
    EXPECT_THAT(Host().Story({Call::Select}),
                ElementsAre("select port 1001000: nothing", "select port 400000: time-out"));
}

TEST_F(WaitTest, AByteMayComeExactlyASecondAfterTheLast) {
    Clib().Then({1000000});
    Clib().Then({0, [] { Host().Feed("FF"); }});
    EXPECT_TRUE(WaitForNextByte(Host().PortFd()));
    Clib().Reset();
    uint8_t byte = 0;
    ASSERT_EQ(1, read(Host().PortFd(), &byte, 1));
    Clib().Then({1000001});
    EXPECT_FALSE(WaitForNextByte(Host().PortFd()));
    EXPECT_EQ(1000001U, Clib().Now());
}

TEST_F(WaitTest, PausesGrowTenfoldUpToASecondAndBeginAnew) {
    GrowingPause pause = {1};
    PauseReset(&pause);
    for (int i = 0; i < 4; ++i) {
        PauseAndGrow(&pause);
    }
    PauseReset(&pause);
    PauseAndGrow(&pause);
    EXPECT_THAT(Clib().Pauses(), ElementsAre(20000U, 200000U, 1000000U, 1000000U, 20000U));
}

TEST_F(WaitTest, TheClockIsInMicroseconds) {
    const int64_t start = MonotonicUs();
    Clib().Advance(3000007);
    EXPECT_EQ(3000007, MonotonicUs() - start);
}

} // namespace
} // namespace unit
