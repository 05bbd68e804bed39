// Zoom and focus: drive, stop, positions.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/lens/lens_speed.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

uint32_t viscacam::g_ulZoomSpeed = 0;
uint32_t viscacam::g_ulFocusSpeed = 0;

namespace {

constexpr uint8_t DIRECTION_STOP = 0x00;
constexpr uint8_t DIRECTION_TELE_OR_FAR = 0x20;
constexpr uint8_t DIRECTION_WIDE_OR_NEAR = 0x30;

constexpr uint8_t DriveByte(uint8_t ucDirection, uint32_t ulSpeed) {
    return static_cast<uint8_t>(ucDirection | (ulSpeed & 0x0FU));
}

uint32_t DriveZoom(uint8_t ucDrive, const char *pcCaller) {
    if (QueueCommand({0x01, 0x04, 0x07, ucDrive}) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t DriveFocus(uint8_t ucDrive) {
    return QueueCommand({0x01, 0x04, 0x08, ucDrive});
}

} // namespace

uint32_t SONY_ZoomIn(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return DriveZoom(DriveByte(DIRECTION_TELE_OR_FAR, WordGet(g_ulZoomSpeed)), __func__);
}

uint32_t SONY_ZoomOut(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return DriveZoom(DriveByte(DIRECTION_WIDE_OR_NEAR, WordGet(g_ulZoomSpeed)), __func__);
}

uint32_t SONY_ZoomStop(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return DriveZoom(DIRECTION_STOP, __func__);
}

uint32_t SONY_FocusNear(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return DriveFocus(DriveByte(DIRECTION_WIDE_OR_NEAR, WordGet(g_ulFocusSpeed)));
}

uint32_t SONY_FocusFar(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return DriveFocus(DriveByte(DIRECTION_TELE_OR_FAR, WordGet(g_ulFocusSpeed)));
}

uint32_t SONY_FocusStop(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    return DriveFocus(DIRECTION_STOP);
}

uint32_t SONY_GetZoomPos(uint32_t *psZoom) {
    LOG_VERBO("FUN_ENTRY--param:psZoom[%p]\n", static_cast<const void *>(psZoom));
    if (psZoom == nullptr) {
        LOG_ERROR("input param invalid\n");
        return VISCA_NULL_POINTER;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x47}, &stReply) != VISCA_SUCCESS) {
        LOG_DEBUG("ViscaInquiry failed exit\n"); // DEBUG, unlike the focus position: hosts poll the zoom,
                                                 // deliberately quiet
        return VISCA_FAILURE;
    }
    LOG_VERBO("pulZoomPos 0x%x 0x%x 0x%x 0x%x\n", stReply.aucData[2], stReply.aucData[3], stReply.aucData[4],
              stReply.aucData[5]);
    *psZoom = ReplyWord(&stReply, 2);
    return VISCA_SUCCESS;
}

uint32_t SONY_GetFocusPos(int16_t *psFocus) {
    LOG_VERBO("FUN_ENTRY--param:psFocus[%p]\n", static_cast<const void *>(psFocus));
    if (psFocus == nullptr) {
        LOG_ERROR("input param invalid\n");
        return VISCA_NULL_POINTER;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x48}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    *psFocus = static_cast<int16_t>(ReplyWord(&stReply, 2));
    LOG_VERBO("pulFocus 0x%x 0x%x 0x%x 0x%x\n", stReply.aucData[2], stReply.aucData[3], stReply.aucData[4],
              stReply.aucData[5]);
    return VISCA_SUCCESS;
}

uint32_t SONY_SetZoomPos(int32_t sZoomPos) {
    LOG_DEBUG("FUN_ENTRY--param:sZoomPos[%ld]\n", SL(sZoomPos));
    const uint32_t ulZoom = static_cast<uint32_t>(sZoomPos);
    return SendSetting(
        {0x01, 0x04, 0x47, Nibble(ulZoom, 3), Nibble(ulZoom, 2), Nibble(ulZoom, 1), Nibble(ulZoom, 0)},
        LOG_HERE);
}

uint32_t SONY_SetZoomFocusPos(int32_t sZoomPos, int32_t sFocusPos) {
    const uint32_t ulZoom = static_cast<uint32_t>(sZoomPos);
    const uint32_t ulFocus = static_cast<uint32_t>(sFocusPos);
    LOG_DEBUG("FUN_ENTRY--param:sZoomPos[0x%lx] sFocusPos[0x%lx]\n", UL(ulZoom), UL(ulFocus));
    return SendSetting({0x01, 0x04, 0x47, Nibble(ulZoom, 3), Nibble(ulZoom, 2), Nibble(ulZoom, 1),
                        Nibble(ulZoom, 0), Nibble(ulFocus, 3), Nibble(ulFocus, 2), Nibble(ulFocus, 1),
                        Nibble(ulFocus, 0)},
                       LOG_HERE);
}

uint32_t SONY_RetSetZoomFocus(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (QueueCommand({0x01, 0x04, 0xBA}) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SONY_SetZoomCut(uint32_t ulSelect, uint32_t ulValue) {
    constexpr uint8_t aucRegister[] = {0x50, 0x51};
    if (ulSelect >= sizeof(aucRegister)) {
        return VISCA_SUCCESS;
    }
    return SonySetRegisterVal(aucRegister[ulSelect], static_cast<uint8_t>(ulValue));
}
