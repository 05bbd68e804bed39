/* A hundred simulated cameras in one process: at rest, and each answering as fast as its line goes. */
#include <csignal>
#include <memory>
#include <thread>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/groups.h"
#include "bench/line.h"
#include "sim/sim.h"

namespace bench {

namespace {

constexpr size_t CAMERAS = 100;
constexpr std::chrono::seconds WATCHED{3};
const uint8_t QUESTION[] = {0x81, 0x09, 0x04, 0x47, 0xFF};

void ask(int fd) {
    if (write(fd, QUESTION, sizeof QUESTION) != static_cast<ssize_t>(sizeof QUESTION))
        _exit(1);
}

// Asks every camera again as soon as it has answered.
[[noreturn]] void keepAsking(const std::vector<std::string> &devices) {
    std::vector<pollfd> lines;
    for (const std::string &device : devices) {
        lines.push_back({openLine(device), POLLIN, 0});
        ask(lines.back().fd);
    }
    for (;;) {
        (void)poll(lines.data(), lines.size(), -1);
        for (const pollfd &line : lines) {
            uint8_t bytes[64];
            const ssize_t count = line.revents != 0 ? read(line.fd, bytes, sizeof bytes) : 0;
            if (count > 0 && bytes[count - 1] == 0xFF)
                ask(line.fd);
        }
    }
}

double share() {
    const double before = processorSeconds();
    std::this_thread::sleep_for(WATCHED);
    return (processorSeconds() - before) / static_cast<double>(WATCHED.count()) * 100;
}

Numbers busy() {
    std::vector<std::unique_ptr<sim::Camera>> cameras;
    std::vector<std::string> devices;
    sim::Options options;
    options.start = sim::Power::on;
    options.vertical = false;
    for (size_t i = 0; i < CAMERAS; ++i) {
        cameras.push_back(std::make_unique<sim::Camera>(options));
        devices.push_back(cameras.back()->path());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const double idle = share();
    const pid_t asker = fork();
    if (asker == 0)
        keepAsking(devices);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const double asked = share();
    const double answers = static_cast<double>(cameras.front()->state().sentCount("answer"));
    kill(asker, SIGKILL);
    waitpid(asker, nullptr, 0);
    return {idle, asked, answers / (static_cast<double>(WATCHED.count()) + 0.5)};
}

} // namespace

void cameraFigures(unsigned, std::vector<Row> &rows) {
    const Numbers numbers = inChild(busy);
    Row idle = {"processor time of 100 simulated cameras at rest", "none allowed", "% of a core"};
    idle.values = {numbers[0]};
    Row asked = {"the same, each asked as fast as 9600 bit/s go", "for information", "% of a core"};
    asked.values = {numbers[1]};
    Row rate = {"answers a second of one of them", "the line's", "/s"};
    rate.add(numbers[2], 80);
    rows.insert(rows.end(), {idle, asked, rate});
}

} // namespace bench
