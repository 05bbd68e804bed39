// Drive speeds of the lens: written by start-up for the module type, read by zoom and focus drive. 0 before
// start-up.
#ifndef VISCACAM_VISCA_SONY_CTRL_LENS_LENS_SPEED_H
#define VISCACAM_VISCA_SONY_CTRL_LENS_LENS_SPEED_H

#include <stdint.h>

namespace viscacam {

extern uint32_t g_ulZoomSpeed;
extern uint32_t g_ulFocusSpeed;

} // namespace viscacam

#endif
