#include "decode/pattern.h"
#include "decode/table.h"

namespace decode {
namespace {

constexpr Family kBoth = Family::Both;

constexpr Row kRows[] = {
    ToCamera(Kind::Control, kBoth, "81 2p FF", "cancel", "cancel socket {p}", "p: socket"),
    ToCamera(Kind::Control, kBoth, "81 01 00 01 FF", "clear interface", nullptr, ""),
    Answer(kBoth, "90 50 FF", "interface cleared"),
    ToCamera(Kind::Control, kBoth, "88 30 0p FF", "set address", "set address {p}",
             "p: address of the first camera"),
    FromCamera(Kind::Notice, kBoth, "88 30 0p FF", "address set", "address set, next is {p}",
               "p: next free address"),

    FromCamera(Kind::Acknowledgement, kBoth, "90 4p FF", "acknowledged", "acknowledged{p:socket}",
               "p: socket"),
    FromCamera(Kind::Completion, kBoth, "90 5p FF", "completed", "completed{p:socket}", "p: socket"),
    FromCamera(Kind::Error, kBoth, "90 6p 01 FF", "message length error", "message length error{p:socket}",
               "p: socket"),
    FromCamera(Kind::Error, kBoth, "90 6p 02 FF", "syntax error", "syntax error{p:socket}", "p: socket"),
    FromCamera(Kind::Error, kBoth, "90 6p 03 FF", "command buffer full", "command buffer full{p:socket}",
               "p: socket"),
    FromCamera(Kind::Error, kBoth, "90 6p 04 FF", "cancelled", "cancelled{p:socket}", "p: socket"),
    FromCamera(Kind::Error, kBoth, "90 6p 05 FF", "nothing to cancel", "nothing to cancel{p:socket}",
               "p: socket"),
    FromCamera(Kind::Error, kBoth, "90 6p 41 FF", "not executable", "refused: not executable{p:socket}",
               "p: socket"),
    FromCamera(Kind::Notice, kBoth, "90 38 FF", "network change", "network change / power-on notice", ""),

    // What has no row of its own
    Fallback(FromCamera(Kind::Completion, kBoth, "90 5p +t FF", "completed with data",
                        "completed{p:socket}, with data {t:bytes}", "p: socket; t: data")),
    Fallback(Answer(kBoth, "90 50 *t FF", "answer", "answer {t:bytes}", "t: data")),
    Fallback(FromCamera(Kind::Error, kBoth, "90 6p *t FF", "error", "error {t:bytes}{p:socket}",
                        "p: socket; t: error")),
    Fallback(FromCamera(Kind::Report, Family::Kova, "90 0p *t FF", "unknown report",
                        "unknown report {p:hex} {t:bytes}", "p: type; t: data")),
    Fallback(FromCamera(Kind::Other, kBoth, "90 +t FF", "unexpected reply", "unexpected reply {t:bytes}",
                        "t: data")),
    Fallback(ToCamera(Kind::Command, kBoth, "81 01 +t FF", "unknown command", "unknown command {t:bytes}",
                      "t: data")),
    Fallback(ToCamera(Kind::Inquiry, kBoth, "81 09 +t FF", "unknown inquiry", "unknown inquiry {t:bytes}",
                      "t: item")),
    Fallback(ToCamera(Kind::Inquiry, Family::Kova, "71 09 +t FF", "unknown Kova inquiry",
                      "unknown Kova inquiry {t:bytes}", "t: item")),
    Fallback(
        ToCamera(Kind::Other, kBoth, "81 +t FF", "unknown packet", "unknown packet {t:bytes}", "t: data")),
    Fallback(ToCamera(Kind::Other, Family::Kova, "71 +t FF", "unknown Kova packet",
                      "unknown Kova packet {t:bytes}", "t: data")),
};
static_assert(AreWellFormed(kRows));

} // namespace

const Subject kLinkSubject = {"The link", kRows, sizeof kRows / sizeof kRows[0]};

} // namespace decode
