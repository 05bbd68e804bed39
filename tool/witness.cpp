#include "tool/witness.h"

#include "viscacam.h"

namespace tool {

namespace {

constexpr uint8_t ITEM_DIGITAL_ZOOM = 0x06;
constexpr uint8_t ITEM_FOCUS_MODE = 0x38;
constexpr uint8_t ITEM_ZOOM = 0x47;
constexpr uint8_t ITEM_FOCUS = 0x48;

// One byte, or one nibble in each of four.
std::optional<unsigned> number(uint8_t item, size_t size) {
    const std::optional<sim::Bytes> data = inquire(item);
    if (!data || data->size() != size)
        return std::nullopt;
    unsigned value = 0;
    for (const uint8_t byte : *data)
        value = value * 16 + byte;
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

std::optional<unsigned> SimulatedWitness::zoom() {
    return m_camera.state().zoom;
}
std::optional<unsigned> SimulatedWitness::focus() {
    return m_camera.state().focus;
}
std::optional<unsigned> SimulatedWitness::digitalZoom() {
    return static_cast<unsigned>(m_camera.state().setting("dzoom"));
}
std::optional<unsigned> SimulatedWitness::focusMode() {
    return static_cast<unsigned>(m_camera.state().setting("focusMode"));
}

std::optional<unsigned> InquiringWitness::zoom() {
    return number(ITEM_ZOOM, 4);
}
std::optional<unsigned> InquiringWitness::focus() {
    return number(ITEM_FOCUS, 4);
}
std::optional<unsigned> InquiringWitness::digitalZoom() {
    return number(ITEM_DIGITAL_ZOOM, 1);
}
std::optional<unsigned> InquiringWitness::focusMode() {
    return number(ITEM_FOCUS_MODE, 1);
}

} // namespace tool
