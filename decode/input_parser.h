// The readers of the four forms. Inside decode/ only.
#ifndef VISCACAM_DECODE_INPUT_PARSER_H
#define VISCACAM_DECODE_INPUT_PARSER_H

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "decode/input.h"

namespace decode {

class InputParser {
  public:
    virtual ~InputParser() = default;
    /// A line without its newline; raw bytes come in pieces of any size.
    virtual void Line(const std::string &line, std::vector<InputItem> &out) = 0;
    virtual void Finish(std::vector<InputItem> &out) = 0;
    virtual std::optional<InputStart> Start() const { return std::nullopt; }
};

std::unique_ptr<InputParser> NewHexInput(std::optional<Direction> direction);
std::unique_ptr<InputParser> NewLogInput();
std::unique_ptr<InputParser> NewCaptureInput();
std::unique_ptr<InputParser> NewRawInput(std::optional<Direction> direction);

/// Whether a line can be of this form and of no other.
bool IsHexLine(const std::string &line);
bool IsLogLine(const std::string &line);

/// Where and when bytes were found.
struct Place {
    std::size_t line = 0;
    std::optional<Microseconds> time;
};

/// A splitter that knows in which line each piece began.
template <typename S>
class PlacedSplitter {
  public:
    explicit PlacedSplitter(Direction direction) : splitter_(direction) {}

    void Feed(const Place &place, const Bytes &bytes, std::vector<InputItem> &out) {
        marks_.emplace_back(fed_, place);
        fed_ += bytes.size();
        std::vector<Piece> pieces;
        splitter_.Feed(place.time.value_or(Microseconds(0)), bytes.data(), bytes.size(), pieces);
        TakeOver(pieces, out);
    }

    /// Ends the piece that is under way if it is too old by now.
    void Age(Microseconds now, std::vector<InputItem> &out) {
        std::vector<Piece> pieces;
        splitter_.Feed(now, nullptr, 0, pieces);
        TakeOver(pieces, out);
    }

    void Flush(std::vector<InputItem> &out) {
        std::vector<Piece> pieces;
        splitter_.Flush(pieces);
        TakeOver(pieces, out);
    }

  private:
    void TakeOver(std::vector<Piece> &pieces, std::vector<InputItem> &out) {
        for (Piece &piece : pieces) {
            while (marks_.size() > 1 && marks_[1].first <= piece.offset)
                marks_.pop_front();
            InputItem item;
            item.line = marks_.front().second.line;
            item.time = marks_.front().second.time;
            item.byte = piece.offset - (item.line == 0 ? 0 : marks_.front().first);
            item.piece = std::move(piece);
            out.push_back(std::move(item));
        }
    }

    S splitter_;
    std::uint64_t fed_ = 0;
    std::deque<std::pair<std::uint64_t, Place>> marks_;
};

/// The splitters of an input: one a direction, and one for bytes whose direction nobody knows.
class Streams {
  public:
    explicit Streams(Direction noise) : mixed_(noise) {}

    /// Nothing as direction: it follows from the bytes.
    void Feed(std::optional<Direction> direction, const Place &place, const Bytes &bytes,
              std::vector<InputItem> &out);
    void Flush(std::vector<InputItem> &out);

  private:
    PlacedSplitter<Splitter> to_camera_{Direction::ToCamera};
    PlacedSplitter<Splitter> from_camera_{Direction::FromCamera};
    PlacedSplitter<MixedSplitter> mixed_;
};

InputItem RemarkOf(const Place &place, const std::string &text);
InputItem WrongOf(const Place &place, const std::string &why);

} // namespace decode

#endif
