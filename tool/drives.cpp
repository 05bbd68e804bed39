#include "tool/drives.h"

#include <unistd.h>

#include "host/host.h"

namespace tool {

uint32_t Drives::start(Command drive, Command brake) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    parkIfOver();
    m_brake = brake;
    return drive();
}

uint32_t Drives::stop() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    parkIfOver();
    const Command brake = m_brake;
    m_brake = nullptr;
    return brake == nullptr ? 0 : brake();
}

bool Drives::finish(std::chrono::milliseconds limit) {
    const std::lock_guard<std::mutex> finishing(m_finishing);
    Command brake = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_over = true;
        brake = m_brake;
        m_brake = nullptr;
    }
    if (brake == nullptr)
        return true;
    const uint64_t lost = host::GetCounters().ullCommandTimeouts;
    return brake() == 0 && host::WaitDrained(limit) && host::GetCounters().ullCommandTimeouts == lost;
}

// Called with the lock held, which the waiting thread keeps to itself: nobody else needs it any more but
// others that are to wait as well.
void Drives::parkIfOver() {
    while (m_over)
        pause();
}

} // namespace tool
