// Focus modes, one-push auto-focus, infrared correction and digital zoom.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

uint32_t SONY_OnePushTriggerAF(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return SendSetting({0x01, 0x04, 0x18, 0x01}, LOG_HERE);
}

uint32_t SONY_EnableAF(uint32_t bIsEnable) {
    LOG_DEBUG("FUN_ENTRY--param:bIsEnable[%lu]\n", UL(bIsEnable));
    const uint8_t ucMode = bIsEnable == 1 ? 0x02 : 0x03; // auto, manual
    if (QueueCommand({0x01, 0x04, 0x38, ucMode}) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_SetFocusMode(uint32_t ulFocusMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulFocusMode[%lu]\n", UL(ulFocusMode));
    constexpr uint8_t aucMode[] = {0x03, 0x02, 0x04}; // manual, auto, the camera's third mode
    const uint8_t ucMode = aucMode[ulFocusMode < 2 ? ulFocusMode : 2];
    if (QueueCommand({0x01, 0x04, 0x38, ucMode}) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_EnableIrCurve(uint32_t bIrCurve) {
    LOG_DEBUG("FUN_ENTRY--param:bIrCurve[%lu]\n", UL(bIrCurve));
    if (bIrCurve > 1) {
        LOG_WARN("bIrCurve[%lu] invalid, fail exit\n", UL(bIrCurve));
        return VISCA_FAILURE;
    }
    return SendSetting({0x01, 0x04, 0x11, static_cast<uint8_t>(bIrCurve)}, LOG_HERE);
}

uint32_t SONY_SetAFType(uint32_t ulType) {
    LOG_DEBUG("FUN_ENTRY--param:%lu\n", UL(ulType));
    if (QueueCommand({0x01, 0x04, 0x57, static_cast<uint8_t>(ulType)}) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SonyImgEnableDzoom(uint32_t bEnable) {
    const uint8_t ucSwitch = bEnable == 1 ? 0x02 : 0x03;
    return SendSetting({0x01, 0x04, 0x06, ucSwitch}, LOG_HERE);
}
