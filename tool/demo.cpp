#include "tool/demo.h"

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>

#include "host/host.h"
#include "tool/complain.h"
#include "tool/demo_story.h"
#include "tool/demo_trace.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/signals.h"

namespace tool {

namespace {

constexpr uint32_t PORT_NUMBER = 0;
constexpr std::chrono::milliseconds BOOT_TIME{500};
constexpr std::chrono::milliseconds FIRST_WORDS_LIMIT{200}; // a faulty camera may have none
constexpr std::chrono::seconds STOP_LIMIT{3};

// All that the library's threads may touch: made once and never destroyed.
struct Demo {
    Trace trace;
    Drives drives;
    AskedTable table;
    std::promise<void> firstWords; // of the simulated camera: it says when its supply comes on
    std::atomic<bool> hasSpoken{false};
    std::unique_ptr<sim::Camera> camera;
    std::unique_ptr<Witness> witness;
    std::atomic<bool> searching{true};
};

[[noreturn]] void end(Demo &demo, int status, const std::string &complaint = "") {
    demo.trace.settle();
    if (!complaint.empty())
        complain(complaint);
    endProcess(status);
}

[[noreturn]] void interrupted(Demo &demo) {
    const bool searching = demo.searching;
    const bool stopped = demo.drives.finish(STOP_LIMIT);
    if (searching)
        end(demo, EXIT_REFUSED, "interrupted while the camera was searched");
    end(demo, EXIT_REFUSED,
        stopped ? "interrupted"
                : "interrupted; the camera did not confirm the stop, the lens may still move");
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

void useSimulatedCamera(const DemoOptions &options, Demo &demo) {
    const Clock::time_point began =
        Clock::now(); // the camera's first words come after the line that names it
    demo.camera = std::make_unique<sim::Camera>(simulatedCamera(options, demo));
    demo.trace.line("Simulated camera " + shown(findModuleType(options.camera)) + ", listening at " +
                        std::to_string(options.baud) + " bit/s",
                    began);
    demo.firstWords.get_future().wait_for(FIRST_WORDS_LIMIT); // lest they be taken for an answer
    demo.witness = std::make_unique<SimulatedWitness>(*demo.camera);
    host::MapPort(PORT_NUMBER, demo.camera->path());
}

void useCameraAtPort(const DemoOptions &options, Demo &demo) {
    demo.witness = std::make_unique<InquiringWitness>();
    demo.trace.line("Camera " + shown(findModuleType(options.type)) + " at " + options.port);
    host::MapPort(PORT_NUMBER, options.port);
    followHost(demo.trace);
}

[[noreturn]] void play(Demo &demo, uint32_t moduleType) {
    host::SetBoard({moduleType, 0, 0, "BENCH"});
    followLog(demo.trace);
    try {
        Story story(demo.trace, demo.drives, *demo.witness, demo.table);
        story.startUp(moduleType);
        demo.searching = false;
        story.tell();
    } catch (const StoryOver &over) {
        demo.drives.finish(STOP_LIMIT);
        end(demo, EXIT_REFUSED, over.what());
    }
    demo.trace.heading("What was asked, and what the camera believes");
    demo.table.print(demo.trace);
    end(demo, demo.table.allAgree() ? EXIT_DONE : EXIT_REFUSED);
}

} // namespace

int runDemo(const DemoOptions &options) {
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
    play(demo, findModuleType(options.port.empty() ? options.camera : options.type).code);
}

} // namespace tool
