// Small things that readers of text need. Inside decode/ only.
#ifndef VISCACAM_DECODE_TEXT_H
#define VISCACAM_DECODE_TEXT_H

#include <optional>
#include <string>
#include <vector>

#include "decode/decode.h"

namespace decode {

/// The text without the blanks, tabs, CR and LF at its end.
std::string WithoutEnd(std::string text);

/// The text between blanks and tabs.
std::vector<std::string> WordsOf(const std::string &text);

/// A number of 1 to 18 decimal digits; nothing for any other text.
std::optional<long long> WholeNumber(const std::string &text);

/// Whether the text has this form at a place not behind its end: a digit where the form has d, else what the
/// form has.
bool HasForm(const std::string &text, std::size_t at, const std::string &form);

/// The value of a hex digit, -1 for any other character.
int HexDigit(char c);

/// Appends the bytes of an even number of hex digits. False when `digits` is anything else, or empty; `bytes`
/// is then as it was.
bool AppendHex(const std::string &digits, Bytes &bytes);

/// The text with '?' for each byte that is no printing ASCII character.
std::string Printable(std::string text);

} // namespace decode

#endif
