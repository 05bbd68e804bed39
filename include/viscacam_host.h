/**
 * @file viscacam_host.h
 * What the process that loads libviscacam provides.
 *
 * The library leaves every function below undefined; the host process defines all of them, with C linkage and
 * under these names. Each may be called from any thread, several threads at once. None may call back into the
 * library. `host/` in the source tree implements all of them for Linux and is meant to be copied.
 *
 * Unless a comment says otherwise a result of 0 is success and any other value is failure.
 */
#ifndef VISCACAM_HOST_H
#define VISCACAM_HOST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @cond */
#if defined(__GNUC__)
#    define VISCACAM_HOST_PRINTF(fmt, first) __attribute__((format(printf, fmt, first)))
#else
#    define VISCACAM_HOST_PRINTF(fmt, first)
#endif
/** @endcond */

/** @name Queue numbers and the queue type
 * The library passes them, unchanged, to the queue services. Queue 2 is not used.
 * @{ */
#define VISCA_CMD_QUEUE_ID            0U  /**< commands on their way to the camera */
#define VISCA_CMD_RESULT_QUEUE_ID     1U  /**< what the camera answered to a command */
#define VISCA_INQUIRY_RESULT_QUEUE_ID 3U  /**< what the camera answered to an inquiry */
#define VISCA_QUEUE_TYPE              3U  /**< first argument of the queue services */
#define VISCA_QUEUE_ELEM_SIZE         20U /**< size of every queue element in bytes */
/** @} */

/** Flush mode of DRV_FlushCom: discard what was received and what still waits to be sent. */
#define VISCA_FLUSH_BOTH 2U

/** @name Log levels
 * A larger number is chattier.
 * @{ */
#define VISCA_LOG_ERROR 3U /**< something was not done */
#define VISCA_LOG_WARN  4U /**< something was done otherwise, or is out of the ordinary */
#define VISCA_LOG_INFO  6U /**< something was found out or changed */
#define VISCA_LOG_DEBUG 7U /**< what is called, and packet dumps */
#define VISCA_LOG_VERBO 8U /**< what is called often */
/** @} */

/** Serial parameters, 16 bytes. The library fills the fields without a stated meaning with fixed values. */
typedef struct {
    uint32_t ulParam0;   /**< always 1 */
    uint32_t ulParam1;   /**< always 3 */
    uint32_t ulBaudRate; /**< bits per second: 9600, 19200 or 38400 */
    uint8_t ucDataBits;  /**< always 8 */
    uint8_t ucStopBits;  /**< always 1 */
    uint8_t ucParam2;    /**< always 0 */
    uint8_t ucParam3;    /**< always 0 */
} DrvComParam;

/** Manufacturing information, 512 bytes. The library reads the device model only. */
typedef struct {
    uint8_t aucReserved0[128]; /**< not read */
    char szDeviceModel[64];    /**< device model, NUL-terminated text */
    uint8_t aucReserved1[320]; /**< not read */
} ManuInfo;

/** @name Message queues of 20-byte elements
 * A queue takes puts from any number of threads. Its descriptor is readable for select() exactly while an
 * element waits.
 * @{ */

/**
 * Append a copy of one element. Never blocks.
 * @param ulType    always VISCA_QUEUE_TYPE
 * @param ulQueueId queue number
 * @param pData     the element; copied before the call returns
 * @param ulLength  size of the element in bytes, always VISCA_QUEUE_ELEM_SIZE
 * @return 0; non-zero when the queue is full, whose elements then stay as they are
 */
uint32_t QUEUE_PutRawData(uint32_t ulType, uint32_t ulQueueId, const void *pData, uint32_t ulLength);

/**
 * Take the oldest element. Never blocks.
 * @param ulQueueId queue number
 * @param ppElem    receives a pointer to the element's 20 bytes, which stays the queue's and valid until the
 * next take from that queue; the library has one taker at a time for each queue
 * @return 0; non-zero at once when the queue is empty
 */
uint32_t QUEUE_GetSerialData(uint32_t ulQueueId, void **ppElem);

/**
 * Tell whether a queue is empty. Never blocks.
 * @param ulType    always VISCA_QUEUE_TYPE
 * @param ulQueueId queue number
 * @param pulFlag   receives 1 when the queue is empty, 0 when it is not
 * @return 0, or non-zero when there is no such queue
 */
