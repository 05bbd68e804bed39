// Exposure profile: the host's record, applied parameter by parameter in a fixed order, up to the first
// command that is refused. What was queued before that stays queued.
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t CHANNEL = 0; // there is one picture

enum ExposureMode : uint32_t {
    EXPOSURE_IN_RANGES = 1,
    EXPOSURE_SHUTTER_PRIORITY = 2,
    EXPOSURE_IRIS_PRIORITY = 3,
    EXPOSURE_FIXED_GAIN = 4,
    EXPOSURE_MANUAL = 7,
};

// The steps of an exposure profile. Each is true when its commands were queued, and says what failed under
// the profile's name.
constexpr char SET_EXPOSURE[] = "SONY_SetExposure";

bool ApplySlowShutter(const ExposureParam &rExposure) {
    const bool bForcedOff =
        rExposure.ulExposureMode == EXPOSURE_IRIS_PRIORITY || rExposure.ulExposureMode == EXPOSURE_FIXED_GAIN;
    const uint32_t bAuto = bForcedOff ? 0 : rExposure.bIsAutoSlowShutter;
    if (SonyImgSetAutoSlowShutter(CHANNEL, bAuto) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetAutoSlowShutter(0, %lu) fail exit\n", UL(bAuto));
        return false;
    }
    if (bAuto == 1 && SonyImgSetAutoSlowShutterLimit(CHANNEL, rExposure.ulMaxSlowShutter) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetAutoSlowShutterLimit(0, %lu) fail exit\n",
                     UL(rExposure.ulMaxSlowShutter));
        return false;
    }
    return true;
}

// Before what depends on it: a change makes the camera forget shutter, iris, gain and the ranges, which are
// then sent again.
bool ApplyMode(const ExposureParam &rExposure) {
    if (SonySetExposureMode(CHANNEL, rExposure.ulExposureMode) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonySetExposureMode(0, %lu) fail exit\n", UL(rExposure.ulExposureMode));
        return false;
    }
    return true;
}

bool ApplyRanges(const ExposureParam &rExposure) {
    if (rExposure.ulExposureMode != EXPOSURE_IN_RANGES) {
        return true;
    }
    if (SonyImgSetGainScope(CHANNEL, rExposure.ulMinGain, rExposure.ulMaxGain) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetGainScope(0, %lu, %lu) fail exit\n", UL(rExposure.ulMinGain),
                     UL(rExposure.ulMaxGain));
        return false;
    }
    if (SonyImgSetShutterScope(CHANNEL, rExposure.ulSlowShutter, rExposure.ulFastShutter) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetShutterScope(0, %lu, %lu) fail exit\n",
                     UL(rExposure.ulSlowShutter), UL(rExposure.ulFastShutter));
        return false;
    }
    return true;
}

bool ApplyFixedValues(const ExposureParam &rExposure) {
    const uint32_t ulMode = rExposure.ulExposureMode;
    const bool bManual = ulMode == EXPOSURE_MANUAL;
    if ((bManual || ulMode == EXPOSURE_SHUTTER_PRIORITY) &&
        SonyImgSetShutter(CHANNEL, rExposure.ulShutter) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetShutter(0, %lu) fail exit\n", UL(rExposure.ulShutter));
        return false;
    }
    if ((bManual || ulMode == EXPOSURE_IRIS_PRIORITY) &&
        SonyImgSetIris(CHANNEL, rExposure.ulIris) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetIris(0, %lu) fail exit\n", UL(rExposure.ulIris));
        return false;
    }
    if ((bManual || ulMode == EXPOSURE_FIXED_GAIN) &&
        SonyImgSetGain(CHANNEL, rExposure.ulGain) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetGain(0, %lu) fail exit\n", UL(rExposure.ulGain));
        return false;
    }
    return true;
}

bool ApplyExpComp(const ExposureParam &rExposure) {
    if (rExposure.ulExposureMode == EXPOSURE_MANUAL) {
        return true;
    }
    if (SonySetExpComp(CHANNEL, rExposure.lExpCompValue) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonySetExpComp(0, %ld) fail exit\n", SL(rExposure.lExpCompValue));
        return false;
    }
    return true;
}

