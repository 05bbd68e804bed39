/**
 * @file viscacam.h
 * Camera control for VISCA zoom blocks on a serial port: what a host process calls.
 *
 * The host calls VISCA_SetCamModuleType(), then VISCA_Init() once; after that the VISCA_* functions. They are
 * the public layer. The layers below it are exported too, for hosts that test, trace or extend: SONY_* are
 * the driver's entry points, Sony* its primitives, Visca* the link. What the host provides in return stands
 * in viscacam_host.h.
 *
 * Results. Every uint32_t result is VISCA_SUCCESS, VISCA_FAILURE or VISCA_NULL_POINTER unless its comment
 * says otherwise. Success of a command means that it was queued, not that the camera obeyed: commands go out
 * one at a time, and what the camera answers to them is dropped. A command is refused (result 1) while the
 * camera cannot be controlled, while a module upgrade or a log export owns the line, and when the host's
 * queue is full.
 *
 * Waiting. Commands never wait for the line. Inquiries block their caller until the answer is there, at most
 * 6 s beyond the inquiries of other threads that are in front; an inquiry that times out is a success whose
 * value reads as zero. An answer that comes after its time-out is taken by the next inquiry as its own, and
 * every later one is shifted until the host empties VISCA_INQUIRY_RESULT_QUEUE_ID or an answer is lost. What
 * is still queued when the process ends is lost: wait with ViscaWaitCmdQueueEmpty(); empty means taken, not
 * yet obeyed.
 *
 * Threads. Every function may be called from any thread after VISCA_Init() has returned, unless its comment
 * says otherwise. The image calls (exposure, white balance, picture, day/night, defog, and VISCA_SetVin(),
 * which forgets what they sent) must not run side by side; a report callback that applies a profile counts as
 * one of them. None may be called from a signal handler. There is no shut-down: the library's threads live as
 * long as the process, and what was set in the camera stays set when the process ends.
 *
 * Pointers. A pointer marked nonnull must not be NULL and is not tested. Nothing that is passed in is kept
 * after the call.
 */
#ifndef VISCACAM_H
#define VISCACAM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Version of the release, first number. */
#define VISCACAM_VERSION_MAJOR 0
/** Version of the release, second number. */
#define VISCACAM_VERSION_MINOR 1
/** Version of the release, third number. */
#define VISCACAM_VERSION_PATCH 0

/** @cond */
#if defined(__GNUC__)
#    define VISCACAM_API          __attribute__((visibility("default")))
#    define VISCACAM_NONNULL(...) __attribute__((nonnull(__VA_ARGS__)))
#else
#    define VISCACAM_API
#    define VISCACAM_NONNULL(...)
#endif
/** @endcond */

/** @name Result codes
 * @{ */
#define VISCA_SUCCESS      0U /**< done, or queued */
#define VISCA_FAILURE      1U /**< refused or failed; the log says why */
#define VISCA_NULL_POINTER 2U /**< a pointer argument was NULL */
/** @} */

/** A packet, 20 bytes: the element of every queue and the reply record of an inquiry. */
typedef struct {
    uint8_t aucData[16]; /**< bytes in wire order; byte 0 is the header (0x81, 0x71) or, in a reply, the
                            address (0x90) */
    uint32_t ulLength;   /**< number of valid bytes, 0 to 16 */
} ViscaPkt;

/** What a host wants the camera to put out, 12 bytes. */
typedef struct {
    uint32_t ulWidth;     /**< pixels */
    uint32_t ulHeight;    /**< lines */
    uint32_t ulFrameRate; /**< frames per second */
} VideoNormParam;

/** Identity of the camera, 96 bytes; NUL-terminated texts. */
typedef struct {
    char szVendor[32];   /**< maker */
    char szModel[32];    /**< model */
    char szFirmware[32]; /**< firmware version, hexadecimal */
} CameraInfo;

/** What a host wants of the exposure: 22 words, 88 bytes. */
typedef struct {
    uint32_t ulExposureMode; /**< 0 automatic, 1 automatic within ranges (Kova), 2 shutter priority, 3 iris
                                priority, 4 fixed gain (Kova), 5 and 6 further modes of the Kova module, 7
                                manual */
    int32_t lExpCompValue;   /**< exposure compensation, -100 to 100 */
    uint32_t ulIris;         /**< F-number times 100, 99999 closed */
    uint32_t ulShutter;      /**< N of 1/N s */
    uint32_t ulGain;         /**< set: dB, 0 to 29 (Sony), or 0 to 100 (Kova); get: thousandths of a dB */
    uint32_t ulReserved5;    /**< not read */
    uint32_t ulReserved6;    /**< not read */
    uint32_t ulSlowShutter;  /**< one bound of the shutter range, N of 1/N s */
    uint32_t ulFastShutter;  /**< the other bound */
    uint32_t ulMaxGain;      /**< upper bound of the gain range, 0 to 100 */
    uint32_t ulMinGain;      /**< lower bound of the gain range, 0 to 100 */
    uint32_t bIsAutoSlowShutter; /**< 1 on, 0 off */
    uint32_t ulMaxSlowShutter;   /**< limit of the automatic slow shutter, N of 1/N s */
    uint32_t ulWdr;              /**< wide dynamic range: 0 off, 1 on, 2 automatic */
    uint32_t ulWdrLevel;         /**< 0 to 9 */
    uint32_t ulMeteringMode;     /**< 0 average, 1 spot, 2 a further mode of the Kova module */
    uint32_t TopX;               /**< spot rectangle, 0 to 100 hundredths of the picture */
    uint32_t TopY;               /**< spot rectangle, 0 to 100 hundredths of the picture */
    uint32_t BotX;               /**< spot rectangle, 0 to 100 hundredths of the picture */
    uint32_t BotY;               /**< spot rectangle, 0 to 100 hundredths of the picture */
    uint32_t ulBlackWhiteMode;   /**< 0 leave as it is, 1 colour, 2 black-and-white; Sony blocks only */
    uint32_t ulReserved21;       /**< not read */
} ExposureParam;

/** White balance, 12 bytes. */
typedef struct {
    uint32_t ulWbMode;   /**< 0 and 3 auto tracing, 1 manual, 2 auto, 6 sodium vapour lamp; any other value is
                            taken as 0 */
    int32_t lBlueOffset; /**< -127 to 127; the low 16 bits count */
    int32_t lRedOffset;  /**< -127 to 127; the low 16 bits count */
} WhiteBalanceParam;

/** Picture controls, each 0 to 255, 32 bytes. */
typedef struct {
    uint32_t ulBrightness; /**< Kova modules only */
    uint32_t ulContrast;   /**< Kova modules only */
    uint32_t ulSaturation; /**< colour */
    uint32_t ulReserved3;  /**< not read */
    uint32_t ulReserved4;  /**< not read */
    uint32_t ulSharpness;  /**< edges */
    uint32_t ulDenoise2D;  /**< Kova modules only */
    uint32_t ulDenoise3D;  /**< noise reduction over several pictures */
} ImageEnhanceParam;

/** Settings that were asked for while the Kova module's image detection runs, kept until it ends. 16 bytes.
 */
typedef struct {
    int32_t lBlackWhiteMode; /**< day/night mode, -1 for none */
    int32_t lWbMode;         /**< white-balance mode, -1 for none */
    int32_t lBlueOffset;     /**< blue offset, where lWbMode is not -1 */
    int32_t lRedOffset;      /**< red offset, where lWbMode is not -1 */
} ImgDetectParam;

