// Brightness, contrast, saturation, sharpness and noise reduction.
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t PICTURE_MAX = 255;

constexpr uint32_t Limited(uint32_t ulValue) {
    return ulValue < PICTURE_MAX ? ulValue : PICTURE_MAX;
}

// Colour gain of Sony blocks, not yet limited to 14: 32 a step up to 128, then about 12.7 a step: 128 gives
// 4, 255 gives 14.
constexpr uint32_t ColourGain(uint32_t ulSaturation) {
    return ulSaturation <= 128U ? ulSaturation / 32U : ((10U * ulSaturation - 1280U) / 127U + 4U) & 0xFFU;
}
static_assert(ColourGain(128) == 4 && ColourGain(255) == 14 && ColourGain(268) == 15);
constexpr uint32_t COLOUR_GAIN_MAX = 14;

// Aperture, 16 a step: 239 gives 14, everything above 15. The value's low 12 bits count.
constexpr uint8_t ApertureCode(uint32_t ulSharpness) {
    const uint32_t ulCode = (ulSharpness & 0xFFFU) >> 4U;
    return static_cast<uint8_t>(ulCode > 14U ? 15U : ulCode);
}
static_assert(ApertureCode(239) == 14 && ApertureCode(240) == 15 && ApertureCode(65536) == 0);

// Noise reduction level of Sony blocks: 0 off, 1 to 51 give 1, 205 to 255 give 5.
constexpr uint8_t NoiseReductionLevel(uint32_t ulDenoise3D) {
    return static_cast<uint8_t>(ulDenoise3D == 0 ? 0 : (ulDenoise3D - 1U) / 51U + 1U);
}
static_assert(NoiseReductionLevel(51) == 1 && NoiseReductionLevel(255) == 5);

bool IsKovaNow() {
    return IsKova(COMDRV_GetCamModuleType());
}

// 01 04 cc 00 00 0p 0q, the form of most picture controls.
uint32_t SendControl(uint8_t ucControl, uint32_t ulCode, const LogPlace &rCaller) {
    return SendSetting({0x01, 0x04, ucControl, 0x00, 0x00, Nibble(ulCode, 1), Nibble(ulCode, 0)}, rCaller);
}

} // namespace

uint32_t SonySetVideoBrightness(uint32_t ulChannelID, uint32_t ulBrightness) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulBrightness[%lu]\n", UL(ulChannelID), UL(ulBrightness));
    if (!IsKovaNow() || ulBrightness == WordGet(g_stImageCache.ulBrightness)) {
        return VISCA_SUCCESS;
    }
    if (ulBrightness > PICTURE_MAX) {
        LOG_WARN("---ulBrightness[%lu] out of 0 ~ 255!---\n", UL(ulBrightness));
    }
    if (SendControl(0xA1, Limited(ulBrightness), LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulBrightness, ulBrightness);
    return VISCA_SUCCESS;
}

uint32_t SonySetVideoContrast(uint32_t ulChannelID, uint32_t ulContrast) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulContrast[%lu]\n", UL(ulChannelID), UL(ulContrast));
    if (!IsKovaNow()) {
        return VISCA_SUCCESS;
    }
    if (ulContrast == WordGet(g_stImageCache.ulContrast) && WordGet(g_stImageCache.bBlackWhiteChanged) == 0) {
        return VISCA_SUCCESS;
    }
    if (ulContrast > PICTURE_MAX) {
        LOG_WARN("---ulContrast[%lu] out of 0 ~ 255!---\n", UL(ulContrast));
    }
    if (SendControl(0xA2, Limited(ulContrast), LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulContrast, ulContrast);
    return VISCA_SUCCESS;
}

uint32_t SonySetVideoSaturation(uint32_t ulChannelID, uint32_t ulSaturation) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulSaturation[%lu]\n", UL(ulChannelID), UL(ulSaturation));
    const bool bKova = IsKovaNow();
    if (ulSaturation == WordGet(g_stImageCache.ulSaturation)) {
        return VISCA_SUCCESS;
    }
    uint32_t ulCode = ulSaturation; // Kova: the low byte as it is, not limited, deliberately
    if (!bKova) {
        ulCode = ColourGain(ulSaturation);
        if (ulCode > COLOUR_GAIN_MAX) {
            ulCode = COLOUR_GAIN_MAX;
            LOG_WARN("---ulSaturation[%lu] out of 0 ~ 255!---\n", UL(ulSaturation));
        }
    }
    if (SendControl(0x49, ulCode, LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulSaturation, ulSaturation);
    return VISCA_SUCCESS;
}

uint32_t SonySetVideoSharpness(uint32_t ulChannelID, uint32_t ulSharpness) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulSharpness[%lu]\n", UL(ulChannelID), UL(ulSharpness));
    if (ulSharpness == WordGet(g_stImageCache.ulSharpness)) {
        return VISCA_SUCCESS;
    }
    if (ulSharpness > PICTURE_MAX) {
        LOG_WARN("---ulSharpness[%lu] out of 0 ~ 255!---\n", UL(ulSharpness)); // and send what comes out
    }
    if (SendControl(0x42, ApertureCode(ulSharpness), LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulSharpness, ulSharpness);
    return VISCA_SUCCESS;
}

uint32_t SonySetDenoise2D(uint32_t ulChannelID, uint32_t ulDenoise2D) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulDenoise2D[%lu]\n", UL(ulChannelID), UL(ulDenoise2D));
    if (!IsKovaNow() || ulDenoise2D == WordGet(g_stImageCache.ulDenoise2D)) {
        return VISCA_SUCCESS;
    }
    if (ulDenoise2D > PICTURE_MAX) {
        LOG_WARN("---ulDenoise2D[%lu] out of 0 ~ 255!---\n", UL(ulDenoise2D));
    }
    if (SendControl(0x54, Limited(ulDenoise2D), LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulDenoise2D, ulDenoise2D);
    return VISCA_SUCCESS;
}

uint32_t SonySetDenoise3D(uint32_t ulChannelID, uint32_t ulDenoise3D) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulDenoise3D[%lu]\n", UL(ulChannelID), UL(ulDenoise3D));
    const bool bKova = IsKovaNow();
    if (ulDenoise3D > PICTURE_MAX) {
        LOG_WARN("ulDenoise3D[%lu] out of 0 ~ 255\n", UL(ulDenoise3D));
        ulDenoise3D = PICTURE_MAX; // the limited value is compared and remembered, unlike the other controls
    }
    if (ulDenoise3D == WordGet(g_stImageCache.ulDenoise3D)) {
        return VISCA_SUCCESS;
    }
    const uint32_t ulRet = bKova
                               ? SendControl(0x55, ulDenoise3D, LOG_HERE)
                               : SendSetting({0x01, 0x04, 0x53, NoiseReductionLevel(ulDenoise3D)}, LOG_HERE);
    if (ulRet != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulDenoise3D, ulDenoise3D);
    return VISCA_SUCCESS;
}
