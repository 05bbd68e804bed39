/* The completion for bash, on top of the package bash-completion. */
#include "tool/pages/command_tree.h"

namespace tool {

namespace {

constexpr char HELPERS[] = R"BASH(# Completion of viscacam for bash; printed by "viscacam --completion bash".

_viscacam_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
    [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace
}

_viscacam_devices() {
    local IFS=$'\n'
    mapfile -t COMPREPLY < <(compgen -W "$(compgen -G '/dev/tty[A-Z]*'; compgen -G '/dev/serial/by-id/*')" -- "$cur")
    [[ ${#COMPREPLY[@]} -gt 0 ]] || _filedir
}

_viscacam_command() {
    mapfile -t COMPREPLY < <("${words[0]}" --complete "${words[@]:2:cword-2}" "$cur" 2>/dev/null)
    [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace
}

)BASH";

constexpr char BEGIN[] = R"BASH(_viscacam() {
    # prev, words, cword and split belong to the call of _init_completion.
    # shellcheck disable=SC2034
    local cur prev words cword split command=viscacam i
    _init_completion -s || return
    for ((i = 1; i < cword; i++)); do
        case "$command ${words[i]}" in
)BASH";

constexpr char END[] = R"BASH(    esac
} && complete -F _viscacam viscacam
)BASH";

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

// What the shell does to complete a value; nothing completes any other.
std::string action(const Value &value) {
    switch (value.kind) {
    case ValueKind::words:
        return "_viscacam_words '" + joined(value.words) + "'";
    case ValueKind::file:
        return "_filedir";
    case ValueKind::folder:
        return "_filedir -d";
    case ValueKind::device:
        return "_viscacam_devices";
    case ValueKind::command:
        return "_viscacam_command";
    case ValueKind::any:
        break;
    }
    return ":";
}

std::string subcommandWords(const Command &command) {
    std::string text;
    for (const Command &below : command.subcommands) {
        text += "        '" + spelled(below) + "') command='" + spelled(below) + "' ;;\n";
        text += subcommandWords(below);
    }
    return text;
}

// "'viscacam demo --port') _viscacam_devices ;;"; options of the parent may stand behind a subcommand of it.
std::string valueCases(const Command &command) {
    std::string text;
    for (const Argument &option : command.options) {
        if (option.value.name.empty())
            continue;
        std::string pattern;
        for (const std::string &name : option.names)
            pattern += (pattern.empty() ? "'" : " | '") + spelled(command) + "'*' " + name + "'";
        text += "    " + pattern + ") " + action(option.value) + "; return ;;\n";
    }
    for (const Command &below : command.subcommands)
        text = valueCases(below) + text;
    return text;
}

std::string optionNames(const Command &command) {
    std::vector<std::string> names;
    for (const Argument &option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return joined(names);
}

std::string subcommandNames(const Command &command) {
    std::vector<std::string> names;
    for (const Command &below : command.subcommands)
        names.push_back(below.path.back());
    return joined(names);
}

std::string wordCases(const Command &command, const std::string &inherited) {
    const std::string names = optionNames(command);
    std::string text = "    '" + spelled(command) + " -'*) _viscacam_words '" + names + inherited + "' ;;\n";
    if (!command.subcommands.empty())
        text += "    '" + spelled(command) + " '*) _viscacam_words '" + subcommandNames(command) + "' ;;\n";
    else if (!command.positionals.empty())
        text += "    '" + spelled(command) + " '*) " + action(command.positionals[0].value) + " ;;\n";
    else
        text += "    '" + spelled(command) + " '*) ;;\n";
    std::string below;
    for (const Command &subcommand : command.subcommands)
        below += wordCases(subcommand, command.path.size() == 1 ? "" : " " + names);
    return below + text;
}

} // namespace

std::string bashCompletion(const Command &root) {
    return std::string(HELPERS) + BEGIN + subcommandWords(root) + "        esac\n    done\n" +
           "    case \"$command $prev\" in\n" + valueCases(root) + "    esac\n" +
           "    case \"$command $cur\" in\n" + wordCases(root, "") + END;
}

} // namespace tool
