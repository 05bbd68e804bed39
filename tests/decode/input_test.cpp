#include "decode/input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/decode/hex.h"

using namespace decode;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

struct Result {
    InputForm form = InputForm::Detect;
    std::vector<InputItem> items;
    std::optional<InputStart> start;
};

Result Read(const std::string &text, InputForm form = InputForm::Detect,
            std::optional<Direction> direction = {}) {
    InputReader reader(form, direction);
    Result result;
    reader.Feed(text.data(), text.size(), result.items);
    reader.Finish(result.items);
    result.form = reader.Form();
    result.start = reader.Start();
    return result;
}

/// "> 81 09 04 00 FF" for a piece, "! text" for a remark, "? text" for a line that is wrong.
std::string TextOf(const InputItem &item) {
    if (item.sort != InputItem::Sort::Piece)
        return (item.sort == InputItem::Sort::Remark ? "! " : "? ") + item.text;
    std::string text = item.piece.direction == Direction::ToCamera ? ">" : "<";
    const char digits[] = "0123456789ABCDEF";
    for (const std::uint8_t byte : item.piece.bytes)
        text += std::string(" ") + digits[byte >> 4] + digits[byte & 0x0F];
    return text;
}

std::vector<std::string> Texts(const Result &result) {
    std::vector<std::string> texts;
    for (const InputItem &item : result.items)
        texts.push_back(TextOf(item));
    return texts;
}

std::vector<std::string> Texts(const std::string &text) {
    return Texts(Read(text));
}

std::string LogLine(const std::string &time, const std::string &level, const std::string &message) {
    return "2026-11-20 " + time + " packet.cpp          @fun:ViscaPrintPkt                 line:115   --[" +
           level + "]" + message + "\n";
}

} // namespace

TEST(HexInput, TheUsualSpellingsAreTheSame) {
    for (const char *line :
         {"81 09 04 00 FF", "81 9 4 0 ff", "810904 00FF", "0x81,0x09,0x04,0x00,0xff", "81:09:04:00:FF",
          "81-09-04-00-FF", "{0x81, 0x09, 0x04, 0x0, 0xFF};", "\\x81\\x09\\x04\\x00\\xFF",
          "\"\\x81\\x09\\x04\\x00\\xFF\"", "81h 09h 04h 00h FFh", "[81][09][04][00][FF]", "  81090400ff\r",
          "81 09 04 00 FF # power?", "81 09 04 00 FF // power?", "> 81 09 04 00 FF", "tx: 81 09 04 00 FF",
          "SEND:81 09 04 00 FF", "->81 09 04 00 FF", "out 81 09 04 00 FF"})
        EXPECT_THAT(Texts(line), ElementsAre("> 81 09 04 00 FF")) << line;
}

TEST(HexInput, ALineMayHoldManyPacketsOfBothDirections) {
    const Result result = Read("\n81 09 04 00 FF 90 50 02 FF 81 01 04 07 00 FF\n");
    EXPECT_EQ(result.form, InputForm::Hex);
    EXPECT_THAT(Texts(result), ElementsAre("> 81 09 04 00 FF", "< 90 50 02 FF", "> 81 01 04 07 00 FF"));
    EXPECT_EQ(result.items[1].line, 2U);
    EXPECT_EQ(result.items[1].byte, 5U);
    EXPECT_EQ(result.items[2].byte, 9U);
    EXPECT_EQ(result.items[0].time, std::nullopt);
}

TEST(HexInput, APacketEndsWithItsLineWhetherCompleteOrNot) {
    EXPECT_THAT(Texts("81 01 04\n07 00 FF\n"), ElementsAre("> 81 01 04", "< 07 00 FF"));
}

TEST(HexInput, AWordOrTheCallerGivesTheDirectionWhereTheBytesDoNot) {
    EXPECT_THAT(Texts("> 90 50 02 FF\n"), ElementsAre("> 90 50 02 FF"));
    EXPECT_THAT(Texts("rx 81 01\n"), ElementsAre("< 81 01"));
    EXPECT_THAT(Texts(Read("12 34 FF\n< 12 34 FF\n", InputForm::Hex, Direction::ToCamera)),
                ElementsAre("> 12 34 FF", "< 12 34 FF"));
}

TEST(HexInput, NoiseEndsWhereAPacketOfEitherDirectionBegins) {
    EXPECT_THAT(Texts("00 12 81 09 04 00 FF 34 90 50 02 FF\n"),
                ElementsAre("< 00 12", "> 81 09 04 00 FF", "< 34", "< 90 50 02 FF"));
}

