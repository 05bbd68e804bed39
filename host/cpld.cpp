/*
 * A board's CPLD is written to by "echo -w REGISTER VALUE > /proc/driver/cpld". Here each command gets a file
 * of its own in place of the node, in memory, under the descriptor that it inherits.
 */
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "host/log.h"
#include "host/stand_ins.h"

namespace {

constexpr char kNode[] = "/proc/driver/cpld";
constexpr uint32_t kRegisters = 256;
constexpr uint32_t kValueMax = 0xFF;
constexpr size_t kWritingMax = 1024;  // bytes of a command's writing that are looked at
constexpr int kFirstFreeForHost = 10; // a script may get the line under a number below

std::atomic<uint32_t> g_aulRegisters[kRegisters];

std::string ReadAll(int iFd) {
    char acText[kWritingMax];
    const ssize_t lRead = pread(iFd, acText, sizeof(acText), 0);
    return std::string(acText, lRead > 0 ? static_cast<size_t>(lRead) : 0);
}

void TakeLine(const std::string &strLine) {
    unsigned uRegister = 0;
    unsigned uValue = 0;
    char cRest = '\0';
    const int iFields = std::sscanf(strLine.c_str(), "-w 0x%x 0x%x %c", &uRegister, &uValue, &cRest);
    if (iFields != 2 || uRegister >= kRegisters || uValue > kValueMax) {
        HOST_LOG(VISCA_LOG_WARN, "cpld: not understood: %s", strLine.c_str());
        return;
    }
    g_aulRegisters[uRegister] = uValue;
    HOST_LOG(VISCA_LOG_INFO, "cpld: register 0x%02x set to %u", uRegister, uValue);
}

int MakeFile() {
    const int iFd = memfd_create("cpld", MFD_CLOEXEC);
    const int iHigh = iFd < 0 ? -1 : fcntl(iFd, F_DUPFD_CLOEXEC, kFirstFreeForHost);
    if (iHigh < 0) {
        HOST_LOG(VISCA_LOG_WARN, "cpld: no file in its place: %s", std::strerror(errno));
    }
    if (iFd >= 0) {
        close(iFd);
    }
    return iHigh;
}

} // namespace

namespace host {

CpldNode::CpldNode(const std::string &strCommand) : m_strCommand(strCommand) {
    size_t ulAt = m_strCommand.find(kNode);
    if (ulAt == std::string::npos || (m_iFd = MakeFile()) < 0) {
        return;
    }
    const std::string strFile = "/proc/self/fd/" + std::to_string(m_iFd);
    for (; ulAt != std::string::npos; ulAt = m_strCommand.find(kNode, ulAt + strFile.size())) {
        m_strCommand.replace(ulAt, std::strlen(kNode), strFile);
    }
}

CpldNode::~CpldNode() {
    if (m_iFd < 0) {
        return;
    }
    std::istringstream stLines(ReadAll(m_iFd));
    for (std::string strLine; std::getline(stLines, strLine);) {
        TakeLine(strLine);
    }
    close(m_iFd);
}

uint32_t CpldRegister(uint32_t ulRegister) {
    return ulRegister < kRegisters ? g_aulRegisters[ulRegister].load() : 0;
}

} // namespace host
