// The decoder on the bytes of a line: cut into pieces, put into words. The input is a series of reads:
//
//   0  1 from the camera; 6 the time since the read before: 0, 2 ms, 1.2 s, 7 s; F8 the number of bytes
//   1  the bytes
#include "decode/decode.h"
#include "decode/trace.h"
#include "fuzz/input.h"
#include "fuzz/law.h"

#include <cstring>

namespace {

using decode::Bytes;
using decode::Conversation;
using decode::Direction;
using decode::Meaning;
using decode::Microseconds;
using decode::Piece;
using decode::Splitter;

constexpr long SINCE[] = {0, 2000, 1200000, 7000000};
constexpr size_t LONGEST_PIECE = 257;

struct Read {
    Direction direction;
    Microseconds time;
    fuzz::Span bytes;
};

std::vector<Read> ReadsOf(const uint8_t *bytes, size_t size) {
    std::vector<Read> reads;
    fuzz::Input input(bytes, size);
    Microseconds time{0};
    while (!input.Empty()) {
        const uint8_t head = input.Byte();
        time += Microseconds(SINCE[head / 2 % 4]);
        reads.push_back(
            {head % 2 == 0 ? Direction::ToCamera : Direction::FromCamera, time, input.Take(head / 8)});
    }
    return reads;
}

/** The pieces of one direction; `apart`: fed byte by byte, which must make no difference. */
std::vector<Piece> Split(const std::vector<Read> &reads, Direction direction, bool apart) {
    Splitter splitter(direction);
    std::vector<Piece> pieces;
    for (const Read &read : reads) {
        if (read.direction != direction)
            continue;
        const size_t step = apart ? 1 : read.bytes.size;
        for (size_t at = 0; at < read.bytes.size; at += step)
            splitter.Feed(read.time, read.bytes.bytes + at, step, pieces);
    }
    splitter.Flush(pieces);
    return pieces;
}

bool IsFramed(const Bytes &bytes, Direction direction) {
    if (direction == Direction::FromCamera && bytes[0] == 0x66)
        return bytes.size() >= 2 && bytes.size() == 2U + bytes[1];
    if (bytes.size() >= 5 && memcmp(bytes.data(), "\x81\x66\x66\x66", 4) == 0 && bytes[4] < 0x80)
        return bytes.size() == 5U + bytes[4];
    return bytes.size() >= 3 && bytes.size() <= 16 && bytes.back() == 0xFF &&
           memchr(bytes.data(), 0xFF, bytes.size() - 1) == nullptr;
}

/** Together the pieces are the stream. */
void CheckPieces(const std::vector<Piece> &pieces, const std::vector<Read> &reads, Direction direction) {
    Bytes stream, together;
    for (const Read &read : reads) {
        if (read.direction == direction)
            stream.insert(stream.end(), read.bytes.bytes, read.bytes.bytes + read.bytes.size);
    }
    Microseconds time{0};
    for (const Piece &piece : pieces) {
        LAW(piece.direction == direction && piece.offset == together.size());
        LAW(!piece.bytes.empty() && piece.bytes.size() <= LONGEST_PIECE);
        LAW(time <= piece.time && piece.time <= piece.end);
        LAW(piece.sort != Piece::Sort::Packet || IsFramed(piece.bytes, direction));
        time = piece.end;
        together.insert(together.end(), piece.bytes.begin(), piece.bytes.end());
    }
    LAW(together == stream);
}

bool IsSame(const Piece &a, const Piece &b) {
    return a.sort == b.sort && a.offset == b.offset && a.time == b.time && a.end == b.end &&
           a.bytes == b.bytes;
}

bool IsLine(const std::string &text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7F)
            return false;
    }
    return !text.empty();
}

void CheckMeaning(const Meaning &meaning, long number, const Piece &piece) {
    LAW(IsLine(meaning.text));
    LAW(meaning.answers >= -1 && meaning.answers < number);
    LAW(!meaning.known || meaning.row != nullptr);
    LAW(meaning.row == nullptr || meaning.row->direction == piece.direction);
}

void CheckLine(const std::string &line, const Meaning &meaning) {
    LAW(IsLine(line) && line.size() <= 64 + 3 * decode::kTraceMostBytes + meaning.text.size());
    LAW(line.size() >= meaning.text.size() &&
        line.compare(line.size() - meaning.text.size(), meaning.text.size(), meaning.text) == 0);
}

/** Both directions in the order of their times. */
std::vector<Piece> Merged(const std::vector<Piece> &a, const std::vector<Piece> &b) {
    std::vector<Piece> all;
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        const bool first = j == b.size() || (i < a.size() && a[i].end <= b[j].end);
        all.push_back(first ? a[i++] : b[j++]);
    }
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::vector<Read> reads = ReadsOf(bytes, size);
    std::vector<Piece> pieces[2];
    for (const Direction direction : {Direction::ToCamera, Direction::FromCamera}) {
        std::vector<Piece> &mine = pieces[direction == Direction::FromCamera];
        mine = Split(reads, direction, false);
        CheckPieces(mine, reads, direction);
        const std::vector<Piece> apart = Split(reads, direction, true);
        LAW(mine.size() == apart.size());
        for (size_t i = 0; i < mine.size(); ++i)
            LAW(IsSame(mine[i], apart[i]));
    }
    Conversation conversation;
    decode::Trace trace;
    long number = 0;
    for (const Piece &piece : Merged(pieces[0], pieces[1])) {
        const Meaning alone = decode::Explain(piece.direction, piece.bytes.data(), piece.bytes.size());
        CheckMeaning(alone, 0, piece);
        LAW(decode::Describe(piece.direction, piece.bytes) == alone.text);
        const Meaning meaning = conversation.Next(piece.direction, piece.end, piece.bytes);
        CheckMeaning(meaning, number++, piece);
        CheckLine(trace.Line(piece.end, piece.direction, piece.bytes), meaning);
    }
    return 0;
}
