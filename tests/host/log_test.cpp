#include <cerrno>
#include <cstdio>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

using host::Log;
using host::LogSetup;
using host::LogTarget;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// A file path of the test's own that is gone afterwards.
class TempPath {
  public:
    TempPath() {
        const int iFd = mkstemp(m_acPath);
        close(iFd);
        unlink(m_acPath);
    }
    ~TempPath() { unlink(m_acPath); }
    std::string Text() const { return m_acPath; }

  private:
    char m_acPath[32] = "/tmp/host_log_XXXXXX";
};

class Logs : public testing::Test {
  protected:
    void TearDown() override {
        host::SetLog(Log::kGeneral, {LogTarget::kStderr, host::kLogOff});
        host::SetLog(Log::kCamera, {LogTarget::kStderr, host::kLogOff});
    }
};

std::vector<std::string> LinesOf(const std::string &strPath) {
    std::ifstream stFile(strPath);
    std::vector<std::string> vstrLines;
    for (std::string strLine; std::getline(stFile, strLine);) {
        vstrLines.push_back(strLine);
    }
    return vstrLines;
}

// A pipe in the place of stderr.
class StderrPipe {
  public:
    StderrPipe() : m_iSaved(dup(STDERR_FILENO)) {
        if (pipe2(m_aiPipe, O_CLOEXEC) != 0 || fcntl(m_aiPipe[0], F_SETFL, O_NONBLOCK) != 0) {
            std::abort();
        }
        dup2(m_aiPipe[1], STDERR_FILENO);
    }
    ~StderrPipe() {
        dup2(m_iSaved, STDERR_FILENO);
        close(m_iSaved);
        CloseReader();
        close(m_aiPipe[1]);
    }
    void CloseReader() {
        if (m_aiPipe[0] >= 0) {
            close(m_aiPipe[0]);
        }
        m_aiPipe[0] = -1;
    }
    std::string Read() const {
        std::string strText(1 << 20, '\0');
        const ssize_t lRead = read(m_aiPipe[0], &strText[0], strText.size());
        strText.resize(lRead > 0 ? static_cast<size_t>(lRead) : 0);
        return strText;
    }

  private:
    int m_iSaved;
    int m_aiPipe[2] = {-1, -1};
};

TEST_F(Logs, LinesOfTheLevelAndBelowPass) {
    LogRecorder stLog(VISCA_LOG_INFO);
    DRV_Common_Print(VISCA_LOG_ERROR, "error\n");
    DRV_Common_Print(VISCA_LOG_INFO, "info\n");
    DRV_Common_Print(VISCA_LOG_DEBUG, "debug\n");
    EXPECT_THAT(stLog.Lines(), ElementsAre("error\n", "info\n"));
}

TEST_F(Logs, NothingIsFormattedThatDoesNotPass) {
    host::SetLogLevel(Log::kGeneral, VISCA_LOG_WARN);
    int iCounted = 0;
    DRV_Common_Print(VISCA_LOG_DEBUG, "text%n\n",
                     &iCounted); // %n stores when, and only when, it is formatted
    DRV_Common_Print_Cam(VISCA_LOG_DEBUG, "text%n\n", &iCounted);
    EXPECT_EQ(iCounted, 0);
}

TEST_F(Logs, GeneralIsOnFromWarnAndCameraIsOffAtStart) {
    StderrPipe stPipe;
    host::SetLog(Log::kGeneral, {});
    DRV_Common_Print(VISCA_LOG_WARN, "warn\n");
    DRV_Common_Print(VISCA_LOG_INFO, "info\n");
    DRV_Common_Print_Cam(VISCA_LOG_ERROR, "camera\n");
    EXPECT_EQ(stPipe.Read(), "warn\n");
}

TEST_F(Logs, GeneralAndCameraGoToDifferentTargets) {
    TempPath stFile;
    LogRecorder stLog(VISCA_LOG_VERBO);
    ASSERT_EQ(host::SetLog(Log::kCamera, {LogTarget::kFile, VISCA_LOG_DEBUG, stFile.Text()}), "");
    DRV_Common_Print_Cam(VISCA_LOG_DEBUG, "send:%s\n", "0x81");
    DRV_Common_Print(VISCA_LOG_DEBUG, "general\n");
    EXPECT_THAT(LinesOf(stFile.Text()), ElementsAre("send:0x81"));
    EXPECT_THAT(stLog.Lines(), ElementsAre("general\n"));
}

