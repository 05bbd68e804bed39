// The public layer: every function looks at the module type that the host stored and forwards its arguments,
// unchanged, to the driver of that family. It checks nothing else, the NULL test of VISCA_GetZoomPos aside.
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

uint32_t g_ulCamModType = MODULE_UNSET;

// Board numbers of the Kova module.
constexpr uint32_t BOARD_ENCODER = 0;
constexpr uint32_t BOARD_SENSOR = 1;
constexpr uint32_t BOARD_MOTOR = 2;

bool IsSony() {
    return IsSonyFamily(WordGet(g_ulCamModType));
}

bool IsKovaModule() {
    return IsKova(WordGet(g_ulCamModType));
}

// Outside its guard a function does nothing but say so under its own name.
uint32_t DoNothing(const char *pcCaller, uint32_t ulResult) {
    LOG_DEBUG_AS(pcCaller, "do nothing\n");
    return ulResult;
}

} // namespace

uint32_t VISCA_Init(uint32_t ulComPort) {
    if (IsSony()) {
        return SONY_Init(ulComPort);
    }
    // Port 0 whatever was asked for, and success whatever comes of it: a host without a camera of ours still
    // starts.
    if (ViscaCamComInit(0) != VISCA_SUCCESS) {
        LOG_ERROR("Visca Cam Com Init fail exit\n");
    }
    return VISCA_SUCCESS;
}

uint32_t VISCA_SetCamModuleType(uint32_t ulCamModType) {
    WordSet(g_ulCamModType, ulCamModType);
    return VISCA_SUCCESS;
}

uint32_t VISCA_IsMsgQueueEmpty(void) {
    return IsSony() ? ViscaIsCmdQueueEmpty() : DoNothing(__func__, 1);
}

