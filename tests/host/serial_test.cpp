#include <fstream>
#include <functional>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

using host::EventKind;
using testing::HasSubstr;
using testing::StartsWith;

constexpr uid_t kNobody = 65534;

DrvComParam AtRate(uint32_t ulBaudRate) {
    return {1, 3, ulBaudRate, 8, 1, 0, 0};
}

class Serial : public testing::Test {
  protected:
    void SetUp() override {
        host::SetLog(host::Log::kGeneral, {host::LogTarget::kStderr, host::kLogOff});
        ASSERT_EQ(host::MapPort(0, m_stPty.Path()), "");
    }
    void TearDown() override { host::ClosePort(0); }
    void Open() { ASSERT_EQ(DRV_OpenCom(0, &m_iFd), 0U); }

    Pty m_stPty;
    int32_t m_iFd = -1;
};

// Runs pfnWork in a process of its own and hands back the text that it returns.
std::string InAnotherProcess(const std::function<std::string()> &pfnWork) {
    int aiPipe[2];
    if (pipe(aiPipe) != 0) {
        return "no pipe";
    }
    const pid_t tChild = fork();
    if (tChild == 0) {
        const std::string strText = pfnWork();
        const ssize_t lWritten = write(aiPipe[1], strText.data(), strText.size());
        _exit(lWritten < 0 ? 1 : 0);
    }
    close(aiPipe[1]);
    char acText[256] = "";
    const ssize_t lRead = read(aiPipe[0], acText, sizeof(acText) - 1);
    close(aiPipe[0]);
    waitpid(tChild, nullptr, 0);
    return std::string(acText, lRead > 0 ? static_cast<size_t>(lRead) : 0);
}

// A process that has a device open and locked while this object lives.
class OtherHost {
  public:
    explicit OtherHost(const std::string &strPath) {
        int aiReady[2];
        if (pipe(aiReady) != 0) {
            std::abort();
        }
        m_tChild = fork();
        if (m_tChild == 0) {
            int32_t iFd = -1;
            host::MapPort(1, strPath);
            const char cReady = DRV_OpenCom(1, &iFd) == 0 ? 'y' : 'n';
            _exit(write(aiReady[1], &cReady, 1) == 1 ? pause() : 1);
        }
        close(aiReady[1]);
        m_bReady = read(aiReady[0], &m_cReady, 1) == 1 && m_cReady == 'y';
        close(aiReady[0]);
    }
    ~OtherHost() {
        kill(m_tChild, SIGKILL);
        waitpid(m_tChild, nullptr, 0);
    }
    bool IsReady() const { return m_bReady; }
    std::string Id() const { return std::to_string(m_tChild); }

  private:
    pid_t m_tChild = -1;
    char m_cReady = 0;
    bool m_bReady = false;
};

size_t WriteUntilRefused(int iFd) {
    const char acJunk[256] = {};
    size_t ulWritten = 0;
    for (size_t ulSize : {sizeof(acJunk), sizeof(acJunk[0])}) {
        ssize_t lWritten = 0;
        while ((lWritten = write(iFd, acJunk, ulSize)) > 0) {
            ulWritten += static_cast<size_t>(lWritten);
        }
    }
    return ulWritten;
}

// Writes until the line takes no more, also after the kernel has moved bytes on. Returns how many bytes that
// were.
size_t FillLine(int iFd) {
    const int iFlags = fcntl(iFd, F_GETFL);
    fcntl(iFd, F_SETFL, iFlags | O_NONBLOCK);
    size_t ulWritten = 0;
    size_t ulMore = 0;
    while ((ulMore = WriteUntilRefused(iFd)) > 0) {
        ulWritten += ulMore;
        usleep(50000);
    }
    fcntl(iFd, F_SETFL, iFlags);
    return ulWritten;
}

TEST_F(Serial, OpensRaw8N1At9600) {
    Open();
    const termios st = m_stPty.Settings();
    EXPECT_EQ(cfgetospeed(&st), static_cast<speed_t>(B9600));
    EXPECT_EQ(st.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), 0U);
    EXPECT_EQ(st.c_iflag & (IXON | ICRNL | ISTRIP | INLCR | IGNCR | PARMRK), 0U);
    EXPECT_EQ(st.c_oflag & OPOST, 0U);
    EXPECT_EQ(st.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_EQ(st.c_cflag & (PARENB | CSTOPB | CRTSCTS), 0U);
    EXPECT_EQ(st.c_cflag & (CLOCAL | CREAD), static_cast<tcflag_t>(CLOCAL | CREAD));
    EXPECT_EQ(st.c_cc[VMIN], 1);
    EXPECT_EQ(st.c_cc[VTIME], 0);
}

