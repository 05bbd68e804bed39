#include "tool/asked.h"

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
    m_rows.push_back({asked, believed, agrees});
}

bool AskedTable::allAgree() const {
    return std::all_of(m_rows.begin(), m_rows.end(), [](const Row &row) { return row.agrees; });
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
    long agreeing = 0;
    for (const Row &row : m_rows) {
        const std::string verdict = row.agrees ? "agrees" : "DIFFERS";
        trace.line(cell(row.asked, asked) + cell(row.believed, believed) +
                   styled(verdict, row.agrees ? Style::good : Style::bad, trace.colours()));
        agreeing += row.agrees ? 1 : 0;
    }
    trace.line(std::to_string(agreeing) + " of " + std::to_string(m_rows.size()) + " agree");
}

} // namespace tool
