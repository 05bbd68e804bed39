#include "decode/text.h"

namespace decode {
namespace {

constexpr char kBlanks[] = " \t";
constexpr std::size_t kMostDigits = 18;

} // namespace

std::string WithoutEnd(std::string text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    text.erase(last == std::string::npos ? 0 : last + 1);
    return text;
}

std::vector<std::string> WordsOf(const std::string &text) {
    std::vector<std::string> words;
    std::size_t at = 0;
    while ((at = text.find_first_not_of(kBlanks, at)) != std::string::npos) {
        const std::size_t end = text.find_first_of(kBlanks, at);
        words.push_back(text.substr(at, end == std::string::npos ? end : end - at));
        at = end;
    }
    return words;
}

std::optional<long long> WholeNumber(const std::string &text) {
    if (text.empty() || text.size() > kMostDigits)
        return std::nullopt;
    long long number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        number = number * 10 + (c - '0');
    }
    return number;
}

bool HasForm(const std::string &text, std::size_t at, const std::string &form) {
    if (text.size() - at < form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const char c = text[at + i];
        if (form[i] == 'd' ? c < '0' || c > '9' : c != form[i])
            return false;
    }
    return true;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool AppendHex(const std::string &digits, Bytes &bytes) {
    if (digits.empty() || digits.size() % 2 != 0)
        return false;
    for (const char c : digits)
        if (HexDigit(c) < 0)
            return false;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(HexDigit(digits[i]) * 16 + HexDigit(digits[i + 1])));
    return true;
}

std::string Printable(std::string text) {
    for (char &c : text)
        if (c < ' ' || c > '~')
            c = '?';
    return text;
}

} // namespace decode
