// Values that have names.
#ifndef VISCACAM_DECODE_NAMES_H
#define VISCACAM_DECODE_NAMES_H

#include <cstddef>
#include <string>

#include "decode/decode.h"

namespace decode {

struct NameList {
    const char *format;
    enum class Style {
        Name,    // "manual"; a value that is not in the list: "unknown 0x9"
        WithCode // "0x72 (monitor mode)"; a value that is not in the list: "0x71"
    } style;
    const NamedValue *values;
    std::size_t count;
};

/// Null when no list has this name.
const NameList *FindNameList(const std::string &format);

/// Null when the list does not have the value.
const char *FindName(const NameList &list, std::uint32_t value);

} // namespace decode

#endif
