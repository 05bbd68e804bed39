#include "tool/subcommand.h"

#include <stdexcept>

#include "sim/sim.h"
#include "tool/module_types.h"

namespace tool {

namespace {

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

} // namespace

const char FAULT_TYPE[] = "NAME[=VALUE]";
const char FAULT_HELP[] = "fault to begin with, may be repeated; \"viscacam sim --list\" shows them";

CLI::Validator knownCamera() {
    return known(findCameraType);
}

CLI::Validator knownType() {
    return known(findModuleType);
}

CLI::Validator knownRate() {
    return CLI::IsMember({9600, 19200, 38400}).description("");
}

CLI::Option *addRate(CLI::App &command, unsigned &rate, const std::string &help) {
    return command.add_option("--baud", rate, help)->type_name("RATE")->check(knownRate());
}

} // namespace tool
