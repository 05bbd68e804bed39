// Exposure mode, compensation and metering.
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/exposure_tables.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Position of the spot along one axis: two edges in hundredths of the picture to a code of 0 to 15.
// 50 + 50 gives 8, 100 + 100 gives 15; the low 8 bits are kept before the limit, so 3200 + 0 gives 0.
constexpr uint8_t SpotCode(uint32_t ulEdge1, uint32_t ulEdge2) {
    const uint32_t ulCode = (8U * (ulEdge1 + ulEdge2) / 100U) & 0xFFU;
    return static_cast<uint8_t>(ulCode < 15U ? ulCode : 15U);
}
static_assert(SpotCode(50, 50) == 8 && SpotCode(100, 100) == 15 && SpotCode(3200, 0) == 0);

// -100 gives 0, 0 gives 7 (neutral), 100 gives 14; each step covers 14 units. Not limited: -128 gives 0xFE.
constexpr uint32_t ExpCompCode(int32_t lExpCompValue) {
    const int32_t lShifted =
        static_cast<int32_t>(static_cast<uint32_t>(lExpCompValue) + 100U); // wraps at the ends
    return static_cast<uint32_t>(lShifted / 14);
}
static_assert(ExpCompCode(-100) == 0 && ExpCompCode(0) == 7 && ExpCompCode(100) == 14);

} // namespace

uint32_t SonySetExposureMode(uint32_t ulChannelID, uint32_t ulExposureMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulExposureMode[%lu]\n", UL(ulChannelID), UL(ulExposureMode));
    const bool bKova = IsKova(COMDRV_GetCamModuleType());
    if (ulExposureMode == WordGet(g_stImageCache.ulExposureMode)) {
        WordSet(g_stImageCache.bExposureModeChanged, 0);
        return VISCA_SUCCESS;
    }
    uint8_t ucMode = 0;
    const bool bFound = bKova ? FindCode(EXPOSURE_MODES_KOVA, ulExposureMode, &ucMode)
                              : FindCode(EXPOSURE_MODES_SONY, ulExposureMode, &ucMode);
    if (!bFound) {
        LOG_ERROR("unSupported ulExposureMode[%lu], fail exit\n", UL(ulExposureMode));
        return VISCA_SUCCESS; // deliberately: a profile with a mode that the block lacks still applies the
                              // rest
    }
    if (SendSetting({0x01, 0x04, 0x39, ucMode}, LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.bExposureModeChanged, 1);
    WordSet(g_stImageCache.ulExposureMode, ulExposureMode);
    return VISCA_SUCCESS;
}

uint32_t SonySetExpComp(uint32_t ulChannelID, int32_t lExpCompValue) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] lExpCompValue[%ld]\n", UL(ulChannelID), SL(lExpCompValue));
    if (lExpCompValue == WordGet(g_stImageCache.lExpCompValue)) {
        return VISCA_SUCCESS;
    }
    (void)QueueCommand({0x01, 0x04, 0x3E, 0x02}); // compensation on; the value alone decides, deliberately
    const uint32_t ulCode = ExpCompCode(lExpCompValue);
    if (SendSetting({0x01, 0x04, 0x4E, 0x00, 0x00, Nibble(ulCode, 1), Nibble(ulCode, 0)}, LOG_HERE) !=
        VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.lExpCompValue, lExpCompValue);
    return VISCA_SUCCESS;
}

uint32_t SonySetAEMetering(uint32_t ulChannelID, uint32_t ulMeteringMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulMeteringMode[%lu]\n", UL(ulChannelID), UL(ulMeteringMode));
    const bool bKova = IsKova(COMDRV_GetCamModuleType());
    if (ulMeteringMode == WordGet(g_stImageCache.ulMeteringMode)) {
        return VISCA_SUCCESS;
    }
    uint8_t ucMode = 0;
    if (bKova && !FindCode(METERINGS_KOVA, ulMeteringMode, &ucMode)) {
        LOG_ERROR("Do not support Mode(%lu)\n", UL(ulMeteringMode));
        return VISCA_SUCCESS;
    }
    if (!bKova && !FindCode(METERINGS_SONY, ulMeteringMode, &ucMode)) {
        LOG_ERROR("Do not support mode(%lu)\n", UL(ulMeteringMode)); // a small m here, deliberately
        return VISCA_SUCCESS;
    }
    if (SendSetting({0x01, 0x04, 0x59, ucMode}, LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulMeteringMode, ulMeteringMode);
    return VISCA_SUCCESS;
}

uint32_t SonySetSpotAEPos(uint32_t ulChannelID, const uint32_t *pulPos) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] pulPos[%p]\n", UL(ulChannelID),
              static_cast<const void *>(pulPos));
    const uint8_t ucX = SpotCode(pulPos[0], pulPos[2]); // TopX, BotX
    const uint8_t ucY = SpotCode(pulPos[1], pulPos[3]); // TopY, BotY
    return SendSetting({0x01, 0x04, 0x29, 0x00, ucX, 0x00, ucY}, LOG_HERE);
}
