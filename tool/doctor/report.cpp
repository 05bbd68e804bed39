#include "tool/doctor/report.h"

#include <algorithm>

#include "tool/console.h"

namespace tool::doctor {

namespace {

constexpr size_t CHECK_WIDTH = 13;
constexpr size_t VERDICT_WIDTH = 6;
constexpr size_t LINE_WIDTH = 100;

Style styleOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::good:
        return Style::good;
    case Verdict::note:
        return Style::warning;
    case Verdict::bad:
        return Style::bad;
    }
    return Style::plain;
}

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// Device and process names are others' words.
std::string printable(std::string text) {
    for (char &c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
            c = '?';
    }
    return text;
}

// Broken at blanks, further lines indented.
std::string wrapped(const std::string &text, size_t indent) {
    std::string result;
    size_t column = indent;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(' ', at), text.size());
        if (column > indent && column + 1 + (end - at) > LINE_WIDTH) {
            result += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            result += ' ';
            ++column;
        }
        result += text.substr(at, end - at);
        column += end - at;
        at = end + 1;
    }
    return result;
}

} // namespace

const char *nameOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::good:
        return "ok";
    case Verdict::note:
        return "note";
    case Verdict::bad:
        return "bad";
    }
    return "?";
}

void Report::add(const std::string &check, Verdict verdict, const std::string &text) {
    m_findings.push_back({check, verdict, printable(text)});
    m_onFinding(m_findings.back());
}

void Report::advise(Topic topic, const std::string &text) {
    m_advice.push_back({topic, printable(text)});
}

bool Report::healthy() const {
    return std::none_of(m_findings.begin(), m_findings.end(),
                        [](const Finding &finding) { return finding.verdict == Verdict::bad; });
}

std::vector<std::string> Report::advice() const {
    std::vector<Advice> sorted = m_advice;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Advice &one, const Advice &other) { return one.topic < other.topic; });
    std::vector<std::string> texts;
    for (const Advice &advice : sorted)
        texts.push_back(advice.text);
    if (texts.empty() && rate)
        texts.push_back("Nothing: the camera answers at " + std::to_string(*rate) + " bit/s.");
    return texts;
}

std::string Report::asLine(const Finding &finding, bool colours) {
    return padded(finding.check, CHECK_WIDTH) +
           styled(padded(nameOf(finding.verdict), VERDICT_WIDTH), styleOf(finding.verdict), colours) +
           wrapped(finding.text, CHECK_WIDTH + VERDICT_WIDTH) + "\n";
}

std::string Report::closing(bool colours) const {
    std::string text = "\n" + styled("What to do:", Style::heading, colours) + "\n";
    const std::vector<std::string> all = advice();
    for (size_t i = 0; i < all.size(); ++i) {
        const std::string number = "  " + std::to_string(i + 1) + ". ";
        text += number + wrapped(all[i], number.size()) + "\n";
    }
    return text;
}

} // namespace tool::doctor
