#include "decode/pattern.h"
#include "decode/table.h"

namespace decode {
namespace {

constexpr Row kRows[] = {
    Command(Family::Both, "81 01 04 35 pp FF", "white balance", "white balance {pp:white-balance}",
            "pp: mode"),
    Inquiry(Family::Sony, "81 09 04 35 FF", "white balance inquiry"),
    Answer(Family::Sony, "90 50 pp FF", "white balance", "white balance {pp:white-balance}", "pp: mode"),
    Command(Family::Sony, "81 01 04 10 05 FF", "one-push white balance"),

    Command(Family::Sony, "81 01 04 03 0p FF", "red gain step", "red gain {p:step}", "p: step"),
    Command(Family::Both, "81 01 04 43 00 00 0p 0q FF", "red gain", "red gain {pq:hex}",
            "pq: gain of manual white balance"),
    Inquiry(Family::Sony, "81 09 04 43 FF", "red gain inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "red gain", "red gain {pq:hex}",
           "pq: gain of manual white balance"),
    Command(Family::Sony, "81 01 04 04 0p FF", "blue gain step", "blue gain {p:step}", "p: step"),
    Command(Family::Both, "81 01 04 44 00 00 0p 0q FF", "blue gain", "blue gain {pq:hex}",
            "pq: gain of manual white balance"),
    Inquiry(Family::Sony, "81 09 04 44 FF", "blue gain inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "blue gain", "blue gain {pq:hex}",
           "pq: gain of manual white balance"),

    Command(Family::Both, "81 01 04 49 00 00 0p 0q FF", "saturation", "saturation {pq}",
            "pq: colour gain, 0 to 14, on Kova 0 to 255"),
    Inquiry(Family::Sony, "81 09 04 49 FF", "saturation inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "saturation", "saturation {pq}", "pq: colour gain, 0 to 14"),

    Command(Family::Sony, "81 01 04 02 0p FF", "sharpness step", "sharpness {p:step}", "p: step"),
    Command(Family::Both, "81 01 04 42 00 00 0p 0q FF", "sharpness", "sharpness {pq}",
            "pq: aperture gain, 0 to 15"),
    Inquiry(Family::Sony, "81 09 04 42 FF", "sharpness inquiry"),
    Answer(Family::Sony, "90 50 00 00 0p 0q FF", "sharpness", "sharpness {pq}", "pq: aperture gain, 0 to 15"),

    Command(Family::Sony, "81 01 04 53 pp FF", "noise reduction", "noise reduction {pp}",
            "pp: level, 0 off to 5"),
    Inquiry(Family::Sony, "81 09 04 53 FF", "noise reduction inquiry"),
    Answer(Family::Sony, "90 50 pp FF", "noise reduction", "noise reduction {pp}", "pp: level, 0 off to 5"),

    Command(Family::Sony, "81 01 04 37 02 0p FF", "defog on", "defog on, level {p}", "p: 0 to 3"),
    Command(Family::Sony, "81 01 04 37 03 0. FF", "defog off"),
    Inquiry(Family::Sony, "81 09 04 37 FF", "defog inquiry"),
    Answer(Family::Sony, "90 50 02 0p FF", "defog on", "defog on, level {p}", "p: 0 to 3"),
    Answer(Family::Sony, "90 50 03 0. FF", "defog off"),

    Command(Family::Both, "81 01 04 01 0p FF", "infrared-cut filter removed (ICR)", "ICR {p:icr}",
            "p: filter out of the way, for the night"),
    Inquiry(Family::Sony, "81 09 04 01 FF", "ICR inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "ICR", "ICR {p:icr}", "p: filter out of the way, for the night"),
    Command(Family::Both, "81 01 04 51 0p FF", "automatic ICR", "automatic ICR {p:switch}",
            "p: changes by brightness"),
    Inquiry(Family::Sony, "81 09 04 51 FF", "automatic ICR inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "automatic ICR", "automatic ICR {p:switch}",
           "p: changes by brightness"),

    Command(Family::Both, "81 01 04 CF 0p 0q 0r 0s FF", "image tuning", "image tuning {pq:hex} = {rs:hex}",
            "pq: item; rs: value"),
};
static_assert(AreWellFormed(kRows));

} // namespace

const Subject kPictureSubject = {"Picture", kRows, sizeof kRows / sizeof kRows[0]};

} // namespace decode
