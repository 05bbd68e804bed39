/*
 * The smallest host that viscacam runs in: every service of viscacam_host.h in its simplest form, and a
 * main() that zooms and reads the position back. One camera, one port. The queues are pipes, the log is
 * stderr.
 *
 *     cc minimal_host.c $(pkg-config --cflags --libs viscacam) -o minimal_host
 *     ./minimal_host /dev/ttyUSB0
 *
 * A product wants more: a lock on the port, a write that cannot hang, an adapter that may be pulled and put
 * back, a log that rotates. The reference host in host/ has all of that.
 */
#define _DEFAULT_SOURCE /* cfmakeraw, cfsetspeed */

#include <viscacam.h>
#include <viscacam_host.h>

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#define NUM_QUEUES 4

/* A pipe is a queue of 20-byte elements already: writes this small are atomic, a full pipe refuses them, and
 * its read end is readable exactly while an element waits. */
static struct {
    int aiFd[2];
    unsigned char aucTaken[VISCA_QUEUE_ELEM_SIZE];
} g_astQueue[NUM_QUEUES];

static const char *g_pcDevice;
static int g_iComFd = -1;
static uint32_t g_ulModuleType = 0x02000001U;
static uint32_t g_ulLogLevel = VISCA_LOG_WARN;

static int OpenQueues(void) {
    for (int i = 0; i < NUM_QUEUES; i++) {
        int *piFd = g_astQueue[i].aiFd;
        if (pipe(piFd) != 0)
            return -1;
        for (int iEnd = 0; iEnd < 2; iEnd++) {
            fcntl(piFd[iEnd], F_SETFL, O_NONBLOCK);
            fcntl(piFd[iEnd], F_SETFD, FD_CLOEXEC);
        }
    }
    return 0;
}

uint32_t QUEUE_PutRawData(uint32_t ulType, uint32_t ulQueueId, const void *pData, uint32_t ulLength) {
    (void)ulType;
    if (ulQueueId >= NUM_QUEUES || ulLength != VISCA_QUEUE_ELEM_SIZE)
        return 1;
    return write(g_astQueue[ulQueueId].aiFd[1], pData, ulLength) == (ssize_t)ulLength ? 0 : 1;
}

uint32_t QUEUE_GetSerialData(uint32_t ulQueueId, void **ppElem) {
    if (ulQueueId >= NUM_QUEUES)
        return 1;
    *ppElem = g_astQueue[ulQueueId].aucTaken;
    return read(g_astQueue[ulQueueId].aiFd[0], *ppElem, VISCA_QUEUE_ELEM_SIZE) == VISCA_QUEUE_ELEM_SIZE ? 0
                                                                                                        : 1;
}

uint32_t QUEUE_IsEmpty(uint32_t ulType, uint32_t ulQueueId, uint32_t *pulFlag) {
    (void)ulType;
    if (ulQueueId >= NUM_QUEUES)
        return 1;
    struct pollfd stPoll = {.fd = g_astQueue[ulQueueId].aiFd[0], .events = POLLIN};
    *pulFlag = poll(&stPoll, 1, 0) == 1 ? 0 : 1;
    return 0;
}

uint32_t QUEUE_GetQueueReadFd(uint32_t ulType, uint32_t ulQueueId, int32_t *piFd) {
    (void)ulType;
    if (ulQueueId >= NUM_QUEUES)
        return 1;
    *piFd = g_astQueue[ulQueueId].aiFd[0];
    return 0;
}

