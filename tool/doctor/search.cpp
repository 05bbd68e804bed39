#include "tool/doctor/search.h"

#include <algorithm>

#include "decode/decode.h"

namespace tool::doctor {

namespace {

constexpr unsigned RATES[] = {9600, 19200, 38400};
const Bytes POWER_INQUIRY = {0x81, 0x09, 0x04, 0x00, 0xFF};

constexpr Milliseconds QUICK{250}; // answers take some 40 ms, unless a slow shutter stretches the picture
constexpr Milliseconds IDLE{300};
constexpr Milliseconds SWITCHING{20}; // what was under way when the rate changed
constexpr size_t LONGEST_PACKET = 16;
constexpr size_t SHOWN_BYTES = 12;
constexpr size_t SHOWN_PACKETS = 3;

std::string hexOf(const Bytes &bytes) {
    static const char DIGITS[] = "0123456789ABCDEF";
    std::string text;
    for (size_t i = 0; i < std::min(bytes.size(), SHOWN_BYTES); ++i)
        text += std::string(i == 0 ? "" : " ") + DIGITS[bytes[i] >> 4U] + DIGITS[bytes[i] & 0x0FU];
    return text + (bytes.size() > SHOWN_BYTES ? " .." : "");
}

std::string count(size_t number, const std::string &what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string seconds(Milliseconds time) {
    return std::to_string(time.count() / 1000) + "." + std::to_string(time.count() / 100 % 10) + " s";
}

// "90 50 .. FF" with data, or "90 6y ee FF".
bool isReply(const uint8_t *packet, size_t size) {
    const unsigned kind = packet[1] >> 4U;
    return (kind == 5 && size > 3) || (kind == 6 && size == 4);
}

struct Place {
    size_t begin = 0;
    size_t end = 0; // behind the terminator; 0: there is none
};

// Behind the terminator before it may stand noise; a camera of address 1 is looked for first.
Place findReply(const Bytes &bytes, uint8_t header) {
    size_t first = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != 0xFF)
            continue;
        for (size_t at = std::max(first, i + 1 > LONGEST_PACKET ? i + 1 - LONGEST_PACKET : 0); at + 2 < i;
             ++at) {
            if (bytes[at] == header && isReply(&bytes[at], i + 1 - at))
                return {at, i + 1};
        }
        first = i + 1;
    }
    return {};
}

void takeReply(Heard &heard) {
    for (unsigned address = 1; address <= 7 && heard.reply.empty(); ++address) {
        const Place place = findReply(heard.others, static_cast<uint8_t>(0x80 + 0x10 * address));
        if (place.end == 0)
            continue;
        const auto begin = heard.others.begin() + static_cast<std::ptrdiff_t>(place.begin);
        const auto end = heard.others.begin() + static_cast<std::ptrdiff_t>(place.end);
        heard.reply.assign(begin, end);
        heard.others.erase(begin, end);
        heard.address = address;
    }
}

void takeEcho(Heard &heard, const Bytes &question) {
    const auto at = std::search(heard.others.begin(), heard.others.end(), question.begin(), question.end());
    heard.echo = at != heard.others.end();
    if (heard.echo)
        heard.others.erase(at, at + static_cast<std::ptrdiff_t>(question.size()));
}

Heard understand(const Bytes &bytes, const Bytes &question) {
    Heard heard;
    heard.others = bytes;
    takeEcho(heard, question);
    takeReply(heard);
    return heard;
}

/* What the whole search has seen, for the case that it finds nothing. */
struct Impressions {
    unsigned echoes = 0;
    std::string garbled; // "19200 bit/s (F0 0E)"
    std::string refusedRates;
};

std::optional<Heard> askAt(Line &line, unsigned rate, Milliseconds limit, Impressions &seen) {
    if (!line.setRate(rate)) {
        seen.refusedRates += " " + std::to_string(rate);
        return std::nullopt;
    }
    (void)line.collect(Clock::now() + SWITCHING);
    const Heard heard = ask(line, POWER_INQUIRY, limit);
    if (!heard.reply.empty())
        return heard;
    seen.echoes += heard.echo ? 1 : 0;
    if (!heard.others.empty())
        seen.garbled += (seen.garbled.empty() ? "" : ", ") + std::to_string(rate) + " bit/s (" +
                        hexOf(heard.others) + ")";
    return std::nullopt;
}

// What the camera heard at a wrong rate may spoil the first question at the right one, so each rate is tried
// more than once.
std::optional<Heard> askAtEachRate(Line &line, Milliseconds limit, Impressions &seen, unsigned &found) {
    const Milliseconds quick = std::min(QUICK, limit);
    for (const Milliseconds patience : {quick, quick, limit}) {
        seen = Impressions();
        for (const unsigned rate : RATES) {
            std::optional<Heard> heard = askAt(line, rate, patience, seen);
            found = rate;
            if (heard)
                return heard;
        }
    }
    return std::nullopt;
}

// The first address beyond 1 that answers, 0 for none.
unsigned askOtherAddresses(Line &line, Milliseconds limit, unsigned &found) {
    for (const unsigned rate : RATES) {
        if (!line.setRate(rate))
            continue;
        Heard heard;
        for (uint8_t address = 2; address <= 7; ++address) {
            Bytes question = POWER_INQUIRY;
            question[0] = static_cast<uint8_t>(0x80 + address);
            heard = ask(line, question, std::min(QUICK, limit) / 4);
            found = rate;
            if (!heard.reply.empty())
                return heard.address;
        }
    }
    return 0;
}

void reportAddress(unsigned rate, unsigned address, Report &report) {
    report.add("camera", Verdict::bad,
               "a camera answers at " + std::to_string(rate) + " bit/s, but as address " +
                   std::to_string(address) + "; the library speaks with address 1 alone");
    report.advise(Topic::address, "Set the camera to address 1: by its switch, or by making it the first of "
                                  "its chain; several cameras on one line are not driven.");
}

void reportLoopback(Report &report) {
    report.add(
        "camera", Verdict::bad,
        "loopback: every byte that is sent comes back, and no camera answers; adapter and driver work");
    report.advise(Topic::cable,
                  "The transmit and the receive line are joined: take the bridge or the loopback "
                  "plug off, or look for a short in the cable. A two-wire (RS-485) adapter must "
                  "have its echo switched off.");
}

void reportGarbled(const Impressions &seen, Report &report) {
    report.add("camera", Verdict::bad, "something arrives, but no answer can be read: " + seen.garbled);
    report.advise(Topic::rate,
                  "Set the camera to 9600, 19200 or 38400 bit/s, 8 bits, no parity, 1 stop bit.");
    report.advise(Topic::cable, "Check the levels (RS-232, RS-422 and TTL do not understand each other), the "
                                "common ground, and that nobody else talks on the line.");
    report.advise(Topic::power,
                  "A camera whose supply is too weak restarts or talks rubbish: measure it while "
                  "the lens moves.");
}

void reportSilence(Report &report) {
    report.add("camera", Verdict::bad, "silence: nothing answers at 9600, 19200 or 38400 bit/s");
    report.advise(Topic::rate,
                  "Has the camera another rate than 9600, 19200 and 38400 bit/s? Set it to one of "
                  "them by its switches or its menu.");
    report.advise(Topic::address, "Is its address set to 1? Addresses 2 to 7 were asked too, so it is more "
                                  "likely something else.");
    report.advise(Topic::cable, "Are transmit and receive crossed, is ground connected, are the levels the "
                                "camera's (RS-232, RS-422, TTL)? To prove adapter and cable, bridge the two "
                                "lines at the camera's end: this command must then say \"loopback\".");
    report.advise(Topic::power,
                  "Has the camera its supply? Give it 10 s after switching it on, then run this "
                  "again: it says \"90 38 FF\" when it gets power.");
}

void reportNothing(const Impressions &seen, Report &report) {
    if (!seen.refusedRates.empty()) {
        report.add("rates", Verdict::bad, "the device refuses rates:" + seen.refusedRates + " bit/s");
        report.advise(Topic::device, "Use an adapter whose driver can set these rates.");
    }
    if (seen.echoes > 0)
        reportLoopback(report);
    else if (!seen.garbled.empty())
        reportGarbled(seen, report);
    else
        reportSilence(report);
}

} // namespace

