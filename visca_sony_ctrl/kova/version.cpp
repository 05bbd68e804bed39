// The versions that a Kova module reports: uImage (kernel), program, extension.
//
// Program and extension version come in segments from modules that can: the first answer holds the number of
// segments, each further answer to the same inquiry one segment, a nibble a byte. Strung together the nibbles
// are the codes of a text: 0 to 9 are digits, 10 and two decimal digits a letter counted from 'A', 11 and one
// more value a separator (extension version only).
#include "visca_sony_ctrl/kova/version.h"

#include <string.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/kova/ability.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint8_t ITEM_UIMAGE = 0xB1;
constexpr uint8_t ITEM_PROGRAM = 0xB2;
constexpr uint8_t ITEM_EXTENSION = 0xB5;

constexpr uint8_t CODE_LETTER = 10;
constexpr uint8_t CODE_SEPARATOR = 11;

constexpr uint32_t CODES_MAX = 196;

// Codes of a segmented version. Two entries more than are filled: a code cut off at the end reads the missing
// ones as 0.
struct VersionCodes {
    uint8_t aucCode[CODES_MAX + 2];
    uint32_t ulCount;
};

// A text under construction, cut at the length that callers' buffers hold.
struct VersionText {
    char szText[VERSION_TEXT_MAX + 1];
    uint32_t ulLength;
    bool bCut;
};

void AppendChar(VersionText *pstText, uint32_t ulChar) {
    if (pstText->ulLength >= VERSION_TEXT_MAX) {
        pstText->bCut = true;
        return;
    }
    pstText->szText[pstText->ulLength] = static_cast<char>(ulChar);
    ++pstText->ulLength;
}

void AppendDigit(VersionText *pstText, uint32_t ulDigit) {
    AppendChar(pstText, '0' + ulDigit); // not checked: a module that sends more shows as it is
}

void AppendTwoDigits(VersionText *pstText, uint32_t ulValue) {
    AppendDigit(pstText, ulValue / 10);
    AppendDigit(pstText, ulValue % 10);
}

void CopyOut(const VersionText &rText, char *pcVer) {
    memcpy(pcVer, rText.szText, rText.ulLength + 1);
}

void LogFourBytes(const ViscaPkt &rReply, const char *pcCaller) {
    LOG_DEBUG_AS(pcCaller, "ptr 0x%x 0x%x 0x%x 0x%x\n", rReply.aucData[2], rReply.aucData[3],
                 rReply.aucData[4], rReply.aucData[5]);
}

// The same inquiry once more, into a record that still holds the answer before.
uint32_t InquireAgain(uint8_t ucItem, ViscaPkt *pstReply) {
    ViscaPkt stPkt = {};
    (void)ViscaInitPkt4Kova(&stPkt);
    ViscaAppendByte(0x09, &stPkt);
    ViscaAppendByte(0x04, &stPkt);
    ViscaAppendByte(ucItem, &stPkt);
    return ViscaInquiry(&stPkt, pstReply);
}

void AppendSegment(const ViscaPkt &rReply, VersionCodes *pstCodes) {
    for (uint32_t i = 2; i < VISCA_PKT_MAX && rReply.aucData[i] != VISCA_TERMINATOR; ++i) {
        if (pstCodes->ulCount >= CODES_MAX) {
            return;
        }
        pstCodes->aucCode[pstCodes->ulCount] = rReply.aucData[i] & 0x0FU;
        ++pstCodes->ulCount;
    }
}

