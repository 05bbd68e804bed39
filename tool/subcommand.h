#ifndef VISCACAM_TOOL_SUBCOMMAND_H
#define VISCACAM_TOOL_SUBCOMMAND_H

#include <functional>

#include <CLI/CLI.hpp>

namespace tool {

/* One word after "viscacam": what can be typed behind it, and the function that then does it. */
struct Subcommand {
    CLI::App *app;
    std::function<int()> run; /* returns the exit status */
};

/* Each adds a subcommand to the command line and is defined in the folder of its name. */
Subcommand addCtl(CLI::App &app);
Subcommand addDecode(CLI::App &app);
Subcommand addDemo(CLI::App &app);
Subcommand addDoctor(CLI::App &app);
Subcommand addSim(CLI::App &app);
Subcommand addTimeline(CLI::App &app);
Subcommand addTap(CLI::App &app);

/* Checks that several subcommands use; the complaint lists what is allowed. */
CLI::Validator knownCamera();
CLI::Validator knownType();
CLI::Validator knownRate();

/* The text of "--fault NAME[=VALUE]". */
extern const char FAULT_TYPE[];
extern const char FAULT_HELP[];

/* "--baud RATE" */
CLI::Option *addRate(CLI::App &command, unsigned &rate, const std::string &help);

} // namespace tool

#endif
