#ifndef VISCACAM_TOOL_SIM_COMMAND_H
#define VISCACAM_TOOL_SIM_COMMAND_H

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct SimOptions {
    std::string camera = "sony1"; /* name or code */
    std::string link;             /* symbolic link to the pty, empty: none */
    unsigned baud = 9600;
    bool fullSpeed = false;
    unsigned bootMs = 3000;
    bool latency = true; /* that of a real line; false: none */
    std::vector<std::string> faults;
    uint64_t seed = 1;
    bool trace = false;
    bool list = false;     /* show cameras and faults instead */
    bool untilEof = false; /* the end of standard input ends the camera */
};

/* viscacam sim: runs a simulated camera until a signal or "quit". Returns the exit status. */
int runSim(const SimOptions &options);

} // namespace tool

#endif
