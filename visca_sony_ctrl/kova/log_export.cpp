// The Kova module's own log: saved on the module, or fetched over the line into /tmp/kova.tgz.
#include <pthread.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_sony_ctrl/kova/transfer.h"
#include "visca_sony_ctrl/module_type.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

pthread_mutex_t g_stExportMutex = PTHREAD_MUTEX_INITIALIZER; // one export at a time

constexpr uint32_t DRAIN_SECONDS = 10;
constexpr char EXPORT_LOG[] = "KOVA_ExportLog";

bool AnnounceExport(uint32_t ulArg) {
    if (ViscaWaitCmdQueueEmpty(DRAIN_SECONDS) != VISCA_SUCCESS) {
        LOG_ERROR_AS(EXPORT_LOG, "ViscaWaitCmdQueueEmpty(%d) fail exit\n", static_cast<int>(DRAIN_SECONDS));
        return false;
    }
    const ViscaPkt stPkt = {{0x81, 0x01, 0x04, 0xA7, Nibble(ulArg, 1), Nibble(ulArg, 0), VISCA_TERMINATOR},
                            7};
    if (ViscaCamComSend(stPkt.ulLength, stPkt.aucData) != VISCA_SUCCESS) {
        LOG_ERROR_AS(EXPORT_LOG, "KOVA exportlog:ViscaCamComSend fail\n");
        return false;
    }
    ViscaPrintPkt(&stPkt, 1);
    return true;
}

// The result of the program is not looked at, deliberately: whoever wants the archive looks whether it is
// there.
void ReceiveArchive() {
    SwitchLineToTransfer();
    LOG_WARN_AS(EXPORT_LOG, "Start recv file......\n");
    if (IsKovaGen2(COMDRV_GetCamModuleType())) {
        LOG_INFO_AS(EXPORT_LOG, "Now execute cmd: xmodem -lrz -small /tmp/kova.tgz 115200\n");
        (void)COMDRV_System("xmodem -lrz -small /tmp/kova.tgz 115200");
    } else {
        LOG_INFO_AS(EXPORT_LOG, "Now execute cmd: xmodem -lrz -small  /tmp/kova.tgz\n");
        (void)COMDRV_System("xmodem -lrz  -small  /tmp/kova.tgz");
    }
    LOG_WARN_AS(EXPORT_LOG, "Recv file success...\n");
    SwitchLineBack();
    FlushLine(EXPORT_LOG);
}

} // namespace

uint32_t KOVA_ExportLog(uint32_t ulArg) {
    (void)pthread_mutex_lock(&g_stExportMutex);
    ViscaMarkExportLog(1);
    const bool bAnnounced = AnnounceExport(ulArg);
    if (bAnnounced) {
        ReceiveArchive();
    }
    ViscaMarkExportLog(0);
    if (bAnnounced) {
        LOG_WARN("Recv file finished... \n");
    }
    (void)pthread_mutex_unlock(&g_stExportMutex);
    return bAnnounced ? VISCA_SUCCESS : VISCA_FAILURE;
}

uint32_t KOVA_SaveLog(void) {
    const ViscaPkt stPkt = {{0x81, 0x01, 0x04, 0xB6, VISCA_TERMINATOR}, 5};
    if (ViscaCamComSend(stPkt.ulLength, stPkt.aucData) != VISCA_SUCCESS) {
        LOG_ERROR("KOVA savelog:ViscaCamComSend fail\n");
        return VISCA_FAILURE;
    }
    ViscaPrintPkt(&stPkt, 1);
    return VISCA_SUCCESS;
}
