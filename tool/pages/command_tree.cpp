#include "tool/pages/command_tree.h"

#include <algorithm>
#include <cctype>
#include <set>

#include <CLI/CLI.hpp>

#include "sim/sim.h"

namespace tool {

namespace {

constexpr char KNOWN[] = "known are";

std::vector<std::string> faultNames() {
    std::vector<std::string> names;
    for (const sim::FaultType &fault : sim::knownFaults())
        names.push_back(fault.name + (fault.value.empty() ? "" : "="));
    return names;
}

std::vector<std::string> split(const std::string &text, const std::string &separators) {
    std::vector<std::string> parts(1);
    for (const char letter : text)
        if (separators.find(letter) == std::string::npos)
            parts.back() += letter;
        else
            parts.emplace_back();
    return parts;
}

// Words that nobody types: the checks of numbers throw at the first.
std::string complaintOf(const CLI::Validator &check) {
    std::string word = "\x7f";
    std::string number = "-987654321";
    try {
        return check(word);
    } catch (const CLI::ValidationError &) {
        return check(number);
    }
}

// What an option's check complains names the words that are allowed: "{9600,19200}", or behind "known are"
// with remarks in brackets.
std::vector<std::string> allowedWords(CLI::Option &option) {
    std::string complaint;
    try {
        complaint = complaintOf(*option.get_validator(0));
    } catch (const CLI::OptionNotFound &) {
        return {};
    }
    const size_t brace = complaint.find('{');
    const size_t known = complaint.find(KNOWN);
    if (brace == std::string::npos && known == std::string::npos)
        return {};
    complaint.erase(0, brace != std::string::npos ? brace : known + sizeof KNOWN - 1);
    std::vector<std::string> words;
    for (const std::string &word : split(complaint, " \n,{}"))
        if (!word.empty() && word[0] != '(' && word != "and" && word != "or")
            words.push_back(word);
    return words;
}

// The names that the options give their values say what is meant.
ValueKind kindOf(const std::string &name) {
    const std::vector<std::string> alternatives = split(name, "|");
    const auto says = [&](const std::vector<std::string> &words) {
        return std::find_first_of(alternatives.begin(), alternatives.end(), words.begin(), words.end()) !=
               alternatives.end();
    };
    if (says({"DEVICE"}))
        return ValueKind::device;
    if (says({"FOLDER"}))
        return ValueKind::folder;
    return says({"FILE", "PATH", "CAPTURE", "SOCKET"}) ? ValueKind::file : ValueKind::any;
}

// A name in lower case can be typed as it stands: "real|none|MS".
bool isTyped(const std::string &word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char letter) {
        return std::islower(letter) || letter == '-';
    });
}

Value valueOf(CLI::Option &option, const std::string &name) {
    Value value;
    value.name = name.substr(0, name.find(":{"));
    value.words = name == "NAME[=VALUE]" ? faultNames() : allowedWords(option);
    for (const std::string &word : split(value.name, "|"))
        if (isTyped(word))
            value.words.push_back(word);
    value.kind = value.words.empty() ? kindOf(value.name) : ValueKind::words;
    return value;
}

std::vector<std::string> namesOf(const CLI::Option &option) {
    std::vector<std::string> names;
    for (const std::string &name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string &name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

std::vector<std::string> longNames(const std::set<CLI::Option *> &options) {
    std::vector<std::string> names;
    for (const CLI::Option *option : options)
        names.push_back(option->get_name());
    std::sort(names.begin(), names.end()); // the set is ordered by address
    return names;
}

Argument argumentOf(CLI::Option &option) {
    Argument argument;
    argument.names = namesOf(option);
    if (argument.names.empty())
        argument.value = valueOf(option, option.get_name(true));
    else if (option.get_items_expected_max() != 0)
        argument.value = valueOf(option, option.get_type_name());
    argument.help = option.get_description();
    argument.required = option.get_required();
    argument.repeated = option.get_items_expected_max() > 1;
    argument.excludes = longNames(option.get_excludes());
    argument.needs = longNames(option.get_needs());
    return argument;
}

// What stands behind the options of such a command is its own language.
Argument commandWords() {
    Argument words;
    words.value = {"COMMAND", ValueKind::command, {}};
    words.repeated = true;
    return words;
}

Command commandOf(CLI::App &app, std::vector<std::string> path) {
    Command command;
    path.push_back(app.get_name());
    command.path = path;
    command.description = app.get_description();
    command.footer = app.get_footer();
    for (CLI::Option *option : app.get_options({}))
        if (!option->get_group().empty())
            (option->nonpositional() ? command.options : command.positionals).push_back(argumentOf(*option));
    if (app.get_prefix_command())
        command.positionals.push_back(commandWords());
    for (CLI::App *subcommand : app.get_subcommands(nullptr))
        if (!subcommand->get_group().empty())
            command.subcommands.push_back(commandOf(*subcommand, path));
    return command;
}

} // namespace

Command commandTree(CLI::App &app) {
    return commandOf(app, {});
}

std::string spelled(const Command &command, const std::string &between) {
    std::string text;
    for (const std::string &word : command.path)
        text += (text.empty() ? "" : between) + word;
    return text;
}

} // namespace tool
