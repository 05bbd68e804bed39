#include "sim/firmware_image.h"

#include <algorithm>
#include <sstream>

namespace sim {

namespace {

constexpr const char *MARK = "viscacam-image";
constexpr size_t LONGEST_LINE = 256;
constexpr size_t LONGEST_BLOCK = 1024;
constexpr uint8_t PADDING = 0x1A;

// The CRC-32 of zip and Ethernet.
uint32_t crc32(const uint8_t *bytes, size_t count) {
    uint32_t crc = 0xFFFFFFFF;
    for (size_t i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    return ~crc;
}

// The first line, without its end; empty if there is none.
std::string firstLine(const Bytes &file) {
    const auto limit = file.begin() + static_cast<long>(std::min(file.size(), LONGEST_LINE));
    const auto end = std::find(file.begin(), limit, '\n');
    return end == limit ? "" : std::string(file.begin(), end);
}

bool isPadding(const uint8_t *bytes, size_t count) {
    return count < LONGEST_BLOCK && std::all_of(bytes, bytes + count, [](uint8_t b) { return b == PADDING; });
}

} // namespace

FirmwareImage checkImage(const Bytes &file, const std::string &kind) {
    const std::string line = firstLine(file);
    std::istringstream words(line);
    std::string mark;
    if (!(words >> mark) || mark != MARK)
        return {};
    std::string kindTold;
    std::string version;
    size_t length = 0;
    uint32_t crc = 0;
    if (!(words >> kindTold >> version >> length >> std::hex >> crc))
        return {"", "its image line cannot be read"};
    if (kindTold != kind)
        return {"", "it is an image of kind " + kindTold};
    const uint8_t *body = file.data() + line.size() + 1;
    const size_t arrived = file.size() - line.size() - 1;
    if (length > arrived || !isPadding(body + length, arrived - length))
        return {"", "its length is wrong"};
    if (crc32(body, length) != crc)
        return {"", "its CRC is wrong"};
    return {version, ""};
}

} // namespace sim
