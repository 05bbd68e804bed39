#include "tool/ctl/values.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tool::ctl {

namespace {

using std::chrono::milliseconds;

constexpr int64_t CLOSED = 99999;

bool parseWhole(const std::string &text, int64_t &number) {
    const bool negative = !text.empty() && text[0] == '-';
    const std::string digits = text.substr(negative || (!text.empty() && text[0] == '+') ? 1 : 0);
    const bool hex = digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    const std::string known = hex ? "0123456789abcdefABCDEF" : "0123456789";
    const std::string body = hex ? digits.substr(2) : digits;
    if (body.empty() || body.size() > 15 || body.find_first_not_of(known) != std::string::npos)
        return false;
    number = std::strtoll(body.c_str(), nullptr, hex ? 16 : 10) * (negative ? -1 : 1);
    return true;
}

// A plain decimal number without sign or exponent.
bool parseDecimal(const std::string &text, double &number) {
    if (text.empty() || text.size() > 12 || text.find_first_not_of("0123456789.") != std::string::npos ||
        std::count(text.begin(), text.end(), '.') > 1 || text == ".")
        return false;
    number = std::strtod(text.c_str(), nullptr);
    return true;
}

bool parseTime(const std::string &text, int64_t &milli) {
    const size_t unitAt = text.find_first_not_of("0123456789.");
    if (unitAt == std::string::npos)
        return false;
    const std::string unit = text.substr(unitAt);
    const double scale = unit == "ms" ? 1 : unit == "s" ? 1000 : unit == "m" ? 60000 : 0;
    double number = 0;
    if (scale == 0 || !parseDecimal(text.substr(0, unitAt), number))
        return false;
    milli = static_cast<int64_t>(number * scale + 0.5);
    return true;
}

bool parseAperture(const std::string &text, int64_t &hundredths) {
    if (text == "closed") {
        hundredths = CLOSED;
        return true;
    }
    double number = 0;
    const bool marked = !text.empty() && (text[0] == 'F' || text[0] == 'f');
    if (!parseDecimal(text.substr(marked ? 1 : 0), number))
        return false;
    hundredths = static_cast<int64_t>(number * 100 + 0.5);
    return true;
}

bool parseByte(const std::string &text, int64_t &number) {
    const bool marked = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const std::string digits = text.substr(marked ? 2 : 0);
    if (digits.empty() || digits.size() > 2 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    number = std::strtol(digits.c_str(), nullptr, 16);
    return true;
}

std::string apertureText(int64_t hundredths) {
    if (hundredths == CLOSED)
        return "closed";
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(hundredths) / 100);
    return text;
}

Words textsOf(const std::vector<int64_t> &numbers, std::string (*shown)(int64_t)) {
    Words words;
    for (const int64_t number : numbers)
        words.push_back(shown(number));
    return words;
}

std::string decimal(int64_t number) {
    return std::to_string(number);
}

} // namespace

std::string inHex(uint64_t number, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*llX", digits, static_cast<unsigned long long>(number));
    return text;
}

std::string shownTime(milliseconds time) {
    if (time.count() % 1000 != 0)
        return decimal(time.count()) + "ms";
    return decimal(time.count() / 1000) + "s";
}

bool parseNorm(const std::string &text, Norm &norm) {
    int used = 0;
    Norm found;
    if (std::sscanf(text.c_str(), "%5ux%5u@%3u%n", &found.width, &found.height, &found.rate, &used) != 3 ||
        static_cast<size_t>(used) != text.size() || text.find_first_of("+- ") != std::string::npos)
        return false;
    norm = found;
    return true;
}

Domain Domain::number(int64_t least, int64_t most, const std::string &unit) {
    Domain domain(Sort::number);
    domain.m_least = least;
    domain.m_most = most;
    domain.m_what = unit;
    return domain;
}

Domain Domain::hex(int64_t least, int64_t most) {
    Domain domain = number(least, most);
    domain.m_hex = true;
    return domain;
}

Domain Domain::steps(const std::vector<int64_t> &steps, const std::string &unit) {
    Domain domain(Sort::steps);
    domain.m_steps = steps;
    domain.m_what = unit;
    return domain;
}

Domain Domain::choice(const std::vector<Choice> &choices) {
    Domain domain(Sort::choice);
    domain.m_choices = choices;
    return domain;
}

Domain Domain::onOff() {
    return choice({{"on", 1}, {"off", 0}});
}

