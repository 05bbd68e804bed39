// A tap between a host and a camera.
#include "tests/e2e/command.h"
#include "tests/e2e/raw_line.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

namespace {

const std::string kPower("\x81\x09\x04\x00\xFF", 5);
const std::string kPowerOn("\x90\x50\x02\xFF", 4);

std::string allBytes() {
    std::string bytes;
    for (int value = 0; value < 256; ++value)
        bytes += static_cast<char>(value);
    return bytes;
}

std::string contentOf(const std::string &path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/** The access mode of the descriptor with which a process has a device open; -1 when it has not. */
int accessOf(pid_t pid, const std::string &device) {
    const std::string process = "/proc/" + std::to_string(pid);
    for (const auto &entry : std::filesystem::directory_iterator(process + "/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) != device)
            continue;
        std::ifstream info(process + "/fdinfo/" + entry.path().filename().string());
        std::string word;
        while (info >> word && word != "flags:") {}
        info >> word;
        return static_cast<int>(std::stoul(word, nullptr, 8) & O_ACCMODE);
    }
    return -1;
}

} // namespace

TEST(Tap, PassesEveryByteBothWaysUnchanged) {
    const RawDevice device;
    const std::string link = temporaryPath("tap");
    Command tap({"tap", device.path(), "--link", link, "--quiet", "-o", link + ".capture"});
    while (access(link.c_str(), F_OK) != 0)
        poll(nullptr, 0, 5);
    const RawPort host(link);
    writeBytes(host.fd(), allBytes());
    EXPECT_EQ(readBytes(device.otherEnd(), 256), allBytes());
    writeBytes(device.otherEnd(), allBytes());
    EXPECT_EQ(readBytes(host.fd(), 256), allBytes());
    tap.send(SIGTERM);
    EXPECT_EQ(tap.finish(), 0);
    EXPECT_THAT(tap.out(), IsEmpty());
    EXPECT_NE(access(link.c_str(), F_OK), 0) << "the link is gone";
    unlink((link + ".capture").c_str());
}

TEST(Tap, SetsTheHostsRateBeforeTheBytesPass) {
    const RawDevice device;
    const std::string link = temporaryPath("tap");
    Command tap({"tap", device.path(), "--link", link});
    EXPECT_EQ(tap.waitFor("tap of"), "tap of " + device.path() + " at 9600 bit/s, the host opens " + link);
    const RawPort host(link);
    for (const speed_t speed : {B38400, B19200, B9600, B19200}) {
        host.set(speed);
        writeBytes(host.fd(), kPower);
        EXPECT_EQ(readBytes(device.otherEnd(), 5), kPower);
        EXPECT_EQ(device.speed(), speed);
    }
    tap.waitFor("baud 38400");
    EXPECT_THAT(tap.waitFor("81 09 04 00 FF"), HasSubstr("power inquiry"));
}

TEST(Tap, FollowsAHostThatOnlyChangesItsRate) {
    const RawDevice device;
    const std::string link = temporaryPath("tap");
    Command tap({"tap", device.path(), "--link", link});
    tap.waitFor("tap of");
    const RawPort host(link, B19200);
    EXPECT_THAT(tap.waitFor("baud"), MatchesRegex(" +[0-9.]+ ms  baud 19200"));
    EXPECT_EQ(device.speed(), static_cast<speed_t>(B19200));
}

TEST(Tap, AClosedHostFindsNothingOldWhenItOpensAgain) {
    const RawDevice device;
    const std::string link = temporaryPath("tap");
    Command tap({"tap", device.path(), "--link", link});
    tap.waitFor("tap of");
    {
        const RawPort host(link);
        writeBytes(device.otherEnd(), kPowerOn); // which it does not read
        tap.waitFor("90 50 02 FF");
    }
    tap.waitFor("closed");
    writeBytes(device.otherEnd(), kPowerOn);
    tap.waitFor("90 50 02 FF");
    const RawPort host(link);
    tap.waitFor("opened");
    writeBytes(device.otherEnd(), "\x90\x41\xFF");
    EXPECT_EQ(readBytes(host.fd(), 3), "\x90\x41\xFF");
}

TEST(Tap, AListenerHasNoHostAndCannotWrite) {
    const RawDevice device;
    const std::string capture = temporaryPath("capture");
    Command tap({"tap", device.path(), "--listen", "--baud", "19200", "--wire", "both", "-o", capture});
    EXPECT_THAT(tap.waitFor("tap of"), HasSubstr("at 19200 bit/s, listening"));
    EXPECT_EQ(accessOf(tap.pid(), device.path()), O_RDONLY);
    EXPECT_EQ(device.speed(), static_cast<speed_t>(B19200));
    writeBytes(device.otherEnd(), kPower + kPowerOn);
    EXPECT_THAT(tap.waitFor("->camera"), HasSubstr("power inquiry"));
    EXPECT_THAT(tap.waitFor("<-camera"), HasSubstr("power on"));
    tap.send(SIGTERM);
    EXPECT_EQ(tap.finish(), 0);
    EXPECT_THAT(contentOf(capture),
                MatchesRegex("# viscacam capture 1\n# started .*Z\n# port .*\n# baud 19200\n"
                             "[0-9.]+ > 81 09 04 00 FF\n[0-9.]+ < 90 50 02 FF\n"));
    unlink(capture.c_str());
}

TEST(Tap, WaitsForADeviceThatVanishesAndGoesOnWhenItIsBack) {
    const std::string camera_link = temporaryPath("camera");
    const std::string link = temporaryPath("tap");
    Command camera({"sim", "--full-speed", "--latency", "none", "--boot", "0", "--link", camera_link});
    camera.waitFor("listening");
    Command tap({"tap", camera_link, "--link", link});
    tap.waitFor("tap of");
    const RawPort host(link);
    camera.type("hang-up\n");
    tap.waitFor("gone");
    writeBytes(host.fd(), kPower);
    tap.waitFor("lost 5");
    camera.type("replug\n");
    tap.waitFor("back");
    writeBytes(host.fd(), kPower);
    EXPECT_EQ(readBytes(host.fd(), 4), kPowerOn);
}

TEST(Tap, ADeviceThatIsNoneIsRefused) {
    Command missing({"tap", "/dev/no-such-device"});
    EXPECT_EQ(missing.finish(), 1);
    EXPECT_EQ(missing.err(), "viscacam: cannot open /dev/no-such-device: no such device\n");
    const RawDevice device;
    Command first({"tap", device.path(), "--link", temporaryPath("tap")});
    first.waitFor("tap of");
    Command second({"tap", device.path(), "--link", temporaryPath("other")});
    EXPECT_EQ(second.finish(), 1);
    EXPECT_THAT(second.err(), HasSubstr("in use by another process (" + std::to_string(first.pid()) + ")"));
}

TEST(Tap, ItsHelpFitsOnAScreenAndHasAnExample) {
    Command help({"tap", "--help"});
    EXPECT_EQ(help.finish(), 0);
    EXPECT_THAT(help.out(), HasSubstr("Example: viscacam tap"));
    EXPECT_LE(linesOf(help.out()).size(), 30U);
}

TEST(Tap, OnlyAListenerHasARateOfItsOwn) {
    Command rate({"tap", "/dev/null", "--baud", "19200"});
    EXPECT_EQ(rate.finish(), 2);
    Command link({"tap", "/dev/null", "--listen", "--link", "/tmp/tap"});
    EXPECT_EQ(link.finish(), 2);
}

} // namespace e2e
