// The demo with a simulated camera in its own process.
#include "tests/e2e/command.h"
#include "tests/e2e/trace_lines.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::SizeIs;

namespace {

// How often a position is polled depends on the machine.
std::vector<std::string> withoutZoomPolls(const std::vector<std::string> &packets) {
    std::vector<std::string> others;
    for (size_t i = 0; i < packets.size(); ++i) {
        const bool isPoll = packets[i] == "> 81 09 04 47 FF";
        const bool isAnswer = packets[i].compare(0, 7, "< 90 50") == 0;
        if (!isPoll && !isAnswer)
            others.push_back(packets[i]);
    }
    return others;
}

auto zoomAnswer() {
    return MatchesRegex("< 90 50 0[0-9A-F] 0[0-9A-F] 0[0-9A-F] 0[0-9A-F] FF");
}

void expectLensChapters(const std::vector<Chapter> &chapters) {
    EXPECT_THAT(packetsOf(chapters[2]),
                ElementsAre("> 81 09 04 47 FF", "< 90 50 00 00 00 00 FF", "> 81 01 04 07 26 FF", "< 90 41 FF",
                            "< 90 51 FF", "> 81 01 04 07 00 FF", "< 90 41 FF", "< 90 51 FF"));
    EXPECT_THAT(packetsOf(chapters[3]), ElementsAre("> 81 09 04 47 FF", zoomAnswer()));
    EXPECT_THAT(withoutZoomPolls(packetsOf(chapters[4])),
                ElementsAre("> 81 01 04 47 02 08 00 00 FF", "< 90 41 FF", "< 90 51 FF"));
    EXPECT_THAT(packetsOf(chapters[4]), Contains("< 90 50 02 08 00 00 FF"));
    EXPECT_THAT(packetsOf(chapters[5]), ElementsAre("> 81 01 04 38 03 FF", "< 90 41 FF", "< 90 51 FF"));
    EXPECT_THAT(packetsOf(chapters[6]),
                ElementsAre("> 81 09 04 48 FF", "< 90 50 04 08 00 00 FF", "> 81 01 04 08 20 FF", "< 90 41 FF",
                            "< 90 51 FF", "> 81 01 04 08 00 FF", "< 90 41 FF", "< 90 51 FF"));
    EXPECT_THAT(packetsOf(chapters[7]),
                ElementsAre("> 81 09 04 48 FF", zoomAnswer(), "> 81 01 04 08 30 FF", "< 90 41 FF",
                            "< 90 51 FF", "> 81 01 04 08 00 FF", "< 90 41 FF", "< 90 51 FF"));
    EXPECT_THAT(packetsOf(chapters[8]), ElementsAre("> 81 09 04 48 FF", zoomAnswer()));
    EXPECT_THAT(packetsOf(chapters[9]), ElementsAre("> 81 01 04 38 02 FF", "< 90 41 FF", "< 90 51 FF"));
}

void expectTable(const Chapter &table) {
    EXPECT_THAT(table.others,
                ElementsAre(MatchesRegex("asked +the camera believes +verdict"),
                            MatchesRegex("digital zoom off +off +agrees"),
                            MatchesRegex("zoom in from 0x0000, stop +0x[0-9A-F]+, at rest +agrees"),
                            MatchesRegex("zoom position, read as 0x[0-9A-F]+ +0x[0-9A-F]+ +agrees"),
                            MatchesRegex("zoom to 0x2800 +0x2800 +agrees"),
                            MatchesRegex("manual focus +manual +agrees"),
                            MatchesRegex("focus far from 0x4800, stop +0x[0-9A-F]+, at rest +agrees"),
                            MatchesRegex("focus near from 0x[0-9A-F]+, stop +0x[0-9A-F]+, at rest +agrees"),
                            MatchesRegex("focus position, read as 0x[0-9A-F]+ +0x[0-9A-F]+ +agrees"),
                            MatchesRegex("auto focus +auto +agrees"),
                            MatchesRegex("10 commands +10 completed, 0 refused +agrees"), "10 of 10 agree"));
}

} // namespace

TEST(Demo, ShowsEveryPacketInOrderAndEndsWithAllAgreeing) {
    Command demo({"demo"});
    EXPECT_EQ(demo.finish(), 0);
    EXPECT_THAT(demo.err(), IsEmpty());
    EXPECT_THAT(demo.out(), Not(HasSubstr("\x1b"))) << "no colours in a pipe";
    const std::vector<double> times = timesOf(demo.out());
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end())) << demo.out();

    const std::vector<Chapter> chapters = chaptersOf(demo.out());
    ASSERT_THAT(chapters, SizeIs(11)) << demo.out();
    EXPECT_EQ(linesOf(demo.out())[0], "Simulated camera sony1 (0x02000001), listening at 38400 bit/s");
    EXPECT_THAT(packetsOf(chapters[0]), ElementsAre("< 90 38 FF"));
    EXPECT_THAT(packetsOf(chapters[1]),
                ElementsAre("> 81 09 04 00 FF", "> 81 09 04 00 FF", "> 81 09 04 00 FF", "< 90 50 02 FF",
                            "> 81 01 04 06 03 FF", "< 90 41 FF", "< 90 51 FF", "> 81 09 04 00 FF",
                            "< 90 50 02 FF"));
    EXPECT_THAT(chapters[1].others,
                Contains(MatchesRegex(" +[0-9.]+ ms  INFO   The current baudrate is 38400")));
    expectLensChapters(chapters);
    expectTable(chapters[10]);
    EXPECT_THAT(chapters[2].packets[2].meaning, "zoom tele, speed 6");
    EXPECT_THAT(chapters[2].packets[3].meaning, "acknowledged, socket 1");
    EXPECT_THAT(chapters[2].packets[1].meaning, "zoom position 0x0000");
}

TEST(Demo, TellsACameraAgainWhatItDidNotHearWhileItBootedAndColoursItsLinesOnATerminal) {
    Setting onTerminal;
    onTerminal.terminal = true;
    Command demo({"demo", "--camera", "sony5", "--baud", "9600"}, onTerminal);
    EXPECT_EQ(demo.finish(), 0);
    EXPECT_THAT(demo.out(), HasSubstr("Simulated camera sony5 (0x02000005), listening at 9600 bit/s"));
    EXPECT_THAT(
        demo.out(),
        HasSubstr("\x1b[1mThe camera was still starting: what start-up had set is set once more\x1b[0m"));
    EXPECT_THAT(demo.out(), HasSubstr("\x1b[32magrees\x1b[0m"));
    EXPECT_THAT(demo.out(), HasSubstr("10 of 10 agree"));
    EXPECT_THAT(demo.out(), HasSubstr("10 commands                     10 completed, 0 refused"));
}

TEST(Demo, FailsWhenTheCameraDoesNotDoWhatWasAsked) {
    Command demo({"demo", "--camera", "0x02000003", "--fault", "busy"});
    EXPECT_EQ(demo.finish(), 1);
    const Chapter table = chaptersOf(demo.out()).back();
    EXPECT_THAT(table.others,
                Contains(MatchesRegex("zoom in from 0x0000, stop +0x[0-9A-F]+, still moving +DIFFERS")));
    EXPECT_THAT(table.others, Contains(MatchesRegex("10 commands +7 completed, 3 refused +DIFFERS")));
    EXPECT_THAT(demo.out(), HasSubstr("command buffer full: zoom stop"));
}

TEST(Demo, SaysThatTheCameraIsInStandby) {
    Command demo({"demo", "--fault", "standby@0.55"});
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: the camera is in standby; switch it on first\n");
}

} // namespace e2e
