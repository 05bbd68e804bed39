// The camera's serial port: opening, baud rate, the one write that every sender uses, and the flags that gate
// all traffic.
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

int32_t g_iCamComFd = -1;
uint32_t g_ulCamCanCtrl = 0;
uint32_t g_ulUpdatingCam = 0;
uint32_t g_ulExportLog = 0;
pthread_mutex_t g_stSendMutex = PTHREAD_MUTEX_INITIALIZER;

constexpr uint32_t PROBE_ATTEMPTS = 20;
constexpr uint32_t PROBE_READS = 5; // for each byte of the answer, 100 ms apart
constexpr uint32_t PROBE_PAUSE_MS = 100;
constexpr uint32_t BAUD_RATES[] = {9600, 19200, 38400};
constexpr uint8_t PROBE[] = {0x81, 0x09, 0x04, 0x00,
                             0xFF}; // the power inquiry: every block answers it, also in standby
constexpr uint8_t PROBE_ANSWER[] = {0x90,
                                    0x50}; // an inquiry completed by camera 1; the rest is not looked at

void FlushUntilDone(int32_t iFd, const char *pcCaller) {
    while (DRV_FlushCom(iFd, VISCA_FLUSH_BOTH) != 0) {
        LOG_WARN_AS(pcCaller, "DRV_FlushCom fail, try it again\n");
        SleepMs(PROBE_PAUSE_MS);
    }
}

// Up to five looks for one byte; false when nothing came.
bool ReadProbeByte(int32_t iFd, uint8_t *pucByte) {
    for (uint32_t i = 0; i < PROBE_READS; ++i) {
        if (read(iFd, pucByte, 1) == 1) {
            return true;
        }
        SleepMs(PROBE_PAUSE_MS);
    }
    return false;
}

// How many bytes of the expected answer came, in a row from the first.
uint32_t MatchProbeAnswer(int32_t iFd) {
    uint32_t ulMatched = 0;
    uint8_t ucByte = 0;
    while (ulMatched < sizeof(PROBE_ANSWER) && ReadProbeByte(iFd, &ucByte) &&
           ucByte == PROBE_ANSWER[ulMatched]) {
        ++ulMatched;
    }
    return ulMatched;
}

enum ProbeResult { PROBE_FOUND, PROBE_SILENT, PROBE_BROKEN };

ProbeResult ProbeRate(int32_t iFd, uint32_t ulIndex, const char *pcCaller) {
    const DrvComParam stParam = {1, 3, BAUD_RATES[ulIndex], 8, 1, 0, 0};
    if (DRV_SetComParam(0, &stParam) != 0) {
        LOG_ERROR_AS(pcCaller, "i[%lu] DRV_SetComParam 0 fail exit\n", UL(ulIndex));
        return PROBE_BROKEN;
    }
    FlushUntilDone(iFd, pcCaller);
    if (write(iFd, PROBE, sizeof(PROBE)) != static_cast<ssize_t>(sizeof(PROBE))) {
        LOG_ERROR_AS(pcCaller, "write fail exit\n");
        return PROBE_BROKEN;
    }
    const uint32_t ulMatched = MatchProbeAnswer(iFd);
    LOG_DEBUG_AS(pcCaller, "i=%lu j=%lu\n", UL(ulIndex), UL(ulMatched));
    if (ulMatched != sizeof(PROBE_ANSWER)) {
        return PROBE_SILENT;
    }
    LOG_INFO_AS(pcCaller, "The current baudrate is %lu\n", UL(BAUD_RATES[ulIndex]));
    return PROBE_FOUND;
}

} // namespace

