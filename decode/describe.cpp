#include "decode/pattern.h"
#include "decode/table.h"
#include "decode/words.h"

namespace decode {
namespace {

constexpr std::uint8_t kTerminator = 0xFF;
constexpr std::uint8_t kToFirstCamera = 0x81;
constexpr std::uint8_t kToAll = 0x88;
constexpr std::uint8_t kFromFirstCamera = 0x90;

Meaning ByRow(const Row &row, const std::uint8_t *bytes, std::size_t size) {
    Captures captures;
    Matches(row.pattern, bytes, size, &captures);
    Values values;
    values.packet = &captures;
    Meaning meaning;
    meaning.kind = row.kind;
    meaning.family = row.family;
    meaning.row = &row;
    // That an answer alone cannot be told is not the packet's fault.
    meaning.known = !row.fallback || row.kind == Kind::Answer;
    meaning.text = FillIn(row.words, values);
    return meaning;
}

std::string Count(std::size_t size) {
    return std::to_string(size) + (size == 1 ? " byte" : " bytes");
}

bool BeginsPacket(Direction direction, std::uint8_t byte) {
    if (direction == Direction::FromCamera)
        return byte == kFromFirstCamera || byte == 0x66;
    return (byte >= kToFirstCamera && byte <= kToAll) || byte == 0x71;
}

std::string TextOfRest(Direction direction, const std::uint8_t *bytes, std::size_t size) {
    if (size == 0)
        return "nothing";
    if (!BeginsPacket(direction, bytes[0]))
        return "noise, " + Count(size);
    const char *what = direction == Direction::ToCamera ? "packet" : "reply";
    const bool ends = bytes[size - 1] == kTerminator;
    return std::string(what) + (ends ? " too short, " : " without end, ") + Count(size);
}

/// The address that a packet carries when it is not for or from the first camera; 0 otherwise.
unsigned OtherAddress(Direction direction, const std::uint8_t *bytes, std::size_t size) {
    if (size < 3 || bytes[size - 1] != kTerminator)
        return 0;
    if (direction == Direction::ToCamera)
        return bytes[0] > kToFirstCamera && bytes[0] <= kToAll ? bytes[0] & 0x0FU : 0;
    return bytes[0] >= 0xA0 && (bytes[0] & 0x0F) == 0 ? (bytes[0] >> 4) - 8U : 0;
}

std::string AddressText(Direction direction, unsigned address) {
    if (direction == Direction::FromCamera)
        return "from camera " + std::to_string(address) + ": ";
    return address == 8 ? "to all cameras: " : "to camera " + std::to_string(address) + ": ";
}

/// The same packet as if it were for or from the first camera. A host of the first camera takes another
/// camera's reply for noise, and so it stays noise; the words are for the reader.
Meaning ExplainOther(Direction direction, unsigned address, Bytes bytes) {
    const bool to_camera = direction == Direction::ToCamera;
    bytes[0] = to_camera ? kToFirstCamera : kFromFirstCamera;
    const Row *row = FindRow(direction, bytes.data(), bytes.size());
    if (row == nullptr)
        return {};
    Meaning meaning = ByRow(*row, bytes.data(), bytes.size());
    meaning.text = AddressText(direction, address) + meaning.text;
    if (!to_camera) {
        meaning.kind = Kind::Noise;
        meaning.known = false;
    }
    return meaning;
}

} // namespace

Meaning Explain(Direction direction, const std::uint8_t *bytes, std::size_t size) {
    if (const Row *row = FindRow(direction, bytes, size))
        return ByRow(*row, bytes, size);
    Meaning meaning;
    if (const unsigned address = OtherAddress(direction, bytes, size))
        meaning = ExplainOther(direction, address, Bytes(bytes, bytes + size));
    if (meaning.text.empty())
        meaning.text = TextOfRest(direction, bytes, size);
    return meaning;
}

std::string Describe(Direction direction, const std::uint8_t *bytes, std::size_t size) {
    return Explain(direction, bytes, size).text;
}

std::string Describe(Direction direction, const Bytes &bytes) {
    return Describe(direction, bytes.data(), bytes.size());
}

} // namespace decode
