// Shutter, gain and iris, and the ranges of the automatic modes.
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/exposure_tables.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t GAIN_MAX_KOVA = 100; // a percentage
constexpr uint32_t GAIN_MAX_SONY = 29;  // dB

// Gain position of Sony blocks, 2 dB a step: 0 and 1 dB give 1, 28 and 29 dB give 15.
constexpr uint32_t GainCodeSony(uint32_t ulDecibel) {
    return ulDecibel / 2U + 1U;
}
static_assert(GainCodeSony(0) == 1 && GainCodeSony(29) == 15);

// A changed exposure mode makes the camera forget what depends on it, so an unchanged value is sent again.
bool IsUnchanged(const uint32_t &rulCached, uint32_t ulValue) {
    return ulValue == WordGet(rulCached) && WordGet(g_stImageCache.bExposureModeChanged) == 0;
}

} // namespace

uint32_t SonyImgSetShutter(uint32_t ulChannelID, uint32_t ulShutter) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulShutter[%lu]\n", UL(ulChannelID), UL(ulShutter));
    const bool bKova = IsKova(COMDRV_GetCamModuleType());
    if (IsUnchanged(g_stImageCache.ulShutter, ulShutter)) {
        return VISCA_SUCCESS;
    }
    uint32_t ulRet = VISCA_FAILURE;
    if (bKova) {
        ulRet = SendSetting({0x01, 0x04, 0xCB, Nibble(ulShutter, 3), Nibble(ulShutter, 2),
                             Nibble(ulShutter, 1), Nibble(ulShutter, 0)},
                            LOG_HERE);
    } else {
        uint8_t ucCode = 0;
        if (!FindCode(SHUTTERS_SONY, ulShutter, &ucCode)) {
            LOG_ERROR("shutter[%lu] not supported, fail exit\n", UL(ulShutter));
            return VISCA_SUCCESS;
        }
        ulRet = SendSetting({0x01, 0x04, 0x4A, 0x00, 0x00, Nibble(ucCode, 1), Nibble(ucCode, 0)}, LOG_HERE);
    }
    if (ulRet != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulShutter, ulShutter);
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetGain(uint32_t ulChannelID, uint32_t ulGain) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulGain[%lu]\n", UL(ulChannelID), UL(ulGain));
    if (IsUnchanged(g_stImageCache.ulGain, ulGain)) {
        return VISCA_SUCCESS;
    }
    uint32_t ulCode = ulGain;
    if (IsKova(COMDRV_GetCamModuleType())) {
        if (ulGain > GAIN_MAX_KOVA) {
            LOG_WARN("ulGain[%lu] too large, limit to 100\n", UL(ulGain));
            ulCode = GAIN_MAX_KOVA;
        }
    } else {
        if (ulGain > GAIN_MAX_SONY) {
            LOG_ERROR("ulGain[%lu] invalid, fail exit\n", UL(ulGain));
            return VISCA_SUCCESS;
        }
        ulCode = GainCodeSony(ulGain);
    }
    if (SendSetting({0x01, 0x04, 0x4C, 0x00, 0x00, Nibble(ulCode, 1), Nibble(ulCode, 0)}, LOG_HERE) !=
        VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulGain, ulGain); // as it was asked for, not as it was limited
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetIris(uint32_t ulChannelID, uint32_t ulIris) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulIris[%lu]\n", UL(ulChannelID), UL(ulIris));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    if (IsUnchanged(g_stImageCache.ulIris, ulIris)) {
        return VISCA_SUCCESS;
    }
    uint8_t ucCode = 0;
    const bool bFound = ulCamModType == MODULE_SONY_4 ? FindCode(IRISES_SONY_4, ulIris, &ucCode)
                                                      : FindCode(IRISES_OTHERS, ulIris, &ucCode);
    if (!bFound) {
        LOG_ERROR("ulIris[%lu] invalid, fail exit\n", UL(ulIris));
        return VISCA_SUCCESS;
    }
    if (QueueCommand({0x01, 0x04, 0x4B, 0x00, 0x00, Nibble(ucCode, 1), Nibble(ucCode, 0)}) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaQueueCmdCushion() fail exit\n"); // the iris has a wording of its own
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulIris, ulIris);
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetShutterScope(uint32_t ulChannelID, uint32_t ulSlowShutter, uint32_t ulFastShutter) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulSlowShutter[%lu] ulFastShutter[%lu]\n", UL(ulChannelID),
              UL(ulSlowShutter), UL(ulFastShutter));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    const uint32_t ulLow = ulSlowShutter < ulFastShutter ? ulSlowShutter : ulFastShutter;
    const uint32_t ulHigh = ulSlowShutter < ulFastShutter ? ulFastShutter : ulSlowShutter;
    if (IsUnchanged(g_stImageCache.ulSlowShutter, ulLow) &&
        IsUnchanged(g_stImageCache.ulFastShutter, ulHigh)) {
        return VISCA_SUCCESS;
    }
    if (SendSetting({0x01, 0x04, 0xA3, Nibble(ulLow, 3), Nibble(ulLow, 2), Nibble(ulLow, 1), Nibble(ulLow, 0),
                     Nibble(ulHigh, 3), Nibble(ulHigh, 2), Nibble(ulHigh, 1), Nibble(ulHigh, 0)},
                    LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulSlowShutter, ulLow);
    WordSet(g_stImageCache.ulFastShutter, ulHigh);
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetGainScope(uint32_t ulChannelID, uint32_t ulMinGain, uint32_t ulMaxGain) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulMinGain[%lu] ulMaxGain[%lu]\n", UL(ulChannelID),
              UL(ulMinGain), UL(ulMaxGain));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    if (IsUnchanged(g_stImageCache.ulMinGain, ulMinGain) &&
        IsUnchanged(g_stImageCache.ulMaxGain, ulMaxGain)) {
        return VISCA_SUCCESS;
    }
    if (SendSetting({0x01, 0x04, 0x2C, Nibble(ulMinGain, 1), Nibble(ulMinGain, 0), Nibble(ulMaxGain, 1),
                     Nibble(ulMaxGain, 0)},
                    LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulMinGain, ulMinGain);
    WordSet(g_stImageCache.ulMaxGain, ulMaxGain);
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetAutoSlowShutter(uint32_t ulChannelID, uint32_t bIsAutoSlowShutter) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] bIsAutoSlowShutter[%lu]\n", UL(ulChannelID),
              UL(bIsAutoSlowShutter));
    if (bIsAutoSlowShutter == WordGet(g_stImageCache.bIsAutoSlowShutter)) {
        WordSet(g_stImageCache.bAutoSlowShutterChanged, 0);
        return VISCA_SUCCESS;
    }
    if (bIsAutoSlowShutter > 1) {
        LOG_WARN("bIsAutoSlowShutter[%lu] invalid, fail exit\n", UL(bIsAutoSlowShutter));
        return VISCA_FAILURE; // a failure here, unlike the values that are out of a table
    }
    const uint8_t ucSwitch = bIsAutoSlowShutter == 1 ? 0x02 : 0x03;
    if (SendSetting({0x01, 0x04, 0x5A, ucSwitch}, LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.bAutoSlowShutterChanged, 1);
    WordSet(g_stImageCache.bIsAutoSlowShutter, bIsAutoSlowShutter);
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetAutoSlowShutterLimit(uint32_t ulChannelID, uint32_t ulMaxSlowShutter) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulMaxSlowShutter[%lu]\n", UL(ulChannelID),
              UL(ulMaxSlowShutter));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    if (ulMaxSlowShutter == WordGet(g_stImageCache.ulMaxSlowShutter) &&
        WordGet(g_stImageCache.bAutoSlowShutterChanged) == 0) {
        return VISCA_SUCCESS;
    }
    if (SendSetting({0x01, 0x04, 0xCA, 0x00, 0x00, Nibble(ulMaxSlowShutter, 1), Nibble(ulMaxSlowShutter, 0)},
                    LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulMaxSlowShutter, ulMaxSlowShutter);
    return VISCA_SUCCESS;
}

// No entry line, deliberately.
uint32_t SonyGetCurrentGain(uint32_t, uint32_t *pulGain) {
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x4C}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    if (pulGain != nullptr) {
        const uint32_t ulPosition = ReplyWord(&stReply, 2);
        *pulGain = ulPosition == 0 ? 0 : (ulPosition - 1) * 2000; // position 1 is 0 dB, 5 is 8 dB
    }
    return VISCA_SUCCESS;
}
