#include "tests/docs/log_texts.h"

#include <cctype>

#include "tests/docs/page.h"

namespace docs {
namespace {

/// The literal that begins at `at`, a '"', as it is written but with the newlines resolved; `at` ends up
/// behind it.
std::string TakeLiteral(const std::string &source, std::size_t &at) {
    std::string text;
    for (++at; at < source.size() && source[at] != '"'; ++at) {
        if (source[at] == '\\')
            ++at;
        const bool newline = source[at] == 'n' && source[at - 1] == '\\';
        text += newline ? '\n' : source[at];
    }
    ++at;
    return text;
}

void SkipBlanks(const std::string &source, std::size_t &at) {
    while (at < source.size() && std::isspace(static_cast<unsigned char>(source[at])) != 0)
        ++at;
}

/// The format of the call whose '(' stands at `at`: the first literal in it, with those that adjoin.
std::string FormatAt(const std::string &source, std::size_t at) {
    int depth = 0;
    for (; at < source.size() && source[at] != '"'; ++at) {
        depth += source[at] == '(' ? 1 : source[at] == ')' ? -1 : 0;
        if (depth == 0)
            return "(no literal)";
    }
    std::string text;
    while (at < source.size() && source[at] == '"') {
        text += TakeLiteral(source, at);
        SkipBlanks(source, at);
    }
    return Trimmed(text);
}

bool IsDefinition(const std::string &source, std::size_t at) {
    const std::size_t begin = source.rfind('\n', at) + 1;
    return source.compare(begin, 8, "#define ") == 0;
}

bool IsWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

void Collect(const std::string &source, const std::string &level, std::set<LogText> &texts) {
    const std::string macro = "LOG_" + level;
    for (std::size_t at = source.find(macro); at != std::string::npos; at = source.find(macro, at + 1)) {
        if ((at > 0 && IsWord(source[at - 1])) || IsDefinition(source, at))
            continue;
        std::size_t end = at + macro.size();
        while (end < source.size() && IsWord(source[end]))
            ++end; // LOG_ERROR_AS, LOG_WARN_AT
        if (end < source.size() && source[end] == '(')
            texts.emplace(level, FormatAt(source, end));
    }
}

} // namespace

std::set<LogText> LogTextsIn(const std::string &source) {
    std::set<LogText> texts;
    Collect(source, "ERROR", texts);
    Collect(source, "WARN", texts);
    return texts;
}

} // namespace docs
