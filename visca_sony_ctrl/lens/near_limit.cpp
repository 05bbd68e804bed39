// The focus near limit: how close the camera focuses, asked for in millimetres.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// The limit that was set last. Nothing ever replaces it, deliberately: a repeated request is sent again.
constexpr uint32_t LAST_NEAR_LIMIT = 0xFFFFFFFF;

// Command 01 04 28 0p 00 00 00: the highest nibble p of a 16-bit position, by distance.
struct NearLimitRow {
    uint16_t us100mm, us1000mm, us3000mm, us10000mm, usOther;
    bool bKova; // which words another distance is answered with
};
constexpr NearLimitRow NEAR_LIMIT_KOVA = {0xF000, 0xC000, 0x7000, 0x3000, 0xC000, true};
constexpr NearLimitRow NEAR_LIMIT_SONY_3 = {0xE000, 0xC000, 0x7000, 0x3000, 0x7000, false};
// D for other distances, though the words say 3000 mm, whose code is 7; kept deliberately.
constexpr NearLimitRow NEAR_LIMIT_SONY = {0xE000, 0xC000, 0x7000, 0x3000, 0xD000, false};

const NearLimitRow *FindRow(uint32_t ulCamModType) {
    if (IsKova(ulCamModType)) {
        return &NEAR_LIMIT_KOVA;
    }
    if (ulCamModType == MODULE_SONY_3) {
        return &NEAR_LIMIT_SONY_3;
    }
    return IsKnownSonyBlock(ulCamModType) ? &NEAR_LIMIT_SONY : nullptr;
}

uint16_t NearLimitCode(const NearLimitRow &rRow, uint32_t ulFocusNearLimit, const char *pcCaller) {
    switch (ulFocusNearLimit) {
    case 100:
        return rRow.us100mm;
    case 1000:
        return rRow.us1000mm;
    case 3000:
        return rRow.us3000mm;
    case 10000:
        return rRow.us10000mm;
    default:
        if (rRow.bKova) {
            LOG_ERROR_AS(pcCaller, "ulFocusNearLimit[%lu] invalid, use 1000mm instead\n",
                         UL(ulFocusNearLimit));
        } else {
            LOG_WARN_AS(pcCaller, "ulFocusNearLimit[%lu] invalid, use 3000mm instead\n",
                        UL(ulFocusNearLimit));
        }
        return rRow.usOther;
    }
}

} // namespace

uint32_t SONY_SetMinFocusLen(uint32_t ulFocusNearLimit) {
    LOG_DEBUG("FUN_ENTRY--param:ulFocusNearLimit[%lu]\n", UL(ulFocusNearLimit));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    if (ulFocusNearLimit == LAST_NEAR_LIMIT) {
        LOG_WARN("No Need Change Foucs Near Limit \n");
        return VISCA_SUCCESS;
    }
    const NearLimitRow *pstRow = FindRow(ulCamModType);
    if (pstRow == nullptr) {
        LOG_ERROR("Unknown ulCamModType[0x%x], fail exit\n", ulCamModType);
        return VISCA_FAILURE;
    }
    const uint16_t usCode = NearLimitCode(*pstRow, ulFocusNearLimit, __func__);
    LOG_DEBUG("Set Limit Focuslens %lu to[0x%x]\n", UL(ulFocusNearLimit), usCode);
    if (SendSetting({0x01, 0x04, 0x28, Nibble(usCode, 3), 0x00, 0x00, 0x00}, LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    // So that the camera focuses again within the new limit.
    return IsKova(ulCamModType) ? KOVA_OnePushTriggerAF(0, nullptr) : SONY_OnePushTriggerAF();
}
