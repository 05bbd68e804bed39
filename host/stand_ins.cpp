#include "host/stand_ins.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>

#include <unistd.h>

namespace {

constexpr char kFolderVariable[] = "VISCACAM_BOARD";
constexpr char kPathWhenUnset[] = "/usr/local/bin:/usr/bin:/bin";

struct Settings {
    std::optional<std::string> strFolder; ///< empty optional: to be searched for
    std::string strTransferLog;
    std::chrono::seconds tLimit{host::kTransferLimit};
};

std::mutex g_stLock;

// Lives until the process is gone: the library's threads may run commands while the process is ending.
Settings &g_stSettings = *new Settings;

bool HasStandIns(const std::string &strFolder) {
    return access((strFolder + "/xmodem").c_str(), X_OK) == 0;
}

std::string FolderOfProgram() {
    std::error_code stError;
    return std::filesystem::read_symlink("/proc/self/exe", stError).parent_path().string();
}

std::string SearchFolder() {
    const char *pcNamed = std::getenv(kFolderVariable);
    if (pcNamed != nullptr) {
        return pcNamed;
    }
    for (const std::string &strFolder :
         {FolderOfProgram() + "/" HOST_BOARD_FROM_PROGRAM, std::string(HOST_BOARD_IN_SOURCES)}) {
        if (HasStandIns(strFolder)) {
            return strFolder;
        }
    }
    return "";
}

std::string Absolute(const std::string &strPath) {
    std::error_code stError;
    return strPath.empty() ? strPath
                           : std::filesystem::absolute(strPath, stError).lexically_normal().string();
}

bool IsSetByUs(const std::string &strEntry) {
    for (const char *pcName :
         {"PATH=", "VISCACAM_CAMERA_FD=", "VISCACAM_TRANSFER_LOG=", "VISCACAM_TRANSFER_LIMIT="}) {
        if (strEntry.rfind(pcName, 0) == 0) {
            return true;
        }
    }
    return false;
}

std::string SearchPath(const std::string &strFolder) {
    const char *pcPath = std::getenv("PATH");
    return "PATH=" + strFolder + ":" + (pcPath == nullptr ? kPathWhenUnset : pcPath);
}

} // namespace

namespace host {

StandIns GetStandIns() {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    if (!g_stSettings.strFolder) {
        g_stSettings.strFolder = Absolute(SearchFolder());
    }
    return {*g_stSettings.strFolder, g_stSettings.strTransferLog, g_stSettings.tLimit};
}

std::vector<std::string> EnvironmentFor(const StandIns &stStandIns, int iLine) {
    std::vector<std::string> vstrEnvironment;
    const bool bStandIns = !stStandIns.strFolder.empty();
    for (char **ppcEntry = environ; ppcEntry != nullptr && *ppcEntry != nullptr; ppcEntry++) {
        if (!bStandIns || !IsSetByUs(*ppcEntry)) {
            vstrEnvironment.emplace_back(*ppcEntry);
        }
    }
    if (!bStandIns) {
        return vstrEnvironment;
    }
    vstrEnvironment.push_back(SearchPath(stStandIns.strFolder));
    vstrEnvironment.push_back("VISCACAM_TRANSFER_LIMIT=" + std::to_string(stStandIns.tLimit.count()));
    if (iLine >= 0) {
        vstrEnvironment.push_back("VISCACAM_CAMERA_FD=" + std::to_string(iLine));
    }
    if (!stStandIns.strTransferLog.empty()) {
        vstrEnvironment.push_back("VISCACAM_TRANSFER_LOG=" + stStandIns.strTransferLog);
    }
    return vstrEnvironment;
}

void SetBoardFolder(const std::string &strFolder) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    g_stSettings.strFolder = Absolute(strFolder);
}

std::string BoardFolder() {
    return GetStandIns().strFolder;
}

void SetTransferLog(const std::string &strPath) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    g_stSettings.strTransferLog = Absolute(strPath);
}

void SetTransferLimit(std::chrono::seconds tLimit) {
    std::lock_guard<std::mutex> stGuard(g_stLock);
    g_stSettings.tLimit = std::max(tLimit, std::chrono::seconds(1));
}

} // namespace host