/** A message of the host. aucMsgData is as long as the host makes it; 8 bytes are the least. 32 bytes. */
typedef struct {
    uint32_t ulMsgType;    /**< 0 get, 1 set */
    uint32_t ulMsgCmd;     /**< set: 30 defog, 2 image-tuning debug, 31 nothing; get: 34 focus value */
    uint32_t ulMsgChannel; /**< channel; for the image-tuning debug command the item */
    uint32_t ulReserved0;  /**< passed through */
    uint32_t ulReserved1;  /**< not used */
    uint32_t ulMsgLen;     /**< length of the data in bytes */
    uint8_t aucMsgData[8]; /**< command 30: two 32-bit words, defog mode and sensitivity; command 2: the value
                              in the first byte; command 34: receives up to 5 bytes */
} DrvMsgInfo;

/** Told on the receiver thread that the zoom or the focus began (1) or ceased (0) to move. Replies wait until
 * it returns; it may queue commands, but not ask inquiries, whose answers would wait for it. */
typedef void (*ViscaStatusCallback)(uint32_t ulActive);

/** Told on the receiver thread that the module wants its image parameters set again. The same holds for it.
 */
typedef void (*ViscaReconfigCallback)(void);

/** Told on the upgrade's thread how it went: 0 the module runs the new files, or needed none; 1 failed.
 * Called once for each upgrade that was started. */
typedef void (*KovaUpgradeCallback)(uint32_t ulResult);

/** @name Exported globals
 * Words that the library and the host share without a lock.
 * @{ */

/** Callbacks for reports, NULL for none. Set them by the functions below, which also switch the module's
 * reports. A callback that is replaced may be called once more by a report that is being handled. */
extern VISCACAM_API ViscaStatusCallback gpfnReportZoomStatus;
extern VISCACAM_API ViscaStatusCallback gpfnReportFocusStatus;      /**< see gpfnReportZoomStatus */
extern VISCACAM_API ViscaReconfigCallback gpfnReconfigKovaImgParam; /**< see gpfnReportZoomStatus */

/** The files of the upgrade that was started, a bit each: 0 uImage, 1 program, 10 patch; 0 when none was. Set
 * by KOVA_UpdateKova(); the host clears it before a further upgrade. */
extern VISCACAM_API uint32_t gulUpdateFileforKova;

/** Requests held back during the Kova module's image detection. Written by the library. */
extern VISCACAM_API ImgDetectParam gstImgDetectParam;
/** @} */

/** @name Public layer
 * Each function looks at the module type and forwards its arguments to the driver of that family. For a
 * module of another family, and before VISCA_SetCamModuleType(), it does nothing and returns 0 unless its
 * comment says otherwise. The Sony family is (type & 0xFF000000) == 0x02000000, Kova modules included.
 * @{ */

/**
 * Bring the camera up: open the port, find the baud rate, start the threads, put the camera into its working
 * state. Call once. Blocks while the camera is searched: about 1 s when it answers at once, up to a minute
 * and a quarter when there is none. On a Kova module it then asks for capabilities and versions (up to 6 s
 * for each inquiry that is not answered) and sets the orientation, which may take a power cycle: 4 s, and
 * without a bound while the module stays off. A port that cannot be opened and a camera that does not answer
 * are logged and are no failure; ViscaIsCamCanCtrl() then is not 1. For a module outside the Sony family only
 * port 0 is opened and probed, whatever the argument, and the result is 0.
 * @param ulComPort port number of the host's serial service
 * @return 0; 1 when the threads could not be started
 */
VISCACAM_API uint32_t VISCA_Init(uint32_t ulComPort);

/**
 * Tell the public layer which module is attached. Call before VISCA_Init() and before other threads use the
 * library.
 * @param ulCamModType type code, the same that the host's COMDRV_GetCamModuleType() answers: 0x02000001,
 * 0x02000003, 0x02000004 and 0x02000005 are Sony blocks, 0x02012000 to 0x02012FFF Kova modules, of which
 * 0x02012A00 to 0x02012AFF are the second generation; 0xFFFFFFFF (also the value at load) means unset
 * @return 0
 */
VISCACAM_API uint32_t VISCA_SetCamModuleType(uint32_t ulCamModType);

/**
 * Tell whether every queued command has been taken by the sender. Waits for an inquiry that is under way (up
 * to 6 s).
 * @return 1 when the command queue is empty, 0 when it is not; 1 for a module outside the Sony family
 */
VISCACAM_API uint32_t VISCA_IsMsgQueueEmpty(void);

/**
 * Hand a message of the host to the driver. Blocks as the messages that ask the camera do (at most 6 s).
 * @param pstMsgInfo the message; a get message is answered in it
 * @return 0; 1 for NULL, an unknown message type, or a get that failed. Failures of set messages are logged
 * only
 */
VISCACAM_API uint32_t VISCA_MessageProcess(DrvMsgInfo *pstMsgInfo);

/**
 * Set the video norm. A camera that is in it already is left alone; else it is switched off or reset,
 * its registers are written, and once it is on again the image settings are forgotten. Blocks meanwhile:
 * seconds, without a bound while the camera stays off.
 *
 * On a Kova module the first successful call of a process also starts the module's image detection, unless
 * the host is caller 2: it blocks 3 s more, and from then on day/night and white-balance requests are held
 * back until KOVA_ResumeDetectImgParam().
 * @param pstVideoNorm the norm; which ones there are depends on the module
 * @return 0; 1 for NULL, an unknown module or norm, and when a step failed (the camera then stays as far as
 * it got)
 */
VISCACAM_API uint32_t VISCA_SetVin(const VideoNormParam *pstVideoNorm);

/**
 * Read the camera's identity, whatever the module type. Blocks for the answer, at most 6 s.
 * @param ulChannelID   logged only
 * @param pstCameraInfo receives the texts; unknown identifiers are written as numbers
 * @return 0, or 1 when the inquiry was refused or failed
 */
VISCACAM_API uint32_t VISCA_GetCamInfo(uint32_t ulChannelID, CameraInfo *pstCameraInfo) VISCACAM_NONNULL(2);

/**
 * Apply an exposure profile: what differs from what was sent before (a spot position, and the dome type of a
 * second-generation Kova module, always), in a fixed order, stopping at the first command that cannot be
 * queued. Values that the camera does not have are logged and passed over.
 * @param ulChannelID logged only
 * @param ulImageType 0; others are refused
 * @param pstExposure the profile; kept for VISCA_GetExposureCfg() even when it is refused
 * @return 0; 1 when something was not queued, for another image type, and for a bIsAutoSlowShutter above 1
 * where the mode heeds it
 */
VISCACAM_API uint32_t VISCA_SetExposure(uint32_t ulChannelID, uint32_t ulImageType,
                                        const ExposureParam *pstExposure) VISCACAM_NONNULL(3);

/**
 * Read the current gain into ulGain (thousandths of a dB); no other field is written. Blocks for the answer,
 * at most 6 s.
 * @param ulChannelID logged only
 * @param ulImageType 0; others are refused
 * @param pstExposure receives the gain
 * @return 0; 1 when the inquiry was refused or failed, or for another image type
 */
VISCACAM_API uint32_t VISCA_GetExposure(uint32_t ulChannelID, uint32_t ulImageType,
                                        ExposureParam *pstExposure) VISCACAM_NONNULL(3);

/** Copy the exposure profile that was offered last, valid or not. @param pstExposure receives it @return 0 */
VISCACAM_API uint32_t VISCA_GetExposureCfg(ExposureParam *pstExposure) VISCACAM_NONNULL(1);

/**
 * Apply white balance.
 * @param ulChannelID not used
 * @param ulImageType 0; others are refused
 * @param pstWb       the mode, and the offsets of the manual mode. Held back while the Kova module's image
 * detection runs, see VISCA_SetVin()
 * @return 0, or 1 when something was not queued, or for another image type
 */
