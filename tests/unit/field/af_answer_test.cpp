// What the module answers to AF tuning: a length byte and a text behind the mark 66.
#include "tests/unit/field/field_test.h"

#include <cerrno>

namespace unit {
namespace {

constexpr uint64_t kSecond = 1000000;

class AfAnswerTest : public FieldTest {
  protected:
    static Bytes Text(size_t length, char first = 'a') {
        Bytes text;
        for (size_t i = 0; i < length; ++i) {
            text.push_back(static_cast<uint8_t>(first + static_cast<char>(i % 26)));
        }
        return text;
    }
    static void FeedAnswer(unsigned length, const Bytes &text) {
        Host().Feed(Bytes{static_cast<uint8_t>(length)});
        Host().Feed(text);
    }
    static Lines Answered(const std::string &text) {
        return {"DEBUG AF_DebugAck: AF_DEBUG recv ack:" + text};
    }
    static std::string String(const Bytes &bytes) { return {bytes.begin(), bytes.end()}; }
    /** One WARN line and nothing else was logged. */
    static void ExpectOneWarning() {
        const Lines story = Story();
        EXPECT_THAT(story, SizeIs(1));
        EXPECT_EQ(1U, CountStarting("WARN AF_DebugAck: "));
    }
};

TEST_F(AfAnswerTest, TheReceiverHandsItOnAndLogsTheText) {
    Host().Feed("66 03 61 62 63 90 51 FF");
    ViscaDealOneAck();
    EXPECT_EQ(Answered("abc"), Story());
    EXPECT_EQ(3U, Host().Unread());
}

TEST_F(AfAnswerTest, EveryLengthIsReadWholeAnd127CharactersAreKept) {
    for (unsigned length = 0; length <= 255; ++length) {
        Restart();
        const Bytes text = Text(length);
        FeedAnswer(length, text);
        Host().Feed("90 50 02 FF");
        AF_DebugAck();
        EXPECT_EQ(Answered(String(text).substr(0, 127)), Story()) << length;
        EXPECT_EQ(4U, Host().Unread()) << length;
        EXPECT_EQ(0U, Clib().Now());
    }
}

TEST_F(AfAnswerTest, The128thCharacterIsConsumedAndNotLogged) {
    Bytes text = Text(127);
    text.push_back('!');
    FeedAnswer(128, text);
    AF_DebugAck();
    EXPECT_EQ(Answered(String(Text(127))), Story());
    EXPECT_EQ(0U, Host().Unread());
}

TEST_F(AfAnswerTest, AnyByteMayBePartOfIt) {
    FeedAnswer(4, FromHex("FF 90 66 0A"));
    AF_DebugAck();
    EXPECT_EQ(Answered("\xFF\x90\x66\x0A"), Story());
}

TEST_F(AfAnswerTest, AZeroByteEndsTheLoggedText) {
    FeedAnswer(5, FromHex("61 62 00 63 64"));
    AF_DebugAck();
    EXPECT_EQ(Answered("ab"), Story());
    EXPECT_EQ(0U, Host().Unread());
}

TEST_F(AfAnswerTest, ItMayComeInPiecesWithGapsOfASecond) {
    for (const char *piece : {"05", "61", "62 63", "64 65 90"}) {
        Clib().Then({kSecond, [piece] { Host().Feed(piece); }});
    }
    AF_DebugAck();
    EXPECT_EQ(Answered("abcde"), Story());
    EXPECT_EQ(1U, Host().Unread());
    EXPECT_EQ(4 * kSecond, Clib().Now()) << "each gap is counted afresh";
}

TEST_F(AfAnswerTest, ANewOwnerOfTheLineFindsTheBytesThatFollow) {
    FeedAnswer(3, Text(1));
    Clib().Then({kSecond / 2, [] {
                     Host().Feed("15");
                     ViscaMarkUpdatingCam(1);
                 }});
    AF_DebugAck();
    EXPECT_EQ(1U, CountStarting("WARN AF_DebugAck: "));
    EXPECT_EQ(1U, Host().Unread());
}

TEST_F(AfAnswerTest, AReadThatReturnsLessIsContinued) {
    for (unsigned i = 0; i < 255; ++i) {
        Clib().Then({1000, [] { Host().Feed("61"); }});
    }
    Host().Feed("FF");
    AF_DebugAck();
    EXPECT_EQ(Answered(std::string(127, 'a')), Story());
}

TEST_F(AfAnswerTest, CutOffAfterTheMarkItCostsASecondAndAWarning) {
    AF_DebugAck();
    ExpectOneWarning();
    EXPECT_EQ(1001000U, Clib().Now());
    EXPECT_THAT(Host().Events(Call::Read), IsEmpty());
    EXPECT_THAT(Host().Log(), ElementsAre("WARN AF_DebugAck: AF debug answer cut off before its length\n"));
}

TEST_F(AfAnswerTest, CutOffAnywhereItCostsASecondAndAWarning) {
    for (unsigned length : {3U, 128U, 255U}) {
        for (unsigned arrived : {0U, 1U, length / 2, length - 1}) {
            Restart();
            FeedAnswer(length, Text(arrived));
            AF_DebugAck();
            ExpectOneWarning();
            EXPECT_EQ(1001000U, Clib().Now());
            EXPECT_EQ(0U, Host().Unread());
            EXPECT_EQ("WARN AF_DebugAck: AF debug answer cut off after " + std::to_string(arrived) + " of " +
                          std::to_string(length) + " bytes\n",
                      Host().Log().back());
        }
    }
}

TEST_F(AfAnswerTest, WhatComesAfterTheGapIsLeftToTheReceiver) {
    FeedAnswer(4, Text(2));
    AF_DebugAck();
    Host().Feed("90 51 FF");
    ViscaDealOneAck();
    EXPECT_THAT(Host().Results(), ElementsAre("90 51 FF"));
}

TEST_F(AfAnswerTest, SignalsDoNotLengthenTheGap) {
    FeedAnswer(4, Text(2));
    for (unsigned i = 0; i < 50; ++i) {
        Clib().Then({kSecond / 10, {}, EINTR});
    }
    AF_DebugAck();
    ExpectOneWarning();
    EXPECT_GT(Clib().Now(), kSecond);
    EXPECT_LE(Clib().Now(), kSecond + kSecond / 5);
}

TEST_F(AfAnswerTest, AReadThatFailsOrEndsStopsItAtOnce) {
    for (unsigned failing : {1U, 2U, 3U}) {
        for (int32_t result : {-1, 0}) {
            Restart();
            Host().Feed("04 61 62");
            if (failing == 3) {
                Clib().Then({1000, [] { Host().Feed("63 64"); }});
            }
            Host().Fail(Call::Read, {failing, kForEver, result, EIO});
            AF_DebugAck();
            ExpectOneWarning();
            EXPECT_LE(Clib().Now(), 1000U);
            EXPECT_EQ(failing, Host().Events(Call::Read).size()) << "no second try";
        }
    }
}

TEST_F(AfAnswerTest, ALineThatHangsUpStopsItAtOnce) {
    Host().Feed("04 61 62");
    Host().HangUp();
    AF_DebugAck();
    ExpectOneWarning();
    EXPECT_EQ(0U, Clib().Now());
}

TEST_F(AfAnswerTest, WithoutAPortItStopsAtOnce) {
    ViscaSetCamComFd(-1);
    AF_DebugAck();
    ExpectOneWarning();
    EXPECT_EQ(0U, Clib().Now());
}

} // namespace
} // namespace unit
