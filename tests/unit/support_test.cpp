// The recording host and the wrapped libc calls: what every other unit test relies on.
#include "tests/unit/unit_test.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

namespace unit {
namespace {

class Support : public UnitTest {};

int WaitFor(int fd, long seconds) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    timeval timeout{seconds, 0};
    return select(fd + 1, &set, nullptr, nullptr, &timeout);
}

TEST_F(Support, QueueDescriptorIsReadableExactlyWhileAnElementWaits) {
    EXPECT_EQ(0, WaitFor(Host().QueueFd(1), 2));
    Host().Preload(1, "90 51 FF");
    Host().Preload(1, "90 52 FF");
    void *element = nullptr;
    for (uint8_t second : {0x51, 0x52}) {
        EXPECT_EQ(1, WaitFor(Host().QueueFd(1), 2));
        ASSERT_EQ(0U, QUEUE_GetSerialData(1, &element));
        EXPECT_EQ(second, static_cast<ViscaPkt *>(element)->aucData[1]);
    }
    EXPECT_EQ(0, WaitFor(Host().QueueFd(1), 2));
    EXPECT_EQ(1U, QUEUE_GetSerialData(1, &element));
}

TEST_F(Support, APutIntoAFullQueueFailsAndTheOthersStay) {
    Host().SetCapacity(0, 1);
    ViscaPkt packet = Packet("81 01 FF");
    EXPECT_EQ(0U, QUEUE_PutRawData(3, 0, &packet, sizeof packet));
    EXPECT_EQ(1U, QUEUE_PutRawData(3, 0, &packet, sizeof packet));
    EXPECT_EQ(1U, Host().QueueLength(0));
}

TEST_F(Support, AFaultHitsExactlyTheCallsThatItNames) {
    Host().Fail(Call::Open, 2, 2);
    int32_t fd = -1;
    EXPECT_EQ(0U, DRV_OpenCom(0, &fd));
    EXPECT_EQ(1U, DRV_OpenCom(0, &fd));
    EXPECT_EQ(1U, DRV_OpenCom(0, &fd));
    EXPECT_EQ(0U, DRV_OpenCom(0, &fd));
}

TEST_F(Support, WaitsMoveTheVirtualClockOnly) {
    timeval before, after;
    gettimeofday(&before, nullptr);
    usleep(250000);
    sleep(3);
    EXPECT_EQ(0, WaitFor(Host().PortFd(), 6));
    gettimeofday(&after, nullptr);
    EXPECT_EQ(9, after.tv_sec - before.tv_sec);
    EXPECT_EQ(250000, after.tv_usec - before.tv_usec);
    EXPECT_EQ(3250000U, Clib().Slept());
    EXPECT_THAT(Host().Story({Call::Sleep, Call::Select}),
                ElementsAre("sleep 250000", "sleep 3000000", "select port 6000000: time-out"));
}

TEST_F(Support, AScriptedStepFeedsAWaitThatFindsNothing) {
    Clib().Then({500000, [] { Host().Feed("90"); }});
    EXPECT_EQ(1, WaitFor(Host().PortFd(), 6));
    EXPECT_EQ(500000U, Clib().Now());
    uint8_t byte = 0;
    EXPECT_EQ(1, read(Host().PortFd(), &byte, 1));
    Clib().Then({0, nullptr, EINTR});
    EXPECT_EQ(-1, WaitFor(Host().PortFd(), 6));
    EXPECT_EQ(EINTR, errno);
}

TEST_F(Support, AThreadUnderTestStopsAtEachWait) {
    static int results[2];
    ThreadUnderTest thread([] {
        results[0] = WaitFor(Host().QueueFd(0), 6);
        results[1] = WaitFor(Host().QueueFd(1), 2);
    });
    EXPECT_EQ("select queue 0 6000000", thread.WaitParked());
    EXPECT_EQ("select queue 0 6000000", thread.Resume());
    Host().Preload(0, "81 01 FF");
    EXPECT_EQ("select queue 1 2000000", thread.Resume());
    EXPECT_EQ("ended", thread.TimeOut());
    EXPECT_EQ(1, results[0]);
    EXPECT_EQ(0, results[1]);
}

TEST_F(Support, ALinePrefixThatIsNotExactIsComplainedAbout) {
    static constexpr char format[] =
        "%.4d-%.2d-%.2d %.2d:%.2d:%.2d %.6lu %-20s@fun:%-30sline:%-6d--[%.5s]text\n";
    DRV_Common_Print(7, format, 2026, 2, 3, 4, 5, 6, 789UL, "a.cpp", "Function", 12, "DEBUG");
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG Function: text\n"));
    EXPECT_THAT(Host().Complaints(), IsEmpty());
    DRV_Common_Print(7, format, 2026, 2, 3, 4, 5, 6, 789UL, "src/a.cpp", "Function", 12, "DEBUG");
    DRV_Common_Print(3, format, 2026, 2, 3, 4, 5, 6, 789UL, "a.cpp", "Function", 12, "DEBUG");
    DRV_Common_Print(3, "plain text\n");
    EXPECT_THAT(Host().Complaints(), SizeIs(3));
    Host().Forget();
}

} // namespace
} // namespace unit
