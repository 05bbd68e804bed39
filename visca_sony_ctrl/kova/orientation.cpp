// Sensor orientation of the Kova module. Modules that need it are power-cycled, and then only when the
// orientation really changes.
#include "visca_que/log.h"
#include "visca_sony_ctrl/kova/ability.h"
#include "visca_sony_ctrl/kova/power_cycle.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t UPSIDE_DOWN_PRODUCT = 0x1001;

constexpr uint32_t Orientation(uint32_t bMirror, uint32_t bFlip) {
    if (bMirror == 0) {
        return bFlip == 0 ? 0 : 3;
    }
    if (bMirror == 1 && bFlip <= 1) {
        return bFlip == 1 ? 1 : 2;
    }
    return 3;
}
static_assert(Orientation(0, 0) == 0 && Orientation(1, 1) == 1 && Orientation(1, 0) == 2 &&
              Orientation(0, 1) == 3);

bool ReadOrientation(uint32_t *pulOrientation, const char *pcCaller) {
    uint32_t bMirror = 0;
    uint32_t bFlip = 0;
    if (SonyGetMirrorMode(&bMirror) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonyGetMirrorMode fail exit\n");
        return false;
    }
    if (SonyGetFlipMode(&bFlip) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonyGetFlipMode fail exit\n");
        return false;
    }
    *pulOrientation = Orientation(bMirror, bFlip);
    return true;
}

} // namespace

uint32_t KOVA_SetSensorReverse(uint32_t ulReverseMode, uint32_t ulForce) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    const bool bForce = ulForce == 1;
    const bool bByPower = HasAbility(ABILITY_REVERSE_BY_POWER);
    if (!bForce && bByPower) {
        uint32_t ulCurrent = 0;
        if (!ReadOrientation(&ulCurrent, __func__)) {
            return VISCA_FAILURE;
        }
        if (ulCurrent == ulReverseMode) {
            return VISCA_SUCCESS;
        }
    }
    if (SonySetCamReverse(ulReverseMode) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetCamReverse(%lu) fail exit\n", UL(ulReverseMode));
        return VISCA_FAILURE;
    }
    constexpr uint32_t ulRestMs = 3000; // the module does not answer for a while after power-on
    return bForce || bByPower ? PowerCycle(ulRestMs, LOG_HERE) : VISCA_SUCCESS;
}

uint32_t KovaReverseCam(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    const uint32_t ulOrientation = COMDRV_GetProductSubType() == UPSIDE_DOWN_PRODUCT ? 1 : 0;
    if (KOVA_SetSensorReverse(ulOrientation, 0) != VISCA_SUCCESS) {
        LOG_ERROR("SonySetCamReverse(%lu) fail exit\n", UL(ulOrientation));
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}
