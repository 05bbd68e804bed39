/* Putting a command: what a caller pays, and that nothing is allocated on the way. */
#include <atomic>
#include <cstring>
#include <thread>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "bench/allocations.h"
#include "bench/groups.h"
#include "bench/library.h"
#include "bench/line.h"
#include "bench/services.h"
#include "viscacam.h"

namespace bench {

namespace {

constexpr unsigned BATCHES = 2000;
constexpr unsigned IN_BATCH = 100;
constexpr double MICROSECONDS = 1e6;
constexpr unsigned EXCHANGES = 500;

uint32_t putCommand() {
    ViscaPkt packet = {{0x81, 0x01, 0x04, 0x07, 0x00}, 5};
    return ViscaEnQueueCmd(&packet);
}

// Median time of one call; a clock reading costs a twentieth of what is measured, so calls go by the hundred.
template <typename Call>
double costOf(Call call) {
    Numbers costs;
    const unsigned batches = times(BATCHES);
    costs.reserve(batches);
    for (unsigned batch = 0; batch < batches; ++batch) {
        const double from = seconds();
        for (unsigned i = 0; i < IN_BATCH; ++i)
            call();
        costs.push_back((seconds() - from) / IN_BATCH);
    }
    return median(costs) * MICROSECONDS;
}

Numbers costAlone() {
    const int fd = eventfd(0, EFD_NONBLOCK);
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    const double wake = costOf([&] {
        pthread_mutex_lock(&lock);
        eventfd_write(fd, 1);
        pthread_mutex_unlock(&lock);
    });
    commandQueue().sink();
    ViscaSetCamCanCtrl(1);
    return {costOf(putCommand), wake};
}

Numbers costBesideAnother() {
    commandQueue().sink();
    ViscaSetCamCanCtrl(1);
    std::atomic<bool> over{false};
    std::thread other([&over] {
        while (!over)
            (void)putCommand();
    });
    const double cost = costOf(putCommand);
    over = true;
    other.join();
    return {cost};
}

Numbers allocationsOfTraffic() {
    const Line line;
    startLibrary(line.path(), SONY_BLOCK); // whatever the C library allocates once has been allocated
    uint32_t position = 0;
    const uint64_t before = allocations();
    for (unsigned i = 0; i < EXCHANGES; ++i) {
        (void)VISCA_ZoomStop();
        (void)VISCA_GetZoomPos(&position);
    }
    return {static_cast<double>(allocations() - before)};
}

} // namespace

void queueFigures(unsigned runs, std::vector<Row> &rows) {
    Row one = {"a command put on the queue, one caller", "limit", "us", {}, {}, Row::Bound::atMost, 1};
    Row two = {
        "a command put on the queue, two callers at once", "limit", "us", {}, {}, Row::Bound::atMost, 1};
    Row wake = {"the same beside what it cannot do without", "eventfd write under a mutex", "us"};
    Row memory = {"heap allocations in 500 commands and inquiries", "none allowed", "calls"};
    for (unsigned run = 0; run < runs; ++run) {
        const Numbers alone = inChild(costAlone);
        one.add(alone[0], 1);
        wake.add(alone[0], alone[1]);
        two.add(inChild(costBesideAnother)[0], 1);
        memory.values.push_back(inChild(allocationsOfTraffic)[0]);
    }
    rows.insert(rows.end(), {one, two, wake, memory});
}

} // namespace bench