bool ApplyWdr(const ExposureParam &rExposure) {
    if (SonyImgSetWDR(CHANNEL, rExposure.ulWdr) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetWDR(0, %lu) fail exit\n", UL(rExposure.ulWdr));
        return false;
    }
    if (rExposure.ulWdr == 1 && SonyImgSetWDRLevel(CHANNEL, rExposure.ulWdrLevel) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonyImgSetWDRLevel(0, %lu) fail exit\n", UL(rExposure.ulWdrLevel));
        return false;
    }
    return true;
}

bool ApplyMetering(const ExposureParam &rExposure) {
    if (rExposure.ulExposureMode == EXPOSURE_MANUAL) {
        return true;
    }
    if (SonySetAEMetering(CHANNEL, rExposure.ulMeteringMode) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonySetAEMetering(0, %lu) fail exit\n", UL(rExposure.ulMeteringMode));
        return false;
    }
    const uint32_t aulSpot[] = {rExposure.TopX, rExposure.TopY, rExposure.BotX, rExposure.BotY};
    if (rExposure.ulMeteringMode == 1 && SonySetSpotAEPos(CHANNEL, aulSpot) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonySetSpotAEPos fail exit. \n");
        return false;
    }
    return true;
}

// A Kova module gets its day/night mode from SONY_SetBlackWhiteMode alone.
bool ApplyBlackWhite(const ExposureParam &rExposure, uint32_t ulCamModType) {
    if (!IsSonyBlock(ulCamModType) || rExposure.ulBlackWhiteMode == 0) {
        return true;
    }
    if (SonySetBlackWhiteMode(CHANNEL, rExposure.ulBlackWhiteMode) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_EXPOSURE, "SonySetBlackWhiteMode fail exit. \n");
        return false;
    }
    return true;
}

} // namespace

uint32_t SONY_SetExposure(uint32_t ulChannelID, uint32_t ulImageType, const ExposureParam *pstExposure) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulImageType[%lu] pstExposure[%p]\n", UL(ulChannelID),
              UL(ulImageType), static_cast<const void *>(pstExposure));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    g_stImageCache.stExposureCfg = *pstExposure; // also a record that is refused
    if (ulImageType != 0) {
        LOG_ERROR("ulImageType[%lu] invalid, fail exit\n", UL(ulImageType));
        return VISCA_FAILURE;
    }
    if (IsKovaGen2(ulCamModType)) {
        KovaSetDomeTypeToCam();
    }
    const ExposureParam &rExposure = *pstExposure;
    const bool bApplied = ApplySlowShutter(rExposure) && ApplyMode(rExposure) && ApplyRanges(rExposure) &&
                          ApplyFixedValues(rExposure) && ApplyExpComp(rExposure) && ApplyWdr(rExposure) &&
                          ApplyMetering(rExposure) && ApplyBlackWhite(rExposure, ulCamModType);
    return bApplied ? VISCA_SUCCESS : VISCA_FAILURE;
}

uint32_t SONY_GetExposure(uint32_t ulChannelID, uint32_t ulImageType, ExposureParam *pstExposure) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulImageType[%lu] pstExposure[%p]\n", UL(ulChannelID),
              UL(ulImageType), static_cast<void *>(pstExposure));
    if (ulImageType != 0) {
        LOG_ERROR("ulImageType[%lu] invalid, fail exit\n", UL(ulImageType));
        return VISCA_FAILURE;
    }
    if (SonyGetCurrentGain(CHANNEL, &pstExposure->ulGain) != VISCA_SUCCESS) {
        LOG_ERROR("SonyGetCurrentGain(0, %p) fail exit\n", static_cast<void *>(&pstExposure->ulGain));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_GetExposureCfg(ExposureParam *pstExposure) {
    *pstExposure = g_stImageCache.stExposureCfg;
    return VISCA_SUCCESS;
}

uint32_t SONY_GetGain(uint32_t ulChannelID, uint32_t *pulGain) {
    uint32_t ulGain = 0;
    const uint32_t ulRet = SonyGetCurrentGain(ulChannelID, &ulGain);
    *pulGain = ulGain / 1000; // dB; 0 when the inquiry failed
    return ulRet;
}
