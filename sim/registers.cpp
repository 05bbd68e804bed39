#include "sim/registers.h"

#include "sim/block.h"

namespace sim {

namespace {

constexpr unsigned SYNC_MODE = 0x56;
constexpr unsigned MONITOR_MODE = 0x72;
constexpr unsigned OUTPUT_ENABLE = 0x73;
constexpr unsigned REGISTER_COUNT = 0x80;

Outcome writeRegister(Block &block, const Args &args) {
    const unsigned number = args.number(0, 2);
    if (number >= REGISTER_COUNT)
        return refused(SYNTAX_ERROR);
    block.registers().write(number, static_cast<uint8_t>(args.number(2, 2)));
    return done();
}

Outcome readRegister(Block &block, const Args &args) {
    const unsigned number = args.number(0, 2);
    if (number >= REGISTER_COUNT)
        return refused(SYNTAX_ERROR);
    return answerNibbles(block.registers().read(number), 2);
}

} // namespace

Registers::Registers(const Traits &traits) {
    m_effective[SYNC_MODE] = 0x01;
    m_effective[MONITOR_MODE] = traits.monitorMode;
    m_effective[OUTPUT_ENABLE] = 0x03;
}

void Registers::write(unsigned number, uint8_t value) {
    if (number == SYNC_MODE || number == MONITOR_MODE || number == OUTPUT_ENABLE)
        m_pending[number] = value;
    else
        m_effective.at(number) = value;
}

void Registers::applyPending() {
    for (const auto &[number, value] : m_pending)
        m_effective.at(number) = static_cast<uint8_t>(value);
    m_pending.clear();
}

std::map<unsigned, unsigned> Registers::effective() const {
    std::map<unsigned, unsigned> used;
    for (unsigned number = 0; number < REGISTER_COUNT; ++number) {
        if (m_effective[number] != 0)
            used[number] = m_effective[number];
    }
    return used;
}

std::vector<Row> registerRows() {
    return {
        {"01 04 24 mn 0p 0q", writeRegister, Standby::serves},
        {"09 04 24 mn", readRegister, Standby::serves},
    };
}

} // namespace sim
