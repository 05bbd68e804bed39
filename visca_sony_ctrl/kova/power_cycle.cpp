#include "visca_sony_ctrl/kova/power_cycle.h"

#include "visca_que/log.h"
#include "visca_que/wait.h"
#include "viscacam.h"

namespace viscacam {

uint32_t PowerCycle(uint32_t ulRestMs, const char *pcCaller) {
    if (SonySetPower(0) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonySetPower(BOOL_FALSE) fail exit\n");
        return VISCA_FAILURE;
    }
    SleepMs(1000);
    if (SonySetPower(1) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonySetPower(BOOL_TRUE) fail exit\n");
        return VISCA_FAILURE;
    }
    if (ulRestMs != 0) {
        SleepMs(ulRestMs);
    }
    if (SonyWaitPowerOn() != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonyWaitPowerOn fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

} // namespace viscacam
