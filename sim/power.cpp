#include "sim/block.h"

namespace sim {

namespace {

Outcome switchOn(Block &block, const Args &) {
    block.switchOn();
    return done();
}

Outcome switchToStandby(Block &block, const Args &) {
    block.switchToStandby();
    return done();
}

Outcome reset(Block &block, const Args &) {
    block.reset();
    return done();
}

Outcome tellPower(Block &block, const Args &) {
    return answer({static_cast<uint8_t>(block.power() == Power::on ? 0x02 : 0x03)});
}

} // namespace

std::vector<Row> powerRows() {
    return {
        {"01 04 00 02", switchOn, Standby::serves},
        {"01 04 00 03", switchToStandby, Standby::serves},
        {"09 04 00", tellPower, Standby::serves},
        {"01 04 19 03", reset},
    };
}

void Block::startIn(Power power) {
    if (power == Power::booting) {
        supplyOn();
        return;
    }
    forgetAll();
    m_power = power;
}

void Block::supplyOn() {
    if (m_power != Power::off)
        return;
    m_world.remark("supply on");
    boot();
    m_replies.send({0x90, 0x38, 0xFF}, "power-up");
}

void Block::supplyOff() {
    if (m_power == Power::off)
        return;
    m_world.remark("supply off");
    ++m_outages;
    m_transfer.stop();
    m_upgrade.supplyOff();
    m_log.supplyOff();
    m_waiting.clear();
    forgetAll();
    m_power = Power::off;
}

void Block::switchOn() {
    if (m_power == Power::standby)
        boot();
}

void Block::switchToStandby() {
    m_lens.stop(ZOOM_AXIS | FOCUS_AXIS, m_world.now);
    watchLens();
    if (m_power != Power::standby)
        m_world.remark("standby");
    m_power = Power::standby;
}

// The block starts again from its defaults as after power-on, and is as deaf meanwhile.
void Block::reset() {
    boot();
}

void Block::boot() {
    forgetAll();
    m_registers.applyPending();
    m_settings.applyPending();
    m_kova.restart();
    m_power = Power::booting;
    m_world.remark("booting");
    later(m_world.now + m_world.real(m_world.options.bootTime), [this] {
        m_power = Power::on;
        m_world.remark("on");
    });
}

void Block::forgetAll() {
    ++m_epoch;
    for (Socket &socket : m_sockets)
        socket = Socket();
    m_edgeAwaited = false;
    m_settings.restore();
    m_lens.home(m_world.now);
    for (Watch &watch : m_watches)
        watch.moving = false;
}

} // namespace sim
