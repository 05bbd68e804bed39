#include "tool/drives.h"

#include <unistd.h>

#include "host/host.h"

namespace tool {

uint32_t Drives::start(Command drive, Command brake) {
    std::unique_lock<std::mutex> lock(m_mutex);
    parkIfOver(lock);
    m_brake = brake;
    return drive();
}

uint32_t Drives::stop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    parkIfOver(lock);
    const Command brake = m_brake;
    m_brake = nullptr;
    return brake == nullptr ? 0 : brake();
}

Drives::End Drives::finish(const Limits &limits) {
    const std::lock_guard<std::mutex> finishing(m_finishing);
    Command brake = nullptr;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_over = true;
        if (!m_procedureEnded.wait_for(lock, limits.procedure, [this] { return !m_inProcedure; }))
            return End::inProcedure;
        brake = m_brake;
        m_brake = nullptr;
    }
    if (brake == nullptr)
        return End::clean;
    const uint64_t lost = host::GetCounters().ullCommandTimeouts;
    const bool confirmed =
        brake() == 0 && host::WaitDrained(limits.stop) && host::GetCounters().ullCommandTimeouts == lost;
    return confirmed ? End::clean : End::stopNotConfirmed;
}

void Drives::beginProcedure() {
    std::unique_lock<std::mutex> lock(m_mutex);
    parkIfOver(lock);
    m_inProcedure = true;
}

void Drives::endProcedure() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_inProcedure = false;
    m_procedureEnded.notify_all();
    parkIfOver(lock);
}

void Drives::parkIfOver(std::unique_lock<std::mutex> &lock) const {
    if (!m_over)
        return;
    lock.unlock();
    for (;;)
        pause();
}

} // namespace tool
