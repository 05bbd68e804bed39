/**
 * @file host.h
 * The reference host for Linux: it implements every service of viscacam_host.h, and this header is how a
 * program sets it up, listens to it and asks it what happened.
 *
 * The order of a program's start:
 *
 *     host::SetBoard({0x02000003, 0, 0, "TEST-BOARD"});
 *     std::string strWhy = host::MapPort(0, "/dev/ttyUSB0");        // empty: fine
 *     host::SetLog(host::Log::kGeneral, {host::LogTarget::kStderr, VISCA_LOG_INFO});
 *     ... now the library may be started
 *
 * Every function may be called from any thread at any time unless its comment says otherwise. Functions that
 * can fail for a reason that a person wants to read return a text: empty is success. Nothing here is needed
 * by the library, which knows only the services.
 *
 * What stays when the process ends: the lock on the device does not, the line's settings do, as on any serial
 * port; ClosePort restores them.
 */
#ifndef VISCACAM_HOST_HOST_H
#define VISCACAM_HOST_HOST_H

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "viscacam_host.h"

namespace host {

/* ==== Board ==== */

/** What this board is. The COMDRV_Get* services answer from it. */
struct Board {
    uint32_t ulCamModType = 0;       ///< type code of the attached camera module
    uint32_t ulProductSubType = 0;   ///< sub-type of the product
    uint32_t ulCaller = 0;           ///< which program the host is
    std::string strDeviceModel = {}; ///< device model; cut to 63 bytes where it is handed out
};

/** Describe the board. Normally once, before the library is started; the library may ask at any time. */
void SetBoard(const Board &stBoard);

/** The description that is in force. */
Board GetBoard();

/* ==== Board programs ==== */

/*
 * The library has the board do a few things by a shell line: xmodem moves a file over the camera's line, and
 * a line written to /proc/driver/cpld switches that line between camera and transfer. A machine that is no
 * such board has neither. So COMDRV_System stands in for both: a folder with an xmodem program (of ours, by
 * sx and rx of the lrzsz package) comes first in the PATH of the commands it runs, and what they write to the
 * node is logged and kept.
 *
 * COMDRV_System blocks until the command has ended, returns what system(3) returns, and may be called from
 * any thread, from several at once too; but there is one line, so one transfer at a time. Otherwise than with
 * system(3), the command starts with no signal blocked and none but SIGHUP ignored, and the program's own
 * signals stay as they are meanwhile. NULL returns 1: there is a shell. Descriptors that are not
 * close-on-exec are inherited, the port's among them. A command that finds no port open runs without a line.
 *
 * A file that is received is filled up to whole blocks with what its sender fills up with, as XMODEM has it
 * (0x1A from ours); an empty one arrives empty. A reception begins by removing what the file held before, and
 * leaves no file when it fails.
 *
 * A transfer leaves the line's settings as they were, however it ends, unless its script is killed with
 * SIGKILL. A Ctrl-C at the terminal ends it together with the program.
 */

/**
 * Say where the stand-ins are.
 *
 * Until then they are searched for: in the folder that the environment variable VISCACAM_BOARD names (empty:
 * no stand-ins), else in libexec/viscacam/board of the place the program is installed at, else in the source
 * tree that it was built from. Without any, commands run as on a real board.
 * @param strFolder folder with the xmodem program, relative to the working directory of now or absolute;
 * empty: no stand-ins, commands run as they are and /proc/driver/cpld is the kernel's
 */
void SetBoardFolder(const std::string &strFolder);

/** The folder that is in force; empty: no stand-ins. */
std::string BoardFolder();

/**
 * Say which file gets the output of the transfer programs, for those who want to follow a transfer. It is
 * appended to: "Xmodem sectors/kbytes sent: ..." or "Blocks received: ..." for each block, parted by carriage
 * returns.
 * @param strPath the file, made when it does not exist; empty, as at the start: nowhere
 */
void SetTransferLog(const std::string &strPath);

/** A transfer is given up after so long without a further block, unless SetTransferLimit says otherwise. */
constexpr std::chrono::seconds kTransferLimit{60};

/**
 * Say how long a transfer may go without a further block, from its start on, before it is given up: a camera
 * that never answers ends the command that long after its start, or up to 3 s later.
 * @param tLimit at least 1 s; less counts as 1 s
 */
void SetTransferLimit(std::chrono::seconds tLimit);

/**
 * What a command wrote last to a register of the stood-in CPLD. Lines "-w REGISTER VALUE" count, as the
 * library's commands write them; the last writing of a command counts when it has several. Each is logged
 * (INFO, "cpld: register 0x09 set to 1"), what is no such line is logged too (WARN).
 * @param ulRegister 0 to 255
 * @return its value, 0 to 255; 0 when it was never written, and for any other number
 */
uint32_t CpldRegister(uint32_t ulRegister);

/* ==== Queues ==== */

/** Elements that each queue holds. The put after that fails and changes nothing. */
constexpr uint32_t kQueueCapacity = 256;

/**
 * Drop all that waits in one queue, as a program does to get rid of answers that came too late.
 * Each element dropped is reported as EventKind::kQueueDrop.
 * @param ulQueueId one of the VISCA_*_QUEUE_ID numbers
 * @return how many were dropped; 0 also for an unknown queue
 */
uint32_t EmptyQueue(uint32_t ulQueueId);

/** How many elements wait in a queue now; 0 also for an unknown queue. */
uint32_t QueueDepth(uint32_t ulQueueId);

/* ==== Serial ports ==== */

/** Port numbers are 0 to kMaxPorts - 1. */
constexpr uint32_t kMaxPorts = 8;

/** A send of 16 bytes or less gives up after this long when the line takes no bytes. */
constexpr std::chrono::milliseconds kSendLimit{1000};

/** A longer send may take this much more for every byte beyond 16: twice the byte's time at 9600 bit/s. */
constexpr std::chrono::microseconds kSendLimitPerByte{2084};

/** How often the watcher looks whether an open device vanished or came back. */
constexpr std::chrono::milliseconds kWatchInterval{250};

/**
 * Say which device stands behind a port number. DRV_OpenCom of that port then opens it: raw, 8N1, 9600 bit/s
 * until DRV_SetComParam says otherwise, exclusively. The path may be a symbolic link; it is followed anew
 * each time the device is opened, also when it comes back after it vanished.
 * @param ulComPort port number, 0 to kMaxPorts - 1
 * @param strPath   device path, not empty
 * @return empty, or why not: no such port number, empty path, port is open
 */
std::string MapPort(uint32_t ulComPort, const std::string &strPath);

/** The device behind a port number; empty when none is mapped. */
std::string PortPath(uint32_t ulComPort);

/**
 * Try whether a device could be opened as a camera port, for tools that want to say what is wrong before they
 * start anything. The device is opened for a moment but neither its settings nor its bytes are touched.
 * @return empty when it could; else one line without newline that names the device and tells the cases apart:
 * no such device, no permission, not a serial device (with what it is instead), in use by another process
 */
std::string CheckDevice(const std::string &strPath);

/**
 * Close a port that DRV_OpenCom opened, give the lock back and restore the settings that the device had.
 * Programs seldom need it: the end of the process closes everything. Nobody may use the descriptor any more.
 * A port that is not open is left alone. Blocks while a DRV_ComSend on the port is running.
 */
void ClosePort(uint32_t ulComPort);

/** Whether the device of an open port is there now. False while it is vanished and for a port not open. */
bool IsPortPresent(uint32_t ulComPort);

/* ==== Logging ==== */

/** The two logs: DRV_Common_Print writes the first, DRV_Common_Print_Cam (packet dumps) the second. */
enum class Log : uint8_t { kGeneral, kCamera };

/** Where a log goes. */
enum class LogTarget : uint8_t {
    kStderr,
    kFile,   ///< appended to the file at strPath, which is made (mode 0644) when it does not exist
    kSyslog, ///< a datagram a line to the socket at strPath, by default /dev/log
    kSink    ///< handed to pfnSink
};

/** The value of LogSetup::ulLevel that keeps a log silent. */
constexpr uint32_t kLogOff = 0;

/** Longest line, newline included. A longer one is cut and ends in "...". */
constexpr uint32_t kLogLineMax = 1024;

/**
 * Receives a log's lines, one at a time for each log, on the thread that logs. Must return soon and may
 * neither log nor call SetLog.
 * @param ulLevel  the line's level
 * @param pcLine   the line, one newline at its end, NUL-terminated; valid during the call only
 * @param ulLength bytes in the line without the NUL
 */
using LogSink = void (*)(uint32_t ulLevel, const char *pcLine, uint32_t ulLength, void *pContext);

/** How one log is set up. */
struct LogSetup {
    LogTarget enTarget = LogTarget::kStderr; ///< where it goes
    uint32_t ulLevel = VISCA_LOG_WARN;       ///< lines of this level and below pass; kLogOff: none
    std::string strPath = {};                ///< kFile: the file; kSyslog: the socket, empty for /dev/log
    LogSink pfnSink = nullptr;               ///< kSink
    void *pContext = nullptr;                ///< kSink: handed on
};

/**
 * Set up one log. Until then the general log goes to stderr from WARN up and the camera log is off.
 *
 * A level that does not pass costs one comparison: nothing is formatted. A line that passes is written with
 * one write, so lines of several threads, and of both logs in one file, do not mix. A target that does not
 * take the line (a full pipe, a stopped terminal) costs the caller at most 20 ms once and nothing until it
 * takes lines again; the line is dropped and counted.
 *
 * When it returns, no call of a sink that was set before is running.
 * @return empty, or why the target cannot be opened; the log then stays as it was
 */
std::string SetLog(Log enLog, const LogSetup &stSetup);

/** Change the level alone. @param ulLevel as LogSetup::ulLevel */
void SetLogLevel(Log enLog, uint32_t ulLevel);

/** Lines that passed the filter but that the target did not take, since the start of the process. */
uint64_t DroppedLogLines(Log enLog);

/* ==== Observers ==== */

/** What an observer is told. */
enum class EventKind : uint8_t {
    kQueuePut,    ///< an element is put, or refused by a full queue; reported before a taker can see it
    kQueueTake,   ///< an element was taken; reported before the taker has it
    kQueueDrop,   ///< an element was dropped by EmptyQueue
    kComSending,  ///< DRV_ComSend is about to write; reported before the first byte goes out
    kComSent,     ///< DRV_ComSend has written or given up; an answer may have been reported before this
    kComOpened,   ///< DRV_OpenCom opened a port
    kComRateSet,  ///< DRV_SetComParam set the rate
    kComVanished, ///< the device of an open port is gone
    kComBack      ///< it is back, at its last rate and behind the same descriptor
};

/** A short English name, for example "queue put". */
const char *EventName(EventKind enKind);

/** One event. Fields that an event does not name are zero. */
struct Event {
    /** What happened. */
    EventKind enKind = EventKind::kQueuePut;
    /** When, on the monotonic clock, in nanoseconds. */
    uint64_t ullTimeNs = 0;
    /** Queue events: the queue. */
    uint32_t ulQueueId = 0;
    /** Queue events: the 20 bytes, 16 of packet and their count as a 32-bit word; valid during the call. */
    const uint8_t *pucElem = nullptr;
    /** Queue events and sends: the packet's bytes, valid during the call. */
    const uint8_t *pucData = nullptr;
    /** Number of bytes at pucData; at most 16 for queue events, whatever the element's count says. */
    uint32_t ulLength = 0;
    /** kQueuePut and kComSent: what the service returns to its caller. */
    int32_t iResult = 0;
    /** kQueuePut of an answer: no inquiry waits for one, so the next inquiry would take it as its own. */
    bool bUnasked = false;
    /** Serial events: the port number. */
    uint32_t ulComPort = 0;
    /** kComOpened, kComRateSet, kComBack: bits per second. */
    uint32_t ulBaudRate = 0;
    /** kComOpened, kComVanished, kComBack: the device path, valid during the call. */
    const char *pcDevice = nullptr;
};

/**
 * Called on the thread that the event happens on (the library's sender and receiver, callers of the library,
 * the host's watcher), with no lock of the host held, from several threads at once. Must return soon: the
 * camera waits meanwhile. It may call the services, and everything in this header but AddObserver,
 * RemoveObserver, WaitDrained and ClosePort; it may not call the library.
 */
using Observer = void (*)(const Event &stEvent, void *pContext);

/** Observers that can be registered at a time. */
constexpr uint32_t kMaxObservers = 8;

/**
 * Register an observer. What reads and writes the descriptor itself, past the services, is not seen: all that
 * the library reads, and the packets of its search for the camera's rate.
 * @param pfnObserver called for every event from now on
 * @param pContext    handed on
 * @return its number for RemoveObserver; negative when kMaxObservers are registered or pfnObserver is null
 */
int32_t AddObserver(Observer pfnObserver, void *pContext);

/** End an observer. When it returns, no call of it is running or will come. Unknown numbers are ignored. */
void RemoveObserver(int32_t iObserver);

/* ==== Counters, and waiting until everything has gone out ==== */

/** What happened since the start or the last ResetCounters. */
struct Counters {
    uint64_t ullCommandsQueued = 0;  ///< put on the command queue
    uint64_t ullCommandsRefused = 0; ///< not put: the command queue was full
    uint64_t ullCommandsSent = 0;    ///< written to the line by the thread that took them
    uint64_t ullCommandsUnsent = 0;  ///< taken but not written: write failed, no command, dropped
    uint64_t ullCommandTimeouts = 0; ///< sent, and no result within 2 s
    uint64_t ullCompletions = 0;     ///< results 90 5y FF
    uint64_t ullInquiriesSent = 0;   ///< inquiries written to the line
    uint64_t ullInquiryTimeouts = 0; ///< inquiries with no answer within 6 s
    uint64_t ullAnswers = 0;         ///< answers 90 50 ... FF, those that nobody asked for included
    uint64_t ullUnaskedAnswers = 0;  ///< answers and refusals that came while no inquiry waited
    uint64_t ullErrors = 0;          ///< refusals 90 6y ee FF, to commands and to inquiries
    std::array<uint64_t, 256> aullErrorsByCode = {}; ///< the same by their code ee
    uint64_t ullResultsLost = 0;                     ///< results and answers that found their queue full
    uint64_t ullJunkBytes = 0;                       ///< bytes that began no reply
    uint64_t ullBadReplies = 0;                      ///< replies too short, too long or of an unknown kind
    uint64_t ullReadErrors = 0;                      ///< reads of the line that failed
    uint64_t ullSends = 0;                           ///< calls of DRV_ComSend
    uint64_t ullSendFailures = 0;                    ///< those that did not write all their bytes
    uint64_t ullBytesSent = 0;                       ///< bytes written by DRV_ComSend
};

/**
 * A consistent copy. Junk, bad replies and read errors are counted by the library's log calls, whether the
 * filter lets those lines pass or not.
 */
Counters GetCounters();

/** Set all counters to 0. WaitDrained is not affected. */
void ResetCounters();

/**
 * Wait until every command that was on the command queue when this was called is dealt with: written, and its
 * result taken by the sender or its 2 s over; or taken and not written; or dropped. Commands queued later are
 * not waited for. Neither completion nor refusal is told apart here: that is what the counters and observers
 * are for.
 * @param tLimit how long to wait at most; 0 asks without waiting
 * @return true when all are dealt with, false when the time is over
 */
bool WaitDrained(std::chrono::milliseconds tLimit);

/* ==== Threads ==== */

/** A thread that registered itself through COMDRV_DBG_RegisterThreadInfo. */
struct ThreadInfo {
    uint32_t ulType = 0;     ///< kind, the library's number
    uint32_t ulThreadId = 0; ///< kernel thread id
    std::string strName;     ///< the name it gave
    bool bAlive = false;     ///< the process has a thread of this id now
};

/** All threads that registered, in the order of their registration. */
std::vector<ThreadInfo> Threads();

/** The same as a table for people, a line a thread. */
std::string ThreadTable();

} // namespace host

#endif
