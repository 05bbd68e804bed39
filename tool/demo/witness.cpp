#include "tool/demo/witness.h"

#include <cstring>

#include "host/host.h"
#include "viscacam.h"

namespace tool {

namespace {

constexpr uint8_t ITEM_ABILITY = 0xAB;
constexpr size_t ABILITY_SIZE = 9; // its first byte is not part of the word
const Belief NOT_TO_BE_ASKED = {false, std::nullopt};

// Nibbles from the most significant on, one in each byte.
std::optional<unsigned> number(const std::optional<sim::Bytes> &data, size_t size, size_t first = 0) {
    if (!data || data->size() != size)
        return std::nullopt;
    unsigned value = 0;
    for (size_t i = first; i < size; ++i)
        value = value * 16 + (*data)[i];
    return value;
}

} // namespace

std::optional<sim::Bytes> inquire(uint8_t item) {
    ViscaPkt question = {};
    ViscaPkt reply = {};
    ViscaInitPkt(&question);
    for (const uint8_t byte : {uint8_t{0x09}, uint8_t{0x04}, item})
        ViscaAppendByte(byte, &question);
    // A reply has its address, 0x50, data and the terminator; one of no length was never received.
    if (ViscaInquiry(&question, &reply) != VISCA_SUCCESS || reply.ulLength < 3 || reply.ulLength > 16)
        return std::nullopt;
    return sim::Bytes(reply.aucData + 2, reply.aucData + reply.ulLength - 1);
}

Belief SimulatedWitness::look(const Item &item) {
    const sim::State state = m_camera.state();
    if (std::strcmp(item.setting, "zoom") == 0)
        return {true, state.zoom};
    if (std::strcmp(item.setting, "focus") == 0)
        return {true, state.focus};
    return {true, static_cast<unsigned>(state.setting(item.setting))};
}

Belief SimulatedWitness::registerValue(uint8_t number) {
    const sim::State state = m_camera.state();
    const auto found = state.registers.find(number);
    return {true, found == state.registers.end() ? 0 : found->second};
}

Belief SimulatedWitness::ability() {
    return {true, m_camera.state().kova.ability};
}
Belief SimulatedWitness::clock() {
    return {true, m_camera.state().kova.clock};
}
unsigned long SimulatedWitness::packets() {
    return m_camera.state().packetsSeen;
}

Belief InquiringWitness::look(const Item &item) {
    if (item.inquiry == NO_INQUIRY)
        return NOT_TO_BE_ASKED;
    return {true, number(inquire(item.inquiry), item.size)};
}

Belief InquiringWitness::registerValue(uint8_t number) {
    uint8_t value = 0;
    if (SonyGetRegisterVal(number, &value) != VISCA_SUCCESS)
        return {};
    return {true, value};
}

Belief InquiringWitness::ability() {
    return {true, number(inquire(ITEM_ABILITY), ABILITY_SIZE, 1)};
}
Belief InquiringWitness::clock() {
    return NOT_TO_BE_ASKED;
}
unsigned long InquiringWitness::packets() {
    return host::GetCounters().ullSends;
}

} // namespace tool