uint32_t VISCA_MessageProcess(DrvMsgInfo *pstMsgInfo) {
    return IsSony() ? SONY_MessageProcess(pstMsgInfo) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetVin(const VideoNormParam *pstVideoNorm) {
    return IsSony() ? SONY_SetVin(pstVideoNorm) : DoNothing(__func__, VISCA_SUCCESS);
}

// Whatever the module: an unknown one is asked, too.
uint32_t VISCA_GetCamInfo(uint32_t ulChannelID, CameraInfo *pstCameraInfo) {
    return SONY_GetCamInfo(ulChannelID, pstCameraInfo);
}

uint32_t VISCA_SetExposure(uint32_t ulChannelID, uint32_t ulImageType, const ExposureParam *pstExposure) {
    return IsSony() ? SONY_SetExposure(ulChannelID, ulImageType, pstExposure)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetExposure(uint32_t ulChannelID, uint32_t ulImageType, ExposureParam *pstExposure) {
    return IsSony() ? SONY_GetExposure(ulChannelID, ulImageType, pstExposure)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetExposureCfg(ExposureParam *pstExposure) {
    return IsSony() ? SONY_GetExposureCfg(pstExposure) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType, const WhiteBalanceParam *pstWb) {
    return IsSony() ? SONY_SetWhiteBalance(ulChannelID, ulImageType, pstWb)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType, WhiteBalanceParam *pstWb) {
    return IsSony() ? SONY_GetWhiteBalance(ulChannelID, ulImageType, pstWb)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetGain(uint32_t ulChannelID, uint32_t *pulGain) {
    return IsSony() ? SONY_GetGain(ulChannelID, pulGain) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetImageEnhance(uint32_t ulChannelID, uint32_t ulImageType,
                               const ImageEnhanceParam *pstEnhance) {
    return IsSony() ? SONY_SetImageEnhance(ulChannelID, ulImageType, pstEnhance)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetImageVarFn(uint32_t ulChannelID, uint32_t ulVarFnType, DrvMsgInfo *pstMsgInfo) {
    return IsSony() ? SONY_SetImageVarFn(ulChannelID, ulVarFnType, pstMsgInfo)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetImageVarFn(uint32_t, uint32_t, DrvMsgInfo *) {
    return DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetBlackWhiteMode(uint32_t ulChannelID, uint32_t ulBlackWhiteMode) {
    return IsSony() ? SONY_SetBlackWhiteMode(ulChannelID, ulBlackWhiteMode)
                    : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetBlackWhiteMode(uint32_t *pulBlackWhiteMode) {
    return IsSony() ? SONY_GetBlackWhiteMode(pulBlackWhiteMode) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_ZoomIn(void) {
    return IsSony() ? SONY_ZoomIn() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_ZoomOut(void) {
    return IsSony() ? SONY_ZoomOut() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_ZoomStop(void) {
    return IsSony() ? SONY_ZoomStop() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_FocusNear(void) {
    return IsSony() ? SONY_FocusNear() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_FocusFar(void) {
    return IsSony() ? SONY_FocusFar() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_FocusStop(void) {
    return IsSony() ? SONY_FocusStop() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetZoomPos(uint32_t *psZoom) {
    if (psZoom == nullptr) {
        LOG_ERROR("input param invalid\n");
        return VISCA_NULL_POINTER;
    }
    return IsSony() ? SONY_GetZoomPos(psZoom) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_GetFocusPos(int16_t *psFocus) {
    return IsSony() ? SONY_GetFocusPos(psFocus) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetZoomPos(int32_t sZoomPos) {
    return IsSony() ? SONY_SetZoomPos(sZoomPos) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetZoomFocusPos(int32_t sZoomPos, int32_t sFocusPos) {
    return IsSony() ? SONY_SetZoomFocusPos(sZoomPos, sFocusPos) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetZoomCut(uint32_t ulSelect, uint32_t ulValue) {
    return IsSony() ? SONY_SetZoomCut(ulSelect, ulValue) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_RetSetZoomFocus(void) {
    return IsSony() ? SONY_RetSetZoomFocus() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_EnableAF(uint32_t bIsEnable) {
    return IsSony() ? SONY_EnableAF(bIsEnable) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetFocusMode(uint32_t ulFocusMode) {
    return IsSony() ? SONY_SetFocusMode(ulFocusMode) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetAFType(uint32_t ulType) {
    return IsSony() ? SONY_SetAFType(ulType) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_SetFocusMinLen(uint32_t ulFocusNearLimit) {
    return IsSony() ? SONY_SetMinFocusLen(ulFocusNearLimit)
                    : VISCA_SUCCESS; // the one row that does nothing silently
}

uint32_t VISCA_EnableIrCurve(uint32_t bIrCurve) {
    return IsSony() ? SONY_EnableIrCurve(bIrCurve) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_OnePushAutoFocus(uint32_t ulTrigType, const uint32_t *pulParam) {
    const uint32_t ulCamModType = WordGet(g_ulCamModType);
    if (IsKova(ulCamModType)) {
        return KOVA_OnePushTriggerAF(ulTrigType, pulParam);
    }
    // Sony's own blocks only, narrower than the family, deliberately.
    return IsSonyBlock(ulCamModType) ? SONY_OnePushTriggerAF() : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetCurLuma(uint32_t ulChannelID, int32_t *plLuma) {
    if (IsKovaModule()) {
        return KOVA_GetCurLuma(ulChannelID, plLuma);
    }
    if (plLuma != nullptr) {
        *plLuma = 0;
    }
    LOG_DEBUG("do nothing !\n");
    return VISCA_SUCCESS;
}

uint32_t VISCA_KOVA_SetSceneInfo(uint32_t ulSceneType) {
    return IsKovaModule() ? KOVA_SetSceneMode(ulSceneType) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_SetSigCallback(uint32_t ulSigType, ViscaStatusCallback fCallBack) {
    return IsKovaModule() ? KOVA_SetStatusCallback(ulSigType, fCallBack) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetSoftVer(char *pcVer) {
    return IsKovaModule() ? KOVA_GetSoftVer(pcVer) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetEncBoardVerType(uint32_t *pulVer, uint32_t *pulType) {
    return IsKovaModule() ? KOVA_GetBoardVerType(BOARD_ENCODER, pulVer, pulType)
                          : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetSensorBoardVerType(uint32_t *pulVer, uint32_t *pulType) {
    return IsKovaModule() ? KOVA_GetBoardVerType(BOARD_SENSOR, pulVer, pulType)
                          : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetMotorBoardVerType(uint32_t *pulVer, uint32_t *pulType) {
    return IsKovaModule() ? KOVA_GetBoardVerType(BOARD_MOTOR, pulVer, pulType)
                          : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetTemperature(uint32_t ulChannelID, int32_t *plTemperature) {
    return IsKovaModule() ? KOVA_GetTemperature(ulChannelID, plTemperature)
                          : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_SetIRcut(int32_t bIsEnable) {
    return IsKovaModule() ? KOVA_SetIRcut(bIsEnable) : DoNothing(__func__, VISCA_SUCCESS);
}

// Guarded by the family, unlike its neighbours.
uint32_t VISCA_KOVA_GetCamVer(char *pcBuf) {
    return IsSony() ? KOVA_GetCamVersion(pcBuf) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_GetExtVer(char *pcExtVer) {
    if (!IsKovaModule()) {
        LOG_ERROR("not kova, fail exit\n");
        return VISCA_FAILURE;
    }
    return KOVA_GetExtVer(pcExtVer);
}

uint32_t VISCA_KOVA_HasCamAbility(uint32_t ulMask) {
    return IsKovaModule() ? KOVA_HasCamAbility(ulMask) : DoNothing(__func__, VISCA_SUCCESS);
}

uint32_t VISCA_KOVA_Savelog(void) {
    return IsKovaModule() ? KOVA_SaveLog() : DoNothing(__func__, VISCA_SUCCESS);
}
