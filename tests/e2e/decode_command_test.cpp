// What "viscacam decode" makes of an engineer's input.
#include "tests/e2e/command.h"

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

const char kCapture[] = "# viscacam capture 1\n"
                        "# started 2026-11-20T19:02:37.000000Z\n"
                        "0.500000 ! opened\n"
                        "1.000000 > 81 09 04 00 FF\n"
                        "1.027500 < 90 50 02 FF\n"
                        "1.100000 > 81 01 04 07 26 FF\n"
                        "1.138400 < 90 41 FF\n"
                        "1.160000 < 90 51 FF\n";

/** The working folder, empty, until the end of the scope. */
class FolderOfItsOwn {
  public:
    FolderOfItsOwn() {
        std::filesystem::create_directory(m_path);
        std::filesystem::current_path(m_path);
    }
    ~FolderOfItsOwn() {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_path);
    }
    FolderOfItsOwn(const FolderOfItsOwn &) = delete;
    FolderOfItsOwn &operator=(const FolderOfItsOwn &) = delete;

  private:
    const std::filesystem::path m_before = std::filesystem::current_path();
    const std::string m_path = temporaryPath("folder");
};

/** Run with an input; the exit status is checked. */
std::string decoded(const std::string &input, std::vector<std::string> options, int status = 0) {
    options.insert(options.begin(), "decode");
    Command command(options);
    command.type(input);
    command.closeInput();
    EXPECT_EQ(command.finish(), status) << command.err();
    EXPECT_THAT(command.err(), IsEmpty());
    return command.out();
}

} // namespace

TEST(DecodeCommand, SaysOfEachPacketWhenWhereToWhatItMeansAndWhatItAnswers) {
    EXPECT_EQ(
        decoded(kCapture, {}),
        "          500.0 ms  opened\n"
        "   1     1000.0 ms  ->camera  81 09 04 00 FF              power inquiry\n"
        "   2     1027.5 ms  <-camera  90 50 02 FF                 power on  [to 1, 27.5 ms]\n"
        "   3     1100.0 ms  ->camera  81 01 04 07 26 FF           zoom tele, speed 6\n"
        "   4     1138.4 ms  <-camera  90 41 FF                    acknowledged, socket 1  [to 3, 38.4 "
        "ms]\n"
        "   5     1160.0 ms  <-camera  90 51 FF                    completed, socket 1: zoom tele, speed "
        "6  [to 3, 60.0 ms]\n");
}

TEST(DecodeCommand, ShowsTheTimeOfTheDayOrSinceTheLineAbove) {
    EXPECT_THAT(linesOf(decoded(kCapture, {"--time", "absolute", "--only", "inquiries"})),
                ElementsAre("   1  2026-11-20T19:02:38.000000Z  ->camera  81 09 04 00 FF              power "
                            "inquiry"));
    EXPECT_THAT(linesOf(decoded(kCapture, {"--time", "delta", "--only", "acks,completions"})),
                ElementsAre(HasSubstr("   4       +0.0 ms  "), HasSubstr("   5      +21.6 ms  ")));
}

TEST(DecodeCommand, LeavesOutKindsSoThatPollingDoesNotDrownCommands) {
    EXPECT_THAT(linesOf(decoded(kCapture, {"--without", "inquiries,answers,remark"})),
                ElementsAre(HasSubstr("zoom tele"), HasSubstr("acknowledged"), HasSubstr("completed")));
    EXPECT_THAT(linesOf(decoded(kCapture, {"--only", "commands", "--only", "errors"})),
                ElementsAre(HasSubstr("zoom tele")));
}

TEST(DecodeCommand, WritesAnObjectALine) {
    EXPECT_EQ(
        decoded("# viscacam capture 1\n1 > 81 09 04 00 FF\n1.5 < 00 90 50 02 FF\n2 ! gone\n", {"--json"}, 1),
        "{\"number\":1,\"time\":1.0,\"direction\":\"to-camera\",\"kind\":\"inquiry\",\"family\":\"both\","
        "\"bytes\":\"81 09 04 00 FF\",\"text\":\"power inquiry\",\"name\":\"power inquiry\",\"line\":2,"
        "\"byte\":1}\n"
        "{\"number\":2,\"time\":1.5,\"direction\":\"from-camera\",\"kind\":\"noise\",\"family\":\"both\","
        "\"bytes\":\"00\",\"text\":\"noise, 1 byte\",\"malformed\":true,\"line\":3,\"byte\":1}\n"
        "{\"number\":3,\"time\":1.5,\"direction\":\"from-camera\",\"kind\":\"answer\",\"family\":\"both\","
        "\"bytes\":\"90 50 02 FF\",\"text\":\"power on\",\"name\":\"power on\",\"answers\":1,\"took\":0.5,"
        "\"line\":3,\"byte\":2}\n"
        "{\"time\":2.0,\"remark\":\"gone\",\"line\":4}\n");
}

