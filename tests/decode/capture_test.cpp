#include "decode/capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/decode/hex.h"

using namespace decode;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

const char kSmall[] = "# viscacam capture 1\n"
                      "# started 2026-11-20T19:02:37.123456Z\n"
                      "# port /dev/ttyUSB0\n"
                      "# baud 9600\n"
                      "0.000000 > 81 09 04 00 FF\n"
                      "0.027512 < 90 50\n"
                      "0.100042 ! baud 19200\n";

// 2026-11-20 is day 20777 since 1970-01-01; 19:02:37 is second 68557.
constexpr Microseconds kStarted{(20777LL * 86400 + 68557) * 1000000 + 123456};

std::string ErrorOf(const std::string &text) {
    Capture capture;
    std::string error;
    EXPECT_FALSE(ReadCapture(text, capture, error)) << text;
    return error;
}

std::string ErrorOfLine(const std::string &line) {
    return ErrorOf("# viscacam capture 1\n1.5 > 81\n" + line + "\n");
}

Capture Read(const std::string &text) {
    Capture capture;
    std::string error;
    EXPECT_TRUE(ReadCapture(text, capture, error)) << error;
    return capture;
}

} // namespace

TEST(Capture, IsReadWithItsHeadItsBytesAndItsRemarks) {
    const Capture capture = Read(kSmall);
    EXPECT_EQ(capture.head.started, kStarted);
    EXPECT_EQ(capture.head.port, "/dev/ttyUSB0");
    EXPECT_EQ(capture.head.baud, 9600U);
    ASSERT_THAT(capture.records, SizeIs(3));
    EXPECT_EQ(capture.records[0].direction, Direction::ToCamera);
    EXPECT_EQ(capture.records[0].bytes, Hex("81 09 04 00 FF"));
    EXPECT_EQ(capture.records[1].direction, Direction::FromCamera);
    EXPECT_EQ(capture.records[1].time, Microseconds(27512));
    EXPECT_EQ(capture.records[2].sort, CaptureRecord::Sort::Remark);
    EXPECT_EQ(BaudOf(capture.records[2]), 19200U);
    EXPECT_EQ(BaudOf(capture.records[0]), std::nullopt);
}

TEST(Capture, IsWrittenAsItIsRead) {
    const Capture capture = Read(kSmall);
    std::string text = CaptureText(capture.head);
    for (const CaptureRecord &record : capture.records)
        text += CaptureText(record);
    EXPECT_EQ(text, kSmall);
}

TEST(Capture, MayHaveCommentsEmptyLinesLowerCaseAndWindowsLineEnds) {
    const Capture capture =
        Read("# viscacam capture 1\r\n\r\n# bench 3\r\n12 < 90  ff\r\n# more\r\n12.5 ! \r\n");
    ASSERT_THAT(capture.records, SizeIs(2));
    EXPECT_EQ(capture.records[0].bytes, Hex("90 FF"));
    EXPECT_EQ(capture.records[0].time, Microseconds(12000000));
    EXPECT_EQ(capture.records[1].time, Microseconds(12500000));
    EXPECT_THAT(capture.records[1].remark, IsEmpty());
    EXPECT_EQ(capture.head.baud, 0U);
}

TEST(Capture, BeginsWithTheNameOfTheFormatInAVersionThatIsKnown) {
    const std::string missing = "line 1: no capture: the first line is not \"# viscacam capture 1\"";
    EXPECT_EQ(ErrorOf(""), missing);
    EXPECT_EQ(ErrorOf("0.0 > 81\n"), missing);
    EXPECT_EQ(ErrorOf("# viscacam capture 2\n"), "line 1: this is version 2 of the format; only 1 is known");
    EXPECT_TRUE(IsCapture("# viscacam capture 2\n"));
    EXPECT_FALSE(IsCapture("# viscacam"));
}

TEST(Capture, ALineThatIsNoneIsNamedWithItsNumber) {
    EXPECT_EQ(ErrorOfLine("x > 81"), "line 3: it does not begin with a time in seconds");
    EXPECT_EQ(ErrorOfLine("1.1234567 > 81"), "line 3: it does not begin with a time in seconds");
    EXPECT_EQ(ErrorOfLine("2. > 81"), "line 3: it does not begin with a time in seconds");
    EXPECT_EQ(ErrorOfLine("-2 > 81"), "line 3: it does not begin with a time in seconds");
    EXPECT_EQ(ErrorOfLine("1.499999 > 81"), "line 3: its time is before that of the line above");
    EXPECT_EQ(ErrorOfLine("2"), "line 3: behind the time stands none of > < !");
    EXPECT_EQ(ErrorOfLine("2 >81"), "line 3: behind the time stands none of > < !");
    EXPECT_EQ(ErrorOfLine("2 >"), "line 3: its bytes are not pairs of hex digits");
    EXPECT_EQ(ErrorOfLine("2 > 8109"), "line 3: its bytes are not pairs of hex digits");
    EXPECT_EQ(ErrorOfLine("2 > 81 9"), "line 3: its bytes are not pairs of hex digits");
}

TEST(Capture, AHeadThatIsNoneIsNamedToo) {
    EXPECT_EQ(ErrorOf("# viscacam capture 1\n# started today\n"), "line 2: \"today\" is no time in UTC");
    EXPECT_EQ(ErrorOf("# viscacam capture 1\n# baud fast\n"), "line 2: \"fast\" is no rate");
    EXPECT_EQ(ErrorOf("# viscacam capture 1\n# baud 0\n"), "line 2: \"0\" is no rate");
}

TEST(Capture, WhatCameBeforeTheWrongLineIsThere) {
    Capture capture;
    std::string error;
    EXPECT_FALSE(ReadCapture("# viscacam capture 1\n1 > 81\n1 > zz\n2 > FF\n", capture, error));
    EXPECT_THAT(capture.records, SizeIs(1));
}

TEST(Capture, ARemarkIsOneLineOfPrintingText) {
    CaptureRecord record;
    record.sort = CaptureRecord::Sort::Remark;
    record.remark = "two\nlines";
    EXPECT_EQ(CaptureText(record), "0.000000 ! two?lines\n");
    record.sort = CaptureRecord::Sort::Data;
    EXPECT_EQ(CaptureText(record), "") << "no bytes, no line";
}

TEST(Utc, TimesAreReadAndWrittenByTheCalendar) {
    EXPECT_EQ(UtcText(Microseconds(0)), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(UtcText(kStarted), "2026-11-20T19:02:37.123456Z");
    EXPECT_EQ(ParseUtc("2000-02-29T00:00:00Z"), Microseconds(951782400LL * 1000000));
    EXPECT_EQ(UtcText(Microseconds(951782400LL * 1000000)), "2000-02-29T00:00:00.000000Z");
    EXPECT_EQ(UtcText(Microseconds(951868800LL * 1000000)), "2000-03-01T00:00:00.000000Z");
    EXPECT_EQ(ParseUtc("1970-01-01T00:00:01.5Z"), Microseconds(1500000));
}

TEST(Utc, WhatIsNoTimeIsNotRead) {
    for (const char *text : {"", "2026-11-20", "2026-11-20T19:02:37", "2026-13-20T19:02:37Z",
                             "2026-02-29T19:02:37Z", "2026-11-20T24:02:37Z", "2026-11-20T19:02:37.1234567Z",
                             "2026-11-20 19:02:37Z", "2026-11-20T19:02:37.Z", "1969-12-31T23:59:59Z"})
        EXPECT_EQ(ParseUtc(text), std::nullopt) << text;
}
