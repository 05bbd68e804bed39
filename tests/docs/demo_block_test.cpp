// The README shows a demo. What it says of each packet is what the decoder says.
#include <gtest/gtest.h>

#include <regex>

#include "decode/decode.h"
#include "tests/docs/page.h"

namespace {

using decode::Direction;

struct Shown {
    Direction direction;
    decode::Microseconds time;
    decode::Bytes bytes;
    std::string words;
};

/// "   1.2 ms  ->camera  81 09 04 00 FF              power inquiry [noise: ...]"
bool Parse(const std::string &line, Shown *shown) {
    static const std::regex kLine(
        "^ *([0-9]+)\\.([0-9]) ms  (->|<-)camera  ((?:[0-9A-F]{2} )+) *(.*?)(?: \\[noise: .*)?$");
    std::smatch match;
    if (!std::regex_match(line, match, kLine))
        return false;
    shown->time = decode::Microseconds(std::stol(match[1]) * 1000 + std::stol(match[2]) * 100);
    shown->direction = match[3] == "->" ? Direction::ToCamera : Direction::FromCamera;
    shown->bytes.clear();
    const std::string hex = match[4];
    for (std::size_t at = 0; at + 2 < hex.size() + 1; at += 3)
        shown->bytes.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(at, 2), nullptr, 16)));
    shown->words = match[5];
    return true;
}

} // namespace

TEST(DemoInTheReadme, SaysOfEveryPacketWhatTheDecoderSays) {
    const docs::Lines lines = docs::LinesOf(docs::ReadSource("README.md"));
    decode::Conversation conversation;
    bool inside = false;
    int packets = 0;
    for (const std::string &line : lines) {
        if (line.find("<!-- demo output:") != std::string::npos)
            inside = line.find("begin") != std::string::npos;
        if (line == "[...]")
            conversation = decode::Conversation(); // what was left out nobody knows
        Shown shown;
        if (!inside || !Parse(line, &shown))
            continue;
        ++packets;
        EXPECT_EQ(conversation.Next(shown.direction, shown.time, shown.bytes).text, shown.words) << line;
    }
    EXPECT_GT(packets, 20);
}