TEST_F(Logs, FileIsAppendedTo) {
    TempPath stFile;
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(host::SetLog(Log::kGeneral, {LogTarget::kFile, VISCA_LOG_INFO, stFile.Text()}), "");
        DRV_Common_Print(VISCA_LOG_INFO, "line %d\n", i);
    }
    EXPECT_THAT(LinesOf(stFile.Text()), ElementsAre("line 0", "line 1"));
}

TEST_F(Logs, ATargetThatCannotBeOpenedLeavesTheLogAsItWas) {
    LogRecorder stLog(VISCA_LOG_INFO);
    EXPECT_THAT(host::SetLog(Log::kGeneral, {LogTarget::kFile, VISCA_LOG_INFO, "/nowhere/at/all.log"}),
                HasSubstr("cannot log to /nowhere/at/all.log: No such file"));
    EXPECT_NE(host::SetLog(Log::kGeneral, {LogTarget::kSyslog, VISCA_LOG_INFO, "/nowhere/socket"}), "");
    EXPECT_NE(host::SetLog(Log::kGeneral, {LogTarget::kSink, VISCA_LOG_INFO}), "");
    DRV_Common_Print(VISCA_LOG_INFO, "still here\n");
    EXPECT_THAT(stLog.Lines(), ElementsAre("still here\n"));
}

TEST_F(Logs, EveryLineEndsInOneNewlineAndLongOnesAreCut) {
    LogRecorder stLog(VISCA_LOG_INFO);
    DRV_Common_Print(VISCA_LOG_INFO, "none");
    DRV_Common_Print(VISCA_LOG_INFO, "%s\n", std::string(1023, 'x').c_str());
    DRV_Common_Print(VISCA_LOG_INFO, "%s\n", std::string(1024, 'y').c_str());
    DRV_Common_Print(VISCA_LOG_INFO, "%s", std::string(1024, 'z').c_str());
    const auto vstrLines = stLog.Lines();
    ASSERT_EQ(vstrLines.size(), 4U);
    EXPECT_EQ(vstrLines[0], "none\n");
    EXPECT_EQ(vstrLines[1], std::string(1023, 'x') + "\n");
    EXPECT_EQ(vstrLines[2], std::string(1020, 'y') + "...\n");
    EXPECT_EQ(vstrLines[3], std::string(1020, 'z') + "...\n");
}

TEST_F(Logs, ErrnoIsLeftAlone) {
    TempPath stFile;
    host::SetLog(Log::kGeneral, {LogTarget::kFile, VISCA_LOG_INFO, stFile.Text()});
    errno = EINTR;
    DRV_Common_Print(VISCA_LOG_INFO, "line\n");
    EXPECT_EQ(errno, EINTR);
}

TEST_F(Logs, LinesOfSeveralThreadsDoNotMix) {
    TempPath stFile;
    host::SetLog(Log::kGeneral, {LogTarget::kFile, VISCA_LOG_INFO, stFile.Text()});
    host::SetLog(Log::kCamera, {LogTarget::kFile, VISCA_LOG_INFO, stFile.Text()});
    std::vector<std::thread> vtThreads;
    for (char cMark : {'a', 'b', 'c', 'd'}) {
        vtThreads.emplace_back([cMark] {
            const std::string strText(200, cMark);
            for (int i = 0; i < 200; i++) {
                DRV_Common_Print(VISCA_LOG_INFO, "%s\n", strText.c_str());
                DRV_Common_Print_Cam(VISCA_LOG_INFO, "%s\n", strText.c_str());
            }
        });
    }
    for (std::thread &t : vtThreads) {
        t.join();
    }
    const auto vstrLines = LinesOf(stFile.Text());
    EXPECT_EQ(vstrLines.size(), 1600U);
    for (const std::string &strLine : vstrLines) {
        ASSERT_EQ(strLine, std::string(200, strLine[0]));
    }
}

TEST_F(Logs, AFullPipeDropsAndCountsAndRecovers) {
    StderrPipe stPipe;
    host::SetLog(Log::kGeneral, {LogTarget::kStderr, VISCA_LOG_INFO});
    const std::string strLine(1000, 'x');
    const uint64_t ullBefore = host::DroppedLogLines(Log::kGeneral);
    for (int i = 0; i < 2000; i++) { // 2 MB, more than any pipe holds
        DRV_Common_Print(VISCA_LOG_INFO, "%s\n", strLine.c_str());
    }
    const uint64_t ullDropped = host::DroppedLogLines(Log::kGeneral) - ullBefore;
    EXPECT_GT(ullDropped, 900U);
    EXPECT_EQ(stPipe.Read().size(), (2000 - ullDropped) * 1001);
    DRV_Common_Print(VISCA_LOG_INFO, "again\n");
    EXPECT_EQ(stPipe.Read(), "again\n");
}

