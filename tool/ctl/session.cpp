#include "tool/ctl/session.h"

#include <thread>

#include <csignal>

#include "host/host.h"
#include "tool/complain.h"
#include "tool/ctl/grammar.h"
#include "tool/ctl/runner.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/trace_sources.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

constexpr uint32_t PORT_NUMBER = 0;
constexpr uint32_t CALLER_WITHOUT_DETECTION = 2; // "kova detect start" begins what this spares
constexpr unsigned RATES_EACH_ATTEMPT = 3;
constexpr unsigned ATTEMPTS = 20;
constexpr std::chrono::seconds DRAIN_LIMIT{4};
constexpr Drives::Limits SIGNAL_LIMITS = {std::chrono::seconds(3), std::chrono::seconds(20)};

void onLogLine(uint32_t, const char *line, uint32_t length, void *context) {
    static_cast<Follower *>(context)->note("library: " + messageOfLog(std::string(line, length)));
}

void followLogInNotes(Follower &follower) {
    host::LogSetup setup;
    setup.enTarget = host::LogTarget::kSink;
    setup.ulLevel = VISCA_LOG_WARN;
    setup.pfnSink = onLogLine;
    setup.pContext = &follower;
    host::SetLog(host::Log::kGeneral, setup);
}

std::unique_ptr<sim::Camera> simulatedCamera(const CtlOptions &options, Trace *trace) {
    sim::Options camera;
    camera.camera = options.sim;
    camera.baud = options.baud;
    camera.latency = sim::Latency::realLine();
    camera.start = sim::Power::on;
    camera.faults = options.faults;
    if (trace != nullptr)
        camera.trace = cameraTrace(*trace);
    return std::make_unique<sim::Camera>(camera);
}

void choosePort(Session &session, const CtlOptions &options) {
    const ModuleType &type = findModuleType(options.sim.empty() ? options.type : options.sim);
    std::string device = options.port;
    if (!options.sim.empty()) {
        session.camera = simulatedCamera(options, session.trace.get());
        device = session.camera->path();
    }
    session.place = shown(type) + (options.sim.empty() ? " at " + device : ", simulated");
    const std::string trouble = host::CheckDevice(device);
    if (!trouble.empty())
        throw Refused(trouble);
    if (!options.capture.empty()) {
        session.tap = new CaptureTap(device, options.capture);
        device = session.tap.load()->path();
    }
    host::MapPort(PORT_NUMBER, device);
    host::SetBoard({type.code, 0, CALLER_WITHOUT_DETECTION, "BENCH"});
}

/* Tells which rate is tried. */
class SearchTeller {
  public:
    explicit SearchTeller(Screen &screen) : m_screen(screen), m_observer(host::AddObserver(onEvent, this)) {}
    ~SearchTeller() {
        host::RemoveObserver(m_observer);
        m_screen.endProgress();
    }
    SearchTeller(const SearchTeller &) = delete;
    SearchTeller &operator=(const SearchTeller &) = delete;

  private:
    static void onEvent(const host::Event &event, void *context) {
        if (event.enKind == host::EventKind::kComRateSet)
            static_cast<SearchTeller *>(context)->tell(event.ulBaudRate);
    }
    void tell(uint32_t rate) {
        const unsigned attempt = m_rates++ / RATES_EACH_ATTEMPT + 1;
        m_screen.progress("looking for the camera at " + std::to_string(rate) + " bit/s, attempt " +
                          std::to_string(attempt) + " of " + std::to_string(ATTEMPTS));
    }

    Screen &m_screen;
    unsigned m_rates = 0;
    int32_t m_observer;
};

void startLibrary(Session &session, uint32_t moduleType) {
    VISCA_SetCamModuleType(moduleType);
    {
        const SearchTeller teller(session.bench.screen);
        if (VISCA_Init(PORT_NUMBER) != VISCA_SUCCESS)
            throw Refused("the library could not start its threads");
    }
    if (ViscaGetCamComFd() < 0)
        throw Refused("the port could not be opened");
    if (ViscaIsCamCanCtrl() != 1)
        throw Refused("no camera answered in 20 attempts at 9600, 19200 and 38400 bit/s; "
                      "\"viscacam doctor DEVICE\" looks for the reason");
    (void)host::WaitDrained(DRAIN_LIMIT);
}

// What the library said of the search is of interest only when it failed.
void startOrSayWhy(Session &session, uint32_t moduleType) {
    try {
        startLibrary(session, moduleType);
    } catch (const Refused &) {
        printNotes(session.bench);
        throw;
    }
    (void)session.bench.follower.takeNotes();
    const host::Counters counters = host::GetCounters();
    if (counters.ullCommandTimeouts + counters.ullInquiryTimeouts > 0)
        session.bench.screen.note(
            "the camera did not answer all that start-up asked and set; it may have been "
            "starting itself: \"startup\" repeats that");
}

const char *endText(Drives::End end) {
    switch (end) {
    case Drives::End::stopNotConfirmed:
        return "interrupted; the camera did not confirm the stop, the lens may still move";
    case Drives::End::inProcedure:
        return "interrupted; the camera has not come back on, it may be off";
    case Drives::End::clean:
        break;
    }
    return "interrupted";
}

[[noreturn]] void end(Session &session, int status) {
    if (CaptureTap *const tap = session.tap)
        tap->finish();
    session.bench.screen.settle();
    endProcess(status);
}

[[noreturn]] void endBySignal(Session &session) {
    Bench &bench = session.bench;
    bench.screen.endProgress();
    if (bench.moduleType == 0) {
        bench.screen.note("interrupted while the camera was searched");
    } else if (bench.upgrading) {
        bench.screen.note("interrupted; the upgrade was not over, the module may need another one");
    } else {
        const Drives::End focus = bench.focusDrives.finish(SIGNAL_LIMITS);
        const Drives::End rest = bench.drives.finish(SIGNAL_LIMITS);
        bench.screen.note(endText(rest == Drives::End::clean ? focus : rest));
    }
    end(session, EXIT_REFUSED);
}

void handleSignals(Session &session, const sigset_t &signals) {
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0 || (signal == SIGINT && session.bench.interrupt.raise()))
            continue;
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr); // a second one ends the process at once
        endBySignal(session);
    }
}

} // namespace

Session::Session(const CtlOptions &options)
    : trace(options.trace ? std::make_unique<Trace>() : nullptr), bench(trace.get(), options.json) {}

void watchSignals(Session &session, const sigset_t &signals) {
    std::thread([&session, signals] { handleSignals(session, signals); }).detach();
}

void openCamera(Session &session, const CtlOptions &options) {
    choosePort(session, options);
    if (session.trace != nullptr) {
        followLog(*session.trace);
        if (options.sim.empty())
            followHost(*session.trace);
    } else {
        followLogInNotes(session.bench.follower);
    }
    const uint32_t moduleType = host::GetBoard().ulCamModType;
    startOrSayWhy(session, moduleType);
    session.bench.moduleType = moduleType;
}

void stopDrives(Bench &bench) {
    if (bench.zoomRuns)
        runCommand(bench, parseCommand({"zoom", "stop"}, bench.moduleType), "");
    if (bench.focusRuns)
        runCommand(bench, parseCommand({"focus", "stop"}, bench.moduleType), "");
}

void endSession(Session &session, int status) {
    Bench &bench = session.bench;
    printNotes(bench);
    if (bench.zoomRuns)
        bench.screen.note("the zoom is still driven; \"zoom stop\" ends that");
    if (bench.focusRuns)
        bench.screen.note("the focus is still driven; \"focus stop\" ends that");
    end(session, status);
}

} // namespace tool::ctl
