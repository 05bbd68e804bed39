// The end of a demo before its end: by Ctrl-C, by signals, by an output that nobody reads.
#include "tests/e2e/command.h"
#include "tests/e2e/trace_lines.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

namespace {

/** The last packet to the camera, and that the camera confirmed it. */
void expectLastCommandConfirmed(const std::string &output, const std::string &command) {
    const std::vector<std::string> packets = packetsOf(chaptersOf(output).back());
    ASSERT_GE(packets.size(), 3U) << output;
    const std::vector<std::string> last(packets.end() - 3, packets.end());
    EXPECT_THAT(last, ::testing::ElementsAre(command, "< 90 41 FF", "< 90 51 FF")) << output;
}

/** A demo with a camera that falls silent while it zooms. */
struct SilencedZoom {
    const std::string link = temporaryPath("camera");
    Command camera{{"sim", "--link", link, "--boot", "0"}};
    std::string listening = camera.waitFor("listening");
    Command demo{{"demo", "--port", link}};

    SilencedZoom() {
        demo.waitFor("completed, socket 1: zoom tele");
        camera.type("fault mute\n");
        camera.waitFor("ok");
    }
};

} // namespace

TEST(Interrupt, ByCtrlCEndsTheSearchForACameraAtOnce) {
    Setting onTerminal;
    onTerminal.terminal = true;
    Command demo({"demo", "--camera", "sony1", "--fault", "mute"}, onTerminal);
    demo.waitFor("AdaptCamComBaudRate fail 1 times, try it after 1 sec");
    demo.type("\x03");
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_THAT(demo.out(), HasSubstr("viscacam: interrupted while the camera was searched\r\n"));
    EXPECT_THAT(demo.out(), Not(HasSubstr("fail 5 times")));
}

TEST(Interrupt, StopsTheZoomFirst) {
    Command demo({"demo", "--camera", "sony1"});
    demo.waitFor("zoom tele, speed 6");
    demo.send(SIGINT);
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: interrupted\n");
    expectLastCommandConfirmed(demo.out(), "> 81 01 04 07 00 FF");
}

TEST(Interrupt, ByATerminationSignalStopsTheFocusFirst) {
    Command demo({"demo", "--camera", "sony1"});
    demo.waitFor("focus far, speed 0");
    demo.send(SIGTERM);
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: interrupted\n");
    expectLastCommandConfirmed(demo.out(), "> 81 01 04 08 00 FF");
}

TEST(Interrupt, ByCtrlCEndsTheDemoOfBothFamiliesAndTheStopGoesOutOnce) {
    Setting onTerminal;
    onTerminal.terminal = true;
    Command demo({"demo"}, onTerminal);
    demo.waitFor("zoom tele, speed 6");
    demo.type("\x03");
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_THAT(demo.out(), HasSubstr("viscacam: interrupted\r\n"));
    EXPECT_THAT(demo.out(), HasSubstr("completed, socket 1: zoom stop"));
    EXPECT_THAT(demo.out(), Not(HasSubstr("kova2")));
}

TEST(Interrupt, ByATerminationSignalIsPassedOnByTheDemoOfBothFamilies) {
    Command demo({"demo"});
    demo.waitFor("zoom tele, speed 6");
    demo.send(SIGTERM);
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: interrupted\n");
    expectLastCommandConfirmed(demo.out(), "> 81 01 04 07 00 FF");
}

TEST(Interrupt, SaysWhenTheStopWasNotConfirmed) {
    SilencedZoom zoom;
    zoom.demo.send(SIGINT);
    EXPECT_EQ(zoom.demo.finish(), 1);
    EXPECT_EQ(zoom.demo.err(),
              "viscacam: interrupted; the camera did not confirm the stop, the lens may still move\n");
}

TEST(Interrupt, ASecondSignalEndsTheDemoWithoutWaiting) {
    SilencedZoom zoom;
    zoom.demo.send(SIGINT);
    zoom.demo.waitFor("zoom stop"); // which will not be confirmed
    zoom.demo.send(SIGINT);
    EXPECT_EQ(zoom.demo.finish(), -SIGINT);
}

TEST(Interrupt, IsNotNeededWhenTheCameraFallsSilent) {
    SilencedZoom zoom;
    EXPECT_EQ(zoom.demo.finish(), 1);
    EXPECT_EQ(zoom.demo.err(), "viscacam: the camera stopped answering\n");
    EXPECT_THAT(zoom.demo.out(), HasSubstr("ERROR  Wait VISCA RSP msg tiemout!"));
    EXPECT_THAT(zoom.demo.out(), Not(HasSubstr("verdict")));
}

TEST(Interrupt, StopsTheZoomWhenNobodyReadsTheTraceAnyMore) {
    const std::string link = temporaryPath("camera");
    Command camera({"sim", "--link", link, "--boot", "0", "--trace"});
    camera.waitFor("listening");
    Command demo({"demo", "--port", link});
    demo.waitFor("zoom tele, speed 6");
    demo.closeOutput();
    EXPECT_EQ(demo.finish(), 1);
    camera.waitFor("completed, socket 1: zoom stop");
    camera.type("state\n");
    EXPECT_THAT(camera.waitFor("\"zoomMoving\""), HasSubstr("\"zoomMoving\":false"));
}

} // namespace e2e