TEST_F(Logs, APipeWithoutReaderDoesNotEndTheProcess) {
    StderrPipe stPipe;
    stPipe.CloseReader();
    host::SetLog(Log::kGeneral, {LogTarget::kStderr, VISCA_LOG_INFO});
    const uint64_t ullBefore = host::DroppedLogLines(Log::kGeneral);
    DRV_Common_Print(VISCA_LOG_INFO, "nobody reads this\n");
    EXPECT_EQ(host::DroppedLogLines(Log::kGeneral) - ullBefore, 1U);
}

class SyslogDaemon {
  public:
    explicit SyslogDaemon(const std::string &strPath) : m_iFd(socket(AF_UNIX, SOCK_DGRAM, 0)) {
        sockaddr_un st = {};
        st.sun_family = AF_UNIX;
        std::memcpy(st.sun_path, strPath.c_str(), strPath.size() + 1);
        if (bind(m_iFd, reinterpret_cast<sockaddr *>(&st), sizeof(st)) != 0) {
            std::abort();
        }
    }
    ~SyslogDaemon() { close(m_iFd); }
    std::string Receive() const {
        char acBuf[2048];
        const ssize_t lRead = recv(m_iFd, acBuf, sizeof(acBuf), MSG_DONTWAIT);
        return std::string(acBuf, lRead > 0 ? static_cast<size_t>(lRead) : 0);
    }

  private:
    int m_iFd;
};

TEST_F(Logs, SyslogGetsADatagramWithPriorityAndName) {
    TempPath stSocket;
    SyslogDaemon stDaemon(stSocket.Text());
    ASSERT_EQ(host::SetLog(Log::kGeneral, {LogTarget::kSyslog, VISCA_LOG_VERBO, stSocket.Text()}), "");
    DRV_Common_Print(VISCA_LOG_WARN, "warn\n");
    DRV_Common_Print(VISCA_LOG_VERBO, "verbo\n");
    const std::string strFirst = stDaemon.Receive();
    EXPECT_THAT(strFirst, StartsWith("<12>")); // facility user 8, warning 4
    EXPECT_THAT(strFirst, HasSubstr(" host_log_test[" + std::to_string(getpid()) + "]: "));
    EXPECT_THAT(strFirst, EndsWith(": warn"));
    EXPECT_THAT(stDaemon.Receive(), StartsWith("<15>")); // debug 7, the last that syslog knows
}

TEST_F(Logs, SyslogIsFoundAgainAfterTheDaemonWasRestarted) {
    TempPath stSocket;
    auto pstFirst = std::make_unique<SyslogDaemon>(stSocket.Text());
    ASSERT_EQ(host::SetLog(Log::kGeneral, {LogTarget::kSyslog, VISCA_LOG_INFO, stSocket.Text()}), "");
    pstFirst.reset();
    unlink(stSocket.Text().c_str());
    const uint64_t ullBefore = host::DroppedLogLines(Log::kGeneral);
    DRV_Common_Print(VISCA_LOG_INFO, "lost\n");
    EXPECT_EQ(host::DroppedLogLines(Log::kGeneral) - ullBefore, 1U);
    SyslogDaemon stSecond(stSocket.Text());
    DRV_Common_Print(VISCA_LOG_INFO, "found\n");
    EXPECT_THAT(stSecond.Receive(), EndsWith("found"));
}

TEST_F(Logs, ASyslogThatDoesNotReadCostsLinesNotTime) {
    TempPath stSocket;
    SyslogDaemon stDaemon(stSocket.Text());
    ASSERT_EQ(host::SetLog(Log::kGeneral, {LogTarget::kSyslog, VISCA_LOG_INFO, stSocket.Text()}), "");
    const uint64_t ullBefore = host::DroppedLogLines(Log::kGeneral);
    for (int i = 0; i < 5000; i++) {
        DRV_Common_Print(VISCA_LOG_INFO, "line\n");
    }
    EXPECT_GT(host::DroppedLogLines(Log::kGeneral) - ullBefore, 0U);
}

} // namespace