TEST(HexInput, LinesOfATraceAreRead) {
    const Result result =
        Read("    123.4 ms  ->camera  81 01 04 38 02 FF           AF on\n"
             "    150.0 ms  <-camera  90 41 FF                    acknowledged, socket 1\n");
    EXPECT_THAT(Texts(result), ElementsAre("> 81 01 04 38 02 FF", "< 90 41 FF"));
    EXPECT_EQ(result.items[0].time, Microseconds(123400));
}

TEST(HexInput, ATimeOfTheDayInFrontIsNoBytes) {
    for (const char *line :
         {"12:34:56.789 > 81 01 04 07 00 FF", "[12:34:56.789] 81 01 04 07 00 FF",
          "12:34:56 81 01 04 07 00 FF", "12:34:56,789 81 01 04 07 00 FF", "(12:34:56)> 81 01 04 07 00 FF",
          "12:34:56.789: 81 01 04 07 00 FF", "[12:34:56]81 01 04 07 00 FF",
          "9:05:01.123456->81 01 04 07 00 FF", "  12:34:56\ttx: 81 01 04 07 00 FF",
          "2026-11-20 12:34:56.789 > 81 01 04 07 00 FF", "[2026-11-20T12:34:56] 81 01 04 07 00 FF",
          "tx: 12:34:56 81 01 04 07 00 FF", "> [12:34:56.789] 81 01 04 07 00 FF",
          "12:34:56.789, 81 01 04 07 00 FF", "23:59:60 0x81,0x01,0x04,0x07,0x00,0xFF"})
        EXPECT_THAT(Texts(line), ElementsAre("> 81 01 04 07 00 FF")) << line;
}

TEST(HexInput, TimesOfTheDayCountFromTheFirstAndAcrossMidnight) {
    const Result result = Read("23:59:59.750 > 81 09 04 00 FF\n23:59:59,778 < 90 50 02 FF\n"
                               "00:00:01 < 90 41 FF\n00:00:00 < 90 51 FF\n");
    ASSERT_THAT(result.items, SizeIs(4));
    EXPECT_EQ(result.items[0].time, Microseconds(0));
    EXPECT_EQ(result.items[1].time, Microseconds(28000));
    EXPECT_EQ(result.items[2].time, Microseconds(1250000));
    EXPECT_EQ(result.items[3].time, Microseconds(1250000)) << "times do not run backwards";
}

TEST(HexInput, BytesThatOnlyLookLikeATimeStayBytes) {
    EXPECT_THAT(Texts("12:34:56:81:09:04:00:FF\n"), ElementsAre("< 12 34 56", "> 81 09 04 00 FF"));
    EXPECT_THAT(Texts("12:34:56\n"), ElementsAre("< 12 34 56"));
    EXPECT_THAT(Texts("24:34:56 90 41 FF\n"), ElementsAre("< 24 34 56", "< 90 41 FF"));
    EXPECT_THAT(Texts("12:34:5A 90 41 FF\n"), ElementsAre("< 12 34 5A", "< 90 41 FF"));
    EXPECT_THAT(Texts("12-34-56 90 41 FF\n"), ElementsAre("< 12 34 56", "< 90 41 FF"));
}

TEST(HexInput, DumpsAreReadAcrossTheirLines) {
    const std::vector<std::string> expected = {"> 81 09 04 00 FF", "< 90 50 02 FF", "> 81 01 04 07 26 FF",
                                               "< 90 41 FF"};
    EXPECT_EQ(Texts("00000000  81 09 04 00 ff 90 50 02  ff 81 01 04 07 26 ff 90  |......P......&..|\n"
                    "00000010  41 ff                                             |A.|\n"
                    "00000012\n"),
              expected);
    EXPECT_EQ(Texts("00000000: 8109 0400 ff90 5002 ff81 0104 0726 ff90  ......P......&..\n"
                    "00000010: 41ff                                     A.\n"),
              expected);
    EXPECT_EQ(Texts("0000000 81 09 04 00 ff 90 50 02 ff 81 01 04 07 26 ff 90\n0000020 41 ff\n0000022\n"),
              expected);
}

