/* What a log line costs: thrown away by the host's filter, written, and a packet in hex. */
#include <ctime>

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include "bench/groups.h"
#include "bench/services.h"
#include "visca_que/log.h"
#include "viscacam.h"

namespace bench {

namespace {

constexpr unsigned LINES = 200000;
constexpr double MICROSECONDS = 1e6;

template <typename Call>
double costOf(Call call) {
    const unsigned lines = times(LINES);
    const double from = seconds();
    for (unsigned i = 0; i < lines; ++i)
        call(i);
    return (seconds() - from) / lines * MICROSECONDS;
}

// The prefix of a line, its time taken beforehand, and the write of it.
double costOfWriting(int fd) {
    return costOf([fd](unsigned i) {
        char line[512];
        const int size = snprintf(line, sizeof line, LOG_PREFIX "FUN_ENTRY--param:\n", 2026, 11, 20, 12, 0, 0,
                                  static_cast<unsigned long>(i % 1000000), "packet.cpp",
                                  "ViscaIsCmdQueueEmpty", 67, "DEBUG");
        (void)!write(fd, line, static_cast<size_t>(size));
    });
}

Numbers costs() {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const ViscaPkt packet = {{0x90, 0x50, 0x00, 0x04, 0x0A, 0x07, 0xFF}, 7};
    const auto line = [](unsigned) { LOG_DEBUG("FUN_ENTRY--param:\n"); };
    const auto dump = [&packet](unsigned) { ViscaPrintPkt(&packet, 0); };
    logTo(-1);
    const double filtered = costOf(line);
    logTo(null);
    return {filtered, costOf(line), costOf(dump), costOfWriting(null)};
}

} // namespace

void logFigures(unsigned runs, std::vector<Row> &rows) {
    const char peer[] = "the prefix formatted and written";
    Row filtered = {"a log line that the host filters out", peer, "us", {}, {}, Row::Bound::atMost, 0.15};
    Row written = {"a log line written", peer, "us", {}, {}, Row::Bound::atMost, 1.3};
    Row dump = {"a packet dump written", peer, "us", {}, {}, Row::Bound::atMost, 1.5};
    for (unsigned run = 0; run < runs; ++run) {
        const Numbers cost = inChild(costs);
        filtered.add(cost[0], cost[3]);
        written.add(cost[1], cost[3]);
        dump.add(cost[2], cost[3]);
    }
    rows.insert(rows.end(), {filtered, written, dump});
}

} // namespace bench
