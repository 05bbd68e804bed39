#include "tool/demo/demo.h"

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>

#include "host/host.h"
#include "tool/complain.h"
#include "tool/demo/chapters.h"
#include "tool/demo/families.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/signals.h"
#include "tool/trace_sources.h"
#include "viscacam.h"

namespace tool {

namespace {

constexpr uint32_t PORT_NUMBER = Stage::PORT_NUMBER;
constexpr uint32_t CALLER_WITHOUT_DETECTION = 2; // the library then spares a Kova module's image detection
constexpr std::chrono::milliseconds BOOT_TIME{500};
constexpr std::chrono::milliseconds BOOT_LIMIT{2000};
constexpr std::chrono::milliseconds FIRST_WORDS_LIMIT{200}; // a faulty camera may have none
constexpr Drives::Limits INTERRUPT_LIMITS = {std::chrono::seconds(3), std::chrono::seconds(20)};
constexpr Drives::Limits SILENCE_LIMITS = {std::chrono::seconds(3), std::chrono::seconds(0)};

// All that the library's threads may touch: made once and never destroyed.
struct Demo {
    Trace trace;
    Drives drives;
    AskedTable table;
    std::promise<void> firstWords; // of the simulated camera: it says when its supply comes on
    std::atomic<bool> hasSpoken{false};
    std::unique_ptr<sim::Camera> camera;
    std::unique_ptr<Witness> witness;
    std::unique_ptr<Stage> stage;
};

[[noreturn]] void end(Demo &demo, int status, const std::string &complaint = "") {
    demo.trace.settle();
    if (!complaint.empty())
        complain(complaint);
    endProcess(status);
}

[[noreturn]] void interrupted(Demo &demo) {
    if (ViscaIsCamCanCtrl() != 1)
        end(demo, EXIT_REFUSED, "interrupted while the camera was searched");
    switch (demo.drives.finish(INTERRUPT_LIMITS)) {
    case Drives::End::clean:
        end(demo, EXIT_REFUSED, "interrupted");
    case Drives::End::stopNotConfirmed:
        end(demo, EXIT_REFUSED, "interrupted; the camera did not confirm the stop, the lens may still move");
    case Drives::End::inProcedure:
        end(demo, EXIT_REFUSED, "interrupted; the camera has not come back on, it may be off");
    }
    endProcess(EXIT_REFUSED);
}

sim::Trace traceOf(Demo &demo) {
    return [trace = cameraTrace(demo.trace), &demo](const sim::TraceEvent &event) {
        trace(event);
        if (event.direction == sim::Direction::toHost && !demo.hasSpoken.exchange(true))
            demo.firstWords.set_value();
    };
}

sim::Options simulatedCamera(const DemoOptions &options, Demo &demo) {
    sim::Options camera;
    camera.camera = options.camera;
    camera.baud = options.baud;
    camera.latency = sim::Latency::realLine();
    camera.bootTime = BOOT_TIME;
    camera.seed = options.seed;
    camera.faults = options.faults;
    camera.trace = traceOf(demo);
    return camera;
}

// A module that is found while it boots would cost 6 s for each thing that start-up wants to know of it.
void waitUntilOn(const sim::Camera &camera) {
    camera.waitFor([](const sim::State &state) { return state.power == sim::Power::on; }, BOOT_LIMIT);
}

void useSimulatedCamera(const DemoOptions &options, Demo &demo) {
    const Clock::time_point began =
        Clock::now(); // the camera's first words come after the line that names it
    demo.camera = std::make_unique<sim::Camera>(simulatedCamera(options, demo));
    demo.trace.line("Simulated camera " + shown(findModuleType(options.camera)) + ", listening at " +
                        std::to_string(options.baud) + " bit/s",
                    began);
    demo.firstWords.get_future().wait_for(FIRST_WORDS_LIMIT); // lest they be taken for an answer
    if (isKova(findModuleType(options.camera).code))
        waitUntilOn(*demo.camera);
    demo.witness = std::make_unique<SimulatedWitness>(*demo.camera);
    host::MapPort(PORT_NUMBER, demo.camera->path());
}

void useCameraAtPort(const DemoOptions &options, Demo &demo) {
    demo.witness = std::make_unique<InquiringWitness>();
    demo.trace.line("Camera " + shown(findModuleType(options.type)) + " at " + options.port);
    host::MapPort(PORT_NUMBER, options.port);
    followHost(demo.trace);
}

void tellTour(Stage &stage, uint32_t moduleType) {
    tellLens(stage);
    tellImage(stage, moduleType);
    if (isKova(moduleType))
        tellKova(stage, moduleType);
    countCommands(stage);
}

void tellStory(const DemoOptions &options, Demo &demo, uint32_t moduleType) {
    demo.stage = std::make_unique<Stage>(demo.trace, demo.drives, *demo.witness, demo.table);
    Stage &stage = *demo.stage;
    tellStartUp(stage, moduleType);
    switch (options.story) {
    case DemoOptions::Story::tour:
        return tellTour(stage, moduleType);
    case DemoOptions::Story::upgrade:
        return tellUpgrade(stage, moduleType, {options.port.empty(), options.dryRun});
    case DemoOptions::Story::exportLog:
        return tellExport(stage);
    }
}

[[noreturn]] void play(const DemoOptions &options, Demo &demo, uint32_t moduleType) {
    host::SetBoard({moduleType, 0, CALLER_WITHOUT_DETECTION, "BENCH"});
    followLog(demo.trace);
    try {
        tellStory(options, demo, moduleType);
    } catch (const std::exception &over) { // whatever it is: threads run, so the process ends here
        demo.drives.finish(SILENCE_LIMITS);
        end(demo, EXIT_REFUSED, over.what());
    }
    demo.trace.heading("What was asked, and what the camera believes");
    demo.table.print(demo.trace);
    end(demo, demo.table.allAgree() ? EXIT_DONE : EXIT_REFUSED);
}

} // namespace

int runDemo(const DemoOptions &options) {
    if (options.port.empty() && options.camera.empty())
        return runDemoOfBothFamilies(options);
    const uint32_t moduleType = findModuleType(options.port.empty() ? options.camera : options.type).code;
    if (options.story != DemoOptions::Story::tour && !isKova(moduleType)) {
        complain("only a Kova module is upgraded and exports its log; choose one with " +
                 std::string(options.port.empty() ? "--camera" : "--type"));
        return EXIT_USAGE;
    }
    const std::string trouble = options.port.empty() ? "" : host::CheckDevice(options.port);
    if (!trouble.empty()) {
        complain(trouble);
        return EXIT_REFUSED;
    }
    const sigset_t signals = holdSignals();
    Demo &demo = *new Demo;
    try {
        if (options.port.empty())
            useSimulatedCamera(options, demo);
        else
            useCameraAtPort(options, demo);
    } catch (const std::invalid_argument &wrong) {
        end(demo, EXIT_USAGE, wrong.what());
    } catch (const std::runtime_error &refused) {
        end(demo, EXIT_REFUSED, refused.what());
    }
    onSignal(signals, [&demo] { interrupted(demo); });
    play(options, demo, moduleType);
}

} // namespace tool
