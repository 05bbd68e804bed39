#include "desk.h"

using namespace std::chrono_literals;
using sim::Options;
using sim::State;

namespace {

constexpr const char *POWER = "81 09 04 00 FF";
constexpr const char *IS_ON = "90 50 02 FF";

// "81 66 66 66 LEN" and as many times 'a'.
std::string packetOf(size_t length) {
    sim::Bytes packet = {0x81, 0x66, 0x66, 0x66, static_cast<uint8_t>(length)};
    packet.resize(packet.size() + length, 'a');
    return toHex(packet);
}

std::string answerOf(size_t letters) {
    sim::Bytes answer = {0x66, static_cast<uint8_t>(3 + letters), 'o', 'k', ' '};
    answer.resize(answer.size() + letters, 'a');
    return toHex(answer);
}

} // namespace

TEST(AfDebug, TextsOfEveryLengthAreAnswered) {
    Desk desk("kova2");
    const std::pair<size_t, size_t> rows[] = {{0, 0}, {1, 1}, {124, 124}, {127, 124}, {128, 124}, {255, 124}};
    for (const auto &[length, letters] : rows) {
        desk.host.send(packetOf(length));
        EXPECT_EQ(desk.host.bytes(5 + letters), answerOf(letters)) << length;
    }
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
    EXPECT_EQ(desk.camera.state().seenCount("66 66 66"), 6u);
    EXPECT_EQ(desk.camera.state().sentCount("AF debug"), 6u);
}

TEST(AfDebug, WhatCannotBePrintedIsLeftOutOfTheAnswer) {
    Desk desk("kova2");
    desk.host.send("81 66 66 66 05 61 0A FF 81 62");
    EXPECT_EQ(desk.host.bytes(7), "66 05 6F 6B 20 61 62");
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(AfDebug, AnotherPacketMayFollowAtOnce) {
    Desk desk("kova2");
    desk.host.send("81 66 66 66 01 61 81 66 66 66 01 62 81 09 04 00 FF");
    EXPECT_EQ(desk.host.bytes(6), "66 04 6F 6B 20 61");
    EXPECT_EQ(desk.host.bytes(6), "66 04 6F 6B 20 62");
    EXPECT_EQ(desk.host.packet(), IS_ON);
}

TEST(AfDebug, APauseInsideTheTextEndsIt) {
    Desk desk("kova2"); // a second lasts 10 ms
    desk.host.send("81 66 66 66 04 61 62");
    EXPECT_TRUE(desk.until([](const State &s) { return s.noiseBytes == 7; }));
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
    EXPECT_EQ(desk.camera.state().sentCount("AF debug"), 0u);
}

TEST(AfDebug, ATextThatLostItsLengthIsNoiseAfterThePause) {
    Desk desk("kova2");
    desk.host.send("81 66 66 66");
    EXPECT_TRUE(desk.until([](const State &s) { return s.noiseBytes == 4; }));
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(AfDebug, ATextMayComeInPieces) {
    Options options = Options::fast("kova2");
    Desk desk(options);
    desk.host.send("81 66 66");
    EXPECT_FALSE(desk.camera.waitFor([](const State &) { return false; }, 20ms));
    desk.host.send("66 02 61");
    EXPECT_FALSE(desk.camera.waitFor([](const State &) { return false; }, 20ms));
    desk.host.send("62");
    EXPECT_EQ(desk.host.bytes(7), "66 05 6F 6B 20 61 62");
}

TEST(AfDebug, ALostByteCostsThePacketAndNoMore) {
    Desk desk("kova2");
    desk.camera.setFault("drop-tx=1#1");
    desk.host.send("81 66 66 66 01 61"); // its header is lost
    EXPECT_TRUE(desk.until([](const State &s) { return s.noiseBytes == 5; }));
    desk.host.send("66 00 81 66 66 66 01 61"); // noise in front
    EXPECT_EQ(desk.host.bytes(6), "66 04 6F 6B 20 61");
}

TEST(AfDebug, IsHeardOnlyByAModuleThatIsOn) {
    Options options = quick("kova2");
    options.start = sim::Power::off;
    Desk desk(options);
    desk.host.send(packetOf(1));
    EXPECT_TRUE(desk.until([](const State &s) { return s.ignoredPackets == 1; }));
}

TEST(AfDebug, ABlockTakesItForAPacketThatIsTooLong) {
    Desk desk("sony1");
    EXPECT_EQ(desk.host.ask(packetOf(20) + " FF"), SYNTAX);
    EXPECT_EQ(desk.camera.state().seenCount("long"), 1u);
}
