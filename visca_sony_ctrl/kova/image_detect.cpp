// The Kova module's image detection after a change of the video norm. While it runs, day/night mode and white
// balance belong to it: what the host asks for is held back in gstImgDetectParam and applied when it ends. It
// runs once in a process.
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_que/wait.h"
#include "visca_sony_ctrl/image/modes.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

ImgDetectParam gstImgDetectParam = {};

namespace {

constexpr uint32_t CALLER_WITHOUT_DETECTION = 2;
constexpr int32_t NOTHING_PENDING = -1;
constexpr int16_t RED_OFFSET = -127;
constexpr int16_t BLUE_OFFSET = 127;

uint32_t g_bFirstTime = 1;

void SetDayNight(uint32_t ulMode, const char *pcCaller) {
    if (SonySetBlackWhiteMode(0, ulMode) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonySetBlackWhiteMode(0, %d) fail exit\n", static_cast<int>(ulMode));
    }
}

} // namespace

void KovaSetDetectImgParam(uint32_t ulCamModType) {
    if (!IsKova(ulCamModType) || __atomic_exchange_n(&g_bFirstTime, 0, __ATOMIC_RELAXED) != 1) {
        return;
    }
    if (COMDRV_GetCaller() == CALLER_WITHOUT_DETECTION) {
        return;
    }
    // A step that fails is logged, and the next one follows: a detection that starts from a wrong setting is
    // better than none.
    SleepMs(1000);
    SetDayNight(DAY_NIGHT_COLOUR, __func__);
    WordSet(gstImgDetectParam.lBlackWhiteMode, NOTHING_PENDING);
    WordSet(gstImgDetectParam.lWbMode, NOTHING_PENDING);
    WordSet(g_stImageCache.bDetectImgHold, 1);
    if (SonySetVideoWBMode(0, WB_MANUAL) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetVideoWBMode(0, %d) fail exit\n", WB_MANUAL);
    }
    SleepMs(500);
    if (SonySetManualWB(0, RED_OFFSET, BLUE_OFFSET) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetManualWB(0, %d, %d) fail exit\n", RED_OFFSET, BLUE_OFFSET);
    }
    SleepMs(1500);
}

uint32_t KOVA_ResumeDetectImgParam(void) {
    if (COMDRV_GetCaller() == CALLER_WITHOUT_DETECTION || WordGet(g_stImageCache.bDetectImgHold) != 1) {
        return VISCA_SUCCESS;
    }
    WordSet(g_stImageCache.bDetectImgHold, 0);
    SetDayNight(DAY_NIGHT_BLACK_WHITE, __func__);
    SleepMs(500);
    const int32_t lPendingMode = WordGet(gstImgDetectParam.lBlackWhiteMode);
    if (lPendingMode != NOTHING_PENDING &&
        SonySetBlackWhiteMode(0, static_cast<uint32_t>(lPendingMode)) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetBlackWhiteMode failed\n");
    }
    const int32_t lPendingWb = WordGet(gstImgDetectParam.lWbMode);
    if (lPendingWb != NOTHING_PENDING) {
        const WhiteBalanceParam stWb = {static_cast<uint32_t>(lPendingWb),
                                        WordGet(gstImgDetectParam.lBlueOffset),
                                        WordGet(gstImgDetectParam.lRedOffset)};
        if (SONY_SetWhiteBalance(0, 0, &stWb) != VISCA_SUCCESS) {
            LOG_ERROR("SONY_SetWhiteBalance failed\n");
        }
    }
    return VISCA_SUCCESS;
}
