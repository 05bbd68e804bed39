#include <csignal>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/host/fixtures.h"
#include "tests/host/folder.h"

namespace {

using testing::EndsWith;

uint32_t RunLine(const std::string &strCommand) {
    return COMDRV_System(strCommand.c_str());
}

std::string Output(const std::string &strCommand) {
    const Folder stFolder;
    RunLine("{ " + strCommand + "; } > " + stFolder / "output");
    return ReadFile(stFolder / "output");
}

/* The command itself */

TEST(System, ReturnsWhatSystem3Returns) {
    EXPECT_EQ(RunLine("exit 0"), 0U);
    EXPECT_EQ(RunLine("exit 3"), 3U << 8U);
    EXPECT_EQ(RunLine("/no/such/program 2>/dev/null"), 127U << 8U);
    EXPECT_EQ(RunLine("kill -TERM $$"), static_cast<uint32_t>(SIGTERM));
    EXPECT_EQ(COMDRV_System(nullptr), 1U);
}

TEST(System, RunsOnInTheShellsOwnWay) {
    EXPECT_EQ(Output("cd / && pwd; echo \"two  blanks\""), "/\ntwo  blanks\n");
}

TEST(System, ACommandStartsWithNoSignalBlocked) {
    sigset_t stAll;
    sigfillset(&stAll);
    std::string strSeen;
    std::thread([&] {
        pthread_sigmask(SIG_BLOCK, &stAll, nullptr);
        strSeen = Output("grep SigBlk /proc/self/status");
    }).join();
    EXPECT_EQ(strSeen, "SigBlk:\t0000000000000000\n");
}

TEST(System, ACommandStartsWithNoSignalIgnoredButHangUp) {
    for (const int iSignal : {SIGPIPE, SIGINT, SIGALRM, SIGHUP}) {
        std::signal(iSignal, SIG_IGN);
    }
    const std::string strIgnored = Output("awk '/SigIgn/ { print $2 }' /proc/self/status");
    EXPECT_EQ(std::stoull(strIgnored, nullptr, 16) & 0x7FFFFFFFU, 1U << (SIGHUP - 1)) << strIgnored;
}

TEST(System, TheProgramsOwnSignalsStayAsTheyAreMeanwhile) {
    const std::string strOfParent = "grep -E 'SigIgn|SigCgt' /proc/" + std::to_string(getpid()) + "/status";
    const std::string strBefore = [] {
        std::istringstream stLines(ReadFile("/proc/self/status"));
        std::string strKept;
        for (std::string strLine; std::getline(stLines, strLine);) {
            strKept +=
                strLine.rfind("SigIgn", 0) == 0 || strLine.rfind("SigCgt", 0) == 0 ? strLine + "\n" : "";
        }
        return strKept;
    }();
    EXPECT_EQ(Output(strOfParent), strBefore);
}

TEST(System, ASignalToTheProgramDoesNotEndTheWait) {
    struct sigaction stAction = {};
    stAction.sa_handler = [](int) {}; // without SA_RESTART
    sigaction(SIGUSR1, &stAction, nullptr);
    EXPECT_EQ(RunLine("kill -USR1 " + std::to_string(getpid()) + "; exit 5"), 5U << 8U);
}

TEST(System, CommandsOfSeveralThreadsRunAtTheSameTime) {
    const Folder stFolder;
    const std::string strPipe = stFolder / "pipe";
    ASSERT_EQ(mkfifo(strPipe.c_str(), 0600), 0);
    uint32_t ulFirst = 1;
    std::thread stFirst([&] { ulFirst = RunLine("echo met > " + strPipe); });
    EXPECT_EQ(RunLine("read word < " + strPipe + " && test \"$word\" = met"), 0U);
    stFirst.join();
    EXPECT_EQ(ulFirst, 0U);
}

/* What it finds */

TEST(System, TheStandInsComeFirstInThePath) {
    setenv("PATH", "/usr/bin:/bin", 1);
    host::SetBoardFolder("/some/where");
    EXPECT_EQ(Output("echo \"$PATH\""), "/some/where:/usr/bin:/bin\n");
}

TEST(System, ACommandIsToldTheCamerasLine) {
    Pty stPty;
    int32_t iFd = -1;
    ASSERT_EQ(host::MapPort(0, stPty.Path()), "");
    ASSERT_EQ(DRV_OpenCom(0, &iFd), 0U);
    EXPECT_EQ(Output("readlink /proc/self/fd/$VISCACAM_CAMERA_FD"), stPty.Path() + "\n");
    EXPECT_EQ(Output("echo ${#VISCACAM_CAMERA_FD}"), "1\n"); // scripts know one digit only
    host::ClosePort(0);
    EXPECT_EQ(Output("echo ${VISCACAM_CAMERA_FD-none}"), "none\n");
    EXPECT_EQ(host::CheckDevice(stPty.Path()), ""); // nobody holds it any more
}

TEST(System, ALineWithALargeNumberIsGivenASmallOne) {
    std::vector<int> viFiller;
    while (viFiller.empty() || viFiller.back() < 20) {
        viFiller.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
    Pty stPty;
    int32_t iFd = -1;
    ASSERT_EQ(host::MapPort(0, stPty.Path()), "");
    ASSERT_EQ(DRV_OpenCom(0, &iFd), 0U);
    ASSERT_GT(iFd, 20);
    EXPECT_EQ(Output("readlink /proc/self/fd/$VISCACAM_CAMERA_FD"), stPty.Path() + "\n");
    EXPECT_EQ(Output("echo ${#VISCACAM_CAMERA_FD}"), "1\n");
    host::ClosePort(0);
    for (const int iFiller : viFiller) {
        close(iFiller);
    }
}

TEST(System, ACommandIsToldTheLimitAndTheLogOfTransfers) {
    setenv("VISCACAM_TRANSFER_LOG", "/from/outside", 1);
    EXPECT_EQ(Output("echo $VISCACAM_TRANSFER_LIMIT ${VISCACAM_TRANSFER_LOG-none}"), "60 none\n");
    host::SetTransferLimit(std::chrono::seconds(7));
    host::SetTransferLog("/a/log");
    EXPECT_EQ(Output("echo $VISCACAM_TRANSFER_LIMIT $VISCACAM_TRANSFER_LOG"), "7 /a/log\n");
    host::SetTransferLimit(std::chrono::seconds(0));
    EXPECT_EQ(Output("echo $VISCACAM_TRANSFER_LIMIT"), "1\n");
}

TEST(System, WithoutStandInsCommandsRunAsTheyAre) {
    setenv("PATH", "/usr/bin:/bin", 1);
    host::SetBoardFolder("");
    EXPECT_EQ(Output("echo \"$PATH ${VISCACAM_TRANSFER_LIMIT-none} /proc/driver/cpld\""),
              "/usr/bin:/bin none /proc/driver/cpld\n");
}

/* Where the stand-ins are */

TEST(BoardFolder, IsTheSourceTreesWhenNothingIsInstalled) {
    unsetenv("VISCACAM_BOARD");
    EXPECT_THAT(host::BoardFolder(), EndsWith("/host/board"));
    EXPECT_EQ(Output("command -v xmodem"), host::BoardFolder() + "/xmodem\n");
}

TEST(BoardFolder, IsTheOneThatTheEnvironmentNames) {
    setenv("VISCACAM_BOARD", "/opt/board", 1);
    EXPECT_EQ(host::BoardFolder(), "/opt/board");
}

TEST(BoardFolder, IsNoneWhenTheEnvironmentSaysSo) {
    setenv("VISCACAM_BOARD", "", 1);
    EXPECT_EQ(host::BoardFolder(), "");
}

TEST(BoardFolder, TheProgramsWordGoesBeforeTheEnvironments) {
    setenv("VISCACAM_BOARD", "/opt/board", 1);
    host::SetBoardFolder("relative");
    EXPECT_EQ(host::BoardFolder(), std::filesystem::current_path().string() + "/relative");
}

// Runs a copy of itself, which looks from where it stands.
TEST(BoardFolder, IsTheInstalledOneOfAnInstalledProgram) {
    if (const char *pcExpected = std::getenv("EXPECTED_FOLDER")) {
        ASSERT_EQ(host::BoardFolder(), pcExpected);
        return;
    }
    namespace fs = std::filesystem;
    const Folder stPrefix;
    const std::string strProgram = stPrefix / TEST_BIN "/program";
    const std::string strBoard = stPrefix / TEST_LIBEXEC "/viscacam/board";
    fs::create_directories(fs::path(strProgram).parent_path());
    fs::create_directories(strBoard);
    fs::copy_file(fs::read_symlink("/proc/self/exe"), strProgram);
    WriteFile(strBoard + "/xmodem", "#!/bin/sh\n");
    fs::permissions(strBoard + "/xmodem", fs::perms::owner_all);
    EXPECT_EQ(RunLine("unset VISCACAM_BOARD; EXPECTED_FOLDER=" + strBoard + " " + strProgram +
                      " --gtest_filter='*.IsTheInstalledOne*' >/dev/null"),
              0U);
}

/* The CPLD node */

TEST(Cpld, BothWritingsOfTheLibraryAreLoggedAndKept) {
    LogRecorder stLog(VISCA_LOG_INFO);
    EXPECT_EQ(host::CpldRegister(9), 0U);
    EXPECT_EQ(RunLine("echo -w 0x09 0x01 > /proc/driver/cpld"), 0U);
    EXPECT_EQ(host::CpldRegister(9), 1U);
    EXPECT_EQ(RunLine("echo -w 0x09 0x00 > /proc/driver/cpld"), 0U);
    EXPECT_EQ(host::CpldRegister(9), 0U);
    EXPECT_EQ(stLog.CountWith("cpld: register 0x09 set to 1\n"), 1U);
    EXPECT_EQ(stLog.CountWith("cpld: register 0x09 set to 0\n"), 1U);
}

TEST(Cpld, TheNodeIsReplacedWhereverACommandNamesIt) {
    EXPECT_EQ(RunLine("echo -w 0xFF 0xAA > /proc/driver/cpld && cat /proc/driver/cpld > /dev/null"), 0U);
    EXPECT_EQ(host::CpldRegister(255), 0xAAU);
}

TEST(Cpld, SeveralLinesAreSeveralWritings) {
    EXPECT_EQ(RunLine("printf '%s\\n' '-w 0x01 0x02' '-w 0x03 0x04' > /proc/driver/cpld"), 0U);
    EXPECT_EQ(host::CpldRegister(1), 2U);
    EXPECT_EQ(host::CpldRegister(3), 4U);
}

TEST(Cpld, WhatIsNoWritingOfARegisterIsLoggedOnly) {
    LogRecorder stLog(VISCA_LOG_INFO);
    for (const char *pcLine : {"hello", "-w 0x09", "-w 0x100 0x01", "-w 0x08 0x100", "-w 0x08 0x01 x"}) {
        EXPECT_EQ(RunLine(std::string("echo '") + pcLine + "' > /proc/driver/cpld"), 0U);
        EXPECT_EQ(stLog.CountWith(std::string("cpld: not understood: ") + pcLine + "\n"), 1U) << pcLine;
    }
    EXPECT_EQ(host::CpldRegister(8), 0U);
    EXPECT_EQ(host::CpldRegister(256), 0U);
}

TEST(Cpld, ACommandThatDoesNotWriteChangesNothing) {
    RunLine("echo -w 0x09 0x01 > /proc/driver/cpld");
    LogRecorder stLog(VISCA_LOG_INFO);
    EXPECT_EQ(RunLine("test -w /proc/driver/cpld"), 0U);
    EXPECT_EQ(host::CpldRegister(9), 1U);
    EXPECT_EQ(stLog.CountWith("cpld"), 0U);
}

} // namespace
