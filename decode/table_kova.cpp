#include "decode/pattern.h"
#include "decode/table.h"

namespace decode {
namespace {

constexpr Family kKova = Family::Kova;

constexpr Row kRows[] = {
    // Abilities, versions, temperature
    Inquiry(kKova, "81 09 04 AB FF", "capability inquiry"),
    Answer(kKova, "90 50 .. .p .q .r .s .t .u .v .w FF", "capability word", "capability word {pqrstuvw:hex}",
           "pqrstuvw: bit 0x04 segmented versions, 0x08 orientation needs a power cycle, 0x10 extension "
           "version"),
    Inquiry(kKova, "71 09 04 B1 FF", "uImage version inquiry"),
    Answer(kKova, "90 50 0p 0q 0r 0s FF", "uImage version", "uImage version {pqrs:uimage}",
           "pqrs: digits of major.minor"),
    Inquiry(kKova, "71 09 04 B2 FF", "program version inquiry"),
    Answer(Form::Single, kKova, "90 50 pp qq rr ss FF", "program version",
           "program version {ppqqrrss:program}", "ppqqrrss: four numbers"),
    Answer(Form::Count, kKova, "90 50 .p .q .r .s FF", "program version, number of segments",
           "program version, segments: {pqrs}", "pqrs: number of segments"),
    Answer(Form::Segment, kKova, "90 50 +t FF", "program version, segment", "program version{segment}",
           "t: a digit a byte; 10 and two digits are a letter"),
    Inquiry(kKova, "71 09 04 B5 FF", "extension version inquiry"),
    Answer(Form::Count, kKova, "90 50 .p .q .r .s FF", "extension version, number of segments",
           "extension version, segments: {pqrs}", "pqrs: number of segments"),
    Answer(Form::Segment, kKova, "90 50 +t FF", "extension version, segment", "extension version{segment}",
           "t: a digit a byte; 10 and two digits are a letter, 11 and one a separator"),
    Inquiry(kKova, "81 09 04 B4 03 FF", "encoder software version inquiry"),
    Answer(kKova, "90 50 *t FF", "encoder software version", "encoder software version {t:text}", "t: text"),
    Inquiry(kKova, "81 09 04 B4 0b FF", "board version inquiry", "{b:board} board inquiry", "b: board"),
    Answer(kKova, "90 50 pp qq FF", "board version", "{b:board} board version {pp}, type {qq}",
           "pp: version; qq: type"),
    Inquiry(kKova, "81 09 04 68 FF", "temperature inquiry"),
    Answer(kKova, "90 50 .. .. .p .q FF", "temperature", "temperature {pq:celsius}",
           "pq: degrees Celsius plus 127"),

    // Upgrade and log
    Command(kKova, "81 01 04 AA 0p 0q 0r 0s 0t 0u 0v 0w FF", "start upgrade",
            "start upgrade, files {pqrstuvw:files}", "pqrstuvw: bit 0 uImage, bit 1 program, bit 10 patch"),
    Inquiry(kKova, "81 09 04 A9 FF", "upgrade state inquiry"),
    Answer(kKova, "90 50 0p 0q FF", "upgrade state", "upgrade state {pq:upgrade}", "pq: state"),
    Command(kKova, "81 01 04 A7 0p 0q FF", "start log export", "start log export {pq:hex}", "pq: which log"),
    Command(kKova, "81 01 04 B6 FF", "save log"),

    // Sensor and housekeeping
    Command(kKova, "81 01 04 A4 0p 0q 0r 0s 0t 0u 0v 0w FF", "set clock", "set clock to {pqrstuvw:clock}",
            "pqrstuvw: seconds since 1970"),
    Command(kKova, "81 01 04 BF 0p FF", "low-delay mode", "low-delay mode {p:switch}", "p: low delay"),
    Command(kKova, "81 01 04 BD 0p 0q 0r 0s 0t 0u 0v 0w mm FF", "set sensor offset",
            "sensor offset to {pqrs:signed}, {tuvw:signed}, flag {mm}",
            "pqrs: X, signed; tuvw: Y, signed; mm: flag"),
    Inquiry(kKova, "81 09 04 BD FF", "sensor offset inquiry"),
    Answer(kKova, "90 50 0p 0q 0r 0s 0t 0u 0v 0w FF", "sensor offset",
           "sensor offset {pqrs:signed}, {tuvw:signed}", "pqrs: X, signed; tuvw: Y, signed"),
    Command(kKova, "81 01 04 B4 04 FF", "IR-cut filter on"),
    Command(kKova, "81 01 04 B4 05 FF", "IR-cut filter off"),
    Command(kKova, "81 01 04 D1 00 00 00 pp FF", "dome type", "dome type {pp:dome}",
            "pp: from the device model"),

    // Image analysis and reports
    Inquiry(kKova, "81 09 04 CE FF", "luma inquiry"),
    Answer(kKova, "90 50 0p 0q 0r 0s FF", "luma", "luma {pqrs}", "pqrs: brightness of the picture"),
    Inquiry(kKova, "81 09 04 AD FF", "focus value inquiry"),
    Answer(kKova, "90 50 pp qq rr ss FF", "focus value", "focus value {ppqqrrss}",
           "ppqqrrss: sharpness of the picture"),
    Command(kKova, "81 01 04 CD pp FF", "scene mode", "scene mode {pp:scene}", "pp: scene"),
    Command(kKova, "81 01 04 18 01 pp FF", "one-push focus, by type", "one-push focus, type {pp}",
            "pp: 1, or 6 to 9"),
    Command(kKova, "81 01 04 18 0A 0p 0q 0r 0s 0t 0u 0v 0w FF", "one-push focus at a point",
            "one-push focus at {pqrs}, {tuvw}", "pqrs: first value; tuvw: second value"),
    Command(kKova, "81 01 04 18 0B pp pp qq qq rr rr ss ss FF", "one-push focus in a rectangle",
            "one-push focus in {pppp}, {qqqq}, {rrrr}, {ssss}",
            "pppp: first value, whole bytes; qqqq: second; rrrr: third; ssss: fourth"),
    Fallback(Command(kKova, "81 01 04 18 0B *t FF", "one-push focus in a rectangle, cut short",
                     "one-push focus in a rectangle, of wrong length: {t:bytes}",
                     "t: what there is of the values")),
    Command(kKova, "81 01 04 AE 0p FF", "zoom reports", "zoom reports {p:switch}", "p: sent unasked"),
    Command(kKova, "81 01 04 AF 0p FF", "focus reports", "focus reports {p:switch}", "p: sent unasked"),
    FromCamera(Kind::Report, kKova, "90 07 .. AE .p FF", "zoom report", "zoom {p:moving} report",
               "p: 0 stopped, else moving"),
    FromCamera(Kind::Report, kKova, "90 07 .. AF .p FF", "focus report", "focus {p:moving} report",
               "p: 0 stopped, else moving"),
    FromCamera(Kind::Report, kKova, "90 07 .. EF *. FF", "image parameter report",
               "image parameters wanted again, report", ""),

    // Exposure and picture
    Command(kKova, "81 01 04 CB 0p 0q 0r 0s FF", "shutter time", "shutter 1/{pqrs} s", "pqrs: N of 1/N s"),
    Command(kKova, "81 01 04 A3 0p 0q 0r 0s 0t 0u 0v 0w FF", "shutter range",
            "shutter range 1/{pqrs} to 1/{tuvw} s", "pqrs: N of the slowest, 1/N s; tuvw: N of the fastest"),
    Command(kKova, "81 01 04 2C 0p 0q 0r 0s FF", "gain range", "gain range {pq} to {rs} %",
            "pq: least; rs: most"),
    Command(kKova, "81 01 04 CA 00 00 0p 0q FF", "automatic slow shutter limit",
            "automatic slow shutter limit 1/{pq} s", "pq: N of 1/N s"),
    Command(kKova, "81 01 04 2D 00 00 00 pp FF", "wide dynamic range level", "wide dynamic range level {pp}",
            "pp: 0 to 9"),
    Command(kKova, "81 01 04 A1 00 00 0p 0q FF", "brightness", "brightness {pq}", "pq: 0 to 255"),
    Command(kKova, "81 01 04 A2 00 00 0p 0q FF", "contrast", "contrast {pq}", "pq: 0 to 255"),
    Command(kKova, "81 01 04 54 00 00 0p 0q FF", "2D noise reduction", "2D noise reduction {pq}",
            "pq: 0 to 255"),
    Command(kKova, "81 01 04 55 00 00 0p 0q FF", "3D noise reduction", "3D noise reduction {pq}",
            "pq: 0 to 255"),
    Command(kKova, "81 01 04 C8 pp FF", "defog mode", "defog mode {pp}", "pp: mode"),
    Command(kKova, "81 01 04 C9 pp FF", "defog sensitivity", "defog sensitivity {pp}", "pp: sensitivity"),

    // Auto-focus debug texts, outside the framing
    ToCamera(Kind::Debug, kKova, "81 66 66 66 .. +t", "AF debug command", "AF debug command {t:text}",
             "t: text"),
    FromCamera(Kind::Debug, kKova, "66 .. *t", "AF debug answer", "AF debug answer {t:text}", "t: text"),
};
static_assert(AreWellFormed(kRows));

} // namespace

const Subject kKovaSubject = {"Kova module", kRows, sizeof kRows / sizeof kRows[0]};

} // namespace decode
