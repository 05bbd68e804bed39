#ifndef VISCACAM_SIM_FAULTS_H
#define VISCACAM_SIM_FAULTS_H

#include "sim/random.h"
#include "sim/sim.h"

#include <map>
#include <optional>

namespace sim {

enum class Fault {
    dropTx,
    dropRx,
    dropFf,
    dup,
    flip,
    split,
    merge,
    noise,
    mute,
    boot,
    noAck,
    noCompletion,
    late,
    reorder,
    wrongSocket,
    address,
    error,
    errorUnasked,
    busy,
    lateAnswer,
    dupAnswer,
    powerCut,
    standby,
    rate,
    hangUp,
    replug,
    flood,
    length,
    stall,
    report,
    transferAbort,
    transferChecksum,
    upgradeStuck,
    upgradeState,
};

/* A fault as the user wrote it: NAME[=VALUE][#COUNT][@START[..END]]. */
struct FaultOrder {
    Fault fault;
    std::string text;
    double value = 0;
    unsigned long count = 0; /* 0: without end */
    double start = 0;        /* seconds from now */
    std::optional<double> end;
};

/* Throws std::invalid_argument with what is allowed. */
FaultOrder parseFault(const std::string &text);
Fault faultByName(const std::string &name);
std::string faultName(Fault fault);

/* The faults that are set, and the dice that decide when they strike. Each fault has dice of its own, so that
   switching one on does not change what another one does. */
class Faults {
  public:
    explicit Faults(uint64_t seed) : m_seed(seed) {}

    /* Remember a fault, not yet striking. Returns its serial number: an older one's timers must leave it
     * alone. */
    unsigned long set(const FaultOrder &order);
    bool isCurrent(Fault fault, unsigned long serial) const;
    /* Its time has come. Returns its serial number. */
    unsigned long begin(Fault fault);
    void remove(Fault fault);

    bool active(Fault fault) const;
    double value(Fault fault) const;
    /* Whether the fault happens this time; draws if its value is a probability, and counts. */
    bool strikes(Fault fault);
    Random &dice(Fault fault);
    std::vector<Fault> present() const;
    std::vector<std::string> texts() const;

  private:
    struct Entry {
        FaultOrder order;
        unsigned long serial;
        unsigned long struck = 0;
        bool begun = false;
    };

    uint64_t m_seed;
    unsigned long m_serials = 0;
    std::map<Fault, Entry> m_entries;
    std::map<Fault, Random> m_dice;
};

} // namespace sim

#endif
