#ifndef VISCACAM_SIM_KOVA_UPGRADE_H
#define VISCACAM_SIM_KOVA_UPGRADE_H

#include "sim/command_table.h"
#include "sim/temp_folder.h"
#include "sim/transfer.h"

#include <deque>
#include <optional>

namespace sim {

struct Kova;

/*
 * The upgrade of a Kova module:
 *
 *   start packet -> receiving, file by file -> checked -> flashing -> success, the new version runs
 *                                                      -> failed
 *
 * A file that does not come does not end it: the host sends the others all the same. A silent host does, and
 * so does a loss of supply.
 */
class KovaUpgrade {
  public:
    KovaUpgrade(World &world, Transfer &transfer, Kova &kova)
        : m_world(world), m_transfer(transfer), m_kova(kova) {}

    /* mask: a bit for each file that will come. false: one is under way. */
    bool start(uint32_t mask);
    /* The state, or what the fault makes of it. */
    unsigned toldState();
    void supplyOff();
    /* The fault that kept it flashing is over. */
    void unstick();
    /* As received, with padding; empty: none of that kind. */
    Bytes received(const std::string &kind) const;
    void describe(KovaState &state) const;

  private:
    void receiveNext();
    void accept(const std::string &kind, Transfer::End end);
    void check();
    void flash();
    void finish();
    void fail(const std::string &why);
    bool underWay() const;

    World &m_world;
    Transfer &m_transfer;
    Kova &m_kova;
    std::optional<TempFolder> m_folder;
    unsigned m_state = 0;
    uint32_t m_mask = 0;
    unsigned long m_serial = 0;          /* of the upgrade */
    std::deque<std::string> m_expected;  /* kinds of the files to come */
    std::map<std::string, Bytes> m_came; /* by kind */
    std::vector<KovaFile> m_files;       /* in the order of arrival */
    bool m_complete = false;             /* every file so far has come */
    bool m_stuck = false;
};

std::vector<Row> kovaUpgradeRows();

} // namespace sim

#endif
