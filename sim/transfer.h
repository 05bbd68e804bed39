#ifndef VISCACAM_SIM_TRANSFER_H
#define VISCACAM_SIM_TRANSFER_H

#include "sim/child.h"
#include "sim/line.h"
#include "sim/reply_path.h"
#include "sim/world.h"
#include "sim/xmodem_blocks.h"

#include <optional>

namespace sim {

/*
 * A file that goes over the line by XMODEM, one at a time. The protocol is played by rx or sx; what they say
 * goes out as replies do, at the line's speed and through its faults, and what the host says comes to them.
 * Their own times are real ones, so all waits here are too.
 *
 *   idle -> running: the program plays -> ending: its last bytes leave the line -> end told, idle
 */
class Transfer {
  public:
    enum class End {
        complete,
        failed, /* given up by a side, or the program is missing */
        silent, /* nothing came from the host for too long */
    };
    using Done = std::function<void(End)>;

    Transfer(World &world, Line &line, ReplyPath &replies, const Pty &pty)
        : m_world(world), m_line(line), m_replies(replies), m_pty(pty) {}

    /* done is called later, never from here; it may begin the next transfer. */
    void receive(const std::string &file, Done done);
    /* baud: rate of the line meanwhile; 0: as it is. */
    void send(const std::string &file, unsigned baud, Done done);
    /* The supply is gone: end without telling. */
    void stop();

    bool active() const { return m_active; }
    /* The rate that the line has for this transfer. */
    unsigned baud() const { return m_baud; }
    /* Whether a byte from the host belongs to the transfer. Until the host has begun with a file, a packet
       may come instead. */
    bool takes(uint8_t byte, bool insidePacket);
    /* Bytes read now whose last one is on the line at end. */
    void hear(const Bytes &bytes, Clock::time_point end);
    /* What the program has to say, and whether it has ended. */
    void pass();
    /* The line has sent what it can for now. */
    void settle();
    /* Readable when pass() has something to do; -1: there is nothing. */
    int descriptor() const { return m_child ? m_child->descriptor() : -1; }
    void describe(KovaState &state) const;

  private:
    void begin(const std::vector<std::string> &command, unsigned baud, Done done);
    void deliver(Bytes bytes);
    void say(Bytes bytes);
    void follow(Bytes &bytes, bool ofSender);
    void cancel(End end);
    void finish(End end);
    void release();
    void inviteAgain();
    void watchSilence();
    void atIfSame(Clock::time_point when, Scheduler::Action action);

    World &m_world;
    Line &m_line;
    ReplyPath &m_replies;
    const Pty &m_pty;
    std::optional<Child> m_child;
    XmodemBlocks m_blocks;
    Done m_done;
    Bytes m_invitation; /* first words of a receiving program */
    Clock::time_point m_heard{};
    unsigned long m_serial = 0; /* another number for every program */
    unsigned m_baud = 0;
    bool m_active = false;
    std::optional<End> m_ending; /* as soon as the line is idle */
    bool m_receives = false;
    bool m_begun = false;     /* the host has said something */
    bool m_cancelled = false; /* by a fault, in the middle of a run of bytes */
    unsigned long m_completed = 0;
    unsigned long m_failed = 0;
    unsigned long m_blockCount = 0; /* of the transfers before */
};

} // namespace sim

#endif
