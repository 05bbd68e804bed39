#include "decode/words.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "decode/names.h"

namespace decode {
namespace {

[[gnu::format(printf, 1, 2)]] std::string Print(const char *format, ...) {
    char text[96];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

std::string Hex(std::uint32_t value, std::size_t nibbles) {
    const int width = nibbles < 2 ? 2 : static_cast<int>(nibbles);
    return Print("0x%0*X", width, static_cast<unsigned>(value));
}

std::string Decimal(std::uint32_t value, std::size_t) {
    return std::to_string(value);
}

std::string Signed16(std::uint32_t value, std::size_t) {
    return std::to_string(value < 0x8000 ? static_cast<long>(value) : static_cast<long>(value) - 0x10000);
}

// "" for socket 0, which stands for no socket.
std::string Socket(std::uint32_t value, std::size_t) {
    return value == 0 ? "" : Print(", socket %u", value);
}

std::string Moving(std::uint32_t value, std::size_t) {
    return value == 0 ? "stopped" : "moving";
}

// 0x00 is -127 degrees, 0x92 is 19.
std::string Celsius(std::uint32_t value, std::size_t) {
    return std::to_string(static_cast<long>(value) - 127) + " C";
}

// 0x07 is neutral, 0x09 two steps up.
std::string Compensation(std::uint32_t value, std::size_t) {
    return Print("0x%02X (%+ld)", static_cast<unsigned>(value), static_cast<long>(value) - 7);
}

// Sony blocks count positions, 1 being 0 dB and each further one 2 dB; Kova modules take a percentage.
std::string Gain(std::uint32_t value, std::size_t) {
    if (value == 0 || value > 0x0F)
        return Print("0x%02X (Kova %u %%)", static_cast<unsigned>(value), static_cast<unsigned>(value));
    return Print("0x%02X (%u dB, Kova %u %%)", static_cast<unsigned>(value),
                 static_cast<unsigned>((value - 1) * 2), static_cast<unsigned>(value));
}

std::string Bit(unsigned bit) {
    switch (bit) {
    case 0:
        return "uImage";
    case 1:
        return "program";
    case 10:
        return "patch";
    default:
        return Print("bit %u", bit);
    }
}

// 0x00000003 is uImage and program.
std::string Files(std::uint32_t value, std::size_t nibbles) {
    std::string names;
    for (unsigned bit = 0; bit < 32; ++bit)
        if ((value >> bit & 1U) != 0)
            names += (names.empty() ? "" : ", ") + Bit(bit);
    return Hex(value, nibbles) + " (" + (names.empty() ? "none" : names) + ")";
}

// 0x1230 is 12.3, 0x0123 is 1.23, 0x0200 is 2.0.
std::string UImage(std::uint32_t value, std::size_t) {
    const unsigned first = value >> 12 & 0xFU;
    const unsigned last = value & 0xFU;
    std::string text = first == 0 ? "" : std::to_string(first);
    text += std::to_string(value >> 8 & 0xFU) + "." + std::to_string(value >> 4 & 0xFU);
    return last == 0 ? text : text + std::to_string(last);
}

// 00 05 00 00 is D005, 00 0C 00 03 is D012SP03, 01 02 03 04 is 01020304.
std::string Program(std::uint32_t value, std::size_t) {
    const unsigned a = value >> 24;
    const unsigned b = value >> 16 & 0xFFU;
    const unsigned c = value >> 8 & 0xFFU;
    const unsigned d = value & 0xFFU;
    if (a != 0)
        return Print("%02u%02u%02u%02u", a, b, c, d);
    return d == 0 ? Print("D0%02u", b) : Print("D0%02uSP%02u", b, d);
}

struct Date {
    unsigned year, month, day;
};

// Days since 1970-01-01, counted in years that begin in March so that the leap day comes last.
Date DateOf(std::uint32_t days) {
    const unsigned shifted = days + 719468; // since 0000-03-01
    const unsigned era = shifted / 146097;  // 400 years
    const unsigned day_of_era = shifted % 146097;
    const unsigned year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const unsigned day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const unsigned month = (5 * day_of_year + 2) / 153; // 0 is March
    const unsigned year = era * 400 + year_of_era + (month >= 10 ? 1 : 0);
    return {year, month < 10 ? month + 3 : month - 9, day_of_year - (153 * month + 2) / 5 + 1};
}

// 1700000000 is 2023-11-14 22:13:20.
std::string Clock(std::uint32_t value, std::size_t) {
    const Date date = DateOf(value / 86400);
    const unsigned second = value % 86400;
    return Print("%u (%04u-%02u-%02u %02u:%02u:%02u UTC)", static_cast<unsigned>(value), date.year,
                 date.month, date.day, second / 3600, second / 60 % 60, second % 60);
}

struct NumberFormat {
    const char *name;
    std::string (*render)(std::uint32_t value, std::size_t nibbles);
};

constexpr NumberFormat kNumberFormats[] = {
    {"", Decimal},      {"hex", Hex},         {"signed", Signed16},           {"socket", Socket},
    {"moving", Moving}, {"celsius", Celsius}, {"compensation", Compensation}, {"gain", Gain},
    {"files", Files},   {"uimage", UImage},   {"program", Program},           {"clock", Clock},
};

const NumberFormat *FindNumberFormat(const std::string &name) {
    for (const NumberFormat &format : kNumberFormats)
        if (name == format.name)
            return &format;
    return nullptr;
}

std::string NamedText(const NameList &list, std::uint32_t value, std::size_t nibbles) {
    const char *name = FindName(list, value);
    const std::string code = Hex(value, nibbles);
    if (list.style == NameList::Style::WithCode)
        return name == nullptr ? code : code + " (" + name + ")";
    return name == nullptr ? "unknown " + code : name;
}

// Quoted, without the newline that ends a debug line; what does not print as \xNN.
std::string QuotedText(const Bytes &bytes) {
    std::size_t size = bytes.size();
    if (size > 0 && bytes[size - 1] == '\n')
        --size;
    std::string text = "\"";
    for (std::size_t i = 0; i < size; ++i) {
        const bool plain = bytes[i] >= 0x20 && bytes[i] < 0x7F && bytes[i] != '"' && bytes[i] != '\\';
        text += plain ? std::string(1, static_cast<char>(bytes[i]))
                      : Print("\\x%02X", static_cast<unsigned>(bytes[i]));
    }
    return text + "\"";
}

std::optional<std::uint32_t> NumberOf(const Placeholder &placeholder, const Captures *captures) {
    return captures == nullptr ? std::nullopt
                               : captures->Number(placeholder.letters.data(), placeholder.letters.size());
}

std::string RenderRun(const Placeholder &placeholder, const Bytes &run) {
    return placeholder.format == "text" ? QuotedText(run) : HexText(run.data(), run.size());
}

std::string Render(const Placeholder &placeholder, const Values &values) {
    if (placeholder.letters == "segment")
        return values.segment;
    if (placeholder.letters.size() == 1 && values.packet != nullptr)
        if (const Bytes *run = values.packet->Run(placeholder.letters[0]))
            return RenderRun(placeholder, *run);
    std::optional<std::uint32_t> number = NumberOf(placeholder, values.packet);
    if (!number)
        number = NumberOf(placeholder, values.question);
    if (!number)
        return "?";
    if (const NameList *list = FindNameList(placeholder.format))
        return NamedText(*list, *number, placeholder.letters.size());
    const NumberFormat *format = FindNumberFormat(placeholder.format);
    return format == nullptr ? "?" : format->render(*number, placeholder.letters.size());
}

/// The placeholder that begins at `open` ("{"), and where it ends.
Placeholder Parse(const char *open, const char **end) {
    const char *close = std::strchr(open, '}');
    *end = close == nullptr ? open + std::strlen(open) : close + 1;
    const std::string inside(open + 1, close == nullptr ? *end : close);
    const std::size_t colon = inside.find(':');
    if (colon == std::string::npos)
        return {inside, ""};
    return {inside.substr(0, colon), inside.substr(colon + 1)};
}

} // namespace

std::string FillIn(const char *words, const Values &values) {
    std::string text;
    while (const char *open = std::strchr(words, '{')) {
        text.append(words, open);
        text += Render(Parse(open, &words), values);
    }
    return text + words;
}

std::vector<Placeholder> PlaceholdersOf(const char *words) {
    std::vector<Placeholder> found;
    while (const char *open = std::strchr(words, '{'))
        found.push_back(Parse(open, &words));
    return found;
}

bool IsFormat(const std::string &format) {
    return format == "text" || format == "bytes" || FindNumberFormat(format) != nullptr ||
           FindNameList(format) != nullptr;
}

std::string HexText(const std::uint8_t *bytes, std::size_t size) {
    if (size == 0)
        return "(no data)";
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += Print(i == 0 ? "%02X" : " %02X", static_cast<unsigned>(bytes[i]));
    return text;
}

std::string VersionFromDigits(const Bytes &digits) {
    const auto at = [&](std::size_t i) { return i < digits.size() ? digits[i] : 0U; };
    std::string text;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (digits[i] < 10) {
            text += static_cast<char>('0' + digits[i]);
        } else if (digits[i] == 10) {
            const unsigned letter = at(i + 1) * 10 + at(i + 2);
            text += letter < 26 ? static_cast<char>('A' + letter) : '?';
            i += 2;
        } else if (digits[i] == 11) {
            text += at(i + 1) == 0 ? '-' : '_';
            i += 1;
        } else {
            text += '?';
        }
    }
    return text;
}

} // namespace decode
