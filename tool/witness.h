#ifndef VISCACAM_TOOL_WITNESS_H
#define VISCACAM_TOOL_WITNESS_H

#include <optional>

#include "sim/sim.h"

namespace tool {

/* Says what the camera believes. A value that cannot be had is empty. One thread at a time. */
class Witness {
  public:
    virtual ~Witness() = default;
    virtual std::optional<unsigned> zoom() = 0;
    virtual std::optional<unsigned> focus() = 0;
    virtual std::optional<unsigned> digitalZoom() = 0; /* 2 on, 3 off */
    virtual std::optional<unsigned> focusMode() = 0;   /* 2 auto, 3 manual */
};

/* Looks into a simulated camera. */
class SimulatedWitness : public Witness {
  public:
    explicit SimulatedWitness(const sim::Camera &camera) : m_camera(camera) {}
    std::optional<unsigned> zoom() override;
    std::optional<unsigned> focus() override;
    std::optional<unsigned> digitalZoom() override;
    std::optional<unsigned> focusMode() override;

  private:
    const sim::Camera &m_camera;
};

/* Asks a camera on a line, through the library. Each look blocks for an answer, at most 6 s. */
class InquiringWitness : public Witness {
  public:
    std::optional<unsigned> zoom() override;
    std::optional<unsigned> focus() override;
    std::optional<unsigned> digitalZoom() override;
    std::optional<unsigned> focusMode() override;
};

/* Ask the camera 81 09 04 ITEM FF. Empty when it refused or did not answer; else the answer's data bytes. */
std::optional<sim::Bytes> inquire(uint8_t item);

} // namespace tool

#endif
