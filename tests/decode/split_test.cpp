#include "decode/decode.h"

#include <gtest/gtest.h>

#include "tests/decode/hex.h"

using namespace decode;

namespace {

std::vector<Piece> Cut(Direction direction, const std::string &hex) {
    Splitter splitter(direction);
    std::vector<Piece> pieces;
    const Bytes bytes = Hex(hex);
    splitter.Feed(Microseconds(0), bytes.data(), bytes.size(), pieces);
    splitter.Flush(pieces);
    return pieces;
}

void ExpectPiece(const Piece &piece, Piece::Sort sort, std::uint64_t offset, const std::string &hex) {
    EXPECT_EQ(piece.sort, sort) << hex;
    EXPECT_EQ(piece.offset, offset) << hex;
    EXPECT_EQ(piece.bytes, Hex(hex)) << hex;
}

} // namespace

TEST(Splitter, RepliesInOneReadAreCutApart) {
    const std::vector<Piece> pieces = Cut(Direction::FromCamera, "90 41 FF 90 51 FF");
    ASSERT_EQ(pieces.size(), 2U);
    ExpectPiece(pieces[0], Piece::Sort::Packet, 0, "90 41 FF");
    ExpectPiece(pieces[1], Piece::Sort::Packet, 3, "90 51 FF");
}

TEST(Splitter, NoiseBeforeAReplyIsARunOfItsOwn) {
    const std::vector<Piece> pieces = Cut(Direction::FromCamera, "12 34 FF 00 90 50 02 FF");
    ASSERT_EQ(pieces.size(), 3U);
    ExpectPiece(pieces[0], Piece::Sort::Noise, 0, "12 34 FF");
    ExpectPiece(pieces[1], Piece::Sort::Noise, 3, "00");
    ExpectPiece(pieces[2], Piece::Sort::Packet, 4, "90 50 02 FF");
}

TEST(Splitter, AReplyFromAnotherAddressIsNoise) {
    const std::vector<Piece> pieces = Cut(Direction::FromCamera, "A0 41 FF 90 41 FF");
    ASSERT_EQ(pieces.size(), 2U);
    ExpectPiece(pieces[0], Piece::Sort::Noise, 0, "A0 41 FF");
}

TEST(Splitter, AReplyOfTwoBytesIsBroken) {
    const std::vector<Piece> pieces = Cut(Direction::FromCamera, "90 FF");
    ASSERT_EQ(pieces.size(), 1U);
    ExpectPiece(pieces[0], Piece::Sort::Broken, 0, "90 FF");
}

TEST(Splitter, SixteenBytesAreAReplyWithATerminatorAndBrokenWithout) {
    const std::string start = "90 50 00 01 02 03 04 05 06 07 08 09 0A 0B 0C ";
    std::vector<Piece> pieces = Cut(Direction::FromCamera, start + "FF");
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces[0].sort, Piece::Sort::Packet);
    pieces = Cut(Direction::FromCamera, start + "0D 0E FF");
    ASSERT_EQ(pieces.size(), 2U);
    ExpectPiece(pieces[0], Piece::Sort::Broken, 0, start + "0D");
    ExpectPiece(pieces[1], Piece::Sort::Noise, 16, "0E FF");
}

TEST(Splitter, AnAfDebugAnswerEndsByItsLength) {
    const std::vector<Piece> pieces = Cut(Direction::FromCamera, "66 03 61 FF 63 90 41 FF 66 00 90 51 FF");
    ASSERT_EQ(pieces.size(), 4U);
    ExpectPiece(pieces[0], Piece::Sort::Packet, 0, "66 03 61 FF 63");
    ExpectPiece(pieces[1], Piece::Sort::Packet, 5, "90 41 FF");
    ExpectPiece(pieces[2], Piece::Sort::Packet, 8, "66 00");
    ExpectPiece(pieces[3], Piece::Sort::Packet, 10, "90 51 FF");
}

