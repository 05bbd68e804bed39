#ifndef VISCACAM_TOOL_DECODE_DECODE_H
#define VISCACAM_TOOL_DECODE_DECODE_H

#include <optional>
#include <string>
#include <vector>

#include "decode/input.h"
#include "tool/decode/printer.h"

namespace tool {

struct DecodeOptions {
    std::vector<std::string> input; /* a file, or bytes in hex; none or "-": standard input */
    decode::InputForm form = decode::InputForm::Detect;
    std::optional<decode::Direction> direction;
};

/* viscacam decode: shows what is in its input. Returns the exit status. */
int runDecode(const DecodeOptions &options, const TrafficLook &look);

} // namespace tool

#endif
