#ifndef VISCACAM_TOOL_TAP_TAP_H
#define VISCACAM_TOOL_TAP_TAP_H

#include <memory>
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

/*
 * A tap in this process, on a thread of its own: it writes a capture of all that passes between the device
 * and whoever opens path() instead.
 */
class CaptureTap {
  public:
    /* Throws std::runtime_error. */
    CaptureTap(const std::string &device, const std::string &capture);
    ~CaptureTap();
    CaptureTap(const CaptureTap &) = delete;
    CaptureTap &operator=(const CaptureTap &) = delete;

    const std::string &path() const;
    /* Pass nothing on any more; returns when all that passed is written. Any thread, any number of times. */
    void finish();

  private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace tool

#endif
