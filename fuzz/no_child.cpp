// No program runs beside the camera: it stands in for sim::Child, and every transfer fails at its start.
#include "sim/child.h"

#include <stdexcept>

namespace sim {

Child::Child(const std::vector<std::string> &) {
    throw std::runtime_error("no programs here");
}

Child::~Child() = default;

Bytes Child::read() {
    return {};
}

void Child::write(const Bytes &) const {}

bool Child::succeeded() {
    return false;
}

bool runToEnd(const std::vector<std::string> &) {
    return false;
}

} // namespace sim
