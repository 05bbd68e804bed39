#include "sim/simulation.h"

#include "sim/af_debug.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace sim {

namespace {

constexpr size_t MOST_AT_ONCE = 4096;
constexpr size_t LONGEST_JUNK = 64;                  // one trace event
constexpr std::chrono::milliseconds LATE_WAKE_UP{1}; // of a thread; later than that the machine stood still

Framer framerOf(const Traits &traits) {
    return isKova(traits) ? Framer(KOVA_HEADER, true) : Framer();
}

} // namespace

Simulation::Simulation(const Options &options, Clock::time_point now)
    : m_world(options, now), m_pty(options.link), m_line(m_pty, m_world.options),
      m_replies(m_world, m_line, [this] { return baud(); }), m_transfer(m_world, m_line, m_replies, m_pty),
      m_framer(framerOf(traitsOf(findCamera(options.camera)))),
      m_block(m_world, m_replies, m_transfer, traitsOf(findCamera(options.camera))) {
    for (const std::string &fault : options.faults)
        parseFault(fault); // a wrong one is told before anything is opened
    m_pty.open();
    m_block.startIn(options.start);
    for (const std::string &fault : options.faults)
        setFault(fault, now);
}

void Simulation::pass(Clock::time_point now) {
    if (m_pty.watch() >= 0)
        m_pty.handleWatch();
    m_line.unblock();
    runDue(now);
    readLine();
    runDue(now);
    m_transfer.pass();
    for (TraceEvent &event : m_line.write(now, baud()))
        m_world.record(std::move(event));
    m_transfer.settle();
}

// Each action at the time for which it was meant: a thread that wakes up late must not make the camera
// slower. What a machine that stood still has missed is not made up for, and the camera's time never runs
// back when somebody has looked at it in between.
void Simulation::runDue(Clock::time_point now) {
    m_world.now = std::max(m_world.now, now - LATE_WAKE_UP);
    for (auto due = m_world.scheduler.next(); due && *due <= now; due = m_world.scheduler.next()) {
        m_world.now = std::max(m_world.now, *due);
        m_world.scheduler.runNext();
    }
    m_world.now = now;
}

std::optional<Clock::time_point> Simulation::next() const {
    auto earliest = m_world.scheduler.next();
    const auto consider = [&earliest](Clock::time_point due) {
        earliest = earliest ? std::min(*earliest, due) : due;
    };
    if (const auto byteDue = m_line.next())
        consider(*byteDue);
    if (const auto room = m_line.portFullUntil(baud()); room > m_world.now)
        consider(room);
    return earliest;
}

unsigned Simulation::baud() const {
    if (m_world.faults.active(Fault::rate))
        return static_cast<unsigned>(m_world.faults.value(Fault::rate));
    return m_transfer.baud() != 0 ? m_transfer.baud() : m_world.options.baud;
}

/* ---- The way in ---- */

bool Simulation::wantsToRead() const {
    return m_pty.isOpen() && !m_world.faults.active(Fault::stall) &&
           m_line.portFullUntil(baud()) <= m_world.now;
}

void Simulation::readLine() {
    uint8_t buffer[MOST_AT_ONCE];
    size_t count = sizeof buffer;
    while (count == sizeof buffer && wantsToRead()) {
        count = m_pty.read(buffer, sizeof buffer);
        if (count == 0)
            return;
        const unsigned hostBaud = m_pty.hostBaud();
        if (hostBaud != baud())
            hearNoise(buffer, count, hostBaud);
        else
            hear(buffer, count);
    }
}

void Simulation::hearNoise(const uint8_t *bytes, size_t count, unsigned hostBaud) {
    m_framer.reset();
    m_noise += count;
    m_world.record(
        {m_world.now, Direction::toCamera, Bytes(bytes, bytes + count),
         "noise: sent at " + std::to_string(hostBaud) + ", the camera listens at " + std::to_string(baud())});
}

void Simulation::hear(const uint8_t *bytes, size_t count) {
    Clock::time_point end = m_world.now;
    Bytes transferred;
    for (size_t i = 0; i < count; ++i) {
        const Line::Span span = m_line.received(m_world.now, baud());
        end = span.end;
        if (m_world.faults.strikes(Fault::dropTx)) {
            m_world.remark("drop-tx: a byte is lost on the way to the camera");
            continue;
        }
        if (m_transfer.takes(bytes[i], m_framer.insidePacket())) {
            transferred.push_back(bytes[i]);
            continue;
        }
        if (const auto packet = m_framer.push(bytes[i], span.begin, span.end))
            hearPacket(*packet);
    }
    flushJunk(end);
    if (!transferred.empty())
        m_transfer.hear(transferred, end);
    else if (m_framer.insideAfDebug())
        awaitRestOfAfDebug(end);
}

void Simulation::awaitRestOfAfDebug(Clock::time_point end) {
    m_lastHeard = end;
    m_world.scheduler.at(end + m_world.real(AF_DEBUG_PAUSE), [this, end] {
        if (!m_framer.insideAfDebug() || m_lastHeard != end)
            return;
        m_framer.abandon();
        flushJunk(m_world.now);
    });
}

void Simulation::hearPacket(const Packet &packet) {
    flushJunk(packet.begin);
    m_world.scheduler.at(packet.end, [this, packet] {
        ++m_packets;
        m_world.record({packet.end, Direction::toCamera, packet.bytes, describe(packet)});
        m_block.arrive(packet);
    });
}

std::string Simulation::describe(const Packet &packet) const {
    if (packet.tooLong())
        return std::to_string(packet.length) + " bytes: longer than a packet can be";
    return m_block.isAddressedBy(packet) ? "" : "for another address";
}

