/* A library at rest: how often its threads wake up. */
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "bench/allocations.h"
#include "bench/groups.h"
#include "bench/library.h"
#include "bench/line.h"
#include "bench/services.h"
#include "sim/sim.h"

namespace bench {

namespace {

constexpr std::chrono::seconds WATCHED{24}; // four waits of 6 s

uint64_t switchesOf(const std::filesystem::path &task) {
    std::ifstream status(task / "status");
    std::string word;
    uint64_t count = 0;
    while (status >> word)
        if (word == "voluntary_ctxt_switches:")
            status >> count;
    return count;
}

bool isLibrarys(const std::filesystem::path &task) {
    std::ifstream file(task / "comm");
    std::string name;
    std::getline(file, name);
    return name == "ViscaQueueMsg" || name == "ViscaAckMsgProc" || name == "AF_Debug";
}

uint64_t wakeUps() {
    uint64_t count = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task"))
        count += isLibrarys(task.path()) ? switchesOf(task.path()) : 0;
    return count;
}

Numbers atRest(const std::string &device, uint32_t moduleType) {
    startLibrary(device, moduleType);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const uint64_t lines = logLines();
    const uint64_t memory = allocations();
    const uint64_t before = wakeUps();
    const uint64_t looking = allocations() - memory; // by the look itself
    std::this_thread::sleep_for(WATCHED);
    const uint64_t allocated = allocations() - memory - looking;
    const uint64_t after = wakeUps();
    return {static_cast<double>(after - before) / static_cast<double>(WATCHED.count()),
            static_cast<double>(allocated), static_cast<double>(logLines() - lines)};
}

Numbers block() {
    const Line line;
    return atRest(line.path(), SONY_BLOCK);
}

Numbers module() {
    const sim::Camera camera(sim::Options::fast("kova2"));
    return atRest(camera.path(), KOVA_MODULE);
}

} // namespace

void idleFigures(unsigned, std::vector<Row> &rows) {
    const Numbers ofBlock = inChild(block);
    const Numbers ofModule = inChild(module);
    Row wakes = {"wake-ups a second at rest, Sony block", "two waits of 6 s", "/s"};
    wakes.add(ofBlock[0], 2.0 / 6);
    wakes.bound = Row::Bound::atMost;
    wakes.target = 1;
    Row wakesOfModule = {"wake-ups a second at rest, Kova module", "the same and a look for a file each 10 s",
                         "/s"};
    wakesOfModule.add(ofModule[0], 2.0 / 6 + 0.1);
    wakesOfModule.note = "a look falls into the time or not";
    Row memory = {"heap allocations at rest in 24 s", "none allowed", "calls"};
    memory.values = {ofBlock[1]};
    Row lines = {"log lines at rest in 24 s, INFO and above", "none allowed", "lines"};
    lines.values = {ofBlock[2] + ofModule[2]};
    rows.insert(rows.end(), {wakes, wakesOfModule, memory, lines});
}

} // namespace bench