uint32_t QUEUE_IsEmpty(uint32_t ulType, uint32_t ulQueueId, uint32_t *pulFlag);

/**
 * Tell a queue's descriptor, the same one for the life of the process.
 * @param ulType    always VISCA_QUEUE_TYPE
 * @param ulQueueId queue number
 * @param piFd      receives a descriptor that select() reports readable while an element waits; below
 * FD_SETSIZE. Only QUEUE_GetSerialData empties it, the library never reads from it
 * @return 0, or non-zero when there is no such queue
 */
uint32_t QUEUE_GetQueueReadFd(uint32_t ulType, uint32_t ulQueueId, int32_t *piFd);
/** @} */

/** @name Serial service
 * @{ */

/**
 * Open a serial port.
 * @param ulComPort port number; the host knows which device it is
 * @param piFd      receives a blocking descriptor, below FD_SETSIZE, that the library reads and selects;
 * while it searches the camera it makes it non-blocking. -1 or left alone on failure
 * @return 0, or non-zero when the port cannot be opened
 */
uint32_t DRV_OpenCom(uint32_t ulComPort, int32_t *piFd);

/**
 * Set rate and format of the port that was opened: 8 data bits, no parity, 1 stop bit, no flow control, raw.
 * @param ulType   always 0
 * @param pstParam the parameters
 * @return 0, or non-zero when the port refuses
 */
uint32_t DRV_SetComParam(uint32_t ulType, const DrvComParam *pstParam);

/**
 * Discard bytes that wait in the driver.
 * @param iFd    the port's descriptor
 * @param ulMode always VISCA_FLUSH_BOTH
 * @return 0, or non-zero when it failed; the library's probe then tries again every 100 ms, without end
 */
uint32_t DRV_FlushCom(int32_t iFd, uint32_t ulMode);

/**
 * Write bytes to the port. Blocks for a bounded time only: the library holds its send lock meanwhile.
 * @param iFd      the port's descriptor
 * @param ulLength number of bytes
 * @param pucData  the bytes
 * @return the number of bytes written; negative on failure. Anything but ulLength is a failure to the library
 */
int32_t DRV_ComSend(int32_t iFd, uint32_t ulLength, const uint8_t *pucData);
/** @} */

/** @name Logging
 * printf-style. Every format begins with the library's line prefix (time, file, function, line, level tag)
 * and ends with a newline. The host filters by level; it should return quickly, since the receiver thread
 * logs too.
 * @{ */

/** The general log. @param ulLevel one of the VISCA_LOG_* levels */
void DRV_Common_Print(uint32_t ulLevel, const char *pcFormat, ...) VISCACAM_HOST_PRINTF(2, 3);

/** The camera log: dumps of packets sent and received. @param ulLevel one of the VISCA_LOG_* levels */
void DRV_Common_Print_Cam(uint32_t ulLevel, const char *pcFormat, ...) VISCACAM_HOST_PRINTF(2, 3);
/** @} */

/** @name System services
 * @{ */

/** The type code of the attached camera module, the same that the host gives VISCA_SetCamModuleType(). May be
 * asked at any time and must be cheap. */
uint32_t COMDRV_GetCamModuleType(void);

/** The product's sub-type; 0x1001 is the product whose module is mounted upside down. */
uint32_t COMDRV_GetProductSubType(void);

/** Fill the manufacturing information. @return 0, or non-zero when there is none */
uint32_t COMDRV_GetManuinfo(ManuInfo *pstManuInfo);

/** Which program the host is; caller 2 never starts the Kova module's image-detection phase. */
uint32_t COMDRV_GetCaller(void);

/** Run a shell line to its end, as system(3) does. @return its exit status, 0 for success */
uint32_t COMDRV_System(const char *pcCommand);

/**
 * Register a thread of the library with the host's list of threads.
 * @param ulType     the library's number for the kind of thread: 3 receiver, 4 sender
 * @param ulThreadId kernel thread id
 * @param pcName     name, valid for the life of the process
 * @return not used by the library
 */
uint32_t COMDRV_DBG_RegisterThreadInfo(uint32_t ulType, uint32_t ulThreadId, const char *pcName);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
