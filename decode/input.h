// Reads what an engineer has of a line's traffic, whatever its form, and cuts it into packets and noise.
//
// Four forms are understood, and told apart by what stands in them:
//
//     hex      81 09 04 00 FF         one packet or many a line, in the usual spellings: 0x81,0x09 81090400FF
//                                     \x81\x09  81:09:04  {0x81, 0x09}  81h, dumps with offsets in front. A
//                                     word in front gives the direction (> < -> <- tx rx send recv out in
//                                     ...), else the first byte does. A time of the day may stand in front
//                                     (12:34:56 or [12:34:56.789]); times count from the first one. Lines of
//                                     a trace are such lines too. What stands behind # // or ; is left out.
//     log      the library's log lines, as they are or behind a system log's own words
//     capture  see capture.h
//     raw      bytes as they were on the line
//
// No function here throws on account of what it is fed.
#ifndef VISCACAM_DECODE_INPUT_H
#define VISCACAM_DECODE_INPUT_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "decode/decode.h"

namespace decode {

enum class InputForm { Detect, Hex, Log, Capture, Raw };

/// Something that was read.
struct InputItem {
    enum class Sort {
        Piece,  ///< a packet or noise: `piece`
        Remark, ///< of a capture, or a log line that is no packet: `text`
        Wrong   ///< a line that does not belong to the form: `text` says why
    };
    Sort sort = Sort::Piece;
    std::size_t line = 0;             ///< in which it begins, from 1; 0 of raw bytes
    std::uint64_t byte = 0;           ///< its first one, from 0: in that line; of raw bytes in the stream
    std::optional<Microseconds> time; ///< of its first byte, since the start; nothing when not known. A piece
                                      ///< is read when it ends: what came meanwhile may stand in front of it
    /// Its times are 0 when not known.
    Piece piece;
    std::string text;
};

/// When the times of an input begin.
struct InputStart {
    Microseconds since_1970{0};
    bool utc = false; ///< or else the clock of the place where the log was written
};

/// One form's reader. Inside decode/ only.
class InputParser;

/// Reads an input piece by piece, so that it can follow a log that grows.
class InputReader {
  public:
    /// `direction`: of bytes that do not say by themselves. Given, it is that of all hex lines without a word
    /// for it and of all raw bytes; else packets are told by their first byte, and noise is the camera's.
    explicit InputReader(InputForm form = InputForm::Detect, std::optional<Direction> direction = {});
    ~InputReader();
    InputReader(const InputReader &) = delete;
    InputReader &operator=(const InputReader &) = delete;

    /// Takes the next bytes and appends what they complete to `out`. `data` may be null when `size` is 0.
    void Feed(const char *data, std::size_t size, std::vector<InputItem> &out);

    /// The input ends here.
    void Finish(std::vector<InputItem> &out);

    /// The form, Detect until it is known.
    InputForm Form() const { return form_; }

    /// Nothing when it is not known, or not yet.
    std::optional<InputStart> Start() const;

  private:
    void Decide(InputForm form, std::vector<InputItem> &out);
    void Detect(bool ends, std::vector<InputItem> &out);
    void TakeLines(std::vector<InputItem> &out);

    InputForm form_;
    std::optional<Direction> direction_;
    std::unique_ptr<InputParser> parser_;
    std::string held_; // the beginning of a line; all, until the form is known
};

/// One word for each, as used on the command line: "hex".
const char *NameOf(InputForm form);

} // namespace decode

#endif
