#include "sim/sim.h"

#include <stdexcept>

namespace sim {

namespace {

unsigned long countOf(const std::map<std::string, unsigned long> &counts, const std::string &kind) {
    const auto found = counts.find(kind);
    return found != counts.end() ? found->second : 0;
}

} // namespace

unsigned long State::seenCount(const std::string &kind) const {
    return countOf(seen, kind);
}

unsigned long State::sentCount(const std::string &kind) const {
    return countOf(sent, kind);
}

int State::setting(const std::string &name) const {
    const auto found = settings.find(name);
    if (found == settings.end())
        throw std::invalid_argument(camera + " has no setting \"" + name + "\"");
    return found->second;
}

} // namespace sim
