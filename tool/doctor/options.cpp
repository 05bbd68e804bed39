#include <memory>

#include "tool/doctor/doctor.h"
#include "tool/subcommand.h"

namespace tool {

Subcommand addDoctor(CLI::App &app) {
    const auto options = std::make_shared<DoctorOptions>();
    CLI::App *doctor = app.add_subcommand("doctor", "Find out why a camera does not answer");
    doctor->add_option("DEVICE", options->device, "serial device that the camera is at")->required();
    doctor
        ->add_option("--timeout", options->timeoutMs,
                     "for an answer, in milliseconds, 50 to 60000 (default 1500)")
        ->type_name("MS")
        ->check(CLI::Range(50, 60000).description(""));
    doctor->add_flag("--json", options->json, "one JSON object on one line");
    doctor->footer(
        "Looks at the device, its permissions, who else has it open and the adapter; then listens, "
        "and asks\nat 9600, 19200 and 38400 bit/s: who answers, how fast, which versions. Changes no "
        "setting of the\ncamera. Ends with what to do. Exit status: 0 healthy, 1 not.\n\n"
        "Example: viscacam doctor /dev/ttyUSB0");
    return {doctor, [options] { return runDoctor(*options); }};
}

} // namespace tool
