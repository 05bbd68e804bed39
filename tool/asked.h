#ifndef VISCACAM_TOOL_ASKED_H
#define VISCACAM_TOOL_ASKED_H

#include <string>
#include <vector>

#include "tool/trace.h"

namespace tool {

/* What was asked of a camera and what it believes now, row by row. One thread at a time. */
class AskedTable {
  public:
    void add(const std::string &asked, const std::string &believed, bool agrees);
    bool allAgree() const;
    /* As lines of the trace: a head, a line a row that ends in "agrees" or "DIFFERS", and a sum. */
    void print(Trace &trace) const;

  private:
    struct Row {
        std::string asked;
        std::string believed;
        bool agrees;
    };
    std::vector<Row> m_rows;
};

} // namespace tool

#endif
