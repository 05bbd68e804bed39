// The library finds a camera through a tap, and then finds it again in the capture of that.
#include "tests/e2e/command.h"
#include "tests/e2e/raw_line.h"

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

namespace {

const char kCapture[] = "# viscacam capture 1\n"
                        "# baud 9600\n"
                        "0.500 > 81 09 04 00 FF\n"
                        "0.510 < 90 50\n"
                        "0.511 < 02 FF\n"
                        "0.600 > 81 09 04 06 FF\n"
                        "0.610 < 90 50 03 FF\n";

/** Until start-up has found the camera and switched digital zoom off. */
void expectStart(const std::string &port, const std::string &rate) {
    Command demo({"demo", "--port", port, "--type", "sony4"});
    EXPECT_THAT(demo.waitFor("The current baudrate is"), HasSubstr("is " + rate));
    EXPECT_THAT(demo.waitFor("81 09 04 06 FF"), HasSubstr("digital zoom inquiry"));
    EXPECT_THAT(demo.waitFor("90 50 03 FF"), HasSubstr("digital zoom off"));
}

class ReplayAtRate : public ::testing::TestWithParam<const char *> {};

std::string writtenCapture() {
    const std::string path = temporaryPath("capture");
    std::ofstream(path) << kCapture;
    return path;
}

} // namespace

TEST_P(ReplayAtRate, TheSearchWorksThroughATapAndInItsCapture) {
    const std::string rate = GetParam();
    const std::string path = temporaryPath("line");
    {
        Command camera({"sim", "--camera", "sony4", "--full-speed", "--latency", "none", "--boot", "0",
                        "--baud", rate, "--link", path + ".camera"});
        camera.waitFor("listening");
        Command tap({"tap", path + ".camera", "--link", path + ".host", "-o", path + ".capture"});
        tap.waitFor("tap of");
        expectStart(path + ".host", rate);
        tap.waitFor("closed");
        tap.send(SIGTERM);
        EXPECT_EQ(tap.finish(), 0) << tap.err();
    }
    Command decode({"decode", path + ".capture", "--without", "remarks"});
    EXPECT_EQ(decode.finish(), 0) << decode.out();
    EXPECT_THAT(decode.out(), HasSubstr("digital zoom off"));

    Command replay({"sim", "--replay", path + ".capture", "--link", path + ".host"});
    replay.waitFor("listening");
    expectStart(path + ".host", rate);
    replay.send(SIGTERM);
    replay.finish();
    for (const std::string &line : linesOf(replay.err()))
        EXPECT_THAT(line, HasSubstr("when the capture was over")) << "this host may go on for longer";
    unlink((path + ".capture").c_str());
}
INSTANTIATE_TEST_SUITE_P(All, ReplayAtRate, ::testing::Values("9600", "19200", "38400"));

TEST(Replay, AnswersAsTheCaptureDoes) {
    const std::string capture = writtenCapture();
    const std::string link = temporaryPath("replay");
    Command replay({"sim", "--replay", capture, "--link", link, "--trace"});
    EXPECT_EQ(replay.waitFor("listening"), capture + ", 2 packets to the camera, listening on " + link);
    const RawPort host(link);
    writeBytes(host.fd(), std::string("\x81\x09\x04\x00\xFF", 5));
    EXPECT_EQ(readBytes(host.fd(), 4), "\x90\x50\x02\xFF");
    writeBytes(host.fd(), "\x81\x09\x04\x06\xFF");
    EXPECT_EQ(readBytes(host.fd(), 4), "\x90\x50\x03\xFF");
    replay.waitFor("the capture is over");
    replay.send(SIGTERM);
    EXPECT_EQ(replay.finish(), 0);
    EXPECT_THAT(replay.out(), HasSubstr("<-camera  90 50 03 FF                 digital zoom off"));
    EXPECT_THAT(replay.err(), IsEmpty());
    unlink(capture.c_str());
}

TEST(Replay, NamesWhatTheHostDoesNotDoAsInTheCaptureAndEndsInStatusOne) {
    const std::string capture = writtenCapture();
    const std::string link = temporaryPath("replay");
    Command replay({"sim", "--replay", capture, "--link", link, "--full-speed"});
    replay.waitFor("listening");
    const RawPort host(link);
    writeBytes(host.fd(), "\x81\x09\x04\x06\xFF");
    EXPECT_EQ(readBytes(host.fd(), 4), "\x90\x50\x03\xFF");
    replay.send(SIGTERM);
    EXPECT_EQ(replay.finish(), 1);
    EXPECT_EQ(replay.err(),
              "viscacam: the host sent 81 09 04 06 FF (digital zoom inquiry) at 9600 bit/s, the "
              "capture has 81 09 04 00 FF (power inquiry) at 9600 bit/s at 0.500000 s; it goes on "
              "at 0.600000 s\n");
    unlink(capture.c_str());
}

TEST(Replay, TakesNoOptionOfACameraAndNoFileThatIsNoCapture) {
    const std::string path = temporaryPath("file");
    std::ofstream(path) << "81 09 04 00 FF\n";
    Command text({"sim", "--replay", path});
    EXPECT_EQ(text.finish(), 1);
    EXPECT_THAT(text.err(), HasSubstr(path + ", line 1: no capture: the first line is not"));
    Command camera({"sim", "--replay", path, "--camera", "sony1"});
    EXPECT_EQ(camera.finish(), 2);
    Command missing({"sim", "--replay", "/no/such/file"});
    EXPECT_EQ(missing.finish(), 2);
    unlink(path.c_str());
}

} // namespace e2e