VISCACAM_API uint32_t VISCA_SetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType,
                                            const WhiteBalanceParam *pstWb) VISCACAM_NONNULL(3);

/** Read the offsets that were applied last; ulWbMode is left as it is, and the camera is not asked. @return 0
 */
VISCACAM_API uint32_t VISCA_GetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType,
                                            WhiteBalanceParam *pstWb) VISCACAM_NONNULL(3);

/** Read the current gain. Blocks for the answer, at most 6 s. @param ulChannelID not used @param pulGain
 * receives dB; 0 on failure
 * @return 0, or 1 when the inquiry was refused or failed */
VISCACAM_API uint32_t VISCA_GetGain(uint32_t ulChannelID, uint32_t *pulGain) VISCACAM_NONNULL(2);

/**
 * Apply picture controls: what differs from what was sent before, stopping at the first command that cannot
 * be queued. Values above 255 are limited, with a log line.
 * @param ulChannelID not used
 * @param ulImageType 0; others are refused
 * @param pstEnhance  the controls
 * @return 0, or 1 when something was not queued, or for another image type
 */
VISCACAM_API uint32_t VISCA_SetImageEnhance(uint32_t ulChannelID, uint32_t ulImageType,
                                            const ImageEnhanceParam *pstEnhance) VISCACAM_NONNULL(3);

/**
 * Apply a variable function. Only ulMsgCmd 30 (defog: mode and sensitivity in the data) does something.
 * @param ulChannelID not used
 * @param ulVarFnType not used
 * @param pstMsgInfo  the message
 * @return 0, or 1 when something was not queued
 */
VISCACAM_API uint32_t VISCA_SetImageVarFn(uint32_t ulChannelID, uint32_t ulVarFnType, DrvMsgInfo *pstMsgInfo)
    VISCACAM_NONNULL(3);

/** Does nothing for every module. @return 0 */
VISCACAM_API uint32_t VISCA_GetImageVarFn(uint32_t ulChannelID, uint32_t ulVarFnType, DrvMsgInfo *pstMsgInfo);

/**
 * Switch between day and night.
 * @param ulChannelID      logged only
 * @param ulBlackWhiteMode 0 the camera decides, 1 colour, 2 black-and-white; others are logged and change
 * nothing. Held back while the Kova module's image detection runs, see VISCA_SetVin()
 * @return 0, or 1 when something was not queued
 */
VISCACAM_API uint32_t VISCA_SetBlackWhiteMode(uint32_t ulChannelID, uint32_t ulBlackWhiteMode);

/** Read the day/night mode that was set last; the camera is not asked. @param pulBlackWhiteMode receives 1 or
 * 2
 * @return 0; 1 for NULL, and when the mode is automatic or unknown */
VISCACAM_API uint32_t VISCA_GetBlackWhiteMode(uint32_t *pulBlackWhiteMode);

/** Drive the zoom towards tele at the start-up speed, until VISCA_ZoomStop(). @return 0, or 1 when it was not
 * queued */
VISCACAM_API uint32_t VISCA_ZoomIn(void);
/** Drive the zoom towards wide at the start-up speed, until VISCA_ZoomStop(). @return 0, or 1 when it was not
 * queued */
VISCACAM_API uint32_t VISCA_ZoomOut(void);
/** Stop the zoom drive. @return 0, or 1 when it was not queued */
VISCACAM_API uint32_t VISCA_ZoomStop(void);
/** Drive the focus nearer, until VISCA_FocusStop(). Cameras obey in manual focus only. @return 0, or 1 when
 * it was not queued */
VISCACAM_API uint32_t VISCA_FocusNear(void);
/** Drive the focus farther, until VISCA_FocusStop(). Cameras obey in manual focus only. @return 0, or 1 when
 * it was not queued */
VISCACAM_API uint32_t VISCA_FocusFar(void);
/** Stop the focus drive. @return 0, or 1 when it was not queued */
VISCACAM_API uint32_t VISCA_FocusStop(void);

/**
 * Read the zoom position. Blocks for the answer, at most 6 s.
 * @param psZoom receives the position in the camera's units, 0 wide, 16 bits (a damaged answer can give
 * more); 0 when the camera did not answer
 * @return 0; 1 when the inquiry was refused or failed; 2 when psZoom is NULL, whatever the module
 */
VISCACAM_API uint32_t VISCA_GetZoomPos(uint32_t *psZoom);

/**
 * Read the focus position. Blocks for the answer, at most 6 s.
 * @param psFocus receives the position's 16 bits in the camera's units; 0 when the camera did not answer
 * @return 0; 1 when the inquiry was refused or failed; 2 when psFocus is NULL
 */
VISCACAM_API uint32_t VISCA_GetFocusPos(int16_t *psFocus);

/**
 * Drive the zoom to a position. A full travel takes seconds; the call does not wait for it.
 * @param sZoomPos position in the camera's units; the low 16 bits count
 * @return 0, or 1 when it was not queued
 */
VISCACAM_API uint32_t VISCA_SetZoomPos(int32_t sZoomPos);

/**
 * Drive zoom and focus to positions with one command.
 * @param sZoomPos  zoom position in the camera's units; the low 16 bits count
 * @param sFocusPos focus position in the camera's units; the low 16 bits count
 * @return 0, or 1 when it was not queued
 */
VISCACAM_API uint32_t VISCA_SetZoomFocusPos(int32_t sZoomPos, int32_t sFocusPos);

/**
 * Write one of the two zoom-cut registers.
 * @param ulSelect 0 for register 0x50, 1 for register 0x51; any other value does nothing and succeeds
 * @param ulValue  register value; the low 8 bits count
 * @return 0, or 1 when it was not queued
 */
VISCACAM_API uint32_t VISCA_SetZoomCut(uint32_t ulSelect, uint32_t ulValue);

/** Send the camera's own zoom-focus return command (81 01 04 BA FF). @return 0, or 1 when it was not queued
 */
VISCACAM_API uint32_t VISCA_RetSetZoomFocus(void);

/** Switch auto focus. @param bIsEnable 1 auto, any other value manual. @return 0, or 1 when it was not queued
 */
VISCACAM_API uint32_t VISCA_EnableAF(uint32_t bIsEnable);

/**
 * Choose the focus mode.
 * @param ulFocusMode 1 auto, 0 manual, any other value the camera's third mode
 * @return 0, or 1 when it was not queued
 */
VISCACAM_API uint32_t VISCA_SetFocusMode(uint32_t ulFocusMode);

/** Choose the auto-focus mode. @param ulType the camera's mode number; the low 8 bits count @return 0, or 1
 * when it was not queued */
VISCACAM_API uint32_t VISCA_SetAFType(uint32_t ulType);

/**
 * Choose how close the camera focuses, and let it focus again.
 * @param ulFocusNearLimit millimetres: 100, 1000, 3000 or 10000; any other value takes the module's default,
 * with a log line
 * @return 0; 1 for a module without such a table, or when something was not queued
 */
VISCACAM_API uint32_t VISCA_SetFocusMinLen(uint32_t ulFocusNearLimit);

/** Infrared focus correction. @param bIrCurve 0 or 1; any other value is refused @return 0, or 1 when refused
 * or not queued */
VISCACAM_API uint32_t VISCA_EnableIrCurve(uint32_t bIrCurve);

/**
 * Focus once. Sony blocks know no arguments.
 * @param ulTrigType Kova: 0 plain, 6 to 9 the module's own kinds, 10 on a point, 11 in a rectangle; others
 * are refused
 * @param pulParam   Kova: two words for 10, four for 11, the low 16 bits of each; else not read
 * @return 0, or 1 when refused or not queued
 */
VISCACAM_API uint32_t VISCA_OnePushAutoFocus(uint32_t ulTrigType, const uint32_t *pulParam);
/** @} */

