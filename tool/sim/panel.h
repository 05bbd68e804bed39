#ifndef VISCACAM_TOOL_SIM_PANEL_H
#define VISCACAM_TOOL_SIM_PANEL_H

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "sim/sim.h"
#include "tool/sim/screen.h"

namespace tool {

/* One camera of several, in the list of them. */
struct PanelEntry {
    std::string name;
    std::string device;
    sim::State state;
};

/* What the view shows. */
struct Panel {
    std::vector<PanelEntry> cameras;
    size_t chosen = 0;
    std::set<std::string> changed; /* settings of the chosen one that have changed a moment ago */
    std::function<std::vector<Row>(size_t count)> packets; /* the last ones of the chosen one */
    std::string answer;                                    /* to what was typed last; several lines */
    std::string typed;                                     /* so far */
};

/* The rows of a screen of this size: the cameras, the state of the chosen one, packets, the line to type on.
 */
std::vector<Row> drawPanel(const Panel &panel, ScreenSize size);

} // namespace tool

#endif
