#ifndef VISCACAM_TESTS_DECODE_HEX_H
#define VISCACAM_TESTS_DECODE_HEX_H

#include <cstdlib>
#include <string>

#include "decode/decode.h"

/// "81 09 FF" as bytes.
inline decode::Bytes Hex(const std::string &text) {
    decode::Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3)
        bytes.push_back(static_cast<std::uint8_t>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

#endif
