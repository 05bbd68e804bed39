// The demo with a simulated camera in its own process.
#include "tests/e2e/command.h"
#include "tests/e2e/trace_lines.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
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

/** Commands that follow each other, each acknowledged and completed. */
auto confirmed(const std::vector<std::string> &commands) {
    std::vector<std::string> packets;
    for (const std::string &command : commands)
        packets.insert(packets.end(), {command, "< 90 41 FF", "< 90 51 FF"});
    return ElementsAreArray(packets);
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

void expectImageChapters(const std::vector<Chapter> &chapters) {
    EXPECT_THAT(packetsOf(chapters[10]),
                confirmed({"> 81 01 04 5A 03 FF", "> 81 01 04 39 0A FF", "> 81 01 04 4A 00 00 00 08 FF",
                           "> 81 01 04 3E 02 FF", "> 81 01 04 4E 00 00 00 09 FF", "> 81 01 04 3D 03 FF",
                           "> 81 01 04 59 03 FF"}));
    EXPECT_THAT(packetsOf(chapters[11]), IsEmpty()) << "the same profile again";
    EXPECT_THAT(chapters[11].others, ElementsAre(MatchesRegex(".* ms  host: sent for it: no packet")));
    EXPECT_THAT(packetsOf(chapters[12]), confirmed({"> 81 01 04 4A 00 00 00 0B FF"})) << "one value changed";
    EXPECT_THAT(chapters[12].others, ElementsAre(MatchesRegex(".* ms  host: sent for it: 1 packet")));
    EXPECT_THAT(packetsOf(chapters[13]),
                confirmed({"> 81 01 04 39 03 FF", "> 81 01 04 4A 00 00 00 0B FF",
                           "> 81 01 04 4B 00 00 00 0E FF", "> 81 01 04 4C 00 00 00 04 FF"}));
    EXPECT_THAT(packetsOf(chapters[14]), confirmed({"> 81 01 04 35 05 FF", "> 81 01 04 43 00 00 09 03 FF",
                                                    "> 81 01 04 44 00 00 06 0B FF"}));
    EXPECT_THAT(packetsOf(chapters[15]), confirmed({"> 81 01 04 49 00 00 00 06 FF",
                                                    "> 81 01 04 42 00 00 00 0A FF", "> 81 01 04 53 02 FF"}));
    EXPECT_THAT(packetsOf(chapters[16]), confirmed({"> 81 01 04 51 03 FF", "> 81 01 04 01 02 FF"}));
    EXPECT_THAT(packetsOf(chapters[17]), confirmed({"> 81 01 04 51 03 FF", "> 81 01 04 01 03 FF"}));
    EXPECT_THAT(packetsOf(chapters[18]), confirmed({"> 81 01 04 39 00 FF", "> 81 01 04 35 00 FF"}));
}

std::vector<std::string> rows(const Chapter &table, size_t first, size_t count) {
    const auto begin = table.others.begin() + static_cast<std::ptrdiff_t>(first);
    return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

void expectTable(const Chapter &table) {
    ASSERT_THAT(table.others, SizeIs(32));
    EXPECT_THAT(rows(table, 0, 10),
                ElementsAre(MatchesRegex("asked +the camera believes +verdict"),
                            MatchesRegex("digital zoom off +off +agrees"),
                            MatchesRegex("zoom in from 0x0000, stop +0x[0-9A-F]+, at rest +agrees"),
                            MatchesRegex("zoom position, read as 0x[0-9A-F]+ +0x[0-9A-F]+ +agrees"),
                            MatchesRegex("zoom to 0x2800 +0x2800 +agrees"),
                            MatchesRegex("manual focus +manual +agrees"),
                            MatchesRegex("focus far from 0x4800, stop +0x[0-9A-F]+, at rest +agrees"),
                            MatchesRegex("focus near from 0x[0-9A-F]+, stop +0x[0-9A-F]+, at rest +agrees"),
                            MatchesRegex("focus position, read as 0x[0-9A-F]+ +0x[0-9A-F]+ +agrees"),
                            MatchesRegex("auto focus +auto +agrees")));
    EXPECT_THAT(rows(table, 10, 10),
                ElementsAre(MatchesRegex("shutter priority +shutter priority +agrees"),
                            MatchesRegex("shutter 1/100 s +position 0x08 +agrees"),
                            MatchesRegex("exposure compensation 28 +step 9 +agrees"),
                            MatchesRegex("same profile again: nothing +no packet +agrees"),
                            MatchesRegex("shutter changed: one packet +1 packet +agrees"),
                            MatchesRegex("shutter 1/250 s +position 0x0B +agrees"),
                            MatchesRegex("manual exposure +manual +agrees"),
                            MatchesRegex("shutter still 1/250 s +position 0x0B +agrees"),
                            MatchesRegex("iris F2.8 +position 0x0E +agrees"),
                            MatchesRegex("gain 6 dB +position 0x04 +agrees")));
    EXPECT_THAT(rows(table, 20, 12),
                ElementsAre(MatchesRegex("manual white balance +manual +agrees"),
                            MatchesRegex("red offset 20 +gain 147 +agrees"),
                            MatchesRegex("blue offset -20 +gain 107 +agrees"),
                            MatchesRegex("saturation 160 +level 6 +agrees"),
                            MatchesRegex("sharpness 160 +level 10 +agrees"),
                            MatchesRegex("noise reduction 100 +level 2 +agrees"),
                            MatchesRegex("night +black and white +agrees"),
                            MatchesRegex("day +colour +agrees"),
                            MatchesRegex("automatic exposure +automatic +agrees"),
                            MatchesRegex("automatic white balance +automatic +agrees"),
                            MatchesRegex("34 commands +34 completed, 0 refused +agrees"), "30 of 30 agree"));
}

} // namespace

TEST(Demo, ShowsEveryPacketInOrderAndEndsWithAllAgreeing) {
    Command demo({"demo", "--camera", "sony1"});
    EXPECT_EQ(demo.finish(), 0);
    EXPECT_THAT(demo.err(), IsEmpty());
    EXPECT_THAT(demo.out(), Not(HasSubstr("\x1b"))) << "no colours in a pipe";
    const std::vector<double> times = timesOf(demo.out());
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end())) << demo.out();

    const std::vector<Chapter> chapters = chaptersOf(demo.out());
    ASSERT_THAT(chapters, SizeIs(20)) << demo.out();
    EXPECT_EQ(linesOf(demo.out())[0], "Simulated camera sony1 (0x02000001), listening at 38400 bit/s");
    EXPECT_THAT(packetsOf(chapters[0]), ElementsAre("< 90 38 FF"));
    EXPECT_THAT(packetsOf(chapters[1]),
                ElementsAre("> 81 09 04 00 FF", "> 81 09 04 00 FF", "> 81 09 04 00 FF", "< 90 50 02 FF",
                            "> 81 01 04 06 03 FF", "< 90 41 FF", "< 90 51 FF", "> 81 09 04 00 FF",
                            "< 90 50 02 FF"));
    EXPECT_THAT(chapters[1].others,
                Contains(MatchesRegex(" +[0-9.]+ ms  INFO   The current baudrate is 38400")));
    expectLensChapters(chapters);
    expectImageChapters(chapters);
    expectTable(chapters[19]);
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
    EXPECT_THAT(demo.out(), HasSubstr("30 of 30 agree"));
    EXPECT_THAT(demo.out(), HasSubstr("34 completed, 0 refused"));
}

