// Camera module types: the codes that the host supplies, and the families that behaviour depends on.
#ifndef VISCACAM_VISCA_SONY_CTRL_MODULE_TYPE_H
#define VISCACAM_VISCA_SONY_CTRL_MODULE_TYPE_H

#include <stdint.h>

namespace viscacam {

constexpr uint32_t MODULE_UNSET = 0xFFFFFFFF;
constexpr uint32_t MODULE_SONY_1 = 0x02000001;
constexpr uint32_t MODULE_SONY_3 = 0x02000003;
constexpr uint32_t MODULE_SONY_4 = 0x02000004;
constexpr uint32_t MODULE_SONY_5 = 0x02000005;

// Everything that this driver steers, Kova modules included.
constexpr bool IsSonyFamily(uint32_t ulCamModType) {
    return (ulCamModType & 0xFF000000U) == 0x02000000U;
}

// Sony's own blocks, known and unknown ones.
constexpr bool IsSonyBlock(uint32_t ulCamModType) {
    return (ulCamModType & 0xFFFFF000U) == 0x02000000U;
}

// The four Sony blocks that we have settings for.
constexpr bool IsKnownSonyBlock(uint32_t ulCamModType) {
    return ulCamModType == MODULE_SONY_1 || ulCamModType == MODULE_SONY_3 || ulCamModType == MODULE_SONY_4 ||
           ulCamModType == MODULE_SONY_5;
}

// The maker's own modules.
constexpr bool IsKova(uint32_t ulCamModType) {
    return (ulCamModType & 0xFFFFF000U) == 0x02012000U;
}

constexpr bool IsKovaGen2(uint32_t ulCamModType) {
    return (ulCamModType & 0xFFFFFF00U) == 0x02012A00U;
}

} // namespace viscacam

#endif
