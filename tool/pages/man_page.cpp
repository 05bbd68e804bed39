/*
 * A command as a manual page in mdoc. The help's closing text is cut at its blank lines: a paragraph that
 * begins with "Exit status:" or "Example:" goes where manual pages have it, the others describe.
 */
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>

#include "tool/pages/command_tree.h"

namespace tool {

namespace {

constexpr char EXIT_STATUS[] = "Exit status:";
constexpr char DEFAULT_EXIT_STATUS[] =
    "0 done, 1 the camera, the library or the system said no, 2 wrong usage.";

// Text of a line: neither a backslash nor a control character at its begin may mean something.
std::string escaped(const std::string &line) {
    std::string text = !line.empty() && (line[0] == '.' || line[0] == '\'') ? "\\&" : "";
    for (const char letter : line)
        if (letter == '\\')
            text += "\\e";
        else
            text += letter;
    return text;
}

// A word behind a macro: it must not be taken for one, nor as punctuation.
std::string asArgument(const std::string &word) {
    return "\\&" + escaped(word);
}

std::vector<std::string> cut(const std::string &text, const std::string &separator) {
    std::vector<std::string> parts;
    size_t begin = 0;
    for (size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + separator.size())
        parts.push_back(text.substr(begin, end - begin));
    parts.push_back(text.substr(begin));
    return parts;
}

std::string trimmed(const std::string &text) {
    const size_t first = text.find_first_not_of(" \n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

bool beginsWith(const std::string &text, const std::string &with) {
    return text.rfind(with, 0) == 0;
}

// "2026-11-20" of the build, or of its source where the build can be repeated, as mdoc writes it.
std::string date() {
    const char *const epoch = std::getenv("SOURCE_DATE_EPOCH");
    const std::time_t now =
        epoch ? static_cast<std::time_t>(std::strtoll(epoch, nullptr, 10)) : std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[64];
    const size_t length = std::strftime(text, sizeof text, "%B ", &parts);
    return std::string(text, length) + std::to_string(parts.tm_mday) + ", " +
           std::to_string(1900 + parts.tm_year);
}

// The help's paragraphs, each to where it belongs.
struct Footer {
    std::vector<std::string> description;
    std::string exitStatus = DEFAULT_EXIT_STATUS;
    std::vector<std::string> examples; /* commands */
};

bool isExample(const std::string &paragraph) {
    return beginsWith(paragraph, "Example:") || beginsWith(paragraph, "Examples:");
}

Footer footerOf(const Command &command) {
    Footer footer;
    for (const std::string &part : cut(command.footer, "\n\n")) {
        const std::string paragraph = trimmed(part);
        if (isExample(paragraph)) {
            for (const std::string &line : cut(paragraph.substr(paragraph.find(':') + 1), "\n"))
                if (!trimmed(line).empty())
                    footer.examples.push_back(trimmed(line));
        } else if (beginsWith(paragraph, EXIT_STATUS)) {
            footer.exitStatus = trimmed(paragraph.substr(sizeof EXIT_STATUS - 1));
        } else if (!paragraph.empty()) {
            footer.description.push_back(part.substr(part.find_first_not_of('\n')));
        }
    }
    return footer;
}

constexpr size_t LINE_WIDTH = 78;

// Words up to the width of a line.
std::string wrapped(const std::string &text) {
    std::string lines;
    std::string line;
    for (const std::string &word : cut(text, " ")) {
        if (!line.empty() && line.size() + 1 + word.size() > LINE_WIDTH) {
            lines += escaped(line) + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    return lines + escaped(line) + "\n";
}

// Sentences begin on lines of their own, which is how the formatter knows where one ends.
std::string filled(const std::string &paragraph) {
    std::string text;
    for (const std::string &line : cut(paragraph, "\n"))
        text += (text.empty() ? "" : " ") + trimmed(line);
    const std::vector<std::string> sentences = cut(text, ". ");
    std::string lines;
    for (size_t i = 0; i < sentences.size(); ++i)
        lines += wrapped(sentences[i] + (i + 1 < sentences.size() ? "." : ""));
    return lines;
}

// Indented lines are a table: they stay as they are.
bool isTable(const std::string &paragraph) {
    return paragraph.find("\n  ") != std::string::npos || beginsWith(paragraph, "  ");
}

std::string literal(const std::string &paragraph) {
    std::string text = ".Bd -literal\n";
    for (const std::string &line : cut(paragraph, "\n"))
        text += escaped(line) + "\n";
    return text + ".Ed\n";
}

std::string paragraphs(const std::vector<std::string> &all) {
    std::string text;
    for (const std::string &paragraph : all)
        text += ".Pp\n" + (isTable(paragraph) ? literal(paragraph) : filled(paragraph));
    return text;
}

std::string valueText(const Argument &argument) {
    return argument.value.name.empty() ? "" : " Ar " + asArgument(argument.value.name);
}

// "Fl h , Fl -help"
std::string flags(const Argument &option, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += (i == 0 ? "Fl " : " , Fl ") + option.names[i].substr(1);
    return text;
}

std::string positionalText(const Argument &positional) {
    const std::string text = "Ar " + asArgument(positional.value.name) + (positional.repeated ? " ..." : "");
    return positional.required ? "." + text + "\n" : ".Op " + text + "\n";
}

std::string synopsis(const Command &command) {
    std::string text = ".Nm " + command.path[0] + "\n";
    for (size_t i = 1; i < command.path.size(); ++i)
        text += ".Cm " + asArgument(command.path[i]) + "\n";
    for (const Argument &option : command.options)
        text += ".Op Fl " + option.names.back().substr(1) + valueText(option) + "\n";
    for (const Argument &positional : command.positionals)
        text += positionalText(positional);
    if (!command.subcommands.empty())
        text += command.path.size() == 1 ? ".Op Ar \\&SUBCOMMAND ...\n" : ".Op Ar \\&SUBCOMMAND\n";
    return text;
}

std::string joined(const std::vector<std::string> &names) {
    std::string text;
    for (size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return text;
}

std::string conditions(const Argument &argument) {
    std::string text;
    if (!argument.excludes.empty())
        text += "Not together with " + escaped(joined(argument.excludes)) + ".\n";
    if (!argument.needs.empty())
        text += "Only together with " + escaped(joined(argument.needs)) + ".\n";
    return text;
}

std::string sentence(const std::string &help) {
    return filled(help.empty() || help.back() == '.' ? help : help + ".");
}

std::string options(const Command &command) {
    std::string text;
    for (const Argument &positional : command.positionals)
        if (!positional.help.empty())
            text += ".It Ar " + asArgument(positional.value.name) + "\n" + sentence(positional.help) +
                    conditions(positional);
    for (const Argument &option : command.options)
        text += ".It " + flags(option, option.names.size()) + valueText(option) + "\n" +
                sentence(option.help) + conditions(option);
    return text.empty() ? "" : ".Bl -tag -width Ds\n" + text + ".El\n";
}

// "viscacam-demo 1"
std::string reference(const Command &command) {
    return ".Xr " + spelled(command, "-") + " 1";
}

// Subcommands of the program have pages of their own; those below stand on their parent's.
std::string subcommands(const Command &command) {
    if (command.subcommands.empty())
        return "";
    std::string text = ".Sh SUBCOMMANDS\n";
    if (command.path.size() == 1) {
        text += ".Bl -tag -width Ds\n";
        for (const Command &below : command.subcommands)
            text += ".It Cm " + asArgument(below.path.back()) + "\n" + sentence(below.description) + "See\n" +
                    reference(below) + " .\n";
        return text + ".El\n";
    }
    for (const Command &below : command.subcommands)
        text += ".Ss " + spelled(below) + "\n" + sentence(below.description) +
                paragraphs(footerOf(below).description) + options(below);
    return text;
}

std::string examples(const Footer &footer) {
    std::string text = footer.examples.empty() ? "" : ".Sh EXAMPLES\n";
    for (const std::string &example : footer.examples)
        text += ".Dl " + asArgument(example) + "\n";
    return text;
}

std::string seeAlso(const Command &command) {
    std::vector<std::string> pages;
    if (command.path.size() > 1)
        pages.push_back(".Xr " + command.path[0] + " 1");
    else
        for (const Command &below : command.subcommands)
            pages.push_back(reference(below));
    std::sort(pages.begin(), pages.end());
    pages.emplace_back(".Xr libviscacam 3");
    std::string text = ".Sh SEE ALSO\n";
    for (size_t i = 0; i < pages.size(); ++i)
        text += pages[i] + (i + 1 < pages.size() ? " ,\n" : "\n");
    return text;
}

std::string heading(const Command &command) {
    std::string title = spelled(command, "-");
    std::string description = command.description;
    const std::string name = title;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](unsigned char c) { return std::toupper(c); });
    if (!description.empty() && description.back() == '.')
        description.pop_back();
    return ".Dd " + date() + "\n.Dt " + title + " 1\n.Os\n.Sh NAME\n.Nm " + name + "\n.Nd " +
           escaped(description) + "\n";
}

} // namespace

std::string manPage(const Command &command) {
    const Footer footer = footerOf(command);
    return heading(command) + ".Sh SYNOPSIS\n" + synopsis(command) + ".Sh DESCRIPTION\n" +
           sentence(command.description) + paragraphs(footer.description) + options(command) +
           subcommands(command) + ".Sh EXIT STATUS\n" + filled(footer.exitStatus) + examples(footer) +
           seeAlso(command);
}

} // namespace tool
