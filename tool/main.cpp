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

int askFor(const std::string &what, const std::vector<tool::Subcommand> &subcommands) {
    std::string names;
    for (size_t i = 0; i < subcommands.size(); ++i)
        names += (i == 0 ? "" : i + 1 == subcommands.size() ? " or " : ", ") + subcommands[i].app->get_name();
    tool::complain(what + names + "; \"viscacam --help\" explains them");
    return tool::EXIT_USAGE;
}

int run(const std::vector<tool::Subcommand> &subcommands) {
    for (const tool::Subcommand &subcommand : subcommands)
        if (subcommand.app->parsed())
            return subcommand.run();
    return askFor("say what to do: ", subcommands);
}

// The first word that is nobody's, where a subcommand should stand; empty when there is one.
std::string unknownSubcommand(const CLI::App &app) {
    const std::vector<std::string> words = app.remaining();
    const bool option = words.empty() || words[0].empty() || words[0][0] == '-';
    return option || !app.get_subcommands().empty() ? "" : words[0];
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
        const std::string unknown = unknownSubcommand(app);
        if (!unknown.empty())
            return askFor("no subcommand is called \"" + unknown + "\"; use ", subcommands);
        return app.exit(error) == 0 ? tool::EXIT_DONE : tool::EXIT_USAGE;
    }
    try {
        return run(subcommands);
    } catch (const std::exception &trouble) {
        tool::complain(trouble.what());
        return tool::EXIT_REFUSED;
    }
}
