// Defog. Never cached: the camera gives no way to know what it made of the last request.
#include "visca_sony_ctrl/image/setting.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Level of the block 0x02000005: 1 and 2 give 1, 3 and 4 give 2, everything above 3.
constexpr uint8_t DefogLevel(uint8_t ucMode) {
    const uint32_t ulLevel = (ucMode - 1U) / 2U + 1U;
    return static_cast<uint8_t>(ulLevel < 3U ? ulLevel : 3U);
}
static_assert(DefogLevel(1) == 1 && DefogLevel(4) == 2 && DefogLevel(255) == 3);

bool SendSonyDefog(bool bOn, uint8_t ucLevel, const char *pcCaller) {
    const uint8_t ucSwitch = bOn ? 0x02 : 0x03;
    return SendSetting({0x01, 0x04, 0x37, ucSwitch, ucLevel}, pcCaller);
}

} // namespace

uint32_t SonySetDefogMode(uint32_t ulChannelID, uint32_t ulMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulMode[%lu]\n", UL(ulChannelID), UL(ulMode));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    const uint8_t ucMode = static_cast<uint8_t>(ulMode);
    bool bSent = false;
    if (IsKova(ulCamModType)) {
        bSent = SendSetting({0x01, 0x04, 0xC8, ucMode}, __func__);
    } else if (ulCamModType == MODULE_SONY_3) {
        bSent = SendSonyDefog(ucMode != 0, 0x00, __func__);
    } else if (ulCamModType == MODULE_SONY_5) {
        bSent = SendSonyDefog(ucMode != 0, ucMode == 0 ? 0x00 : DefogLevel(ucMode), __func__);
    } else {
        LOG_WARN("not support defog, do nothing!\n");
        return VISCA_SUCCESS;
    }
    return bSent ? VISCA_SUCCESS : VISCA_FAILURE;
}

uint32_t SonySetDefogSense(uint32_t ulChannelID, uint32_t ulSense) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulSense[%lu]\n", UL(ulChannelID), UL(ulSense));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    return SendSetting({0x01, 0x04, 0xC9, static_cast<uint8_t>(ulSense)}, __func__) ? VISCA_SUCCESS
                                                                                    : VISCA_FAILURE;
}
