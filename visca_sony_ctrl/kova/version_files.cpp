// The version files that other programs of the board read, written at start-up through the host's shell.
#include <stdio.h>

#include "visca_que/log.h"
#include "visca_sony_ctrl/kova/version.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr uint32_t SHELL_VERSION_MAX = 16; // characters of a version that go into a file

// A version reaches a shell command line, so it may hold nothing that a shell could take for more than text.
bool IsPlainText(const char *pcText) {
    for (const char *pc = pcText; *pc != '\0'; ++pc) {
        const bool bPlain = (*pc >= '0' && *pc <= '9') || (*pc >= 'A' && *pc <= 'Z') ||
                            (*pc >= 'a' && *pc <= 'z') || *pc == '.' || *pc == '-' || *pc == '_';
        if (!bPlain) {
            return false;
        }
    }
    return true;
}

// False when there is no version, or none that may be written.
bool ReadForShell(uint32_t (*pfnRead)(char *), char (&szVer)[VERSION_TEXT_MAX + 1]) {
    szVer[0] = '\0';
    if (pfnRead(szVer) != VISCA_SUCCESS || !IsPlainText(szVer)) {
        return false;
    }
    szVer[SHELL_VERSION_MAX] = '\0';
    return true;
}

void WriteFiles(uint32_t ulCamModType, const char *pcVer) {
    char szCommand[256] = {};
    (void)snprintf(szCommand, sizeof(szCommand), "echo %s%s > /tmp/kova_interversion",
                   VersionStamp(ulCamModType), pcVer);
    (void)COMDRV_System(szCommand);
    const char *pcModel = IsKovaGen2(ulCamModType) ? "QDM_K4410" : "QDM_730_842";
    (void)snprintf(szCommand, sizeof(szCommand), "echo %s-%s > /tmp/kova_version", pcModel, pcVer);
    (void)COMDRV_System(szCommand);
}

} // namespace

uint32_t KovaDumpVerInfo(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    const uint32_t ulCamModType = COMDRV_GetCamModuleType();
    char szVer[VERSION_TEXT_MAX + 1] = {};
    if (!ReadForShell(KovaGetCurKovaProgramVer, szVer)) {
        LOG_WARN("KovaGetCurKovaProgramVer fail not exit\n");
        return VISCA_SUCCESS;
    }
    WriteFiles(ulCamModType, szVer);
    if (!ReadForShell(KovaGetCurKovaUimageVer, szVer)) {
        LOG_WARN("KovaGetCurKovaUimageVer fail not exit\n");
        return VISCA_SUCCESS;
    }
    char szCommand[256] = {};
    (void)snprintf(szCommand, sizeof(szCommand), "echo \"Kernel  version: V%s\" > /tmp/kova_kversion", szVer);
    (void)COMDRV_System(szCommand);
    return VISCA_SUCCESS;
}
