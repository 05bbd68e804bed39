#include <memory>

#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

using host::EventKind;

const uint8_t kZoomStop[] = {0x81, 0x01, 0x04, 0x07, 0x00, 0xFF};

// A camera behind a symbolic link, as udev makes one for an adapter.
class Watch : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(mkdtemp(m_acDir), nullptr);
        m_strLink = std::string(m_acDir) + "/camera";
        PlugIn();
        ASSERT_EQ(host::MapPort(0, m_strLink), "");
        ASSERT_EQ(DRV_OpenCom(0, &m_iFd), 0U);
    }
    void TearDown() override {
        host::ClosePort(0);
        unlink(m_strLink.c_str());
        rmdir(m_acDir);
    }
    void Pull() {
        m_pstPty.reset();
        unlink(m_strLink.c_str());
    }
    void PlugIn() {
        m_pstPty = std::make_unique<Pty>();
        ASSERT_EQ(symlink(m_pstPty->Path().c_str(), m_strLink.c_str()), 0);
    }
    int32_t Send() const { return DRV_ComSend(m_iFd, sizeof(kZoomStop), kZoomStop); }

    LogRecorder m_stLog{VISCA_LOG_WARN};
    Recorder m_stEvents;
    char m_acDir[32] = "/tmp/host_watch_XXXXXX";
    std::string m_strLink;
    std::unique_ptr<Pty> m_pstPty;
    int32_t m_iFd = -1;
};

TEST_F(Watch, NoticesAPulledAdapterWithoutTraffic) {
    EXPECT_TRUE(host::IsPortPresent(0));
    Pull();
    EXPECT_TRUE(m_stEvents.WaitFor(EventKind::kComVanished));
    EXPECT_FALSE(host::IsPortPresent(0));
}

TEST_F(Watch, SendsFailAtOnceAndTheLossIsLoggedOnce) {
    Pull();
    for (int i = 0; i < 5; i++) {
        EXPECT_LT(Send(), 0);
    }
    EXPECT_TRUE(m_stEvents.WaitFor(EventKind::kComVanished));
    EXPECT_LT(Send(), 0);
    EXPECT_EQ(m_stEvents.Count(EventKind::kComVanished), 1U);
    EXPECT_EQ(m_stLog.CountWith(m_strLink + " is gone"), 1U);
}

TEST_F(Watch, PutsTheDeviceThatCameBackBehindTheSameDescriptor) {
    const DrvComParam stParam = {1, 3, 38400, 8, 1, 0, 0};
    ASSERT_EQ(DRV_SetComParam(0, &stParam), 0U);
    Pull();
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComVanished));
    PlugIn();
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComBack));

    EXPECT_TRUE(host::IsPortPresent(0));
    const termios st = m_pstPty->Settings();
    EXPECT_EQ(cfgetospeed(&st), static_cast<speed_t>(B38400));
    EXPECT_EQ(st.c_lflag & (ICANON | ECHO), 0U);
    EXPECT_EQ(Send(), 6);
    EXPECT_EQ(m_pstPty->Hear(6), std::string("\x81\x01\x04\x07\x00\xFF", 6));
    ASSERT_EQ(write(m_pstPty->Master(), "\x90", 1), 1);
    char cByte = 0;
    EXPECT_EQ(read(m_iFd, &cByte, 1), 1);
    EXPECT_EQ(cByte, '\x90');
    EXPECT_EQ(m_stLog.CountWith(m_strLink + " is back at 38400 bit/s"), 1U);
}

TEST_F(Watch, ComesBackLockedInheritableAndAgainRemovable) {
    Pull();
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComVanished));
    PlugIn();
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComBack));
    EXPECT_NE(host::CheckDevice(m_strLink), "");
    EXPECT_EQ(fcntl(m_iFd, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(fcntl(m_iFd, F_GETFL) & O_NONBLOCK, 0);
    Pull();
    EXPECT_LT(Send(), 0);
    EXPECT_EQ(m_stEvents.Count(EventKind::kComVanished), 2U);
}

TEST_F(Watch, TheDeviceTakesOverANonBlockingDescriptorAsSuch) {
    ASSERT_EQ(fcntl(m_iFd, F_SETFL, O_RDWR | O_NONBLOCK), 0);
    Pull();
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComVanished));
    PlugIn();
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComBack));
    char cByte = 0;
    EXPECT_EQ(read(m_iFd, &cByte, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
}

TEST_F(Watch, ReplugBetweenTwoLooksIsNoticedByTheSend) {
    Pull();
    PlugIn();
    EXPECT_LT(Send(), 0);
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComBack));
    EXPECT_EQ(Send(), 6);
}

TEST_F(Watch, TakesTheSameDeviceAgainAfterItWasHungUp) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can hang up a line and leave the device in place";
    }
    ASSERT_EQ(ioctl(m_iFd, TIOCVHANGUP), 0);
    EXPECT_LT(Send(), 0);
    ASSERT_TRUE(m_stEvents.WaitFor(EventKind::kComBack));
    EXPECT_EQ(Send(), 6);
}

TEST_F(Watch, ItsThreadIsListedAndEndsWithTheLastPort) {
    const auto WatcherRuns = [] {
        return host::ThreadTable().find("runs   HostComWatch") != std::string::npos;
    };
    const auto Becomes = [&](bool bWanted) {
        const auto tEnd = std::chrono::steady_clock::now() + kPatience;
        while (WatcherRuns() != bWanted && std::chrono::steady_clock::now() < tEnd) {
            usleep(1000);
        }
        return WatcherRuns() == bWanted;
    };
    EXPECT_TRUE(Becomes(true));
    host::ClosePort(0);
    EXPECT_TRUE(Becomes(false));
}

} // namespace
