#include "sim/block.h"

#include "sim/af_debug.h"

#include <algorithm>
#include <cstdio>

namespace sim {

namespace {

constexpr uint8_t TERMINATOR = 0xFF;
constexpr uint8_t HEADER = 0x81;
constexpr uint8_t BROADCAST = 0x88;
constexpr uint8_t COMMAND = 0x01;
constexpr uint8_t INQUIRY = 0x09;
constexpr size_t MOST_WAITING = 16; // packets that the block keeps for coming vertical edges
constexpr size_t MOST_KINDS = 512;
constexpr std::chrono::milliseconds OUTAGE{200};

uint8_t withSocket(uint8_t type, unsigned socket) {
    return static_cast<uint8_t>(type + socket);
}

std::string hex(const char *before, uint8_t byte) {
    char text[8];
    std::snprintf(text, sizeof text, "%02X", byte);
    return before + std::string(text);
}

bool isInterfaceClear(const Bytes &bytes) {
    return bytes.size() > 2 && bytes[2] == 0x00;
}

// Commands take a socket; inquiries, cancel and the network's own packets do not.
bool isCommand(const Packet &packet) {
    return packet.bytes.size() > 1 && packet.bytes[1] == COMMAND && !isInterfaceClear(packet.bytes);
}

bool isInquiry(const Packet &packet) {
    return packet.bytes.size() > 1 && packet.bytes[1] == INQUIRY;
}

bool isPowerInquiry(const Packet &packet) {
    return packet.bytes == Bytes{HEADER, 0x09, 0x04, 0x00, TERMINATOR};
}

bool isUpgradeStateInquiry(const Packet &packet) {
    return packet.bytes == Bytes{HEADER, 0x09, 0x04, 0xA9, TERMINATOR};
}

std::string kindOf(const Packet &packet) {
    const Bytes &bytes = packet.bytes;
    if (packet.tooLong())
        return "long";
    if (bytes.size() == 3 && bytes[1] >> 4 == 2)
        return "2y";
    std::string kind;
    for (size_t i = 1; i + 1 < bytes.size() && i <= 3; ++i)
        kind += hex(i == 1 ? "" : " ", bytes[i]);
    return kind.empty() ? "short" : kind;
}

} // namespace

Block::Block(World &world, ReplyPath &replies, Transfer &transfer, const Traits &traits)
    : m_world(world), m_replies(replies), m_transfer(transfer), m_traits(traits), m_registers(traits),
      m_lens(world.options.timeScale, m_settings), m_kova(world.options, traits, world.now),
      m_upgrade(world, transfer, m_kova), m_log(world, transfer, logExportBaud(traits)) {
    for (const auto &rows : {networkRows(), powerRows(), registerRows(), identityRows(), orientationRows(),
                             lensRows(), exposureRows(traits), pictureRows(traits)})
        m_table.add(rows);
    addOrientationSettings(m_settings, traits);
    addLensSettings(m_settings);
    addExposureSettings(m_settings, traits);
    addPictureSettings(m_settings, traits);
    if (isKova(traits)) {
        for (const auto &rows :
             {kovaVersionRows(), kovaServiceRows(), kovaUpgradeRows(), kovaLogRows(), lensReportRows()})
            m_table.add(rows);
        addKovaSettings(m_settings);
    }
    m_edge = m_world.now;
}

/* ---- Arrival and the vertical clock ---- */

void Block::arrive(const Packet &packet) {
    if (!hears(packet)) {
        ++m_ignored;
        return;
    }
    if (m_waiting.size() >= MOST_WAITING) {
        refuse(packet, 0, BUFFER_FULL);
        return;
    }
    m_waiting.push_back(packet);
    if (!m_world.options.vertical)
        processNext();
    else if (!m_edgeAwaited)
        awaitEdge();
}

bool Block::isAddressedBy(const Packet &packet) const {
    const uint8_t header = packet.bytes[0];
    return header == HEADER || header == BROADCAST || (header == KOVA_HEADER && isKova(m_traits));
}

bool Block::hears(const Packet &packet) const {
    if (!isAddressedBy(packet))
        return false;
    if (m_power == Power::off || m_world.faults.active(Fault::mute))
        return false;
    if (m_transfer.active())
        return isUpgradeStateInquiry(packet);
    if (m_power == Power::booting)
        return isPowerInquiry(packet) && !m_world.options.silentWhileBooting;
    return true;
}

Clock::duration Block::verticalPeriod() const {
    const double rate = m_world.options.frameRate;
    const double shutter = shutterSeconds(m_settings, m_traits, rate);
    return m_world.real(std::chrono::duration<double>(std::max(1 / rate, shutter)));
}

void Block::awaitEdge() {
    const Clock::duration period = verticalPeriod();
    m_edge += period * ((m_world.now - m_edge) / period + 1);
    m_edgeAwaited = true;
    later(m_edge, [this] {
        m_edgeAwaited = false;
        processNext();
        if (!m_waiting.empty() && !m_edgeAwaited)
            awaitEdge();
    });
}

void Block::processNext() {
    if (m_waiting.empty())
        return;
    const Packet packet = m_waiting.front();
    m_waiting.pop_front();
    if (!hears(packet)) { // the camera may have begun to boot since it arrived
        ++m_ignored;
        return;
    }
    process(packet);
    for (unsigned socket : {1u, 2u}) // a motion that this packet stopped or replaced is over
        settle(socket, m_sockets[socket - 1].serial);
    watchLens();
}

void Block::count(const Packet &packet) {
    const std::string kind = kindOf(packet);
    const bool known = m_seen.size() < MOST_KINDS || m_seen.count(kind) > 0;
    ++m_seen[known ? kind : "other"];
}

/* ---- What a packet comes to ---- */

void Block::process(const Packet &packet) {
    count(packet);
    if (packet.afDebug) {
        answerAfDebug(packet);
        return;
    }
    const CommandTable::Match match =
        packet.tooLong() ? CommandTable::Match{nullptr, {}} : m_table.find(packet.bytes);
    if (faultRefuses(packet))
        return;
    if (match.row == nullptr)
        refuse(packet, 0, SYNTAX_ERROR);
    else if (isCommand(packet))
        execute(packet, *match.row, match.args);
    else
        serve(packet, *match.row, match.args);
}

bool Block::faultRefuses(const Packet &packet) {
    Faults &faults = m_world.faults;
    if (isCommand(packet))
        ++m_commands;
    if (faults.strikes(Fault::error)) {
        const auto code = static_cast<uint8_t>(faults.value(Fault::error));
        const bool ofSocket = isCommand(packet) && code != SYNTAX_ERROR && code != BUFFER_FULL;
        refuse(packet, ofSocket ? 1 : 0, code);
        return true;
    }
    if (isCommand(packet) && m_commands % 3 == 0 && faults.strikes(Fault::busy)) {
        refuse(packet, 0, BUFFER_FULL);
        return true;
    }
    return false;
}

void Block::answerAfDebug(const Packet &packet) {
    const auto when = std::max(m_world.now, packet.begin + m_world.draw(m_world.options.latency.answer));
    later(when, [this, bytes = afDebugAnswer(packet.bytes)] { m_replies.send(bytes, "AF debug"); });
}

void Block::serve(const Packet &packet, const Row &row, const Args &args) {
    if (m_power == Power::standby && row.standby == Standby::refuses)
        refuse(packet, 0, NOT_EXECUTABLE);
    else
        reply(packet, row.handler(*this, args));
}

void Block::execute(const Packet &packet, const Row &row, const Args &args) {
    const unsigned socket = freeSocket();
    if (socket == 0) {
        refuse(packet, 0, BUFFER_FULL);
        return;
    }
    if (m_power == Power::standby && row.standby == Standby::refuses) {
        refuse(packet, socket, NOT_EXECUTABLE);
        return;
    }
    const Outcome outcome = row.handler(*this, args);
    if (outcome.kind == Outcome::Kind::nothing)
        return;
    if (outcome.kind == Outcome::Kind::refused)
        refuse(packet, outcome.code == SYNTAX_ERROR ? 0 : socket, outcome.code);
    else
        accept(packet, socket, outcome);
}

/* ---- Sockets ---- */

unsigned Block::freeSocket() const {
    for (unsigned socket : {1u, 2u}) {
        if (!socketBusy(socket))
            return socket;
    }
    return 0;
}

void Block::accept(const Packet &packet, unsigned socket, const Outcome &outcome) {
    Faults &faults = m_world.faults;
    Socket &taken = m_sockets[socket - 1];
    taken = Socket{true, false, ++m_serials, m_lens.motionOf(outcome.axes)};
    const unsigned long serial = taken.serial;

    const auto acknowledged =
        std::max(m_world.now, packet.begin + m_world.draw(m_world.options.latency.acknowledge));
    const bool waits = m_world.options.vertical && !m_world.options.completesAtOnce;
    const auto period = waits ? verticalPeriod() : Clock::duration::zero();
    const auto completed =
        std::max(acknowledged + period, packet.begin + m_world.draw(m_world.options.latency.complete));
    const auto acknowledge = [this, socket] {
        if (!m_world.faults.strikes(Fault::noAck))
            m_replies.send({0x90, withSocket(0x40, socket), TERMINATOR}, "ack");
    };
    const bool reordered = faults.strikes(Fault::reorder);
    if (!reordered)
        later(acknowledged, acknowledge);
    if (m_commandsToPowerCut > 0 && --m_commandsToPowerCut == 0) {
        cutPowerAfter(acknowledged);
        return;
    }
    later(completed, [this, socket, serial] { becomeDue(socket, serial); });
    if (reordered)
        later(completed, acknowledge);
}

// Late enough for the acknowledgement to have left the line; the completion never comes.
void Block::cutPowerAfter(Clock::time_point acknowledged) {
    later(acknowledged + m_world.real(std::chrono::milliseconds(5)), [this] {
        m_world.faults.remove(Fault::powerCut);
        supplyOff();
        later(m_world.now + m_world.real(OUTAGE), [this] { supplyOn(); });
    });
}

void Block::becomeDue(unsigned socket, unsigned long serial) {
    if (m_sockets[socket - 1].serial == serial) {
        m_sockets[socket - 1].due = true;
        settle(socket, serial);
    }
}

void Block::settle(unsigned socket, unsigned long serial) {
    Socket &waiting = m_sockets[socket - 1];
    if (!waiting.busy || !waiting.due || waiting.serial != serial)
        return;
    if (!m_lens.over(waiting.motion, m_world.now)) {
        const Clock::time_point arrival = m_lens.arrival(waiting.motion);
        if (waiting.awaited != arrival)
            later(arrival, [this, socket, serial] { settle(socket, serial); });
        waiting.awaited = arrival;
        return;
    }
    waiting.due = false;
    if (m_world.faults.strikes(Fault::late)) {
        const std::chrono::duration<double> delay(m_world.faults.value(Fault::late));
        later(m_world.now + m_world.real(delay), [this, socket, serial] { complete(socket, serial); });
        return;
    }
    complete(socket, serial);
}

void Block::complete(unsigned socket, unsigned long serial) {
    if (m_sockets[socket - 1].serial != serial)
        return;
    m_sockets[socket - 1] = Socket();
    if (!m_world.faults.strikes(Fault::noCompletion))
        sendCompletion(socket);
}

void Block::sendCompletion(unsigned socket) {
    if (m_world.faults.strikes(Fault::wrongSocket))
        socket = static_cast<unsigned>(m_world.faults.value(Fault::wrongSocket));
    m_replies.send({0x90, withSocket(0x50, socket), TERMINATOR}, "completion");
}

void Block::cancelSocket(unsigned socket) {
    Socket &cancelled = m_sockets[socket - 1];
    if (cancelled.busy && !m_lens.over(cancelled.motion, m_world.now))
        m_lens.stop(cancelled.motion.axes, m_world.now);
    cancelled = Socket();
}

/* ---- Replies ---- */

void Block::refuse(const Packet &packet, unsigned socket, uint8_t code) {
    const Bytes bytes = {0x90, withSocket(0x60, socket), code, TERMINATOR};
    const auto when = std::max(m_world.now, packet.begin + m_world.draw(m_world.options.latency.refuse));
    later(when, [this, bytes, code] { m_replies.send(bytes, hex("error ", code)); });
}

void Block::reply(const Packet &packet, const Outcome &outcome) {
    if (outcome.kind == Outcome::Kind::refused) {
        refuse(packet, 0, outcome.code);
        return;
    }
    Bytes bytes = outcome.data;
    if (outcome.kind == Outcome::Kind::answer) {
        bytes.insert(bytes.begin(), {0x90, 0x50});
        bytes.push_back(TERMINATOR);
    }
    const bool isError = bytes[1] >> 4 == 6;
    const std::string kind = isError ? hex("error ", bytes[2]) : "answer";
    Faults &faults = m_world.faults;
    auto when = std::max(m_world.now, packet.begin + m_world.draw(m_world.options.latency.answer));
    if (isInquiry(packet) && faults.strikes(Fault::lateAnswer))
        when += m_world.real(std::chrono::duration<double>(faults.value(Fault::lateAnswer)));
    const int times = isInquiry(packet) && faults.strikes(Fault::dupAnswer) ? 2 : 1;
    // Not later(): an answer that is on its way when the camera is switched on or reset still comes.
    m_world.scheduler.at(when, [this, outage = m_outages, bytes, kind, times] {
        if (outage != m_outages)
            return;
        for (int i = 0; i < times; ++i)
            m_replies.send(bytes, kind);
    });
}

void Block::later(Clock::time_point when, Scheduler::Action action) {
    m_world.scheduler.at(when, [this, epoch = m_epoch, action = std::move(action)] {
        if (epoch == m_epoch)
            action();
    });
}

void Block::describe(State &state) const {
    state.camera = m_traits.type.name;
    state.type = m_traits.type.code;
    state.power = m_power;
    state.zoom = m_lens.zoom(m_world.now);
    state.focus = m_lens.focus(m_world.now);
    state.zoomMoving = m_lens.zoomMoving(m_world.now);
    state.focusMoving = m_lens.focusMoving(m_world.now);
    for (int i = 0; i < 2; ++i)
        state.socketBusy[i] = m_sockets[i].busy;
    state.settings = m_settings.all();
    state.pendingSettings = m_settings.pending();
    state.registers = m_registers.effective();
    state.pendingRegisters = m_registers.pending();
    state.seen = m_seen;
    state.ignoredPackets += m_ignored;
    m_kova.describe(state, m_world.now);
    m_upgrade.describe(state.kova);
    m_log.describe(state.kova);
    m_transfer.describe(state.kova);
}

} // namespace sim
