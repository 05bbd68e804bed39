// The demo with a Kova module, and the plain demo, which ends with one.
#include "tests/e2e/command.h"
#include "tests/e2e/trace_lines.h"

#include <csignal>
#include <fstream>

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

const char kKovaBegins[] = "Simulated camera kova2 (0x02012A01), listening at 38400 bit/s\n";

/** Packets to the camera that begin so. Commands and inquiries go out side by side: each kind has its order.
 */
std::vector<std::string> sent(const Chapter &chapter, const std::vector<std::string> &beginnings) {
    std::vector<std::string> found;
    for (const std::string &packet : packetsOf(chapter)) {
        for (const std::string &beginning : beginnings) {
            if (packet.compare(0, beginning.size(), beginning) == 0)
                found.push_back(packet);
        }
    }
    return found;
}

std::vector<std::string> commands(const Chapter &chapter) {
    return sent(chapter, {"> 81 01"});
}

std::string firstLine(const std::string &path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

void expectStartUp(const Chapter &startUp) {
    EXPECT_THAT(sent(startUp, {"> 81 09", "> 71 09"}),
                ElementsAre("> 81 09 04 00 FF", "> 81 09 04 00 FF", "> 81 09 04 00 FF", "> 81 09 04 AB FF",
                            "> 81 09 04 61 FF", "> 81 09 04 66 FF", "> 71 09 04 B2 FF", "> 71 09 04 B2 FF",
                            "> 71 09 04 B2 FF", "> 71 09 04 B1 FF", "> 81 09 04 00 FF"));
    EXPECT_THAT(commands(startUp), ElementsAre(MatchesRegex("> 81 01 04 A4( 0[0-9A-F]){8} FF")))
        << "the clock; a picture that stands upright already is left alone";
    EXPECT_EQ(firstLine("/tmp/kova_interversion"), "QDMV200R001B02B02D014SP05");
    EXPECT_EQ(firstLine("/tmp/kova_version"), "QDM_K4410-B02D014SP05");
    EXPECT_EQ(firstLine("/tmp/kova_kversion"), "Kernel  version: V1.23");
}

void expectImage(const std::vector<Chapter> &chapters) {
    EXPECT_THAT(commands(chapters[11]),
                ElementsAre("> 81 01 04 D1 00 00 00 00 FF", "> 81 01 04 5A 03 FF", "> 81 01 04 39 0A FF",
                            "> 81 01 04 CB 00 00 06 04 FF", "> 81 01 04 3E 02 FF",
                            "> 81 01 04 4E 00 00 00 09 FF", "> 81 01 04 3D 03 FF", "> 81 01 04 59 03 FF"));
    EXPECT_THAT(commands(chapters[12]), ElementsAre("> 81 01 04 D1 00 00 00 00 FF"));
    EXPECT_THAT(commands(chapters[13]),
                ElementsAre("> 81 01 04 D1 00 00 00 00 FF", "> 81 01 04 CB 00 00 0F 0A FF"));
    EXPECT_THAT(commands(chapters[16]),
                ElementsAre("> 81 01 04 A1 00 00 07 08 FF", "> 81 01 04 A2 00 00 08 0C FF",
                            "> 81 01 04 49 00 00 0A 00 FF", "> 81 01 04 42 00 00 00 0A FF",
                            "> 81 01 04 54 00 00 03 0C FF", "> 81 01 04 55 00 00 06 04 FF"));
}

void expectModule(const Chapter &module) {
    EXPECT_THAT(module.others,
                Contains(HasSubstr("host: software version V1.0.3, extension version R01-B02_C3")));
    EXPECT_THAT(module.others,
                Contains(HasSubstr("host: encoder board version 1 type 1, sensor board version "
                                   "2 type 1, motor board version 3 type 2")));
    EXPECT_THAT(module.others,
                Contains(MatchesRegex(".*host: 41 degrees Celsius, luma [0-9]+, focus value [0-9]+")));
}

void expectReports(const std::string &output, const Chapter &on, const Chapter &off) {
    EXPECT_THAT(commands(on),
                ElementsAre("> 81 01 04 AE 02 FF", "> 81 01 04 07 35 FF", "> 81 01 04 07 00 FF"));
    expectInOrder(output.substr(output.find(on.heading)),
                  {"zoom wide, speed 5", "90 07 00 AE 01 FF", "host: told that the zoom moves", "zoom stop",
                   "90 07 00 AE 00 FF", "host: told that the zoom is at rest", off.heading});
    EXPECT_THAT(commands(off), ElementsAre("> 81 01 04 AE 03 FF"));
}

void expectNormChange(const std::string &output, const Chapter &change, const Chapter &back) {
    EXPECT_THAT(commands(change),
                ElementsAre("> 81 01 04 00 03 FF", "> 81 01 04 24 72 00 08 FF", "> 81 01 04 00 02 FF"));
    expectInOrder(output.substr(output.find(change.heading)),
                  {"INFO   Need change norm from 6 to 8", "camera: standby", "camera: booting", "camera: on",
                   "90 50 02 FF", "INFO   Now Power On", back.heading});
    EXPECT_THAT(commands(back),
                ElementsAre("> 81 01 04 00 03 FF", "> 81 01 04 24 72 00 06 FF", "> 81 01 04 00 02 FF"));
}

void expectKovaRows(const std::vector<std::string> &rows) {
    EXPECT_THAT(rows, Contains(MatchesRegex("capability word, read as 0x0000001C +0x0000001C +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("the clock of this machine +[0-9:]+ UTC +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("version file QDMV200R001B02B02D014SP05 "
                                            "+QDMV200R001B02B02D014SP05 +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("shutter 1/250 s +1/250 s +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("zoom out, stop, and report it +moving, at rest +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("25 frames a second +register 0x72 is 0x08 +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("52 commands +52 completed, 0 refused +agrees")));
    EXPECT_EQ(rows.back(), "41 of 41 agree");
}

} // namespace

TEST(DemoKova, IsTheSecondPartOfThePlainDemoAndShowsWhatOnlyAModuleDoes) {
    Command demo({"demo"});
    EXPECT_EQ(demo.finish(), 0);
    EXPECT_THAT(demo.err(), IsEmpty());
    const size_t second = demo.out().find(kKovaBegins);
    ASSERT_NE(second, std::string::npos) << demo.out();
    EXPECT_EQ(linesOf(demo.out())[0], "Simulated camera sony1 (0x02000001), listening at 38400 bit/s");
    EXPECT_THAT(demo.out().substr(0, second), HasSubstr("30 of 30 agree\n\n"));

    const std::string kova = demo.out().substr(second);
    EXPECT_THAT(kova, Not(HasSubstr(" ERROR ")));
    const std::vector<Chapter> chapters = chaptersOf(kova);
    ASSERT_THAT(chapters, SizeIs(27)) << kova;
    expectStartUp(chapters[1]);
    expectImage(chapters);
    expectModule(chapters[20]);
    expectReports(kova, chapters[21], chapters[22]);
    expectNormChange(kova, chapters[24], chapters[25]);
    expectKovaRows(chapters[26].others);
}

TEST(DemoKova, SaysWhatCannotBeAskedBackAtAPort) {
    const std::string link = temporaryPath("module");
    Command module({"sim", "--camera", "0x02012001", "--link", link, "--boot", "0"});
    module.waitFor("listening");
    Command demo({"demo", "--port", link, "--type", "0x02012001"});
    EXPECT_EQ(demo.finish(), 0) << demo.out() << demo.err();
    const std::vector<std::string> rows = chaptersOf(demo.out()).back().others;
    EXPECT_THAT(rows, Contains(MatchesRegex("version file QDMV100R001B01D012SP03 +"
                                            "QDMV100R001B01D012SP03 +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("the clock of this machine +not asked back +-")));
    EXPECT_THAT(rows, Contains(MatchesRegex("shutter 1/100 s +not asked back +-")));
    EXPECT_THAT(rows, Contains(MatchesRegex("same profile again: nothing +no packet +agrees")));
    EXPECT_THAT(rows, Contains(MatchesRegex("iris F2.8 +position 0x0E +agrees")));
    EXPECT_EQ(rows.back(), "32 of 32 agree, 9 not asked back");
}

TEST(DemoKova, FinishesANormChangeBeforeItEndsOnASignal) {
    Command demo({"demo", "--camera", "kova2"});
    demo.waitFor("completed, socket 1: standby");
    demo.send(SIGINT);
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: interrupted\n");
    expectInOrder(demo.out(), {"camera: standby", "camera: booting", "camera: on", "Now Power On"});
    EXPECT_THAT(demo.out(), Not(HasSubstr("And back, as it was found")));
}

TEST(DemoKova, EndsWhenTheModuleWasFoundWhileItWasStarting) {
    const std::string link = temporaryPath("module");
    Command module({"sim", "--camera", "kova2", "--link", link, "--boot", "3000"});
    module.waitFor("listening");
    Command demo({"demo", "--port", link, "--type", "kova2"});
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: the module was still starting when it was found; try again\n");
}

} // namespace e2e
