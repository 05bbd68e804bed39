// viscacam_soak: hours of traffic at line speed, with faults, and an account of it. See scripts/soak.
//
// One process for a Sony block and one for a Kova module, each with the library, the reference host and the
// simulated camera. Threads queue commands and profiles and ask questions as fast as the line takes them,
// while faults come and go. When the faults of a round are over, the traffic pauses: everything must answer
// again, and memory, descriptors and threads are counted.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/host.h"
#include "sim/random.h"
#include "sim/sim.h"
#include "tests/model/calls.h"
#include "tests/model/plan.h"
#include "tests/model/settle.h"
#include "tests/model/witness.h"
#include "viscacam.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr char USAGE[] =
    "usage: viscacam_soak [--hours N] [--seed S]    N may be a fraction, 1 unless told otherwise\n"
    "Exit status: 0 all held, 1 something grew or a law was broken, 2 wrong usage.\n";

constexpr unsigned ASKERS = 2;
constexpr uint32_t BUSY_QUEUE = 8;
constexpr milliseconds RECOVERY{60000};
constexpr seconds LONGEST_INQUIRY{6 * (ASKERS + 1) + 5}; // behind all others, on a busy machine
constexpr milliseconds BETWEEN_CALLS{1}; // without an adapter a call fails at once, and says so
constexpr uint64_t MOST_LINES = 8000;    // in a second: one a byte at line speed, both ways
constexpr uint64_t HEAP_SLACK = 256 * 1024;
constexpr uint64_t MEMORY_SLACK = 4096 * 1024;
constexpr seconds PROGRESS{300};

/* ---- What is measured ---- */

struct Measure {
    uint64_t memory = 0; // resident bytes
    uint64_t heap = 0;   // bytes in use
    uint64_t descriptors = 0;
    uint64_t threads = 0;
};

