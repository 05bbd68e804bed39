#include "sim/block.h"

namespace sim {

namespace {

constexpr uint8_t SOCKETS = 2;

uint8_t high(uint16_t value) {
    return static_cast<uint8_t>(value >> 8);
}

uint8_t low(uint16_t value) {
    return static_cast<uint8_t>(value & 0xFF);
}

Outcome tellIdentity(Block &block, const Args &) {
    const Traits &camera = block.traits();
    return answer({high(camera.vendor), low(camera.vendor), high(camera.model), low(camera.model),
                   high(camera.version), low(camera.version), SOCKETS});
}

} // namespace

std::vector<Row> identityRows() {
    return {{"09 00 02", tellIdentity}};
}

} // namespace sim