Heard ask(Line &line, const Bytes &question, Milliseconds limit) {
    Bytes before = line.collect(Clock::now());
    const Clock::time_point start = Clock::now();
    Heard heard;
    if (line.send(question)) {
        const Bytes bytes = line.collect(
            start + limit, [&](const Bytes &sofar) { return !understand(sofar, question).reply.empty(); });
        heard = understand(bytes, question);
    }
    heard.ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    heard.others.insert(heard.others.begin(), before.begin(), before.end());
    return heard;
}

bool judgeIdle(const Bytes &bytes, Milliseconds time, Report &report) {
    decode::Splitter splitter(decode::Direction::FromCamera);
    std::vector<decode::Piece> pieces;
    splitter.Feed(decode::Microseconds(0), bytes.data(), bytes.size(), pieces);
    splitter.Flush(pieces);
    size_t noise = 0;
    size_t packets = 0;
    bool expected = true; // reports and notices come unasked by their nature
    std::string words;
    for (const decode::Piece &piece : pieces) {
        const decode::Meaning meaning =
            decode::Explain(decode::Direction::FromCamera, piece.bytes.data(), piece.bytes.size());
        if (piece.sort != decode::Piece::Sort::Packet || meaning.kind == decode::Kind::Debug) {
            noise += piece.bytes.size();
            continue;
        }
        expected = expected && (meaning.kind == decode::Kind::Report || meaning.kind == decode::Kind::Notice);
        if (packets++ < SHOWN_PACKETS)
            words += (words.empty() ? "" : "; ") + hexOf(piece.bytes) + ", " + meaning.text;
    }
    if (bytes.empty())
        report.add("idle line", Verdict::good, "silent for " + seconds(time));
    if (packets > 0)
        report.add("idle line", expected ? Verdict::note : Verdict::bad,
                   count(packets, "packet") + " came unasked: " + words);
    if (noise > 0)
        report.add("idle line", Verdict::bad,
                   "noise: " + count(noise, "byte") + " that belong to no packet: " + hexOf(bytes));
    if (noise > 0)
        report.advise(Topic::cable, "Something disturbs the line: check the common ground, the shield, the "
                                    "length of the cable, open inputs, and that nobody else sends on it.");
    if (!expected)
        report.advise(Topic::cable, "Answers that nobody asked for: is a second program or a second host "
                                    "talking to this camera? Disconnect it.");
    return noise > 0;
}

std::optional<Heard> findCamera(Line &line, Milliseconds limit, Report &report) {
    const Bytes idle = line.setRate(RATES[0]) ? line.collect(Clock::now() + IDLE) : Bytes();
    Impressions seen;
    unsigned rate = 0;
    const std::optional<Heard> heard = askAtEachRate(line, limit, seen, rate);
    unsigned address = heard ? heard->address : 0;
    if (!heard && judgeIdle(idle, IDLE, report) && seen.garbled.empty())
        seen.garbled = "unasked at " + std::to_string(RATES[0]) + " bit/s (" + hexOf(idle) + ")";
    if (!heard && seen.echoes == 0)
        address = askOtherAddresses(line, limit, rate);
    if (address == 0) {
        reportNothing(seen, report);
        return std::nullopt;
    }
    report.rate = rate;
    if (address != 1) {
        reportAddress(rate, address, report);
        return std::nullopt;
    }
    report.add("camera", Verdict::good, "answers at " + std::to_string(rate) + " bit/s");
    return heard;
}

} // namespace tool::doctor
