#include <memory>

#include "tool/decode/look_options.h"
#include "tool/subcommand.h"
#include "tool/tap/tap.h"

namespace tool {

Subcommand addTap(CLI::App &app) {
    const auto options = std::make_shared<TapOptions>();
    const auto look = std::make_shared<TrafficLook>();
    CLI::App *tap = app.add_subcommand("tap", "Stand between a host program and a camera, and look");
    tap->add_option("DEVICE", options->device, "serial device that the camera is at")->required();
    tap->add_option("--link", options->link, "link to the pseudo-terminal that the host opens instead")
        ->type_name("PATH");
    tap->add_option("-o,--output", options->capture, "capture to write")->type_name("FILE");
    tap->add_flag("-q,--quiet", options->quiet, "show nothing");
    CLI::Option *listen = tap->add_flag("--listen", options->listen, "only listen, never write; no host");
    addRate(*tap, options->baud, "to listen at: 9600 (default), 19200 or 38400")->needs(listen);
    tap->add_option("--wire", options->wire, "heard: from-camera (default), to-camera or both")
        ->type_name("WAY")
        ->check(CLI::IsMember({"from-camera", "to-camera", "both"}).description(""))
        ->needs(listen);
    listen->excludes(tap->get_option("--link"));
    addLook(*tap, look);
    tap->footer(
        "Passes bytes both ways at once and unchanged, at the rate and stop bits that the host sets on the\n"
        "pseudo-terminal; parity does not show there, the device has none. A device that vanishes is said "
        "to\n"
        "be gone and waited for; what the host sends meanwhile is lost. The link is tap in the folder of\n"
        "\"viscacam sim\" unless given. Runs until SIGINT or SIGTERM. For kinds see \"viscacam decode "
        "--help\".\n\n"
        "Example: viscacam tap /dev/ttyUSB0 --link /tmp/camera -o bench.capture");
    return {tap, [options, look] { return runTap(*options, *look); }};
}

} // namespace tool
