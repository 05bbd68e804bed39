/* The viscacam command: what can be typed, and which function does it. */
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "sim/sim.h"
#include "tool/complain.h"
#include "tool/demo.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/sim_command.h"
#include "viscacam.h"

namespace {

using tool::DemoOptions;
using tool::SimOptions;

#define VERSION_TEXT_OF(major, minor, patch) #major "." #minor "." #patch
#define VERSION_TEXT(major, minor, patch)    VERSION_TEXT_OF(major, minor, patch)
const char VERSION[] =
    "viscacam " VERSION_TEXT(VISCACAM_VERSION_MAJOR, VISCACAM_VERSION_MINOR, VISCACAM_VERSION_PATCH);

// A check that passes when the look-up finds something; its complaint lists what there is.
template <typename Find>
CLI::Validator known(Find find) {
    return CLI::Validator(
        [find](const std::string &text) -> std::string {
            try {
                (void)find(text);
            } catch (const std::invalid_argument &unknown) {
                return unknown.what();
            }
            return "";
        },
        "");
}

CLI::Validator knownCamera() {
    return known(sim::findCamera);
}
CLI::Validator knownType() {
    return known(tool::findModuleType);
}
CLI::Validator knownRate() {
    return CLI::IsMember({9600, 19200, 38400}).description("");
}

const char FAULT_TYPE[] = "NAME[=VALUE]";
const char FAULT_HELP[] = "fault to begin with, may be repeated; \"viscacam sim --list\" shows them";

void addRate(CLI::App &command, unsigned &rate, const std::string &help) {
    command.add_option("--baud", rate, help)->type_name("RATE")->check(knownRate());
}

CLI::App *addDemo(CLI::App &app, DemoOptions &options) {
    CLI::App *demo = app.add_subcommand("demo", "Watch the library drive a camera, a line a packet");
    demo->add_option("--camera", options.camera, "camera to simulate (default: sony1, then kova2)")
        ->type_name("NAME|CODE")
        ->check(knownCamera());
    addRate(*demo, options.baud, "that it listens at: 9600, 19200 or 38400 (default)");
    demo->add_option("--seed", options.seed, "of everything random in it")->type_name("NUMBER");
    demo->add_option("--fault", options.faults, FAULT_HELP)->type_name(FAULT_TYPE)->allow_extra_args(false);
    demo->add_option("--port", options.port, "drive the camera at this device instead")
        ->type_name("DEVICE")
        ->check([](const std::string &path) { return path.empty() ? "no device is given" : ""; });
    demo->add_option("--type", options.type, "module type of the camera at the port (default sony1)")
        ->type_name("NAME|CODE")
        ->check(knownType());
    for (const char *simulated : {"--camera", "--baud", "--seed", "--fault"})
        demo->get_option("--port")->excludes(demo->get_option(simulated));
    demo->get_option("--type")->needs(demo->get_option("--port"));
    demo->footer(
        "Exit status: 0 when the camera believes all that was asked, 1 when not or when there is none,\n"
        "2 for wrong usage. Ctrl-C stops a zoom or focus drive first. The settings made stay in the "
        "camera.\n\n"
        "Example: viscacam demo --port /dev/ttyUSB0 --type sony4");
    return demo;
}

void addSimFlags(CLI::App &sim, SimOptions &options) {
    sim.add_flag("--full-speed", options.fullSpeed,
                 "do not pace the line, do not wait for the vertical edge");
    sim.add_flag("--trace", options.trace, "print what goes over the line, in words");
    sim.add_flag("--until-eof", options.untilEof, "end when standard input ends");
    sim.add_flag("--list", options.list, "show the cameras and the faults, and end");
    sim.footer("Prints one line with the device to open, then obeys commands on standard input: state,\n"
               "fault NAME=VALUE, clear NAME, power-cut, power-on, hang-up, replug, quit, help. Runs until "
               "\"quit\",\n"
               "SIGINT or SIGTERM; the end of standard input does not end it.\n\n"
               "Example: viscacam sim --camera sony4 --link /tmp/camera --trace");
}

CLI::App *addSim(CLI::App &app, SimOptions &options) {
    CLI::App *sim = app.add_subcommand("sim", "Run a simulated camera on a pseudo-terminal");
    sim->add_option("--camera", options.camera, "camera to simulate (default sony1)")
        ->type_name("NAME|CODE")
        ->check(knownCamera());
    sim->add_option("--link", options.link, "symbolic link that leads to its device")->type_name("PATH");
    addRate(*sim, options.baud, "that it listens at: 9600 (default), 19200 or 38400");
    sim->add_option("--boot", options.bootMs, "boot time in milliseconds, up to 600000 (default 3000)")
        ->type_name("MS")
        ->check(CLI::Range(0, 600000).description(""));
    sim->add_option_function<std::string>(
           "--latency", [&options](const std::string &text) { options.latency = text == "real"; },
           "of its replies: real (default) or none")
        ->type_name("KIND")
        ->check(CLI::IsMember({"real", "none"}).description(""));
    sim->add_option("--fault", options.faults, FAULT_HELP)->type_name(FAULT_TYPE)->allow_extra_args(false);
    sim->add_option("--seed", options.seed, "of everything random in it")->type_name("NUMBER");
    addSimFlags(*sim, options);
    return sim;
}

} // namespace

int main(int argc, char **argv) {
    DemoOptions demoOptions;
    SimOptions simOptions;
    CLI::App app{"VISCA camera control: drive a camera, simulate one.", "viscacam"};
    app.set_version_flag("--version", VERSION);
    app.require_subcommand(0, 1); // none is noticed below, after what was not understood
    app.footer("\"viscacam SUBCOMMAND --help\" says more.\n\nExample: viscacam demo");
    const CLI::App *demo = addDemo(app, demoOptions);
    const CLI::App *sim = addSim(app, simOptions);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? tool::EXIT_DONE : tool::EXIT_USAGE;
    }
    try {
        if (demo->parsed())
            return tool::runDemo(demoOptions);
        if (sim->parsed())
            return tool::runSim(simOptions);
    } catch (const std::exception &trouble) {
        tool::complain(trouble.what());
        return tool::EXIT_REFUSED;
    }
    tool::complain("say what to do: demo or sim; \"viscacam --help\" explains them");
    return tool::EXIT_USAGE;
}
