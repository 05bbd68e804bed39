#ifndef VISCACAM_TOOL_SIM_RUN_H
#define VISCACAM_TOOL_SIM_RUN_H

#include <cstdint>
#include <string>
#include <vector>

#include "sim/sim.h"

namespace tool {

struct SimOptions {
    std::vector<std::string> cameras; /* NAME[@LINK], name or code; none: sony1 */
    std::string link;                 /* of the only camera; empty: see Links */
    std::string socket;               /* path of a socket for the dialog; empty: none */
    unsigned baud = 9600;
    bool fullSpeed = false;
    double speed = 1;
    unsigned bootMs = 3000;
    sim::Latency latency = sim::Latency::realLine();
    std::vector<std::string> faults;
    uint64_t seed = 1; /* of the first camera; of each further one it is one more */
    bool trace = false;
    bool plain = false;    /* lines, also on a terminal */
    bool list = false;     /* show cameras and faults instead */
    bool untilEof = false; /* the end of standard input ends the cameras */
};

/* viscacam sim: runs simulated cameras until a signal or "quit". Returns the exit status. */
int runSim(const SimOptions &options);

} // namespace tool

#endif
