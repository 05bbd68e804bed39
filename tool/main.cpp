/* The viscacam command: finds the subcommand and runs it. */
#include <stdexcept>
#include <vector>

#include "tool/complain.h"
#include "tool/exit_status.h"
#include "tool/pages/pages.h"
#include "tool/subcommand.h"
#include "viscacam.h"

namespace {

#define VERSION_TEXT_OF(major, minor, patch) #major "." #minor "." #patch
#define VERSION_TEXT(major, minor, patch)    VERSION_TEXT_OF(major, minor, patch)
const char VERSION[] =
    "viscacam " VERSION_TEXT(VISCACAM_VERSION_MAJOR, VISCACAM_VERSION_MINOR, VISCACAM_VERSION_PATCH);

int run(const std::vector<tool::Subcommand> &subcommands) {
    for (const tool::Subcommand &subcommand : subcommands)
        if (subcommand.app->parsed())
            return subcommand.run();
    std::string names;
    for (size_t i = 0; i < subcommands.size(); ++i)
        names += (i == 0 ? "" : i + 1 == subcommands.size() ? " or " : ", ") + subcommands[i].app->get_name();
    tool::complain("say what to do: " + names + "; \"viscacam --help\" explains them");
    return tool::EXIT_USAGE;
}

} // namespace

int main(int argc, char **argv) {
    CLI::App app{"VISCA camera control: drive a camera, simulate one.", "viscacam"};
    app.set_version_flag("--version", VERSION);
    app.require_subcommand(0, 1); // none is noticed below, after what was not understood
    app.footer("\"viscacam SUBCOMMAND --help\" says more.\n\nExample: viscacam demo");
    const std::vector<tool::Subcommand> subcommands = {
        tool::addCtl(app),    tool::addDemo(app), tool::addSim(app),     tool::addDoctor(app),
        tool::addDecode(app), tool::addTap(app),  tool::addTimeline(app)};
    if (tool::asksForPage(argc, argv))
        return tool::printPage(argc, argv, app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? tool::EXIT_DONE : tool::EXIT_USAGE;
    }
    try {
        return run(subcommands);
    } catch (const std::exception &trouble) {
        tool::complain(trouble.what());
        return tool::EXIT_REFUSED;
    }
}
