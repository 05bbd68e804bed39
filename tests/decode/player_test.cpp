// A capture that is played as a camera, without a line and without a clock.
#include "tool/replay/player.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/decode/hex.h"

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace tool {

namespace {

const char kCapture[] = "# viscacam capture 1\n"
                        "# baud 9600\n"
                        "0.010 < 88 30 01 FF\n"
                        "0.500 > 81 09 04 00 FF\n"
                        "1.000 ! baud 19200\n"
                        "1.000 > 81 09 04 00 FF\n"
                        "1.030 < 90 50\n"
                        "1.031 < 02 FF\n"
                        "1.100 > 81 01 04 06 03 FF\n"
                        "1.120 < 90 41 FF\n";

const decode::Bytes kPower = Hex("81 09 04 00 FF");
const decode::Bytes kZoomOff = Hex("81 01 04 06 03 FF");

decode::Capture captureOf(const std::string &text) {
    decode::Capture capture;
    std::string error;
    EXPECT_TRUE(decode::ReadCapture(text, capture, error)) << error;
    return capture;
}

class PlayerTest : public ::testing::Test {
  protected:
    void take(int ms, unsigned baud, const decode::Bytes &bytes) {
        m_player.take(m_start + milliseconds(ms), baud, bytes);
    }
    decode::Bytes next(int ms) { return m_player.next(m_start + milliseconds(ms)); }
    void begin() { m_player.begin(m_start); }
    /* Both searches, and the answer to the second. */
    void search() {
        begin();
        next(10);
        take(100, 9600, kPower);
        take(200, 19200, kPower);
        next(231);
        next(231);
    }

    const Player::Clock::time_point m_start = Player::Clock::now();
    std::vector<std::string> m_complaints;
    Player m_player{captureOf(kCapture), false,
                    [this](const std::string &text) { m_complaints.push_back(text); }};
};

} // namespace

TEST_F(PlayerTest, SaysWhatTheCameraSaidByItselfOnceTheHostIsThere) {
    EXPECT_EQ(m_player.due(), std::nullopt);
    begin();
    EXPECT_EQ(m_player.due(), m_start + milliseconds(10));
    EXPECT_THAT(next(9), IsEmpty());
    EXPECT_EQ(next(10), Hex("88 30 01 FF"));
    EXPECT_EQ(m_player.due(), std::nullopt) << "it is the host's turn";
}

TEST_F(PlayerTest, AnswersAsLongAfterTheQuestionAsInTheCaptureAndInTheSamePieces) {
    begin();
    next(10);
    take(100, 9600, kPower);
    EXPECT_EQ(m_player.due(), std::nullopt) << "unanswered in the capture";
    take(200, 19200, kPower);
    EXPECT_THAT(next(229), IsEmpty());
    EXPECT_EQ(next(230), Hex("90 50"));
    EXPECT_EQ(m_player.due(), m_start + milliseconds(231));
    EXPECT_EQ(next(240), Hex("02 FF"));
    EXPECT_THAT(m_complaints, IsEmpty());
}

TEST_F(PlayerTest, APacketMayComeInPieces) {
    search();
    take(300, 19200, Hex("81 01 04"));
    EXPECT_EQ(m_player.due(), std::nullopt);
    take(310, 19200, Hex("06 03 FF"));
    EXPECT_EQ(next(330), Hex("90 41 FF"));
    EXPECT_TRUE(m_player.isOver());
    EXPECT_THAT(m_complaints, IsEmpty());
}

TEST_F(PlayerTest, APacketThatComesEarlyWaitsForItsTurn) {
    begin();
    next(10);
    take(100, 9600, kPower);
    take(200, 19200, kPower);
    take(201, 19200, kZoomOff);
    EXPECT_EQ(next(230), Hex("90 50"));
    EXPECT_EQ(next(231), Hex("02 FF"));
    EXPECT_EQ(m_player.due(), m_start + milliseconds(251)) << "20 ms from its turn";
    EXPECT_THAT(m_complaints, IsEmpty());
}

TEST_F(PlayerTest, APacketThatIsNotInTheCaptureIsNamedAndGetsNoAnswer) {
    search();
    take(300, 19200, Hex("81 09 04 47 FF"));
    EXPECT_EQ(m_player.due(), std::nullopt);
    EXPECT_THAT(
        m_complaints,
        ElementsAre("the host sent 81 09 04 47 FF (zoom position inquiry) at 19200 bit/s, the capture "
                    "has 81 01 04 06 03 FF (digital zoom off) at 19200 bit/s at 1.100000 s; it gets no "
                    "answer"));
    take(310, 19200, kZoomOff);
    EXPECT_EQ(next(330), Hex("90 41 FF"));
    EXPECT_EQ(m_player.mismatches(), 1U);
}

TEST_F(PlayerTest, AHostThatLeavesSomethingOutIsFollowed) {
    begin();
    next(10);
    take(200, 19200, kPower);
    ASSERT_THAT(m_complaints, ::testing::SizeIs(1));
    EXPECT_THAT(m_complaints[0], ::testing::EndsWith("at 0.500000 s; it goes on at 1.000000 s"));
    EXPECT_EQ(next(230), Hex("90 50"));
}

TEST_F(PlayerTest, WhatComesAfterTheEndIsNamed) {
    search();
    take(300, 19200, kZoomOff);
    next(320);
    take(400, 19200, kPower);
    EXPECT_THAT(m_complaints,
                ElementsAre("the host sent 81 09 04 00 FF (power inquiry) at 19200 bit/s when the "
                            "capture was over"));
}

TEST_F(PlayerTest, AtFullSpeedNothingIsDelayed) {
    Player player(captureOf(kCapture), true, [](const std::string &) {});
    player.begin(m_start);
    EXPECT_EQ(player.next(m_start), Hex("88 30 01 FF"));
    player.take(m_start, 9600, kPower);
    player.take(m_start, 19200, kPower);
    EXPECT_EQ(player.next(m_start), Hex("90 50"));
    EXPECT_EQ(player.next(m_start), Hex("02 FF"));
}

} // namespace tool
