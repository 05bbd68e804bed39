// The camera's end of the cable in memory: it stands in for sim::Pty, so that a simulated camera runs without
// a device, a thread or a clock.
#ifndef VISCACAM_FUZZ_MEMORY_PTY_H
#define VISCACAM_FUZZ_MEMORY_PTY_H

#include "fuzz/input.h"

#include <cstdint>
#include <vector>

namespace fuzz {

struct Cable {
    Span to_camera;               // not read yet
    std::vector<uint8_t> to_host; // written so far
    unsigned host_baud = 9600;
};

/** The one cable of the process. */
Cable &TheCable();

} // namespace fuzz

#endif
