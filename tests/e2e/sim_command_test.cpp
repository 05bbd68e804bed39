// A simulated camera as a process.
#include "tests/e2e/command.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

namespace {

const std::vector<std::string> kQuickCamera = {"sim", "--full-speed", "--latency", "none", "--boot", "0"};

std::vector<std::string> with(std::vector<std::string> arguments, const std::vector<std::string> &more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

bool isLink(const std::string &path) {
    struct stat found = {};
    return lstat(path.c_str(), &found) == 0 && S_ISLNK(found.st_mode);
}

/** Ask the power state at 9600 bit/s, and return what comes up to the end of the answer. */
std::string askPower(const std::string &device) {
    const int fd = open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    tcgetattr(fd, &settings);
    cfmakeraw(&settings);
    cfsetspeed(&settings, B9600);
    tcsetattr(fd, TCSAFLUSH, &settings);
    EXPECT_EQ(write(fd, "\x81\x09\x04\x00\xFF", 5), 5);
    std::string answer;
    pollfd source = {fd, POLLIN, 0};
    while (answer.find('\xFF', answer.find("\x90\x50")) == std::string::npos &&
           poll(&source, 1, 10000) == 1) {
        char byte = 0;
        if (read(fd, &byte, 1) == 1)
            answer += byte;
    }
    close(fd);
    return answer;
}

} // namespace

TEST(SimCommand, PrintsDeviceAndLinkAndRemovesTheLinkAtTheEnd) {
    const std::string link = temporaryPath("link");
    Command camera(with(kQuickCamera, {"--camera", "sony3", "--link", link}));
    EXPECT_THAT(camera.waitFor("listening"),
                MatchesRegex("sony3 .0x02000003. listening at 9600 bit/s on /dev/pts/[0-9]+, link " + link));
    EXPECT_TRUE(isLink(link));
    camera.send(SIGTERM);
    EXPECT_EQ(camera.finish(), 0);
    EXPECT_FALSE(isLink(link));
    EXPECT_THAT(camera.err(), IsEmpty());
}

TEST(SimCommand, AnswersOnItsDeviceAndTracesThePacketsInWords) {
    const std::string link = temporaryPath("link");
    Command camera(with(kQuickCamera, {"--link", link, "--trace"}));
    camera.waitFor("camera: on");
    EXPECT_EQ(askPower(link), "\x90\x50\x02\xFF");
    EXPECT_THAT(camera.waitFor("->camera"),
                MatchesRegex(" +[0-9.]+ ms  ->camera  81 09 04 00 FF +power inquiry"));
    EXPECT_THAT(camera.waitFor("90 50 02 FF"), MatchesRegex(" +[0-9.]+ ms  <-camera  90 50 02 FF +power on"));
}

TEST(SimCommand, ObeysTheDialog) {
    Command camera(kQuickCamera);
    camera.waitFor("listening");
    camera.type("fault mute\nfault noise=0.5#3\n  clear mute \n\nstate\nquit\n");
    EXPECT_EQ(camera.finish(), 0);
    EXPECT_THAT(linesOf(camera.out()),
                ElementsAre(HasSubstr("listening"), "ok", "ok", "ok",
                            ::testing::AllOf(MatchesRegex("\\{.*\\}"), HasSubstr("\"camera\":\"sony1\""),
                                             HasSubstr("noise=0.5#3"), ::testing::Not(HasSubstr("mute")))));
}

TEST(SimCommand, AnswersWhatItDoesNotUnderstandByAnErrorAndGoesOn) {
    Command camera(kQuickCamera);
    camera.waitFor("listening");
    camera.type("nonsense\nfault\nfault nonsense\nstate now\nhelp\nquit\n");
    EXPECT_EQ(camera.finish(), 0);
    const std::vector<std::string> lines = linesOf(camera.out());
    ASSERT_GE(lines.size(), 5U);
    EXPECT_EQ(lines[1], "error: no command is called \"nonsense\"; \"help\" lists them");
    EXPECT_EQ(lines[2], "error: fault needs NAME=VALUE");
    EXPECT_THAT(lines[3], HasSubstr("error: no fault is called \"nonsense\"; known are"));
    EXPECT_EQ(lines[4], "error: state takes nothing after it");
    EXPECT_THAT(camera.out(), HasSubstr("replug            plug the adapter in again"));
}

TEST(SimCommand, LosesItsPowerAndGetsItBack) {
    const std::string link = temporaryPath("link");
    Command camera(with(kQuickCamera, {"--link", link, "--trace"}));
    camera.waitFor("camera: on");
    camera.type("power-cut\nstate\n");
    EXPECT_THAT(camera.waitFor("{"), HasSubstr("\"power\":\"off\""));
    camera.type("power-on\n");
    camera.waitFor("camera: on");
    EXPECT_THAT(askPower(link), HasSubstr("\x90\x50\x02\xFF"));
}

TEST(SimCommand, PullsItsAdapterAndPlugsItInBehindTheSameLink) {
    const std::string link = temporaryPath("link");
    Command camera(with(kQuickCamera, {"--link", link}));
    camera.waitFor("listening");
    camera.type("hang-up\n");
    camera.waitFor("ok");
    EXPECT_FALSE(isLink(link));
    camera.type("replug\n");
    EXPECT_EQ(camera.waitFor("ok:"), "ok: " + link);
    EXPECT_EQ(askPower(link), "\x90\x50\x02\xFF");
}

TEST(SimCommand, RunsOnWhenStandardInputEnds) {
    const std::string link = temporaryPath("link");
    Command camera(with(kQuickCamera, {"--link", link}));
    camera.waitFor("listening");
    camera.closeInput();
    EXPECT_EQ(askPower(link), "\x90\x50\x02\xFF");
    camera.send(SIGINT);
    EXPECT_EQ(camera.finish(), 0);
}

TEST(SimCommand, EndsWithStandardInputWhereThatIsAskedFor) {
    Command camera(with(kQuickCamera, {"--until-eof"}));
    camera.waitFor("listening");
    camera.closeInput();
    EXPECT_EQ(camera.finish(), 0);
}

TEST(SimCommand, ListsCamerasAndFaults) {
    Command camera({"sim", "--list"});
    EXPECT_EQ(camera.finish(), 0);
    EXPECT_THAT(camera.out(), HasSubstr("  sony5 (0x02000005)\n"));
    EXPECT_THAT(camera.out(), HasSubstr("\n  no-completion   completions are left out"));
}

TEST(SimCommand, DoesNotReplaceAFileByItsLink) {
    const std::string path = temporaryPath("file");
    close(open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    Command camera({"sim", "--link", path});
    EXPECT_EQ(camera.finish(), 2);
    EXPECT_THAT(camera.err(), MatchesRegex("viscacam: .*" + path + ".*\n"));
    unlink(path.c_str());
}

} // namespace e2e
