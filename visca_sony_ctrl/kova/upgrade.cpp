// Firmware upgrade of the Kova module. The host unpacks a package under /tmp/update; the files that the
// module lacks are pushed over the line by a worker thread, which then waits for the module to say how it
// went.
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_que/thread.h"
#include "visca_que/wait.h"
#include "visca_sony_ctrl/kova/transfer.h"
#include "visca_sony_ctrl/kova/version.h"
#include "viscacam.h"

using namespace viscacam;

uint32_t gulUpdateFileforKova = 0;

namespace {

constexpr char PATCH_FILE[] = "/tmp/update/update.patch";

constexpr uint32_t FILE_UIMAGE = 1U << 0U;
constexpr uint32_t FILE_PROGRAM = 1U << 1U;
constexpr uint32_t FILE_PATCH = 1U << 10U;

// By bit of the upgrade word. The slots between do nothing.
constexpr const char *FILE_COMMANDS[] = {
    "xmodem -lsz -big /tmp/update/QDM_uimage.bin",
    "xmodem -lsz -big /tmp/update/QDM_program.bin",
    "cd",
    "cd",
    "cd",
    "cd",
    "cd",
    "cd",
    "cd",
    "cd",
    "xmodem -lsz -big /tmp/update/update.patch",
};
constexpr uint32_t FILE_COMMAND_COUNT = sizeof(FILE_COMMANDS) / sizeof(FILE_COMMANDS[0]);

// How much of two versions is compared.
constexpr size_t UIMAGE_VERSION_COMPARED = 10;
constexpr size_t PROGRAM_VERSION_COMPARED = 20;

constexpr uint32_t STATE_UPGRADING = 3;
constexpr uint32_t STATE_SUCCESS = 4;
constexpr uint32_t STATE_FAILED = 5;
constexpr uint32_t UNEXPECTED_STATES_MAX = 20;
constexpr uint32_t POLL_MS = 500;
constexpr uint32_t DRAIN_SECONDS = 10;

constexpr char UPDATE_KOVA[] = "KOVA_UpdateKova";
constexpr char UPGRADE_THREAD[] = "KovaUpgradeThread";

bool IsPatchThere() {
    FILE *pstFile = fopen(PATCH_FILE, "r");
    if (pstFile == nullptr) {
        return false;
    }
    LOG_INFO_AS(UPDATE_KOVA, "patch update kova\n");
    (void)fclose(pstFile);
    return true;
}

using VersionText = char[VERSION_TEXT_MAX + 1];

// Which files the module needs. Any difference counts, newer or older: the package wins.
bool CompareVersions(uint32_t *pulFiles) {
    VersionText szNewUimage = {};
    VersionText szCurUimage = {};
    VersionText szNewProgram = {};
    VersionText szCurProgram = {};
    if (KovaGetNewKovaUimageVer(szNewUimage) != VISCA_SUCCESS) {
        LOG_ERROR_AS(UPDATE_KOVA, "KovaGetNewKovaUimageVer fail exit\n");
        return false;
    }
    LOG_DEBUG_AS(UPDATE_KOVA, "KovaGetNewKovaUimageVer szNewImagebuf is %s \n", szNewUimage);
    if (KovaGetNewKovaProgramVer(szNewProgram) != VISCA_SUCCESS) {
        LOG_ERROR_AS(UPDATE_KOVA, "KovaGetNewKovaProgramVer fail exit\n");
        return false;
    }
    LOG_DEBUG_AS(UPDATE_KOVA, "KovaGetNewKovaProgramVer szNewImagebuf is %s \n", szNewProgram);
    if (KovaGetCurKovaUimageVer(szCurUimage) != VISCA_SUCCESS) {
        LOG_ERROR_AS(UPDATE_KOVA, "KovaGetCurKovaUimageVer fail exit\n");
        return false;
    }
    LOG_DEBUG_AS(UPDATE_KOVA, "KovaGetCurKovaUimageVer szCurImagebuf is %s \n", szCurUimage);
    if (KovaGetCurKovaProgramVer(szCurProgram) != VISCA_SUCCESS) {
        LOG_ERROR_AS(UPDATE_KOVA, "KovaGetCurKovaProgramVer fail exit\n");
        return false;
    }
    LOG_DEBUG_AS(UPDATE_KOVA, "KovaGetCurKovaProgramVer szCurProgrambuf is %s\n", szCurProgram);
    *pulFiles = (strncmp(szCurUimage, szNewUimage, UIMAGE_VERSION_COMPARED) != 0 ? FILE_UIMAGE : 0) |
                (strncmp(szCurProgram, szNewProgram, PROGRAM_VERSION_COMPARED) != 0 ? FILE_PROGRAM : 0);
    return true;
}

// The packet that says which files follow, terminator included.
bool AnnounceFiles(uint32_t ulFiles) {
    const ViscaPkt stPkt = {{0x81, 0x01, 0x04, 0xAA, Nibble(ulFiles, 7), Nibble(ulFiles, 6),
                             Nibble(ulFiles, 5), Nibble(ulFiles, 4), Nibble(ulFiles, 3), Nibble(ulFiles, 2),
                             Nibble(ulFiles, 1), Nibble(ulFiles, 0), VISCA_TERMINATOR},
                            13};
    if (ViscaWaitCmdQueueEmpty(DRAIN_SECONDS) != VISCA_SUCCESS) {
        LOG_WARN_AS(UPGRADE_THREAD, "ViscaWaitCmdQueueEmpty(%d) fail exit\n",
                    static_cast<int>(DRAIN_SECONDS)); // and go on
    }
    if (ViscaCamComSend(stPkt.ulLength, stPkt.aucData) != VISCA_SUCCESS) {
        LOG_ERROR_AS(UPGRADE_THREAD, "KOVA update:ViscaCamComSend fail\n");
        return false;
    }
    ViscaPrintPkt(&stPkt, 1);
    return true;
}

// What becomes of the transfers is not looked at, deliberately: the module's state decides.
void SendFiles(uint32_t ulFiles) {
    SwitchLineToTransfer();
    LOG_WARN_AS(UPGRADE_THREAD, "Start send file......\n");
    for (uint32_t i = 0; i < FILE_COMMAND_COUNT; ++i) {
        if ((ulFiles & (1U << i)) != 0) {
            LOG_INFO_AS(UPGRADE_THREAD, "Now execute cmd[%s]\n", FILE_COMMANDS[i]);
            (void)COMDRV_System(FILE_COMMANDS[i]);
        }
    }
    LOG_WARN_AS(UPGRADE_THREAD, "Send file success!\n");
    SwitchLineBack();
    FlushLine(UPGRADE_THREAD);
}

// The module's verdict: 0 success, 1 failure. It may take as long as it likes to get there, but 20 answers
// that make no sense, in all, are a failure.
uint32_t WaitForVerdict() {
    uint32_t ulUnexpected = 0;
    for (;;) {
        const uint32_t ulState = KovaGetStatus();
        if (ulState == STATE_SUCCESS) {
            LOG_INFO_AS(UPGRADE_THREAD, "Upgrade kova success\n");
            return VISCA_SUCCESS;
        }
        if (ulState == STATE_FAILED) {
            LOG_ERROR_AS(UPGRADE_THREAD, "Upgrade kova fail\n");
            return VISCA_FAILURE;
        }
        if (ulState == STATE_UPGRADING) {
            LOG_DEBUG_AS(UPGRADE_THREAD, "Upgrading kova ...\n");
        } else {
            ++ulUnexpected;
            LOG_ERROR_AS(UPGRADE_THREAD, "Unexpected state[%lu]\n", UL(ulState));
            if (ulUnexpected == UNEXPECTED_STATES_MAX) {
                return VISCA_FAILURE;
            }
        }
        SleepMs(POLL_MS);
    }
}

uint32_t RunUpgrade(uint32_t ulFiles) {
    ViscaMarkUpdatingCam(1);
    if (!AnnounceFiles(ulFiles)) {
        return VISCA_FAILURE; // the flag stays raised, deliberately
    }
    SendFiles(ulFiles);
    ViscaMarkUpdatingCam(0);
    return WaitForVerdict();
}

} // namespace

