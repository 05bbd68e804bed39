/**
 * @file serial_port.h
 * The table of ports that the serial service and the watcher share. Inside the host only.
 */
#ifndef VISCACAM_HOST_SERIAL_PORT_H
#define VISCACAM_HOST_SERIAL_PORT_H

#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>

#include "host/host.h"
#include "host/serial_device.h"

namespace host {

constexpr uint32_t kFirstBaudRate = 9600;

/**
 * One port. Locks are taken in the order SerialPorts::stLock, stSendLock. A member is written with the locks
 * held that its comment names, and read with one of them.
 */
struct SerialPort {
    std::string strPath;                  ///< stLock
    uint32_t ulBaudRate = kFirstBaudRate; ///< stLock; the rate that was set last
    SerialDevice stDevice; ///< both; the numbers stay while the port is open, also when the device changes
    std::mutex stSendLock; ///< held while one send is running
    std::atomic<int32_t> iFd{-1}; ///< both; stDevice.iFd while the port is open; may be read without a lock
    std::atomic<bool> bVanished{false}; ///< stSendLock; may be read without a lock
};

struct SerialPorts {
    std::mutex stLock;
    std::condition_variable stChanged; ///< a port was closed
    std::array<SerialPort, kMaxPorts> astPorts;
    SerialPort *pstLast = nullptr; ///< stLock; the port opened last, which DRV_SetComParam sets
    bool bWatched = false;         ///< stLock; the watcher's thread exists
};

/** The table; it lives until the process is gone. */
SerialPorts &Ports();

/** Start the watcher's thread unless it runs. stLock is held. @return false when there can be no thread */
bool StartWatch();

/**
 * A descriptor of the line of the port opened last, for a program that is to use it: close-on-exec, to be
 * closed by the caller. @return -1 when no port is open
 */
int DuplicateLine();

/** Log and report that a port's device is gone. No lock is held. Once for each time that bVanished becomes
 * true. */
void TellVanished(uint32_t ulComPort);

} // namespace host

#endif
