#include "decode/pattern.h"
#include "decode/table.h"

namespace decode {
namespace {

constexpr Row kRows[] = {
    Command(Family::Both, "81 01 04 07 00 FF", "zoom stop"),
    Command(Family::Both, "81 01 04 07 02 FF", "zoom tele"),
    Command(Family::Both, "81 01 04 07 03 FF", "zoom wide"),
    Command(Family::Both, "81 01 04 07 2p FF", "zoom tele at speed", "zoom tele, speed {p}",
            "p: 0 slow to 7 fast"),
    Command(Family::Both, "81 01 04 07 3p FF", "zoom wide at speed", "zoom wide, speed {p}",
            "p: 0 slow to 7 fast"),
    Command(Family::Both, "81 01 04 47 0p 0q 0r 0s FF", "zoom to position", "zoom to {pqrs:hex}",
            "pqrs: zoom position, 0x0000 wide, 0x4000 the end of optical zoom"),
    Command(Family::Both, "81 01 04 47 0p 0q 0r 0s 0t 0u 0v 0w FF", "zoom and focus to positions",
            "zoom to {pqrs:hex}, focus to {tuvw:hex}", "pqrs: zoom position; tuvw: focus position"),
    Inquiry(Family::Both, "81 09 04 47 FF", "zoom position inquiry"),
    Answer(Family::Both, "90 50 0p 0q 0r 0s FF", "zoom position", "zoom position {pqrs:hex}",
           "pqrs: zoom position"),

    Command(Family::Both, "81 01 04 06 0p FF", "digital zoom", "digital zoom {p:switch}", "p: digital zoom"),
    Inquiry(Family::Sony, "81 09 04 06 FF", "digital zoom inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "digital zoom", "digital zoom {p:switch}", "p: digital zoom"),

    Command(Family::Both, "81 01 04 08 00 FF", "focus stop"),
    Command(Family::Both, "81 01 04 08 02 FF", "focus far"),
    Command(Family::Both, "81 01 04 08 03 FF", "focus near"),
    Command(Family::Both, "81 01 04 08 2p FF", "focus far at speed", "focus far, speed {p}",
            "p: 0 slow to 7 fast"),
    Command(Family::Both, "81 01 04 08 3p FF", "focus near at speed", "focus near, speed {p}",
            "p: 0 slow to 7 fast"),
    Command(Family::Both, "81 01 04 48 0p 0q 0r 0s FF", "focus to position", "focus to {pqrs:hex}",
            "pqrs: focus position, low is far"),
    Inquiry(Family::Both, "81 09 04 48 FF", "focus position inquiry"),
    Answer(Family::Both, "90 50 0p 0q 0r 0s FF", "focus position", "focus position {pqrs:hex}",
           "pqrs: focus position"),

    Command(Family::Both, "81 01 04 BA FF", "zoom and focus reset"),

    Command(Family::Both, "81 01 04 38 pp FF", "focus mode", "focus mode {pp:focus-mode}", "pp: focus mode"),
    Inquiry(Family::Sony, "81 09 04 38 FF", "focus mode inquiry"),
    Answer(Family::Sony, "90 50 pp FF", "focus mode", "focus mode {pp:focus-mode}", "pp: focus mode"),

    Command(Family::Both, "81 01 04 18 01 FF", "one-push focus"),
    Command(Family::Sony, "81 01 04 18 02 FF", "focus to infinity"),

    Command(Family::Both, "81 01 04 57 pp FF", "auto focus mode", "auto focus mode {pp:af-mode}",
            "pp: when it focuses"),
    Inquiry(Family::Sony, "81 09 04 57 FF", "auto focus mode inquiry"),
    Answer(Family::Sony, "90 50 pp FF", "auto focus mode", "auto focus mode {pp:af-mode}",
           "pp: when it focuses"),

    Command(Family::Both, "81 01 04 28 0p 0q 0r 0s FF", "focus near limit",
            "focus near limit {pqrs:near-limit}", "pqrs: closest focus position"),
    Inquiry(Family::Sony, "81 09 04 28 FF", "focus near limit inquiry"),
    Answer(Family::Sony, "90 50 0p 0q 0r 0s FF", "focus near limit", "focus near limit {pqrs:near-limit}",
           "pqrs: closest focus position"),

    Command(Family::Both, "81 01 04 11 0p FF", "infrared correction", "infrared correction {p:ir-correction}",
            "p: focus curve"),
    Inquiry(Family::Sony, "81 09 04 11 FF", "infrared correction inquiry"),
    Answer(Family::Sony, "90 50 0p FF", "infrared correction", "infrared correction {p:ir-correction}",
           "p: focus curve"),
};
static_assert(AreWellFormed(kRows));

} // namespace

const Subject kLensSubject = {"Zoom and focus", kRows, sizeof kRows / sizeof kRows[0]};

} // namespace decode