/** @name Public layer: Kova modules
 * As above, for (type & 0xFFFFF000) == 0x02012000. Inquiries block for the answer, at most 6 s each.
 * @{ */

/** Read the picture's brightness. @param ulChannelID logged only @param plLuma receives it, 0 for another
 * module; may be NULL
 * @return 0, or 1 when the inquiry was refused or failed */
VISCACAM_API uint32_t VISCA_KOVA_GetCurLuma(uint32_t ulChannelID, int32_t *plLuma);
/** Choose the scene. @param ulSceneType 0 to 8, 80 or 81; others are refused @return 0, or 1 when refused or
 * not queued */
VISCACAM_API uint32_t VISCA_KOVA_SetSceneInfo(uint32_t ulSceneType);
/** Set a report callback and switch the module's reports. @param ulSigType 0 zoom, 1 focus @param fCallBack
 * NULL switches them off
 * @return 0; 1 when not queued, the old callback then stays; 2 for another ulSigType */
VISCACAM_API uint32_t VISCA_KOVA_SetSigCallback(uint32_t ulSigType, ViscaStatusCallback fCallBack);
/** Read the encoder's software version. @param pcVer receives 16 bytes, NUL-padded @return 0, or 1 when
 * refused or failed */
VISCACAM_API uint32_t VISCA_KOVA_GetSoftVer(char *pcVer) VISCACAM_NONNULL(1);
/** Read version and type of the encoder board. @param pulVer receives the version @param pulType receives the
 * type
 * @return 0; 1 when the inquiry was refused or failed, the outputs then stay */
VISCACAM_API uint32_t VISCA_KOVA_GetEncBoardVerType(uint32_t *pulVer, uint32_t *pulType)
    VISCACAM_NONNULL(1, 2);
/** The same of the sensor board. */
VISCACAM_API uint32_t VISCA_KOVA_GetSensorBoardVerType(uint32_t *pulVer, uint32_t *pulType)
    VISCACAM_NONNULL(1, 2);
/** The same of the motor board. */
VISCACAM_API uint32_t VISCA_KOVA_GetMotorBoardVerType(uint32_t *pulVer, uint32_t *pulType)
    VISCACAM_NONNULL(1, 2);
/** Read the temperature. @param ulChannelID logged only @param plTemperature receives degrees Celsius, -127
 * to 128; -127 when the module did not answer @return 0; 1 when the inquiry was refused or failed, the output
 * then stays */
VISCACAM_API uint32_t VISCA_KOVA_GetTemperature(uint32_t ulChannelID, int32_t *plTemperature)
    VISCACAM_NONNULL(2);
/** Switch the IR cut filter. @param bIsEnable 1 on, any other value off @return 0, or 1 when it was not
 * queued */
VISCACAM_API uint32_t VISCA_KOVA_SetIRcut(int32_t bIsEnable);
/** Read stamp and program version; for the whole Sony family. @param pcBuf receives the text, 114 bytes; NULL
 * does nothing
 * @return 0, or 1 when the version could not be read (pcBuf then holds no terminated text) */
VISCACAM_API uint32_t VISCA_KOVA_GetCamVer(char *pcBuf);
/** Read the extension version. @param pcExtVer receives the text, 100 bytes
 * @return 0; 1 when it could not be read, for NULL, and for another module */
VISCACAM_API uint32_t VISCA_KOVA_GetExtVer(char *pcExtVer);
/** Test the module's capabilities. @param ulMask bits @return 1 when all are set, else 0; 0 for another
 * module */
VISCACAM_API uint32_t VISCA_KOVA_HasCamAbility(uint32_t ulMask);
/** Let the module save its log. @return 0, or 1 when the packet could not be written */
VISCACAM_API uint32_t VISCA_KOVA_Savelog(void);
/** @} */

/** @name The link: packets and the command queue
 * @{ */

/** Start a packet with the header of camera 1 (0x81): one byte, the others left as they were. @return 0 */
VISCACAM_API uint32_t ViscaInitPkt(ViscaPkt *pstPkt) VISCACAM_NONNULL(1);

/** Start a packet with the header of the Kova module's own inquiries (0x71). @return 0 */
VISCACAM_API uint32_t ViscaInitPkt4Kova(ViscaPkt *pstPkt) VISCACAM_NONNULL(1);

/** Append a byte. A packet that already holds 16 stays as it is, with a log line. @param ucByte the byte
 * @param pstPkt the packet */
VISCACAM_API void ViscaAppendByte(uint8_t ucByte, ViscaPkt *pstPkt) VISCACAM_NONNULL(2);

/**
 * Queue a command (header, 0x01, ...). Appends the terminator 0xFF to the caller's packet, which is copied.
 * Never blocks.
 * @param pstQueueElem the packet without terminator. One that already holds 16 bytes is queued without, with
 * a log line
 * @return 0 queued; 1 the camera cannot be controlled, an upgrade or log export owns the line, or the queue
 * is full; 2 NULL
 */
VISCACAM_API uint32_t ViscaEnQueueCmd(ViscaPkt *pstQueueElem);

/** Tell whether the command queue is empty. Waits for an inquiry under way (up to 6 s). @return 1 empty, 0
 * not, or not known */
VISCACAM_API uint32_t ViscaIsCmdQueueEmpty(void);

/**
 * Wait until the command queue is empty, looking every 100 ms.
 * @param ulWaitTime limit in seconds. A queue found empty at the very last look counts as late, so 0 always
 * gives 1
 * @return 0 empty in time, 1 time-out
 */
VISCACAM_API uint32_t ViscaWaitCmdQueueEmpty(uint32_t ulWaitTime);

/** Dump a packet to the camera log. @param pstPkt the packet @param ulDirection 1 sent, any other value
 * received */
VISCACAM_API void ViscaPrintPkt(const ViscaPkt *pstPkt, uint32_t ulDirection) VISCACAM_NONNULL(1);
/** @} */

/** @name The link: serial port and flags
 * @{ */

/**
 * Open the port and find the camera's baud rate, in up to 20 attempts of three rates each. Call once, before
 * ViscaStartMsgProc(); once a port is open, further calls do nothing and return 0. Blocks about 1 s when a
 * camera answers, 50 s and more when none does.
 * @param ulComPort port number of the host's serial service
 * @return 0; 1 when the port could not be opened or no camera answered (the port then stays open, and every
 * command is refused)
 */
VISCACAM_API uint32_t ViscaCamComInit(uint32_t ulComPort);

/**
 * Look for the camera at 9600, 19200 and 38400 bit/s, once each. The rate that answers stays set. Blocks up
 * to about 2.7 s, longer only while the host's flush fails. Must not run beside the receiver thread.
 * @param iFd descriptor of the open port
 * @return 0 when a rate answered, else 1
 */
VISCACAM_API uint32_t AdaptCamComBaudRate(int32_t iFd);

/**
 * Write bytes to the port, as they are. Blocks as long as the host's DRV_ComSend does; one caller at a time.
 * @param ulLength number of bytes
 * @param pucData  the bytes
 * @return 0; 1 for a length of 0 or when not all bytes were written; 2 when pucData is NULL
 */
VISCACAM_API uint32_t ViscaCamComSend(uint32_t ulLength, const uint8_t *pucData);

/** Flush the port. @param ulMode VISCA_FLUSH_BOTH @return what the host's DRV_FlushCom returned */
VISCACAM_API uint32_t ViscaCamComFlush(uint32_t ulMode);

/** Store the port's descriptor. The receiver thread reads it once, when it starts. @param iFd descriptor, or
 * -1 for none */
