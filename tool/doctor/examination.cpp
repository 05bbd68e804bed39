#include "tool/doctor/examination.h"

#include <algorithm>
#include <cstdio>

#include "decode/decode.h"

namespace tool::doctor {

namespace {

const Bytes POWER_INQUIRY = {0x81, 0x09, 0x04, 0x00, 0xFF};
const Bytes ZOOM_INQUIRY = {0x81, 0x09, 0x04, 0x47, 0xFF};
const Bytes IDENTITY_INQUIRY = {0x81, 0x09, 0x00, 0x02, 0xFF};
constexpr size_t POWER_ANSWER = 4;
constexpr size_t ZOOM_ANSWER = 7;
constexpr size_t IDENTITY_ANSWER = 10;

/* Of a Kova module. The capability word comes first: it tells in which form the versions are. */
const Bytes CAPABILITY_INQUIRY = {0x81, 0x09, 0x04, 0xAB, 0xFF};
const Bytes KOVA_INQUIRIES[] = {
    {0x71, 0x09, 0x04, 0xB1, 0xFF},       // uImage
    {0x71, 0x09, 0x04, 0xB2, 0xFF},       // program
    {0x81, 0x09, 0x04, 0xB4, 0x03, 0xFF}, // encoder software
    {0x81, 0x09, 0x04, 0xB4, 0x00, 0xFF}, // encoder board
    {0x81, 0x09, 0x04, 0xB4, 0x01, 0xFF}, // sensor board
    {0x81, 0x09, 0x04, 0xB4, 0x02, 0xFF}, // motor board
};
const Bytes EXTENSION_INQUIRY = {0x71, 0x09, 0x04, 0xB5, 0xFF};
constexpr uint8_t EXTENSION_VERSION = 0x1; // in the second lowest nibble of the capability word
constexpr size_t CAPABILITY_ANSWER = 12;
constexpr unsigned MOST_SEGMENTS = 9;
constexpr unsigned KOVA_VENDOR = 0x8026;

constexpr uint8_t POWER_ON = 0x02;
constexpr uint8_t POWER_STANDBY = 0x03;
constexpr uint8_t NOT_EXECUTABLE = 0x41;

constexpr unsigned QUESTIONS = 20;
constexpr unsigned MOST_LOST = 3;
constexpr Milliseconds MEASURING{1500}; // with a slow shutter an answer can take a second
constexpr double SLOW_MS = 150;
constexpr Milliseconds IDLE{300};
constexpr Milliseconds AFTERWARDS{15}; // for an answer that comes twice

std::string milliseconds(double ms) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", ms);
    return text;
}

class Examination {
  public:
    Examination(Line &line, Milliseconds limit, Report &report)
        : m_line(line), m_limit(limit), m_report(report) {}

    void run(const Heard &first);

  private:
    Heard question(const Bytes &packet);
    void judgeEcho(const Heard &first);
    bool judgePower(const Heard &first);
    void judgeNotOn(const Heard &identity);
    void measure(bool on);
    void judgeTimes(const RoundTrips &trips);
    void readVersions(const Heard &identity);
    void readKovaVersions();
    bool version(const Bytes &packet);
    decode::Meaning meaningOf(const Bytes &packet, const Heard &heard);