uint32_t ViscaCamComInit(uint32_t ulComPort) {
    if (ViscaGetCamComFd() != -1) {
        LOG_WARN("No need to done initialization again\n");
        return VISCA_SUCCESS;
    }
    int32_t iFd = -1;
    if (DRV_OpenCom(ulComPort, &iFd) != 0) {
        LOG_ERROR("Open sony ctrl serial port fail exit\n");
        return VISCA_FAILURE;
    }
    ViscaSetCamComFd(iFd);
    for (uint32_t i = 1; i <= PROBE_ATTEMPTS; ++i) {
        if (AdaptCamComBaudRate(iFd) == VISCA_SUCCESS) {
            ViscaSetCamCanCtrl(1);
            return VISCA_SUCCESS;
        }
        LOG_ERROR("AdaptCamComBaudRate fail %lu times, try it after 1 sec\n", UL(i));
        SleepMs(1000);
    }
    ViscaSetCamCanCtrl(0);
    return VISCA_FAILURE;
}

uint32_t AdaptCamComBaudRate(int32_t iFd) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    const int iFlags = fcntl(iFd, F_GETFL);
    if (iFlags == -1 || fcntl(iFd, F_SETFL, iFlags | O_NONBLOCK) == -1) {
        LOG_ERROR("fcntl fail exit\n");
        return VISCA_FAILURE;
    }
    ProbeResult enResult = PROBE_SILENT;
    constexpr uint32_t ulRates = sizeof(BAUD_RATES) / sizeof(BAUD_RATES[0]);
    for (uint32_t i = 0; i < ulRates && enResult == PROBE_SILENT; ++i) {
        enResult = ProbeRate(iFd, i, __func__);
    }
    if (enResult == PROBE_BROKEN) {
        return VISCA_FAILURE; // the descriptor stays non-blocking on this path, deliberately
    }
    if (enResult == PROBE_SILENT) {
        LOG_ERROR("--------------Can not ctrl the sony camera module-------------\n");
    }
    FlushUntilDone(iFd, __func__); // the rest of the camera's answer
    if (fcntl(iFd, F_SETFL, iFlags) == -1) {
        LOG_WARN("fcntl fail exit\n");
        return VISCA_FAILURE;
    }
    return enResult == PROBE_FOUND ? VISCA_SUCCESS : VISCA_FAILURE;
}

uint32_t ViscaCamComSend(uint32_t ulLength, const uint8_t *pucData) {
    if (pucData == nullptr) {
        LOG_ERROR("pucData == NULL\n");
        return VISCA_NULL_POINTER;
    }
    if (ulLength == 0) {
        LOG_ERROR("No data need be sent!\n");
        return VISCA_FAILURE;
    }
    (void)pthread_mutex_lock(&g_stSendMutex);
    const int32_t iSent = DRV_ComSend(ViscaGetCamComFd(), ulLength, pucData);
    (void)pthread_mutex_unlock(&g_stSendMutex);
    if (iSent < 0 || static_cast<uint32_t>(iSent) != ulLength) {
        LOG_ERROR("DRV_ComSend fail\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

uint32_t ViscaCamComFlush(uint32_t ulMode) {
    return DRV_FlushCom(ViscaGetCamComFd(), ulMode);
}

void ViscaSetCamComFd(int32_t iFd) {
    WordSet(g_iCamComFd, iFd);
}

int32_t ViscaGetCamComFd(void) {
    return WordGet(g_iCamComFd);
}

void ViscaSetCamCanCtrl(uint32_t ulFlag) {
    WordSet(g_ulCamCanCtrl, ulFlag);
}

uint32_t ViscaIsCamCanCtrl(void) {
    return WordGet(g_ulCamCanCtrl);
}

void ViscaMarkUpdatingCam(uint32_t ulFlag) {
    WordSet(g_ulUpdatingCam, ulFlag);
}

uint32_t ViscaIsUpdatingCam(void) {
    return WordGet(g_ulUpdatingCam);
}

void ViscaMarkExportLog(uint32_t ulFlag) {
    WordSet(g_ulExportLog, ulFlag);
}

uint32_t ViscaIsExportLog(void) {
    return WordGet(g_ulExportLog);
}

uint32_t ViscaIsCamComBusy(void) {
    return (ViscaIsUpdatingCam() == 1 || ViscaIsExportLog() == 1) ? 1 : 0;
}
