#ifndef VISCACAM_SIM_CAMERAS_H
#define VISCACAM_SIM_CAMERAS_H

#include "sim/sim.h"

namespace sim {

/* What one camera type has that another has not. */
struct Traits {
    CameraType type;
    uint16_t vendor;
    uint16_t model;
    uint16_t version;
    uint8_t monitorMode; /* register 0x72 as it leaves the factory */
};

const Traits &traitsOf(const CameraType &type);

} // namespace sim

#endif
