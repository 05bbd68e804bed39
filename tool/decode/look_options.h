#ifndef VISCACAM_TOOL_DECODE_LOOK_OPTIONS_H
#define VISCACAM_TOOL_DECODE_LOOK_OPTIONS_H

#include <memory>

#include <CLI/CLI.hpp>

#include "tool/decode/printer.h"

namespace tool {

/* "--time", "--only", "--without" and "--json", of all subcommands that show traffic. */
void addLook(CLI::App &command, const std::shared_ptr<TrafficLook> &look);

/* "to-camera" or "from-camera" */
decode::Direction directionNamed(const std::string &text);

} // namespace tool

#endif
