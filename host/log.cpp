/*
 * A line is formatted on the caller's stack and goes out in one write. Before that write the target is asked
 * whether it takes bytes now; one that does not is given a moment once, and after that lines are dropped and
 * counted until it does. stderr belongs to others too, so it is never switched to non-blocking.
 */
#include "host/log.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include "host/traffic.h"

namespace {

using host::LogTarget;

constexpr int kPatienceMs = 20;
constexpr char kSyslogSocket[] = "/dev/log";

struct LogState {
    std::atomic<uint32_t> ulLevel;
    std::atomic<uint64_t> ullDropped{0};

    std::mutex stLock = {};
    LogTarget enTarget = LogTarget::kStderr;
    int iFd = STDERR_FILENO;
    bool bStuck = false;
    sockaddr_un stSocket = {};
    host::LogSink pfnSink = nullptr;
    void *pContext = nullptr;
};

LogState g_stGeneral{{VISCA_LOG_WARN}};
LogState g_stCamera{{host::kLogOff}};

LogState &StateOf(host::Log enLog) {
    return enLog == host::Log::kCamera ? g_stCamera : g_stGeneral;
}

bool Passes(const LogState &st, uint32_t ulLevel) {
    const uint32_t ulLimit = st.ulLevel.load(std::memory_order_relaxed);
    return ulLimit != host::kLogOff && ulLevel <= ulLimit;
}

/* Targets */

bool WriteToFd(LogState &st, const char *pcLine, size_t ulLength) {
    pollfd stPoll = {st.iFd, POLLOUT, 0};
    const bool bReady = poll(&stPoll, 1, st.bStuck ? 0 : kPatienceMs) == 1 && stPoll.revents == POLLOUT;
    st.bStuck = !bReady;
    return bReady && write(st.iFd, pcLine, ulLength) == static_cast<ssize_t>(ulLength);
}

int ConnectToSyslog(const sockaddr_un &stSocket) {
    const int iFd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (iFd < 0) {
        return -1;
    }
    if (connect(iFd, reinterpret_cast<const sockaddr *>(&stSocket), sizeof(stSocket)) != 0) {
        const int iError = errno;
        close(iFd);
        errno = iError;
        return -1;
    }
    return iFd;
}

int SyslogPriority(uint32_t ulLevel) {
    return LOG_USER | static_cast<int>(ulLevel < LOG_DEBUG ? ulLevel : LOG_DEBUG);
}

size_t FormatDatagram(char *pcBuf, size_t ulSize, uint32_t ulLevel, const char *pcLine, size_t ulLength) {
    char acTime[32] = "";
    const time_t tNow = time(nullptr);
    tm stNow = {};
    if (localtime_r(&tNow, &stNow) != nullptr) {
        strftime(acTime, sizeof(acTime), "%b %e %H:%M:%S", &stNow);
    }
    const int iLength = std::snprintf(pcBuf, ulSize, "<%d>%s %s[%ld]: %.*s", SyslogPriority(ulLevel), acTime,
                                      program_invocation_short_name, static_cast<long>(getpid()),
                                      static_cast<int>(ulLength) - 1, pcLine);
    return std::min(static_cast<size_t>(iLength), ulSize - 1);
}

// The log daemon may have been restarted since the last line, so a failed send is tried once more, connected
// anew.
bool WriteToSyslog(LogState &st, uint32_t ulLevel, const char *pcLine, size_t ulLength) {
    char acDatagram[host::kLogLineMax + 128];
    const size_t ulDatagram = FormatDatagram(acDatagram, sizeof(acDatagram), ulLevel, pcLine, ulLength);
    if (send(st.iFd, acDatagram, ulDatagram, MSG_NOSIGNAL) >= 0) {
        return true;
    }
    if (errno == EAGAIN) {
        return false;
    }
    const int iFd = ConnectToSyslog(st.stSocket);
    if (iFd < 0) {
        return false;
    }
    close(st.iFd);
    st.iFd = iFd;
    return send(st.iFd, acDatagram, ulDatagram, MSG_NOSIGNAL) >= 0;
}

bool WriteLine(LogState &st, uint32_t ulLevel, const char *pcLine, size_t ulLength) {
    std::lock_guard<std::mutex> stGuard(st.stLock);
    switch (st.enTarget) {
    case LogTarget::kSink:
        st.pfnSink(ulLevel, pcLine, static_cast<uint32_t>(ulLength), st.pContext);
        return true;
    case LogTarget::kSyslog:
        return WriteToSyslog(st, ulLevel, pcLine, ulLength);
    default:
        return WriteToFd(st, pcLine, ulLength);
    }
}

/* Lines */

// Makes the text that vsnprintf left in a buffer of kLogLineMax + 1 bytes one line with one newline at its
// end.
size_t FinishLine(char *pcLine, int iFormatted) {
    size_t ulLength = static_cast<size_t>(iFormatted);
    if (ulLength > host::kLogLineMax || (ulLength == host::kLogLineMax && pcLine[ulLength - 1] != '\n')) {
        std::memcpy(pcLine + host::kLogLineMax - 4, "...\n", 5);
        return host::kLogLineMax;
    }
    if (ulLength == 0 || pcLine[ulLength - 1] != '\n') {
        pcLine[ulLength++] = '\n';
        pcLine[ulLength] = '\0';
    }
    return ulLength;
}

__attribute__((format(printf, 3, 0))) void Print(LogState &st, uint32_t ulLevel, const char *pcFormat,
                                                 va_list vaArgs) {
    const int iError = errno; // whoever logs may look at errno afterwards
    char acLine[host::kLogLineMax + 1];
    const int iFormatted = std::vsnprintf(acLine, sizeof(acLine), pcFormat, vaArgs);
    if (iFormatted < 0 || !WriteLine(st, ulLevel, acLine, FinishLine(acLine, iFormatted))) {
        st.ullDropped.fetch_add(1, std::memory_order_relaxed);
    }
    errno = iError;
}

const char *LevelTag(uint32_t ulLevel) {
    switch (ulLevel) {
    case VISCA_LOG_ERROR:
        return "ERROR";
    case VISCA_LOG_WARN:
        return "WARN";
    case VISCA_LOG_INFO:
        return "INFO";
    case VISCA_LOG_DEBUG:
        return "DEBUG";
    default:
        return "VERBO";
    }
}

/* Set-up */

std::string Failed(const std::string &strWhat) {
    return strWhat + ": " + std::strerror(errno);
}

std::string OpenFile(const host::LogSetup &stSetup, int *piFd) {
    *piFd = open(stSetup.strPath.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
                 S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
    return *piFd < 0 ? Failed("cannot log to " + stSetup.strPath) : "";
}

std::string OpenSyslog(const host::LogSetup &stSetup, sockaddr_un *pstSocket, int *piFd) {
    const std::string strPath = stSetup.strPath.empty() ? kSyslogSocket : stSetup.strPath;
    if (strPath.size() >= sizeof(pstSocket->sun_path)) {
        return "cannot log to " + strPath + ": the path is too long for a socket";
    }
    pstSocket->sun_family = AF_UNIX;
    std::memcpy(pstSocket->sun_path, strPath.c_str(), strPath.size() + 1);
    *piFd = ConnectToSyslog(*pstSocket);
    return *piFd < 0 ? Failed("cannot log to " + strPath) : "";
}

std::string OpenTarget(const host::LogSetup &stSetup, sockaddr_un *pstSocket, int *piFd) {
    switch (stSetup.enTarget) {
    case LogTarget::kStderr:
        *piFd = STDERR_FILENO;
        return "";
    case LogTarget::kFile:
        return OpenFile(stSetup, piFd);
    case LogTarget::kSyslog:
        return OpenSyslog(stSetup, pstSocket, piFd);
    case LogTarget::kSink:
        return stSetup.pfnSink == nullptr ? "cannot log to a sink: none given" : "";
    }
    return "cannot log: unknown target";
}

} // namespace

void DRV_Common_Print(uint32_t ulLevel, const char *pcFormat, ...) {
    host::RecordLogLine(pcFormat);
    if (!Passes(g_stGeneral, ulLevel)) {
        return;
    }
    va_list vaArgs;
    va_start(vaArgs, pcFormat);
    Print(g_stGeneral, ulLevel, pcFormat, vaArgs);
    va_end(vaArgs);
}

void DRV_Common_Print_Cam(uint32_t ulLevel, const char *pcFormat, ...) {
    if (!Passes(g_stCamera, ulLevel)) {
        return;
    }
    va_list vaArgs;
    va_start(vaArgs, pcFormat);
    Print(g_stCamera, ulLevel, pcFormat, vaArgs);
    va_end(vaArgs);
}

namespace host {

std::string SetLog(Log enLog, const LogSetup &stSetup) {
    int iFd = -1;
    sockaddr_un stSocket = {};
    std::string strWhy = OpenTarget(stSetup, &stSocket, &iFd);
    if (!strWhy.empty()) {
        return strWhy;
    }
    LogState &st = StateOf(enLog);
    std::lock_guard<std::mutex> stGuard(st.stLock);
    if (st.iFd > STDERR_FILENO) {
        close(st.iFd);
    }
    st.iFd = iFd;
    st.enTarget = stSetup.enTarget;
    st.stSocket = stSocket;
    st.bStuck = false;
    st.pfnSink = stSetup.pfnSink;
    st.pContext = stSetup.pContext;
    st.ulLevel.store(stSetup.ulLevel, std::memory_order_relaxed);
    return "";
}

void SetLogLevel(Log enLog, uint32_t ulLevel) {
    StateOf(enLog).ulLevel.store(ulLevel, std::memory_order_relaxed);
}

uint64_t DroppedLogLines(Log enLog) {
    return StateOf(enLog).ullDropped.load(std::memory_order_relaxed);
}

void LogHere(uint32_t ulLevel, const char *pcFile, const char *pcFunction, int iLine, const char *pcFormat,
             ...) {
    if (!Passes(g_stGeneral, ulLevel)) {
        return;
    }
    char acMessage[512];
    va_list vaArgs;
    va_start(vaArgs, pcFormat);
    std::vsnprintf(acMessage, sizeof(acMessage), pcFormat, vaArgs);
    va_end(vaArgs);

    timeval stNow = {};
    tm st = {};
    gettimeofday(&stNow, nullptr);
    localtime_r(&stNow.tv_sec, &st);
    DRV_Common_Print(ulLevel, "%.4d-%.2d-%.2d %.2d:%.2d:%.2d %.6lu %-20s@fun:%-30sline:%-6d--[%.5s]%s\n",
                     st.tm_year + 1900, st.tm_mon + 1, st.tm_mday, st.tm_hour, st.tm_min, st.tm_sec,
                     static_cast<unsigned long>(stNow.tv_usec), pcFile, pcFunction, iLine, LevelTag(ulLevel),
                     acMessage);
}

} // namespace host
