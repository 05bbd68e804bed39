// What the kernel tells of a serial adapter, from files made up for the test.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/doctor/adapter.h"

namespace tool::doctor {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

/** A USB adapter as /sys shows it: the port two levels below the USB device. */
class AdapterFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(m_root / "devices/usb1/1-2/1-2:1.0/ttyUSB0");
        fs::create_directories(m_root / "bus/drivers/ftdi_sio");
        fs::create_directories(m_root / "class/tty/ttyUSB0");
        fs::create_directory_symlink(m_root / "devices/usb1/1-2/1-2:1.0/ttyUSB0",
                                     m_root / "class/tty/ttyUSB0/device");
        fs::create_directory_symlink(m_root / "bus/drivers/ftdi_sio",
                                     m_root / "devices/usb1/1-2/1-2:1.0/ttyUSB0/driver");
        std::ofstream(m_root / "devices/usb1/1-2/product") << "FT232R USB UART\n";
        latency("16");
    }
    void TearDown() override { fs::remove_all(m_root); }
    void latency(const std::string &ms) {
        std::ofstream(m_root / "devices/usb1/1-2/1-2:1.0/ttyUSB0/latency_timer") << ms << "\n";
    }
    std::vector<std::string> judged(std::optional<bool> lowLatency) {
        std::vector<std::string> texts;
        Report report("", [&](const Finding &finding) { texts.push_back(finding.text); });
        judgeAdapter(lookUpAdapter("ttyUSB0", m_root), lowLatency, report);
        m_advice = report.advice();
        EXPECT_TRUE(report.healthy());
        return texts;
    }

    const fs::path m_root = fs::path(::testing::TempDir()) / ("viscacam-sysfs-" + std::to_string(getpid()));
    std::vector<std::string> m_advice;
};

} // namespace

TEST_F(AdapterFiles, GiveDriverProductAndLatencyTimer) {
    const Adapter adapter = lookUpAdapter("ttyUSB0", m_root);
    EXPECT_EQ(adapter.driver, "ftdi_sio");
    EXPECT_EQ(adapter.product, "FT232R USB UART");
    EXPECT_EQ(adapter.latencyMs, 16);
}

TEST_F(AdapterFiles, ALongTimerIsNotedWithTheRemedy) {
    EXPECT_THAT(judged(false), ElementsAre("FT232R USB UART, driver ftdi_sio",
                                           HasSubstr("holds received bytes back for up to 16 ms")));
    EXPECT_THAT(m_advice, ElementsAre(HasSubstr("setserial DEVICE low_latency")));
}

TEST_F(AdapterFiles, ALongTimerIsNoMatterWithTheLowLatencyFlag) {
    EXPECT_THAT(judged(true), ElementsAre(HasSubstr("ftdi_sio"), "the driver's low-latency flag is set"));
    EXPECT_THAT(m_advice, IsEmpty());
}

TEST_F(AdapterFiles, AShortTimerIsGood) {
    latency("1");
    EXPECT_THAT(judged(std::nullopt),
                ElementsAre(HasSubstr("ftdi_sio"), "received bytes are handed over within 1 ms"));
    EXPECT_THAT(m_advice, IsEmpty());
}

TEST_F(AdapterFiles, OfAnUnknownDeviceNothingIsTold) {
    const Adapter adapter = lookUpAdapter("ttyS7", m_root);
    EXPECT_THAT(adapter.driver, IsEmpty());
    EXPECT_THAT(adapter.product, IsEmpty());
    EXPECT_FALSE(adapter.latencyMs.has_value());
}

} // namespace tool::doctor
