// What else a Kova module tells about itself: encoder software, boards, temperature.
#include <string.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "viscacam.h"

using namespace viscacam;

uint32_t KOVA_GetSoftVer(char *pcVer) {
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xB4, 0x03}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    char szVer[16] = {};
    static_assert(VISCA_PKT_MAX - 2 < sizeof(szVer), "the text of a full reply fits, its NUL included");
    for (uint32_t i = 2; i < VISCA_PKT_MAX && stReply.aucData[i] != VISCA_TERMINATOR; ++i) {
        szVer[i - 2] = static_cast<char>(stReply.aucData[i]);
    }
    LOG_DEBUG(" Encode Soft Version:** %s ** \n", szVer);
    memcpy(pcVer, szVer, sizeof(szVer));
    return VISCA_SUCCESS;
}

uint32_t KOVA_GetBoardVerType(uint32_t ulBoard, uint32_t *pulVer, uint32_t *pulType) {
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xB4, static_cast<uint8_t>(ulBoard)}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    *pulVer = stReply.aucData[2];
    *pulType = stReply.aucData[3];
    LOG_DEBUG("KOVA BoardType[%u] pulVer [%lu] Type [%lu] \n", ulBoard, UL(*pulVer), UL(*pulType));
    return VISCA_SUCCESS;
}

uint32_t KOVA_GetTemperature(uint32_t ulChannelID, int32_t *plTemperature) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID [%lu]\n", UL(ulChannelID));
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0x68}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    // Two nibbles, 0 to 255, are -127 to 128 degrees.
    *plTemperature = (stReply.aucData[4] & 0x0F) * 16 + (stReply.aucData[5] & 0x0F) - 127;
    LOG_DEBUG("KOVA Temperature [%ld] \n", SL(*plTemperature));
    return VISCA_SUCCESS;
}
