#include "decode/trace.h"

#include <algorithm>
#include <cstdio>

#include "decode/words.h"

namespace decode {
namespace {

std::string TimeText(Microseconds time) {
    char text[48];
    std::snprintf(text, sizeof text, "%9.1f ms", static_cast<double>(time.count()) / 1000.0);
    return text;
}

std::string BytesText(const std::uint8_t *bytes, std::size_t size, std::size_t columns, std::size_t most) {
    std::string text = size == 0 ? "" : HexText(bytes, std::min(size, most));
    if (size > most)
        text += " ..";
    const std::size_t width = columns == 0 ? 0 : columns * 3 - 1;
    if (text.size() < width)
        text.resize(width, ' ');
    return text;
}

} // namespace

std::string TraceLine(Microseconds time, Direction direction, const std::uint8_t *bytes, std::size_t size,
                      const std::string &meaning, std::size_t columns) {
    return TimeText(time) + "  " + PacketText(direction, bytes, size, meaning, columns);
}

std::string PacketText(Direction direction, const std::uint8_t *bytes, std::size_t size,
                       const std::string &meaning, std::size_t columns, std::size_t most) {
    const char *arrow = direction == Direction::ToCamera ? "->camera  " : "<-camera  ";
    return arrow + BytesText(bytes, size, columns, most) + "  " + meaning;
}

Trace::Trace(std::size_t columns) : columns_(columns) {}

std::string Trace::Line(Microseconds time, Direction direction, const std::uint8_t *bytes, std::size_t size) {
    return TraceLine(time, direction, bytes, size, conversation_.Next(direction, time, bytes, size).text,
                     columns_);
}

std::string Trace::Line(Microseconds time, Direction direction, const Bytes &bytes) {
    return Line(time, direction, bytes.data(), bytes.size());
}

std::string Trace::Line(const Piece &piece) {
    return Line(piece.time, piece.direction, piece.bytes);
}

} // namespace decode
