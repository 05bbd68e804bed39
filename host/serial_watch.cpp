/*
 * A pulled adapter leaves a dead descriptor: readable for ever, each read returns nothing and each write
 * fails. The library keeps that descriptor for the life of the process. So when the device is there again
 * (often under a new number, behind the same symbolic link) it is opened anew and put behind the old
 * descriptors with dup2().
 */
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/log.h"
#include "host/observer.h"
#include "host/serial_port.h"

namespace {

using host::Ports;
using host::SerialDevice;
using host::SerialPort;
using host::SerialPorts;

constexpr char kThreadName[] = "HostComWatch"; // the kernel keeps 15 characters
constexpr uint32_t kThreadType = 0;

enum class Change : uint8_t { kNone, kGone, kBack };

void CloseBoth(const SerialDevice &st) {
    close(st.iSendFd);
    close(st.iFd);
}

// What is behind the old descriptors must not stand in the way: after a mere write error it may be the same
// device.
void LetGo(const SerialDevice &st) {
    flock(st.iFd, LOCK_UN);
    ioctl(st.iFd, TIOCNXCL);
}

// The library switches the descriptor to non-blocking for a while; the new device takes over in that state.
bool PutBehind(const SerialDevice &stNew, SerialPort &st) {
    const int iFlags = fcntl(st.stDevice.iFd, F_GETFL);
    if (iFlags < 0 || fcntl(stNew.iFd, F_SETFL, iFlags) != 0) {
        return false;
    }
    return dup3(stNew.iSendFd, st.stDevice.iSendFd, O_CLOEXEC) >= 0 && dup2(stNew.iFd, st.stDevice.iFd) >= 0;
}

bool Reopen(SerialPort &st) {
    LetGo(st.stDevice);
    SerialDevice stNew;
    if (!host::OpenSerialDevice(st.strPath, st.ulBaudRate, &stNew).empty()) {
        return false;
    }
    std::lock_guard<std::mutex> stSendGuard(st.stSendLock);
    const bool bBack = !host::IsHungUp(stNew.iFd) && PutBehind(stNew, st);
    CloseBoth(stNew);
    if (bBack) {
        st.stDevice.stFound = stNew.stFound;
        st.bVanished = false;
    }
    return bBack;
}

Change LookAt(SerialPort &st) {
    if (st.iFd.load() < 0) {
        return Change::kNone;
    }
    if (st.bVanished.load()) {
        return Reopen(st) ? Change::kBack : Change::kNone;
    }
    // A send that is running finds out by itself.
    std::unique_lock<std::mutex> stSendGuard(st.stSendLock, std::try_to_lock);
    return stSendGuard && host::IsHungUp(st.iFd.load()) && !st.bVanished.exchange(true) ? Change::kGone
                                                                                        : Change::kNone;
}

void TellBack(uint32_t ulComPort, const std::string &strPath, uint32_t ulBaudRate) {
    HOST_LOG(VISCA_LOG_WARN, "port %lu: %s is back at %lu bit/s", static_cast<unsigned long>(ulComPort),
             strPath.c_str(), static_cast<unsigned long>(ulBaudRate));
    host::Event stEvent;
    stEvent.enKind = host::EventKind::kComBack;
    stEvent.ulComPort = ulComPort;
    stEvent.ulBaudRate = ulBaudRate;
    stEvent.pcDevice = strPath.c_str();
    host::Report(stEvent);
}

bool IsAnyOpen(const SerialPorts &stPorts) {
    for (const SerialPort &st : stPorts.astPorts) {
        if (st.iFd.load() >= 0) {
            return true;
        }
    }
    return false;
}

void LookAtPort(uint32_t ulComPort, std::unique_lock<std::mutex> &stGuard) {
    SerialPort &st = Ports().astPorts[ulComPort];
    const Change enChange = LookAt(st);
    if (enChange == Change::kNone) {
        return;
    }
    const std::string strPath = st.strPath;
    const uint32_t ulBaudRate = st.ulBaudRate;
    stGuard.unlock();
    if (enChange == Change::kGone) {
        host::TellVanished(ulComPort);
    } else {
        TellBack(ulComPort, strPath, ulBaudRate);
    }
    stGuard.lock();
}

void *Watch(void *) {
    pthread_setname_np(pthread_self(), kThreadName);
    COMDRV_DBG_RegisterThreadInfo(kThreadType, static_cast<uint32_t>(syscall(SYS_gettid)), kThreadName);

    SerialPorts &stPorts = Ports();
    std::unique_lock<std::mutex> stGuard(stPorts.stLock);
    while (IsAnyOpen(stPorts)) {
        stPorts.stChanged.wait_for(stGuard, host::kWatchInterval);
        for (uint32_t i = 0; i < host::kMaxPorts; i++) {
            LookAtPort(i, stGuard);
        }
    }
    stPorts.bWatched = false;
    return nullptr;
}

} // namespace

namespace host {

// Signals are for the program's own threads.
bool StartWatch() {
    if (Ports().bWatched) {
        return true;
    }
    sigset_t stAll;
    sigset_t stBefore;
    pthread_t tThread;
    sigfillset(&stAll);
    pthread_sigmask(SIG_BLOCK, &stAll, &stBefore);
    const int iError = pthread_create(&tThread, nullptr, Watch, nullptr);
    pthread_sigmask(SIG_SETMASK, &stBefore, nullptr);
    if (iError != 0) {
        return false;
    }
    pthread_detach(tThread);
    Ports().bWatched = true;
    return true;
}

} // namespace host