void Simulation::flushJunk(Clock::time_point when) {
    Bytes junk = m_framer.takeJunk();
    if (junk.empty())
        return;
    m_noise += junk.size();
    const std::string text = "noise: " + std::to_string(junk.size()) + " bytes outside a packet";
    junk.resize(std::min(junk.size(), LONGEST_JUNK));
    m_world.record({when, Direction::toCamera, junk, text});
}

/* ---- Events ---- */

void Simulation::cutSupply() {
    m_block.supplyOff();
    m_line.clear();
    m_replies.clear();
    m_framer.reset();
}

void Simulation::pull() {
    if (!m_pty.isOpen())
        return;
    m_world.remark("hang-up");
    m_line.clear();
    m_framer.reset();
    m_pty.close();
}

void Simulation::plugIn() {
    pull();
    m_pty.open();
    m_world.faults.remove(Fault::hangUp);
    m_world.faults.remove(Fault::replug);
    m_world.remark("replug: " + m_pty.path());
}

// Nobody is there to be told of a failure at the end of a fault, so it is only noted.
void Simulation::plugInAgain() {
    if (m_pty.isOpen())
        return;
    try {
        plugIn();
    } catch (const std::exception &error) {
        m_world.remark(std::string("replug failed: ") + error.what());
    }
}

void Simulation::powerCut(Clock::time_point now) {
    m_world.now = now;
    cutSupply();
}

void Simulation::powerApply(Clock::time_point now) {
    m_world.now = now;
    m_block.supplyOn();
}

void Simulation::hangUp(Clock::time_point now) {
    m_world.now = now;
    pull();
}

void Simulation::replug(Clock::time_point now) {
    m_world.now = now;
    plugIn();
}

void Simulation::sendRaw(const Bytes &bytes, Clock::time_point now) {
    m_world.now = now;
    m_replies.sendRaw(bytes, "raw");
}

void Simulation::requestConfiguration(Clock::time_point now) {
    m_world.now = now;
    if (!m_block.requestConfiguration())
        throw std::invalid_argument(m_world.options.camera + " sends no reports; a Kova module does");
}

/* ---- Faults that begin and end ---- */

void Simulation::setFault(const std::string &text, Clock::time_point now) {
    m_world.now = now;
    const FaultOrder order = parseFault(text);
    endFault(order.fault);
    const unsigned long serial = m_world.faults.set(order);
    if (order.end)
        endFaultAfter(*order.end, order.fault, serial);
    if (order.start <= 0) {
        beginFault(order);
        return;
    }
    m_world.after(std::chrono::duration<double>(order.start), [this, order, serial] {
        if (m_world.faults.isCurrent(order.fault, serial))
            beginFault(order);
    });
}

void Simulation::endFaultAfter(double seconds, Fault fault, unsigned long serial) {
    m_world.after(std::chrono::duration<double>(seconds), [this, fault, serial] {
        if (m_world.faults.isCurrent(fault, serial))
            endFault(fault);
    });
}

void Simulation::beginFault(const FaultOrder &order) {
    const Fault fault = order.fault;
    const unsigned long serial = m_world.faults.begin(fault);
    m_world.remark("fault begins: " + order.text);
    switch (fault) {
    case Fault::mute:
    case Fault::stall:
        if (order.value > 0)
            endFaultAfter(order.value, fault, serial);
        break;
    case Fault::boot:
        cutSupply();
        endFaultAfter(order.value, fault, serial);
        break;
    case Fault::replug:
        pull();
        endFaultAfter(order.value, fault, serial);
        break;
    case Fault::hangUp:
        pull();
        break;
    case Fault::standby:
        m_block.switchToStandby();
        endFault(fault);
        break;
    case Fault::errorUnasked:
        m_replies.send({0x90, 0x60, static_cast<uint8_t>(order.value), 0xFF}, "error unasked");
        endFault(fault);
        break;
    case Fault::powerCut:
        m_block.cutPowerAtCommand(static_cast<unsigned long>(order.value));
        break;
    case Fault::flood:
        m_replies.flood(serial);
        break;
    case Fault::report:
        m_replies.randomReports(serial);
        break;
    default:
        break;
    }
}

void Simulation::endFault(Fault fault) {
    const bool begun = m_world.faults.active(fault);
    m_world.faults.remove(fault);
    if (fault == Fault::powerCut)
        m_block.cutPowerAtCommand(0);
    if (!begun)
        return;
    m_world.remark("fault over: " + faultName(fault));
    if (fault == Fault::upgradeStuck)
        m_block.upgrade().unstick();
    if (fault == Fault::boot)
        m_block.supplyOn();
    if (fault == Fault::replug || fault == Fault::hangUp)
        plugInAgain();
}

void Simulation::clearFault(const std::string &name, Clock::time_point now) {
    m_world.now = now;
    endFault(faultByName(name));
}

void Simulation::clearFaults(Clock::time_point now) {
    m_world.now = now;
    for (const Fault fault : m_world.faults.present())
        endFault(fault);
}

/* ---- For others to see ---- */

State Simulation::state(Clock::time_point now) {
    m_world.now = now;
    State state;
    m_block.describe(state);
    state.baud = baud();
    state.pluggedIn = m_pty.isOpen();
    state.sent = m_replies.counts();
    state.packetsSeen = m_packets;
    state.noiseBytes = m_noise;
    state.lostBytes = m_line.lostBytes();
    state.faults = m_world.faults.texts();
    return state;
}

std::vector<TraceEvent> Simulation::takeDiary() {
    return std::exchange(m_world.diary, {});
}

} // namespace sim
