#include "decode/decode.h"

#include <gtest/gtest.h>

#include "tests/decode/hex.h"

using namespace decode;

namespace {

/// Feeds packets 10 ms apart, or at a stated time.
class Talk {
  public:
    Meaning Host(const char *hex) { return Next(Direction::ToCamera, hex); }
    Meaning Camera(const char *hex) { return Next(Direction::FromCamera, hex); }
    Talk &After(long milliseconds) {
        now_ += Microseconds(milliseconds * 1000 - 10000);
        return *this;
    }

  private:
    Meaning Next(Direction direction, const char *hex) {
        now_ += Microseconds(10000);
        return conversation_.Next(direction, now_, Hex(hex));
    }
    Conversation conversation_;
    Microseconds now_{0};
};

constexpr const char *kZoomTele = "81 01 04 07 26 FF";
constexpr const char *kZoomStop = "81 01 04 07 00 FF";
constexpr const char *kZoomInquiry = "81 09 04 47 FF";
constexpr const char *kZoomAnswer = "90 50 04 00 00 00 FF";
constexpr const char *kFocusInquiry = "81 09 04 48 FF";
constexpr const char *kPowerInquiry = "81 09 04 00 FF";

} // namespace

TEST(Conversation, ACompletionNamesTheCommandThatHasItsSocket) {
    Talk talk;
    talk.Host(kZoomTele);
    EXPECT_EQ(talk.Camera("90 41 FF").text, "acknowledged, socket 1");
    talk.Host("81 01 04 08 20 FF");
    EXPECT_EQ(talk.Camera("90 42 FF").answers, 2);
    const Meaning second = talk.Camera("90 52 FF");
    EXPECT_EQ(second.text, "completed, socket 2: focus far, speed 0");
    EXPECT_EQ(second.answers, 2);
    const Meaning first = talk.Camera("90 51 FF");
    EXPECT_EQ(first.text, "completed, socket 1: zoom tele, speed 6");
    EXPECT_EQ(first.answers, 0);
    EXPECT_FALSE(first.surprise);
}

TEST(Conversation, ACompletionBeforeItsAcknowledgementIsASurprise) {
    Talk talk;
    talk.Host(kZoomStop);
    const Meaning meaning = talk.Camera("90 51 FF");
    EXPECT_EQ(meaning.text, "completed, socket 1: zoom stop, which was not acknowledged");
    EXPECT_TRUE(meaning.surprise);
    EXPECT_EQ(talk.Camera("90 41 FF").text, "acknowledged, socket 1, but no command is open");
}

TEST(Conversation, ACompletionOfAnIdleSocketIsASurprise) {
    Talk talk;
    EXPECT_EQ(talk.Camera("90 52 FF").text, "completed, socket 2, but no command has this socket");
    EXPECT_TRUE(talk.Camera("90 5F FF").surprise);
}

TEST(Conversation, ALostCompletionShowsWhenTheSocketIsGivenAgain) {
    Talk talk;
    talk.Host(kZoomTele);
    talk.Camera("90 41 FF");
    talk.Host(kZoomStop);
    EXPECT_EQ(talk.Camera("90 41 FF").text,
              "acknowledged, socket 1; no completion came to zoom tele, speed 6");
    EXPECT_EQ(talk.Camera("90 51 FF").text, "completed, socket 1: zoom stop");
}

TEST(Conversation, ASocketThatNoCameraHasIsNamed) {
    Talk talk;
    talk.Host(kZoomStop);
    EXPECT_EQ(talk.Camera("90 4F FF").text, "acknowledged, socket 15, a socket that no camera has");
}

TEST(Conversation, ACommandWithoutReplyShowsAtTheNextOneAfterTwoSeconds) {
    Talk talk;
    talk.Host(kZoomTele);
    EXPECT_EQ(talk.After(2000).Host(kZoomStop).text, "zoom stop");
    Talk other;
    other.Host(kZoomTele);
    const Meaning meaning = other.After(2001).Host(kZoomStop);
    EXPECT_EQ(meaning.text, "zoom stop; no reply came to zoom tele, speed 6");
    EXPECT_TRUE(meaning.surprise);
}

