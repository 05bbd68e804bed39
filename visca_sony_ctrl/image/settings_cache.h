// What was last handed to the camera, one word for each image parameter, so that a profile that the host
// applies again costs nothing on the slow line.
//
// The primitives of image/ write it, each only after its last packet was queued; start-up and the restore
// after a power cycle empty it. The calls that reach it are not meant to run side by side; single words are
// nevertheless accessed whole (shared_word.h), as a host's report callback may re-apply a profile on the
// receiver thread.
#ifndef VISCACAM_VISCA_SONY_CTRL_IMAGE_SETTINGS_CACHE_H
#define VISCACAM_VISCA_SONY_CTRL_IMAGE_SETTINGS_CACHE_H

#include <stdint.h>

#include "viscacam.h"

namespace viscacam {

// A value of -1 means unknown: the next request is sent. A request for -1 itself right after start-up counts
// as unchanged, deliberately.
struct ImageSettingsCache {
    uint32_t ulExposureMode;
    int32_t lExpCompValue;
    uint32_t ulIris;
    uint32_t ulShutter;
    uint32_t ulGain;
    uint32_t ulSlowShutter; // the smaller bound of the shutter range
    uint32_t ulFastShutter; // the larger one
    uint32_t ulMaxGain;
    uint32_t ulMinGain;
    uint32_t bIsAutoSlowShutter;
    uint32_t ulMaxSlowShutter;
    uint32_t ulWdr;
    uint32_t ulWdrLevel; // as clamped
    uint32_t ulMeteringMode;
    uint32_t ulBlackWhiteMode;
    int32_t sBOffset; // as clamped
    int32_t sROffset; // as clamped
    uint32_t ulBrightness;
    uint32_t ulContrast;
    uint32_t ulSaturation;
    uint32_t ulSharpness;
    uint32_t ulDenoise2D;
    uint32_t ulDenoise3D; // as clamped
    int32_t enAWBMode;

    // Changed words: 1 after the governing setting went out, 0 once it was asked for unchanged. While 1, the
    // settings that depend on it are sent even when they are unchanged, as the camera forgets them with the
    // change.
    uint32_t bExposureModeChanged;    // governs shutter, gain, iris and the two ranges
    uint32_t bWdrChanged;             // governs the WDR level
    uint32_t bAutoSlowShutterChanged; // governs the slow-shutter limit
    uint32_t bBlackWhiteChanged;      // governs the Kova module's contrast

    uint32_t bDetectImgHold; // 1 while the Kova module's detection phase owns day/night and white balance

    ExposureParam
        stExposureCfg; // the exposure profile that the host offered last, refused or not; never reset
};

extern ImageSettingsCache g_stImageCache;

} // namespace viscacam

#endif
