#include "sim/reply_path.h"

#include <iterator>

namespace sim {

namespace {

constexpr uint8_t REPLY_HEADER = 0x90;
constexpr uint8_t TERMINATOR = 0xFF;
constexpr size_t SHOWN = 16; // bytes of a transfer in the trace
constexpr uint64_t LONGEST_NOISE = 8;
constexpr size_t SHORTEST_REPORT = 3;
constexpr size_t REPORT_LENGTHS = 14; // to 16 bytes
constexpr uint8_t REPORT_CODES[] = {0xAE, 0xAF, 0xEF};

void append(std::string &text, const std::string &more) {
    text += (text.empty() ? "" : ", ") + more;
}

} // namespace

void ReplyPath::send(Bytes reply, const std::string &kind) {
    Faults &faults = m_world.faults;
    if (m_lent && kind != "answer") {
        m_world.remark("the line belongs to a transfer: a reply is not sent");
        return;
    }
    ++m_counts[kind];
    if (faults.active(Fault::mute)) {
        m_world.remark("mute: a reply is not sent");
        return;
    }
    std::string text;
    if (reply[0] == REPLY_HEADER && faults.strikes(Fault::address)) {
        reply[0] = static_cast<uint8_t>(0x80 + 0x10 * static_cast<unsigned>(faults.value(Fault::address)));
        append(text, "address");
    }
    if (faults.strikes(Fault::noise))
        sendNoise();
    if (faults.strikes(Fault::length))
        sendRuns();
    const Bytes bytes = damage(reply, text);
    if (faults.strikes(Fault::merge)) {
        hold(bytes, text);
        return;
    }
    Line::Sending sending{bytes, text};
    if (bytes.size() > 1 && faults.strikes(Fault::split)) {
        sending.gapAfter = faults.dice(Fault::split).below(bytes.size() - 1);
        sending.gap = m_world.real(std::chrono::duration<double>(faults.value(Fault::split) / 1000));
        append(sending.text, "split");
    }
    m_line.send(sending, m_world.now, m_baud());
}

// In one piece: a wake-up for every byte of a file would keep a processor busy.
void ReplyPath::sendTransfer(const Bytes &bytes) {
    Faults &faults = m_world.faults;
    if (faults.active(Fault::mute))
        return;
    if (faults.strikes(Fault::noise))
        sendNoise();
    std::string text = "transfer: " + std::to_string(bytes.size()) + " bytes";
    Bytes damaged;
    for (const uint8_t byte : bytes)
        damage(damaged, byte, text);
    Line::Sending sending{damaged, text, SHOWN};
    sending.burst = true;
    m_line.send(sending, m_world.now, m_baud());
}

void ReplyPath::sendRaw(const Bytes &bytes, const std::string &text) {
    m_line.send({bytes, text}, m_world.now, m_baud());
}

Bytes ReplyPath::damage(const Bytes &reply, std::string &text) {
    Bytes bytes;
    for (const uint8_t byte : reply) {
        if (byte == TERMINATOR && m_world.faults.strikes(Fault::dropFf))
            append(text, "drop-ff");
        else
            damage(bytes, byte, text);
    }
    return bytes;
}

void ReplyPath::damage(Bytes &bytes, uint8_t byte, std::string &text) {
    Faults &faults = m_world.faults;
    if (faults.strikes(Fault::dropRx)) {
        append(text, "drop-rx");
        return;
    }
    if (faults.strikes(Fault::flip)) {
        byte = static_cast<uint8_t>(byte ^ 1u << faults.dice(Fault::flip).below(8));
        append(text, "flip");
    }
    bytes.push_back(byte);
    if (faults.strikes(Fault::dup)) {
        bytes.push_back(byte);
        append(text, "dup");
    }
}

void ReplyPath::sendNoise() {
    Random &dice = m_world.faults.dice(Fault::noise);
    Bytes bytes(1 + dice.below(LONGEST_NOISE));
    const uint64_t kind = dice.below(3);
    for (uint8_t &byte : bytes)
        byte = kind == 0 ? static_cast<uint8_t>(dice.next()) : kind == 1 ? 0x00 : 0xFF;
    sendRaw(bytes, "noise");
}

void ReplyPath::sendRuns() {
    Bytes bytes(static_cast<size_t>(m_world.faults.value(Fault::length)), 0x01);
    bytes[0] = 0x90;
    if (bytes.size() > 1)
        bytes[1] = 0x50;
    sendRaw(bytes, "length");
}

void ReplyPath::hold(const Bytes &bytes, const std::string &text) {
    if (m_held.empty()) {
        const std::chrono::duration<double> time(m_world.faults.value(Fault::merge) / 1000);
        m_world.after(time, [this] { release(); });
        m_heldText = "merge";
    }
    m_held.insert(m_held.end(), bytes.begin(), bytes.end());
    if (!text.empty())
        append(m_heldText, text);
}

void ReplyPath::release() {
    if (m_held.empty())
        return;
    Line::Sending sending{m_held, m_heldText};
    sending.burst = true;
    m_line.send(sending, m_world.now, m_baud());
    m_held.clear();
}

// The line is filled, and no more: replies find their place.
void ReplyPath::flood(unsigned long serial) {
    if (!m_world.faults.isCurrent(Fault::flood, serial))
        return;
    static const Bytes acknowledgement = {0x90, 0x41, 0xFF};
    if (m_line.isFree(m_world.now)) {
        if (!m_world.faults.strikes(Fault::flood))
            return;
        sendRaw(acknowledgement, "flood");
    }
    m_world.scheduler.at(m_world.now + acknowledgement.size() * m_line.byteTime(m_baud()),
                         [this, serial] { flood(serial); });
}

// Nibble and length are counted through, so that none is missed; the rest is random, half of the time with a
// code that hosts know.
void ReplyPath::randomReports(unsigned long serial) {
    Faults &faults = m_world.faults;
    if (!faults.isCurrent(Fault::report, serial))
        return;
    if (!m_line.isFree(m_world.now)) {
        m_world.scheduler.at(m_world.now + m_line.byteTime(m_baud()),
                             [this, serial] { randomReports(serial); });
        return;
    }
    if (!faults.strikes(Fault::report))
        return;
    Random &dice = faults.dice(Fault::report);
    Bytes bytes(SHORTEST_REPORT + m_reports / 16 % REPORT_LENGTHS);
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>(dice.below(TERMINATOR));
    bytes[0] = 0x90;
    bytes[1] = static_cast<uint8_t>(m_reports % 16);
    if (bytes.size() > 4 && dice.below(2) == 0)
        bytes[3] = REPORT_CODES[dice.below(std::size(REPORT_CODES))];
    bytes.back() = TERMINATOR;
    ++m_reports;
    ++m_counts["report"];
    sendRaw(bytes, "report");
    m_world.scheduler.at(m_world.now + 2 * bytes.size() * m_line.byteTime(m_baud()),
                         [this, serial] { randomReports(serial); });
}

} // namespace sim
