#include "tool/ctl/interrupt.h"

#include <cerrno>
#include <cstdint>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tool::ctl {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

} // namespace

Interrupt::Interrupt() : m_fd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_fd < 0)
        throw std::runtime_error("no eventfd can be made");
}

Interrupt::~Interrupt() {
    close(m_fd);
}

bool Interrupt::raise() {
    if (m_scopes == 0 || m_pending.exchange(true))
        return false;
    const uint64_t one = 1;
    return write(m_fd, &one, sizeof one) == sizeof one;
}

bool Interrupt::wait(milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
        pollfd entry = {m_fd, POLLIN, 0};
        const int ready = poll(&entry, 1, left.count() > 0 ? static_cast<int>(left.count()) : 0);
        if (ready > 0)
            return take();
        if (ready == 0)
            return false;
    }
}

bool Interrupt::take() {
    uint64_t count = 0;
    const bool came = read(m_fd, &count, sizeof count) == sizeof count;
    m_pending = false;
    return came;
}

} // namespace tool::ctl
