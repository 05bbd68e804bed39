#include <cstring>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

TEST(Board, AnswersWhatItWasSetTo) {
    host::SetBoard({0x02000003, 0x1001, 2, "IPC-IT-9"});
    EXPECT_EQ(COMDRV_GetCamModuleType(), 0x02000003U);
    EXPECT_EQ(COMDRV_GetProductSubType(), 0x1001U);
    EXPECT_EQ(COMDRV_GetCaller(), 2U);
    EXPECT_EQ(host::GetBoard().strDeviceModel, "IPC-IT-9");
}

TEST(Board, HandsOutTheDeviceModelAtByte128) {
    host::SetBoard({0, 0, 0, "IPC-WH"});
    uint8_t aucRecord[512];
    std::memset(aucRecord, 0xAA, sizeof(aucRecord));
    ASSERT_EQ(COMDRV_GetManuinfo(reinterpret_cast<ManuInfo *>(aucRecord)), 0U);
    EXPECT_EQ(std::memcmp(aucRecord + 128, "IPC-WH\0\0", 8), 0);
    EXPECT_EQ(aucRecord[0], 0);
    EXPECT_EQ(aucRecord[511], 0);
}

TEST(Board, CutsALongDeviceModelTo63Bytes) {
    host::SetBoard({0, 0, 0, std::string(100, 'M')});
    ManuInfo stInfo;
    ASSERT_EQ(COMDRV_GetManuinfo(&stInfo), 0U);
    EXPECT_EQ(std::string(stInfo.szDeviceModel), std::string(63, 'M'));
}

TEST(Board, RefusesARecordThatIsNull) {
    EXPECT_NE(COMDRV_GetManuinfo(nullptr), 0U);
}

TEST(System, ReturnsTheStatusOfTheShellLine) {
    EXPECT_EQ(COMDRV_System("exit 0"), 0U);
    const auto iStatus = static_cast<int>(COMDRV_System("exit 3"));
    EXPECT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(WEXITSTATUS(iStatus), 3);
    EXPECT_NE(COMDRV_System(nullptr), 0U);
}

TEST(System, ProgramsInheritThePortButNoOtherDescriptor) {
    Pty stPty;
    int32_t iPort = -1;
    int32_t iQueue = -1;
    ASSERT_EQ(host::MapPort(0, stPty.Path()), "");
    ASSERT_EQ(DRV_OpenCom(0, &iPort), 0U);
    ASSERT_EQ(QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, VISCA_CMD_QUEUE_ID, &iQueue), 0U);
    const auto IsInherited = [](int32_t iFd) {
        return COMDRV_System(("test -e /proc/self/fd/" + std::to_string(iFd)).c_str()) == 0;
    };
    EXPECT_TRUE(IsInherited(iPort));
    EXPECT_FALSE(IsInherited(iQueue));
    host::ClosePort(0);
}

TEST(Threads, AreListedInTheOrderTheyRegistered) {
    COMDRV_DBG_RegisterThreadInfo(4, 0x7FFFFFF1, "First");
    COMDRV_DBG_RegisterThreadInfo(3, static_cast<uint32_t>(syscall(SYS_gettid)), "Second");
    const std::vector<host::ThreadInfo> vstThreads = host::Threads();
    ASSERT_GE(vstThreads.size(), 2U);
    const host::ThreadInfo &stFirst = vstThreads[vstThreads.size() - 2];
    const host::ThreadInfo &stSecond = vstThreads[vstThreads.size() - 1];
    EXPECT_EQ(stFirst.strName, "First");
    EXPECT_EQ(stFirst.ulType, 4U);
    EXPECT_FALSE(stFirst.bAlive);
    EXPECT_EQ(stSecond.strName, "Second");
    EXPECT_TRUE(stSecond.bAlive);
}

TEST(Threads, PrintAsATable) {
    COMDRV_DBG_RegisterThreadInfo(4, 0x7FFFFFF2, "ViscaQueueMsgProc");
    EXPECT_THAT(host::ThreadTable(), testing::HasSubstr("   4 2147483634  ended  ViscaQueueMsgProc\n"));
}

TEST(Threads, ANewNameForAnIdReplacesTheOldOne) {
    COMDRV_DBG_RegisterThreadInfo(3, 0x7FFFFFF3, "Old");
    COMDRV_DBG_RegisterThreadInfo(4, 0x7FFFFFF3, "New");
    EXPECT_THAT(host::ThreadTable(), testing::Not(testing::HasSubstr("Old")));
    EXPECT_THAT(host::ThreadTable(), testing::HasSubstr("New"));
    EXPECT_NE(COMDRV_DBG_RegisterThreadInfo(4, 1, nullptr), 0U);
}

} // namespace
