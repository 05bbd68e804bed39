// Wide dynamic range.
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t WDR_MODES = 3;
constexpr uint32_t WDR_LEVEL_MAX = 9;

// Command 01 04 3D ww: host mode off, on, automatic.
constexpr uint8_t WDR_KOVA[WDR_MODES] = {0x03, 0x01, 0x00};
constexpr uint8_t WDR_SONY_5[WDR_MODES] = {0x03, 0x06, 0x00};
constexpr uint8_t WDR_SONY[WDR_MODES] = {0x03, 0x02, 0x00};

uint8_t WdrCode(uint32_t ulCamModType, uint32_t ulWdr) {
    if (IsKova(ulCamModType)) {
        return WDR_KOVA[ulWdr];
    }
    return ulCamModType == MODULE_SONY_5 ? WDR_SONY_5[ulWdr] : WDR_SONY[ulWdr];
}

} // namespace

uint32_t SonyImgSetWDR(uint32_t ulChannelID, uint32_t ulWdr) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulWdr[%lu]\n", UL(ulChannelID), UL(ulWdr));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    if (ulWdr == WordGet(g_stImageCache.ulWdr)) {
        WordSet(g_stImageCache.bWdrChanged, 0);
        return VISCA_SUCCESS;
    }
    if (ulWdr >= WDR_MODES) {
        LOG_ERROR("ulWdr[%lu] invalid, fail exit\n", UL(ulWdr));
        return VISCA_SUCCESS;
    }
    if (QueueCommand({0x01, 0x04, 0x3D, WdrCode(ulCamModType, ulWdr)}) != VISCA_SUCCESS) {
        LOG_ERROR("Set wdr mode fail exit\n");
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.bWdrChanged, 1);
    WordSet(g_stImageCache.ulWdr, ulWdr);
    return VISCA_SUCCESS;
}

uint32_t SonyImgSetWDRLevel(uint32_t ulChannelID, uint32_t ulWdrLevel) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulWdrLevel[%lu]\n", UL(ulChannelID), UL(ulWdrLevel));
    const bool bKova = IsKova(COMDRV_GetCamModuleType());
    if (ulWdrLevel > WDR_LEVEL_MAX) {
        LOG_WARN("ulWdrLevel[%lu] too big, change to 9\n", UL(ulWdrLevel));
        ulWdrLevel = WDR_LEVEL_MAX;
    }
    if (ulWdrLevel == WordGet(g_stImageCache.ulWdrLevel) && WordGet(g_stImageCache.bWdrChanged) == 0) {
        return VISCA_SUCCESS;
    }
    if (!bKova) {
        return VISCA_SUCCESS;
    }
    if (QueueCommand({0x01, 0x04, 0x2D, 0x00, 0x00, 0x00, static_cast<uint8_t>(ulWdrLevel)}) !=
        VISCA_SUCCESS) {
        LOG_ERROR("Set wdr mode fail exit\n");
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.ulWdrLevel, ulWdrLevel);
    return VISCA_SUCCESS;
}
