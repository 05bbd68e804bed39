#ifndef VISCACAM_TOOL_TAP_TAP_H
#define VISCACAM_TOOL_TAP_TAP_H

#include <string>

#include "tool/decode/printer.h"

namespace tool {

struct TapOptions {
    std::string device;
    std::string link;    /* that leads to the host's end; empty: see Links */
    std::string capture; /* file to write; empty: none */
    bool quiet = false;  /* nothing is shown */
    bool listen = false; /* only read; there is no host's end */
    unsigned baud = 9600;
    std::string wire = "from-camera"; /* of a listener: what it hears, "to-camera", "from-camera", "both" */
};

/* viscacam tap: stands between a host and a camera until a signal. Returns the exit status. */
int runTap(const TapOptions &options, const TrafficLook &look);

} // namespace tool

#endif
