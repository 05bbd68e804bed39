// Mode numbers of the image primitives that more than one file speaks of.
#ifndef VISCACAM_VISCA_SONY_CTRL_IMAGE_MODES_H
#define VISCACAM_VISCA_SONY_CTRL_IMAGE_MODES_H

#include <stdint.h>

namespace viscacam {

constexpr uint32_t DAY_NIGHT_AUTO = 0; // the camera decides
constexpr uint32_t DAY_NIGHT_COLOUR = 1;
constexpr uint32_t DAY_NIGHT_BLACK_WHITE = 2;

constexpr int32_t WB_AUTO = 0;
constexpr int32_t WB_MANUAL = 10;
constexpr int32_t WB_ATW = 11; // auto tracing
constexpr int32_t WB_SODIUM_AUTO = 13;

constexpr uint32_t MSG_DEFOG = 30; // the set message that carries defog mode and sensitivity

} // namespace viscacam

#endif
