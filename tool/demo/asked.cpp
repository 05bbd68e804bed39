#include "tool/demo/asked.h"

#include <algorithm>

namespace tool {

namespace {

const char ASKED[] = "asked";
const char BELIEVED[] = "the camera believes";

std::string cell(const std::string &text, size_t width) {
    return text + std::string(width - text.size() + 2, ' ');
}

} // namespace

void AskedTable::add(const std::string &asked, const std::string &believed, bool agrees) {
    m_rows.push_back({asked, believed, agrees ? Verdict::agrees : Verdict::differs});
}

void AskedTable::addNotAskedBack(const std::string &asked) {
    m_rows.push_back({asked, "not asked back", Verdict::open});
}

bool AskedTable::allAgree() const {
    return count(Verdict::differs) == 0;
}

long AskedTable::count(Verdict verdict) const {
    return std::count_if(m_rows.begin(), m_rows.end(),
                         [verdict](const Row &row) { return row.verdict == verdict; });
}

std::string AskedTable::shown(Verdict verdict, bool colours) {
    switch (verdict) {
    case Verdict::agrees:
        return styled("agrees", Style::good, colours);
    case Verdict::differs:
        return styled("DIFFERS", Style::bad, colours);
    case Verdict::open:
        break;
    }
    return "-";
}

std::string AskedTable::sum() const {
    const long agreeing = count(Verdict::agrees);
    const long open = count(Verdict::open);
    return std::to_string(agreeing) + " of " + std::to_string(agreeing + count(Verdict::differs)) + " agree" +
           (open == 0 ? "" : ", " + std::to_string(open) + " not asked back");
}

void AskedTable::print(Trace &trace) const {
    size_t asked = sizeof ASKED - 1;
    size_t believed = sizeof BELIEVED - 1;
    for (const Row &row : m_rows) {
        asked = std::max(asked, row.asked.size());
        believed = std::max(believed, row.believed.size());
    }
    trace.line(
        styled(cell(ASKED, asked) + cell(BELIEVED, believed) + "verdict", Style::dim, trace.colours()));
    for (const Row &row : m_rows)
        trace.line(cell(row.asked, asked) + cell(row.believed, believed) +
                   shown(row.verdict, trace.colours()));
    trace.line(sum());
}

} // namespace tool