VISCACAM_API void ViscaSetCamComFd(int32_t iFd);
/** The port's descriptor. @return the descriptor, -1 before ViscaCamComInit() opened it */
VISCACAM_API int32_t ViscaGetCamComFd(void);

/** Store the can-control flag. @param ulFlag 1 when the camera answers; any other value refuses commands and
 * inquiries */
VISCACAM_API void ViscaSetCamCanCtrl(uint32_t ulFlag);
/** The can-control flag as it was stored. */
VISCACAM_API uint32_t ViscaIsCamCanCtrl(void);
/** Store the updating flag. @param ulFlag 1 while a module upgrade owns the line */
VISCACAM_API void ViscaMarkUpdatingCam(uint32_t ulFlag);
/** The updating flag as it was stored. */
VISCACAM_API uint32_t ViscaIsUpdatingCam(void);
/** Store the export-log flag. @param ulFlag 1 while a log export owns the line */
VISCACAM_API void ViscaMarkExportLog(uint32_t ulFlag);
/** The export-log flag as it was stored. */
VISCACAM_API uint32_t ViscaIsExportLog(void);

/** Tell whether an upgrade or a log export owns the line. @return 1 when the updating or the export-log flag
 * is 1, else 0 */
VISCACAM_API uint32_t ViscaIsCamComBusy(void);
/** @} */

/** @name The link: threads and inquiries
 * @{ */

/** Start the sender and the receiver thread. There is no guard: each call starts two more. @return 0, or 1
 * when one did not start */
VISCACAM_API uint32_t ViscaStartMsgProc(void);

/** Body of the sender thread: sends queued commands one at a time. Never returns while its queue exists.
 * @param pArg not used */
VISCACAM_API void *ViscaQueueMsgProc(void *pArg);

/** Take one command from the queue and write it. For the sender thread. @return 0 when one was written, else
 * 1 */
VISCACAM_API uint32_t ViscaSendOneCmd(void);

/** Wait up to 2 s for the result of the command just sent, and drop it. For the sender thread. */
VISCACAM_API void ViscaDropOneCmdAck(void);

/** Body of the receiver thread: reads, cuts and routes everything that the camera sends. Never returns.
 * @param pArg not used */
VISCACAM_API void *ViscaAckMsgProc(void *pArg);

/** Read and handle one reply, or one run of junk, from the port. For the receiver thread. Blocks until a
 * first byte is there. */
VISCACAM_API void ViscaDealOneAck(void);

/**
 * Ask the camera and wait for the answer: at most 6 s, after the inquiries of other threads that are in
 * front. There is no retry, and an answer that arrives after the time-out is taken by the next inquiry as its
 * own.
 * @param pstPkt   inquiry (header, 0x09, ...) without terminator; 0xFF is appended to it
 * @param pstReply receives the whole reply (data from byte 2). Zero it first: a time-out leaves it untouched
 * @return 0 answered, or timed out; 1 refused, not sent, or answered by an error
 */
VISCACAM_API uint32_t ViscaInquiry(ViscaPkt *pstPkt, ViscaPkt *pstReply) VISCACAM_NONNULL(1, 2);

/** Start the thread that follows /tmp/testaf.txt and sends its new lines to a Kova module as AF debug
 * packets. Start-up calls it.
 * @return 0, or 1 when it did not start */
VISCACAM_API uint32_t AF_Debug_Init(void);
/** Body of the AF debug thread. Never returns. @param pArg not used */
VISCACAM_API void *AF_Debug(void *pArg);
/** Read and log an AF debug answer, whose mark 0x66 has been read. For the receiver thread. Blocks for 1 s at
 * most between two bytes. */
VISCACAM_API void AF_DebugAck(void);
/** @} */

/** @name Driver: start-up
 * @{ */

/**
 * Open the port, start the threads, set the camera's environment up. Call once; VISCA_Init() does. Blocks as
 * VISCA_Init() does.
 * @param ulComPort port number of the host's serial service
 * @return 0; 1 when the threads could not be started
 */
VISCACAM_API uint32_t SONY_Init(uint32_t ulComPort);

/** Run the three start-up steps below, whatever their results. @param ulCamModType module type code @return 0
 */
VISCACAM_API uint32_t SonyInitCamEnv(uint32_t ulCamModType);
/** Start-up of the module's services. Nothing for Sony blocks; for a Kova module see VISCA_Init() for how
 * long it blocks. @param ulCamModType module type code @return 0
 */
VISCACAM_API uint32_t SonyInitCamMisc(uint32_t ulCamModType);
/** Forget what was sent of image settings, so that the next profile goes out whole. @param ulCamModType not
 * used @return 0 */
VISCACAM_API uint32_t SonyInitCamIMG(uint32_t ulCamModType);
/**
 * Choose the lens speeds and, on the Sony blocks 0x02000001, 3, 4 and 5, switch digital zoom off.
 * @param ulCamModType module type code
 * @return 0, or 1 when the command could not be queued
 */
VISCACAM_API uint32_t SonyInitCamAF(uint32_t ulCamModType);
/**
 * Restore what a power cycle took from the camera: forgets the image settings, digital zoom off on the Sony
 * blocks of SonyInitCamAF().
 * @param ulCamModType module type code
 * @return 0, or 1 when the command could not be queued
 */
VISCACAM_API uint32_t SonyRestoreCamEnv(uint32_t ulCamModType);
/** Forget what was sent of image settings. Must not run beside an image call. */
VISCACAM_API void SonyInitVar4IMG(void);
/** @} */

/** @name Driver: power and registers
 * @{ */

/** Switch the camera. @param bPowerOn 1 on, any other value standby @return what ViscaEnQueueCmd() returned
 */
VISCACAM_API uint32_t SonySetPower(uint32_t bPowerOn);
/** Reset the camera (camera initialise). @return what ViscaEnQueueCmd() returned */
VISCACAM_API uint32_t SonyResetCam(void);

/**
 * Wait until the camera reports that it is on, asking every 100 ms. There is no bound: it waits for as long
 * as the camera stays off or silent.
 * @return 0 on; 1 when an inquiry was refused or answered by an error
 */
VISCACAM_API uint32_t SonyWaitPowerOn(void);

/**
 * Read a register. Blocks for the answer, at most 6 s.
 * @param ucRegisterNo   0x00 to 0x7F
 * @param pucRegisterVal receives the value; 0 on failure and when the camera did not answer
 * @return 0; 1 for a register above 0x7F, or when the inquiry was refused or failed
 */
VISCACAM_API uint32_t SonyGetRegisterVal(uint8_t ucRegisterNo, uint8_t *pucRegisterVal) VISCACAM_NONNULL(2);

/**
 * Write a register.
 * @param ucRegisterNo  0x00 to 0x7F
 * @param ucRegisterVal value. Registers 0x56, 0x72 and 0x73 take effect at the next power-on or reset
 * @return 0; 1 for a register above 0x7F or when it was not queued
 */
VISCACAM_API uint32_t SonySetRegisterVal(uint8_t ucRegisterNo, uint8_t ucRegisterVal);
/** @} */

/** @name Driver: video norm, orientation, identity
 * @{ */
VISCACAM_API uint32_t SONY_SetVin(const VideoNormParam *pstVideoNorm); /**< see VISCA_SetVin() */
/** Read the mirror setting. Blocks for the answer, at most 6 s. @param pbSet receives 1 mirrored, 0 not
 * @return 0; 1 when the inquiry was refused or failed; 2 for NULL */
VISCACAM_API uint32_t SonyGetMirrorMode(uint32_t *pbSet);
/** Read the flip setting. Blocks for the answer, at most 6 s. @param pbSet receives 1 flipped, 0 not
 * @return 0; 1 when the inquiry was refused or failed; 2 for NULL */
