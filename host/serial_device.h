/**
 * @file serial_device.h
 * One serial device: opened, set up, locked, written to. Knows no port numbers. Inside the host only.
 */
#ifndef VISCACAM_HOST_SERIAL_DEVICE_H
#define VISCACAM_HOST_SERIAL_DEVICE_H

#include <string>

#include <termios.h>

#include "host/host.h"

namespace host {

/**
 * An open device. It has two descriptors: the camera library reads iFd and needs it blocking, while a send
 * must be able to give up, and blocking or not is a property of the opening, not of the call.
 */
struct SerialDevice {
    int iFd = -1;      ///< read and write, blocking, carries the lock
    int iSendFd = -1;  ///< write only, non-blocking
    termios stFound{}; ///< the settings that the device had
};

/** The rates that camera blocks know: 9600, 19200 and 38400 bit/s. */
bool IsKnownRate(uint32_t ulBaudRate);

/**
 * Open a device exclusively: raw, 8N1, no flow control, low latency where the driver has it. Both descriptors
 * are close-on-exec.
 * @return empty, or one line that names the device and says why not; *pstDevice is then unchanged
 */
std::string OpenSerialDevice(const std::string &strPath, uint32_t ulBaudRate, SerialDevice *pstDevice);

/** Close both descriptors and restore the settings that were found. */
void CloseSerialDevice(const SerialDevice &stDevice);

/** Set raw 8N1 at a rate. @return false with errno set when the device refuses */
bool SetSerialRate(int iFd, uint32_t ulBaudRate);

/** Whether the device behind a descriptor is gone. Does not block. */
bool IsHungUp(int iFd);

/** How a send ended. */
struct SendResult {
    uint32_t ulWritten = 0;
    int iError = 0; ///< errno of a device that failed; 0 with fewer bytes than asked for: the time was over
};

/** Write all bytes, waiting for room at most kSendLimit, longer for more than 16 bytes. @param iSendFd
 * non-blocking */
SendResult SendBytes(int iSendFd, const uint8_t *pucData, uint32_t ulLength);

} // namespace host

#endif
