#ifndef VISCACAM_SIM_REGISTERS_H
#define VISCACAM_SIM_REGISTERS_H

#include "sim/cameras.h"
#include "sim/command_table.h"

#include <array>
#include <map>

namespace sim {

/*
 * The register file, 0x00 to 0x7F. It outlives power cuts. Monitor mode, output enable and sync mode take
 * effect at the next power-on or reset; until then a read gives the value in effect.
 */
class Registers {
  public:
    explicit Registers(const Traits &traits);
    void write(unsigned number, uint8_t value);
    uint8_t read(unsigned number) const { return m_effective.at(number); }
    /* Power-on or reset. */
    void applyPending();
    /* Those that are not 0. */
    std::map<unsigned, unsigned> effective() const;
    const std::map<unsigned, unsigned> &pending() const { return m_pending; }

  private:
    std::array<uint8_t, 0x80> m_effective{};
    std::map<unsigned, unsigned> m_pending;
};

std::vector<Row> registerRows();

} // namespace sim

#endif
