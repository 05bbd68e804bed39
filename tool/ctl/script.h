#ifndef VISCACAM_TOOL_CTL_SCRIPT_H
#define VISCACAM_TOOL_CTL_SCRIPT_H

#include <istream>
#include <string>
#include <vector>

#include "tool/ctl/command.h"
#include "tool/ctl/job.h"

namespace tool::ctl {

/* Commands that were read, and where. */
struct Step {
    std::vector<Call> calls;
    std::string source; /* "FILE:12" */
};

/* Understand a line. Throws UsageError; its text begins with the source, if there is one. */
Step readLine(const std::string &line, const std::string &source, uint32_t moduleType);
/* Understand a whole file. Throws UsageError for the first line that cannot be meant, and Refused. */
std::vector<Step> readFile(const std::string &path, uint32_t moduleType);

/* Carries out steps, and stops at the first one that fails, unless it is to keep going. */
class Script {
  public:
    Script(Bench &bench, bool keepGoing) : m_bench(bench), m_keepGoing(keepGoing) {}

    /* Returns whether there is a next one to be carried out. Throws Interrupted and Quit. */
    bool carryOut(const Step &step);
    /* A line that cannot be meant. Returns as carryOut(). */
    bool refuse(const UsageError &why);
    /* Lines from a stream, each understood when it is its turn. */
    void carryOutLines(std::istream &lines, const std::string &name);
    /* What came of all: an exit status. */
    int status() const { return m_status; }

  private:
    Bench &m_bench;
    const bool m_keepGoing;
    int m_status = 0;
};

} // namespace tool::ctl

#endif
