#include "decode/decode.h"

#include <utility>

namespace decode {

MixedSplitter::MixedSplitter(Direction noise)
    : noise_(noise), to_camera_(Direction::ToCamera), from_camera_(Direction::FromCamera) {}

void MixedSplitter::Feed(Microseconds time, const std::uint8_t *bytes, std::size_t size,
                         std::vector<Piece> &out) {
    if (time - latest_ > kLongestGap)
        Flush(out);
    for (std::size_t i = 0; i < size; ++i)
        Take(time, bytes[i], out);
    latest_ = time;
}

void MixedSplitter::Flush(std::vector<Piece> &out) {
    if (active_ == nullptr)
        return;
    std::vector<Piece> ended;
    active_->Flush(ended);
    active_ = nullptr;
    TakeOver(ended, out);
}

void MixedSplitter::Take(Microseconds time, std::uint8_t byte, std::vector<Piece> &out) {
    const bool to_camera = StartsPacket(Direction::ToCamera, byte);
    const bool starts = to_camera || StartsPacket(Direction::FromCamera, byte);
    if (active_ != nullptr && in_noise_ && starts)
        Flush(out);
    if (active_ == nullptr) {
        const Direction direction = to_camera ? Direction::ToCamera : starts ? Direction::FromCamera : noise_;
        active_ = direction == Direction::ToCamera ? &to_camera_ : &from_camera_;
        in_noise_ = !starts;
    }
    std::vector<Piece> ended;
    active_->Feed(time, &byte, 1, ended);
    if (!ended.empty())
        in_noise_ = !starts; // the byte may have begun the next piece
    if (active_->IsIdle())
        active_ = nullptr;
    TakeOver(ended, out);
}

void MixedSplitter::TakeOver(std::vector<Piece> &from, std::vector<Piece> &out) {
    for (Piece &piece : from) {
        piece.offset = position_;
        position_ += piece.bytes.size();
        out.push_back(std::move(piece));
    }
}

} // namespace decode