VISCACAM_API uint32_t SonyGetFlipMode(uint32_t *pbSet);
/** Set mirror and flip. @param ulReverseMode 0 neither, 1 both, 2 mirror, 3 flip; others are refused
 * @return 0, or 1 when refused or not queued */
VISCACAM_API uint32_t SonySetCamReverse(uint32_t ulReverseMode);
VISCACAM_API uint32_t SONY_GetCamInfo(uint32_t ulChannelID, CameraInfo *pstCameraInfo)
    VISCACAM_NONNULL(2); /**< see VISCA_GetCamInfo() */
/** @} */

/** @name Driver: messages of the host
 * @{ */
VISCACAM_API uint32_t SONY_MessageProcess(DrvMsgInfo *pstMsgInfo); /**< see VISCA_MessageProcess() */
/** Handle a set message. Failures are logged only. @return 0 */
VISCACAM_API uint32_t SonyProcSetMsg(DrvMsgInfo *pstMsgInfo) VISCACAM_NONNULL(1);
/** Handle a get message. @return 0, or 1 when it failed */
VISCACAM_API uint32_t SonyProcGetMsg(DrvMsgInfo *pstMsgInfo) VISCACAM_NONNULL(1);
/** Send an image-tuning debug command. @param ulChannelID item, low 8 bits @param ulMsgData value, low 8 bits
 * @return 0, or 1 when it was not queued */
VISCACAM_API uint32_t SonyProcIQDebugMsg(uint32_t ulChannelID, uint32_t ulMsgData);
/** @} */

/** @name Driver: image profiles
 * The VISCA_* functions of the same names forward here; arguments and results are the same.
 * @{ */
VISCACAM_API uint32_t SONY_SetExposure(uint32_t ulChannelID, uint32_t ulImageType,
                                       const ExposureParam *pstExposure)
    VISCACAM_NONNULL(3); /**< see VISCA_SetExposure() */
VISCACAM_API uint32_t SONY_GetExposure(uint32_t ulChannelID, uint32_t ulImageType, ExposureParam *pstExposure)
    VISCACAM_NONNULL(3); /**< see VISCA_GetExposure() */
VISCACAM_API uint32_t SONY_GetExposureCfg(ExposureParam *pstExposure)
    VISCACAM_NONNULL(1); /**< see VISCA_GetExposureCfg() */
VISCACAM_API uint32_t SONY_SetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType,
                                           const WhiteBalanceParam *pstWb)
    VISCACAM_NONNULL(3); /**< see VISCA_SetWhiteBalance() */
VISCACAM_API uint32_t SONY_GetWhiteBalance(uint32_t ulChannelID, uint32_t ulImageType,
                                           WhiteBalanceParam *pstWb)
    VISCACAM_NONNULL(3); /**< see VISCA_GetWhiteBalance() */
VISCACAM_API uint32_t SONY_SetImageEnhance(uint32_t ulChannelID, uint32_t ulImageType,
                                           const ImageEnhanceParam *pstEnhance)
    VISCACAM_NONNULL(3); /**< see VISCA_SetImageEnhance() */
VISCACAM_API uint32_t SONY_SetImageVarFn(uint32_t ulChannelID, uint32_t ulVarFnType, DrvMsgInfo *pstMsgInfo)
    VISCACAM_NONNULL(3); /**< see VISCA_SetImageVarFn() */
VISCACAM_API uint32_t SONY_GetGain(uint32_t ulChannelID, uint32_t *pulGain)
    VISCACAM_NONNULL(2); /**< see VISCA_GetGain() */
VISCACAM_API uint32_t SONY_SetBlackWhiteMode(uint32_t ulChannelID,
                                             uint32_t ulBlackWhiteMode); /**< see VISCA_SetBlackWhiteMode() */
VISCACAM_API uint32_t
SONY_GetBlackWhiteMode(uint32_t *pulBlackWhiteMode); /**< see VISCA_GetBlackWhiteMode() */
/** @} */

/** @name Driver: image primitives
 * One function for each parameter. A value equal to the one that was sent last is not sent again, except
 * where a setting that governs it was changed since; the last value is remembered only once the command was
 * queued. ulChannelID is logged only. Unless a comment says otherwise the result is 0, or 1 when a command
 * was not queued; a value that the module does not have is logged and gives 0, so that a profile goes on.
 * They must not run side by side.
 * @{ */

/** Exposure mode. @param ulExposureMode see ExposureParam. What depends on the mode is sent again at its next
 * request */
VISCACAM_API uint32_t SonySetExposureMode(uint32_t ulChannelID, uint32_t ulExposureMode);
/** Shutter. @param ulShutter N of 1/N s; Sony: 1 to 10000 in the steps of both video norms; Kova: any, the
 * low 16 bits count */
VISCACAM_API uint32_t SonyImgSetShutter(uint32_t ulChannelID, uint32_t ulShutter);
/** Gain. @param ulGain Sony: dB, 0 to 29; Kova: 0 to 100, more is limited */
VISCACAM_API uint32_t SonyImgSetGain(uint32_t ulChannelID, uint32_t ulGain);
/** Iris. @param ulIris F-number times 100 in the lens's steps, 99999 closed */
VISCACAM_API uint32_t SonyImgSetIris(uint32_t ulChannelID, uint32_t ulIris);
/** Shutter range of the automatic modes, Kova only. @param ulSlowShutter one bound @param ulFastShutter the
 * other, in either order */
VISCACAM_API uint32_t SonyImgSetShutterScope(uint32_t ulChannelID, uint32_t ulSlowShutter,
                                             uint32_t ulFastShutter);
/** Gain range of the automatic modes, Kova only. @param ulMinGain lower bound @param ulMaxGain upper bound;
 * the low 8 bits count */
VISCACAM_API uint32_t SonyImgSetGainScope(uint32_t ulChannelID, uint32_t ulMinGain, uint32_t ulMaxGain);
/** Automatic slow shutter. @param bIsAutoSlowShutter 1 on, 0 off; any other value gives 1 */
VISCACAM_API uint32_t SonyImgSetAutoSlowShutter(uint32_t ulChannelID, uint32_t bIsAutoSlowShutter);
/** Limit of the automatic slow shutter, Kova only. @param ulMaxSlowShutter the low 8 bits count */
VISCACAM_API uint32_t SonyImgSetAutoSlowShutterLimit(uint32_t ulChannelID, uint32_t ulMaxSlowShutter);
/** Exposure compensation. @param lExpCompValue -100 to 100 in steps of 14; not checked */
VISCACAM_API uint32_t SonySetExpComp(uint32_t ulChannelID, int32_t lExpCompValue);
/** Metering. @param ulMeteringMode 0 average, 1 spot, 2 a further mode of the Kova module */
VISCACAM_API uint32_t SonySetAEMetering(uint32_t ulChannelID, uint32_t ulMeteringMode);
/** Spot-metering position, always sent. @param pulPos four words TopX, TopY, BotX, BotY in hundredths of the
 * picture */
VISCACAM_API uint32_t SonySetSpotAEPos(uint32_t ulChannelID, const uint32_t *pulPos) VISCACAM_NONNULL(2);
/** Read the current gain. Blocks for the answer, at most 6 s. @param pulGain receives thousandths of a dB;
 * may be NULL
 * @return 0, or 1 when the inquiry was refused or failed */
VISCACAM_API uint32_t SonyGetCurrentGain(uint32_t ulChannelID, uint32_t *pulGain);

/** White-balance mode. @param enAWBMode 0 auto, 6 indoor, 7 outdoor, 8 sodium lamp, 10 manual, 11 auto
 * tracing, 12 outdoor auto, 13 sodium vapour lamp auto, 14 one-push; any other value gives 1 */