    Line &m_line;
    Milliseconds m_limit;
    Report &m_report;
    decode::Conversation m_conversation;
    decode::Microseconds m_time{0};
    Bytes m_others; // what came beside the answers
};

Heard Examination::question(const Bytes &packet) {
    Heard heard = ask(m_line, packet, m_limit);
    const Bytes after = m_line.collect(Clock::now() + AFTERWARDS);
    heard.others.insert(heard.others.end(), after.begin(), after.end());
    m_others.insert(m_others.end(), heard.others.begin(), heard.others.end());
    return heard;
}

// What was asked first is judged apart: the bytes in front of it may stem from another rate.
void Examination::run(const Heard &first) {
    judgeEcho(first);
    const bool answered = judgePower(first);
    if (answered && first.reply[2] == POWER_ON) {
        measure(true);
        readVersions(question(IDENTITY_INQUIRY));
    } else if (answered) {
        measure(false);
        judgeNotOn(question(IDENTITY_INQUIRY));
    }
    const Bytes idle = m_line.collect(Clock::now() + IDLE);
    m_others.insert(m_others.end(), idle.begin(), idle.end());
    (void)judgeIdle(m_others, IDLE, m_report);
}

void Examination::judgeEcho(const Heard &first) {
    if (!first.echo)
        return;
    m_report.add("echo", Verdict::bad, "the bytes that are sent come back in front of the answer");
    m_report.advise(Topic::cable,
                    "Switch the echo of the two-wire (RS-485) adapter off: a host takes its own "
                    "bytes for noise of the camera.");
}

bool Examination::judgePower(const Heard &first) {
    if (first.reply.size() == POWER_ANSWER && !first.refused() &&
        (first.reply[2] == POWER_ON || first.reply[2] == POWER_STANDBY)) {
        if (first.reply[2] == POWER_ON)
            m_report.add("power", Verdict::good, "the camera is on");
        return true;
    }
    m_report.add("power", Verdict::bad,
                 "the power inquiry is not answered by on or standby: " +
                     decode::Describe(decode::Direction::FromCamera, first.reply));
    m_report.advise(Topic::cable,
                    "The camera hears, but not what was asked, or what it says is damaged: check "
                    "the common ground and the levels, then whether it speaks VISCA.");
    return false;
}

// A camera that starts up says standby too, and answers nothing else; one in standby refuses.
void Examination::judgeNotOn(const Heard &identity) {
    if (identity.refused() && identity.reply[2] == NOT_EXECUTABLE) {
        m_report.add("power", Verdict::bad, "standby: the camera has its supply, but is switched off");
        m_report.advise(Topic::power, "Switch the camera on (its power command, \"81 01 04 00 02 FF\"): in "
                                      "standby it refuses everything but that.");
        return;
    }
    m_report.add("power", Verdict::bad, "the camera starts up: it does not answer anything else yet");
    m_report.advise(Topic::power, "Wait some seconds and run this again. If it stays so, the camera restarts "
                                  "again and again: measure its supply.");
}

void Examination::measure(bool on) {
    RoundTrips trips;
    std::vector<double> times;
    const Clock::time_point end = Clock::now() + MEASURING;
    for (; trips.asked < QUESTIONS && trips.lost < MOST_LOST && (trips.asked == 0 || Clock::now() < end);
         ++trips.asked) {
        const bool zoom = on && trips.asked % 2 == 1;
        const Heard heard = question(zoom ? ZOOM_INQUIRY : POWER_INQUIRY);
        const bool good = heard.reply.size() == (zoom ? ZOOM_ANSWER : POWER_ANSWER) && !heard.refused();
        if (good)
            times.push_back(heard.ms);
        else
            ++trips.lost;
    }
    std::sort(times.begin(), times.end());
    if (!times.empty()) {
        trips.leastMs = times.front();
        trips.medianMs = times[times.size() / 2];
        trips.mostMs = times.back();
    }
    m_report.roundTrips = trips;
    judgeTimes(trips);
}

void Examination::judgeTimes(const RoundTrips &trips) {
    const double line = (POWER_INQUIRY.size() + POWER_ANSWER) * 10 * 1000.0 / m_report.rate.value_or(9600);
    const std::string times = std::to_string(trips.asked) + " inquiries, least " +
                              milliseconds(trips.leastMs) + ", median " + milliseconds(trips.medianMs) +
                              ", most " + milliseconds(trips.mostMs) + "; the bytes alone take " +
                              milliseconds(line);
    const bool slow = trips.medianMs > SLOW_MS;
    if (trips.asked > trips.lost)
        m_report.add("round trip", slow ? Verdict::note : Verdict::good, times);
    if (slow)
        m_report.advise(Topic::afterwards, "Answers are slow: a slow shutter stretches the camera's picture "
                                           "period, and it acts once a period.");
    if (trips.lost == 0)
        return;
    m_report.add("answers", Verdict::bad,
                 std::to_string(trips.lost) + " of " + std::to_string(trips.asked) +
                     " inquiries had no answer, a damaged one or a refusal");
    m_report.advise(Topic::cable, "Answers get lost: check the common ground, the shield, the plugs and the "
                                  "length of the cable, and that no second host is on the line.");
    m_report.advise(Topic::power,
                    "A camera that restarts loses answers as well: measure its supply while the "
                    "lens moves.");
}

// In words, as the answer to its question.
decode::Meaning Examination::meaningOf(const Bytes &packet, const Heard &heard) {
    m_time += decode::Microseconds(1);
    (void)m_conversation.Next(decode::Direction::ToCamera, m_time, packet);
    return m_conversation.Next(decode::Direction::FromCamera, m_time, heard.reply);
}

void Examination::readVersions(const Heard &identity) {
    if (identity.refused() || identity.reply.size() != IDENTITY_ANSWER) {
        m_report.add("version", Verdict::note, "the camera does not tell what it is");
        return;
    }
    const std::string words = meaningOf(IDENTITY_INQUIRY, identity).text;
    m_report.add("version", Verdict::good, words);
    m_report.versions.push_back(words);
    if ((identity.reply[2] << 8U | identity.reply[3]) == KOVA_VENDOR)
        readKovaVersions();
}

void Examination::readKovaVersions() {
    const Heard capability = question(CAPABILITY_INQUIRY);
    const bool told = capability.reply.size() == CAPABILITY_ANSWER && !capability.refused();
    if (told)
        (void)meaningOf(CAPABILITY_INQUIRY, capability);
    bool complete = told;
    for (const Bytes &inquiry : KOVA_INQUIRIES)
        complete = version(inquiry) && complete;
    if (told && (capability.reply[CAPABILITY_ANSWER - 3] & EXTENSION_VERSION) != 0)
        complete = version(EXTENSION_INQUIRY) && complete;
    if (!complete)
        m_report.add("version", Verdict::note, "not all versions of the module could be read");
}

// The last segment's words hold the whole version.
bool Examination::version(const Bytes &packet) {
    Heard heard = question(packet);
    unsigned segments = 0;
    std::string words;
    for (unsigned i = 0; !heard.reply.empty() && !heard.refused(); ++i) {
        const decode::Meaning meaning = meaningOf(packet, heard);
        words = meaning.text;
        if (meaning.row != nullptr && meaning.row->form == decode::Form::Count)
            segments = std::min(MOST_SEGMENTS, static_cast<unsigned>(heard.reply[5]));
        if (i >= segments)
            break;
        heard = question(packet);
    }
    if (heard.reply.empty() || heard.refused())
        return false;
    words.resize(std::min(words.size(), words.find(", segment ")));
    m_report.add("version", Verdict::good, words);
    m_report.versions.push_back(words);
    return true;
}

} // namespace

void examine(Line &line, const Heard &first, Milliseconds limit, Report &report) {
    Examination(line, limit, report).run(first);
}

} // namespace tool::doctor
