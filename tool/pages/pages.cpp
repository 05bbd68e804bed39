#include "tool/pages/pages.h"

#include <cstdio>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tool/complain.h"
#include "tool/ctl/grammar.h"
#include "tool/exit_status.h"
#include "tool/pages/command_tree.h"

namespace tool {

namespace {

int print(const std::string &text) {
    const bool done = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return done ? EXIT_DONE : EXIT_REFUSED;
}

int printManPage(const Command &root, const std::string &name) {
    if (name == root.path[0])
        return print(manPage(root));
    for (const Command &command : root.subcommands)
        if (command.path.back() == name || root.path[0] + "-" + command.path.back() == name)
            return print(manPage(command));
    complain("there is no manual page \"" + name + "\"");
    return EXIT_USAGE;
}

int printPageNames(const Command &root) {
    std::string names = root.path[0] + "\n";
    for (const Command &command : root.subcommands)
        names += command.path.back() + "\n";
    return print(names);
}

int printCompletion(const Command &root, const std::string &shell) {
    if (shell == "bash")
        return print(bashCompletion(root));
    if (shell == "zsh")
        return print(zshCompletion(root));
    complain("there is a completion for bash and one for zsh, none for \"" + shell + "\"");
    return EXIT_USAGE;
}

bool takesValue(const Command &command, const std::string &name) {
    for (const Argument &option : command.options)
        for (const std::string &spelling : option.names)
            if (spelling == name)
                return !option.value.name.empty();
    return false;
}

// Options may stand in front of the command's first word.
size_t firstOfCommand(const Command &ctl, const std::vector<std::string> &words) {
    size_t first = 0;
    while (first + 1 < words.size() && !words[first].empty() && words[first][0] == '-')
        first += takesValue(ctl, words[first]) ? 2 : 1;
    return first;
}

int printCommandWords(const Command &root, const std::vector<std::string> &words) {
    std::string line;
    for (const Command &command : root.subcommands)
        if (command.path.back() == "ctl")
            for (size_t i = firstOfCommand(command, words); i < words.size(); ++i)
                line += words[i] + (i + 1 < words.size() ? " " : "");
    std::string offers;
    for (const std::string &word : ctl::complete(line, 0).words)
        offers += word + "\n";
    return print(offers);
}

} // namespace

bool asksForPage(int argc, char **argv) {
    const std::string first = argc > 1 ? argv[1] : "";
    return (argc == 2 && first == "--man-pages") || (argc == 3 && first == "--man") ||
           (argc == 3 && first == "--completion") || (argc > 2 && first == "--complete");
}

int printPage(int argc, char **argv, CLI::App &app) {
    const Command root = commandTree(app);
    const std::string asked = argv[1];
    if (asked == "--man-pages")
        return printPageNames(root);
    if (asked == "--complete")
        return printCommandWords(root, {argv + 2, argv + argc});
    return asked == "--man" ? printManPage(root, argv[2]) : printCompletion(root, argv[2]);
}

} // namespace tool
