// Versions of an upgrade package, from the text file that comes with it. Line 2 holds the uImage's, line 3
// the program's version, each some characters behind the word VER_NEW and ended by a blank.
#include <stdio.h>
#include <string.h>

#include "visca_que/log.h"
#include "visca_sony_ctrl/kova/version.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr char PACKAGE_VERSION_FILE[] = "/tmp/update/QDM_VERSION";
constexpr char NEW_VERSION_MARK[] = "VER_NEW";
constexpr uint32_t LINE_SIZE = 255;
constexpr uint32_t UIMAGE_LINE = 2;
constexpr uint32_t UIMAGE_OFFSET = 9; // from the start of the mark: the word and two separators
constexpr uint32_t PROGRAM_LINE = 3;
constexpr uint32_t PROGRAM_OFFSET = 22;

// Reads up to ulLines lines; szLine then holds the last one that there was.
void ReadLines(FILE *pstFile, uint32_t ulLines, char (&szLine)[LINE_SIZE], const char *pcCaller) {
    for (uint32_t i = 1; i <= ulLines && fgets(szLine, sizeof(szLine), pstFile) != nullptr; ++i) {
        LOG_DEBUG_AS(pcCaller, "QDM_VESION the line %lu content is %s\n", UL(i), szLine);
    }
}

// The text from ulOffset behind pcMark, or an empty one where the line is too short.
const char *VersionStart(const char *pcMark, uint32_t ulOffset) {
    return strlen(pcMark) > ulOffset ? pcMark + ulOffset : "";
}

// Copy up to the blank that ends a version; also up to the line's end, where it is missing.
void CopyVersion(const char *pcStart, char *pcVer, const char *pcCaller) {
    const size_t ulLength = strcspn(pcStart, " \n");
    const size_t ulCopied = ulLength < VERSION_TEXT_MAX ? ulLength : VERSION_TEXT_MAX;
    if (ulCopied < ulLength) {
        LOG_WARN_AS(pcCaller, "Version text too long, cut to %lu characters\n", UL(VERSION_TEXT_MAX));
    }
    memcpy(pcVer, pcStart, ulCopied);
    pcVer[ulCopied] = '\0';
}

void CopyNewVersion(const char *pcMark, uint32_t ulOffset, char *pcVer, const char *pcCaller) {
    const char *pcStart = VersionStart(pcMark, ulOffset);
    LOG_DEBUG_AS(pcCaller, "QDM_VESION new ver is %s\n", pcStart);
    CopyVersion(pcStart, pcVer, pcCaller);
    LOG_DEBUG_AS(pcCaller, "QDM_VESION new ver is %s\n", pcVer);
}

// Read the package's version from line ulLine. Says which of the two was missing, the file or the mark.
enum PackageResult { PACKAGE_READ, PACKAGE_NO_FILE, PACKAGE_NO_MARK };

PackageResult ReadPackageVersion(uint32_t ulLine, uint32_t ulOffset, char *pcVer, const char *pcCaller) {
    FILE *pstFile = fopen(PACKAGE_VERSION_FILE, "r");
    if (pstFile == nullptr) {
        return PACKAGE_NO_FILE;
    }
    char szLine[LINE_SIZE] = {};
    ReadLines(pstFile, ulLine, szLine, pcCaller);
    (void)fclose(pstFile);
    const char *pcMark = strstr(szLine, NEW_VERSION_MARK);
    if (pcMark == nullptr) {
        return PACKAGE_NO_MARK;
    }
    CopyNewVersion(pcMark, ulOffset, pcVer, pcCaller);
    return PACKAGE_READ;
}

} // namespace

uint32_t KovaGetNewKovaUimageVer(char *pcVer) {
    const PackageResult enResult = ReadPackageVersion(UIMAGE_LINE, UIMAGE_OFFSET, pcVer, __func__);
    if (enResult == PACKAGE_NO_FILE) {
        LOG_ERROR("fopen the QDM_VERSION fail exit\n");
    } else if (enResult == PACKAGE_NO_MARK) {
        LOG_ERROR("the buffer no VER_NEW info, fail exit\n");
    }
    return enResult == PACKAGE_READ ? VISCA_SUCCESS : VISCA_FAILURE;
}

uint32_t KovaGetNewKovaProgramVer(char *pcVer) {
    const PackageResult enResult = ReadPackageVersion(PROGRAM_LINE, PROGRAM_OFFSET, pcVer, __func__);
    if (enResult == PACKAGE_NO_FILE) {
        LOG_ERROR("fopen the QDM_VERSION fail!\n");
    } else if (enResult == PACKAGE_NO_MARK) {
        LOG_ERROR("the buffer no need VER_NEW!\n");
    }
    return enResult == PACKAGE_READ ? VISCA_SUCCESS : VISCA_FAILURE;
}
