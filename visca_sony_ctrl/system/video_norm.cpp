// Video norm: three registers decide what the camera puts out, and they take effect at the next power-on or
// reset only. They are read first, so that a camera that is in the wanted state already keeps its picture.
#include "visca_que/log.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint8_t REG_MONITOR_MODE = 0x72;
constexpr uint8_t REG_OUTPUT_ENABLE = 0x73;
constexpr uint8_t REG_SYNC_MODE = 0x56;
constexpr uint8_t OUTPUT_WANTED = 3;
constexpr uint8_t SYNC_WANTED = 1;

enum NormGroup { GROUP_NONE, GROUP_A, GROUP_A_GEN2, GROUP_B, GROUP_PAL_ONLY };

struct NormRow {
    NormGroup enGroup;
    uint32_t ulWidth;  // 0: any
    uint32_t ulHeight; // 0: any
    uint32_t ulFrameRate;
    uint8_t ucMonitorMode;
};

// The first row that fits applies.
// clang-format off
constexpr NormRow NORMS[] = {
    {GROUP_A,        0,   0,   30, 0x06},
    {GROUP_A,        0,   0,   25, 0x08},
    {GROUP_A_GEN2,   0,   0,   30, 0x06},
    {GROUP_A_GEN2,   0,   0,   25, 0x08},
    {GROUP_A_GEN2,   0,   0,   60, 0x13},
    {GROUP_A_GEN2,   0,   0,   50, 0x14},
    {GROUP_B,        0,   960, 30, 0x16},
    {GROUP_B,        0,   960, 25, 0x15},
    {GROUP_B,        0,   0,   30, 0x0E},
    {GROUP_B,        0,   0,   25, 0x11},
    {GROUP_PAL_ONLY, 720, 576, 25, 0x15},
};
// clang-format on

NormGroup GroupOf(uint32_t ulCamModType) {
    switch (ulCamModType) {
    case MODULE_SONY_1:
    case MODULE_SONY_3:
    case MODULE_SONY_5:
    case 0x02012000:
    case 0x02012001:
    case 0x02012002:
    case 0x02012005:
        return GROUP_A;
    case 0x02012A00:
    case 0x02012A01:
    case 0x02012A02:
        return GROUP_A_GEN2;
    case MODULE_SONY_4:
    case 0x02012100:
        return GROUP_B;
    case 0x02012200:
        return GROUP_PAL_ONLY;
    default:
        return GROUP_NONE;
    }
}

bool FindMonitorMode(NormGroup enGroup, const VideoNormParam &rNorm, uint8_t *pucMonitorMode) {
    for (const NormRow &rRow : NORMS) {
        if (rRow.enGroup == enGroup && (rRow.ulWidth == 0 || rRow.ulWidth == rNorm.ulWidth) &&
            (rRow.ulHeight == 0 || rRow.ulHeight == rNorm.ulHeight) &&
            rRow.ulFrameRate == rNorm.ulFrameRate) {
            *pucMonitorMode = rRow.ucMonitorMode;
            return true;
        }
    }
    return false;
}

// The lines of all steps name the exported function.
constexpr char SET_VIN[] = "SONY_SetVin";

bool ChooseMonitorMode(uint32_t ulCamModType, const VideoNormParam &rNorm, uint8_t *pucWanted) {
    const NormGroup enGroup = GroupOf(ulCamModType);
    if (enGroup == GROUP_NONE) {
        LOG_ERROR_AS(SET_VIN, "Not Supported CM[%lu] yet, fail exit\n", UL(ulCamModType));
        return false;
    }
    if (FindMonitorMode(enGroup, rNorm, pucWanted)) {
        return true;
    }
    if (enGroup == GROUP_PAL_ONLY) {
        LOG_ERROR_AS(SET_VIN, "QDM730K2S only support pal now, fail exit\n");
    } else {
        LOG_ERROR_AS(SET_VIN, "Not Supported norm[%lu, %lu, %lu], fail exit\n", UL(rNorm.ulWidth),
                     UL(rNorm.ulHeight), UL(rNorm.ulFrameRate));
    }
    return false;
}

// A register that has to change, or not.
struct RegisterChange {
    uint8_t ucRegister;
    uint8_t ucWanted;
    bool bChange;
};

struct NormChange {
    RegisterChange stMonitorMode;
    RegisterChange stOutput;
    RegisterChange stSync;
};

constexpr bool HasSyncMode(uint32_t ulCamModType) {
    return ulCamModType == MODULE_SONY_1 || ulCamModType == MODULE_SONY_4;
}