Domain Domain::time(milliseconds least, milliseconds most) {
    Domain domain(Sort::time);
    domain.m_least = least.count();
    domain.m_most = most.count();
    return domain;
}

Domain Domain::aperture(const std::vector<int64_t> &hundredths) {
    Domain domain(Sort::aperture);
    domain.m_steps = hundredths;
    return domain;
}

Domain Domain::norm(const std::vector<int64_t> &rates, const Words &sizes, const Words &usual) {
    Domain domain(Sort::norm);
    domain.m_steps = rates;
    domain.m_sizes = sizes;
    domain.m_words = usual;
    return domain;
}

Domain Domain::byte() {
    return Domain(Sort::byte);
}

Domain Domain::text(const std::string &what, const Words &usual) {
    Domain domain(Sort::text);
    domain.m_words = usual;
    domain.m_what = what;
    return domain;
}

Domain Domain::file() {
    return Domain(Sort::file);
}

Domain Domain::without(const Words &names, const std::string &why) const {
    Domain domain = *this;
    domain.m_missing = names;
    domain.m_whyMissing = why;
    return domain;
}

bool Domain::isStep(int64_t number) const {
    return std::find(m_steps.begin(), m_steps.end(), number) != m_steps.end();
}

bool Domain::understandChoice(const std::string &text, int64_t &number) const {
    int64_t typed = 0;
    const bool isNumber = parseWhole(text, typed);
    for (const Choice &choice : m_choices) {
        if (choice.word == text || (isNumber && choice.value == typed)) {
            number = choice.value;
            return true;
        }
    }
    return false;
}

bool Domain::understandNorm(const std::string &text) const {
    Norm norm;
    if (!parseNorm(text, norm) || !isStep(norm.rate))
        return false;
    const std::string size = text.substr(0, text.find('@'));
    return m_sizes.empty() || std::find(m_sizes.begin(), m_sizes.end(), size) != m_sizes.end();
}

bool Domain::understand(const std::string &text, int64_t &number) const {
    switch (m_sort) {
    case Sort::number:
        return parseWhole(text, number) && number >= m_least && number <= m_most;
    case Sort::steps:
        return parseWhole(text, number) && isStep(number);
    case Sort::choice:
        return understandChoice(text, number);
    case Sort::time:
        return parseTime(text, number) && number >= m_least && number <= m_most;
    case Sort::aperture:
        return parseAperture(text, number) && isStep(number);
    case Sort::norm:
        return understandNorm(text);
    case Sort::byte:
        return parseByte(text, number);
    case Sort::text:
    case Sort::file:
        return !text.empty();
    }
    return false;
}

Value Domain::parse(const std::string &text) const {
    Value value = {text, 0};
    if (understand(text, value.number))
        return value;
    const bool missing = std::find(m_missing.begin(), m_missing.end(), text) != m_missing.end();
    throw UsageError("\"" + text + "\" is not allowed" + (missing ? ": " + m_whyMissing : "") + "; use " +
                     allowed());
}

std::string Domain::bound(int64_t number) const {
    return m_hex ? inHex(static_cast<uint64_t>(number), 0) : decimal(number);
}

std::string Domain::allowed() const {
    const std::string unit = m_what.empty() ? "" : " " + m_what;
    switch (m_sort) {
    case Sort::number:
        return bound(m_least) + " to " + bound(m_most) + unit;
    case Sort::time:
        return "a time from " + shownTime(milliseconds(m_least)) + " to " + shownTime(milliseconds(m_most)) +
               ", with ms, s or m";
    case Sort::norm:
        return (m_sizes.empty() ? "WIDTHxHEIGHT" : listed(m_sizes)) + "@RATE, RATE " +
               listed(textsOf(m_steps, decimal));
    case Sort::byte:
        return "a byte in hexadecimal, 00 to FF";
    case Sort::text:
        return m_what;
    case Sort::file:
        return "a file";
    default:
        return listed(completions()) + unit;
    }
}

Words Domain::completions() const {
    switch (m_sort) {
    case Sort::steps:
        return textsOf(m_steps, decimal);
    case Sort::aperture:
        return textsOf(m_steps, apertureText);
    case Sort::choice: {
        Words words;
        for (const Choice &choice : m_choices)
            words.push_back(choice.word);
        return words;
    }
    default:
        return m_words;
    }
}

} // namespace tool::ctl
