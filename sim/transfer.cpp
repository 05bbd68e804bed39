#include "sim/transfer.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace sim {

namespace {

constexpr uint8_t HEADER = 0x81;
constexpr size_t SHOWN = 16; // bytes of a run in the trace
constexpr std::chrono::seconds INVITATION_PERIOD{1};
const Bytes CANCEL(5, 0x18);

} // namespace

/* ---- Begin and end ---- */

void Transfer::receive(const std::string &file, Done done) {
    m_receives = true;
    begin({"rx", "-q", "-b", "-c", file}, 0, std::move(done));
}

void Transfer::send(const std::string &file, unsigned baud, Done done) {
    m_receives = false;
    begin({"sx", "-q", file}, baud, std::move(done));
}

void Transfer::begin(const std::vector<std::string> &command, unsigned baud, Done done) {
    ++m_serial;
    m_active = true;
    m_begun = false;
    m_cancelled = false;
    m_blocks = XmodemBlocks();
    m_invitation.clear();
    m_baud = baud;
    m_done = std::move(done);
    m_heard = m_world.now;
    m_replies.lend(true);
    m_world.remark("transfer begins: " + command[0]);
    try {
        m_child.emplace(command);
    } catch (const std::runtime_error &error) {
        m_world.remark(error.what() + std::string("; it is of the package lrzsz"));
        finish(End::failed);
        return;
    }
    watchSilence();
}

// The host's program must not be left waiting for a minute.
void Transfer::cancel(End end) {
    m_replies.sendTransfer(CANCEL);
    finish(end);
}

// The line is given back when the last bytes have left it: its rate may change then.
void Transfer::finish(End end) {
    m_child.reset();
    ++m_serial;
    ++(end == End::complete ? m_completed : m_failed);
    m_blockCount += m_blocks.count();
    m_blocks = XmodemBlocks();
    m_world.remark(end == End::complete ? "transfer complete"
                   : end == End::silent ? "transfer given up: the host is silent"
                                        : "transfer failed");
    m_ending = end;
}

void Transfer::settle() {
    while (m_ending && m_line.idle()) {
        const End end = *m_ending;
        release();
        std::exchange(m_done, {})(end); // which may begin the next, and that may end at once
    }
}

void Transfer::release() {
    m_ending.reset();
    m_active = false;
    m_baud = 0;
    m_replies.lend(false);
}

void Transfer::stop() {
    if (!m_active)
        return;
    m_child.reset();
    ++m_serial;
    ++m_failed;
    m_done = {};
    release();
}

void Transfer::atIfSame(Clock::time_point when, Scheduler::Action action) {
    m_world.scheduler.at(when, [this, serial = m_serial, action = std::move(action)] {
        if (serial == m_serial)
            action();
    });
}

/* ---- From the host ---- */

bool Transfer::takes(uint8_t byte, bool insidePacket) {
    if (!m_active || (m_receives && !m_begun && (byte == HEADER || insidePacket)))
        return false;
    m_begun = !m_world.faults.active(Fault::mute);
    return true;
}

void Transfer::hear(const Bytes &bytes, Clock::time_point end) {
    if (m_world.faults.active(Fault::mute))
        return;
    m_heard = end;
    atIfSame(end, [this, bytes] { deliver(bytes); });
}

void Transfer::deliver(Bytes bytes) {
    if (!m_child)
        return;
    m_world.record({m_world.now, Direction::toCamera,
                    Bytes(bytes.begin(), bytes.begin() + static_cast<long>(std::min(bytes.size(), SHOWN))),
                    "transfer: " + std::to_string(bytes.size()) + " bytes"});
    follow(bytes, m_receives);
    if (m_cancelled)
        cancel(End::failed);
    else
        m_child->write(bytes);
}

/* ---- To the host ---- */

void Transfer::pass() {
    if (!m_child)
        return;
    Bytes bytes = m_child->read();
    if (!bytes.empty())
        say(std::move(bytes));
    if (m_child && m_child->over())
        finish(m_child->succeeded() ? End::complete : End::failed);
}

void Transfer::say(Bytes bytes) {
    if (m_receives && m_invitation.empty()) {
        m_invitation = bytes;
        inviteAgain();
    }
    follow(bytes, !m_receives);
    if (m_cancelled)
        cancel(End::failed);
    else
        m_replies.sendTransfer(bytes);
}

/*
 * rx repeats its first byte only after 14 s, but hosts lose it: a program that has not started yet, or that
 * ends and empties the port. One that still waits in the port is not repeated: sx would answer both, and send
 * every block twice from then on.
 */
void Transfer::inviteAgain() {
    atIfSame(m_world.now + INVITATION_PERIOD, [this] {
        if (m_begun)
            return;
        if (m_pty.unreadByHost() == 0)
            m_replies.sendTransfer(m_invitation);
        inviteAgain();
    });
}

/* ---- What befalls it ---- */

void Transfer::follow(Bytes &bytes, bool ofSender) {
    Faults &faults = m_world.faults;
    for (uint8_t &byte : bytes) {
        if (!ofSender) {
            m_blocks.fromReceiver(byte);
            continue;
        }
        if (!m_blocks.fromSender(byte))
            continue;
        const bool chosen = faults.value(Fault::transferAbort) == static_cast<double>(m_blocks.count());
        if (chosen && faults.strikes(Fault::transferAbort))
            m_cancelled = true;
        if (faults.strikes(Fault::transferChecksum))
            byte = static_cast<uint8_t>(~byte);
    }
}

void Transfer::watchSilence() {
    atIfSame(m_heard + m_world.options.kova.transferPatience, [this] {
        if (m_world.now >= m_heard + m_world.options.kova.transferPatience)
            cancel(End::silent);
        else
            watchSilence();
    });
}

void Transfer::describe(KovaState &state) const {
    state.transferring = m_active;
    state.transfersCompleted = m_completed;
    state.transfersFailed = m_failed;
    state.transferBlocks = m_blockCount + m_blocks.count();
}

} // namespace sim
