#include "tests/faults/fault_test.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <thread>

#include <poll.h>
#include <termios.h>

namespace faults {

namespace {

constexpr uint32_t kFirstModule = 0x02012000; // the types before it are Sony's blocks
constexpr unsigned kPatience = 100;           // ms for an answer to the search, as the library waits

// Sanitizers and debug builds take their time.
constexpr double kProcessorPerByte = 0.001;
constexpr double kProcessorPerPacket = 0.005;
constexpr double kProcessorAnyway = 0.25;

std::atomic<uint64_t> g_reports;

void OnReport(uint32_t) {
    ++g_reports;
}

size_t CountEntries(const char *folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

// Threads that are being ended at this moment may still be counted.
bool AwaitEntries(const char *folder, size_t count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (CountEntries(folder) > count && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return CountEntries(folder) <= count;
}

// The kernel's number for a thread's processor clock.
clockid_t ProcessorClock(uint32_t thread) {
    constexpr uint32_t perThread = 4;
    constexpr uint32_t scheduled = 2;
    return static_cast<clockid_t>((~thread << 3) | perThread | scheduled);
}

double ProcessorOfThreads() {
    double seconds = 0;
    for (const host::ThreadInfo &thread : host::Threads()) {
        timespec used = {};
        if (clock_gettime(ProcessorClock(thread.ulThreadId), &used) == 0) {
            seconds += static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
        }
    }
    return seconds;
}

unsigned RateOf(int fd) {
    termios settings = {};
    tcgetattr(fd, &settings);
    const speed_t speed = cfgetospeed(&settings);
    return speed == B9600 ? 9600 : speed == B19200 ? 19200 : 38400;
}

// At a rate that the camera does not hear no answer can come, only noise that it has to hear before the rate
// changes, and between two attempts nothing is awaited.
std::function<bool(double)> SearchPauses(const sim::Camera &camera) {
    return [&camera, heard = camera.state().noiseBytes, heardAt = 0u](double seconds) mutable {
        pollfd line = {ViscaGetCamComFd(), POLLIN, 0};
        const unsigned rate = RateOf(line.fd);
        if (seconds >= 0.5) {
            heardAt = 0;
        } else if (rate == camera.state().baud) {
            poll(&line, 1, kPatience);
        } else if (rate != heardAt) {
            camera.waitFor([heard](const sim::State &state) { return state.noiseBytes > heard; },
                           std::chrono::milliseconds(kPatience));
            heardAt = rate;
        } else {
            poll(nullptr, 0, 5);
            heard = camera.state().noiseBytes;
        }
        return true;
    };
}

size_t CountSteps(const std::vector<std::string> &steps, const std::string &part) {
    return static_cast<size_t>(std::count_if(steps.begin(), steps.end(),
                                             [&](const std::string &step) { return Contains(step, part); }));
}

std::vector<std::string> Cut(std::vector<std::string> steps, size_t skip) {
    for (std::string &step : steps) {
        step = step.substr(skip);
    }
    return steps;
}

} // namespace

uint64_t ReportsHeard() {
    return g_reports;
}

sim::Options FaultTest::Paced(unsigned baud, uint64_t seed) {
    sim::Options options = sim::Options::fast("kova2");
    options.baud = baud;
    options.paced = true;
    options.seed = seed;
    return options;
}

void FaultTest::BeginUnder(const sim::Options &options) {
    PlugIn(options);
    OnPause(SearchPauses(Camera()));
    EXPECT_EQ(ViscaCamComInit(0), 0u);
    OnPause(nullptr);
    ASSERT_EQ(ViscaStartMsgProc(), 0u);
    if (!options.faults.empty()) {
        SetLibraryTimeScale(kHurry);
    }
    if (State().type >= kFirstModule) {
        EXPECT_LE(KovaDetectCamAbility(), 1u);
        EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, OnReport), 0u);
    } else {
        EXPECT_EQ(SonyInitCamAF(State().type), 0u); // a module's would read files that all programs share
    }
    EXPECT_TRUE(host::WaitDrained(kLimit));
    SetLibraryTimeScale(1);
    ASSERT_EQ(ViscaIsCamCanCtrl(), 1u) << "the library did not find the camera";
    BeginAccount();
}

void FaultTest::Begin(const sim::Options &options) {
    ASSERT_NO_FATAL_FAILURE(BeginUnder(options));
    EXPECT_EQ(SonySetRegisterVal(kRegister, kValue), 0u);
    Drain();
    uint8_t value = 0;
    EXPECT_EQ(Read(&value), 0u);
    EXPECT_EQ(value, kValue);
    ASSERT_EQ(Queue("81 09 00"), 0u); // thrown away: the sender has no more to say about start-up then
    ASSERT_TRUE(AwaitHost("discard it!"));
    ASSERT_EQ(TimeOuts(), 0u) << "before the fault has begun";
    Forget();
    BeginAccount();
}

void FaultTest::BeginAccount() {
    m_begun = true;
    m_descriptors = CountEntries("/proc/self/fd");
    m_threads = CountEntries("/proc/self/task");
    m_processor = ProcessorOfThreads();
    m_library = LibrarySeconds();
    m_waits = LibraryWaits();
}

uint32_t FaultTest::Read(uint8_t *value) {
    const double begin = LibrarySeconds();
    const uint32_t result = SonyGetRegisterVal(kRegister, value);
    EXPECT_LE(LibrarySeconds() - begin, kInquiryLimit + kSlack);
    return result;
}

void FaultTest::Work(int rounds) {
    SetLibraryTimeScale(kHurry);
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(VISCA_ZoomIn(), 0u);
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
        uint8_t value = 0;
        EXPECT_LE(Read(&value), 1u);
    }
    EXPECT_TRUE(host::WaitDrained(kLimit));
    SetLibraryTimeScale(1);
}