TEST(HexInput, ALineThatIsNoHexIsNamed) {
    const Result result = Read("81 09 04 00 FF\n81 0G FF\nhello there\n# only a comment\n; another\n123\n");
    EXPECT_THAT(Texts(result), ElementsAre("> 81 09 04 00 FF", "? \"0G\" is no byte in hex",
                                           "? \"hello\" is no byte in hex", "? \"123\" is no byte in hex"));
    EXPECT_EQ(result.items[1].line, 2U);
}

TEST(LogInput, DumpsArePacketsAndTheirTimesCountFromTheFirstLine) {
    const Result result =
        Read(LogLine("19:02:37 100000", "INFO", "send:ViscaPacket: 0x81 0x09 0x04 0x00 0xff \n") +
             LogLine("19:02:37 130500", "INFO", "recv:ViscaPacket: 0x90 0x50 0x02 0xff \n"));
    EXPECT_EQ(result.form, InputForm::Log);
    EXPECT_THAT(Texts(result), ElementsAre("> 81 09 04 00 FF", "< 90 50 02 FF"));
    EXPECT_EQ(result.items[1].time, Microseconds(30500));
    EXPECT_EQ(result.items[1].line, 3U) << "each dump ends in an empty line";
    ASSERT_TRUE(result.start.has_value());
    EXPECT_EQ(result.start->since_1970, Microseconds((20777LL * 86400 + 68557) * 1000000 + 100000));
    EXPECT_FALSE(result.start->utc);
}

TEST(LogInput, AReplyThatTheLibraryRejectsIsPrintedTwiceButCameOnce) {
    const std::string rejected = LogLine("19:02:37 100000", "INFO", "recv:ViscaPacket: 0x90 0x31 0xff \n");
    const std::string reply = LogLine("19:02:37 100000", "INFO", "recv:ViscaPacket: 0x90 0x41 0xff \n");
    EXPECT_THAT(
        Texts(rejected + rejected + LogLine("19:02:37 100000", "ERROR", "Unexpected Ack, fail exit\n")),
        ElementsAre("< 90 31 FF", "! ERROR Unexpected Ack, fail exit"));
    EXPECT_THAT(Texts(reply + reply), ElementsAre("< 90 41 FF", "< 90 41 FF"));
}

TEST(LogInput, BytesThatTheLibraryDidNotExpectAreNoise) {
    EXPECT_THAT(Texts(LogLine("19:02:37 100000", "WARN", "unexpected byte[0x0]\n") +
                      LogLine("19:02:37 100100", "WARN", "unexpected byte[0x13]\n") +
                      LogLine("19:02:37 100200", "INFO", "recv:ViscaPacket: 0x90 0x50 0x02 0xff \n")),
                ElementsAre("< 00 13", "< 90 50 02 FF"));
}

TEST(LogInput, AnotherLogsWordsMayStandInFrontAndOtherLinesBetween) {
    const Result result =
        Read("kernel: usb 1-1 attached\nNov 20 19:02:37 camera viscad[12]: " +
             LogLine("19:02:37 100000", "INFO", "send:ViscaPacket: 0x81 0x09 0x04 0x00 0xff ") +
             "cron: job\n" + LogLine("19:02:38 100000", "DEBUG", "FUN_ENTRY--param:\n"));
    EXPECT_THAT(Texts(result), ElementsAre("> 81 09 04 00 FF"));
    EXPECT_EQ(result.items[0].time, Microseconds(0));
}

TEST(LogInput, TimesDoNotRunBackwards) {
    const Result result =
        Read(LogLine("19:02:37 200000", "INFO", "send:ViscaPacket: 0x81 0x09 0x04 0x00 0xff ") +
             LogLine("19:02:37 100000", "INFO", "recv:ViscaPacket: 0x90 0x50 0x02 0xff "));
    EXPECT_EQ(result.items[1].time, Microseconds(0));
}

TEST(LogInput, ADumpThatWasCutIsNamed) {
    EXPECT_THAT(Texts(LogLine("19:02:37 100000", "INFO", "send:ViscaPacket: 0x81 0x0...")),
                ElementsAre("? its bytes are not written as the library does"));
}

