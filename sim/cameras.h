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

inline bool isKova(const Traits &traits) {
    return (traits.type.code & 0xFFFFF000u) == 0x02012000u;
}

inline bool isSecondKova(const Traits &traits) {
    return (traits.type.code & 0xFFFFFF00u) == 0x02012A00u;
}

} // namespace sim

#endif
