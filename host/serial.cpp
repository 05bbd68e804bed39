#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/select.h>
#include <termios.h>

#include "host/log.h"
#include "host/observer.h"
#include "host/serial_port.h"

namespace {

using host::EventKind;
using host::Ports;
using host::SerialPort;
using host::SerialPorts;

constexpr uint32_t kComParamType = 0;
constexpr uint8_t kDataBits = 8;
constexpr uint8_t kStopBits = 1;

SerialPort *FindPort(uint32_t ulComPort) {
    return ulComPort < host::kMaxPorts ? &Ports().astPorts[ulComPort] : nullptr;
}

uint32_t NumberOf(const SerialPort *pstPort) {
    return static_cast<uint32_t>(pstPort - Ports().astPorts.data());
}

SerialPort *FindOpenPort(int32_t iFd) {
    for (SerialPort &st : Ports().astPorts) {
        if (iFd >= 0 && st.iFd.load() == iFd) {
            return &st;
        }
    }
    return nullptr;
}

void ReportPort(EventKind enKind, uint32_t ulComPort, uint32_t ulBaudRate, const std::string &strDevice) {
    host::Event stEvent;
    stEvent.enKind = enKind;
    stEvent.ulComPort = ulComPort;
    stEvent.ulBaudRate = ulBaudRate;
    stEvent.pcDevice = strDevice.empty() ? nullptr : strDevice.c_str();
    host::Report(stEvent);
}

// The library waits with select(), and programs that the host starts use the descriptor.
bool MakeFitForLibrary(int iFd) {
    if (iFd >= FD_SETSIZE) {
        return false;
    }
    return fcntl(iFd, F_SETFD, 0) == 0;
}

std::string OpenPort(SerialPort &st) {
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    if (st.strPath.empty()) {
        return "no device is mapped to this port";
    }
    if (st.iFd.load() >= 0) {
        return "cannot open " + st.strPath + ": already open in this process";
    }
    host::SerialDevice stDevice;
    std::string strWhy = host::OpenSerialDevice(st.strPath, host::kFirstBaudRate, &stDevice);
    if (!strWhy.empty()) {
        return strWhy;
    }
    if (!MakeFitForLibrary(stDevice.iFd) || !host::StartWatch()) {
        host::CloseSerialDevice(stDevice);
        return "cannot open " + st.strPath + ": too many open files or threads";
    }
    std::lock_guard<std::mutex> stSendGuard(st.stSendLock);
    st.ulBaudRate = host::kFirstBaudRate;
    st.bVanished = false;
    st.stDevice = stDevice;
    st.iFd = stDevice.iFd;
    Ports().pstLast = &st;
    return "";
}

std::string SetRate(const DrvComParam &stParam, uint32_t *pulComPort) {
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    SerialPort *pstPort = Ports().pstLast;
    if (pstPort == nullptr) {
        return "no port is open";
    }
    if (!host::IsKnownRate(stParam.ulBaudRate)) {
        return pstPort->strPath + ": " + std::to_string(stParam.ulBaudRate) +
               " bit/s is not a camera's rate (9600, 19200, 38400)";
    }
    if (stParam.ucDataBits != kDataBits || stParam.ucStopBits != kStopBits) {
        return pstPort->strPath + ": a camera's line has 8 data bits and 1 stop bit";
    }
    if (!host::SetSerialRate(pstPort->iFd.load(), stParam.ulBaudRate)) {
        return pstPort->strPath + ": " + std::strerror(errno);
    }
    pstPort->ulBaudRate = stParam.ulBaudRate;
    *pulComPort = NumberOf(pstPort);
    return "";
}

bool MeansGone(int iError) {
    return iError == EIO || iError == ENXIO || iError == ENODEV;
}

struct SendOutcome {
    host::SendResult stSent;
    bool bNewlyGone = false;
};

SendOutcome SendOnPort(SerialPort &st, int32_t iFd, const uint8_t *pucData, uint32_t ulLength) {
    SendOutcome stOutcome;
    std::lock_guard<std::mutex> stGuard(st.stSendLock);
    if (st.iFd.load() != iFd) { // closed meanwhile
        stOutcome.stSent.iError = EBADF;
        return stOutcome;
    }
    stOutcome.stSent = host::SendBytes(st.stDevice.iSendFd, pucData, ulLength);
    stOutcome.bNewlyGone = MeansGone(stOutcome.stSent.iError) && !st.bVanished.exchange(true);
    return stOutcome;
}

void LogBadSend(const SerialPort &st, const host::SendResult &stSent, uint32_t ulLength) {
    if (stSent.iError == 0 && stSent.ulWritten == ulLength) {
        return;
    }
    const std::string strPath = host::PortPath(NumberOf(&st));
    if (stSent.iError == 0) {
        HOST_LOG(VISCA_LOG_WARN, "%s takes no bytes, gave up after %lu of %lu", strPath.c_str(),
                 static_cast<unsigned long>(stSent.ulWritten), static_cast<unsigned long>(ulLength));
    } else if (!MeansGone(stSent.iError)) {
        HOST_LOG(VISCA_LOG_ERROR, "write to %s: %s", strPath.c_str(), std::strerror(stSent.iError));
    }
}

} // namespace

