// Bits of the Kova module's capability word that the library itself looks at. The others are the host's to
// test.
#ifndef VISCACAM_VISCA_SONY_CTRL_KOVA_ABILITY_H
#define VISCACAM_VISCA_SONY_CTRL_KOVA_ABILITY_H

#include <stdint.h>

#include "viscacam.h"

namespace viscacam {

constexpr uint32_t ABILITY_SEGMENTED_VERSION = 0x04; // the program version comes in segments
constexpr uint32_t ABILITY_REVERSE_BY_POWER = 0x08;  // a new orientation takes effect at the next power-on
constexpr uint32_t ABILITY_EXT_VERSION = 0x10;       // the extension version can be asked for

inline bool HasAbility(uint32_t ulBit) {
    return KOVA_HasCamAbility(ulBit) == 1;
}

} // namespace viscacam

#endif
