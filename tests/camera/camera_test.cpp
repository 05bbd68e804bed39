#include "tests/camera/camera_test.h"

#include <ctime>
#include <fstream>
#include <iostream>
#include <thread>

namespace camera {

namespace {

void SinkLine(uint32_t, const char *line, uint32_t, void *) {
    Journal::Get().AddLine(line);
}

void SinkDump(uint32_t, const char *line, uint32_t, void *) {
    Journal::Get().AddDump(line);
}

void Observe(const host::Event &event, void *) {
    Journal::Get().AddEvent(event);
}

ViscaPkt Packet(const std::string &hex) {
    ViscaPkt packet = {};
    for (uint8_t byte : Bytes(hex)) {
        ViscaAppendByte(byte, &packet);
    }
    return packet;
}

std::vector<std::string> Texts(const Steps &steps, const std::function<bool(const std::string &)> &wanted,
                               size_t skip) {
    std::vector<std::string> texts;
    for (const Step &step : steps) {
        if (wanted(step.text)) {
            texts.push_back(step.text.substr(skip));
        }
    }
    return texts;
}

void Print(const char *title, const Steps &steps) {
    std::cerr << "--- " << title << "\n";
    for (const Step &step : steps) {
        std::cerr << step.text << "\n";
    }
}

uint32_t ThreadId(const std::string &name) {
    for (const host::ThreadInfo &thread : host::Threads()) {
        if (thread.strName == name) {
            return thread.ulThreadId;
        }
    }
    ADD_FAILURE() << "no thread " << name;
    return 0;
}

// "1234 (name) S ..."
char ThreadState(const std::string &path) {
    std::ifstream file(path);
    std::string text;
    std::getline(file, text);
    const size_t close = text.rfind(')');
    return close != std::string::npos && close + 2 < text.size() ? text[close + 2] : '?';
}

bool IsCommandSent(const std::string &step) {
    return StartsWith(step, "send 81 01");
}

} // namespace

void CameraTest::SetUp() {
    static bool used = false;
    ASSERT_FALSE(used) << "every case needs a process of its own: run them through ctest";
    used = true;
    m_observer = host::AddObserver(Observe, nullptr);
    ASSERT_GE(m_observer, 0);
    host::LogSetup log;
    log.enTarget = host::LogTarget::kSink;
    log.ulLevel = VISCA_LOG_VERBO;
    log.pfnSink = SinkLine;
    ASSERT_EQ(host::SetLog(host::Log::kGeneral, log), "");
    log.pfnSink = SinkDump;
    ASSERT_EQ(host::SetLog(host::Log::kCamera, log), "");
}

void CameraTest::TearDown() {
    host::RemoveObserver(m_observer);
    host::SetLogLevel(host::Log::kGeneral, host::kLogOff);
    host::SetLogLevel(host::Log::kCamera, host::kLogOff);
    m_camera.reset();
    if (HasFailure()) {
        Print("the host's side", Journal::Get().Host());
        Print("the camera's side", Journal::Get().Wire());
    }
}

void CameraTest::PlugIn(const sim::Options &options) {
    sim::Options traced = options;
    traced.trace = [](const sim::TraceEvent &event) { Journal::Get().AddWire(event); };
    m_camera = std::make_unique<sim::Camera>(traced);
    ASSERT_EQ(host::MapPort(0, m_camera->path()), "");
    SetModuleType(sim::findCamera(options.camera).code);
}

void CameraTest::SetModuleType(uint32_t type) {
    host::SetBoard({type, 0, 0, "TEST-BOARD"});
    ASSERT_EQ(VISCA_SetCamModuleType(type), 0u);
}

void CameraTest::StartLibrary() {
    ASSERT_EQ(VISCA_Init(0), 0u);
    Drain();
}

void CameraTest::Start(const sim::Options &options) {
    PlugIn(options);
    ASSERT_NO_FATAL_FAILURE(StartLibrary());
    BeginAfresh();
}

void CameraTest::StartWithoutFiles(const sim::Options &options) {
    PlugIn(options);
    const uint32_t type = COMDRV_GetCamModuleType();
    ASSERT_EQ(ViscaCamComInit(0), 0u);
    ASSERT_EQ(ViscaStartMsgProc(), 0u);
    if ((type & 0xFFFFF000) == 0x02012000) {
        ASSERT_EQ(KovaDetectCamAbility(), 0u);
    }
    ASSERT_EQ(SonyInitCamIMG(type), 0u);
    ASSERT_EQ(SonyInitCamAF(type), 0u);
    Drain();
    BeginAfresh();
}

void CameraTest::BeginAfresh() {
    ASSERT_EQ(ViscaIsCamCanCtrl(), 1u) << "the library did not find the camera";
    // The sender throws an inquiry away, and has nothing more to say about start-up then.
    ASSERT_EQ(Queue("81 09 00"), 0u);
    ASSERT_TRUE(AwaitHost("discard it!"));
    Forget();
}

bool CameraTest::AwaitCamera(const std::function<bool(const sim::State &)> &predicate) const {
    return m_camera->waitFor(predicate, kLimit);
}

void CameraTest::ExpectSettings(const std::map<std::string, int> &expected) const {
    const sim::State state = State();
    for (const auto &[name, value] : expected) {
        EXPECT_EQ(state.setting(name), value) << name;
    }
}

void CameraTest::ExpectNothingRefused() const {
    for (const auto &[kind, count] : State().sent) {
        EXPECT_FALSE(StartsWith(kind, "error")) << count << " times " << kind;
    }
    EXPECT_EQ(TimeOuts(), 0u);
}

void CameraTest::Drain() {
    ASSERT_TRUE(host::WaitDrained(kLimit)) << "commands are still under way";
    CatchUp();
}

// A fault that never strikes leaves a remark behind everything that has happened so far.
void CameraTest::CatchUp() {
    const std::string mark = "reorder=0@0.." + std::to_string(1000 + ++m_marks);
    Camera().setFault(mark);
    ASSERT_TRUE(Journal::Get().AwaitWire(mark, 1, kLimit)) << "the camera stands still";
}

void CameraTest::Pass(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}

bool CameraTest::AwaitHost(const std::string &part, size_t count) {
    return Journal::Get().AwaitHost(part, count, kLimit);
}

bool CameraTest::AwaitWire(const std::string &part, size_t count) {
    return Journal::Get().AwaitWire(part, count, kLimit);
}

bool CameraTest::AwaitDepth(uint32_t queue, uint32_t depth) {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (host::QueueDepth(queue) != depth && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    return host::QueueDepth(queue) == depth;
}

std::vector<std::string> CameraTest::Heard() {
    return Texts(
        Journal::Get().Wire(), [](const std::string &step) { return step[0] == '>'; }, 2);
}

std::vector<std::string> CameraTest::Commands() {
    return Texts(
        Journal::Get().Wire(), [](const std::string &step) { return StartsWith(step, "> 81 01"); }, 2);
}

std::vector<std::string> CameraTest::Line() {
    return Texts(
        Journal::Get().Wire(), [](const std::string &step) { return step[0] == '>' || step[0] == '<'; }, 0);
}

std::vector<std::string> CameraTest::HostSteps(const std::string &start) {
    return Texts(
        Journal::Get().Host(), [&](const std::string &step) { return StartsWith(step, start); }, 0);
}

size_t CameraTest::HostCount(const std::string &part) {
    return Texts(
               Journal::Get().Host(), [&](const std::string &step) { return Contains(step, part); }, 0)
        .size();
}

void CameraTest::Forget() {
    Journal::Get().Forget();
    host::ResetCounters();
}

uint64_t CameraTest::TimeOuts() {
    const host::Counters counters = host::GetCounters();
    return counters.ullCommandTimeouts + counters.ullInquiryTimeouts;
}

double CameraTest::PauseAfterCommand(size_t n) {
    std::vector<double> times;
    for (const Step &step : Journal::Get().Host()) {
        if (IsCommandSent(step.text)) {
            times.push_back(step.seconds);
        }
    }
    EXPECT_GT(times.size(), n + 1) << "too few commands were written";
    return times.size() > n + 1 ? times[n + 1] - times[n] : 0;
}

void CameraTest::ExpectOneInFlight() {
    std::string flying;
    for (const Step &step : Journal::Get().Host()) {
        if (IsCommandSent(step.text)) {
            EXPECT_EQ(flying, "") << "was still under way before " << step.text;
            flying = step.text;
        } else if (StartsWith(step.text, "put 1 ") || Contains(step.text, kTimeOut) ||
                   Contains(step.text, "ViscaCamComSend failed!")) {
            flying.clear();
        }
    }
}

uint32_t CameraTest::Queue(const std::string &hex) {
    ViscaPkt packet = Packet(hex);
    return ViscaEnQueueCmd(&packet);
}

uint32_t CameraTest::Ask(const std::string &hex, ViscaPkt *reply) {
    ViscaPkt packet = Packet(hex);
    return ViscaInquiry(&packet, reply);
}

uint32_t CameraTest::Zoom() {
    uint32_t zoom = 0xDEAD;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 0u);
    return zoom;
}

double ProcessorSeconds() {
    timespec used = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

double ReceiverSleeps(std::chrono::milliseconds time) {
    const std::string path = "/proc/self/task/" + std::to_string(ThreadId("ViscaAckMsgProc")) + "/stat";
    const auto end = std::chrono::steady_clock::now() + time;
    int asleep = 0;
    int looks = 0;
    while (std::chrono::steady_clock::now() < end) {
        asleep += ThreadState(path) == 'S' ? 1 : 0;
        ++looks;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return static_cast<double>(asleep) / looks;
}

} // namespace camera
