#ifndef VISCACAM_SIM_SIMULATION_H
#define VISCACAM_SIM_SIMULATION_H

#include "sim/block.h"
#include "sim/faults.h"
#include "sim/framer.h"
#include "sim/line.h"
#include "sim/pty.h"
#include "sim/reply_path.h"
#include "sim/transfer.h"
#include "sim/world.h"

#include <optional>

namespace sim {

/*
 * One camera with its line and its faults, but without a thread: it is told the time and that bytes are
 * there, and says until when it can be left alone. Camera gives it a thread and a lock.
 */
class Simulation {
  public:
    /* options already checked. */
    Simulation(const Options &options, Clock::time_point now);

    /* Do everything that is due at now, bytes that wait at the pty included. */
    void pass(Clock::time_point now);
    /* When the next pass is due if nothing arrives. */
    std::optional<Clock::time_point> next() const;
    /* What else may wake the camera up. */
    const Pty &pty() const { return m_pty; }
    bool wantsToRead() const;
    bool wantsToWrite() const { return m_line.blocked(); }
    /* Readable when a transfer goes on; -1: there is none. */
    int transferDescriptor() const { return m_transfer.descriptor(); }

    void setFault(const std::string &text, Clock::time_point now);
    void clearFault(const std::string &name, Clock::time_point now);
    void clearFaults(Clock::time_point now);
    void powerCut(Clock::time_point now);
    void powerApply(Clock::time_point now);
    void hangUp(Clock::time_point now);
    void replug(Clock::time_point now);
    void sendRaw(const Bytes &bytes, Clock::time_point now);
    void requestConfiguration(Clock::time_point now);

    State state(Clock::time_point now);
    Bytes receivedFile(const std::string &kind) const { return m_block.received(kind); }
    std::vector<TraceEvent> takeDiary();

  private:
    void runDue(Clock::time_point now);
    unsigned baud() const;
    void readLine();
    void hear(const uint8_t *bytes, size_t count);
    void hearNoise(const uint8_t *bytes, size_t count, unsigned hostBaud);
    void hearPacket(const Packet &packet);
    std::string describe(const Packet &packet) const;
    void awaitRestOfAfDebug(Clock::time_point end);
    void flushJunk(Clock::time_point when);
    void beginFault(const FaultOrder &order);
    void endFault(Fault fault);
    void endFaultAfter(double seconds, Fault fault, unsigned long serial);
    void cutSupply();
    void pull();
    void plugIn();
    void plugInAgain();

    World m_world;
    Pty m_pty;
    Line m_line;
    ReplyPath m_replies;
    Transfer m_transfer;
    Framer m_framer;
    Clock::time_point m_lastHeard{}; /* end of the last byte that is not of a transfer */
    Block m_block;
    unsigned long m_packets = 0;
    unsigned long m_noise = 0;
};

} // namespace sim

#endif