TEST(DecodeCommand, MalformedBytesAreShownWithTheirPlaceAndEndInStatusOne) {
    EXPECT_EQ(decoded("81 09 04 00 FF\n90 50 02\nnonsense\n", {}, 1),
              "   1  ->camera  81 09 04 00 FF              power inquiry\n"
              "   2  <-camera  90 50 02                    reply without end, 3 bytes  [line 2, byte 1]\n"
              "      line 3: \"nonsense\" is no byte in hex\n");
    EXPECT_EQ(decoded("90 50 02\n", {"--only", "commands"}, 1), "") << "also when it is not shown";
}

TEST(DecodeCommand, ReadsRawBytesOfOneDirection) {
    EXPECT_EQ(
        decoded(std::string("\x00\x81\x09\x04\x00\xFF", 6), {"--from", "raw", "--direction", "to-camera"}, 1),
        "   1  ->camera  00                          noise, 1 byte  [offset 0]\n"
        "   2  ->camera  81 09 04 00 FF              power inquiry\n");
}

TEST(DecodeCommand, ReadsTheLibrarysLogFromAFile) {
    const std::string path = temporaryPath("log");
    std::ofstream(path)
        << "2026-11-20 19:02:37 123456 packet.cpp          @fun:ViscaPrintPkt                 "
           "line:115   --[INFO]send:ViscaPacket: 0x81 0x09 0x04 0x00 0xff \n\n";
    EXPECT_EQ(decoded("", {path, "--time", "absolute"}),
              "   1  2026-11-20T19:02:37.123456  ->camera  81 09 04 00 FF              power inquiry\n");
    unlink(path.c_str());
}

TEST(DecodeCommand, ReadsBytesFromTheCommandLine) {
    EXPECT_EQ(decoded("", {"81", "01", "04", "07", "00", "ff", "90", "41", "FF"}),
              "   1  ->camera  81 01 04 07 00 FF           zoom stop\n"
              "   2  <-camera  90 41 FF                    acknowledged, socket 1  [to 1]\n");
    EXPECT_THAT(decoded("", {"--from", "hex", "--direction", "to-camera", "90", "50"}, 1),
                HasSubstr("->camera  90 50"));
}

TEST(DecodeCommand, AFileMayBeCalledAsAByteIs) {
    const FolderOfItsOwn folder;
    std::ofstream("81") << "90 50 02 FF\n";
    EXPECT_THAT(decoded("", {"81"}), HasSubstr("90 50 02 FF"));
    Command several({"decode", "81", "01"});
    EXPECT_EQ(several.finish(), 2);
    EXPECT_EQ(several.err(), "viscacam: give one file, or bytes as two hex digits each; \"81\" is a file\n");
}

TEST(DecodeCommand, WordsThatAreNeitherAFileNorBytesAreWrongUsage) {
    Command command({"decode", "81", "0G", "FF"});
    EXPECT_EQ(command.finish(), 2);
    EXPECT_EQ(command.err(),
              "viscacam: give one file, or bytes as two hex digits each; \"0G\" is no byte in hex\n");
    Command single({"decode", "8109"});
    EXPECT_EQ(single.finish(), 2);
    EXPECT_EQ(single.err(), "viscacam: cannot read 8109: No such file or directory\n");
}

TEST(DecodeCommand, SaysWhenThereWasNothingToDecode) {
    for (const char *input : {"", "\n# only a comment\n", "# viscacam capture 1\n# baud 9600\n"}) {
        Command command({"decode"});
        command.type(input);
        command.closeInput();
        EXPECT_EQ(command.finish(), 0);
        EXPECT_EQ(command.err(), "viscacam: there was nothing to decode in standard input\n");
    }
    Command file({"decode", "/dev/null"});
    EXPECT_EQ(file.finish(), 0);
    EXPECT_EQ(file.err(), "viscacam: there was nothing to decode in /dev/null\n");
    EXPECT_EQ(decoded("81 09 04 00 FF\n", {"--only", "commands"}), "") << "what is not shown is not nothing";
}

TEST(DecodeCommand, FollowsAnInputThatGrows) {
    Command command({"decode"});
    command.type("81 09 04 00 FF\n");
    EXPECT_THAT(command.waitFor("81 09"), HasSubstr("power inquiry"));
    command.type("90 50 02 FF\n");
    EXPECT_THAT(command.waitFor("90 50"), HasSubstr("power on"));
    command.closeInput();
    EXPECT_EQ(command.finish(), 0);
}

TEST(DecodeCommand, ItsHelpFitsOnAScreenAndHasAnExample) {
    Command help({"decode", "--help"});
    EXPECT_EQ(help.finish(), 0);
    EXPECT_THAT(help.out(), HasSubstr("Example: viscacam decode"));
    EXPECT_LE(linesOf(help.out()).size(), 30U);
}

TEST(DecodeCommand, WhatCannotBeReadOrMeantIsWrongUsage) {
    Command missing({"decode", "/no/such/file"});
    EXPECT_EQ(missing.finish(), 2);
    EXPECT_EQ(missing.err(), "viscacam: cannot read /no/such/file: No such file or directory\n");
    Command folder({"decode", "/tmp"});
    EXPECT_EQ(folder.finish(), 2);
    Command kind({"decode", "--only", "packets"});
    EXPECT_EQ(kind.finish(), 2);
    EXPECT_THAT(kind.err(), HasSubstr("no kind is called \"packets\"; known are commands, inquiries,"));
}

} // namespace e2e