TEST(Demo, FailsWhenTheCameraDoesNotDoWhatWasAsked) {
    Command demo({"demo", "--camera", "0x02000003", "--fault", "busy"});
    EXPECT_EQ(demo.finish(), 1);
    const Chapter table = chaptersOf(demo.out()).back();
    EXPECT_THAT(table.others,
                Contains(MatchesRegex("zoom in from 0x0000, stop +0x[0-9A-F]+, still moving +DIFFERS")));
    EXPECT_THAT(table.others, Contains(MatchesRegex("shutter priority +automatic +DIFFERS")));
    EXPECT_THAT(table.others, Contains(MatchesRegex("exposure compensation 28 +step 7 +DIFFERS")));
    EXPECT_THAT(table.others, Contains(MatchesRegex("same profile again: nothing +no packet +agrees")));
    EXPECT_THAT(table.others, Contains(MatchesRegex("night +colour +DIFFERS")));
    EXPECT_THAT(table.others, Contains(MatchesRegex("automatic exposure +manual +DIFFERS")));
    // Every third, and the shutter that is not executable because the mode in front of it was refused.
    EXPECT_THAT(table.others, Contains(MatchesRegex("34 commands +22 completed, 12 refused +DIFFERS")));
    EXPECT_THAT(demo.out(), HasSubstr("command buffer full: zoom stop"));
}

TEST(Demo, SaysThatTheCameraIsInStandby) {
    Command demo({"demo", "--camera", "sony1", "--fault", "standby@0.55"});
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: the camera is in standby; switch it on first\n");
}

TEST(Demo, OfBothFamiliesGoesOnWithTheSecondWhenTheFirstFailedAndFails) {
    Command demo({"demo", "--fault", "standby@0.55"}); // in standby a module tells no version for the files
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_THAT(demo.out(), HasSubstr("\nSimulated camera kova2 (0x02012A01), listening at 38400 bit/s\n"));
    const std::string inStandby = "viscacam: the camera is in standby; switch it on first\n";
    EXPECT_EQ(demo.err(), inStandby + inStandby);
}

} // namespace e2e
