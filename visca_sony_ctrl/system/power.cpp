// Power, reset and the camera's registers.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint8_t POWER_ON = 0x02;
constexpr uint8_t POWER_STANDBY = 0x03;
constexpr uint8_t REGISTER_LAST = 0x7F;

} // namespace

uint32_t SonySetPower(uint32_t bPowerOn) {
    LOG_DEBUG("FUN_ENTRY--param:bPowerOn[%lu]\n", UL(bPowerOn));
    const uint8_t ucPower = bPowerOn == 1 ? POWER_ON : POWER_STANDBY;
    return QueueCommand({0x01, 0x04, 0x00, ucPower});
}

uint32_t SonyResetCam(void) {
    return QueueCommand({0x01, 0x04, 0x19, 0x03});
}

// No bound on the number of rounds, deliberately: a camera may take its time, and the host cannot go on
// without it.
uint32_t SonyWaitPowerOn(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    for (;;) {
        SleepMs(100);
        ViscaPkt stReply;
        if (Inquire({0x09, 0x04, 0x00}, &stReply) != VISCA_SUCCESS) {
            LOG_ERROR("ViscaInquiry failed exit\n");
            return VISCA_FAILURE;
        }
        if (stReply.aucData[2] == POWER_ON) {
            LOG_INFO("Now Power On\n");
            return VISCA_SUCCESS;
        }
    }
}

uint32_t SonyGetRegisterVal(uint8_t ucRegisterNo, uint8_t *pucRegisterVal) {
    LOG_DEBUG("FUN_ENTRY--param:ucRegisterNo[%d] pucRegisterVal[%p]\n", ucRegisterNo,
              static_cast<const void *>(pucRegisterVal));
    *pucRegisterVal = 0;
    if (ucRegisterNo > REGISTER_LAST) {
        LOG_ERROR("Invalid arguments ucRegisterNo[%d], fail exit\n", ucRegisterNo);
        return VISCA_FAILURE;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x24, ucRegisterNo}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    *pucRegisterVal = static_cast<uint8_t>((static_cast<uint32_t>(stReply.aucData[2]) << 4U) +
                                           (stReply.aucData[3] & 0x0FU));
    return VISCA_SUCCESS;
}

uint32_t SonySetRegisterVal(uint8_t ucRegisterNo, uint8_t ucRegisterVal) {
    LOG_DEBUG("FUN_ENTRY--param:ucRegisterNo[%d] ucRegisterVal[%d]\n", ucRegisterNo, ucRegisterVal);
    if (ucRegisterNo > REGISTER_LAST) {
        LOG_ERROR("Invalid arguments, ucRegisterNo[%d] ucRegisterVal[%d], fail exit\n", ucRegisterNo,
                  ucRegisterVal);
        return VISCA_FAILURE;
    }
    return QueueCommand({0x01, 0x04, 0x24, ucRegisterNo, Nibble(ucRegisterVal, 1), Nibble(ucRegisterVal, 0)});
}