uint32_t KOVA_UpdateKova(KovaUpgradeCallback fCallBack) {
    if (fCallBack == nullptr) {
        LOG_ERROR("fCallBack == NULL\n");
        return VISCA_FAILURE;
    }
    if (WordGet(gulUpdateFileforKova) != 0) {
        LOG_WARN("Upgrading..., ignore this cmd\n");
        return VISCA_SUCCESS;
    }
    uint32_t ulFiles = FILE_PATCH;
    if (!IsPatchThere() && !CompareVersions(&ulFiles)) {
        return VISCA_FAILURE;
    }
    WordSet(gulUpdateFileforKova, ulFiles);
    LOG_INFO("gulUpdateFileforKova is %#x\n", ulFiles);
    if (StartDetached(KovaUpgradeThread, reinterpret_cast<void *>(fCallBack)) != 0) {
        LOG_ERROR("create thread ExportLogThread fail exit\n"); // this wording, deliberately
        fCallBack(VISCA_FAILURE);
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

void *KovaUpgradeThread(void *pCallBack) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    (void)prctl(PR_SET_NAME, "KovaUpgradeThd");
    const KovaUpgradeCallback pfnCallback = reinterpret_cast<KovaUpgradeCallback>(pCallBack);
    const uint32_t ulFiles = WordGet(gulUpdateFileforKova);
    if (ulFiles == 0) {
        LOG_INFO("No need update kova\n");
        pfnCallback(VISCA_SUCCESS);
        return nullptr;
    }
    pfnCallback(RunUpgrade(ulFiles));
    return nullptr;
}

uint32_t KovaGetStatus(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xA9}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE; // which no module reports, and counts as unexpected
    }
    const uint32_t ulState = stReply.aucData[2] * 16U + stReply.aucData[3];
    LOG_DEBUG("ulState[%ld]\n", static_cast<long>(ulState));
    return ulState;
}
