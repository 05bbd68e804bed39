#ifndef VISCACAM_TOOL_DEMO_ASKED_H
#define VISCACAM_TOOL_DEMO_ASKED_H

#include <string>
#include <vector>

#include "tool/trace.h"

namespace tool {

/* What was asked of a camera and what it believes now, row by row. One thread at a time. */
class AskedTable {
  public:
    void add(const std::string &asked, const std::string &believed, bool agrees);
    /* What the camera makes of this cannot be learnt: neither agrees nor differs. */
    void addNotAskedBack(const std::string &asked);
    bool allAgree() const;
    /* As lines of the trace: a head, a line a row that ends in "agrees", "DIFFERS" or "-", and a sum. */
    void print(Trace &trace) const;

  private:
    enum class Verdict { agrees, differs, open };
    struct Row {
        std::string asked;
        std::string believed;
        Verdict verdict;
    };
    static std::string shown(Verdict verdict, bool colours);
    long count(Verdict verdict) const;
    std::string sum() const;

    std::vector<Row> m_rows;
};

} // namespace tool

#endif