VISCACAM_API uint32_t SonySetVideoWBMode(uint32_t ulChannelID, int32_t enAWBMode);
/** Manual white balance, always sent. @param sROffset red, -127 to 127; outside it becomes 127 @param
 * sBOffset blue, likewise */
VISCACAM_API uint32_t SonySetManualWB(uint32_t ulChannelID, int16_t sROffset, int16_t sBOffset);
/** Brightness, Kova only. @param ulBrightness 0 to 255, more is limited */
VISCACAM_API uint32_t SonySetVideoBrightness(uint32_t ulChannelID, uint32_t ulBrightness);
/** Contrast, Kova only. @param ulContrast 0 to 255, more is limited */
VISCACAM_API uint32_t SonySetVideoContrast(uint32_t ulChannelID, uint32_t ulContrast);
/** Saturation. @param ulSaturation 0 to 255; Sony: more is limited; Kova: the low 8 bits count */
VISCACAM_API uint32_t SonySetVideoSaturation(uint32_t ulChannelID, uint32_t ulSaturation);
/** Sharpness. @param ulSharpness 0 to 255 */
VISCACAM_API uint32_t SonySetVideoSharpness(uint32_t ulChannelID, uint32_t ulSharpness);
/** 2D noise reduction, Kova only. @param ulDenoise2D 0 to 255, more is limited */
VISCACAM_API uint32_t SonySetDenoise2D(uint32_t ulChannelID, uint32_t ulDenoise2D);
/** 3D noise reduction. @param ulDenoise3D 0 to 255, more is limited */
VISCACAM_API uint32_t SonySetDenoise3D(uint32_t ulChannelID, uint32_t ulDenoise3D);
/** Defog, always sent; Kova, 0x02000003 and 0x02000005 only. @param ulMode 0 off, more is stronger; the low 8
 * bits count */
VISCACAM_API uint32_t SonySetDefogMode(uint32_t ulChannelID, uint32_t ulMode);
/** Defog sensitivity, always sent; Kova only. @param ulSense the low 8 bits count */
VISCACAM_API uint32_t SonySetDefogSense(uint32_t ulChannelID, uint32_t ulSense);

/** Day/night. @param ulBlackWhiteMode 0 the camera decides, 1 colour, 2 black-and-white */
VISCACAM_API uint32_t SonySetBlackWhiteMode(uint32_t ulChannelID, uint32_t ulBlackWhiteMode);
/** Wide dynamic range. @param ulWdr 0 off, 1 on, 2 automatic */
VISCACAM_API uint32_t SonyImgSetWDR(uint32_t ulChannelID, uint32_t ulWdr);
/** Level of the wide dynamic range, Kova only. @param ulWdrLevel 0 to 9, more is limited */
VISCACAM_API uint32_t SonyImgSetWDRLevel(uint32_t ulChannelID, uint32_t ulWdrLevel);
/** @} */

/** @name Driver: lens
 * The VISCA_* functions of the same names forward here; arguments and results are the same.
 * @{ */
VISCACAM_API uint32_t SONY_ZoomIn(void);                  /**< see VISCA_ZoomIn() */
VISCACAM_API uint32_t SONY_ZoomOut(void);                 /**< see VISCA_ZoomOut() */
VISCACAM_API uint32_t SONY_ZoomStop(void);                /**< see VISCA_ZoomStop() */
VISCACAM_API uint32_t SONY_FocusNear(void);               /**< see VISCA_FocusNear() */
VISCACAM_API uint32_t SONY_FocusFar(void);                /**< see VISCA_FocusFar() */
VISCACAM_API uint32_t SONY_FocusStop(void);               /**< see VISCA_FocusStop() */
VISCACAM_API uint32_t SONY_GetZoomPos(uint32_t *psZoom);  /**< see VISCA_GetZoomPos() */
VISCACAM_API uint32_t SONY_GetFocusPos(int16_t *psFocus); /**< see VISCA_GetFocusPos() */
VISCACAM_API uint32_t SONY_SetZoomPos(int32_t sZoomPos);  /**< see VISCA_SetZoomPos() */
VISCACAM_API uint32_t SONY_SetZoomFocusPos(int32_t sZoomPos,
                                           int32_t sFocusPos); /**< see VISCA_SetZoomFocusPos() */
VISCACAM_API uint32_t SONY_RetSetZoomFocus(void);              /**< see VISCA_RetSetZoomFocus() */
VISCACAM_API uint32_t SONY_SetZoomCut(uint32_t ulSelect, uint32_t ulValue); /**< see VISCA_SetZoomCut() */
VISCACAM_API uint32_t SONY_EnableAF(uint32_t bIsEnable);                    /**< see VISCA_EnableAF() */
VISCACAM_API uint32_t SONY_SetFocusMode(uint32_t ulFocusMode);              /**< see VISCA_SetFocusMode() */

VISCACAM_API uint32_t SONY_SetAFType(uint32_t ulType);                /**< see VISCA_SetAFType() */
VISCACAM_API uint32_t SONY_SetMinFocusLen(uint32_t ulFocusNearLimit); /**< see VISCA_SetFocusMinLen() */
VISCACAM_API uint32_t SONY_EnableIrCurve(uint32_t bIrCurve);          /**< see VISCA_EnableIrCurve() */

/** Focus once. @return 0, or 1 when it was not queued */
VISCACAM_API uint32_t SONY_OnePushTriggerAF(void);

/** Switch digital zoom. @param bEnable 1 on, any other value off @return 0, or 1 when it was not queued */
VISCACAM_API uint32_t SonyImgEnableDzoom(uint32_t bEnable);
/** @} */

/** @name Kova module services
 * Inquiries block for the answer, at most 6 s each; unless a comment says otherwise the result is 0, or 1
 * when the inquiry was refused or failed or the command was not queued.
 * @{ */

/** The capability word, 0 until it was detected. */
VISCACAM_API uint32_t KovaGetCamAbility(void);
/** Store the capability word. @param ulAbility its bits @return 0 */
VISCACAM_API uint32_t KovaSetCamAbility(uint32_t ulAbility);
/** Ask the module for its capability word and store it; a module that does not answer gets 0. */
VISCACAM_API uint32_t KovaDetectCamAbility(void);
/** Test the capability word. @param ulMask bits @return 1 when all are set, else 0 */
VISCACAM_API uint32_t KOVA_HasCamAbility(uint32_t ulMask);

/** The module's uImage (kernel) version. @param pcVer receives the text, 100 bytes; NULL gives 1 */
VISCACAM_API uint32_t KovaGetCurKovaUimageVer(char *pcVer);
/** The module's program version. Takes one inquiry, or one and one for each segment. @param pcVer receives
 * the text, 100 bytes; NULL gives 1 */
VISCACAM_API uint32_t KovaGetCurKovaProgramVer(char *pcVer);
/** The module's extension version, "UNKNOWN" when it has none. @param pcExtVer receives the text, 100 bytes;
 * NULL gives 1 */
VISCACAM_API uint32_t KovaGetExtVer(char *pcExtVer);
/** The uImage version of the upgrade package under /tmp/update. @param pcVer receives the text, 100 bytes
 * @return 0, or 1 when the package's version file is missing or holds none */
VISCACAM_API uint32_t KovaGetNewKovaUimageVer(char *pcVer) VISCACAM_NONNULL(1);
/** The program version of the upgrade package. @param pcVer receives the text, 100 bytes @return as
 * KovaGetNewKovaUimageVer() */