TEST(Conversation, ARefusalNamesTheCommand) {
    Talk talk;
    talk.Host("81 01 04 08 20 FF");
    const Meaning meaning = talk.Camera("90 61 41 FF");
    EXPECT_EQ(meaning.text, "refused: not executable, socket 1: focus far, speed 0");
    EXPECT_EQ(meaning.answers, 0);
    EXPECT_FALSE(meaning.surprise);
    talk.Host(kZoomStop);
    EXPECT_EQ(talk.Camera("90 60 03 FF").text, "command buffer full: zoom stop");
}

TEST(Conversation, ARefusalWhileAnotherCommandExecutesIsTheNewOnes) {
    Talk talk;
    talk.Host("81 01 04 47 04 00 00 00 FF");
    talk.Camera("90 41 FF");
    talk.Host("81 01 04 08 20 FF");
    EXPECT_EQ(talk.Camera("90 61 41 FF").text, "refused: not executable, socket 1: focus far, speed 0");
    EXPECT_EQ(talk.Camera("90 51 FF").text, "completed, socket 1: zoom to 0x4000");
}

TEST(Conversation, ACancelEndsTheCommandInItsSocket) {
    Talk talk;
    talk.Host("81 01 04 47 04 00 00 00 FF");
    talk.Camera("90 41 FF");
    talk.Host("81 21 FF");
    EXPECT_EQ(talk.Camera("90 61 04 FF").text, "cancelled, socket 1: zoom to 0x4000");
    talk.Host("81 21 FF");
    EXPECT_EQ(talk.Camera("90 61 05 FF").text, "nothing to cancel, socket 1");
}

TEST(Conversation, ACancelledCommandIsNotTheOneThatStillWaits) {
    Talk talk;
    talk.Host("81 01 04 47 04 00 00 00 FF");
    talk.Camera("90 41 FF");
    talk.Host("81 21 FF");
    talk.Host(kZoomStop);
    EXPECT_EQ(talk.Camera("90 61 04 FF").text, "cancelled, socket 1: zoom to 0x4000");
    talk.Camera("90 41 FF");
    EXPECT_EQ(talk.Camera("90 51 FF").text, "completed, socket 1: zoom stop");
}

TEST(Conversation, SixteenCommandsAreRememberedAtMost) {
    Conversation conversation;
    for (int i = 0; i < 16; ++i)
        EXPECT_FALSE(conversation.Next(Direction::ToCamera, Microseconds(i), Hex(kZoomTele)).surprise);
    EXPECT_EQ(conversation.Next(Direction::ToCamera, Microseconds(16), Hex(kZoomStop)).text,
              "zoom stop; no reply came to zoom tele, speed 6");
    EXPECT_EQ(conversation.Next(Direction::FromCamera, Microseconds(17), Hex("90 41 FF")).answers, 1);
}

TEST(Conversation, ASyntaxErrorAfterAnInquiryIsTakenForACommandsResult) {
    Talk talk;
    talk.Host(kZoomInquiry);
    const Meaning meaning = talk.Camera("90 60 02 FF");
    EXPECT_EQ(meaning.text,
              "syntax error: zoom position inquiry; the host takes it for a command's result and waits on "
              "for the answer");
    EXPECT_TRUE(meaning.surprise);
    EXPECT_EQ(meaning.answers, 0);
}

TEST(Conversation, ASyntaxErrorGoesToTheOlderQuestion) {
    Talk talk;
    talk.Host(kZoomTele);
    talk.Host(kZoomInquiry);
    EXPECT_EQ(talk.Camera("90 60 02 FF").text, "syntax error: zoom tele, speed 6");
    EXPECT_EQ(talk.Camera(kZoomAnswer).text, "zoom position 0x4000");
}

TEST(Conversation, NotExecutableWithoutSocketAnswersAnInquiry) {
    Talk talk;
    talk.Host(kZoomTele);
    talk.Host(kZoomInquiry);
    const Meaning meaning = talk.Camera("90 60 41 FF");
    EXPECT_EQ(meaning.text, "refused: not executable: zoom position inquiry");
    EXPECT_FALSE(meaning.surprise);
    talk.Camera("90 41 FF");
    EXPECT_EQ(talk.Camera("90 51 FF").text, "completed, socket 1: zoom tele, speed 6");
}

TEST(Conversation, AnErrorForNothingIsASurprise) {
    Talk talk;
    EXPECT_EQ(talk.Camera("90 60 02 FF").text, "syntax error, but nothing is open");
    EXPECT_EQ(talk.Camera("90 60 41 FF").text,
              "refused: not executable, but nothing is open; the host's next inquiry takes it");
    EXPECT_EQ(talk.Host(kZoomInquiry).text, "zoom position inquiry; the host takes an older answer for it");
}