uint32_t DRV_OpenCom(uint32_t ulComPort, int32_t *piFd) {
    (void)ulComPort;
    g_iComFd = open(g_pcDevice, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (g_iComFd < 0)
        fprintf(stderr, "%s: %s\n", g_pcDevice, strerror(errno));
    *piFd = g_iComFd;
    return g_iComFd < 0 ? 1 : 0;
}

uint32_t DRV_SetComParam(uint32_t ulType, const DrvComParam *pstParam) {
    (void)ulType;
    struct termios stTty;
    if (tcgetattr(g_iComFd, &stTty) != 0)
        return 1;
    cfmakeraw(&stTty); /* 8 data bits, no parity, every byte as it is */
    stTty.c_cflag &= ~(tcflag_t)(CSTOPB | CRTSCTS);
    stTty.c_cflag |= CLOCAL | CREAD;
    stTty.c_cc[VMIN] = 1;
    stTty.c_cc[VTIME] = 0;
    speed_t ulSpeed = pstParam->ulBaudRate == 38400 ? B38400 : pstParam->ulBaudRate == 19200 ? B19200 : B9600;
    cfsetspeed(&stTty, ulSpeed);
    return tcsetattr(g_iComFd, TCSANOW, &stTty) == 0 ? 0 : 1;
}

uint32_t DRV_FlushCom(int32_t iFd, uint32_t ulMode) {
    (void)ulMode;
    return tcflush(iFd, TCIOFLUSH) == 0 ? 0 : 1;
}

int32_t DRV_ComSend(int32_t iFd, uint32_t ulLength, const uint8_t *pucData) {
    return (int32_t)write(iFd, pucData, ulLength);
}

static void Log(uint32_t ulLevel, const char *pcFormat, va_list ap) {
    if (ulLevel <= g_ulLogLevel)
        vfprintf(stderr, pcFormat, ap);
}

void DRV_Common_Print(uint32_t ulLevel, const char *pcFormat, ...) {
    va_list ap;
    va_start(ap, pcFormat);
    Log(ulLevel, pcFormat, ap);
    va_end(ap);
}

void DRV_Common_Print_Cam(uint32_t ulLevel, const char *pcFormat, ...) {
    va_list ap;
    va_start(ap, pcFormat);
    Log(ulLevel, pcFormat, ap);
    va_end(ap);
}

uint32_t COMDRV_GetCamModuleType(void) {
    return g_ulModuleType;
}

uint32_t COMDRV_GetProductSubType(void) {
    return 0;
}

uint32_t COMDRV_GetManuinfo(ManuInfo *pstManuInfo) {
    memset(pstManuInfo, 0, sizeof(*pstManuInfo));
    return 0;
}

uint32_t COMDRV_GetCaller(void) {
    return 0;
}

uint32_t COMDRV_System(const char *pcCommand) {
    return system(pcCommand) == 0 ? 0 : 1;
}

uint32_t COMDRV_DBG_RegisterThreadInfo(uint32_t ulType, uint32_t ulThreadId, const char *pcName) {
    (void)ulType, (void)ulThreadId, (void)pcName;
    return 0;
}

static int Usage(void) {
    fprintf(stderr, "usage: minimal_host [-v] DEVICE [MODULE-TYPE]\n"
                    "Zooms in for a second and prints the zoom position. -v logs everything.\n");
    return 2;
}

int main(int argc, char **argv) {
    int iOption;
    while ((iOption = getopt(argc, argv, "v")) != -1) {
        if (iOption != 'v')
            return Usage();
        g_ulLogLevel = VISCA_LOG_VERBO;
    }
    if (argc - optind < 1 || argc - optind > 2)
        return Usage();
    g_pcDevice = argv[optind];
    if (argc - optind == 2)
        g_ulModuleType = (uint32_t)strtoul(argv[optind + 1], NULL, 0);

    if (OpenQueues() != 0) {
        perror("pipe");
        return 1;
    }
    VISCA_SetCamModuleType(g_ulModuleType);
    if (VISCA_Init(0) != VISCA_SUCCESS)
        return 1;
    if (!ViscaIsCamCanCtrl()) {
        fprintf(stderr, "no camera answers on %s\n", g_pcDevice);
        return 1;
    }

    VISCA_ZoomIn();
    sleep(1);
    VISCA_ZoomStop();
    ViscaWaitCmdQueueEmpty(10);

    uint32_t ulZoom = 0;
    if (VISCA_GetZoomPos(&ulZoom) != VISCA_SUCCESS)
        return 1;
    printf("zoom position 0x%04X\n", (unsigned)ulZoom); /* 0x0000 also when the camera stayed silent */
    return 0;
}
