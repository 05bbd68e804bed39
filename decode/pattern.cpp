#include "decode/pattern.h"

#include <cstring>
#include <utility>

namespace decode {
namespace {

constexpr std::size_t kTokenStep = 3; // two characters and a blank

std::size_t TokenCount(const char *pattern) {
    return (std::strlen(pattern) + 1) / kTokenStep;
}

std::optional<std::size_t> RunIndex(const char *pattern) {
    for (std::size_t i = 0; pattern[i] != '\0'; ++i)
        if (IsRun(pattern[i]))
            return i / kTokenStep;
    return std::nullopt;
}

/// How many bytes the run takes in a packet of `size` bytes; nothing when the packet has the wrong length.
std::optional<std::size_t> RunLength(const char *pattern, std::size_t size) {
    const std::size_t tokens = TokenCount(pattern);
    const std::optional<std::size_t> run = RunIndex(pattern);
    if (!run)
        return size == tokens ? std::optional<std::size_t>(0) : std::nullopt;
    const std::size_t least = pattern[*run * kTokenStep] == '+' ? 1 : 0;
    if (size + 1 < tokens + least)
        return std::nullopt;
    return size + 1 - tokens;
}

std::uint8_t FixedValue(char c) {
    return static_cast<std::uint8_t>(c <= '9' ? c - '0' : c - 'A' + 10);
}

bool TakeNibble(char token, unsigned value, Captures *captures) {
    if (IsFixedNibble(token))
        return FixedValue(token) == value;
    if (captures != nullptr && IsLetter(token))
        captures->AddNibble(token, static_cast<std::uint8_t>(value));
    return true;
}

bool FixedNibblesAgree(char a, char b) {
    return !IsFixedNibble(a) || !IsFixedNibble(b) || a == b;
}

/// The pattern's token for each byte of a packet of `size` bytes; ".." inside a run.
std::optional<std::vector<std::pair<char, char>>> Expand(const char *pattern, std::size_t size) {
    const std::optional<std::size_t> run_length = RunLength(pattern, size);
    if (!run_length)
        return std::nullopt;
    std::vector<std::pair<char, char>> tokens;
    for (std::size_t i = 0; i < TokenCount(pattern); ++i) {
        const char *token = pattern + i * kTokenStep;
        if (IsRun(token[0]))
            tokens.insert(tokens.end(), *run_length, {'.', '.'});
        else
            tokens.emplace_back(token[0], token[1]);
    }
    return tokens;
}

bool OverlapAt(const char *a, const char *b, std::size_t size) {
    const auto tokens_a = Expand(a, size);
    const auto tokens_b = Expand(b, size);
    if (!tokens_a || !tokens_b)
        return false;
    for (std::size_t i = 0; i < size; ++i)
        if (!FixedNibblesAgree((*tokens_a)[i].first, (*tokens_b)[i].first) ||
            !FixedNibblesAgree((*tokens_a)[i].second, (*tokens_b)[i].second))
            return false;
    return true;
}

} // namespace

void Captures::AddNibble(char letter, std::uint8_t nibble) {
    nibbles_.push_back({letter, nibble});
}

void Captures::SetRun(char letter, Bytes bytes) {
    run_letter_ = letter;
    run_ = std::move(bytes);
}

const Captures::Nibble *Captures::Find(char letter, unsigned occurrence) const {
    for (const Nibble &nibble : nibbles_)
        if (nibble.letter == letter && occurrence-- == 0)
            return &nibble;
    return nullptr;
}

std::optional<std::uint32_t> Captures::Number(const char *letters, std::size_t count) const {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        unsigned occurrence = 0;
        for (std::size_t j = 0; j < i; ++j)
            occurrence += letters[j] == letters[i] ? 1U : 0U;
        const Nibble *nibble = Find(letters[i], occurrence);
        if (nibble == nullptr)
            return std::nullopt;
        number = number << 4 | nibble->value;
    }
    return number;
}

const Bytes *Captures::Run(char letter) const {
    return run_letter_ == letter ? &run_ : nullptr;
}

bool Matches(const char *pattern, const std::uint8_t *bytes, std::size_t size, Captures *captures) {
    const std::optional<std::size_t> run_length = RunLength(pattern, size);
    if (!run_length)
        return false;
    std::size_t at = 0;
    const std::size_t tokens = TokenCount(pattern);
    for (std::size_t i = 0; i < tokens; ++i) {
        const char *token = pattern + i * kTokenStep;
        if (IsRun(token[0])) {
            if (captures != nullptr)
                captures->SetRun(token[1], Bytes(bytes + at, bytes + at + *run_length));
            at += *run_length;
            continue;
        }
        if (!TakeNibble(token[0], bytes[at] >> 4, captures) ||
            !TakeNibble(token[1], bytes[at] & 0x0FU, captures))
            return false;
        ++at;
    }
    return true;
}

unsigned Precision(const char *pattern) {
    unsigned fixed = 0;
    for (const char *c = pattern; *c != '\0'; ++c)
        fixed += IsFixedNibble(*c) ? 1U : 0U;
    return fixed * 2 + (RunIndex(pattern) ? 0U : 1U);
}

bool Overlap(const char *a, const char *b) {
    const std::size_t longest = TokenCount(a) + TokenCount(b) + 1;
    for (std::size_t size = 1; size <= longest; ++size)
        if (OverlapAt(a, b, size))
            return true;
    return false;
}

} // namespace decode
