#include <memory>

#include "tool/complain.h"
#include "tool/ctl/ctl.h"
#include "tool/exit_status.h"
#include "tool/subcommand.h"

namespace tool {

namespace {

void addCamera(CLI::App &ctl, CtlOptions &options) {
    ctl.add_option("--port", options.port, "the camera at this device")
        ->type_name("DEVICE")
        ->check([](const std::string &path) { return path.empty() ? "no device is given" : ""; });
    ctl.add_option("--type", options.type, "its module type (default sony1)")
        ->type_name("NAME|CODE")
        ->check(knownType())
        ->needs(ctl.get_option("--port"));
    ctl.add_option("--sim", options.sim, "a simulated camera instead")
        ->type_name("CAMERA")
        ->check(knownCamera())
        ->excludes(ctl.get_option("--port"));
    addRate(ctl, options.baud, "that it listens at: 9600 (default), 19200 or 38400")
        ->needs(ctl.get_option("--sim"));
    ctl.add_option("--fault", options.faults, FAULT_HELP)
        ->type_name(FAULT_TYPE)
        ->allow_extra_args(false)
        ->needs(ctl.get_option("--sim"));
}

int run(CtlOptions options, const std::vector<std::string> &words) {
    options.words = words;
    if (!words.empty() && !words[0].empty() && words[0][0] == '-') {
        complain("\"" + words[0] + "\" is no option of ctl; \"viscacam ctl --help\" shows them");
        return EXIT_USAGE;
    }
    if (!words.empty() && !options.file.empty()) {
        complain("commands stand on the command line or in a file, not both");
        return EXIT_USAGE;
    }
    return runCtl(options);
}

} // namespace

Subcommand addCtl(CLI::App &app) {
    const auto options = std::make_shared<CtlOptions>();
    CLI::App *ctl = app.add_subcommand("ctl", "Command a camera: ctl [OPTIONS] [COMMAND [; COMMAND...]]");
    addCamera(*ctl, *options);
    ctl->add_flag("--trace", options->trace, "print what goes over the line, in words");
    ctl->add_option("--capture", options->capture, "write what goes over the line into this file")
        ->type_name("FILE");
    ctl->add_flag("--json", options->json, "one object a result, one a line")
        ->excludes(ctl->get_option("--trace"));
    ctl->add_option("-f,--file", options->file, "carry out the lines of a file; - is standard input")
        ->type_name("FILE");
    ctl->add_flag("--keep-going", options->keepGoing, "go on behind a command that fails");
    ctl->prefix_command(); // what is no option begins the commands
    ctl->footer(
        "Without a COMMAND it reads them from standard input; at a terminal with history and completion.\n"
        "\"viscacam ctl help\" shows all commands, \"viscacam ctl help zoom\" those of the zoom. Exit "
        "status:\n0 done, 1 the camera or the library said no, 2 wrong usage.\n\n"
        "Example: viscacam ctl --sim sony1 zoom in 2s ';' zoom show");
    return {ctl, [options, ctl] { return run(*options, ctl->remaining()); }};
}

} // namespace tool
