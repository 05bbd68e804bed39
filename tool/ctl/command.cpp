#include "tool/ctl/command.h"

#include <algorithm>

namespace tool::ctl {

namespace {

Argument fixed(const std::string &name, Argument::Place place, const Domain &domain) {
    return {name, place, [domain](uint32_t) { return domain; }};
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return c == '-' ? '-' : static_cast<char>(std::toupper(c)); });
    return text;
}

// A short list of values stands for the argument's name.
std::string shownValue(const Argument &argument, uint32_t moduleType) {
    constexpr size_t SHORT = 36;
    const Words words = argument.domain(moduleType).completions();
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : "|") + word;
    return text.empty() || text.size() > SHORT ? upper(argument.name) : text;
}

std::string shown(const Argument &argument, uint32_t moduleType) {
    switch (argument.place) {
    case Argument::Place::needed:
        return shownValue(argument, moduleType);
    case Argument::Place::optional:
        return "[" + shownValue(argument, moduleType) + "]";
    case Argument::Place::list:
        return upper(argument.name) + "...";
    case Argument::Place::keyed:
        return argument.together ? argument.name + "=" + shownValue(argument, moduleType)
                                 : "[" + argument.name + "=" + shownValue(argument, moduleType) + "]";
    case Argument::Place::flag:
        return "[--" + argument.name + "]";
    }
    return "";
}

} // namespace

Argument needed(const std::string &name, const Domain &domain) {
    return fixed(name, Argument::Place::needed, domain);
}
Argument needed(const std::string &name, DomainOf domain) {
    return {name, Argument::Place::needed, domain};
}
Argument optional(const std::string &name, const Domain &domain) {
    return fixed(name, Argument::Place::optional, domain);
}
Argument optional(const std::string &name, DomainOf domain) {
    return {name, Argument::Place::optional, domain};
}
Argument list(const std::string &name, DomainOf domain) {
    return {name, Argument::Place::list, domain};
}
Argument list(const std::string &name, const Domain &domain) {
    return fixed(name, Argument::Place::list, domain);
}
Argument keyed(const std::string &name, const Domain &domain) {
    return fixed(name, Argument::Place::keyed, domain);
}
Argument keyed(const std::string &name, DomainOf domain) {
    return {name, Argument::Place::keyed, domain};
}
Argument together(const std::string &name, const Domain &domain) {
    Argument argument = keyed(name, domain);
    argument.together = true;
    return argument;
}
Argument flag(const std::string &name) {
    return fixed(name, Argument::Place::flag, Domain::text(""));
}

int64_t Arguments::number(const std::string &name, int64_t otherwise) const {
    const auto found = m_values.find(name);
    return found == m_values.end() ? otherwise : found->second.number;
}

uint32_t Arguments::word(const std::string &name, uint32_t otherwise) const {
    return static_cast<uint32_t>(number(name, otherwise));
}

std::string Arguments::text(const std::string &name) const {
    const auto found = m_values.find(name);
    return found == m_values.end() ? "" : found->second.text;
}

std::string Row::usage(uint32_t moduleType, bool brief) const {
    constexpr long FEW = 2;
    const long keys = std::count_if(arguments.begin(), arguments.end(), [](const Argument &argument) {
        return argument.place == Argument::Place::keyed;
    });
    std::string text = words;
    for (const Argument &argument : arguments)
        if (!brief || keys <= FEW || argument.place != Argument::Place::keyed)
            text += " " + shown(argument, moduleType);
    return text + (brief && keys > FEW ? " NAME=VALUE..." : "");
}

} // namespace tool::ctl