TEST(Splitter, BothHeadersStartAPacketToTheCamera) {
    const std::vector<Piece> pieces =
        Cut(Direction::ToCamera, "81 09 04 47 FF 71 09 04 B1 FF 88 30 01 FF 90 41 FF");
    ASSERT_EQ(pieces.size(), 4U);
    ExpectPiece(pieces[0], Piece::Sort::Packet, 0, "81 09 04 47 FF");
    ExpectPiece(pieces[1], Piece::Sort::Packet, 5, "71 09 04 B1 FF");
    ExpectPiece(pieces[2], Piece::Sort::Packet, 10, "88 30 01 FF");
    ExpectPiece(pieces[3], Piece::Sort::Noise, 14, "90 41 FF");
}

TEST(Splitter, AnAfDebugPacketHasNoTerminator) {
    const std::vector<Piece> pieces = Cut(Direction::ToCamera, "81 66 66 66 03 61 62 0A 81 01 04 07 00 FF");
    ASSERT_EQ(pieces.size(), 2U);
    ExpectPiece(pieces[0], Piece::Sort::Packet, 0, "81 66 66 66 03 61 62 0A");
    ExpectPiece(pieces[1], Piece::Sort::Packet, 8, "81 01 04 07 00 FF");
}

TEST(Splitter, BehindAnAfDebugHeaderWithoutLengthTheNextPacketBegins) {
    const std::vector<Piece> pieces = Cut(Direction::ToCamera, "81 66 66 66 81 01 04 07 00 FF");
    ASSERT_EQ(pieces.size(), 2U);
    ExpectPiece(pieces[0], Piece::Sort::Broken, 0, "81 66 66 66");
    ExpectPiece(pieces[1], Piece::Sort::Packet, 4, "81 01 04 07 00 FF");
}

TEST(Splitter, WhatIsUnderWayAtTheEndIsBroken) {
    const std::vector<Piece> pieces = Cut(Direction::FromCamera, "90 50 04");
    ASSERT_EQ(pieces.size(), 1U);
    ExpectPiece(pieces[0], Piece::Sort::Broken, 0, "90 50 04");
}

TEST(Splitter, GapsUpToASecondBelongToThePacketAndLongerOnesEndIt) {
    Splitter splitter(Direction::FromCamera);
    std::vector<Piece> pieces;
    const Bytes first = {0x90}, second = {0x41}, last = {0xFF}, next = {0x90, 0x51, 0xFF};
    splitter.Feed(Microseconds(100), first.data(), 1, pieces);
    splitter.Feed(Microseconds(1000100), second.data(), 1, pieces);
    splitter.Feed(Microseconds(2000100), last.data(), 1, pieces);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces[0].time, Microseconds(100));
    EXPECT_EQ(pieces[0].end, Microseconds(2000100));
    splitter.Feed(Microseconds(3000000), first.data(), 1, pieces);
    splitter.Feed(Microseconds(4000001), next.data(), next.size(), pieces);
    ASSERT_EQ(pieces.size(), 3U);
    ExpectPiece(pieces[1], Piece::Sort::Broken, 3, "90");
    ExpectPiece(pieces[2], Piece::Sort::Packet, 4, "90 51 FF");
}

TEST(Splitter, NoiseWithoutEndIsCutIntoPiecesOfSixtyFourBytes) {
    Splitter splitter(Direction::FromCamera);
    std::vector<Piece> pieces;
    const Bytes noise(1000, 0x00);
    splitter.Feed(Microseconds(0), noise.data(), noise.size(), pieces);
    ASSERT_EQ(pieces.size(), 15U);
    EXPECT_EQ(pieces[14].offset, 14U * 64U);
    EXPECT_EQ(pieces[14].bytes.size(), 64U);
}

TEST(Splitter, NothingComesOfNothing) {
    Splitter splitter(Direction::ToCamera);
    std::vector<Piece> pieces;
    splitter.Feed(Microseconds(0), nullptr, 0, pieces);
    splitter.Flush(pieces);
    EXPECT_TRUE(pieces.empty());
}
