// Day and night: the infrared-cut filter and the picture without colour.
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/modes.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

bool SendAutoIcr(bool bOn) {
    const uint8_t ucSwitch = bOn ? 0x02 : 0x03;
    return QueueCommand({0x01, 0x04, 0x51, ucSwitch}) == VISCA_SUCCESS;
}

// ICR on takes the infrared-cut filter away: black-and-white.
bool SendIcr(bool bOn) {
    const uint8_t ucSwitch = bOn ? 0x02 : 0x03;
    return QueueCommand({0x01, 0x04, 0x01, ucSwitch}) == VISCA_SUCCESS;
}

} // namespace

uint32_t SonySetBlackWhiteMode(uint32_t ulChannelID, uint32_t ulBlackWhiteMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulBlackWhiteMode[%lu]\n", UL(ulChannelID),
              UL(ulBlackWhiteMode));
    if (WordGet(g_stImageCache.bDetectImgHold) == 1) {
        WordSet(gstImgDetectParam.lBlackWhiteMode, static_cast<int32_t>(ulBlackWhiteMode));
        return VISCA_SUCCESS;
    }
    if (ulBlackWhiteMode == WordGet(g_stImageCache.ulBlackWhiteMode)) {
        WordSet(g_stImageCache.bBlackWhiteChanged, 0);
        return VISCA_SUCCESS;
    }
    if (ulBlackWhiteMode > DAY_NIGHT_BLACK_WHITE) {
        LOG_ERROR("ulBlackWhiteMode[%lu] invalid, fail exit\n", UL(ulBlackWhiteMode));
        return VISCA_SUCCESS;
    }
    const bool bAuto = ulBlackWhiteMode == DAY_NIGHT_AUTO;
    // The camera's own decision goes off first, or it would undo ours.
    if (!bAuto && !SendAutoIcr(false)) {
        LOG_ERROR("Switch to Auto ICR OFF fail exit\n");
        return VISCA_FAILURE;
    }
    if (!(bAuto ? SendAutoIcr(true) : SendIcr(ulBlackWhiteMode != DAY_NIGHT_COLOUR))) {
        LOG_ERROR("ViscaEnQueueCmd() fail exit\n");
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.bBlackWhiteChanged, 1);
    WordSet(g_stImageCache.ulBlackWhiteMode, ulBlackWhiteMode);
    return VISCA_SUCCESS;
}
