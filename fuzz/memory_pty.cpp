#include "fuzz/memory_pty.h"

#include "sim/pty.h"

#include <cstring>

namespace fuzz {

Cable &TheCable() {
    static Cable cable;
    return cable;
}

} // namespace fuzz

namespace sim {

using fuzz::TheCable;

void Pty::open() {
    m_slavePath = "/dev/memory";
    m_master = 0;
}

void Pty::close() {
    m_master = -1;
}

unsigned Pty::hostBaud() const {
    return TheCable().host_baud;
}

size_t Pty::read(uint8_t *buffer, size_t size) const {
    fuzz::Span &waiting = TheCable().to_camera;
    const size_t count = size < waiting.size ? size : waiting.size;
    if (count > 0)
        memcpy(buffer, waiting.bytes, count);
    waiting = {waiting.bytes + count, waiting.size - count};
    return count;
}

size_t Pty::write(const uint8_t *bytes, size_t size) const {
    TheCable().to_host.insert(TheCable().to_host.end(), bytes, bytes + size);
    return size;
}

size_t Pty::unreadByHost() const {
    return 0;
}

void Pty::handleWatch() {}

} // namespace sim
