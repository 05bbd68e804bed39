#include "visca_sony_ctrl/kova/power_cycle.h"

#include "visca_que/wait.h"
#include "viscacam.h"

namespace viscacam {

uint32_t PowerCycle(uint32_t ulRestMs, const LogPlace &rCaller) {
    if (SonySetPower(0) != VISCA_SUCCESS) {
        LOG_ERROR_AT(rCaller, "SonySetPower(BOOL_FALSE) fail exit\n");
        return VISCA_FAILURE;
    }
    SleepMs(1000);
    if (SonySetPower(1) != VISCA_SUCCESS) {
        LOG_ERROR_AT(rCaller, "SonySetPower(BOOL_TRUE) fail exit\n");
        return VISCA_FAILURE;
    }
    SleepMs(ulRestMs);
    if (SonyWaitPowerOn() != VISCA_SUCCESS) {
        LOG_ERROR_AT(rCaller, "SonyWaitPowerOn fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

} // namespace viscacam