uint64_t EntriesOf(const char *folder) {
    return static_cast<uint64_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

Measure MeasureNow() {
    Measure now;
    uint64_t total = 0;
    std::ifstream("/proc/self/statm") >> total >> now.memory;
    now.memory *= static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    const struct mallinfo2 heap = mallinfo2();
    now.heap = heap.uordblks + heap.hblkhd;
    now.descriptors = EntriesOf("/proc/self/fd");
    now.threads = EntriesOf("/proc/self/task");
    return now;
}

// Leaks go on: the least of the last third of a run is compared with the most of the first third.
bool Grew(const std::vector<Measure> &measures, uint64_t Measure::*what, uint64_t slack) {
    const size_t third = measures.size() / 3;
    if (third == 0) {
        return false;
    }
    const auto less = [what](const Measure &a, const Measure &b) { return a.*what < b.*what; };
    const auto count = static_cast<std::ptrdiff_t>(third);
    const Measure most = *std::max_element(measures.begin(), measures.begin() + count, less);
    const Measure least = *std::min_element(measures.end() - count, measures.end(), less);
    return least.*what > most.*what + slack;
}

/* ---- One camera ---- */

class Soak {
  public:
    Soak(const std::string &camera, const std::string &folder, uint64_t seed);
    /** @return what went wrong, empty if nothing */
    std::string RunFor(std::chrono::duration<double> time);
    void Print() const;

  private:
    static sim::Options OptionsOf(const std::string &camera, const std::string &folder, uint64_t seed);
    std::string Start();
    void StartTraffic();
    void Command(uint64_t seed);
    void AskOn(unsigned asker, uint64_t seed);
    void PauseTraffic(bool pause);
    std::string Round();
    std::string StrikeFor(milliseconds time);
    std::string Watch(milliseconds time);
    std::string Settle();
    std::string Judge() const;

    const std::string m_name;
    sim::Random m_dice;
    sim::Camera m_camera;
    model::Forecast m_nature; // only for what kind of module it is
    model::Witness &m_witness = model::Witness::Begin(false);
    std::mutex m_gate[ASKERS + 1]; // each traffic thread holds its own while it calls
    std::atomic<Clock::rep> m_asking[ASKERS] = {};
    std::atomic<uint64_t> m_calls{0};
    seconds m_share{1}; // of the whole time that peace and faults may take of a round
    uint64_t m_faults = 0;
    uint64_t m_rounds = 0;
    uint64_t m_mostLines = 0;
    uint64_t m_lines = 0;
    Clock::rep m_longestAsk = 0;
    std::vector<Measure> m_measures;
};

sim::Options Soak::OptionsOf(const std::string &camera, const std::string &folder, uint64_t seed) {
    sim::Options options;
    options.camera = camera;
    options.baud = 38400;
    options.vertical = false;
    options.start = sim::Power::on;
    options.bootTime = milliseconds(500);
    options.link = folder + "/" + camera;
    options.seed = seed;
    return options;
}

Soak::Soak(const std::string &camera, const std::string &folder, uint64_t seed)
    : m_name(camera), m_dice(seed), m_camera(OptionsOf(camera, folder, seed)),
      m_nature(sim::findCamera(camera).code) {}

std::string Soak::Start() {
    const uint32_t type = m_camera.state().type;
    host::SetBoard({type, 0, 0, "TEST-BOARD"});
    const std::string why = host::MapPort(0, m_camera.path());
    (void)VISCA_SetCamModuleType(type);
    if (!why.empty() || ViscaCamComInit(0) != 0 || ViscaStartMsgProc() != 0) {
        return "the library does not start " + why;
    }
    (void)SonyInitCamIMG(type);
    (void)SonyInitCamAF(type);
    StartTraffic();
    return "";
}

void Soak::StartTraffic() {
    std::thread([this, seed = m_dice.next()] { Command(seed); }).detach();
    for (unsigned i = 0; i < ASKERS; ++i) {
        std::thread([this, i, seed = m_dice.next()] { AskOn(i, seed); }).detach();
    }
}

// A motion over the whole range takes longer than the library waits for its result, and holds up the rest.
bool IsSlow(const std::string &name) {
    return name == "zoom-to" || name == "zoom-focus-to" || name == "zoom-return" || name == "near-limit";
}

void Soak::Command(uint64_t seed) {
    sim::Random dice(seed);
    model::Commands commands;
    for (;;) {
        if (host::QueueDepth(VISCA_CMD_QUEUE_ID) >= BUSY_QUEUE) {
            std::this_thread::sleep_for(milliseconds(2));
            continue;
        }
        std::this_thread::sleep_for(BETWEEN_CALLS);
        const std::string name = model::CallName(dice.next(), m_nature.IsKova());
        const std::lock_guard lock(m_gate[ASKERS]);
        if (!model::IsInquiry(name) && (!IsSlow(name) || dice.below(50) == 0)) {
            (void)commands.Call(name, static_cast<uint32_t>(dice.below(4096)));
            (void)model::Witness::TakeQueued();
            ++m_calls;
        }
    }
}

void Soak::AskOn(unsigned asker, uint64_t seed) {
    sim::Random dice(seed);
    for (;;) {
        const std::string name = model::CallName(dice.next(), m_nature.IsKova());
        if (!model::IsInquiry(name)) {
            continue;
        }
        std::this_thread::sleep_for(BETWEEN_CALLS);
        const std::lock_guard lock(m_gate[asker]);
        std::string text;
        m_asking[asker] = Clock::now().time_since_epoch().count();
        (void)model::Ask(name, static_cast<uint32_t>(dice.below(4096)), &text);
        m_asking[asker] = 0;
        ++m_calls;
    }
}

void Soak::PauseTraffic(bool pause) {
    for (std::mutex &gate : m_gate) {
        pause ? gate.lock() : gate.unlock();
    }
}

// A second at a time, so that the busiest second of the log shows.
std::string Soak::Watch(milliseconds time) {
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        std::this_thread::sleep_for(seconds(1));
        const uint64_t lines = m_witness.LogLines();
        m_mostLines = std::max(m_mostLines, lines - m_lines);
        m_lines = lines;
        for (const auto &asking : m_asking) {
            const Clock::rep since = asking;
            if (since != 0) {
                m_longestAsk = std::max(m_longestAsk, Clock::now().time_since_epoch().count() - since);
            }
        }
        if (Clock::duration(m_longestAsk) > LONGEST_INQUIRY) {
            return "an inquiry is stuck";
        }
        const std::string broken = m_witness.Broken();
        if (!broken.empty()) {
            return broken;
        }
    }
    return m_mostLines > MOST_LINES ? "too many log lines" : "";
}

std::string Soak::StrikeFor(milliseconds time) {
    for (uint64_t left = 1 + m_dice.below(3); left > 0; --left) {
        m_camera.setFault(model::Faults()[m_dice.below(model::Faults().size())]);
        ++m_faults;
    }
    return Watch(time);
}

std::string Soak::Settle() {
    const auto answers = [this] {
        model::EndTornPacket();
        if (m_camera.state().power == sim::Power::standby) {
            (void)SonySetPower(1);
        }
        return model::Answers();
    };
    if (!model::Await(answers, RECOVERY)) {
        return "the camera does not answer after the faults: " + m_camera.stateJson();
    }
    if (!host::WaitDrained(RECOVERY)) {
        return "commands stay queued";
    }
    if (!model::Await(model::IsInStep, RECOVERY)) {
        return "answers stay shifted after the faults";
    }
    (void)model::Witness::TakeQueued();
    m_measures.push_back(MeasureNow());
    return m_witness.ComparedWithHost(false);
}

std::string Soak::Round() {
    ++m_rounds;
    const auto atMost = [this](uint64_t time) { return std::min(seconds(time), m_share); };
    std::string wrong = Watch(atMost(3 + m_dice.below(8)));
    if (wrong.empty()) {
        wrong = StrikeFor(atMost(2 + m_dice.below(7)));
    }
    m_camera.clearFaults();
    if (wrong.empty()) {
        wrong = Watch(seconds(2));
    }
    PauseTraffic(true);
    if (wrong.empty()) {
        wrong = Settle();
    }
    PauseTraffic(false);
    return wrong;
}

