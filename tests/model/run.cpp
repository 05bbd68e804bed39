#include "tests/model/run.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/host.h"
#include "tests/camera/scaled_clock.h"
#include "tests/model/calls.h"
#include "tests/model/settle.h"
#include "tests/model/witness.h"
#include "viscacam.h"

namespace model {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds LIMIT{20000}; // reached only by a run that fails
constexpr int LIMIT_OF_RUN_MS = 90000;
constexpr double CAMERA_HASTE = 40;
constexpr double LIBRARY_HASTE = 100;                 // 20 ms for a command, 60 ms for an inquiry
constexpr milliseconds LONGEST_DELAY{9000 / 40 + 25}; // of a fault, in real time
constexpr uint32_t CROWDED = 100;                     // of the 256 commands that wait at most

struct Wrong : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void Demand(bool holds, const std::string &text) {
    if (!holds) {
        throw Wrong(text);
    }
}

std::string Listed(const std::vector<uint8_t> &commands) {
    std::string text = "[";
    for (uint8_t command : commands) {
        char byte[4];
        std::snprintf(byte, sizeof byte, "%02X ", command);
        text += byte;
    }
    return text + "]";
}

unsigned long ErrorsSent(const sim::State &state) {
    unsigned long count = 0;
    for (const auto &[kind, times] : state.sent) {
        count += kind.compare(0, 5, "error") == 0 ? times : 0;
    }
    return count;
}

bool IsStill(const sim::State &state) {
    return !state.zoomMoving && !state.focusMoving && !state.socketBusy[0] && !state.socketBusy[1];
}

sim::Options OptionsOf(const Plan &plan, const std::string &folder) {
    sim::Options options = sim::Options::fast(plan.camera);
    options.timeScale = CAMERA_HASTE;
    options.link = folder + "/port";
    options.kova.sceneMoves = false;
    return options;
}

class Runner {
  public:
    Runner(const Plan &plan, const std::string &folder)
        : m_camera(OptionsOf(plan, folder)), m_forecast(sim::findCamera(plan.camera).code) {}

    void Start();
    void Do(const Step &step);
    void End();

  private:
    void DoCommand(const Step &step);
    void DoInquiry(const Step &step);
    void CheckAnswer(const Step &step, const std::string &text, const sim::State &before);
    void Limit(unsigned commands);
    void Allow();
    void Own(bool updating);
    void Free();
    void Restart();
    void Strike(const std::string &fault);
    void Calm();
    void PowerUp();
    void Drain();
    void Expect(uint32_t result, uint32_t right);
    void CheckFlags();
    void CheckPeace();
    bool Agrees(std::string *text) const;
    void BeginPeace();

