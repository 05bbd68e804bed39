// Mirror and flip.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint8_t ON = 0x02;
constexpr uint8_t OFF = 0x03;

// By orientation mode: neither, both, mirror only, flip only.
struct ReverseRow {
    uint8_t ucMirror; // command 01 04 61 0p
    uint8_t ucFlip;   // command 01 04 66 0p
};
constexpr ReverseRow REVERSE[] = {{OFF, OFF}, {ON, ON}, {ON, OFF}, {OFF, ON}};
constexpr uint32_t REVERSE_MODES = sizeof(REVERSE) / sizeof(REVERSE[0]);

// Low nibble of the answer: 2 is on.
uint32_t IsOn(const ViscaPkt &rReply) {
    return (rReply.aucData[2] & 0x0FU) == ON ? 1 : 0;
}

} // namespace

uint32_t SonyGetMirrorMode(uint32_t *pbSet) {
    LOG_DEBUG("FUN_ENTRY--param:pbSet[%p]\n", static_cast<void *>(pbSet));
    if (pbSet == nullptr) {
        LOG_ERROR("input param invalid\n");
        return VISCA_NULL_POINTER;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x61}, &stReply) != VISCA_SUCCESS) {
        LOG_DEBUG("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    LOG_INFO("mirror_mode 0x%x\n", stReply.aucData[2]);
    *pbSet = IsOn(stReply);
    return VISCA_SUCCESS;
}

uint32_t SonyGetFlipMode(uint32_t *pbSet) {
    LOG_DEBUG("FUN_ENTRY--param:pbSet[%p]\n", static_cast<void *>(pbSet));
    if (pbSet == nullptr) {
        LOG_ERROR("input param invalid\n");
        return VISCA_NULL_POINTER;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x66}, &stReply) != VISCA_SUCCESS) {
        LOG_DEBUG("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    LOG_INFO("flip_mode 0x%x\n", stReply.aucData[2]);
    *pbSet = IsOn(stReply);
    return VISCA_SUCCESS;
}

uint32_t SonySetCamReverse(uint32_t ulReverseMode) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (ulReverseMode >= REVERSE_MODES) {
        LOG_ERROR("Not support ulReverseMode[%lu] yet, fail exit\n", UL(ulReverseMode));
        return VISCA_FAILURE;
    }
    const ReverseRow &rRow = REVERSE[ulReverseMode];
    if (QueueCommand({0x01, 0x04, 0x61, rRow.ucMirror}) != VISCA_SUCCESS) {
        LOG_ERROR("set kova mirror, ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    if (QueueCommand({0x01, 0x04, 0x66, rRow.ucFlip}) != VISCA_SUCCESS) {
        LOG_ERROR("set kova flip, ViscaEnQueueCmd fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}
