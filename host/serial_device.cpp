#include "host/serial_device.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRetryInterval{50};

struct Rate {
    uint32_t ulBaudRate;
    speed_t tSpeed;
};

constexpr Rate kRates[] = {{9600, B9600}, {19200, B19200}, {38400, B38400}};

constexpr unsigned kFirstPtyMajor = 136;
constexpr unsigned kLastPtyMajor = 143;

const Rate *FindRate(uint32_t ulBaudRate) {
    for (const Rate &st : kRates) {
        if (st.ulBaudRate == ulBaudRate) {
            return &st;
        }
    }
    return nullptr;
}

/* Why a device cannot be opened, in words */

std::string Cannot(const std::string &strPath, const std::string &strWhy) {
    return "cannot open " + strPath + ": " + strWhy;
}

std::string ErrorText(int iError) {
    switch (iError) {
    case ENOENT:
    case ENOTDIR:
    case ENODEV:
    case ENXIO:
    case EIO: // the node of an adapter that was just pulled
        return "no such device";
    case EACCES:
    case EPERM:
        return "no permission";
    case EBUSY:
        return "in use by another process";
    default:
        return std::strerror(iError);
    }
}

const char *KindOfFile(mode_t tMode) {
    switch (tMode & S_IFMT) {
    case S_IFREG:
        return "a regular file, not a serial device";
    case S_IFDIR:
        return "a directory, not a serial device";
    default:
        return "not a serial device";
    }
}

// The process that holds a flock on an open file, 0 when the kernel does not tell.
long LockHolder(int iFd) {
    struct stat stStat = {};
    std::FILE *pstLocks = std::fopen("/proc/locks", "re");
    if (pstLocks == nullptr) {
        return 0;
    }
    fstat(iFd, &stStat);
    char acLine[160];
    long lHolder = 0;
    while (lHolder == 0 && std::fgets(acLine, sizeof(acLine), pstLocks) != nullptr) {
        long lPid = 0;
        unsigned uMajor = 0;
        unsigned uMinor = 0;
        uintmax_t ullInode = 0;
        const int iFields =
            std::sscanf(acLine, "%*d: FLOCK %*s WRITE %ld %x:%x:%ju", &lPid, &uMajor, &uMinor, &ullInode);
        if (iFields == 4 && makedev(uMajor, uMinor) == stStat.st_dev && ullInode == stStat.st_ino) {
            lHolder = lPid;
        }
    }
    std::fclose(pstLocks);
    return lHolder;
}

std::string LockedText(int iFd) {
    const long lHolder = LockHolder(iFd);
    if (lHolder == getpid()) {
        return "already open in this process";
    }
    return lHolder > 0 ? "in use by another process (" + std::to_string(lHolder) + ")"
                       : "in use by another process";
}

/* Opening */

// Asked of the path first, because opening something else can have effects of its own.
std::string CheckKind(const std::string &strPath) {
    struct stat stStat = {};
    if (stat(strPath.c_str(), &stStat) != 0) {
        return Cannot(strPath, ErrorText(errno));
    }
    return S_ISCHR(stStat.st_mode) ? "" : Cannot(strPath, KindOfFile(stStat.st_mode));
}

