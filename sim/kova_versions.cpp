#include "sim/kova.h"

#include "sim/block.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace sim {

namespace {

constexpr size_t ENTRIES_PER_SEGMENT = 12; // an answer has at most 16 bytes
constexpr uint8_t LETTER = 10;
constexpr uint8_t SEPARATOR = 11;
constexpr uint8_t ABILITY_NIBBLES = 8;
constexpr size_t LONGEST_VERSION = 99;
constexpr int TEMPERATURE_ZERO = 127;            // the raw value of 0 degrees
constexpr std::chrono::seconds SERIES_MEMORY{8}; // hosts wait 6 s for an answer

void appendCoded(Bytes &entries, char character) {
    if (std::isdigit(static_cast<unsigned char>(character))) {
        entries.push_back(static_cast<uint8_t>(character - '0'));
    } else if (character == '-' || character == '_') {
        entries.insert(entries.end(), {SEPARATOR, static_cast<uint8_t>(character == '_')});
    } else {
        const auto distance = static_cast<uint8_t>(character - 'A');
        entries.insert(entries.end(),
                       {LETTER, static_cast<uint8_t>(distance / 10), static_cast<uint8_t>(distance % 10)});
    }
}

Outcome tellAbility(Block &block, const Args &) {
    Outcome outcome = answerNibbles(block.kova().ability(), ABILITY_NIBBLES);
    outcome.data.insert(outcome.data.begin(), ABILITY_NIBBLES);
    return outcome;
}

Outcome tellUimage(Block &block, const Args &) {
    const auto &version = block.kova().uimageVersion;
    return answer(Bytes(version.begin(), version.end()));
}

Outcome tellProgram(Block &block, const Args &) {
    Kova &kova = block.kova();
    if (kova.has(ABILITY_SEGMENTED_VERSION))
        return kova.program.tell(block.now(), block.real(SERIES_MEMORY));
    const auto &version = kova.oldProgramVersion;
    return answer(Bytes(version.begin(), version.end()));
}

Outcome tellExtension(Block &block, const Args &) {
    Kova &kova = block.kova();
    if (!kova.has(ABILITY_EXTENSION_VERSION))
        return refused(SYNTAX_ERROR);
    return kova.extension.tell(block.now(), block.real(SERIES_MEMORY));
}

Outcome tellSoftVersion(Block &block, const Args &) {
    const std::string &text = block.kova().options.softVersion;
    return answer(Bytes(text.begin(), text.end()));
}

Outcome tellBoard(Block &block, const Args &args) {
    const auto &boards = block.kova().options.boards;
    const size_t board = args.nibble(0);
    if (board >= boards.size())
        return refused(SYNTAX_ERROR);
    return answer({boards[board].version, boards[board].type});
}

Outcome tellTemperature(Block &block, const Args &) {
    return answerNibbles(static_cast<unsigned>(block.kova().options.temperature + TEMPERATURE_ZERO), 4);
}

using Digits = std::array<uint8_t, 4>;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// '#' in the shape stands for any digit.
bool hasShape(const std::string &text, const std::string &shape) {
    return text.size() == shape.size() &&
           std::equal(text.begin(), text.end(), shape.begin(),
                      [](char c, char wanted) { return wanted == '#' ? isDigit(c) : c == wanted; });
}

// 0 behind the text.
uint8_t digit(const std::string &text, size_t at) {
    return at < text.size() ? static_cast<uint8_t>(text[at] - '0') : 0;
}

uint8_t twoDigits(const std::string &text, size_t at) {
    return static_cast<uint8_t>(10 * digit(text, at) + digit(text, at + 1));
}

std::optional<Digits> uimageFrom(const std::string &text) {
    const size_t dot = text.find('.');
    if (!hasShape(text, "#.#") && !hasShape(text, "##.#") && !hasShape(text, "#.##") &&
        !hasShape(text, "##.##"))
        return std::nullopt;
    return Digits{dot == 2 ? digit(text, 0) : uint8_t{0}, digit(text, dot - 1), digit(text, dot + 1),
                  digit(text, dot + 2)};
}

std::optional<Digits> oldProgramFrom(const std::string &text) {
    if (hasShape(text, "D0##"))
        return Digits{0, twoDigits(text, 2), 0, 0};
    if (hasShape(text, "D0##SP##"))
        return Digits{0, twoDigits(text, 2), 0, twoDigits(text, 6)};
    if (!hasShape(text, "########") || twoDigits(text, 0) == 0)
        return std::nullopt;
    return Digits{twoDigits(text, 0), twoDigits(text, 2), twoDigits(text, 4), twoDigits(text, 6)};
}

} // namespace

bool isVersionText(const std::string &text) {
    return text.size() <= LONGEST_VERSION && std::all_of(text.begin(), text.end(), [](char c) {
               return isDigit(c) || c == '-' || (c >= 'A' && c <= '~');
           });
}

bool Kova::canRun(const std::string &kind, const std::string &version) const {
    if (kind == "uimage")
        return uimageFrom(version).has_value();
    return has(ABILITY_SEGMENTED_VERSION) ? isVersionText(version) : oldProgramFrom(version).has_value();
}

void Kova::run(const std::string &kind, const std::string &version) {
    if (kind == "uimage")
        uimageVersion = uimageFrom(version).value();
    else if (has(ABILITY_SEGMENTED_VERSION))
        program = Segments(version);
    else
        oldProgramVersion = oldProgramFrom(version).value();
}

Segments::Segments(const std::string &text) {
    Bytes entries;
    for (char character : text)
        appendCoded(entries, character);
    for (size_t at = 0; at < entries.size(); at += ENTRIES_PER_SEGMENT) {
        const size_t end = std::min(at + ENTRIES_PER_SEGMENT, entries.size());
        m_segments.emplace_back(entries.begin() + static_cast<std::ptrdiff_t>(at),
                                entries.begin() + static_cast<std::ptrdiff_t>(end));
    }
}

Outcome Segments::tell(Clock::time_point now, Clock::duration memory) {
    if (m_told > m_segments.size() || now - m_last > memory)
        restart();
    m_last = now;
    ++m_told;
    if (m_told == 1)
        return answerNibbles(static_cast<unsigned>(m_segments.size()), 4);
    return answer(m_segments[m_told - 2]);
}

std::vector<Row> kovaVersionRows() {
    return {
        {"09 04 AB", tellAbility},
        {"09 04 B1", tellUimage, Standby::refuses, KOVA_HEADER},
        {"09 04 B2", tellProgram, Standby::refuses, KOVA_HEADER},
        {"09 04 B5", tellExtension, Standby::refuses, KOVA_HEADER},
        {"09 04 B4 03", tellSoftVersion},
        {"09 04 B4 0p", tellBoard},
        {"09 04 68", tellTemperature},
    };
}

} // namespace sim
