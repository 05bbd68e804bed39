// Start-up of the camera, and the restore after a power cycle.
#include <time.h>

#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/lens/lens_speed.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

uint32_t SwitchDzoomOff(const char *pcCaller) {
    if (SonyImgEnableDzoom(0) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "SonyImgEnableDzoom() fail\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

} // namespace

uint32_t SONY_Init(uint32_t ulComPort) {
    LOG_DEBUG("FUN_ENTRY--param:ulComPort[%lu]\n", UL(ulComPort));
    if (ViscaCamComInit(ulComPort) != VISCA_SUCCESS) {
        LOG_ERROR("Visca Cam Com Init fail exit\n"); // and go on: the host must come up without a camera, too
    }
    if (ViscaStartMsgProc() != VISCA_SUCCESS) {
        LOG_ERROR("ViscaStartMsgProc fail exit\n");
        return VISCA_FAILURE;
    }
    if (SonyInitCamEnv(COMDRV_GetCamModuleType()) != VISCA_SUCCESS) {
        LOG_ERROR("SonyInitCamEnv fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SonyInitCamEnv(uint32_t ulCamModType) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    (void)SonyInitCamMisc(ulCamModType);
    (void)SonyInitCamIMG(ulCamModType);
    (void)SonyInitCamAF(ulCamModType);
    return VISCA_SUCCESS;
}

uint32_t SonyInitCamMisc(uint32_t ulCamModType) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (IsKova(ulCamModType)) {
        // Capabilities first: orientation and versions depend on them. Each step reports its own failure.
        (void)KovaDetectCamAbility();
        (void)KOVA_SetTime(static_cast<uint32_t>(time(nullptr)));
        (void)KovaReverseCam();
        (void)KovaDumpVerInfo();
    }
    return VISCA_SUCCESS;
}

uint32_t SonyInitCamAF(uint32_t ulCamModType) {
    const bool bKnown = IsKnownSonyBlock(ulCamModType);
    WordSet(g_ulZoomSpeed, bKnown ? 6 : 5);
    WordSet(g_ulFocusSpeed, 0);
    if (bKnown) {
        return SwitchDzoomOff(__func__);
    }
    if (IsKova(ulCamModType)) {
        (void)AF_Debug_Init();
    }
    return VISCA_SUCCESS;
}

uint32_t SonyRestoreCamEnv(uint32_t ulCamModType) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    SonyInitVar4IMG(); // a power-cycled camera has lost what the cache remembers
    return IsKnownSonyBlock(ulCamModType) ? SwitchDzoomOff(__func__) : VISCA_SUCCESS;
}
