// White balance, picture controls, defog and day/night as the host's records and messages have them, applied
// up to the first command that is refused. What was queued before that stays queued.
#include <string.h>

#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/modes.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t CHANNEL = 0; // there is one picture

// White balance: what the host calls a mode, and the camera's mode number for it.
constexpr uint32_t WB_HOST_MANUAL = 1;

bool FindWbMode(uint32_t ulHostMode, int32_t *penMode) {
    switch (ulHostMode) {
    case 0:
    case 3:
        *penMode = WB_ATW;
        return true;
    case WB_HOST_MANUAL:
        *penMode = WB_MANUAL;
        return true;
    case 2:
        *penMode = WB_AUTO;
        return true;
    case 6:
        *penMode = WB_SODIUM_AUTO;
        return true;
    default:
        *penMode = WB_ATW;
        return false;
    }
}

uint32_t DataWord(const DrvMsgInfo *pstMsgInfo, uint32_t ulIndex) {
    uint32_t ulWord = 0;
    memcpy(&ulWord, pstMsgInfo->aucMsgData + ulIndex * sizeof(ulWord), sizeof(ulWord));
    return ulWord;
}

} // namespace

uint32_t SONY_SetWhiteBalance(uint32_t, uint32_t ulImageType, const WhiteBalanceParam *pstWb) {
    if (ulImageType != 0) {
        LOG_ERROR("DRV_SetWhiteBalance ulImageType=%lu not support!\n", UL(ulImageType));
        return VISCA_FAILURE;
    }
    if (WordGet(g_stImageCache.bDetectImgHold) == 1) {
        WordSet(gstImgDetectParam.lWbMode, static_cast<int32_t>(pstWb->ulWbMode));
        WordSet(gstImgDetectParam.lBlueOffset, pstWb->lBlueOffset);
        WordSet(gstImgDetectParam.lRedOffset, pstWb->lRedOffset);
        return VISCA_SUCCESS;
    }
    int32_t enMode = WB_ATW;
    if (!FindWbMode(pstWb->ulWbMode, &enMode)) {
        LOG_WARN("Invalid WhiteBalance Mode(%lu), correct to ATW. \n", UL(pstWb->ulWbMode));
    }
    if (SonySetVideoWBMode(CHANNEL, enMode) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetVideoWBMode(0, %lu) fail exit\n", UL(static_cast<uint32_t>(enMode)));
        return VISCA_FAILURE;
    }
    const int16_t sRed = static_cast<int16_t>(pstWb->lRedOffset);
    const int16_t sBlue = static_cast<int16_t>(pstWb->lBlueOffset);
    if (enMode != WB_MANUAL) {
        // Nothing was sent for them, and nothing is limited: the host reads back what it asked for.
        WordSet(g_stImageCache.sROffset, sRed);
        WordSet(g_stImageCache.sBOffset, sBlue);
        return VISCA_SUCCESS;
    }
    if (SonySetManualWB(CHANNEL, sRed, sBlue) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetManualWB(0, %ld, %ld) fail exit\n", SL(sRed), SL(sBlue));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_GetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType, WhiteBalanceParam *pstWb) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulImageType[%lu] pstWb[%p]\n", UL(ulChannelID),
              UL(ulImageType), static_cast<void *>(pstWb));
    pstWb->lBlueOffset = WordGet(g_stImageCache.sBOffset);
    pstWb->lRedOffset = WordGet(g_stImageCache.sROffset);
    return VISCA_SUCCESS;
}

uint32_t SONY_SetImageEnhance(uint32_t, uint32_t ulImageType, const ImageEnhanceParam *pstEnhance) {
    if (ulImageType != 0) {
        LOG_ERROR("DRV_SetImageEnhance ulImageType=%lu not support!\n", UL(ulImageType));
        return VISCA_FAILURE;
    }
    if (SonySetVideoBrightness(CHANNEL, pstEnhance->ulBrightness) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetVideoBrightness(0, %lu) fail exit\n", UL(pstEnhance->ulBrightness));
        return VISCA_FAILURE;
    }
    if (SonySetVideoContrast(CHANNEL, pstEnhance->ulContrast) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetVideoContrast(0, %lu) fail exit\n", UL(pstEnhance->ulContrast));
        return VISCA_FAILURE;
    }
    if (SonySetVideoSaturation(CHANNEL, pstEnhance->ulSaturation) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetVideoSaturation(%lu) fail exit\n",
                  UL(pstEnhance->ulSaturation)); // without the channel, as it stands
        return VISCA_FAILURE;
    }
    if (SonySetVideoSharpness(CHANNEL, pstEnhance->ulSharpness) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetVideoSharpness(0, %lu) fail exit\n", UL(pstEnhance->ulSharpness));
        return VISCA_FAILURE;
    }
    if (SonySetDenoise2D(CHANNEL, pstEnhance->ulDenoise2D) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetDenoise2D(0, %lu) fail exit\n", UL(pstEnhance->ulDenoise2D));
        return VISCA_FAILURE;
    }
    if (SonySetDenoise3D(CHANNEL, pstEnhance->ulDenoise3D) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetDenoise3D(0, %lu) fail exit\n", UL(pstEnhance->ulDenoise3D));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_SetImageVarFn(uint32_t, uint32_t, DrvMsgInfo *pstMsgInfo) {
    if (pstMsgInfo->ulMsgCmd != MSG_DEFOG) {
        return VISCA_SUCCESS;
    }
    const uint32_t ulMode = DataWord(pstMsgInfo, 0);
    if (SonySetDefogMode(CHANNEL, ulMode) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetDefogMode(0, %lu) fail exit\n", UL(ulMode));
        return VISCA_FAILURE;
    }
    const uint32_t ulSense = DataWord(pstMsgInfo, 1);
    if (SonySetDefogSense(CHANNEL, ulSense) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetDefogSense(0, %lu) fail exit\n", UL(ulSense));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_SetBlackWhiteMode(uint32_t ulChannelID, uint32_t ulBlackWhiteMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulBlackWhiteMode[%lu]\n", UL(ulChannelID),
              UL(ulBlackWhiteMode));
    return SonySetBlackWhiteMode(ulChannelID, ulBlackWhiteMode);
}

uint32_t SONY_GetBlackWhiteMode(uint32_t *pulBlackWhiteMode) {
    if (pulBlackWhiteMode == nullptr) {
        LOG_ERROR("pulBlackWhiteMode == NULL\n");
        return VISCA_FAILURE;
    }
    const uint32_t ulMode = WordGet(g_stImageCache.ulBlackWhiteMode);
    if (ulMode != DAY_NIGHT_COLOUR && ulMode != DAY_NIGHT_BLACK_WHITE) {
        LOG_ERROR("BlackWhiteMode[%lu] is error!\n",
                  UL(ulMode)); // the automatic mode cannot be read back, deliberately
        return VISCA_FAILURE;
    }
    *pulBlackWhiteMode = ulMode;
    return VISCA_SUCCESS;
}