std::string Soak::Judge() const {
    if (Grew(m_measures, &Measure::descriptors, 0)) {
        return "descriptors leak";
    }
    if (Grew(m_measures, &Measure::threads, 0)) {
        return "threads leak";
    }
    if (Grew(m_measures, &Measure::heap, HEAP_SLACK)) {
        return "the heap grows";
    }
    return Grew(m_measures, &Measure::memory, MEMORY_SLACK) ? "memory grows" : "";
}

std::string Soak::RunFor(std::chrono::duration<double> time) {
    m_share = std::max(seconds(1), std::chrono::duration_cast<seconds>(time / 3));
    std::string wrong = Start();
    auto report = Clock::now() + PROGRESS;
    for (const auto end = Clock::now() + time; wrong.empty() && Clock::now() < end;) {
        wrong = Round();
        if (Clock::now() >= report) {
            report += PROGRESS;
            Print();
        }
    }
    return wrong.empty() ? Judge() : wrong;
}

void Soak::Print() const {
    const host::Counters counters = host::GetCounters();
    const Measure first = m_measures.empty() ? Measure() : m_measures.front();
    const Measure last = m_measures.empty() ? Measure() : m_measures.back();
    const auto number = [](uint64_t value) { return static_cast<unsigned long long>(value); };
    std::printf(
        "%s: %llu rounds, %llu faults, %llu calls, %llu packets sent, %llu heard by the camera\n"
        "  results %llu, answers %llu, errors %llu, without result %llu, without answer %llu\n"
        "  junk bytes %llu, bad replies %llu, failed sends %llu; most log lines in a second %llu\n"
        "  longest inquiry %.1f s; at start and end: memory %llu and %llu KiB, heap %llu and %llu "
        "KiB, descriptors %llu and %llu, threads %llu and %llu\n",
        m_name.c_str(), number(m_rounds), number(m_faults), number(m_calls), number(counters.ullSends),
        static_cast<unsigned long long>(m_camera.state().packetsSeen), number(counters.ullCompletions),
        number(counters.ullAnswers), number(counters.ullErrors), number(counters.ullCommandTimeouts),
        number(counters.ullInquiryTimeouts), number(counters.ullJunkBytes), number(counters.ullBadReplies),
        number(counters.ullSendFailures), number(m_mostLines),
        std::chrono::duration<double>(Clock::duration(m_longestAsk)).count(), number(first.memory / 1024),
        number(last.memory / 1024), number(first.heap / 1024), number(last.heap / 1024),
        number(first.descriptors), number(last.descriptors), number(first.threads), number(last.threads));
    std::fflush(stdout);
}

/* ---- Both ---- */

[[noreturn]] void BeChild(const std::string &camera, const std::string &folder, double hours, uint64_t seed) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Soak &soak = *new Soak(camera, folder, seed); // its threads go on to the end
    const std::string wrong = soak.RunFor(std::chrono::duration<double>(hours * 3600));
    soak.Print();
    std::printf("%s: %s\n", camera.c_str(), wrong.empty() ? "all held" : ("FAILED: " + wrong).c_str());
    std::fflush(stdout);
    _exit(wrong.empty() ? 0 : 1);
}

int SoakAll(double hours, uint64_t seed) {
    char name[] = "/tmp/viscacam-soak-XXXXXX";
    const std::string folder = mkdtemp(name) != nullptr ? name : "/tmp";
    std::printf("%g hours, seed %llu\n", hours, static_cast<unsigned long long>(seed));
    std::fflush(stdout);
    for (const char *camera : {"sony3", "kova2"}) {
        if (fork() == 0) {
            BeChild(camera, folder, hours, seed);
        }
    }
    bool held = true;
    for (int status = 0; wait(&status) > 0;) {
        const bool whole = WIFEXITED(status);
        if (!whole) {
            std::printf("FAILED: died of signal %d\n", WTERMSIG(status));
        }
        held = held && whole && WEXITSTATUS(status) == 0;
    }
    std::filesystem::remove_all(name);
    return held ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    double hours = 1;
    uint64_t seed = 1;
    bool usable = argc % 2 == 1;
    for (int i = 1; usable && i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        char *end = nullptr;
        if (option == "--hours") {
            hours = std::strtod(argv[i + 1], &end);
        } else if (option == "--seed") {
            seed = std::strtoull(argv[i + 1], &end, 10);
        }
        usable = end != nullptr && end != argv[i + 1] && *end == '\0';
    }
    if (!usable || !(hours > 0 && hours < 1e6)) {
        std::fputs(USAGE, stderr);
        return 2;
    }
    return SoakAll(hours, seed);
}