    sim::Camera m_camera;
    Forecast m_forecast;
    Commands m_commands;
    Witness &m_witness = Witness::Begin();
    bool m_faulty = false;
    sim::State m_before; // when peace began
};

/* ---- Start and end ---- */

void Runner::Start() {
    const uint32_t type = m_camera.state().type;
    host::SetBoard({type, 0, 0, "TEST-BOARD"});
    Demand(host::MapPort(0, m_camera.path()).empty(), "the port cannot be mapped");
    (void)VISCA_SetCamModuleType(type);
    Demand(ViscaCamComInit(0) == 0, "the camera is not found");
    Demand(ViscaStartMsgProc() == 0, "the threads do not start");
    if (m_forecast.IsKova()) {
        Demand(KovaDetectCamAbility() == 0, "the module does not tell what it can");
    }
    (void)SonyInitCamIMG(type);
    Expect(SonyInitCamAF(type), m_forecast.Restore());
    Drain();
    BeginPeace();
}

void Runner::End() {
    Allow();
    Free();
    if (m_faulty) {
        Calm();
    }
    CheckPeace();
}

void Runner::Do(const Step &step) {
    if (step.name == "fault") {
        Strike(step.fault);
    } else if (step.name == "calm") {
        m_faulty ? Calm() : CheckPeace();
    } else if (step.name == "refuse-after") {
        Limit(step.value);
    } else if (step.name == "allow") {
        Allow();
    } else if (step.name == "updating" || step.name == "exporting") {
        Own(step.name == "updating");
    } else if (step.name == "free") {
        Free();
    } else if (step.name == "restart") {
        Restart();
    } else if (IsInquiry(step.name)) {
        DoInquiry(step);
    } else {
        DoCommand(step);
    }
    CheckFlags();
    Demand(m_witness.Broken().empty(), m_witness.Broken());
    if (host::QueueDepth(VISCA_CMD_QUEUE_ID) > CROWDED) {
        Drain();
    }
}

/* ---- Steps ---- */

// Whatever was queued since the last time is what was forecast.
void Runner::Expect(uint32_t result, uint32_t right) {
    const std::vector<uint8_t> queued = Witness::TakeQueued();
    const std::vector<uint8_t> forecast = m_forecast.TakeCommands();
    Demand(queued == forecast, "queued " + Listed(queued) + ", not " + Listed(forecast));
    Demand(result == right, "returned " + std::to_string(result) + ", not " + std::to_string(right));
}

void Runner::DoCommand(const Step &step) {
    const uint32_t right = m_commands.Foresee(step.name, step.value, m_forecast);
    Expect(m_commands.Call(step.name, step.value), right);
}

// The camera is known well enough to judge an answer when nothing waits and nothing moves.
void Runner::DoInquiry(const Step &step) {
    if (!m_faulty && step.value % 2 == 0 && !m_forecast.Refuses()) {
        Drain();
    }
    const bool drained = host::WaitDrained(milliseconds(0));
    const sim::State before = m_camera.state();
    std::string text;
    const uint32_t result = Ask(step.name, step.value, &text);
    if (m_forecast.Refuses()) {
        Demand(result == 1, "was not refused");
    } else if (!m_faulty) {
        Demand(result == 0, "failed without a fault");
        if (drained) {
            CheckAnswer(step, text, before);
        }
    } else {
        Demand(result <= 1, "returned " + std::to_string(result));
    }
    Expect(0, 0);
}

void Runner::CheckAnswer(const Step &step, const std::string &text, const sim::State &before) {
    const sim::State after = m_camera.state();
    if (!IsStill(before) || !IsStill(after)) {
        return;
    }
    const std::string right = RightAnswer(step.name, step.value, after);
    Demand(text == right, "answered " + text + ", not " + right);
}

void Runner::Limit(unsigned commands) {
    if (m_forecast.Left() != NO_LIMIT || m_forecast.IsOwned()) {
        return;
    }
    m_forecast.Limit(commands);
    Witness::RefuseAfter(commands);
    if (commands == 0) {
        ViscaSetCamCanCtrl(0);
    }
}

void Runner::Allow() {
    m_forecast.Limit(NO_LIMIT);
    Witness::RefuseAfter(0);
    ViscaSetCamCanCtrl(1);
}

// Whoever owns the line reads it, so nothing may be under way when it changes hands.
void Runner::Own(bool updating) {
    if (m_forecast.Refuses()) {
        return;
    }
    Drain();
    updating ? ViscaMarkUpdatingCam(1) : ViscaMarkExportLog(1);
    m_forecast.SetOwned(true);
}

void Runner::Free() {
    ViscaMarkUpdatingCam(0);
    ViscaMarkExportLog(0);
    m_forecast.SetOwned(false);
}

void Runner::CheckFlags() {
    Demand(ViscaIsCamCanCtrl() == (m_forecast.Left() == 0 ? 0U : 1U), "the camera can be controlled or not");
    Demand(ViscaIsCamComBusy() == (m_forecast.IsOwned() ? 1U : 0U), "the line is busy or not");
    Demand(ViscaIsUpdatingCam() + ViscaIsExportLog() == ViscaIsCamComBusy(), "updating or exporting");
}

// Standby and on again, as a host does it that knows its camera: what was sent of the image is forgotten.
void Runner::Restart() {
    if (m_faulty || m_forecast.Refuses() || m_forecast.Left() != NO_LIMIT) {
        return;
    }
    Expect(SonySetPower(0), m_forecast.Plain({0x00}));
    Demand(m_camera.waitFor([](const sim::State &s) { return s.power == sim::Power::standby; }, LIMIT),
           "the camera is not in standby");
    Expect(SonySetPower(1), m_forecast.Plain({0x00}));
    Demand(m_camera.waitFor([](const sim::State &s) { return s.power == sim::Power::on; }, LIMIT),
           "the camera is not on");
    Drain();
    Expect(SonyRestoreCamEnv(COMDRV_GetCamModuleType()), m_forecast.Restore());
}

/* ---- Faults ---- */

void Runner::Strike(const std::string &fault) {
    if (!m_faulty) {
        Drain();
        CheckPeace();
        camera::SetLibraryTimeScale(LIBRARY_HASTE);
        m_faulty = true;
    }
    m_camera.setFault(fault);
}

void Runner::PowerUp() {
    EndTornPacket();
    if (m_camera.state().power == sim::Power::standby) {
        Expect(SonySetPower(1), m_forecast.Plain({0x00}));
    }
}

// The faults end, what they have left behind is cleared away as a careful host does, and all is as before.
void Runner::Calm() {
    Allow();
    Free();
    m_camera.clearFaults();
    const auto answers = [this] {
        PowerUp();
        return Answers();
    };
    if (!Await(answers, LIMIT)) {
        throw Wrong("the camera does not answer after the faults: " + m_camera.stateJson());
    }
    Drain();
    std::this_thread::sleep_for(LONGEST_DELAY);
    Demand(m_camera.waitFor(IsStill, LIMIT), "the camera does not come to rest");
    camera::SetLibraryTimeScale(1);
    Demand(Await(IsInStep, LIMIT), "answers stay shifted after the faults");
    m_faulty = false;
    BeginPeace();
}

/* ---- Peace ---- */

void Runner::Drain() {
    Demand(host::WaitDrained(LIMIT), "commands stay queued");
}

void Runner::BeginPeace() {
    const std::string differs = m_witness.ComparedWithHost();
    Demand(differs.empty(), differs);
    m_witness.ResetCount();
    host::ResetCounters();
    m_before = m_camera.state();
}

bool Runner::Agrees(std::string *text) const {
    const host::Counters counted = host::GetCounters();
    const sim::State now = m_camera.state();
    text->clear();
    const auto compare = [text](const char *what, uint64_t host, uint64_t camera) {
        if (host != camera) {
            *text += std::string(what) + ": host " + std::to_string(host) + ", camera " +
                     std::to_string(camera) + "; ";
        }
    };
    compare("packets", counted.ullCommandsSent + counted.ullInquiriesSent,
            now.packetsSeen - m_before.packetsSeen);
    compare("completions", counted.ullCompletions,
            now.sentCount("completion") - m_before.sentCount("completion"));
    compare("answers", counted.ullAnswers, now.sentCount("answer") - m_before.sentCount("answer"));
    compare("errors", counted.ullErrors, ErrorsSent(now) - ErrorsSent(m_before));
    return text->empty();
}

// No fault has struck since peace began.
void Runner::CheckPeace() {
    if (m_faulty) {
        return;
    }
    Drain();
    std::string text;
    Demand(Await([&] { return Agrees(&text); }, LIMIT), text);
    const host::Counters counted = host::GetCounters();
    Demand(counted.ullCommandTimeouts + counted.ullInquiryTimeouts == 0, "timed out without a fault");
    Demand(counted.ullCommandsUnsent + counted.ullCommandsRefused == 0, "lost a command without a fault");
    Demand(counted.ullJunkBytes + counted.ullBadReplies + counted.ullReadErrors == 0, "junk without a fault");
    Demand(counted.ullUnaskedAnswers + counted.ullResultsLost == 0, "an unasked answer without a fault");
    Demand(counted.ullCommandsSent == counted.ullCommandsQueued, "a command was not sent");
    text = m_witness.ComparedWithHost();
    Demand(text.empty(), text);
}

/* ---- A folder and a process for each ---- */

class Folder {
  public:
    Folder() {
        char name[] = "/tmp/viscacam-model-XXXXXX";
        m_path = mkdtemp(name) != nullptr ? name : "";
    }
    ~Folder() { std::filesystem::remove_all(m_path); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    const std::string &Path() const { return m_path; }

  private:
    std::string m_path;
};

std::string RunIn(const Plan &plan, const std::string &folder) {
    std::string where = "start";
    try {
        Runner runner(plan, folder);
        runner.Start();
        for (size_t i = 0; i < plan.steps.size(); ++i) {
            where = "step " + std::to_string(i + 1) + ", " + plan.steps[i].name;
            runner.Do(plan.steps[i]);
        }
        where = "end";
        runner.End();
    } catch (const Wrong &wrong) {
        return where + ": " + wrong.what();
    }
    return "";
}

[[noreturn]] void BeChild(const Plan &plan, const std::string &folder, int pipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string result = RunIn(plan, folder);
    if (write(pipe, result.data(), result.size()) < 0) {
        _exit(2);
    }
    _exit(result.empty() ? 0 : 1); // the library's threads go on
}

// What the child says until it ends or its time is over.
std::string Listen(int pipe, pid_t child) {
    std::string text;
    const auto end = std::chrono::steady_clock::now() + milliseconds(LIMIT_OF_RUN_MS);
    for (;;) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - std::chrono::steady_clock::now());
        pollfd wait = {pipe, POLLIN, 0};
        char bytes[512];
        if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) == 0) {
            kill(child, SIGKILL);
            return "hangs";
        }
        const ssize_t count = read(pipe, bytes, sizeof bytes);
        if (count <= 0) {
            return text;
        }
        text.append(bytes, static_cast<size_t>(count));
    }
}

} // namespace

std::string RunApart(const Plan &plan) {
    const Folder folder;
    int pipes[2];
    if (pipe(pipes) != 0) {
        return "no pipe";
    }
    const pid_t child = fork();
    if (child == 0) {
        close(pipes[0]);
        BeChild(plan, folder.Path(), pipes[1]);
    }
    close(pipes[1]);
    const std::string text = Listen(pipes[0], child);
    close(pipes[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (text.empty() && (!WIFEXITED(status) || WEXITSTATUS(status) != 0)) {
        return WIFSIGNALED(status) ? "died of signal " + std::to_string(WTERMSIG(status)) : "failed";
    }
    return text;
}

} // namespace model
