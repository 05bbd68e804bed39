#ifndef VISCACAM_TOOL_SIM_DIALOG_H
#define VISCACAM_TOOL_SIM_DIALOG_H

#include <string>

#include "sim/sim.h"

namespace tool {

struct DialogReply {
    std::string text; /* a line, or several for "help"; no newline at the end; empty: say nothing */
    bool quit = false;
};

/*
 * Obey one line of the dialog with a simulated camera: "state", "fault NAME=VALUE", "help" and so on.
 * Anything wrong is answered by "error: ..." and changes nothing.
 */
DialogReply obey(sim::Camera &camera, const std::string &line);

} // namespace tool

#endif
