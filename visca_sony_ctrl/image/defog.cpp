// Defog. Never cached: every request is sent, deliberately.
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Level of the block 0x02000005: 1 and 2 give 1, 3 and 4 give 2, everything above 3.
constexpr uint8_t DefogLevel(uint8_t ucMode) {
    const uint32_t ulLevel = (ucMode - 1U) / 2U + 1U;
    return static_cast<uint8_t>(ulLevel < 3U ? ulLevel : 3U);
}
static_assert(DefogLevel(1) == 1 && DefogLevel(4) == 2 && DefogLevel(255) == 3);

uint32_t SendSonyDefog(bool bOn, uint8_t ucLevel, const LogPlace &rCaller) {
    const uint8_t ucSwitch = bOn ? 0x02 : 0x03;
    return SendSetting({0x01, 0x04, 0x37, ucSwitch, ucLevel}, rCaller);
}

} // namespace

uint32_t SonySetDefogMode(uint32_t ulChannelID, uint32_t ulMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulMode[%lu]\n", UL(ulChannelID), UL(ulMode));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    const uint8_t ucMode = static_cast<uint8_t>(ulMode);
    if (IsKova(ulCamModType)) {
        return SendSetting({0x01, 0x04, 0xC8, ucMode}, LOG_HERE);
    }
    if (ulCamModType == MODULE_SONY_3) {
        return SendSonyDefog(ucMode != 0, 0x00, LOG_HERE);
    }
    if (ulCamModType == MODULE_SONY_5) {
        return SendSonyDefog(ucMode != 0, ucMode == 0 ? 0x00 : DefogLevel(ucMode), LOG_HERE);
    }
    LOG_WARN("not support defog, do nothing!\n");
    return VISCA_SUCCESS;
}

uint32_t SonySetDefogSense(uint32_t ulChannelID, uint32_t ulSense) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulSense[%lu]\n", UL(ulChannelID), UL(ulSense));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    return SendSetting({0x01, 0x04, 0xC9, static_cast<uint8_t>(ulSense)}, LOG_HERE);
}