uint32_t DRV_OpenCom(uint32_t ulComPort, int32_t *piFd) {
    SerialPort *pstPort = FindPort(ulComPort);
    if (pstPort == nullptr || piFd == nullptr) {
        HOST_LOG(VISCA_LOG_ERROR, "port %lu: no such port", static_cast<unsigned long>(ulComPort));
        return 1;
    }
    std::string strWhy = OpenPort(*pstPort);
    if (!strWhy.empty()) {
        HOST_LOG(VISCA_LOG_ERROR, "port %lu: %s", static_cast<unsigned long>(ulComPort), strWhy.c_str());
        return 1;
    }
    *piFd = pstPort->iFd.load();
    const std::string strPath = host::PortPath(ulComPort);
    HOST_LOG(VISCA_LOG_INFO, "port %lu: %s open", static_cast<unsigned long>(ulComPort), strPath.c_str());
    ReportPort(EventKind::kComOpened, ulComPort, host::kFirstBaudRate, strPath);
    return 0;
}

uint32_t DRV_SetComParam(uint32_t ulType, const DrvComParam *pstParam) {
    if (ulType != kComParamType || pstParam == nullptr) {
        return 1;
    }
    uint32_t ulComPort = 0;
    std::string strWhy = SetRate(*pstParam, &ulComPort);
    if (!strWhy.empty()) {
        HOST_LOG(VISCA_LOG_ERROR, "cannot set the rate: %s", strWhy.c_str());
        return 1;
    }
    ReportPort(EventKind::kComRateSet, ulComPort, pstParam->ulBaudRate, "");
    return 0;
}

uint32_t DRV_FlushCom(int32_t iFd, uint32_t ulMode) {
    if (FindOpenPort(iFd) == nullptr || ulMode != VISCA_FLUSH_BOTH) {
        return 1;
    }
    return tcflush(iFd, TCIOFLUSH) == 0 ? 0 : 1;
}

int32_t DRV_ComSend(int32_t iFd, uint32_t ulLength, const uint8_t *pucData) {
    SerialPort *pstPort = FindOpenPort(iFd);
    if (pstPort == nullptr || pucData == nullptr || ulLength == 0 || ulLength > INT32_MAX) {
        return -1;
    }
    host::Event stEvent;
    stEvent.enKind = EventKind::kComSending;
    stEvent.ulComPort = NumberOf(pstPort);
    stEvent.pucData = pucData;
    stEvent.ulLength = ulLength;
    host::Report(stEvent);

    const SendOutcome stOutcome = SendOnPort(*pstPort, iFd, pucData, ulLength);
    const host::SendResult &stSent = stOutcome.stSent;
    if (stOutcome.bNewlyGone) {
        host::TellVanished(stEvent.ulComPort);
    }
    LogBadSend(*pstPort, stSent, ulLength);

    stEvent.enKind = EventKind::kComSent;
    stEvent.iResult = stSent.iError != 0 ? -1 : static_cast<int32_t>(stSent.ulWritten);
    host::Report(stEvent);
    return stEvent.iResult;
}

namespace host {

SerialPorts &Ports() {
    static SerialPorts &stPorts = *new SerialPorts;
    return stPorts;
}

std::string MapPort(uint32_t ulComPort, const std::string &strPath) {
    SerialPort *pstPort = FindPort(ulComPort);
    if (pstPort == nullptr) {
        return "port " + std::to_string(ulComPort) + ": port numbers end at " + std::to_string(kMaxPorts - 1);
    }
    if (strPath.empty()) {
        return "port " + std::to_string(ulComPort) + ": no device named";
    }
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    if (pstPort->iFd.load() >= 0) {
        return "port " + std::to_string(ulComPort) + " is open on " + pstPort->strPath;
    }
    pstPort->strPath = strPath;
    return "";
}

std::string PortPath(uint32_t ulComPort) {
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    const SerialPort *pstPort = FindPort(ulComPort);
    return pstPort == nullptr ? "" : pstPort->strPath;
}

void ClosePort(uint32_t ulComPort) {
    SerialPort *pstPort = FindPort(ulComPort);
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    if (pstPort == nullptr || pstPort->iFd.load() < 0) {
        return;
    }
    std::lock_guard<std::mutex> stSendGuard(pstPort->stSendLock);
    pstPort->iFd = -1;
    CloseSerialDevice(pstPort->stDevice);
    if (Ports().pstLast == pstPort) {
        Ports().pstLast = nullptr;
    }
    Ports().stChanged.notify_all();
}

bool IsPortPresent(uint32_t ulComPort) {
    const SerialPort *pstPort = FindPort(ulComPort);
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    return pstPort != nullptr && pstPort->iFd.load() >= 0 && !pstPort->bVanished.load() &&
           !IsHungUp(pstPort->iFd.load());
}

int DuplicateLine() {
    std::lock_guard<std::mutex> stGuard(Ports().stLock);
    const SerialPort *pstPort = Ports().pstLast;
    return pstPort == nullptr ? -1 : fcntl(pstPort->iFd.load(), F_DUPFD_CLOEXEC, 0);
}

void TellVanished(uint32_t ulComPort) {
    const std::string strPath = PortPath(ulComPort);
    HOST_LOG(VISCA_LOG_WARN, "port %lu: %s is gone", static_cast<unsigned long>(ulComPort), strPath.c_str());
    ReportPort(EventKind::kComVanished, ulComPort, 0, strPath);
}

} // namespace host
