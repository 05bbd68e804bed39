#include "decode/table.h"

#include <cstring>

#include "decode/pattern.h"
#include "decode/words.h"

namespace decode {
namespace {

/// The subject that holds the row, or null.
const Subject *SubjectOf(const Row &row) {
    for (const Subject &subject : Table())
        for (std::size_t i = 0; i < subject.count; ++i)
            if (&subject.rows[i] == &row)
                return &subject;
    return nullptr;
}

bool NeedsInquiry(const Row &row) {
    return row.kind == Kind::Answer && !row.fallback;
}

bool Applies(const Row &row, Direction direction, const std::uint8_t *bytes, std::size_t size) {
    return row.direction == direction && !NeedsInquiry(row) && Matches(row.pattern, bytes, size, nullptr);
}

std::vector<std::string> Split(const char *text, const char *separator) {
    std::vector<std::string> parts;
    while (const char *end = std::strstr(text, separator)) {
        parts.emplace_back(text, end);
        text = end + std::strlen(separator);
    }
    if (*text != '\0')
        parts.emplace_back(text);
    return parts;
}

std::string FormatOf(const Row &row, const std::string &letters) {
    for (const Placeholder &placeholder : PlaceholdersOf(row.words))
        if (placeholder.letters == letters)
            return placeholder.format;
    return "";
}

} // namespace

const std::vector<Subject> &Table() {
    static const std::vector<Subject> table = {kPowerSubject,   kLensSubject, kExposureSubject,
                                               kPictureSubject, kKovaSubject, kLinkSubject};
    return table;
}

std::vector<const Row *> AnswersOf(const Row &row) {
    std::vector<const Row *> answers;
    const Subject *subject = SubjectOf(row);
    if (subject == nullptr || (row.kind != Kind::Inquiry && row.kind != Kind::Control))
        return answers;
    const Row *end = subject->rows + subject->count;
    for (const Row *next = &row + 1; next != end && NeedsInquiry(*next); ++next)
        answers.push_back(next);
    return answers;
}

std::vector<Parameter> ParametersOf(const Row &row) {
    std::vector<Parameter> parameters;
    for (const std::string &part : Split(row.parameters, "; ")) {
        const std::size_t colon = part.find(": ");
        if (colon == std::string::npos)
            continue;
        const std::string letters = part.substr(0, colon);
        parameters.push_back({letters, FormatOf(row, letters), part.substr(colon + 2)});
    }
    return parameters;
}

bool IsMorePrecise(const Row &a, const Row &b) {
    return Precision(a.pattern) > Precision(b.pattern);
}

const Row *FindRow(Direction direction, const std::uint8_t *bytes, std::size_t size) {
    const Row *best = nullptr;
    for (const Subject &subject : Table())
        for (std::size_t i = 0; i < subject.count; ++i) {
            const Row &row = subject.rows[i];
            if (Applies(row, direction, bytes, size) && (best == nullptr || IsMorePrecise(row, *best)))
                best = &row;
        }
    return best;
}

const char *NameOf(Kind kind) {
    constexpr const char *kNames[] = {"command",         "inquiry",    "control", "answer",
                                      "acknowledgement", "completion", "error",   "report",
                                      "notice",          "debug",      "other",   "noise"};
    return kNames[static_cast<std::size_t>(kind)];
}

const char *NameOf(Family family) {
    constexpr const char *kNames[] = {"both", "sony", "kova"};
    return kNames[static_cast<std::size_t>(family)];
}

const char *NameOf(Direction direction) {
    return direction == Direction::ToCamera ? "to-camera" : "from-camera";
}

} // namespace decode
