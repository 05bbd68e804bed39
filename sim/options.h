#ifndef VISCACAM_SIM_OPTIONS_H
#define VISCACAM_SIM_OPTIONS_H

#include "sim/sim.h"

namespace sim {

/* The options as given; throws std::invalid_argument with what is allowed. */
const Options &checked(const Options &options);

} // namespace sim

#endif
