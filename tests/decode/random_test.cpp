// Whatever bytes come, nothing is read or written outside, nothing is lost, and every line says something.
#include <gtest/gtest.h>

#include <random>

#include "decode/trace.h"

using namespace decode;

namespace {

constexpr Direction kDirections[] = {Direction::ToCamera, Direction::FromCamera};

/// Bytes that look like traffic often enough to reach every branch.
class Traffic {
  public:
    explicit Traffic(unsigned seed) : random_(seed) {}

    std::uint8_t Byte() {
        constexpr std::uint8_t kLikely[] = {0x81, 0x71, 0x88, 0x90, 0x66, 0xFF, 0x01, 0x09, 0x04, 0x50,
                                            0x41, 0x51, 0x60, 0x02, 0x07, 0xB2, 0xB5, 0x47, 0x00, 0xAB};
        return Below(4) == 0 ? static_cast<std::uint8_t>(Below(256)) : kLikely[Below(sizeof kLikely)];
    }
    Bytes Run(unsigned most) {
        Bytes bytes(Below(most + 1));
        for (std::uint8_t &byte : bytes)
            byte = Byte();
        return bytes;
    }
    /// A packet of the table with its parameters drawn.
    Bytes Packet(const Row &row) {
        Bytes bytes;
        for (const char *token = row.pattern; *token != '\0'; token += token[2] == '\0' ? 2 : 3) {
            if (token[0] == '+' || token[0] == '*')
                bytes.push_back(static_cast<std::uint8_t>(Below(16)));
            else
                bytes.push_back(static_cast<std::uint8_t>(Nibble(token[0]) << 4 | Nibble(token[1])));
        }
        return bytes;
    }
    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

  private:
    unsigned Nibble(char c) {
        if (c >= '0' && c <= '9')
            return static_cast<unsigned>(c - '0');
        return c >= 'A' && c <= 'F' ? static_cast<unsigned>(c - 'A' + 10) : Below(16);
    }
    std::mt19937 random_;
};

std::vector<const Row *> AllRows() {
    std::vector<const Row *> rows;
    for (const Subject &subject : Table())
        for (std::size_t i = 0; i < subject.count; ++i)
            rows.push_back(&subject.rows[i]);
    return rows;
}

} // namespace

TEST(Random, AnyBytesHaveADescription) {
    Traffic traffic(1);
    for (int i = 0; i < 5000; ++i) {
        const Bytes bytes = traffic.Run(20);
        for (const Direction direction : kDirections)
            EXPECT_FALSE(Describe(direction, bytes).empty());
    }
}

TEST(Random, EveryShortPacketHasADescription) {
    for (unsigned a = 0; a < 256; a += 3)
        for (unsigned b = 0; b < 256; b += 5) {
            const Bytes bytes = {0x90, static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b), 0xFF};
            EXPECT_EQ(Explain(Direction::FromCamera, bytes.data(), bytes.size()).row == nullptr, false)
                << a << " " << b;
        }
}

TEST(Random, ThePiecesOfAStreamAreTheStream) {
    Traffic traffic(2);
    for (int round = 0; round < 200; ++round)
        for (const Direction direction : kDirections) {
            Splitter splitter(direction);
            std::vector<Piece> pieces;
            Bytes stream, joined;
            for (long step = 0; step < 20; ++step) {
                const Bytes bytes = traffic.Run(30);
                stream.insert(stream.end(), bytes.begin(), bytes.end());
                splitter.Feed(Microseconds(step * static_cast<long>(traffic.Below(200000))), bytes.data(),
                              bytes.size(), pieces);
            }
            splitter.Flush(pieces);
            for (const Piece &piece : pieces) {
                EXPECT_EQ(piece.offset, joined.size());
                EXPECT_LE(piece.bytes.size(), 257U);
                EXPECT_GE(piece.bytes.size(), 1U);
                joined.insert(joined.end(), piece.bytes.begin(), piece.bytes.end());
            }
            EXPECT_EQ(joined, stream);
        }
}

TEST(Random, AnyConversationCanBeFollowed) {
    Traffic traffic(3);
    const std::vector<const Row *> rows = AllRows();
    Trace trace;
    for (long i = 0; i < 5000; ++i) {
        const Row &row = *rows[traffic.Below(static_cast<unsigned>(rows.size()))];
        const bool junk = traffic.Below(8) == 0;
        const Bytes bytes = junk ? traffic.Run(20) : traffic.Packet(row);
        EXPECT_FALSE(trace.Line(Microseconds(i * 300000), row.direction, bytes).empty());
    }
}
