#ifndef VISCACAM_SIM_KOVA_LOG_H
#define VISCACAM_SIM_KOVA_LOG_H

#include "sim/cameras.h"
#include "sim/command_table.h"
#include "sim/temp_folder.h"
#include "sim/transfer.h"

#include <optional>

namespace sim {

/* The log that a Kova module keeps, sends as a compressed archive and saves when it is told to. */
class KovaLog {
  public:
    KovaLog(World &world, Transfer &transfer, unsigned exportBaud)
        : m_world(world), m_transfer(transfer), m_exportBaud(exportBaud) {}

    /* select: what the host asks for; the files are named after it. time: of the files, seconds. */
    void send(unsigned select, uint32_t time);
    void save() { ++m_saves; }
    /* Forget the archive that was being sent. */
    void supplyOff() { m_folder.reset(); }
    void describe(KovaState &state) const;

  private:
    std::string archive(const TempFolder &folder, unsigned select, uint32_t time) const;

    World &m_world;
    Transfer &m_transfer;
    unsigned m_exportBaud;
    std::optional<TempFolder> m_folder;
    unsigned long m_exports = 0;
    unsigned long m_saves = 0;
};

/* exportBaud of a module; 0: as the line is. */
unsigned logExportBaud(const Traits &traits);
std::vector<Row> kovaLogRows();

} // namespace sim

#endif