TEST(CaptureInput, PacketsAreJoinedAcrossLinesAndSayWhereTheyBegin) {
    const Result result = Read("# viscacam capture 1\n# started 1970-01-01T00:00:02Z\n"
                               "0.5 > 81 09 04 00 FF\n0.6 < 13 90\n0.7 < 50 02 FF 90\n0.8 < 41 FF\n");
    EXPECT_EQ(result.form, InputForm::Capture);
    EXPECT_THAT(Texts(result), ElementsAre("> 81 09 04 00 FF", "< 13", "< 90 50 02 FF", "< 90 41 FF"));
    EXPECT_EQ(result.items[2].line, 4U);
    EXPECT_EQ(result.items[2].byte, 1U);
    EXPECT_EQ(result.items[2].time, Microseconds(600000));
    EXPECT_EQ(result.items[2].piece.end, Microseconds(700000));
    EXPECT_EQ(result.items[3].line, 5U);
    EXPECT_EQ(result.start->since_1970, Microseconds(2000000));
    EXPECT_TRUE(result.start->utc);
}

TEST(CaptureInput, ALineThatIsNoneIsNamedAndTheRestIsRead) {
    EXPECT_THAT(Texts("# viscacam capture 1\n0.5 > 81 09\n0.5 ? 12\n0.6 > 04 00 FF\n0.7 ! gone\n"),
                ElementsAre("? behind the time stands none of > < !", "> 81 09 04 00 FF", "! gone"));
}

TEST(CaptureInput, APacketThatStoppedIsShownBeforeWhatTheOtherSideSentMuchLater) {
    EXPECT_THAT(Texts("# viscacam capture 1\n0.5 < 90 50\n1.6 > 81 09 04 00 FF\n"),
                ElementsAre("< 90 50", "> 81 09 04 00 FF"));
}

TEST(RawInput, BytesAreSeenToBeNoText) {
    const std::string bytes("\x81\x09\x04\x00\xFF\x90\x50\x02\xFF\x0A", 10);
    const Result result = Read(bytes);
    EXPECT_EQ(result.form, InputForm::Raw);
    EXPECT_THAT(Texts(result), ElementsAre("> 81 09 04 00 FF", "< 90 50 02 FF", "< 0A"));
    EXPECT_EQ(result.items[1].line, 0U);
    EXPECT_EQ(result.items[1].byte, 5U);
}

TEST(RawInput, TheDirectionMayBeGiven) {
    const std::string bytes("\x00\x81\x09\x04\x00\xFF", 6);
    EXPECT_THAT(Texts(Read(bytes, InputForm::Raw, Direction::ToCamera)),
                ElementsAre("> 00", "> 81 09 04 00 FF"));
    EXPECT_THAT(Texts(Read(bytes, InputForm::Raw, Direction::FromCamera)),
                ElementsAre("< 00 81 09 04 00 FF"));
}

TEST(Input, MayComeByteByByte) {
    const std::string text = "# viscacam capture 1\n0.5 > 81 09\n0.6 > 04 00 FF";
    InputReader reader;
    std::vector<InputItem> items;
    for (const char c : text)
        reader.Feed(&c, 1, items);
    EXPECT_THAT(items, IsEmpty()) << "the last line has no end yet";
    reader.Finish(items);
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(TextOf(items[0]), "> 81 09 04 00 FF");
}

TEST(Input, NothingIsNothing) {
    EXPECT_THAT(Read("").items, IsEmpty());
    EXPECT_THAT(Read("\n\n").items, IsEmpty());
}

TEST(MixedSplitter, ASilenceEndsAPacketAndTheNextMayBeTheOtherWay) {
    MixedSplitter splitter(Direction::FromCamera);
    std::vector<Piece> pieces;
    const Bytes half = Hex("81 01"), reply = Hex("90 41 FF");
    splitter.Feed(Microseconds(0), half.data(), half.size(), pieces);
    splitter.Feed(Microseconds(1000001), reply.data(), reply.size(), pieces);
    ASSERT_THAT(pieces, SizeIs(2));
    EXPECT_EQ(pieces[0].sort, Piece::Sort::Broken);
    EXPECT_EQ(pieces[1].direction, Direction::FromCamera);
    EXPECT_EQ(pieces[1].offset, 2U);
}

TEST(MixedSplitter, DebugTextEndsByItsLengthSoTheNextPacketMayFollowAtOnce) {
    MixedSplitter splitter(Direction::FromCamera);
    std::vector<Piece> pieces;
    const Bytes bytes = Hex("66 02 81 90 81 09 04 00 FF");
    splitter.Feed(Microseconds(0), bytes.data(), bytes.size(), pieces);
    ASSERT_THAT(pieces, SizeIs(2));
    EXPECT_EQ(pieces[0].bytes, Hex("66 02 81 90"));
    EXPECT_EQ(pieces[1].direction, Direction::ToCamera);
}
