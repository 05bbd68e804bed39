/* The completion for zsh: a function a subcommand, each a call of _arguments. */
#include "tool/pages/command_tree.h"

namespace tool {

namespace {

constexpr char HEAD[] = R"ZSH(#compdef viscacam
# Completion of viscacam for zsh; printed by "viscacam --completion zsh".

_viscacam_devices() {
    local -a devices=(/dev/tty[A-Z]*(N) /dev/serial/by-id/*(N))
    _alternative 'devices:device:compadd -a devices' 'files:device:_files'
}

_viscacam_command() {
    local -a offers=("${(@f)$(_call_program words viscacam --complete ${(qq)words[1,CURRENT-1]} ${(qq)PREFIX})}")
    compadd -S ' ' -- $offers
}

)ZSH";

constexpr char TAIL[] = R"ZSH(
if [ "$funcstack[1]" = _viscacam ]; then
    _viscacam "$@"
else
    compdef _viscacam viscacam
fi
)ZSH";

// Inside single quotes, where ":", "[", "]" and "\" separate.
std::string quoted(const std::string &text) {
    std::string result;
    for (const char letter : text)
        if (letter == '\'')
            result += "'\\''";
        else if (std::string(":[]\\").find(letter) != std::string::npos)
            result += std::string("\\") + letter;
        else
            result += letter;
    return result;
}

std::string functionName(const Command &command) {
    return "_" + spelled(command, "_");
}

std::string action(const Value &value) {
    std::string words;
    switch (value.kind) {
    case ValueKind::words:
        for (const std::string &word : value.words)
            words += (words.empty() ? "" : " ") + word;
        return words.find('=') == std::string::npos ? "(" + words + ")"
                                                    : "{compadd -S \"\" -- " + words + "}";
    case ValueKind::file:
        return "_files";
    case ValueKind::folder:
        return "_files -/";
    case ValueKind::device:
        return "_viscacam_devices";
    case ValueKind::command:
        return "_viscacam_command";
    case ValueKind::any:
        break;
    }
    return " ";
}

std::string valueSpec(const Value &value) {
    return ":" + quoted(value.name) + ":" + action(value);
}

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

// "'(-h --help)'{-h,--help}'[print this]'": each name bars the others, itself and what it excludes, unless it
// repeats.
std::string optionSpec(const Argument &option) {
    std::vector<std::string> bars = option.excludes;
    if (!option.repeated)
        bars.insert(bars.end(), option.names.begin(), option.names.end());
    const bool takesValue = !option.value.name.empty();
    std::string text;
    for (const std::string &name : option.names) {
        text += " \\\n        '";
        text += bars.empty() ? "" : "(" + joined(bars) + ")";
        text += option.repeated ? "*" : "";
        text += name + (takesValue ? name[1] == '-' ? "=" : "+" : "");
        text += "[" + quoted(option.help) + "]" + (takesValue ? valueSpec(option.value) : "") + "'";
    }
    return text;
}

std::string positionalSpec(const Argument &positional) {
    const char *const count = positional.value.kind == ValueKind::command ? "*::"
                              : positional.repeated                       ? "*:"
                              : positional.required                       ? ":"
                                                                          : "::";
    return std::string(" \\\n        '") + count + quoted(positional.value.name) + ":" +
           action(positional.value) + "'";
}

std::string optionSpecs(const Command &command) {
    std::string text;
    for (const Argument &option : command.options)
        text += optionSpec(option);
    return text;
}

std::string subcommandCases(const Command &command) {
    std::string text = "    local -a subcommands=(\n";
    for (const Command &below : command.subcommands)
        text += "        '" + quoted(below.path.back()) + ":" + quoted(below.description) + "'\n";
    text += "    )\n    case $state in\n    subcommand) _describe subcommand subcommands ;;\n"
            "    arguments)\n        case $line[1] in\n";
    for (const Command &below : command.subcommands)
        text += "        " + below.path.back() + ") " + functionName(below) + " ;;\n";
    return text + "        esac ;;\n    esac\n";
}

// Options of a subcommand may be followed by those of its parent, but the program's own stand in front.
std::string function(const Command &command, const std::string &inherited) {
    const std::string own = optionSpecs(command);
    std::string text = functionName(command) + "() {\n";
    if (!command.subcommands.empty())
        text += "    local curcontext=$curcontext state line\n    typeset -A opt_args\n";
    text += "    _arguments -C -s" + own + inherited;
    for (const Argument &positional : command.positionals)
        text += positionalSpec(positional);
    if (!command.subcommands.empty())
        text += " \\\n        '1: :->subcommand' '*:: :->arguments'\n" + subcommandCases(command);
    text += command.subcommands.empty() ? "\n}\n\n" : "}\n\n";
    std::string below;
    for (const Command &subcommand : command.subcommands)
        below += function(subcommand, command.path.size() == 1 ? "" : own);
    return below + text;
}

} // namespace

std::string zshCompletion(const Command &root) {
    std::string text = HEAD + function(root, "");
    text.pop_back();
    return text + TAIL;
}

} // namespace tool
