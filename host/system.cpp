#include <cerrno>
#include <csignal>
#include <optional>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/serial_port.h"
#include "host/stand_ins.h"

namespace {

constexpr char kShell[] = "/bin/sh";
constexpr int kNoShell = 127 << 8; // the status of a process that ended by _exit(127)

// A script's redirections know one digit only.
constexpr int kFirstForScripts = 3;
constexpr int kLastForScripts = 9;

// The number that a script gets the line under: one that it does not inherit for something else.
int NumberForScript() {
    for (int iFd = kFirstForScripts; iFd < kLastForScripts; iFd++) {
        const int iFlags = fcntl(iFd, F_GETFD);
        if (iFlags < 0 || (iFlags & FD_CLOEXEC) != 0) {
            return iFd;
        }
    }
    return kLastForScripts;
}

// Programs such as rx live by SIGALRM and SIGPIPE; a host's threads block signals, and hosts ignore SIGPIPE.
// What nohup ignores stays ignored.
class CleanSignals {
  public:
    CleanSignals() {
        sigset_t stNone;
        sigset_t stDefault;
        sigemptyset(&stNone);
        sigfillset(&stDefault);
        sigdelset(&stDefault, SIGHUP);
        posix_spawnattr_init(&m_stAttributes);
        posix_spawnattr_setsigmask(&m_stAttributes, &stNone);
        posix_spawnattr_setsigdefault(&m_stAttributes, &stDefault);
        posix_spawnattr_setflags(&m_stAttributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~CleanSignals() { posix_spawnattr_destroy(&m_stAttributes); }
    CleanSignals(const CleanSignals &) = delete;
    CleanSignals &operator=(const CleanSignals &) = delete;

    const posix_spawnattr_t *Get() const { return &m_stAttributes; }

  private:
    posix_spawnattr_t m_stAttributes;
};

// What the command inherits beyond that which is not close-on-exec.
class Inherited {
  public:
    Inherited() { posix_spawn_file_actions_init(&m_stActions); }
    ~Inherited() { posix_spawn_file_actions_destroy(&m_stActions); }
    Inherited(const Inherited &) = delete;
    Inherited &operator=(const Inherited &) = delete;

    void Add(int iFd, int iAs) {
        if (iFd >= 0) {
            posix_spawn_file_actions_adddup2(&m_stActions, iFd, iAs);
        }
    }
    const posix_spawn_file_actions_t *Get() const { return &m_stActions; }

  private:
    posix_spawn_file_actions_t m_stActions;
};

/** The camera's line, for the time that a command is started. */
struct Line {
    Line() : iFd(host::DuplicateLine()), iNumber(iFd < 0 ? -1 : NumberForScript()) {}
    ~Line() {
        if (iFd >= 0) {
            close(iFd);
        }
    }
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    const int iFd;
    const int iNumber;
};

int Spawn(const std::string &strCommand, const std::vector<std::string> &vstrEnvironment,
          const Inherited &stInherited, pid_t *piPid) {
    std::string strText = strCommand; // argv is not const
    char acName[] = "sh";
    char acFlag[] = "-c";
    char *apcArguments[] = {acName, acFlag, strText.data(), nullptr};
    std::vector<char *> vpcEnvironment;
    for (const std::string &strEntry : vstrEnvironment) {
        vpcEnvironment.push_back(const_cast<char *>(strEntry.c_str()));
    }
    vpcEnvironment.push_back(nullptr);
    const CleanSignals stSignals;
    return posix_spawn(piPid, kShell, stInherited.Get(), stSignals.Get(), apcArguments,
                       vpcEnvironment.data());
}

int WaitFor(pid_t iPid) {
    int iStatus = 0;
    while (waitpid(iPid, &iStatus, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return iStatus;
}

// The parent's own copy of the line is closed when this returns: it must not outlive the port.
int Start(const std::string &strCommand, const host::StandIns &stStandIns, int iNode, pid_t *piPid) {
    const Line stLine;
    Inherited stInherited;
    stInherited.Add(iNode, iNode); // the same number: inherited from now on
    if (!stStandIns.strFolder.empty()) {
        stInherited.Add(stLine.iFd, stLine.iNumber);
    }
    return Spawn(strCommand, EnvironmentFor(stStandIns, stLine.iNumber), stInherited, piPid);
}

} // namespace

uint32_t COMDRV_System(const char *pcCommand) {
    if (pcCommand == nullptr) {
        return 1;
    }
    const host::StandIns stStandIns = host::GetStandIns();
    std::optional<host::CpldNode> stNode;
    if (!stStandIns.strFolder.empty()) {
        stNode.emplace(pcCommand);
    }
    pid_t iPid = -1;
    const int iError =
        Start(stNode ? stNode->Command() : pcCommand, stStandIns, stNode ? stNode->Descriptor() : -1, &iPid);
    return static_cast<uint32_t>(iError != 0 ? kNoShell : WaitFor(iPid));
}
