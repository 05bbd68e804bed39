/**
 * @file stand_ins.h
 * What COMDRV_System needs to know of the board's stand-ins. Inside the host only.
 */
#ifndef VISCACAM_HOST_STAND_INS_H
#define VISCACAM_HOST_STAND_INS_H

#include <string>
#include <vector>

#include "host/host.h"

namespace host {

/** How the stand-ins are set up. */
struct StandIns {
    std::string strFolder;                       ///< comes first in PATH; empty: no stand-ins
    std::string strTransferLog;                  ///< empty: none
    std::chrono::seconds tLimit{kTransferLimit}; ///< without a further block
};

/** The set-up that is in force. */
StandIns GetStandIns();

/**
 * The environment for a command: this process's own, with PATH and the VISCACAM_ variables of the stand-ins.
 * @param iLine number that the command has the camera's line under; negative: no line
 */
std::vector<std::string> EnvironmentFor(const StandIns &stStandIns, int iLine);

/** Stands in for /proc/driver/cpld while one command runs. */
class CpldNode {
  public:
    /** Looks into the command; does nothing when it does not name the node. */
    explicit CpldNode(const std::string &strCommand);
    /** Logs and keeps what was written. */
    ~CpldNode();
    CpldNode(const CpldNode &) = delete;
    CpldNode &operator=(const CpldNode &) = delete;

    /** The command, with the node's path replaced where it was named. */
    const std::string &Command() const { return m_strCommand; }
    /** What the command must inherit under the same number; negative: nothing. */
    int Descriptor() const { return m_iFd; }

  private:
    std::string m_strCommand;
    int m_iFd = -1;
};

} // namespace host

#endif
