#include <memory>

#include "tool/demo/demo.h"
#include "tool/subcommand.h"

namespace tool {

namespace {

CLI::App *addStory(CLI::App &demo, const std::string &name, const std::string &description) {
    CLI::App *story = demo.add_subcommand(name, description);
    story->fallthrough(); // the demo's own options may stand behind it
    story->footer("The options of \"viscacam demo\" may stand behind it.\n\n"
                  "Exit status: 0 when it was done, 1 when not, 2 for wrong usage.\n\n"
                  "Example: viscacam demo " +
                  name + " --port /dev/ttyUSB0 --type kova2");
    return story;
}

// Without a word about the camera it is the usual module of the second generation.
int runFieldService(DemoOptions options, DemoOptions::Story story) {
    options.story = story;
    if (options.port.empty() && options.camera.empty())
        options.camera = "kova2";
    return runDemo(options);
}

} // namespace

Subcommand addDemo(CLI::App &app) {
    const auto options = std::make_shared<DemoOptions>();
    CLI::App *demo = app.add_subcommand("demo", "Watch the library drive a camera, a line a packet");
    demo->add_option("--camera", options->camera, "camera to simulate (default: sony1, then kova2)")
        ->type_name("NAME|CODE")
        ->check(knownCamera());
    addRate(*demo, options->baud, "that it listens at: 9600, 19200 or 38400 (default)");
    demo->add_option("--seed", options->seed, "of everything random in it")->type_name("NUMBER");
    demo->add_option("--fault", options->faults, FAULT_HELP)->type_name(FAULT_TYPE)->allow_extra_args(false);
    demo->add_option("--port", options->port, "drive the camera at this device instead")
        ->type_name("DEVICE")
        ->check([](const std::string &path) { return path.empty() ? "no device is given" : ""; });
    demo->add_option("--type", options->type, "module type of the camera at the port (default sony1)")
        ->type_name("NAME|CODE")
        ->check(knownType());
    for (const char *simulated : {"--camera", "--baud", "--seed", "--fault"})
        demo->get_option("--port")->excludes(demo->get_option(simulated));
    demo->get_option("--type")->needs(demo->get_option("--port"));
    demo->require_subcommand(0, 1);
    demo->footer(
        "Exit status: 0 when the camera believes all that was asked, 1 when not or when there is none,\n"
        "2 for wrong usage. Ctrl-C stops a zoom or focus drive first. The settings made stay in the "
        "camera.\n\n"
        "Example: viscacam demo --port /dev/ttyUSB0 --type sony4");
    CLI::App *upgrade = addStory(*demo, "upgrade", "Upgrade the firmware of a Kova module");
    upgrade->add_flag("--dry-run", options->dryRun, "say only what would be sent, and why");
    const CLI::App *exportLog = addStory(*demo, "export", "Fetch the log of a Kova module and list it");
    return {demo, [options, upgrade, exportLog] {
                if (upgrade->parsed())
                    return runFieldService(*options, DemoOptions::Story::upgrade);
                if (exportLog->parsed())
                    return runFieldService(*options, DemoOptions::Story::exportLog);
                return runDemo(*options);
            }};
}

} // namespace tool
