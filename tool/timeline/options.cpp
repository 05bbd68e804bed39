#include <memory>

#include "tool/subcommand.h"
#include "tool/timeline/timeline.h"

namespace tool {

Subcommand addTimeline(CLI::App &app) {
    const auto options = std::make_shared<TimelineOptions>();
    CLI::App *timeline = app.add_subcommand("timeline", "Draw a capture");
    timeline->add_option("CAPTURE", options->capture, "a capture, or log lines of the library")->required();
    timeline->add_option("-o,--output", options->output, "picture to write: FILE.svg or FILE.html")
        ->type_name("FILE")
        ->required();
    timeline->footer(
        "Lanes for host and camera, commands from their first byte to the completion, inquiries to\n"
        "the answer, time-outs, refusals, noise and the use of the line. The HTML form zooms and moves;\n"
        "it needs no network.\n\n"
        "Example: viscacam timeline camera.capture -o camera.html");
    return {timeline, [options] { return runTimeline(*options); }};
}

} // namespace tool