void FaultTest::WorkWithoutLoss(int rounds) {
    const uint64_t before = TimeOuts();
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(VISCA_ZoomIn(), 0u);
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
        uint8_t value = 0;
        EXPECT_EQ(Read(&value), 0u);
        EXPECT_EQ(value, kValue);
    }
    EXPECT_TRUE(host::WaitDrained(kLimit));
    EXPECT_EQ(TimeOuts(), before);
}

// What was torn off on the line ends with the first command; answers that nobody waits for any more are the
// host's to drop.
void FaultTest::Recover() {
    Camera().clearFaults();
    CatchUp();
    const double begin = LibrarySeconds();
    HurryUntil(kTimeOut, kHurry);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_TRUE(host::WaitDrained(kLimit));
    SetLibraryTimeScale(1);
    host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID);
    const uint64_t before = TimeOuts();
    EXPECT_EQ(SonySetRegisterVal(kRegister, kValue ^ 0xFF), 0u);
    // A completion that belongs to an earlier command may release this one early.
    EXPECT_TRUE(AwaitCamera([](const sim::State &state) {
        const auto found = state.registers.find(kRegister);
        return found != state.registers.end() && found->second == (kValue ^ 0xFFu);
    }));
    Drain();
    uint8_t value = 0;
    EXPECT_EQ(Read(&value), 0u);
    EXPECT_EQ(value, kValue ^ 0xFF);
    EXPECT_EQ(TimeOuts(), before);
    EXPECT_LE(LibrarySeconds() - begin, kInquiryLimit + kSlack);
}

void FaultTest::TearDown() {
    OnPause(nullptr);
    SetLibraryTimeScale(1);
    if (m_begun && !HasFatalFailure()) {
        ExpectAccountHolds();
    }
    CameraTest::TearDown();
}

void FaultTest::ExpectAccountHolds() {
    EXPECT_TRUE(AwaitEntries("/proc/self/fd", m_descriptors)) << "descriptors are left open";
    EXPECT_TRUE(AwaitEntries("/proc/self/task", m_threads)) << "threads are left running";
    ExpectFewLines();
    ExpectAllQueuedSent();
    ExpectOneInFlight();
    ExpectNoSpin();
}

size_t FaultTest::BytesSent() {
    size_t bytes = 0;
    for (const std::string &step : Line()) {
        bytes += step[0] == '<' ? (step.size() - 1) / 3 : 0;
    }
    return bytes;
}

size_t FaultTest::RepliesBegun() {
    size_t begun = 0;
    for (const std::string &step : Line()) {
        for (size_t at = step.find(" 90"); step[0] == '<' && at != std::string::npos;
             at = step.find(" 90", at + 1)) {
            ++begun;
        }
    }
    return begun;
}

void FaultTest::ExpectFewLines() {
    size_t lines = 0;
    for (const char *trouble : {"unexpected byte", "Unexpected Ack", "Invalid ack", "Not support"}) {
        lines += HostCount(trouble);
    }
    EXPECT_LE(lines, BytesSent() + m_more);
    EXPECT_LE(HostCount("dump recv"), 2 * RepliesBegun() + m_more);
}

void FaultTest::ExpectAllQueuedSent() {
    std::vector<std::string> queued = Cut(HostSteps("put 0 "), strlen("put 0 "));
    const auto isNoCommand = [](const std::string &packet) { return !StartsWith(packet, "81 01"); };
    queued.erase(std::remove_if(queued.begin(), queued.end(), isNoCommand), queued.end());
    EXPECT_EQ(Cut(HostSteps("send 81 01"), strlen("send ")), queued);
    EXPECT_EQ(host::QueueDepth(VISCA_CMD_QUEUE_ID), 0u);
    EXPECT_EQ(CountSteps(HostSteps("full"), "full 0"), 0u);
}

// Of the processor, and of waits that end: a thread that spins at a wait makes as many of these as the
// machine lets it, however little of the processor it gets.
void FaultTest::ExpectNoSpin() {
    const double bytes = static_cast<double>(BytesSent() + m_more);
    const double packets = static_cast<double>(HostSteps("send").size());
    EXPECT_LE(ProcessorOfThreads() - m_processor,
              kProcessorAnyway + bytes * kProcessorPerByte + packets * kProcessorPerPacket);
    const double seconds = LibrarySeconds() - m_library;
    EXPECT_LE(static_cast<double>(LibraryWaits() - m_waits), 50 + 2 * bytes + 10 * packets + 4 * seconds);
}

} // namespace faults
