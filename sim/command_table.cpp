#include "sim/command_table.h"

#include <cctype>

namespace sim {

namespace {

constexpr uint8_t BROADCAST = 0x88;
constexpr size_t PATTERN_STEP = 3; // two digits and a blank

bool nibbleFits(char wanted, uint8_t nibble, Args &args) {
    if (wanted >= 'g') {
        args.add(nibble);
        return true;
    }
    const int value = std::isdigit(static_cast<unsigned char>(wanted)) ? wanted - '0' : wanted - 'A' + 10;
    return value == nibble;
}

bool rowFits(const Row &row, const Bytes &packet, Args &args) {
    const size_t payload = packet.size() - 2;
    if ((row.pattern.size() + 1) / PATTERN_STEP != payload)
        return false;
    if (packet[0] != row.header && !(packet[0] == BROADCAST && row.header == 0x81))
        return false;
    for (size_t i = 0; i < payload; ++i) {
        const uint8_t byte = packet[i + 1];
        if (!nibbleFits(row.pattern[i * PATTERN_STEP], byte >> 4, args) ||
            !nibbleFits(row.pattern[i * PATTERN_STEP + 1], byte & 0x0F, args))
            return false;
    }
    return true;
}

} // namespace

unsigned Args::number(size_t first, size_t count) const {
    unsigned value = 0;
    for (size_t i = first; i < first + count; ++i)
        value = value << 4 | m_nibbles.at(i);
    return value;
}

Outcome done() {
    return {Outcome::Kind::done, {}};
}

Outcome motion(unsigned axes) {
    return {Outcome::Kind::motion, {}, axes};
}

Outcome refused(uint8_t code) {
    return {Outcome::Kind::refused, {}, 0, code};
}

Outcome nothing() {
    return {Outcome::Kind::nothing, {}};
}

Outcome answer(const Bytes &data) {
    return {Outcome::Kind::answer, data};
}

Outcome answerNibbles(unsigned value, size_t count) {
    Bytes data(count);
    for (size_t i = 0; i < count; ++i)
        data[i] = value >> 4 * (count - 1 - i) & 0x0F;
    return answer(data);
}

void CommandTable::add(const std::vector<Row> &rows) {
    m_rows.insert(m_rows.end(), rows.begin(), rows.end());
}

CommandTable::Match CommandTable::find(const Bytes &packet) const {
    if (packet.size() < 3)
        return {nullptr, {}};
    for (const Row &row : m_rows) {
        Args args;
        if (rowFits(row, packet, args))
            return {&row, args};
    }
    return {nullptr, {}};
}

} // namespace sim