// Non-blocking, so that a modem line without carrier cannot hold the caller.
std::string OpenLocked(const std::string &strPath, int *piFd) {
    std::string strWhy = CheckKind(strPath);
    if (!strWhy.empty()) {
        return strWhy;
    }
    const int iFd = open(strPath.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (iFd < 0) {
        return Cannot(strPath, ErrorText(errno));
    }
    std::string strRefused;
    if (isatty(iFd) == 0) {
        strRefused = errno == EIO ? ErrorText(EIO) : KindOfFile(S_IFCHR);
    } else if (flock(iFd, LOCK_EX | LOCK_NB) != 0) {
        strRefused = errno == EWOULDBLOCK ? LockedText(iFd) : std::strerror(errno);
    }
    if (!strRefused.empty()) {
        close(iFd);
        return Cannot(strPath, strRefused);
    }
    *piFd = iFd;
    return "";
}

bool IsSameDevice(int iFd, int iOtherFd) {
    struct stat st = {};
    struct stat stOther = {};
    return fstat(iFd, &st) == 0 && fstat(iOtherFd, &stOther) == 0 && st.st_rdev == stOther.st_rdev;
}

bool OpenForSending(const std::string &strPath, host::SerialDevice *pstDevice) {
    pstDevice->iSendFd = open(strPath.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (pstDevice->iSendFd < 0) {
        return false;
    }
    errno = ENODEV; // the path may have come to mean another device between the two
    return IsSameDevice(pstDevice->iFd, pstDevice->iSendFd);
}

/*
 * flock() keeps out every program that asks for it, of root too. TIOCEXCL keeps out the others, but not
 * root's. It stays with the device until the last one closes it: on a pseudo-terminal that a simulated camera
 * holds open, a host that was killed would lock everybody out, so there it is left out.
 */
void KeepOthersOut(int iFd) {
    struct stat st = {};
    const bool bPty =
        fstat(iFd, &st) == 0 && major(st.st_rdev) >= kFirstPtyMajor && major(st.st_rdev) <= kLastPtyMajor;
    if (!bPty) {
        ioctl(iFd, TIOCEXCL);
    }
}

// Common USB adapters hold received bytes back for 16 ms otherwise. Drivers that do not know it refuse, which
// is fine.
void AskForLowLatency(int iFd) {
    serial_struct stSerial = {};
    if (ioctl(iFd, TIOCGSERIAL, &stSerial) == 0) {
        stSerial.flags |= ASYNC_LOW_LATENCY;
        ioctl(iFd, TIOCSSERIAL, &stSerial);
    }
}

bool MakeBlocking(int iFd) {
    const int iFlags = fcntl(iFd, F_GETFL);
    return iFlags >= 0 && fcntl(iFd, F_SETFL, iFlags & ~O_NONBLOCK) == 0;
}

bool SetUp(const std::string &strPath, uint32_t ulBaudRate, host::SerialDevice *pstDevice) {
    const int iFd = pstDevice->iFd;
    if (tcgetattr(iFd, &pstDevice->stFound) != 0 || !host::SetSerialRate(iFd, ulBaudRate) ||
        !OpenForSending(strPath, pstDevice) || !MakeBlocking(iFd)) {
        return false;
    }
    KeepOthersOut(iFd);
    AskForLowLatency(iFd);
    return true;
}

/* Sending */

std::chrono::microseconds SendLimit(uint32_t ulLength) {
    const uint32_t ulBeyond = ulLength > 16 ? ulLength - 16 : 0;
    return host::kSendLimit + ulBeyond * host::kSendLimitPerByte;
}

// False when the time is over. A device that is gone counts as ready: the write then says so. Not every
// driver wakes a waiter for a little room, so the caller tries again now and then.
bool WaitForRoom(int iFd, Clock::time_point tEnd) {
    using std::chrono::milliseconds;
    const auto tLeft = std::chrono::ceil<milliseconds>(tEnd - Clock::now());
    if (tLeft <= milliseconds::zero()) {
        return false;
    }
    pollfd stPoll = {iFd, POLLOUT, 0};
    poll(&stPoll, 1, static_cast<int>(std::min(tLeft, kRetryInterval).count()));
    return true;
}

} // namespace

namespace host {

bool IsKnownRate(uint32_t ulBaudRate) {
    return FindRate(ulBaudRate) != nullptr;
}

std::string OpenSerialDevice(const std::string &strPath, uint32_t ulBaudRate, SerialDevice *pstDevice) {
    SerialDevice stDevice;
    std::string strWhy = OpenLocked(strPath, &stDevice.iFd);
    if (!strWhy.empty()) {
        return strWhy;
    }
    if (!SetUp(strPath, ulBaudRate, &stDevice)) {
        std::string strFailed = Cannot(strPath, "cannot set it up, " + ErrorText(errno));
        close(stDevice.iFd);
        if (stDevice.iSendFd >= 0) {
            close(stDevice.iSendFd);
        }
        return strFailed;
    }
    *pstDevice = stDevice;
    return "";
}

void CloseSerialDevice(const SerialDevice &stDevice) {
    tcsetattr(stDevice.iFd, TCSANOW, &stDevice.stFound);
    ioctl(stDevice.iFd, TIOCNXCL);
    close(stDevice.iSendFd);
    close(stDevice.iFd);
}

// tcsetattr succeeds when it could do any part of what it was asked for, so the rate is read back.
bool SetSerialRate(int iFd, uint32_t ulBaudRate) {
    const Rate *pstRate = FindRate(ulBaudRate);
    termios st = {};
    if (pstRate == nullptr) {
        errno = EINVAL;
        return false;
    }
    if (tcgetattr(iFd, &st) != 0) {
        return false;
    }
    cfmakeraw(&st);
    st.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    st.c_cflag |= CLOCAL | CREAD;
    st.c_cc[VMIN] = 1;
    st.c_cc[VTIME] = 0;
    cfsetispeed(&st, pstRate->tSpeed);
    cfsetospeed(&st, pstRate->tSpeed);
    if (tcsetattr(iFd, TCSANOW, &st) != 0 || tcgetattr(iFd, &st) != 0) {
        return false;
    }
    errno = EINVAL;
    return cfgetospeed(&st) == pstRate->tSpeed;
}

bool IsHungUp(int iFd) {
    pollfd stPoll = {iFd, 0, 0};
    return poll(&stPoll, 1, 0) == 1 && (stPoll.revents & POLLHUP) != 0;
}

SendResult SendBytes(int iSendFd, const uint8_t *pucData, uint32_t ulLength) {
    const Clock::time_point tEnd = Clock::now() + SendLimit(ulLength);
    SendResult stResult;
    while (stResult.ulWritten < ulLength) {
        const ssize_t lWritten = write(iSendFd, pucData + stResult.ulWritten, ulLength - stResult.ulWritten);
        if (lWritten > 0) {
            stResult.ulWritten += static_cast<uint32_t>(lWritten);
        } else if (lWritten < 0 && errno != EAGAIN && errno != EINTR) {
            stResult.iError = errno;
            break;
        } else if (!WaitForRoom(iSendFd, tEnd)) {
            break;
        }
    }
    return stResult;
}

std::string CheckDevice(const std::string &strPath) {
    int iFd = -1;
    std::string strWhy = OpenLocked(strPath, &iFd);
    if (strWhy.empty()) {
        close(iFd);
    }
    return strWhy;
}

} // namespace host
