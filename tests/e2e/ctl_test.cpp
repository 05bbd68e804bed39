// "viscacam ctl": commands from the command line, from files and from standard input.
#include "tests/e2e/command.h"

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

void expectWrongUsage(const std::vector<std::string> &arguments, const std::string &why) {
    Command command(arguments);
    EXPECT_EQ(command.finish(), 2);
    EXPECT_EQ(command.err(), "viscacam: " + why + "\n");
    EXPECT_THAT(command.out(), IsEmpty());
}

/** A file of commands, removed at the end of its scope. */
struct CommandFile {
    const std::string path = temporaryPath("commands");
    explicit CommandFile(const std::string &text) { std::ofstream(path) << text; }
    ~CommandFile() { unlink(path.c_str()); }
};

} // namespace

TEST(Ctl, FollowsACommandToItsCompletion) {
    Command ctl({"ctl", "--sim", "sony1", "zoom", "in", "200ms", ";", "focus", "auto"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(linesOf(ctl.out()),
                ElementsAre(MatchesRegex("zoom tele, speed 6: completed, socket 1, [0-9]+ ms"),
                            MatchesRegex("zoom stop: completed, socket 1, [0-9]+ ms"),
                            MatchesRegex("focus mode auto: completed, socket 1, [0-9]+ ms")));
    EXPECT_THAT(ctl.err(), IsEmpty());
}

TEST(Ctl, NamesARefusalInWords) {
    Command ctl({"ctl", "--sim", "sony1", "focus", "near", "10ms"});
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.out(), StartsWith("focus near, speed 0: refused: not executable now (41), socket "));
    EXPECT_THAT(ctl.err(),
                StartsWith("viscacam: focus near 10ms: refused: not executable now (41), socket "));
}

TEST(Ctl, FollowsAMotionForLongerThanTheLibraryWaits) {
    Command ctl({"ctl", "--sim", "sony1", "zoom to 0x4000; zoom show"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(
        linesOf(ctl.out()),
        ElementsAre(MatchesRegex("zoom to 0x4000: completed, socket 1, [0-9]+ ms, after the library's wait"),
                    "zoom  0x4000"));
}

TEST(Ctl, ReadsWhatASonyBlockTells) {
    Command ctl({"ctl", "--sim", "sony1", "zoom show; wb manual red=10 blue=-5; wb show; raw 81 09 04 47"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.out(), StartsWith("zoom  0x0000\n"));
    EXPECT_THAT(ctl.out(), HasSubstr("red   10\nblue  -5\n"));
    EXPECT_THAT(ctl.out(), HasSubstr("answer   90 50 00 00 00 00 FF\nmeaning  zoom position 0x0000\n"));
}

TEST(Ctl, GivesAnObjectAResult) {
    Command ctl({"ctl", "--sim", "sony1", "--json", "zoom stop; zoom show"});
    EXPECT_EQ(ctl.finish(), 0);
    const std::vector<std::string> lines = linesOf(ctl.out());
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_THAT(lines[0],
                StartsWith(R"({"command":"zoom stop","ok":true,"sent":[{"bytes":"81 01 04 07 00 FF",)"
                           R"("meaning":"zoom stop","result":"completed","socket":1,"ms":)"));
    EXPECT_EQ(lines[1], R"({"command":"zoom show","ok":true,"values":{"zoom":0}})");
}

TEST(Ctl, SaysWhenThereWasNothingToSend) {
    Command ctl({"ctl", "--sim", "sony1", "wdr on; wdr on"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.out(),
                EndsWith("\nnothing sent: the camera has this already, or this module does not know it\n"));
}

TEST(Ctl, SetsAProfileOfWhatIsGiven) {
    Command ctl({"ctl", "--sim", "sony1", "exposure", "set", "mode=manual", "shutter=60", "gain=10"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.out(), HasSubstr("exposure manual: completed"));
    EXPECT_THAT(ctl.out(), HasSubstr("gain 0x06 (10 dB"));
    EXPECT_THAT(ctl.err(), IsEmpty()); // an iris that was not asked for is none
}

TEST(Ctl, ChecksEverythingBeforeAnythingIsSent) {
    expectWrongUsage({"ctl", "--sim", "sony1", "zoom in 1s; zoom up"},
                     "zoom: \"up\" is not known here; use cut, digital, in, out, show, stop or to");
    expectWrongUsage({"ctl", "--port", "/dev/no-such-device", "gain", "99"},
                     "gain: value: \"99\" is not allowed; use 0 to 29 dB");
    expectWrongUsage(
        {"ctl", "--sim", "sony1", "watch", "luma"},
        "watch: thing: \"luma\" is not allowed: only a Kova module measures it; use zoom, focus or "
        "gain");
    expectWrongUsage({"ctl", "--sim", "sony1", "wb", "manual", "red=5"},
                     "wb manual: blue= is missing, -127 to 127; red= and blue= are set together");
    expectWrongUsage({"ctl", "--sim", "sony1", "norm", "7"},
                     "norm: \"7\" is not allowed; use WIDTHxHEIGHT@RATE, RATE 25 or 30");
    expectWrongUsage({"ctl", "zoom", "in"},
                     "say which camera: --port DEVICE, or --sim CAMERA for a simulated one");
    expectWrongUsage({"ctl", "--sim", "sony1", "--frob"},
                     "\"--frob\" is no option of ctl; \"viscacam ctl --help\" shows them");
}

TEST(Ctl, WritesACaptureOfTheLine) {
    const std::string capture = temporaryPath("capture");
    Command ctl({"ctl", "--sim", "sony3", "--capture", capture, "zoom", "to", "0x0400"});
    EXPECT_EQ(ctl.finish(), 0) << ctl.err();
    EXPECT_THAT(ctl.err(), IsEmpty());
    Command decode({"decode", capture});
    EXPECT_EQ(decode.finish(), 0);
    EXPECT_THAT(decode.out(), HasSubstr("opened\n"));
    EXPECT_THAT(decode.out(), HasSubstr("->camera  81 09 04 00 FF              power inquiry\n"));
    EXPECT_THAT(decode.out(), HasSubstr("->camera  81 01 04 47 00 04 00 00 FF  zoom to 0x0400\n"));
    EXPECT_THAT(decode.out(),
                ContainsRegex("<-camera  90 51 FF                    completed, socket 1: zoom to"
                              " 0x0400  \\[to [0-9]+, [0-9.]+ ms\\]\n$"));
    unlink(capture.c_str());
}

TEST(Ctl, TheCaptureOfASessionAnswersTheSameSession) {
    const std::string capture = temporaryPath("capture");
    const std::string link = temporaryPath("replayed");
    Command first({"ctl", "--sim", "sony1", "--capture", capture, "zoom", "show"});
    EXPECT_EQ(first.finish(), 0) << first.err();
    Command replay({"sim", "--replay", capture, "--link", link});
    replay.waitFor("listening");
    Command second({"ctl", "--port", link, "--capture", capture + "2", "zoom", "show"});
    EXPECT_EQ(second.finish(), 0) << second.err();
    EXPECT_EQ(second.out(), "zoom  0x0000\n");
    unlink(capture.c_str());
    unlink((capture + "2").c_str());
}

TEST(Ctl, ACaptureIsWholeWhenASignalEndsTheSession) {
    const std::string capture = temporaryPath("capture");
    Command ctl({"ctl", "--sim", "sony1", "--capture", capture, "--trace", "zoom in; wait 60s"});
    ctl.waitFor("completed, socket 1: zoom tele");
    ctl.send(SIGTERM);
    EXPECT_EQ(ctl.finish(), 1);
    Command decode({"decode", capture});
    EXPECT_EQ(decode.finish(), 0);
    EXPECT_THAT(decode.out(), HasSubstr("completed, socket 1: zoom stop"));
    unlink(capture.c_str());
}

TEST(Ctl, SaysWhyThereCanBeNoCapture) {
    Command folder({"ctl", "--sim", "sony1", "--capture", "/no/such/folder/capture", "info"});
    EXPECT_EQ(folder.finish(), 1);
    EXPECT_EQ(folder.err(), "viscacam: cannot write /no/such/folder/capture: No such file or directory\n");
    Command device({"ctl", "--port", "/dev/no-such-device", "--capture", temporaryPath("capture"), "info"});
    EXPECT_EQ(device.finish(), 1);
    EXPECT_EQ(device.err(), "viscacam: cannot open /dev/no-such-device: no such device\n");
}

TEST(Ctl, SaysWhyADeviceCannotBeUsed) {
    Command ctl({"ctl", "--port", "/dev/no-such-device", "info"});
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_EQ(ctl.err(), "viscacam: cannot open /dev/no-such-device: no such device\n");
}

TEST(Ctl, ExplainsCommandsWithoutACamera) {
    Command ctl({"ctl", "help", "zoom", "stop"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_EQ(ctl.out(), "zoom stop\n    stop the zoom\n    Example: zoom stop\n");
}

TEST(Ctl, StopsAScriptAtTheFirstCommandThatFails) {
    Command ctl({"ctl", "--sim", "sony1"});
    ctl.type("zoom show # where it is\n\nfocus near 10ms\nfocus show\n");
    ctl.closeInput();
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.err(), StartsWith("viscacam: standard input:3: focus near 10ms: refused"));
    EXPECT_THAT(ctl.out(), Not(HasSubstr("focus  0x")));
}

TEST(Ctl, KeepsGoingWhenTold) {
    Command ctl({"ctl", "--sim", "sony1", "--keep-going"});
    ctl.type("blink\nfocus show\n");
    ctl.closeInput();
    EXPECT_EQ(ctl.finish(), 2);
    EXPECT_THAT(ctl.err(), StartsWith("viscacam: standard input:1: no command is called \"blink\""));
    EXPECT_EQ(ctl.out(), "focus  0x4800\n");
}

TEST(Ctl, ReadsAWholeFileBeforeItBegins) {
    const CommandFile file("zoom show\nzoom up\n");
    expectWrongUsage({"ctl", "--sim", "sony1", "-f", file.path},
                     file.path +
                         ":2: zoom: \"up\" is not known here; use cut, digital, in, out, show, stop or to");
}

TEST(Ctl, CarriesOutAFile) {
    const CommandFile file("# a comment\nzoom show; focus show\nquit\ninfo\n");
    Command ctl({"ctl", "--sim", "sony1", "-f", file.path});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_EQ(ctl.out(), "zoom  0x0000\nfocus  0x4800\n");
}

TEST(Ctl, StopsTheZoomFirstWhenInterrupted) {
    Command ctl({"ctl", "--sim", "sony1", "--trace", "zoom in 30s; info"});
    ctl.waitFor("completed, socket 1: zoom tele");
    ctl.send(SIGINT);
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.out(), HasSubstr("completed, socket 1: zoom stop"));
    EXPECT_THAT(ctl.out(), EndsWith("viscacam: zoom in 30s: interrupted\n"));
}

TEST(Ctl, StopsBothDrivesWhenToldToEnd) {
    Command ctl({"ctl", "--sim", "sony1", "--trace", "focus manual; zoom in; focus near; wait 60s"});
    ctl.waitFor("completed, socket 1: focus near");
    ctl.send(SIGTERM);
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.out(), HasSubstr("completed, socket 1: zoom stop"));
    EXPECT_THAT(ctl.out(), HasSubstr("completed, socket 1: focus stop"));
}

TEST(Ctl, SaysThatADriveGoesOn) {
    Command ctl({"ctl", "--sim", "sony1", "zoom", "in"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_EQ(ctl.err(), "viscacam: the zoom is still driven; \"zoom stop\" ends that\n");
}

TEST(Ctl, DoesNotSayThatADriveGoesOnThatWasRefused) {
    Command ctl({"ctl", "--sim", "sony1", "focus", "near"});
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.err(), Not(HasSubstr("still driven")));
}

TEST(Ctl, NamesAnAnswerTooManyAndTheShiftThatFollows) {
    Command ctl({"ctl", "--sim", "sony1", "--fault", "dup-answer", "--keep-going"});
    ctl.type("zoom show\nfocus show\nanswers drop\nquit\n");
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.err(),
                HasSubstr("an answer came with no inquiry open: 90 50 00 00 00 00 FF, after \"zoom "
                          "position inquiry\"; answers are shifted now"));
    EXPECT_THAT(ctl.err(),
                HasSubstr("focus show: the focus position: shifted: this is an earlier answer (zoom "
                          "position inquiry)\n"));
    EXPECT_THAT(ctl.out(), ContainsRegex("dropped  [1-9]"));
}

TEST(Ctl, WatchesAndCountsLosses) {
    Command ctl({"ctl", "--sim", "sony1", "watch", "zoom", "focus", "--every", "50ms", "--count", "3"});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(linesOf(ctl.out()),
                ElementsAre(HasSubstr("zoom 0x0000  focus 0x4800"), HasSubstr("zoom 0x0000  focus 0x4800"),
                            HasSubstr("zoom 0x0000  focus 0x4800"),
                            "6 asked, 6 answered, 0 lost (0.0 %), 0 refused, 0 shifted",
                            MatchesRegex("round trip [0-9.]+ / [0-9.]+ / [0-9.]+ ms .least / mean / most.")));
}

TEST(Ctl, WatchesUntilInterruptedWhenNoCountIsGiven) {
    Command ctl({"ctl", "--sim", "sony1", "--json", "watch", "gain", "--every", "20ms"});
    ctl.waitFor("\"gain\":");
    ctl.waitFor("\"gain\":");
    ctl.send(SIGINT);
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(linesOf(ctl.out()).back(), HasSubstr("\"lost\":0"));
}

TEST(Ctl, RefusesAnExposureThatAutomaticWouldIgnore) {
    Command ctl({"ctl", "--sim", "sony1", "exposure", "set", "shutter=60"});
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_THAT(ctl.err(), HasSubstr("shutter has no effect in automatic exposure; give mode= too"));
    EXPECT_THAT(ctl.out(), Not(HasSubstr("completed")));
}

} // namespace e2e
