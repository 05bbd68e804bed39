// Puts the values of a packet into the words of its row: "zoom tele, speed {p}" becomes "zoom tele, speed 6".
#ifndef VISCACAM_DECODE_WORDS_H
#define VISCACAM_DECODE_WORDS_H

#include <string>

#include "decode/decode.h"
#include "decode/pattern.h"

namespace decode {

/// Where the values of a row's words come from.
struct Values {
    const Captures *packet = nullptr;
    const Captures *question = nullptr; // of an answer: the inquiry's letters; else null
    std::string segment;                // what "{segment}" stands for
};

/// The words with every "{letters:format}" replaced.
std::string FillIn(const char *words, const Values &values);

/// One "{letters:format}" of a row's words.
struct Placeholder {
    std::string letters;
    std::string format;
};
std::vector<Placeholder> PlaceholdersOf(const char *words);

/// Whether a format of this name exists ("" is decimal).
bool IsFormat(const std::string &format);

/// "04 7F"; "(no data)" when empty.
std::string HexText(const std::uint8_t *bytes, std::size_t size);

/// The version that digits of the segmented form spell: 0 to 9 a digit, 10 and two digits a letter, 11 and
/// one a separator.
std::string VersionFromDigits(const Bytes &digits);

} // namespace decode

#endif
