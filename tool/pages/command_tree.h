#ifndef VISCACAM_TOOL_PAGES_COMMAND_TREE_H
#define VISCACAM_TOOL_PAGES_COMMAND_TREE_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

/* What completes a value. */
enum class ValueKind { any, words, file, folder, device, command };

struct Value {
    std::string name; /* "DEVICE"; empty for a flag */
    ValueKind kind = ValueKind::any;
    std::vector<std::string> words; /* the ones that can be listed; one that ends in "=" goes on */
};

struct Argument {
    std::vector<std::string> names; /* "-h", "--help"; none for a positional */
    Value value;
    std::string help;
    bool required = false;
    bool repeated = false;
    std::vector<std::string> excludes; /* options that may not stand beside it */
    std::vector<std::string> needs;    /* options that must */
};

/* A command as its help shows it, without what is hidden there. */
struct Command {
    std::vector<std::string> path; /* "viscacam", "demo" */
    std::string description;
    std::string footer;
    std::vector<Argument> options;
    std::vector<Argument> positionals;
    std::vector<Command> subcommands;
};

Command commandTree(CLI::App &app);

/* "viscacam demo" */
std::string spelled(const Command &command, const std::string &between = " ");

/* A manual page in mdoc. With subcommands deeper than their own page. */
std::string manPage(const Command &command);

std::string bashCompletion(const Command &root);
std::string zshCompletion(const Command &root);

} // namespace tool

#endif
