#include "visca_sony_ctrl/image/settings_cache.h"

#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "viscacam.h"

using namespace viscacam;

ImageSettingsCache viscacam::g_stImageCache;

void SonyInitVar4IMG(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");

    constexpr uint32_t ulUnknown = 0xFFFFFFFF;
    static constexpr uint32_t *apulUnknown[] = {
        &g_stImageCache.ulExposureMode,
        &g_stImageCache.ulIris,
        &g_stImageCache.ulShutter,
        &g_stImageCache.ulGain,
        &g_stImageCache.ulSlowShutter,
        &g_stImageCache.ulFastShutter,
        &g_stImageCache.ulMaxGain,
        &g_stImageCache.ulMinGain,
        &g_stImageCache.bIsAutoSlowShutter,
        &g_stImageCache.ulMaxSlowShutter,
        &g_stImageCache.ulWdr,
        &g_stImageCache.ulWdrLevel,
        &g_stImageCache.ulMeteringMode,
        &g_stImageCache.ulBlackWhiteMode,
        &g_stImageCache.ulBrightness,
        &g_stImageCache.ulContrast,
        &g_stImageCache.ulSaturation,
        &g_stImageCache.ulSharpness,
        &g_stImageCache.ulDenoise2D,
        &g_stImageCache.ulDenoise3D,
    };
    for (uint32_t *pulWord : apulUnknown) {
        WordSet(*pulWord, ulUnknown);
    }
    WordSet(g_stImageCache.lExpCompValue, -1);
    WordSet(g_stImageCache.sBOffset, -1);
    WordSet(g_stImageCache.sROffset, -1);
    WordSet(g_stImageCache.enAWBMode,
            15); // no white-balance mode has this number, so the first request is sent

    WordSet(g_stImageCache.bExposureModeChanged, 0);
    WordSet(g_stImageCache.bBlackWhiteChanged, 0);
    // The other changed words stay: the values that they govern are unknown now and go out anyway. The hold
    // stays, since the detection that raised it still owns its settings.
}

uint32_t SonyInitCamIMG(uint32_t) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    SonyInitVar4IMG();
    return VISCA_SUCCESS;
}