bool PlanMonitorMode(uint32_t ulCamModType, const VideoNormParam &rNorm, RegisterChange *pstChange) {
    uint8_t ucCurrent = 0;
    if (SonyGetRegisterVal(REG_MONITOR_MODE, &ucCurrent) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonyGetRegisterVal(VISCA_REGISTER_NUM_72_MONITOR_MODE) fail exit\n");
        return false;
    }
    uint8_t ucWanted = 0;
    if (!ChooseMonitorMode(ulCamModType, rNorm, &ucWanted)) {
        return false;
    }
    *pstChange = {REG_MONITOR_MODE, ucWanted, ucCurrent != ucWanted};
    if (pstChange->bChange) {
        LOG_INFO_AS(SET_VIN, "Need change norm from %u to %u\n", ucCurrent, ucWanted);
    }
    return true;
}

bool PlanOutput(RegisterChange *pstChange) {
    uint8_t ucCurrent = 0;
    if (SonyGetRegisterVal(REG_OUTPUT_ENABLE, &ucCurrent) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonyGetRegisterVal(VISCA_REGISTER_NUM_73_OUTPUT_ENABLE) fail exit\n");
        return false;
    }
    *pstChange = {REG_OUTPUT_ENABLE, OUTPUT_WANTED, ucCurrent != OUTPUT_WANTED};
    if (pstChange->bChange) {
        LOG_INFO_AS(SET_VIN, "Need change Output from %u to %u\n", ucCurrent, OUTPUT_WANTED);
    }
    return true;
}

bool PlanSync(uint32_t ulCamModType, RegisterChange *pstChange) {
    *pstChange = {REG_SYNC_MODE, SYNC_WANTED, false};
    if (!HasSyncMode(ulCamModType)) {
        return true;
    }
    uint8_t ucCurrent = 0;
    if (SonyGetRegisterVal(REG_SYNC_MODE, &ucCurrent) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonyGetRegisterVal(VISCA_REGISTER_NUM_56_SYNC_MODE) fail exit\n");
        return false;
    }
    pstChange->bChange = ucCurrent != SYNC_WANTED;
    if (pstChange->bChange) {
        LOG_INFO_AS(SET_VIN, "Need change sync mode from %u to %u\n", ucCurrent, SYNC_WANTED);
    }
    return true;
}

bool WriteIfChanged(const RegisterChange &rChange) {
    if (!rChange.bChange) {
        return true;
    }
    if (SonySetRegisterVal(rChange.ucRegister, rChange.ucWanted) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonySetRegisterVal(%d, %d) fail exit\n", rChange.ucRegister, rChange.ucWanted);
        return false;
    }
    return true;
}

// These two blocks are reset instead of switched off.
constexpr bool ChangesByReset(uint32_t ulCamModType) {
    return ulCamModType == MODULE_SONY_3 || ulCamModType == MODULE_SONY_5;
}

// From the first step on a failure leaves the camera as far as it got; in standby, mostly.
bool ChangeRegisters(uint32_t ulCamModType, const NormChange &rChange) {
    const bool bByReset = ChangesByReset(ulCamModType);
    if (!bByReset && SonySetPower(0) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonySetPower(BOOL_FALSE) fail exit\n");
        return false;
    }
    if (!WriteIfChanged(rChange.stMonitorMode) || !WriteIfChanged(rChange.stOutput) ||
        !WriteIfChanged(rChange.stSync)) {
        return false;
    }
    if (bByReset && SonyResetCam() != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonyResetCam() fail exit\n");
        return false;
    }
    return true;
}

bool BringBack(uint32_t ulCamModType) {
    if (SonySetPower(1) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonySetPower(BOOL_TRUE) fail exit\n");
        return false;
    }
    if (SonyWaitPowerOn() != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonyWaitPowerOn fail exit\n");
        return false;
    }
    if (SonyRestoreCamEnv(ulCamModType) != VISCA_SUCCESS) {
        LOG_ERROR_AS(SET_VIN, "SonyRestoreCamEnv fail exit\n");
        return false;
    }
    return true;
}

} // namespace

uint32_t SONY_SetVin(const VideoNormParam *pstVideoNorm) {
    if (pstVideoNorm == nullptr) {
        LOG_ERROR("pstVideoNorm == NULL\n");
        return VISCA_FAILURE;
    }
    LOG_DEBUG("FUN_ENTRY--param:pstVideoNorm[%lu, %lu, %lu]\n", UL(pstVideoNorm->ulWidth),
              UL(pstVideoNorm->ulHeight), UL(pstVideoNorm->ulFrameRate));
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    NormChange stChange;
    if (!PlanMonitorMode(ulCamModType, *pstVideoNorm, &stChange.stMonitorMode) ||
        !PlanOutput(&stChange.stOutput) || !PlanSync(ulCamModType, &stChange.stSync)) {
        return VISCA_FAILURE;
    }
    if (stChange.stMonitorMode.bChange || stChange.stOutput.bChange || stChange.stSync.bChange) {
        if (!ChangeRegisters(ulCamModType, stChange) || !BringBack(ulCamModType)) {
            return VISCA_FAILURE;
        }
    } else {
        LOG_INFO("No Need Change Norm or Output or SyncMode\n");
    }
    KovaSetDetectImgParam(ulCamModType);
    return VISCA_SUCCESS;
}