VISCACAM_API uint32_t KovaGetNewKovaProgramVer(char *pcVer) VISCACAM_NONNULL(1);
VISCACAM_API uint32_t KOVA_GetCamVersion(char *pcBuf);                  /**< see VISCA_KOVA_GetCamVer() */
VISCACAM_API uint32_t KOVA_GetExtVer(char *pcExtVer);                   /**< see KovaGetExtVer() */
VISCACAM_API uint32_t KOVA_GetSoftVer(char *pcVer) VISCACAM_NONNULL(1); /**< see VISCA_KOVA_GetSoftVer() */
/** Version and type of a board. @param ulBoard 0 encoder, 1 sensor, 2 motor; the low 8 bits count @param
 * pulVer receives the version
 * @param pulType receives the type. Both stay on failure */
VISCACAM_API uint32_t KOVA_GetBoardVerType(uint32_t ulBoard, uint32_t *pulVer, uint32_t *pulType)
    VISCACAM_NONNULL(2, 3);
VISCACAM_API uint32_t KOVA_GetTemperature(uint32_t ulChannelID, int32_t *plTemperature)
    VISCACAM_NONNULL(2); /**< see VISCA_KOVA_GetTemperature() */
/** Write the version files /tmp/kova_interversion, kova_version and kova_kversion through the host's shell.
 * Two hosts on one machine share them. @return 0 */
VISCACAM_API uint32_t KovaDumpVerInfo(void);

/**
 * Set the sensor's orientation. A module that needs it is power-cycled, and then only when the orientation
 * differs: blocks 4 s and until the module is on again, without a bound.
 * @param ulReverseMode 0 neither, 1 mirror and flip, 2 mirror, 3 flip; others are refused
 * @param ulForce       1 sets it and power-cycles in any case
 */
VISCACAM_API uint32_t KOVA_SetSensorReverse(uint32_t ulReverseMode, uint32_t ulForce);
/** Set the orientation that the product's sub-type calls for. Blocks as KOVA_SetSensorReverse(). */
VISCACAM_API uint32_t KovaReverseCam(void);
/** The sensor's offset. @param plOffsetX receives X, -32768 to 32767; NULL gives 1 @param plOffsetY receives
 * Y, likewise */
VISCACAM_API uint32_t KOVA_GetSensorOffset(int32_t *plOffsetX, int32_t *plOffsetY);
/** Set the sensor's offset and power-cycle the module: blocks 1 s and until it is on again, without a bound.
 * @param lOffsetX X, low 16 bits @param lOffsetY Y, low 16 bits @param ulFlag the module's flag, low 8 bits
 */
VISCACAM_API uint32_t KOVA_SetSensorOffset(int32_t lOffsetX, int32_t lOffsetY, uint32_t ulFlag);
VISCACAM_API uint32_t KOVA_SetIRcut(int32_t bIsEnable); /**< see VISCA_KOVA_SetIRcut() */
/** Set the module's clock. @param ulSeconds seconds since 1970 */
VISCACAM_API uint32_t KOVA_SetTime(uint32_t ulSeconds);
/** Switch low-delay mode. @param ulEnable 0 off, any other value on */
VISCACAM_API uint32_t KOVA_SetLowDelayMode(uint32_t ulEnable);

/** Start the module's image detection, once in a process: sets day mode and a fixed white balance, and holds
 * back what the host asks for of both until KOVA_ResumeDetectImgParam(). Blocks 3 s. SONY_SetVin() calls it.
 * @param ulCamModType module type code */
VISCACAM_API void KovaSetDetectImgParam(uint32_t ulCamModType);
/** End the image detection and apply what was held back. Blocks 0.5 s. @return 0 */
VISCACAM_API uint32_t KOVA_ResumeDetectImgParam(void);
/** Tell the module its dome type, which the device model says. */
VISCACAM_API void KovaSetDomeTypeToCam(void);
VISCACAM_API uint32_t KOVA_GetCurLuma(uint32_t ulChannelID,
                                      int32_t *plLuma);        /**< see VISCA_KOVA_GetCurLuma() */
VISCACAM_API uint32_t KOVA_SetSceneMode(uint32_t ulSceneType); /**< see VISCA_KOVA_SetSceneInfo() */
VISCACAM_API uint32_t KOVA_OnePushTriggerAF(uint32_t ulTrigType,
                                            const uint32_t *pulParam); /**< see VISCA_OnePushAutoFocus() */
/** The picture's sharpness. @param ulChannelID logged only @param plFocusValue receives it; may be NULL */
VISCACAM_API uint32_t KovaGetImageFocusValue(uint32_t ulChannelID, int32_t *plFocusValue);
/** The same in a message: its four bytes, the lowest first, taken as text. @param ulChannelID logged only
 * @param pstMsgInfo ulMsgLen must be 4 and becomes the length of the text and its NUL, at most 5 @return 0; 1
 * for another length or a failed inquiry */
VISCACAM_API uint32_t KOVA_GetImageFocusValue(uint32_t ulChannelID, DrvMsgInfo *pstMsgInfo)
    VISCACAM_NONNULL(2);

/** Set gpfnReportZoomStatus and switch the module's zoom reports. @param fCallBack NULL switches them off. On
 * failure the old one stays */
VISCACAM_API uint32_t KovaSetZoomStatusCallback(ViscaStatusCallback fCallBack);
/** Set gpfnReportFocusStatus and switch the module's focus reports. @param fCallBack NULL switches them off.
 * On failure the old one stays */
VISCACAM_API uint32_t KovaSetFocusStatusCallback(ViscaStatusCallback fCallBack);
VISCACAM_API uint32_t KOVA_SetStatusCallback(
    uint32_t ulSigType, ViscaStatusCallback fCallBack); /**< see VISCA_KOVA_SetSigCallback() */
/** Set gpfnReconfigKovaImgParam. @param fCallBack NULL for none */
VISCACAM_API void KOVA_SetRecfgImgParamCallback(ViscaReconfigCallback fCallBack);
/**
 * Upgrade the module from the package under /tmp/update: the patch alone when there is one, else the files
 * whose versions differ from the module's. Asks the module for its versions (up to 6 s for each inquiry that
 * is not answered), then returns; a thread does the rest, and owns the line meanwhile: commands and inquiries
 * are refused until the files are sent.
 * @param fCallBack told the result; not NULL
 * @return 0 started, or an upgrade was started before (gulUpdateFileforKova is not 0); 1 for NULL, when a
 * version cannot be read, and when the thread does not start (the callback is then called with 1). When the
 * start packet could not be written the updating flag stays raised: the host lowers it
 * (ViscaMarkUpdatingCam(0)) before it tries again
 */
VISCACAM_API uint32_t KOVA_UpdateKova(KovaUpgradeCallback fCallBack);
/** Body of the upgrade's thread. @param pCallBack the KovaUpgradeCallback @return NULL */
VISCACAM_API void *KovaUpgradeThread(void *pCallBack) VISCACAM_NONNULL(1);
/** The module's upgrade state, also while an upgrade owns the line. @return 3 under way, 4 done, 5 failed,
 * other values as the module sends them; 1 when the inquiry was refused or failed */
VISCACAM_API uint32_t KovaGetStatus(void);
/**
 * Fetch the module's log into /tmp/kova.tgz through the board's xmodem program. Blocks until it is there: up
 * to 10 s for queued commands, then as long as the program runs, and behind other exports. Commands and
 * inquiries are refused meanwhile.
 * @param ulArg what the module is to send; the low 8 bits count
 * @return 0 when the program has run, whatever came of it; 1 when queued commands did not go out, or the
 * packet could not be written
 */
VISCACAM_API uint32_t KOVA_ExportLog(uint32_t ulArg);
VISCACAM_API uint32_t KOVA_SaveLog(void); /**< see VISCA_KOVA_Savelog() */

/** Handle one report of the module. For the receiver thread. @param pstReport the report */
VISCACAM_API void KovaDealReport(const ViscaPkt *pstReport) VISCACAM_NONNULL(1);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
