#include "sim/block.h"

namespace sim {

namespace {

constexpr uint8_t BROADCAST = 0x88;

Outcome addressSet(Block &, const Args &) {
    return {Outcome::Kind::raw, {0x88, 0x30, 0x02, 0xFF}};
}

Outcome interfaceClear(Block &block, const Args &) {
    for (unsigned socket : {1u, 2u})
        block.cancelSocket(socket);
    return answer({});
}

Outcome cancel(Block &block, const Args &args) {
    const unsigned socket = args.nibble(0);
    const bool busy = (socket == 1 || socket == 2) && block.socketBusy(socket);
    if (busy)
        block.cancelSocket(socket);
    return {Outcome::Kind::raw,
            {0x90, static_cast<uint8_t>(0x60 + socket), busy ? CANCELLED : NO_SOCKET, 0xFF}};
}

} // namespace

std::vector<Row> networkRows() {
    return {
        {"30 01", addressSet, Standby::serves, BROADCAST},
        {"01 00 01", interfaceClear, Standby::serves},
        {"2p", cancel, Standby::serves},
    };
}

} // namespace sim
