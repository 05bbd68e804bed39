// What a Kova module measures in its picture, and the scene that it is told to expect.
#include <string.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/module_type.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Scene types of the host and the module's codes, command 01 04 CD ss.
constexpr CodeRow SCENES[] = {
    {0, 0x0F}, {1, 0x01}, {2, 0x00}, {3, 0x03},  {4, 0x02},  {5, 0x04},
    {6, 0x05}, {7, 0x06}, {8, 0x07}, {80, 0x0D}, {81, 0x0E},
};
static_assert(HasUniqueValues(SCENES));

constexpr uint32_t FOCUS_VALUE_LENGTH = 4;

} // namespace

uint32_t KOVA_GetCurLuma(uint32_t ulChannelID, int32_t *plLuma) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] plLuma[%p]\n", UL(ulChannelID), static_cast<void *>(plLuma));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        if (plLuma != nullptr) {
            *plLuma = 0;
        }
        return VISCA_SUCCESS;
    }
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xCE}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    if (plLuma != nullptr) {
        *plLuma = static_cast<int32_t>(ReplyWord(&stReply, 2));
    }
    LOG_DEBUG("pLumaVal  0x%x 0x%x 0x%x 0x%x\n", stReply.aucData[2], stReply.aucData[3], stReply.aucData[4],
              stReply.aucData[5]);
    return VISCA_SUCCESS;
}

uint32_t KOVA_SetSceneMode(uint32_t ulSceneType) {
    LOG_DEBUG("FUN_ENTRY--param:ulSceneType[%lu]\n", UL(ulSceneType));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    uint8_t ucCode = 0;
    if (!FindCode(SCENES, ulSceneType, &ucCode)) {
        LOG_ERROR("unsupport ulSceneType[%lu], fail exit\n", UL(ulSceneType));
        return VISCA_FAILURE;
    }
    return SendSetting({0x01, 0x04, 0xCD, ucCode}, LOG_HERE);
}

uint32_t KovaGetImageFocusValue(uint32_t ulChannelID, int32_t *plFocusValue) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] psZoom[%p]\n", UL(ulChannelID),
              static_cast<void *>(plFocusValue));
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xAD}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    const uint8_t *pucValue = stReply.aucData + 2; // four whole bytes, the highest first
    if (plFocusValue != nullptr) {
        uint32_t ulValue = 0;
        for (uint32_t i = 0; i < FOCUS_VALUE_LENGTH; ++i) {
            ulValue = (ulValue << 8U) | pucValue[i];
        }
        *plFocusValue = static_cast<int32_t>(ulValue);
    }
    LOG_DEBUG("plFocusValue  0x%x 0x%x 0x%x 0x%x\n", pucValue[0], pucValue[1], pucValue[2], pucValue[3]);
    return VISCA_SUCCESS;
}

// The value goes out as the text that its bytes happen to be, lowest byte first on every board, deliberately.
uint32_t KOVA_GetImageFocusValue(uint32_t ulChannelID, DrvMsgInfo *pstMsgInfo) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] psZoom[%p]\n", UL(ulChannelID),
              static_cast<void *>(pstMsgInfo));
    if (!IsKova(COMDRV_GetCamModuleType())) {
        return VISCA_SUCCESS;
    }
    if (pstMsgInfo->ulMsgLen != FOCUS_VALUE_LENGTH) {
        LOG_ERROR("pstMsgInfo->ulMsgLen wrong\n");
        return VISCA_FAILURE;
    }
    int32_t lValue = 0;
    const uint32_t ulRet = KovaGetImageFocusValue(ulChannelID, &lValue);
    if (ulRet != VISCA_SUCCESS) {
        LOG_ERROR("KovaGetImageFocusValue fail, type(%lu), errno(%lu).\n", UL(pstMsgInfo->ulMsgCmd),
                  UL(ulRet));
        return VISCA_FAILURE;
    }
    for (uint32_t i = 0; i < FOCUS_VALUE_LENGTH; ++i) {
        pstMsgInfo->aucMsgData[i] = static_cast<uint8_t>(static_cast<uint32_t>(lValue) >> (8U * i));
    }
    const uint32_t ulLength = static_cast<uint32_t>(
        strnlen(reinterpret_cast<const char *>(pstMsgInfo->aucMsgData), FOCUS_VALUE_LENGTH));
    pstMsgInfo->aucMsgData[ulLength] = 0;
    pstMsgInfo->ulMsgLen = ulLength + 1;
    return VISCA_SUCCESS;
}
