// The Kova module's sensor offset, IR cut filter, clock and low-delay mode.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/kova/power_cycle.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Four bytes from ulFirst on as a signed 16-bit value. Whole bytes are joined by or, where positions of the
// lens are added.
int16_t OffsetFrom(const ViscaPkt &rReply, uint32_t ulFirst) {
    uint32_t ulOffset = 0;
    for (uint32_t i = 0; i < 4; ++i) {
        ulOffset = (ulOffset << 4U) | rReply.aucData[ulFirst + i];
    }
    return static_cast<int16_t>(ulOffset);
}

} // namespace

uint32_t KOVA_GetSensorOffset(int32_t *plOffsetX, int32_t *plOffsetY) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (plOffsetX == nullptr) {
        LOG_ERROR("plOffsetX == NULL\n");
        return VISCA_FAILURE;
    }
    if (plOffsetY == nullptr) {
        LOG_ERROR("plOffsetY == NULL\n");
        return VISCA_FAILURE;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xBD}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    // Our receiver makes an error reply a failure; this serves a receiver that hands it through.
    if (stReply.aucData[1] == 0x60) {
        LOG_WARN("Kova curret ver unsupport get sensor offset\n");
        *plOffsetX = 0;
        *plOffsetY = 0;
        return VISCA_SUCCESS;
    }
    *plOffsetX = OffsetFrom(stReply, 2);
    *plOffsetY = OffsetFrom(stReply, 6);
    LOG_INFO("Kova cur offset(%ld, %ld)\n", SL(*plOffsetX), SL(*plOffsetY));
    return VISCA_SUCCESS;
}

uint32_t KOVA_SetSensorOffset(int32_t lOffsetX, int32_t lOffsetY, uint32_t ulFlag) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    const uint32_t ulX = static_cast<uint32_t>(lOffsetX);
    const uint32_t ulY = static_cast<uint32_t>(lOffsetY);
    if (QueueCommand({0x01, 0x04, 0xBD, Nibble(ulX, 3), Nibble(ulX, 2), Nibble(ulX, 1), Nibble(ulX, 0),
                      Nibble(ulY, 3), Nibble(ulY, 2), Nibble(ulY, 1), Nibble(ulY, 0),
                      static_cast<uint8_t>(ulFlag)}) != VISCA_SUCCESS) {
        LOG_ERROR("set kova sensor offset, ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return PowerCycle(0, LOG_HERE); // without the rest that the orientation takes
}

uint32_t KOVA_SetIRcut(int32_t bIsEnable) {
    LOG_DEBUG("FUN_ENTRY--param:bIsEnable[%ld]\n", SL(bIsEnable));
    const uint8_t ucSwitch = bIsEnable == 1 ? 0x04 : 0x05;
    return SendSetting({0x01, 0x04, 0xB4, ucSwitch}, LOG_HERE);
}

uint32_t KOVA_SetTime(uint32_t ulSeconds) {
    return SendSetting({0x01, 0x04, 0xA4, Nibble(ulSeconds, 7), Nibble(ulSeconds, 6), Nibble(ulSeconds, 5),
                        Nibble(ulSeconds, 4), Nibble(ulSeconds, 3), Nibble(ulSeconds, 2),
                        Nibble(ulSeconds, 1), Nibble(ulSeconds, 0)},
                       LOG_HERE);
}

uint32_t KOVA_SetLowDelayMode(uint32_t ulEnable) {
    const uint8_t ucSwitch = ulEnable != 0 ? 0x02 : 0x03;
    return SendSetting({0x01, 0x04, 0xBF, ucSwitch}, LOG_HERE);
}
