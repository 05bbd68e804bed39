#include "tests/docs/packets_page.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "decode/decode.h"

namespace docs {
namespace {

using decode::Kind;
using decode::Row;

const char kHead[] =
    R"(# Packet reference

Every packet of both camera families, by subject. This page is made from the decoder's table by `scripts/docs`, and a test
compares the two. What a packet means in a given conversation says `viscacam decode`.

## How to read it

- A packet has 3 to 16 bytes. It begins with `81` (to camera 1), `71` (the Kova module's version inquiries) or `90` (from camera 1),
  and ends with `FF`. The exceptions are the AF debug packets, which say their length themselves and have no `FF`.
- Two characters are a byte. Digits and capitals are fixed; each small letter is four bits of a value; `.` is four bits without
  meaning. `+t` is one or more bytes, `*t` any number. The letters of one value are read from left to right, the highest first.
- A command is answered by an acknowledgement `90 4p FF`, then by a completion `90 5p FF` or an error `90 6p .. FF`; p is the
  socket. An inquiry is answered by `90 50 ... FF` alone, or by an error. The answers stand below their inquiry.
- Cameras: Sony are the blocks 0x02000001, 3, 4 and 5; Kova are the maker's own modules.
- A value that names a list in brackets is explained under [Values](#values).
- Packets called "unknown" are what a trace says of bytes that no other line fits.
)";

const char *CamerasOf(const Row &row) {
    switch (row.family) {
    case decode::Family::Sony:
        return "Sony";
    case decode::Family::Kova:
        return "Kova";
    default:
        return "both";
    }
}

std::string Code(const std::string &text) {
    return "`" + text + "`";
}

/// A '|' would end a cell.
std::string Cell(std::string text) {
    for (std::size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2))
        text.insert(at, "\\");
    return text;
}

/// "p: socket; t: data", with a link where the value has names.
std::string ValuesCell(const Row &row) {
    std::string text;
    for (const decode::Parameter &parameter : decode::ParametersOf(row)) {
        text += (text.empty() ? "" : "<br>") + Code(parameter.letters) + " " + parameter.meaning;
        if (!decode::ValuesOf(parameter.format).empty())
            text += " [" + parameter.format + "](#" + parameter.format + ")";
    }
    return text;
}

std::string Line(const Row &row) {
    const bool answer = row.kind == Kind::Answer && !row.fallback;
    return "| " + std::string(answer ? "&rarr; " : "") + Code(row.pattern) + " | " +
           decode::NameOf(row.kind) + " | " + Cell(row.name) + " | " + CamerasOf(row) + " | " +
           Cell(ValuesCell(row)) + " |\n";
}

std::string SubjectText(const decode::Subject &subject) {
    std::string text = std::string("\n## ") + subject.title +
                       "\n\n| Packet | Kind | What it is | Cameras | Values |\n|---|---|---|---|---|\n";
    for (std::size_t i = 0; i < subject.count; ++i)
        text += Line(subject.rows[i]);
    return text;
}

void CollectFormats(const decode::Subject &subject, std::vector<std::string> &formats) {
    for (std::size_t i = 0; i < subject.count; ++i)
        for (const decode::Parameter &parameter : decode::ParametersOf(subject.rows[i]))
            if (!decode::ValuesOf(parameter.format).empty() &&
                std::find(formats.begin(), formats.end(), parameter.format) == formats.end())
                formats.push_back(parameter.format);
}

std::string HexOf(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(value));
    return text;
}

std::string FormatText(const std::string &format) {
    std::string text = "\n### " + format + "\n\n| Value | Name |\n|---|---|\n";
    for (const decode::NamedValue &value : decode::ValuesOf(format))
        text += "| " + Code(HexOf(value.value)) + " | " + Cell(value.name) + " |\n";
    return text;
}

} // namespace

std::string PacketsPage() {
    std::string text = kHead;
    std::vector<std::string> formats;
    for (const decode::Subject &subject : decode::Table()) {
        text += SubjectText(subject);
        CollectFormats(subject, formats);
    }
    text += "\n## Values\n";
    std::sort(formats.begin(), formats.end());
    for (const std::string &format : formats)
        text += FormatText(format);
    return text;
}

} // namespace docs
