// Version texts of the Kova module.
#ifndef VISCACAM_VISCA_SONY_CTRL_KOVA_VERSION_H
#define VISCACAM_VISCA_SONY_CTRL_KOVA_VERSION_H

#include <stdint.h>

#include "visca_sony_ctrl/module_type.h"

namespace viscacam {

constexpr uint32_t VERSION_TEXT_MAX = 99; // characters; a caller's buffer holds one more

// The stamp in front of the program version: 14 characters.
constexpr const char *VersionStamp(uint32_t ulCamModType) {
    return IsKovaGen2(ulCamModType) ? "QDMV200R001B02" : "QDMV100R001B01";
}
constexpr uint32_t VERSION_STAMP_LENGTH = 14;
static_assert(sizeof("QDMV200R001B02") - 1 == VERSION_STAMP_LENGTH &&
              sizeof("QDMV100R001B01") - 1 == VERSION_STAMP_LENGTH);

} // namespace viscacam

#endif
