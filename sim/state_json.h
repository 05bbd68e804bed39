#ifndef VISCACAM_SIM_STATE_JSON_H
#define VISCACAM_SIM_STATE_JSON_H

#include "sim/sim.h"

namespace sim {

/* One line, no newline. */
std::string toJson(const State &state);

} // namespace sim

#endif
