#include "decode/xmodem.h"

namespace decode {

namespace {

constexpr std::uint8_t kBlock = 0x01;      // of 128 bytes
constexpr std::uint8_t kLargeBlock = 0x02; // of 1024 bytes
constexpr std::size_t kHead = 3;           // mark, number, its complement
constexpr std::size_t kBlockBytes = 128;
constexpr std::size_t kLargeBlockBytes = 1024;

struct Word {
    std::uint8_t byte;
    const char *meaning;
};
constexpr Word kWords[] = {
    {0x04, "end of file"},          {0x06, "taken"}, {0x15, "ready, or: send it again"}, {0x18, "cancelled"},
    {'C', "ready, checked by CRC"},
};

bool IsBlock(const Bytes &bytes) {
    if (bytes.size() <= kHead || (bytes[0] != kBlock && bytes[0] != kLargeBlock))
        return false;
    return bytes[1] + bytes[2] == 0xFF;
}

} // namespace

std::string XmodemMeaning(const Bytes &bytes) {
    if (IsBlock(bytes)) {
        const std::size_t size = bytes[0] == kBlock ? kBlockBytes : kLargeBlockBytes;
        return "block " + std::to_string(bytes[1]) + ", " + std::to_string(size) + " bytes";
    }
    for (const Word &word : kWords)
        if (!bytes.empty() && bytes[0] == word.byte)
            return word.meaning;
    return std::to_string(bytes.size()) + (bytes.size() == 1 ? " byte" : " bytes");
}

} // namespace decode
