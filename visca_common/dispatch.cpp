// The public layer: every function looks at the module type that the host stored and forwards its arguments,
// unchanged, to the driver of that family. It checks nothing else, the NULL test of VISCA_GetZoomPos aside.
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

namespace {

uint32_t g_ulCamModType = MODULE_UNSET;

bool IsSony() {
    return IsSonyFamily(WordGet(g_ulCamModType));
}

} // namespace

// The log line names the public function, so this cannot be a function of its own.
#define FORWARD_OR(guard, call, otherwise)                                                                   \
    if (guard) {                                                                                             \
        return call;                                                                                         \
    }                                                                                                        \
    LOG_DEBUG("do nothing\n");                                                                               \
    return otherwise

#define FORWARD_TO_SONY(call) FORWARD_OR(IsSony(), call, VISCA_SUCCESS)

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
    FORWARD_OR(IsSony(), ViscaIsCmdQueueEmpty(), 1);
}

uint32_t VISCA_ZoomIn(void) {
    FORWARD_TO_SONY(SONY_ZoomIn());
}

uint32_t VISCA_ZoomOut(void) {
    FORWARD_TO_SONY(SONY_ZoomOut());
}

uint32_t VISCA_ZoomStop(void) {
    FORWARD_TO_SONY(SONY_ZoomStop());
}

uint32_t VISCA_FocusNear(void) {
    FORWARD_TO_SONY(SONY_FocusNear());
}

uint32_t VISCA_FocusFar(void) {
    FORWARD_TO_SONY(SONY_FocusFar());
}

uint32_t VISCA_FocusStop(void) {
    FORWARD_TO_SONY(SONY_FocusStop());
}

uint32_t VISCA_GetZoomPos(uint32_t *psZoom) {
    if (psZoom == nullptr) {
        LOG_ERROR("input param invalid\n");
        return VISCA_NULL_POINTER;
    }
    FORWARD_TO_SONY(SONY_GetZoomPos(psZoom));
}

uint32_t VISCA_GetFocusPos(int16_t *psFocus) {
    FORWARD_TO_SONY(SONY_GetFocusPos(psFocus));
}

uint32_t VISCA_SetZoomPos(int32_t sZoomPos) {
    FORWARD_TO_SONY(SONY_SetZoomPos(sZoomPos));
}

uint32_t VISCA_SetZoomFocusPos(int32_t sZoomPos, int32_t sFocusPos) {
    FORWARD_TO_SONY(SONY_SetZoomFocusPos(sZoomPos, sFocusPos));
}

uint32_t VISCA_SetZoomCut(uint32_t ulSelect, uint32_t ulValue) {
    FORWARD_TO_SONY(SONY_SetZoomCut(ulSelect, ulValue));
}

uint32_t VISCA_RetSetZoomFocus(void) {
    FORWARD_TO_SONY(SONY_RetSetZoomFocus());
}

uint32_t VISCA_EnableAF(uint32_t bIsEnable) {
    FORWARD_TO_SONY(SONY_EnableAF(bIsEnable));
}

uint32_t VISCA_SetFocusMode(uint32_t ulFocusMode) {
    FORWARD_TO_SONY(SONY_SetFocusMode(ulFocusMode));
}
