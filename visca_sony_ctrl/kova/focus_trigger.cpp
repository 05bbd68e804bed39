// One-push auto-focus of the Kova module: as a whole, on a point, in a rectangle.
#include "visca_que/log.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t TRIGGER_PLAIN = 0;
constexpr uint32_t TRIGGER_FIRST_NUMBERED = 6; // 6 to 9 are sent as they are
constexpr uint32_t TRIGGER_LAST_NUMBERED = 9;
constexpr uint32_t TRIGGER_POINT = 10;
constexpr uint32_t TRIGGER_RECTANGLE = 11;

constexpr uint8_t HighByte(uint32_t ulValue) {
    return static_cast<uint8_t>(ulValue >> 8U);
}

constexpr uint8_t LowByte(uint32_t ulValue) {
    return static_cast<uint8_t>(ulValue);
}

constexpr bool IsTriggerType(uint32_t ulType) {
    return ulType == TRIGGER_PLAIN || (ulType >= TRIGGER_FIRST_NUMBERED && ulType <= TRIGGER_RECTANGLE);
}

uint32_t SendTrigger(uint32_t ulType, const uint32_t *pulParam, const LogPlace &rCaller) {
    if (ulType == TRIGGER_POINT) {
        return SendSetting({0x01, 0x04, 0x18, 0x0A, Nibble(pulParam[0], 3), Nibble(pulParam[0], 2),
                            Nibble(pulParam[0], 1), Nibble(pulParam[0], 0), Nibble(pulParam[1], 3),
                            Nibble(pulParam[1], 2), Nibble(pulParam[1], 1), Nibble(pulParam[1], 0)},
                           rCaller);
    }
    if (ulType == TRIGGER_RECTANGLE) { // whole bytes here, not nibbles
        return SendSetting({0x01, 0x04, 0x18, 0x0B, HighByte(pulParam[0]), LowByte(pulParam[0]),
                            HighByte(pulParam[1]), LowByte(pulParam[1]), HighByte(pulParam[2]),
                            LowByte(pulParam[2]), HighByte(pulParam[3]), LowByte(pulParam[3])},
                           rCaller);
    }
    const uint8_t ucType = ulType == TRIGGER_PLAIN ? 0x01 : LowByte(ulType);
    return SendSetting({0x01, 0x04, 0x18, 0x01, ucType}, rCaller);
}

} // namespace

uint32_t KOVA_OnePushTriggerAF(uint32_t ulTrigType, const uint32_t *pulParam) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (!IsTriggerType(ulTrigType)) {
        LOG_ERROR("TrigType[%lu] invalid, fail exit\n", UL(ulTrigType));
        return VISCA_FAILURE;
    }
    if (ulTrigType > TRIGGER_LAST_NUMBERED && pulParam == nullptr) {
        LOG_ERROR("param invalid\n");
        return VISCA_FAILURE;
    }
    return SendTrigger(ulTrigType, pulParam, LOG_HERE);
}
