#include "decode/pattern.h"
#include "decode/table.h"

namespace decode {
namespace {

constexpr Row kRows[] = {
    Command(Family::Both, "81 01 04 39 pp FF", "exposure mode", "exposure {pp:exposure}",
            "pp: exposure mode"),
    Inquiry(Family::Sony, "81 09 04 39 FF", "exposure mode inquiry"),
    Answer(Family::Sony, "90 50 pp FF", "exposure mode", "exposure {pp:exposure}", "pp: exposure mode"),

    Command(Family::Sony, "81 01 04 0A 0p FF", "shutter step", "shutter {p:step}", "p: step"),
    Command(Family::Sony, "81 01 04 4A 00 00 0p 0q FF", "shutter", "shutter {pq:shutter}",
            "pq: shutter position"),
    Inquiry(Family::Sony, "81 09 04 4A FF", "shutter inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "shutter", "shutter {pq:shutter}", "pq: shutter position"),

    Command(Family::Sony, "81 01 04 0B 0p FF", "iris step", "iris {p:step}", "p: step"),
    Command(Family::Both, "81 01 04 4B 00 00 0p 0q FF", "iris", "iris {pq:iris}", "pq: iris position"),
    Inquiry(Family::Sony, "81 09 04 4B FF", "iris inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "iris", "iris {pq:iris}", "pq: iris position"),

    Command(Family::Sony, "81 01 04 0C 0p FF", "gain step", "gain {p:step}", "p: step"),
    Command(Family::Both, "81 01 04 4C 00 00 0p 0q FF", "gain", "gain {pq:gain}",
            "pq: gain position, on Kova percent"),
    Inquiry(Family::Both, "81 09 04 4C FF", "gain inquiry"),
    Answer(Family::Both, "90 50 0p 0q 0r 0s FF", "gain", "gain {pqrs:gain}", "pqrs: gain position"),

    Command(Family::Both, "81 01 04 5A 0p FF", "automatic slow shutter", "automatic slow shutter {p:switch}",
            "p: slow shutter in the dark"),
    Inquiry(Family::Sony, "81 09 04 5A FF", "automatic slow shutter inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "automatic slow shutter", "automatic slow shutter {p:switch}",
           "p: slow shutter in the dark"),

    Command(Family::Both, "81 01 04 3E 0p FF", "exposure compensation switch",
            "exposure compensation {p:switch}", "p: exposure compensation"),
    Inquiry(Family::Sony, "81 09 04 3E FF", "exposure compensation switch inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "exposure compensation switch", "exposure compensation {p:switch}",
           "p: exposure compensation"),
    Command(Family::Sony, "81 01 04 0E 0p FF", "exposure compensation step", "exposure compensation {p:step}",
            "p: step"),
    Command(Family::Both, "81 01 04 4E 00 00 0p 0q FF", "exposure compensation",
            "exposure compensation {pq:compensation}", "pq: step, 0x07 neutral"),
    Inquiry(Family::Sony, "81 09 04 4E FF", "exposure compensation inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "exposure compensation",
           "exposure compensation {pq:compensation}", "pq: step, 0x07 neutral"),

    Command(Family::Both, "81 01 04 59 0p FF", "metering", "metering {p:metering}", "p: metering mode"),
    Inquiry(Family::Sony, "81 09 04 59 FF", "metering inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "metering", "metering {p:metering}", "p: metering mode"),
    Command(Family::Both, "81 01 04 29 0p 0q 0r 0s FF", "metering spot", "metering spot at {pq}, {rs}",
            "pq: column, 0 left to 15 right; rs: row, 0 top to 15 bottom"),
    Inquiry(Family::Sony, "81 09 04 29 FF", "metering spot inquiry"),
    Answer(Family::Sony, "90 50 0p 0q 0r 0s FF", "metering spot", "metering spot at {pq}, {rs}",
           "pq: column, 0 left to 15 right; rs: row, 0 top to 15 bottom"),

    Command(Family::Sony, "81 01 04 33 0p FF", "backlight compensation", "backlight compensation {p:switch}",
            "p: backlight compensation"),
    Inquiry(Family::Sony, "81 09 04 33 FF", "backlight compensation inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "backlight compensation", "backlight compensation {p:switch}",
           "p: backlight compensation"),

    Command(Family::Both, "81 01 04 3D 0p FF", "wide dynamic range", "wide dynamic range {p:wdr}",
            "p: mode, differs by camera"),
    Inquiry(Family::Sony, "81 09 04 3D FF", "wide dynamic range inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "wide dynamic range", "wide dynamic range {p:wdr}",
           "p: mode, differs by camera"),
};
static_assert(AreWellFormed(kRows));

} // namespace

const Subject kExposureSubject = {"Exposure", kRows, sizeof kRows / sizeof kRows[0]};

} // namespace decode
