#include "decode/utc.h"

#include <algorithm>
#include <cstdio>

#include "decode/text.h"

namespace decode {
namespace {

constexpr Microseconds kLast{253402300799999999}; // 9999-12-31T23:59:59.999999Z
constexpr std::int64_t kMicrosecondsADay = 86400000000;
constexpr std::size_t kSecondsEnd = 19; // of "2026-11-20T19:02:37"

bool IsLeap(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysIn(int year, int month) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[month - 1] + (month == 2 && IsLeap(year) ? 1 : 0);
}

// Leap days in the years before this one, counted from the year 1.
std::int64_t LeapDaysBefore(int year) {
    const int past = year - 1;
    return past / 4 - past / 100 + past / 400;
}

std::int64_t DaysBefore(int year) {
    return std::int64_t{365} * (year - 1970) + LeapDaysBefore(year) - LeapDaysBefore(1970);
}

// ".123" or nothing, then "Z".
std::optional<long> ParseFraction(const std::string &text) {
    if (text == "Z")
        return 0;
    if (text.size() < 3 || text.size() > 8 || text.front() != '.' || text.back() != 'Z')
        return std::nullopt;
    std::string digits = text.substr(1, text.size() - 2);
    digits.resize(WholeNumber(digits) ? 6 : 0, '0');
    const std::optional<long long> number = WholeNumber(digits);
    return number ? std::optional<long>(static_cast<long>(*number)) : std::nullopt;
}

} // namespace

std::optional<std::int64_t> DaysOf(int year, int month, int day) {
    if (year < 1970 || year > 9999 || month < 1 || month > 12 || day < 1 || day > DaysIn(year, month))
        return std::nullopt;
    std::int64_t days = DaysBefore(year) + day - 1;
    for (int past = 1; past < month; ++past)
        days += DaysIn(year, past);
    return days;
}

std::optional<Microseconds> TimeOf(int year, int month, int day, int hour, int minute, int second,
                                   long microsecond) {
    const std::optional<std::int64_t> days = DaysOf(year, month, day);
    if (!days || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60 ||
        microsecond < 0 || microsecond > 999999)
        return std::nullopt;
    const std::int64_t seconds = hour * 3600 + minute * 60 + second;
    return Microseconds(*days * kMicrosecondsADay + seconds * 1000000 + microsecond);
}

std::string UtcText(Microseconds since_1970) {
    const std::int64_t count = std::clamp(since_1970, Microseconds(0), kLast).count();
    std::int64_t days = count / kMicrosecondsADay;
    const std::int64_t rest = count % kMicrosecondsADay;
    int year = 1970 + static_cast<int>(days / 366);
    while (DaysBefore(year + 1) <= days)
        ++year;
    days -= DaysBefore(year);
    int month = 1;
    for (; days >= DaysIn(year, month); ++month)
        days -= DaysIn(year, month);
    const int second = static_cast<int>(rest / 1000000);
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", year, month,
                  static_cast<int>(days) + 1, second / 3600, second / 60 % 60, second % 60,
                  static_cast<int>(rest % 1000000));
    return text;
}

std::optional<Microseconds> ParseUtc(const std::string &text) {
    constexpr char kForm[] = "dddd-dd-ddTdd:dd:dd";
    if (text.size() <= kSecondsEnd)
        return std::nullopt;
    for (std::size_t i = 0; i < kSecondsEnd; ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == 'd' ? !digit : text[i] != kForm[i])
            return std::nullopt;
    }
    const auto number = [&](std::size_t at, std::size_t size) {
        return static_cast<int>(WholeNumber(text.substr(at, size)).value_or(0));
    };
    const std::optional<long> fraction = ParseFraction(text.substr(kSecondsEnd));
    if (!fraction)
        return std::nullopt;
    return TimeOf(number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2), number(17, 2),
                  *fraction);
}

} // namespace decode
