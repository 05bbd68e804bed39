#include <memory>

#include "tool/replay/replay.h"
#include "tool/sim/run.h"
#include "tool/subcommand.h"

namespace tool {

namespace {

constexpr double LONGEST_LATENCY_MS = 60000;

// "NAME[@LINK]"
std::string checkCamera(const std::string &text) {
    const size_t at = text.find('@');
    if (at != std::string::npos && at + 1 == text.size())
        return "no link is given behind \"" + text + "\"";
    return knownCamera()(text.substr(0, at));
}

sim::Latency always(double milliseconds) {
    const auto time = std::chrono::microseconds(static_cast<int64_t>(milliseconds * 1000));
    const sim::Range range{time, time};
    return {range, range, range, range};
}

void setLatency(const std::string &text, sim::Latency &latency) {
    double milliseconds = 0;
    if (text == "real")
        latency = sim::Latency::realLine();
    else if (text == "none")
        latency = sim::Latency::none();
    else if (CLI::detail::lexical_cast(text, milliseconds) && milliseconds >= 0 &&
             milliseconds <= LONGEST_LATENCY_MS)
        latency = always(milliseconds);
    else
        throw CLI::ValidationError("--latency",
                                   text + " is neither real nor none nor milliseconds up to 60000");
}

void addFlags(CLI::App &sim, SimOptions &options) {
    sim.add_flag("--full-speed", options.fullSpeed,
                 "do not pace the line, do not wait for the vertical edge");
    sim.add_flag("--trace", options.trace, "print what goes over the line, in words");
    sim.add_flag("--plain", options.plain, "lines instead of the full-screen view, also on a terminal");
    sim.add_flag("--until-eof", options.untilEof, "end when standard input ends");
    sim.add_flag("--list", options.list, "show the cameras and the faults, and end");
    sim.footer(
        "Shows the device to open; obeys state, fault NAME=VALUE, clear NAME, power-cut, power-on, "
        "hang-up,\nreplug, help and quit, for all cameras or \"CAMERA COMMAND\". Runs until quit, SIGINT "
        "or SIGTERM;\nSIGUSR1 prints the state. Links are in $XDG_RUNTIME_DIR/viscacam or "
        "/tmp/viscacam-UID.\n\n"
        "Example: viscacam sim --camera sony4@/tmp/left --camera kova2@/tmp/right --trace");
}

void addTimes(CLI::App &sim, const std::shared_ptr<SimOptions> &options) {
    addRate(sim, options->baud, "that it listens at: 9600 (default), 19200 or 38400");
    sim.add_option("--speed", options->speed, "of its time, 0.01 to 1000 times the real one (default 1)")
        ->type_name("FACTOR")
        ->check(CLI::Range(0.01, 1000.0).description(""));
    sim.add_option("--boot", options->bootMs, "boot time in milliseconds, up to 600000 (default 3000)")
        ->type_name("MS")
        ->check(CLI::Range(0, 600000).description(""));
    sim.add_option_function<std::string>(
           "--latency", [options](const std::string &text) { setLatency(text, options->latency); },
           "of its replies: real (default), none, or one in milliseconds")
        ->type_name("KIND|MS");
}

// A capture takes the place of the camera, and of all that could be set of it.
std::shared_ptr<std::string> addReplay(CLI::App &sim) {
    const auto capture = std::make_shared<std::string>();
    const CLI::Option *replay =
        sim.add_option("--replay", *capture, "answer as the camera of this capture of \"viscacam tap\"")
            ->type_name("CAPTURE")
            ->check(CLI::ExistingFile.description(""));
    sim.parse_complete_callback([&sim, replay] {
        for (const char *other : {"--camera", "--baud", "--speed", "--boot", "--latency", "--fault", "--seed",
                                  "--socket", "--plain", "--list"}) {
            if (replay->count() > 0 && sim.count(other) > 0)
                throw CLI::ExcludesError("--replay", other);
        }
    });
    return capture;
}

} // namespace

Subcommand addSim(CLI::App &app) {
    const auto options = std::make_shared<SimOptions>();
    CLI::App *sim = app.add_subcommand("sim", "Run simulated cameras on pseudo-terminals");
    sim->add_option("--camera", options->cameras,
                    "camera (default sony1), may be repeated; LINK leads to its device")
        ->type_name("NAME[@LINK]")
        ->allow_extra_args(false)
        ->check(checkCamera);
    sim->add_option("--link", options->link, "the same as @LINK, for one camera")->type_name("PATH");
    addTimes(*sim, options);
    sim->add_option("--fault", options->faults, FAULT_HELP)->type_name(FAULT_TYPE)->allow_extra_args(false);
    sim->add_option("--seed", options->seed, "of everything random in it")->type_name("NUMBER");
    sim->add_option("--socket", options->socket, "Unix socket that obeys the same lines, answered by JSON")
        ->type_name("PATH");
    addFlags(*sim, *options);
    const auto capture = addReplay(*sim);
    return {sim, [options, capture] {
                if (capture->empty())
                    return runSim(*options);
                return runReplay(
                    {*capture, options->link, options->fullSpeed, options->trace, options->untilEof});
            }};
}

} // namespace tool
