#include "tool/decode/filter.h"

#include <algorithm>

#include "decode/decode.h"

namespace tool {

namespace {

struct KindName {
    const char *plural; /* as it is listed */
    const char *name;
};

constexpr KindName KIND_NAMES[] = {
    {"commands", "command"}, {"inquiries", "inquiry"},    {"controls", "control"},
    {"answers", "answer"},   {"acks", "acknowledgement"}, {"completions", "completion"},
    {"errors", "error"},     {"reports", "report"},       {"notices", "notice"},
    {"debug", "debug"},      {"other", "other"},          {"noise", "noise"},
    {"remarks", "remark"},   {"malformed", "malformed"},  {"surprises", "surprise"},
};

void insertAll(std::set<std::string> &names, const std::vector<std::string> &more) {
    for (const std::string &name : more)
        names.insert(kindNamed(name));
}

bool hasAny(const std::set<std::string> &set, const std::vector<std::string> &names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string &name) { return set.count(name) != 0; });
}

} // namespace

void TrafficFilter::only(const std::vector<std::string> &names) {
    insertAll(m_only, names);
}

void TrafficFilter::without(const std::vector<std::string> &names) {
    insertAll(m_without, names);
}

bool TrafficFilter::passes(const std::vector<std::string> &names) const {
    return (m_only.empty() || hasAny(m_only, names)) && !hasAny(m_without, names);
}

std::string kindNamed(const std::string &text) {
    if (text == "ack" || text == "acknowledgements")
        return "acknowledgement";
    for (const KindName &known : KIND_NAMES)
        if (text == known.plural || text == known.name)
            return known.name;
    return "";
}

std::string kindNames() {
    std::string names;
    for (const KindName &known : KIND_NAMES)
        names += (names.empty() ? "" : ", ") + std::string(known.plural);
    return names;
}

} // namespace tool
