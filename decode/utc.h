// Calendar time as text: "2026-11-20T19:02:37.123456Z".
#ifndef VISCACAM_DECODE_UTC_H
#define VISCACAM_DECODE_UTC_H

#include <cstdint>
#include <optional>
#include <string>

#include "decode/decode.h"

namespace decode {

/// Days since 1970-01-01 of a date of the Gregorian calendar from 1970 to 9999; nothing when there is no such
/// date.
std::optional<std::int64_t> DaysOf(int year, int month, int day);

/// The text of a time since 1970-01-01 00:00 UTC, up to the year 9999. What lies outside is the nearest that
/// can be written.
std::string UtcText(Microseconds since_1970);

/// The reverse, for 0 to 6 digits behind the second's point; nothing for any other text.
std::optional<Microseconds> ParseUtc(const std::string &text);

/// A time of the day on a date; nothing when there is none such. Second 60 is the next minute's first.
std::optional<Microseconds> TimeOf(int year, int month, int day, int hour, int minute, int second,
                                   long microsecond);

} // namespace decode

#endif
