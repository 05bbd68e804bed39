// Switching a Kova module off and on again, for settings that take effect at power-on.
#ifndef VISCACAM_VISCA_SONY_CTRL_KOVA_POWER_CYCLE_H
#define VISCACAM_VISCA_SONY_CTRL_KOVA_POWER_CYCLE_H

#include <stdint.h>

#include "visca_que/log.h"

namespace viscacam {

// Off, 1 s, on, ulRestMs, then wait until the module answers that it is on; there is no bound to that. Says
// under the caller's name which step failed; a failed power-on leaves the module off.
uint32_t PowerCycle(uint32_t ulRestMs, const LogPlace &rCaller);

} // namespace viscacam

#endif
