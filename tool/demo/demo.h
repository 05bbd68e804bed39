#ifndef VISCACAM_TOOL_DEMO_DEMO_H
#define VISCACAM_TOOL_DEMO_DEMO_H

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct DemoOptions {
    std::string camera;    /* simulated: name or code; empty, and no port: one of each family in turn */
    unsigned baud = 38400; /* that the simulated camera listens at */
    uint64_t seed = 1;
    std::vector<std::string> faults;
    std::string port;           /* a real camera's device; empty: simulated */
    std::string type = "sony1"; /* of the camera at the port: name or code */
    enum class Story { tour, upgrade, exportLog } story = Story::tour;
    bool dryRun = false; /* of an upgrade: say only what would be sent, and why */
};

/*
 * viscacam demo: lets the library drive a camera, prints what goes over the line, compares what was asked
 * with what the camera believes. Returns the exit status when nothing was started; otherwise it ends the
 * process.
 */
int runDemo(const DemoOptions &options);

} // namespace tool

#endif