uint32_t ReadSegments(uint8_t ucItem, VersionCodes *pstCodes, const char *pcCaller) {
    ViscaPkt stReply;
    if (InquireKova({0x09, 0x04, ucItem}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    uint32_t ulSegments = 0;
    for (uint32_t i = 2; i <= 5; ++i) {
        ulSegments = (ulSegments << 4U) | (stReply.aucData[i] & 0x0FU);
    }
    LOG_INFO_AS(pcCaller, "ulSegCnt[%lu]\n", UL(ulSegments));
    for (uint32_t i = 0; i < ulSegments;
         ++i) { // also once the codes are full: the module counts on being asked for all
        // A segment that fails leaves the record as it is, and what it holds is taken once more,
        // deliberately.
        if (InquireAgain(ucItem, &stReply) != VISCA_SUCCESS) {
            LOG_ERROR_AS(pcCaller, "ViscaInquiry failed not exit\n");
        }
        AppendSegment(stReply, pstCodes);
    }
    return VISCA_SUCCESS;
}

// False for a code that the text cannot hold.
bool DecodeCodes(const VersionCodes &rCodes, bool bSeparators, VersionText *pstText) {
    uint32_t i = 0;
    while (i < rCodes.ulCount) {
        const uint8_t *pucCode = rCodes.aucCode + i;
        if (pucCode[0] < CODE_LETTER) {
            AppendDigit(pstText, pucCode[0]);
            i += 1;
        } else if (pucCode[0] == CODE_LETTER) {
            AppendChar(pstText, 'A' + pucCode[1] * 10U + pucCode[2]);
            i += 3;
        } else if (bSeparators && pucCode[0] == CODE_SEPARATOR) {
            AppendChar(pstText, pucCode[1] == 0 ? '-' : '_');
            i += 2;
        } else {
            return false;
        }
    }
    return true;
}

uint32_t ReadSegmented(uint8_t ucItem, bool bSeparators, VersionText *pstText, const char *pcCaller) {
    VersionCodes stCodes = {};
    if (ReadSegments(ucItem, &stCodes, pcCaller) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    if (!DecodeCodes(stCodes, bSeparators, pstText)) {
        LOG_ERROR_AS(pcCaller, "Serial Transmit error, please try again\n");
        return VISCA_FAILURE;
    }
    if (pstText->bCut) {
        LOG_WARN_AS(pcCaller, "Version text too long, cut to %lu characters\n", UL(VERSION_TEXT_MAX));
    }
    return VISCA_SUCCESS;
}

// One answer holds it all: D005, D012SP03, or eight digits.
uint32_t ReadOldProgramVer(VersionText *pstText, const char *pcCaller) {
    LOG_INFO_AS(pcCaller, "Old Ver Camera\n");
    ViscaPkt stReply;
    if (InquireKova({0x09, 0x04, ITEM_PROGRAM}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR_AS(pcCaller, "ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    LogFourBytes(stReply, pcCaller);
    const uint8_t *pucPart = stReply.aucData + 2;
    if (pucPart[0] != 0) {
        for (uint32_t i = 0; i < 4; ++i) {
            AppendTwoDigits(pstText, pucPart[i]);
        }
        return VISCA_SUCCESS;
    }
    AppendChar(pstText, 'D');
    AppendChar(pstText, '0');
    AppendTwoDigits(pstText, pucPart[1]);
    if (pucPart[3] != 0) {
        AppendChar(pstText, 'S');
        AppendChar(pstText, 'P');
        AppendTwoDigits(pstText, pucPart[3]);
    }
    return VISCA_SUCCESS;
}

} // namespace

uint32_t KovaGetCurKovaUimageVer(char *pcVer) {
    if (pcVer == nullptr) {
        LOG_ERROR("ptr == NULL\n");
        return VISCA_FAILURE;
    }
    ViscaPkt stReply;
    if (InquireKova({0x09, 0x04, ITEM_UIMAGE}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    LogFourBytes(stReply, __func__);
    // 0,1,2,3 is 1.23; 1,2,3,0 is 12.3; 0,2,0,0 is 2.0.
    const uint8_t *pucDigit = stReply.aucData + 2;
    VersionText stText = {};
    if (pucDigit[0] != 0) {
        AppendDigit(&stText, pucDigit[0]);
    }
    AppendDigit(&stText, pucDigit[1]);
    AppendChar(&stText, '.');
    AppendDigit(&stText, pucDigit[2]);
    if (pucDigit[3] != 0) {
        AppendDigit(&stText, pucDigit[3]);
    }
    CopyOut(stText, pcVer);
    return VISCA_SUCCESS;
}

uint32_t KovaGetCurKovaProgramVer(char *pcVer) {
    if (pcVer == nullptr) {
        LOG_ERROR("ptr == NULL\n");
        return VISCA_FAILURE;
    }
    VersionText stText = {};
    if (!HasAbility(ABILITY_SEGMENTED_VERSION)) {
        const uint32_t ulRet = ReadOldProgramVer(&stText, __func__);
        if (ulRet == VISCA_SUCCESS) {
            CopyOut(stText, pcVer);
        }
        return ulRet;
    }
    if (ReadSegmented(ITEM_PROGRAM, false, &stText, __func__) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    CopyOut(stText, pcVer);
    LOG_INFO("pcKovaProgramVer[%s]\n", pcVer);
    return VISCA_SUCCESS;
}

uint32_t KovaGetExtVer(char *pcExtVer) {
    if (pcExtVer == nullptr) {
        LOG_ERROR("pcExtVer == NULL\n");
        return VISCA_FAILURE;
    }
    if (!HasAbility(ABILITY_EXT_VERSION)) {
        constexpr char szUnknown[] = "UNKNOWN";
        memcpy(pcExtVer, szUnknown, sizeof(szUnknown));
        return VISCA_SUCCESS;
    }
    VersionText stText = {};
    if (ReadSegmented(ITEM_EXTENSION, true, &stText, __func__) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    CopyOut(stText, pcExtVer);
    LOG_INFO("pcExtVer[%s]\n", pcExtVer);
    return VISCA_SUCCESS;
}

uint32_t KOVA_GetExtVer(char *pcExtVer) {
    return KovaGetExtVer(pcExtVer);
}

uint32_t KOVA_GetCamVersion(char *pcBuf) {
    if (pcBuf == nullptr) {
        return VISCA_SUCCESS;
    }
    memcpy(pcBuf, VersionStamp(COMDRV_GetCamModuleType()), VERSION_STAMP_LENGTH);
    if (KovaGetCurKovaProgramVer(pcBuf + VERSION_STAMP_LENGTH) != VISCA_SUCCESS) {
        LOG_ERROR("KovaGetCurKovaProgramVer fail exit\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}
