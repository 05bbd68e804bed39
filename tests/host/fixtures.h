/**
 * @file fixtures.h
 * What the tests of the host share: a pseudo-terminal with the camera's side in the test's hand, an observer
 * that remembers, a log that remembers.
 */
#ifndef VISCACAM_TESTS_HOST_FIXTURES_H
#define VISCACAM_TESTS_HOST_FIXTURES_H

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include "host/host.h"

constexpr std::chrono::seconds kPatience{20}; // for what must happen; never waited out when all is well

/** A pseudo-terminal; Path() is the host's side. Hang-up: Close(). */
class Pty {
  public:
    Pty() {
        char acName[64];
        int iSlave = -1;
        if (openpty(&m_iMaster, &iSlave, acName, nullptr, nullptr) != 0) {
            std::abort();
        }
        m_strPath = acName;
        close(iSlave);
        fcntl(m_iMaster, F_SETFD, FD_CLOEXEC); // a program that a test starts is no camera
    }
    ~Pty() { Close(); }
    Pty(const Pty &) = delete;
    Pty &operator=(const Pty &) = delete;

    void Close() {
        if (m_iMaster >= 0) {
            close(m_iMaster);
        }
        m_iMaster = -1;
    }
    const std::string &Path() const { return m_strPath; }
    int Master() const { return m_iMaster; }

    /** What the camera hears: waits until ulLength bytes are there. */
    std::string Hear(size_t ulLength) const {
        std::string strHeard;
        pollfd stPoll = {m_iMaster, POLLIN, 0};
        while (strHeard.size() < ulLength && poll(&stPoll, 1, 20000) == 1) {
            char acBuf[256];
            const ssize_t lRead = read(m_iMaster, acBuf, sizeof(acBuf));
            if (lRead <= 0) {
                break;
            }
            strHeard.append(acBuf, static_cast<size_t>(lRead));
        }
        return strHeard;
    }
    /** The settings of the host's side. */
    termios Settings() const {
        termios st = {};
        tcgetattr(m_iMaster, &st);
        return st;
    }

  private:
    int m_iMaster = -1;
    std::string m_strPath;
};

/** An observer that keeps what it sees. */
class Recorder {
  public:
    struct Seen {
        host::Event stEvent;
        std::string strBytes;
        std::string strDevice;
    };

    Recorder() : m_iNumber(host::AddObserver(&Recorder::See, this)) {}
    ~Recorder() { host::RemoveObserver(m_iNumber); }
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    std::vector<Seen> All() {
        std::lock_guard<std::mutex> stGuard(m_stLock);
        return m_vstSeen;
    }
    size_t Count(host::EventKind enKind) {
        std::lock_guard<std::mutex> stGuard(m_stLock);
        return CountLocked(enKind);
    }
    bool WaitFor(host::EventKind enKind) {
        std::unique_lock<std::mutex> stGuard(m_stLock);
        return m_stMore.wait_for(stGuard, kPatience, [&] { return CountLocked(enKind) > 0; });
    }

  private:
    static void See(const host::Event &stEvent, void *pContext) {
        auto *pstThis = static_cast<Recorder *>(pContext);
        Seen st{stEvent, {}, stEvent.pcDevice == nullptr ? "" : stEvent.pcDevice};
        if (stEvent.pucData != nullptr) {
            st.strBytes.assign(reinterpret_cast<const char *>(stEvent.pucData), stEvent.ulLength);
        }
        std::lock_guard<std::mutex> stGuard(pstThis->m_stLock);
        pstThis->m_vstSeen.push_back(st);
        pstThis->m_stMore.notify_all();
    }
    size_t CountLocked(host::EventKind enKind) const {
        size_t ulCount = 0;
        for (const Seen &st : m_vstSeen) {
            ulCount += st.stEvent.enKind == enKind ? 1 : 0;
        }
        return ulCount;
    }

    std::mutex m_stLock;
    std::condition_variable m_stMore;
    std::vector<Seen> m_vstSeen;
    int32_t m_iNumber;
};

/** A general log that keeps its lines while it lives, and is silent afterwards. */
class LogRecorder {
  public:
    explicit LogRecorder(uint32_t ulLevel) {
        host::SetLog(host::Log::kGeneral, {host::LogTarget::kSink, ulLevel, "", &LogRecorder::Keep, this});
    }
    ~LogRecorder() { host::SetLog(host::Log::kGeneral, {host::LogTarget::kStderr, host::kLogOff}); }
    LogRecorder(const LogRecorder &) = delete;
    LogRecorder &operator=(const LogRecorder &) = delete;

    size_t CountWith(const std::string &strPart) {
        std::lock_guard<std::mutex> stGuard(m_stLock);
        size_t ulCount = 0;
        for (const std::string &strLine : m_vstrLines) {
            ulCount += strLine.find(strPart) != std::string::npos ? 1 : 0;
        }
        return ulCount;
    }
    std::vector<std::string> Lines() {
        std::lock_guard<std::mutex> stGuard(m_stLock);
        return m_vstrLines;
    }

  private:
    static void Keep(uint32_t, const char *pcLine, uint32_t ulLength, void *pContext) {
        auto *pstThis = static_cast<LogRecorder *>(pContext);
        std::lock_guard<std::mutex> stGuard(pstThis->m_stLock);
        pstThis->m_vstrLines.emplace_back(pcLine, ulLength);
    }

    std::mutex m_stLock;
    std::vector<std::string> m_vstrLines;
};

/** A queue element: 16 bytes of packet and their 32-bit count. */
struct Element {
    uint8_t aucData[16];
    uint32_t ulLength;
};
static_assert(sizeof(Element) == VISCA_QUEUE_ELEM_SIZE, "an element has 20 bytes");

inline uint32_t Put(uint32_t ulQueueId, const Element &st) {
    return QUEUE_PutRawData(VISCA_QUEUE_TYPE, ulQueueId, &st, sizeof(st));
}

inline bool Take(uint32_t ulQueueId, Element *pstElem) {
    void *pElem = nullptr;
    if (QUEUE_GetSerialData(ulQueueId, &pElem) != 0) {
        return false;
    }
    std::memcpy(pstElem, pElem, sizeof(*pstElem));
    return true;
}

#endif