TEST(Conversation, ACommandBetweenQuestionAndAnswerDoesNotDisturb) {
    Talk talk;
    talk.Host(kZoomInquiry);
    talk.Host(kZoomStop);
    talk.Camera("90 41 FF");
    EXPECT_EQ(talk.Camera(kZoomAnswer).text, "zoom position 0x4000");
    EXPECT_EQ(talk.Camera("90 51 FF").text, "completed, socket 1: zoom stop");
}

TEST(Conversation, AnAnswerWithoutQuestionShiftsAllThatFollow) {
    Talk talk;
    const Meaning unasked = talk.Camera("90 50 02 FF");
    EXPECT_EQ(unasked.text, "answer 02, but no inquiry is open; the host's next inquiry takes it");
    EXPECT_TRUE(unasked.surprise);
    EXPECT_EQ(talk.Host(kZoomInquiry).text, "zoom position inquiry; the host takes an older answer for it");
    EXPECT_EQ(talk.Camera(kZoomAnswer).text, "zoom position 0x4000; the host's next inquiry takes it");
    EXPECT_EQ(talk.Host(kFocusInquiry).text, "focus position inquiry; the host takes an older answer for it");
}

TEST(Conversation, TheShiftEndsWhenAnAnswerIsLost) {
    Talk talk;
    talk.Camera("90 50 02 FF");
    talk.Host(kZoomInquiry);
    EXPECT_EQ(talk.After(6001).Host(kFocusInquiry).text,
              "focus position inquiry; no answer came to zoom position inquiry");
    const Meaning meaning = talk.Camera("90 50 01 00 00 00 FF");
    EXPECT_EQ(meaning.text, "focus position 0x1000");
    EXPECT_FALSE(meaning.surprise);
}

TEST(Conversation, AnAnswerAfterSixSecondsIsLate) {
    Talk talk;
    talk.Host(kZoomInquiry);
    EXPECT_EQ(talk.After(6001).Camera(kZoomAnswer).text,
              "zoom position 0x4000, late; the host's next inquiry takes it");
}

TEST(Conversation, AnAnswerThatOnlyFitsTheInquiryBeforeIsThatOnes) {
    Talk talk;
    talk.Host(kZoomInquiry);
    talk.After(6100).Host(kPowerInquiry);
    EXPECT_EQ(talk.Camera(kZoomAnswer).text,
              "zoom position 0x4000, late; the host takes it for the answer to power inquiry");
    EXPECT_EQ(talk.Camera("90 50 02 FF").text, "power on; the host's next inquiry takes it");
}

TEST(Conversation, AnAnswerThatComesTwiceIsNamed) {
    Talk talk;
    talk.Host(kZoomInquiry);
    talk.Camera(kZoomAnswer);
    EXPECT_EQ(
        talk.Camera(kZoomAnswer).text,
        "answered again: zoom position 0x4000, but no inquiry is open; the host's next inquiry takes it");
}

TEST(Conversation, AnAnswerOfTheWrongFormIsShownAsItIs) {
    Talk talk;
    talk.Host(kZoomInquiry);
    EXPECT_EQ(talk.Camera("90 50 04 00 FF").text,
              "answer to zoom position inquiry: 04 00, not of the form expected");
    talk.Host(kPowerInquiry);
    EXPECT_EQ(talk.Camera("90 50 04 FF").text, "answer to power inquiry: 04, not of the form expected");
}

TEST(Conversation, AnAnswerToAnUnknownInquiryIsShownAsItIs) {
    Talk talk;
    talk.Host("81 09 04 99 FF");
    const Meaning meaning = talk.Camera("90 50 01 02 FF");
    EXPECT_EQ(meaning.text, "answer to unknown inquiry 04 99: 01 02");
    EXPECT_FALSE(meaning.surprise);
}

TEST(Conversation, AProbeThatRepeatsItsInquiryWaitsForOneAnswerOnly) {
    Talk talk;
    talk.Host(kPowerInquiry);
    talk.After(500).Host(kPowerInquiry);
    const Meaning meaning = talk.After(500).Host(kPowerInquiry);
    EXPECT_EQ(meaning.text, "power inquiry");
    EXPECT_EQ(talk.Camera("90 50 02 FF").answers, 2);
    EXPECT_TRUE(talk.Camera("90 50 02 FF").surprise);
}

