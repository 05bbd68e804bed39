#include <algorithm>
#include <cstdio>
#include <mutex>

#include <unistd.h>

#include "host/host.h"

namespace {

std::mutex g_stLock;

// Lives until the process is gone: threads may still register while the process is ending.
std::vector<host::ThreadInfo> &g_vstThreads = *new std::vector<host::ThreadInfo>;

bool IsAlive(uint32_t ulThreadId) {
    char acPath[48];
    std::snprintf(acPath, sizeof(acPath), "/proc/self/task/%lu", static_cast<unsigned long>(ulThreadId));
    return access(acPath, F_OK) == 0;
}

} // namespace

namespace host {

std::vector<ThreadInfo> Threads() {
    std::vector<ThreadInfo> vstThreads;
    {
        std::lock_guard<std::mutex> stGuard(g_stLock);
        vstThreads = g_vstThreads;
    }
    for (ThreadInfo &stThread : vstThreads) {
        stThread.bAlive = IsAlive(stThread.ulThreadId);
    }
    return vstThreads;
}

std::string ThreadTable() {
    std::string strTable = "kind      id  state  name\n";
    for (const ThreadInfo &stThread : Threads()) {
        char acLine[128];
        std::snprintf(acLine, sizeof(acLine), "%4lu %7lu  %-5s  %.64s\n",
                      static_cast<unsigned long>(stThread.ulType),
                      static_cast<unsigned long>(stThread.ulThreadId), stThread.bAlive ? "runs" : "ended",
                      stThread.strName.c_str());
        strTable += acLine;
    }
    return strTable;
}

} // namespace host

// The kernel uses an id again after its thread has ended, so the newest name for an id is the true one.
uint32_t COMDRV_DBG_RegisterThreadInfo(uint32_t ulType, uint32_t ulThreadId, const char *pcName) {
    if (pcName == nullptr) {
        return 1;
    }
    std::lock_guard<std::mutex> stGuard(g_stLock);
    g_vstThreads.erase(
        std::remove_if(g_vstThreads.begin(), g_vstThreads.end(),
                       [&](const host::ThreadInfo &stOld) { return stOld.ulThreadId == ulThreadId; }),
        g_vstThreads.end());
    g_vstThreads.push_back({ulType, ulThreadId, pcName, true});
    return 0;
}
