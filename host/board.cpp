#include <algorithm>
#include <cstring>
#include <mutex>

#include "host/host.h"

namespace {

std::mutex g_stLock;

// Lives until the process is gone: the library's threads may ask while the process is ending.
host::Board &g_stBoard = *new host::Board;

} // namespace

namespace host {

void SetBoard(const Board &stBoard) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    g_stBoard = stBoard;
}

Board GetBoard() {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    return g_stBoard;
}

} // namespace host

uint32_t COMDRV_GetCamModuleType(void) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    return g_stBoard.ulCamModType;
}

uint32_t COMDRV_GetProductSubType(void) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    return g_stBoard.ulProductSubType;
}

uint32_t COMDRV_GetCaller(void) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    return g_stBoard.ulCaller;
}

uint32_t COMDRV_GetManuinfo(ManuInfo *pstManuInfo) {
    if (pstManuInfo == nullptr) {
        return 1;
    }
    std::memset(pstManuInfo, 0, sizeof(*pstManuInfo));

    std::lock_guard<std::mutex> stGuard(g_stLock);
    const std::string &strModel = g_stBoard.strDeviceModel;
    const size_t ulCopied = std::min(strModel.size(), sizeof(pstManuInfo->szDeviceModel) - 1);
    std::memcpy(pstManuInfo->szDeviceModel, strModel.data(), ulCopied);
    return 0;
}