TEST(Conversation, TwoInquiriesAreAnsweredInOrder) {
    Talk talk;
    talk.Host(kZoomInquiry);
    talk.Host(kFocusInquiry);
    EXPECT_EQ(talk.Camera(kZoomAnswer).text, "zoom position 0x4000");
    EXPECT_EQ(talk.Camera("90 50 01 00 00 00 FF").text, "focus position 0x1000");
}

TEST(Conversation, AVersionInSegmentsIsPutTogether) {
    Talk talk;
    talk.Host("81 09 04 AB FF");
    EXPECT_EQ(talk.Camera("90 50 00 00 00 00 00 00 00 01 04 FF").text, "capability word 0x00000014");
    talk.Host("71 09 04 B5 FF");
    EXPECT_EQ(talk.Camera("90 50 00 00 00 02 FF").text, "extension version, segments: 2");
    talk.Host("71 09 04 B5 FF");
    EXPECT_EQ(talk.Camera("90 50 01 0A 00 FF").text, "extension version, segment 1 of 2");
    talk.Host("71 09 04 B5 FF");
    EXPECT_EQ(talk.Camera("90 50 02 0B 00 03 FF").text, "extension version 1C-3, segment 2 of 2");
    talk.Host("71 09 04 B5 FF");
    EXPECT_EQ(talk.Camera("90 50 00 00 00 01 FF").text, "extension version, segments: 1");
}

TEST(Conversation, ASegmentThatIsMissingIsNamed) {
    Talk talk;
    talk.Host("71 09 04 B5 FF");
    talk.Camera("90 50 00 00 00 02 FF");
    talk.Host("71 09 04 B5 FF");
    talk.After(6001).Host("71 09 04 B5 FF");
    EXPECT_EQ(talk.Camera("90 50 02 0B 00 03 FF").text, "extension version, segment 2 of 2, incomplete");
}

TEST(Conversation, TheCapabilityWordTellsTheFormOfTheProgramVersion) {
    Talk old;
    old.Host("81 09 04 AB FF");
    old.Camera("90 50 00 00 00 00 00 00 00 00 00 FF");
    old.Host("71 09 04 B2 FF");
    EXPECT_EQ(old.Camera("90 50 00 05 00 00 FF").text, "program version D005");
    Talk segmented;
    segmented.Host("81 09 04 AB FF");
    segmented.Camera("90 50 00 00 00 00 00 00 00 00 04 FF");
    segmented.Host("71 09 04 B2 FF");
    EXPECT_EQ(segmented.Camera("90 50 00 00 00 01 FF").text, "program version, segments: 1");
    segmented.Host("71 09 04 B2 FF");
    EXPECT_EQ(segmented.Camera("90 50 01 0B 07 FF").text, "program version 1_, segment 1 of 1");
}

TEST(Conversation, PowerOnEmptiesTheSockets) {
    Talk talk;
    talk.Host(kZoomTele);
    talk.Camera("90 41 FF");
    EXPECT_EQ(talk.Camera("90 38 FF").text, "network change / power-on notice");
    EXPECT_EQ(talk.Camera("90 51 FF").text, "completed, socket 1, but no command has this socket");
}

TEST(Conversation, ClearingTheInterfaceEmptiesTheSockets) {
    Talk talk;
    talk.Host(kZoomTele);
    talk.Camera("90 41 FF");
    talk.Host("88 01 00 01 FF");
    EXPECT_EQ(talk.Camera("90 50 FF").text, "interface cleared");
    EXPECT_TRUE(talk.Camera("90 51 FF").surprise);
}

TEST(Conversation, ReportsAndDebugTextsDoNotDisturb) {
    Talk talk;
    talk.Host(kZoomInquiry);
    EXPECT_EQ(talk.Camera("90 07 00 AE 01 FF").text, "zoom moving report");
    EXPECT_EQ(talk.Camera("66 01 61").text, "AF debug answer \"a\"");
    EXPECT_EQ(talk.Camera("A0 50 02 FF").text, "from camera 2: answer 02");
    EXPECT_EQ(talk.Camera(kZoomAnswer).answers, 0);
}

TEST(Conversation, PacketsForOtherCamerasAreNotFollowed) {
    Talk talk;
    talk.Host("82 01 04 07 00 FF");
    EXPECT_EQ(talk.Camera("90 41 FF").text, "acknowledged, socket 1, but no command is open");
}
