// Traffic as readable lines, one a packet:
//
//     12.5 ms  ->camera  81 01 04 07 26 FF                       zoom tele, speed 6
#ifndef VISCACAM_DECODE_TRACE_H
#define VISCACAM_DECODE_TRACE_H

#include "decode/decode.h"

namespace decode {

/// Bytes for which a line keeps room; a longer packet pushes its meaning to the right. No Sony packet is
/// longer.
constexpr std::size_t kTraceColumns = 13;

/// Bytes that a line shows at most; of a longer piece the first ones, then "..".
constexpr std::size_t kTraceMostBytes = 24;

/// One line without its newline: the time since the start in milliseconds, the direction, the bytes in hex,
/// the meaning. `bytes` may be null when `size` is 0. Any thread.
std::string TraceLine(Microseconds time, Direction direction, const std::uint8_t *bytes, std::size_t size,
                      const std::string &meaning, std::size_t columns = kTraceColumns);

/// The same without the time: direction, bytes and meaning. `most`: as kTraceMostBytes.
std::string PacketText(Direction direction, const std::uint8_t *bytes, std::size_t size,
                       const std::string &meaning, std::size_t columns = kTraceColumns,
                       std::size_t most = kTraceMostBytes);

/// Turns packets into lines as they pass. One thread at a time.
class Trace {
  public:
    /// `columns` as kTraceColumns.
    explicit Trace(std::size_t columns = kTraceColumns);

    /// The line for the next packet or piece of noise; `time` since the start of the trace, not running
    /// backwards.
    std::string Line(Microseconds time, Direction direction, const std::uint8_t *bytes, std::size_t size);
    std::string Line(Microseconds time, Direction direction, const Bytes &bytes);
    std::string Line(const Piece &piece);

  private:
    std::size_t columns_;
    Conversation conversation_;
};

} // namespace decode

#endif
