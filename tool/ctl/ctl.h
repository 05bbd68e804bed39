#ifndef VISCACAM_TOOL_CTL_CTL_H
#define VISCACAM_TOOL_CTL_CTL_H

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct CtlOptions {
    std::string port;           /* a real camera's device */
    std::string type = "sony1"; /* of the camera at the port: name or code */
    std::string sim;            /* or a simulated camera: name or code */
    unsigned baud = 9600;       /* that the simulated one listens at */
    std::vector<std::string> faults;
    bool trace = false;
    std::string capture; /* file to write what passes into; empty: none */
    bool json = false;
    std::string file; /* commands to carry out, "-" for standard input; empty: none */
    bool keepGoing = false;
    std::vector<std::string> words; /* commands from the command line */
};

/*
 * viscacam ctl: carries out commands from the command line, from a file, from standard input, or from a
 * person at a terminal. Returns the exit status when nothing was started; otherwise it ends the process.
 */
int runCtl(const CtlOptions &options);

} // namespace tool

#endif
