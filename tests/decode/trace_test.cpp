#include "decode/trace.h"

#include <gtest/gtest.h>

#include "tests/decode/hex.h"

using namespace decode;

TEST(Trace, ALineHasTimeDirectionBytesAndMeaningInColumns) {
    Trace trace(9);
    EXPECT_EQ(trace.Line(Microseconds(123400), Direction::ToCamera, Hex("81 01 04 07 26 FF")),
              "    123.4 ms  ->camera  81 01 04 07 26 FF           zoom tele, speed 6");
    EXPECT_EQ(trace.Line(Microseconds(160049), Direction::FromCamera, Hex("90 41 FF")),
              "    160.0 ms  <-camera  90 41 FF                    acknowledged, socket 1");
    EXPECT_EQ(trace.Line(Microseconds(180000), Direction::FromCamera, Hex("90 51 FF")),
              "    180.0 ms  <-camera  90 51 FF                    completed, socket 1: zoom tele, speed 6");
}

TEST(Trace, ALineKeepsRoomForTheLongestSonyPacket) {
    Trace trace;
    EXPECT_EQ(
        trace.Line(Microseconds(0), Direction::ToCamera, Hex("81 01 04 47 01 02 03 04 05 06 07 08 FF")),
        "      0.0 ms  ->camera  81 01 04 47 01 02 03 04 05 06 07 08 FF  zoom to 0x1234, focus to 0x5678");
    EXPECT_EQ(trace.Line(Microseconds(1000), Direction::ToCamera, Hex("81 09 04 47 FF")),
              "      1.0 ms  ->camera  81 09 04 47 FF                          zoom position inquiry");
}

TEST(Trace, ALongPacketPushesItsMeaningAndAVeryLongOneIsCut) {
    const Bytes ten(10, 0x11), thirty(30, 0x22);
    EXPECT_EQ(TraceLine(Microseconds(0), Direction::FromCamera, ten.data(), ten.size(), "noise", 2),
              "      0.0 ms  <-camera  11 11 11 11 11 11 11 11 11 11  noise");
    EXPECT_EQ(
        TraceLine(Microseconds(0), Direction::FromCamera, thirty.data(), thirty.size(), "noise", 2),
        "      0.0 ms  <-camera  22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 ..  "
        "noise");
}

TEST(Trace, APieceOfAStreamIsALine) {
    Piece piece;
    piece.direction = Direction::FromCamera;
    piece.time = Microseconds(3600000000);
    piece.bytes = Hex("12 34 FF");
    EXPECT_EQ(Trace(3).Line(piece), "3600000.0 ms  <-camera  12 34 FF  noise, 3 bytes");
}

TEST(Trace, NoBytesLeaveTheColumnBlank) {
    EXPECT_EQ(TraceLine(Microseconds(0), Direction::ToCamera, nullptr, 0, "x", 2),
              "      0.0 ms  ->camera         x");
    EXPECT_EQ(TraceLine(Microseconds(0), Direction::ToCamera, nullptr, 0, "x", 0),
              "      0.0 ms  ->camera    x");
}
