// The language of packet patterns (see Row::pattern): well-formedness, matching, overlap.
#ifndef VISCACAM_DECODE_PATTERN_H
#define VISCACAM_DECODE_PATTERN_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "decode/decode.h"

namespace decode {

constexpr bool IsFixedNibble(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}
constexpr bool IsLetter(char c) {
    return c >= 'a' && c <= 'z';
}
constexpr bool IsRun(char c) {
    return c == '+' || c == '*';
}

constexpr bool IsToken(char high, char low) {
    if (IsRun(high))
        return IsLetter(low) || low == '.';
    const bool high_good = IsFixedNibble(high) || IsLetter(high) || high == '.';
    const bool low_good = IsFixedNibble(low) || IsLetter(low) || low == '.';
    return high_good && low_good;
}

/// Two characters a byte, one blank between, a fixed first byte, at most one run.
constexpr bool IsWellFormed(const char *pattern) {
    if (!IsFixedNibble(pattern[0]) || !IsFixedNibble(pattern[1]))
        return false;
    unsigned runs = 0;
    for (;;) {
        if (pattern[0] == '\0' || pattern[1] == '\0' || !IsToken(pattern[0], pattern[1]))
            return false;
        runs += IsRun(pattern[0]) ? 1U : 0U;
        if (pattern[2] == '\0')
            return runs <= 1;
        if (pattern[2] != ' ')
            return false;
        pattern += 3;
    }
}

template <std::size_t N>
constexpr bool AreWellFormed(const Row (&rows)[N]) {
    for (const Row &row : rows)
        if (!IsWellFormed(row.pattern))
            return false;
    return true;
}

/// What a pattern's letters stand for in one packet.
class Captures {
  public:
    void AddNibble(char letter, std::uint8_t nibble);
    void SetRun(char letter, Bytes bytes);

    /// The number that `letters` spell, most significant nibble first; a letter that comes twice in a pattern
    /// is spelt twice. Nothing when a letter is not there.
    std::optional<std::uint32_t> Number(const char *letters, std::size_t count) const;
    /// The run with this letter, or null.
    const Bytes *Run(char letter) const;

  private:
    struct Nibble {
        char letter;
        std::uint8_t value;
    };
    const Nibble *Find(char letter, unsigned occurrence) const;

    std::vector<Nibble> nibbles_;
    char run_letter_ = '\0';
    Bytes run_;
};

/// Whether the bytes have the form of the pattern; when they do and `captures` is not null, it is filled.
bool Matches(const char *pattern, const std::uint8_t *bytes, std::size_t size, Captures *captures);

/// Of two patterns that fit the same bytes, the one with the higher number applies.
unsigned Precision(const char *pattern);

/// Whether some packet fits both patterns.
bool Overlap(const char *a, const char *b);

} // namespace decode

#endif
