#ifndef VISCACAM_TOOL_DEMO_WITNESS_H
#define VISCACAM_TOOL_DEMO_WITNESS_H

#include <optional>

#include "sim/sim.h"

namespace tool {

/* Something that a camera believes, and how it can be learnt. */
struct Item {
    const char *setting; /* name in a simulated camera's state; "zoom" and "focus" are the lens's positions */
    uint8_t inquiry;     /* 81 09 04 INQUIRY FF asks a camera on a line; NO_INQUIRY: nothing does */
    size_t size;         /* bytes of the answer, a nibble each */
};
constexpr uint8_t NO_INQUIRY = 0xFF;

/* What was learnt. */
struct Belief {
    bool asked = true;             /* false: there is no way to ask */
    std::optional<unsigned> value; /* empty: no answer, or one that cannot be understood */
};

/* Says what the camera believes. One thread at a time. */
class Witness {
  public:
    virtual ~Witness() = default;
    virtual Belief look(const Item &item) = 0;
    virtual Belief registerValue(uint8_t number) = 0;
    /* The capability word and the clock of a Kova module. */
    virtual Belief ability() = 0;
    virtual Belief clock() = 0;
    /* Packets that the camera has received, or that were sent to one that does not count. */
    virtual unsigned long packets() = 0;
};

/* Looks into a simulated camera. */
class SimulatedWitness : public Witness {
  public:
    explicit SimulatedWitness(const sim::Camera &camera) : m_camera(camera) {}
    Belief look(const Item &item) override;
    Belief registerValue(uint8_t number) override;
    Belief ability() override;
    Belief clock() override;
    unsigned long packets() override;

  private:
    const sim::Camera &m_camera;
};

/* Asks a camera on a line, through the library. Each look blocks for an answer, at most 6 s. */
class InquiringWitness : public Witness {
  public:
    Belief look(const Item &item) override;
    Belief registerValue(uint8_t number) override;
    Belief ability() override;
    Belief clock() override;
    unsigned long packets() override;
};

/* Ask the camera 81 09 04 ITEM FF. Empty when it refused or did not answer; else the answer's data bytes. */
std::optional<sim::Bytes> inquire(uint8_t item);

} // namespace tool

#endif
