#include "decode/decode.h"

#include <utility>

namespace decode {
namespace {

constexpr std::uint8_t kTerminator = 0xFF;
constexpr std::uint8_t kDebugMark = 0x66;
constexpr std::size_t kShortestPacket = 3;
constexpr std::size_t kLongestPacket = 16;
constexpr std::size_t kLongestNoise = 64;
constexpr std::size_t kDebugHeader = 5; // 81 66 66 66 and the length

bool HasDebugHeader(const Bytes &bytes) {
    return bytes.size() == kDebugHeader - 1 && bytes[0] == 0x81 && bytes[1] == kDebugMark &&
           bytes[2] == kDebugMark && bytes[3] == kDebugMark;
}

/// A debug text is 1 to 122 bytes long. A sender cuts a packet at its first zero byte, so behind an empty
/// text's header the next packet begins at once.
bool IsDebugLength(std::uint8_t byte) {
    return byte > 0 && byte < 0x80;
}

} // namespace

bool StartsPacket(Direction direction, std::uint8_t byte) {
    if (direction == Direction::FromCamera)
        return byte == 0x90 || byte == kDebugMark;
    return (byte >= 0x81 && byte <= 0x88) || byte == 0x71;
}

Splitter::Splitter(Direction direction) : direction_(direction) {}

void Splitter::Feed(Microseconds time, const std::uint8_t *bytes, std::size_t size, std::vector<Piece> &out) {
    if (state_ != State::Idle && time - held_.end > kLongestGap)
        Flush(out);
    for (std::size_t i = 0; i < size; ++i)
        Take(time, bytes[i], out);
}

void Splitter::Flush(std::vector<Piece> &out) {
    if (state_ != State::Idle)
        End(state_ == State::Noise ? Piece::Sort::Noise : Piece::Sort::Broken, out);
}

void Splitter::Take(Microseconds time, std::uint8_t byte, std::vector<Piece> &out) {
    if (state_ == State::Noise && Starts(byte))
        End(Piece::Sort::Noise, out);
    if (state_ == State::Debug && direction_ == Direction::ToCamera &&
        held_.bytes.size() == kDebugHeader - 1 && !IsDebugLength(byte))
        End(Piece::Sort::Broken, out);
    if (state_ == State::Idle)
        Begin(time, byte);
    held_.bytes.push_back(byte);
    held_.end = time;
    ++position_;
    EndIfComplete(out);
}

void Splitter::Begin(Microseconds time, std::uint8_t byte) {
    held_.direction = direction_;
    held_.offset = position_;
    held_.time = time;
    if (!Starts(byte))
        state_ = State::Noise;
    else
        state_ = byte == kDebugMark ? State::Debug : State::Packet;
}

void Splitter::EndIfComplete(std::vector<Piece> &out) {
    const std::size_t size = held_.bytes.size();
    const bool ends = held_.bytes.back() == kTerminator;
    switch (state_) {
    case State::Noise:
        if (ends || size == kLongestNoise)
            End(Piece::Sort::Noise, out);
        break;
    case State::Packet:
        if (ends || size == kLongestPacket)
            End(ends && size >= kShortestPacket ? Piece::Sort::Packet : Piece::Sort::Broken, out);
        else if (direction_ == Direction::ToCamera && HasDebugHeader(held_.bytes))
            state_ = State::Debug;
        break;
    case State::Debug:
        EndDebug(out);
        break;
    case State::Idle:
        break;
    }
}

void Splitter::EndDebug(std::vector<Piece> &out) {
    const std::size_t header = direction_ == Direction::ToCamera ? kDebugHeader : 2;
    const std::size_t size = held_.bytes.size();
    if (size >= header && size == header + held_.bytes[header - 1])
        End(Piece::Sort::Packet, out);
}

void Splitter::End(Piece::Sort sort, std::vector<Piece> &out) {
    held_.sort = sort;
    out.push_back(std::move(held_));
    held_ = Piece();
    state_ = State::Idle;
}

} // namespace decode
