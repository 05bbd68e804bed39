// The parts of the table, and how its rows are written.
#ifndef VISCACAM_DECODE_TABLE_H
#define VISCACAM_DECODE_TABLE_H

#include "decode/decode.h"

namespace decode {

constexpr Row ToCamera(Kind kind, Family family, const char *pattern, const char *name, const char *words,
                       const char *parameters) {
    return {kind,       family,      Direction::ToCamera,
            pattern,    name,        words == nullptr ? name : words,
            parameters, Form::Plain, false};
}

constexpr Row FromCamera(Kind kind, Family family, const char *pattern, const char *name, const char *words,
                         const char *parameters) {
    return {kind,       family,      Direction::FromCamera,
            pattern,    name,        words == nullptr ? name : words,
            parameters, Form::Plain, false};
}

constexpr Row Command(Family family, const char *pattern, const char *name, const char *words = nullptr,
                      const char *parameters = "") {
    return ToCamera(Kind::Command, family, pattern, name, words, parameters);
}

constexpr Row Inquiry(Family family, const char *pattern, const char *name, const char *words = nullptr,
                      const char *parameters = "") {
    return ToCamera(Kind::Inquiry, family, pattern, name, words, parameters);
}

constexpr Row Answer(Family family, const char *pattern, const char *name, const char *words = nullptr,
                     const char *parameters = "") {
    return FromCamera(Kind::Answer, family, pattern, name, words, parameters);
}

constexpr Row Answer(Form form, Family family, const char *pattern, const char *name, const char *words,
                     const char *parameters) {
    Row row = FromCamera(Kind::Answer, family, pattern, name, words, parameters);
    row.form = form;
    return row;
}

constexpr Row Fallback(Row row) {
    row.fallback = true;
    return row;
}

extern const Subject kPowerSubject;    // power, reset, registers, identity, orientation
extern const Subject kLensSubject;     // zoom and focus
extern const Subject kExposureSubject; // exposure, gain, wide dynamic range
extern const Subject kPictureSubject;  // white balance, picture, day and night
extern const Subject kKovaSubject;     // what only Kova modules know
extern const Subject kLinkSubject;     // control of the link, replies, and what has no row of its own

/// The row that applies to a packet by itself; null when none does. Answers that need their inquiry are left
/// out.
const Row *FindRow(Direction direction, const std::uint8_t *bytes, std::size_t size);

/// Whether `a` applies rather than `b` where both fit.
bool IsMorePrecise(const Row &a, const Row &b);

} // namespace decode

#endif