TEST_F(Serial, GivesABlockingDescriptorThatProgramsInherit) {
    Open();
    EXPECT_EQ(fcntl(m_iFd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(fcntl(m_iFd, F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(Serial, SetsTheThreeRatesOfCameras) {
    Open();
    const std::pair<uint32_t, speed_t> astRates[] = {{38400, B38400}, {19200, B19200}, {9600, B9600}};
    for (const auto &[ulBaudRate, tSpeed] : astRates) {
        const DrvComParam stParam = AtRate(ulBaudRate);
        ASSERT_EQ(DRV_SetComParam(0, &stParam), 0U);
        const termios st = m_stPty.Settings();
        EXPECT_EQ(cfgetospeed(&st), tSpeed);
        EXPECT_EQ(cfgetispeed(&st), tSpeed);
    }
}

TEST_F(Serial, RefusesOtherRatesAndFormatsAndSaysSo) {
    LogRecorder stLog(VISCA_LOG_ERROR);
    Open();
    DrvComParam stParam = AtRate(115200);
    EXPECT_NE(DRV_SetComParam(0, &stParam), 0U);
    EXPECT_EQ(stLog.CountWith(m_stPty.Path() + ": 115200 bit/s is not a camera's rate"), 1U);
    stParam = AtRate(9600);
    stParam.ucStopBits = 2;
    EXPECT_NE(DRV_SetComParam(0, &stParam), 0U);
    EXPECT_NE(DRV_SetComParam(0, nullptr), 0U);
    const DrvComParam stGood = AtRate(9600);
    EXPECT_NE(DRV_SetComParam(1, &stGood), 0U);
    const termios st = m_stPty.Settings();
    EXPECT_EQ(cfgetospeed(&st), static_cast<speed_t>(B9600));
}

TEST_F(Serial, RefusesARateWhenNoPortIsOpen) {
    const DrvComParam stParam = AtRate(9600);
    EXPECT_NE(DRV_SetComParam(0, &stParam), 0U);
}

TEST_F(Serial, SendsAllBytesAndReadsAnswers) {
    Open();
    const uint8_t aucPower[] = {0x81, 0x09, 0x04, 0x00, 0xFF};
    EXPECT_EQ(DRV_ComSend(m_iFd, 5, aucPower), 5);
    EXPECT_EQ(m_stPty.Hear(5), std::string("\x81\x09\x04\x00\xFF", 5));
    ASSERT_EQ(write(m_stPty.Master(), "\x90\x50\x02\xFF", 4), 4);
    char acAnswer[4];
    size_t ulRead = 0;
    while (ulRead < 4) {
        const ssize_t lRead = read(m_iFd, acAnswer + ulRead, 4 - ulRead);
        ASSERT_GT(lRead, 0);
        ulRead += static_cast<size_t>(lRead);
    }
    EXPECT_EQ(std::string(acAnswer, 4), "\x90\x50\x02\xFF");
}

TEST_F(Serial, FlushDiscardsWhatWasReceived) {
    Open();
    pollfd stPoll = {m_iFd, POLLIN, 0};
    ASSERT_EQ(write(m_stPty.Master(), "abc", 3), 3);
    ASSERT_EQ(poll(&stPoll, 1, 20000), 1);
    EXPECT_EQ(DRV_FlushCom(m_iFd, VISCA_FLUSH_BOTH), 0U);
    EXPECT_EQ(poll(&stPoll, 1, 0), 0);
}

// The kernel has handed up to 4 KB to the master's side already, which no flush reaches.
TEST_F(Serial, FlushDiscardsWhatWaitsToBeSent) {
    Open();
    const size_t ulWritten = FillLine(m_iFd);
    ASSERT_GT(ulWritten, 8192U);
    EXPECT_EQ(DRV_FlushCom(m_iFd, VISCA_FLUSH_BOTH), 0U);
    ASSERT_EQ(DRV_ComSend(m_iFd, 1, reinterpret_cast<const uint8_t *>("E")), 1);
    std::string strHeard;
    while (strHeard.find('E') == std::string::npos) {
        const std::string strMore = m_stPty.Hear(1);
        ASSERT_FALSE(strMore.empty());
        strHeard += strMore;
    }
    EXPECT_LE(strHeard.size(), 4097U);
}

TEST_F(Serial, FlushRefusesAnotherModeAndAnotherDescriptor) {
    Open();
    EXPECT_NE(DRV_FlushCom(m_iFd, 7), 0U);
    EXPECT_NE(DRV_FlushCom(-1, VISCA_FLUSH_BOTH), 0U);
    EXPECT_NE(DRV_FlushCom(m_stPty.Master(), VISCA_FLUSH_BOTH), 0U);
}

TEST_F(Serial, SendRefusesWhatIsNoPortAndNoData) {
    Open();
    const uint8_t aucData[] = {1};
    EXPECT_LT(DRV_ComSend(-1, 1, aucData), 0);
    EXPECT_LT(DRV_ComSend(m_stPty.Master(), 1, aucData), 0);
    EXPECT_LT(DRV_ComSend(m_iFd, 1, nullptr), 0);
    EXPECT_LT(DRV_ComSend(m_iFd, 0, aucData), 0);
}

TEST_F(Serial, SendGivesUpAfterASecondWhenNobodyReads) {
    LogRecorder stLog(VISCA_LOG_WARN);
    Open();
    FillLine(m_iFd);
    const uint8_t aucData[16] = {};
    const auto tStart = std::chrono::steady_clock::now();
    EXPECT_EQ(DRV_ComSend(m_iFd, 16, aucData), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - tStart, std::chrono::milliseconds(990));
    EXPECT_EQ(stLog.CountWith("takes no bytes, gave up after 0 of 16"), 1U);
    EXPECT_EQ(fcntl(m_iFd, F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(Serial, SendGoesOnWhenTheOtherSideReadsAgain) {
    Open();
    const size_t ulJunk = FillLine(m_iFd);
    std::thread tReader([&] { EXPECT_GE(m_stPty.Hear(ulJunk).size(), ulJunk); });
    const uint8_t aucData[16] = {};
    EXPECT_EQ(DRV_ComSend(m_iFd, 16, aucData), 16);
    tReader.join();
}

TEST_F(Serial, ObserversSeeOpenRateAndSend) {
    Recorder stRecorder;
    Open();
    const DrvComParam stParam = AtRate(38400);
    DRV_SetComParam(0, &stParam);
    const uint8_t aucData[] = {0x81, 0x01, 0xFF};
    DRV_ComSend(m_iFd, 3, aucData);
    const auto vstSeen = stRecorder.All();
    ASSERT_EQ(vstSeen.size(), 4U);
    EXPECT_EQ(vstSeen[0].stEvent.enKind, EventKind::kComOpened);
    EXPECT_EQ(vstSeen[0].strDevice, m_stPty.Path());
    EXPECT_EQ(vstSeen[1].stEvent.enKind, EventKind::kComRateSet);
    EXPECT_EQ(vstSeen[1].stEvent.ulBaudRate, 38400U);
    EXPECT_EQ(vstSeen[2].stEvent.enKind, EventKind::kComSending);
    EXPECT_EQ(vstSeen[3].stEvent.enKind, EventKind::kComSent);
    EXPECT_EQ(vstSeen[3].stEvent.iResult, 3);
    EXPECT_EQ(vstSeen[3].strBytes, "\x81\x01\xFF");
}

TEST_F(Serial, OpenFailsWithOneLineThatSaysWhichAndWhy) {
    LogRecorder stLog(VISCA_LOG_ERROR);
    int32_t iFd = -1;
    ASSERT_EQ(host::MapPort(0, "/dev/no-such-camera"), "");
    EXPECT_NE(DRV_OpenCom(0, &iFd), 0U);
    EXPECT_EQ(iFd, -1);
    EXPECT_EQ(stLog.Lines().size(), 1U);
    EXPECT_EQ(stLog.CountWith("port 0: cannot open /dev/no-such-camera: no such device\n"), 1U);
    EXPECT_NE(DRV_OpenCom(5, &iFd), 0U);
    EXPECT_EQ(stLog.CountWith("port 5: no device is mapped to this port\n"), 1U);
    EXPECT_NE(DRV_OpenCom(99, &iFd), 0U);
    EXPECT_EQ(stLog.CountWith("port 99: no such port\n"), 1U);
    EXPECT_EQ(iFd, -1);
}

TEST_F(Serial, SecondOpenInTheSameProcessIsRefused) {
    LogRecorder stLog(VISCA_LOG_ERROR);
    int32_t iFd = -1;
    Open();
    EXPECT_NE(DRV_OpenCom(0, &iFd), 0U);
    ASSERT_EQ(host::MapPort(1, m_stPty.Path()), "");
    EXPECT_NE(DRV_OpenCom(1, &iFd), 0U);
    EXPECT_EQ(iFd, -1);
    EXPECT_EQ(stLog.CountWith("already open in this process"), 2U);
}

TEST_F(Serial, APortOfAnotherProcessIsRefusedAlsoToRoot) {
    LogRecorder stLog(VISCA_LOG_ERROR);
    OtherHost stOther(m_stPty.Path());
    ASSERT_TRUE(stOther.IsReady());
    const std::string strWhy = "cannot open " + m_stPty.Path() + ": in use by another process";
    EXPECT_THAT(host::CheckDevice(m_stPty.Path()), StartsWith(strWhy));
    EXPECT_NE(DRV_OpenCom(0, &m_iFd), 0U);
    EXPECT_EQ(m_iFd, -1);
    EXPECT_EQ(stLog.CountWith(strWhy), 1U);
}

TEST_F(Serial, APortIsFreeAgainWhenItsProcessWasKilled) {
    { OtherHost stOther(m_stPty.Path()); }
    EXPECT_EQ(host::CheckDevice(m_stPty.Path()), "");
    EXPECT_EQ(DRV_OpenCom(0, &m_iFd), 0U);
}

TEST_F(Serial, CheckTellsTheCasesApart) {
    EXPECT_EQ(host::CheckDevice(m_stPty.Path()), "");
    EXPECT_EQ(host::CheckDevice("/dev/no-such-camera"), "cannot open /dev/no-such-camera: no such device");
    EXPECT_EQ(host::CheckDevice("/dev/null"), "cannot open /dev/null: not a serial device");
    EXPECT_EQ(host::CheckDevice("/tmp"), "cannot open /tmp: a directory, not a serial device");
    char acFile[] = "/tmp/host_serial_XXXXXX";
    close(mkstemp(acFile));
    EXPECT_EQ(host::CheckDevice(acFile),
              std::string("cannot open ") + acFile + ": a regular file, not a serial device");
    unlink(acFile);
}

TEST_F(Serial, CheckNamesMissingPermission) {
    ASSERT_EQ(chmod(m_stPty.Path().c_str(), 0), 0);
    const std::string strPath = m_stPty.Path();
    const std::string strWhy = InAnotherProcess([&]() -> std::string {
        if (geteuid() == 0 && setuid(kNobody) != 0) {
            return "cannot drop root";
        }
        return host::CheckDevice(strPath);
    });
    EXPECT_EQ(strWhy, "cannot open " + strPath + ": no permission");
}

TEST_F(Serial, CheckChangesNoSettings) {
    const termios stBefore = m_stPty.Settings();
    EXPECT_EQ(host::CheckDevice(m_stPty.Path()), "");
    const termios stAfter = m_stPty.Settings();
    EXPECT_EQ(stBefore.c_lflag, stAfter.c_lflag);
    EXPECT_EQ(stBefore.c_cflag, stAfter.c_cflag);
}

TEST_F(Serial, CloseRestoresTheSettingsAndTheLock) {
    const int iKeeper = open(m_stPty.Path().c_str(), O_RDWR | O_NOCTTY);
    const termios stBefore = m_stPty.Settings();
    Open();
    EXPECT_TRUE(host::IsPortPresent(0));
    host::ClosePort(0);
    EXPECT_FALSE(host::IsPortPresent(0));
    EXPECT_EQ(m_stPty.Settings().c_lflag, stBefore.c_lflag);
    EXPECT_EQ(flock(iKeeper, LOCK_EX | LOCK_NB), 0);
    close(iKeeper);
}

TEST_F(Serial, MappingIsCheckedAndFixedWhileThePortIsOpen) {
    EXPECT_EQ(host::PortPath(0), m_stPty.Path());
    EXPECT_EQ(host::PortPath(99), "");
    EXPECT_THAT(host::MapPort(8, "/dev/ttyS0"), HasSubstr("port 8"));
    EXPECT_THAT(host::MapPort(0, ""), HasSubstr("no device"));
    Open();
    EXPECT_THAT(host::MapPort(0, "/dev/ttyS0"), HasSubstr("is open on " + m_stPty.Path()));
    EXPECT_EQ(host::PortPath(0), m_stPty.Path());
}

} // namespace
