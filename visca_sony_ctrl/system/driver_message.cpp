// Messages of the host: settings and questions that have no function of their own in the public layer.
#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/image/modes.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t MSG_GET = 0;
constexpr uint32_t MSG_SET = 1;

constexpr uint32_t SET_IQ_DEBUG = 2;
constexpr uint32_t SET_VAR_FN_UNUSED = 31; // takes the same way as defog and does nothing there
constexpr uint32_t GET_FOCUS_VALUE = 34;

// The image-tuning item and value after which luminance and gain are logged.
constexpr uint32_t IQ_INFO_ITEM = 0x51;
constexpr uint8_t IQ_INFO_VALUE = 0x1B;

void LogIqInfo(const char *pcCaller) {
    int32_t lLuma = 0;
    uint32_t ulGain = 0;
    (void)KOVA_GetCurLuma(0, &lLuma);
    (void)SonyGetCurrentGain(0, &ulGain);
    LOG_INFO_AS(pcCaller, "*****IQ info luma[%lu], gain[%lu]\n", UL(static_cast<uint32_t>(lLuma)),
                UL(ulGain / 2000 + 1)); // back to the gain position
}

} // namespace

uint32_t SONY_MessageProcess(DrvMsgInfo *pstMsgInfo) {
    if (pstMsgInfo == nullptr) {
        LOG_ERROR("pstMsgInfo is NULL.\n");
        return VISCA_FAILURE;
    }
    if (pstMsgInfo->ulMsgType == MSG_GET) {
        const uint32_t ulRet = SonyProcGetMsg(pstMsgInfo);
        if (ulRet != VISCA_SUCCESS) {
            LOG_ERROR("SonyProcGetMsg fail, type(%lu), errno(%lu).\n", UL(pstMsgInfo->ulMsgType), UL(ulRet));
        }
        return ulRet;
    }
    if (pstMsgInfo->ulMsgType == MSG_SET) {
        const uint32_t ulRet = SonyProcSetMsg(pstMsgInfo);
        if (ulRet != VISCA_SUCCESS) {
            LOG_ERROR("SonyProcSetMsg fail, type(%lu), errno(%lu).\n", UL(pstMsgInfo->ulMsgType), UL(ulRet));
        }
        return ulRet;
    }
    LOG_WARN("Drv msg type(%lu) no support.\n", UL(pstMsgInfo->ulMsgType));
    return VISCA_FAILURE;
}

// A host never learns of a setting that failed, deliberately: the log does.
uint32_t SonyProcSetMsg(DrvMsgInfo *pstMsgInfo) {
    LOG_DEBUG("FUN_ENTRY--param:ulMsgCmd[%lu] ulMsgChannel[%lu] ulMsgLens[%lu]\n", UL(pstMsgInfo->ulMsgCmd),
              UL(pstMsgInfo->ulMsgChannel), UL(pstMsgInfo->ulMsgLen));
    if (pstMsgInfo->ulMsgCmd == MSG_DEFOG || pstMsgInfo->ulMsgCmd == SET_VAR_FN_UNUSED) {
        if (SONY_SetImageVarFn(pstMsgInfo->ulMsgChannel, pstMsgInfo->ulReserved0, pstMsgInfo) !=
            VISCA_SUCCESS) {
            LOG_ERROR("SONY_SetImageVarFn fail, type(%lu).\n", UL(pstMsgInfo->ulMsgType));
        }
    } else if (pstMsgInfo->ulMsgCmd == SET_IQ_DEBUG) {
        const uint32_t ulItem = pstMsgInfo->ulMsgChannel;
        const uint8_t ucValue = pstMsgInfo->aucMsgData[0];
        if (SonyProcIQDebugMsg(ulItem, ucValue) != VISCA_SUCCESS) {
            LOG_ERROR("SonyProcIQDebugMsg fail, ulChannelID(%lu) ucMsgData(%d).\n", UL(ulItem), ucValue);
        }
        if (ulItem == IQ_INFO_ITEM && ucValue == IQ_INFO_VALUE) {
            LogIqInfo(__func__);
        }
    }
    return VISCA_SUCCESS;
}

uint32_t SonyProcGetMsg(DrvMsgInfo *pstMsgInfo) {
    LOG_DEBUG("FUN_ENTRY--param:ulMsgCmd[%lu] ulMsgChannel[%lu] ulMsgLens[%lu]\n", UL(pstMsgInfo->ulMsgCmd),
              UL(pstMsgInfo->ulMsgChannel), UL(pstMsgInfo->ulMsgLen));
    if (pstMsgInfo->ulMsgCmd == GET_FOCUS_VALUE &&
        KOVA_GetImageFocusValue(pstMsgInfo->ulMsgChannel, pstMsgInfo) != VISCA_SUCCESS) {
        LOG_ERROR("SONY_SetImageVarFn fail, type(%lu).\n",
                  UL(pstMsgInfo->ulMsgType)); // the wording of the set path, deliberately
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t SonyProcIQDebugMsg(uint32_t ulChannelID, uint32_t ulMsgData) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] ulMsgData[%lu]\n", UL(ulChannelID), UL(ulMsgData));
    return SendSetting({0x01, 0x04, 0xCF, Nibble(ulChannelID, 1), Nibble(ulChannelID, 0),
                        Nibble(ulMsgData, 1), Nibble(ulMsgData, 0)},
                       LOG_HERE);
}
