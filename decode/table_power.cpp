#include "decode/pattern.h"
#include "decode/table.h"

namespace decode {
namespace {

constexpr Row kRows[] = {
    Command(Family::Both, "81 01 04 00 02 FF", "power on"),
    Command(Family::Both, "81 01 04 00 03 FF", "standby"),
    Inquiry(Family::Both, "81 09 04 00 FF", "power inquiry"),
    Answer(Family::Both, "90 50 02 FF", "power on"),
    Answer(Family::Both, "90 50 03 FF", "standby"),

    Command(Family::Sony, "81 01 04 19 01 FF", "lens initialise"),
    Command(Family::Sony, "81 01 04 19 03 FF", "camera reset"),

    Command(Family::Both, "81 01 04 24 rr 0p 0q FF", "register write",
            "write register {rr:register} = {pq:hex}", "rr: register; pq: value"),
    Inquiry(Family::Both, "81 09 04 24 rr FF", "register inquiry", "register {rr:register} inquiry",
            "rr: register"),
    Answer(Family::Both, "90 50 0p 0q FF", "register value", "register {rr:register} = {pq:hex}",
           "pq: value"),

    Inquiry(Family::Both, "81 09 00 02 FF", "identity inquiry"),
    Answer(Family::Both, "90 50 vv vv mm mm rr rr ss FF", "identity",
           "vendor {vvvv:vendor}, model {mmmm:model}, version {rrrr:hex}, {ss} sockets",
           "vvvv: vendor; mmmm: model; rrrr: firmware version; ss: number of sockets"),

    Command(Family::Both, "81 01 04 61 0p FF", "mirror", "mirror {p:switch}", "p: left and right exchanged"),
    Inquiry(Family::Both, "81 09 04 61 FF", "mirror inquiry"),
    Answer(Family::Both, "90 50 0p FF", "mirror", "mirror {p:switch}", "p: left and right exchanged"),

    Command(Family::Both, "81 01 04 66 0p FF", "flip", "flip {p:switch}", "p: picture upside down"),
    Inquiry(Family::Both, "81 09 04 66 FF", "flip inquiry"),
    Answer(Family::Both, "90 50 0p FF", "flip", "flip {p:switch}", "p: picture upside down"),
};
static_assert(AreWellFormed(kRows));

} // namespace

const Subject kPowerSubject = {"Power, registers and identity", kRows, sizeof kRows / sizeof kRows[0]};

} // namespace decode
