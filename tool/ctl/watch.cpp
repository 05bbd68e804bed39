#include "tool/ctl/watch.h"

#include <algorithm>
#include <cstdio>

#include "tool/module_types.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

using Milli = std::chrono::duration<double, std::milli>;

struct Thing {
    const char *name;
    bool kova;
    bool hex;
    uint32_t (*read)(int64_t &value);
};

const Thing THINGS[] = {
    {"zoom", false, true,
     [](int64_t &value) {
         uint32_t position = 0;
         const uint32_t result = VISCA_GetZoomPos(&position);
         value = position;
         return result;
     }},
    {"focus", false, true,
     [](int64_t &value) {
         int16_t position = 0;
         const uint32_t result = VISCA_GetFocusPos(&position);
         value = static_cast<uint16_t>(position);
         return result;
     }},
    {"gain", false, false,
     [](int64_t &value) {
         uint32_t gain = 0;
         const uint32_t result = VISCA_GetGain(0, &gain);
         value = gain;
         return result;
     }},
    {"luma", true, false,
     [](int64_t &value) {
         int32_t luma = 0;
         const uint32_t result = VISCA_KOVA_GetCurLuma(0, &luma);
         value = luma;
         return result;
     }},
    {"focus-value", true, false,
     [](int64_t &value) {
         int32_t sharpness = 0;
         const uint32_t result = KovaGetImageFocusValue(0, &sharpness);
         value = sharpness;
         return result;
     }},
    {"temperature", true, false,
     [](int64_t &value) {
         int32_t degrees = 0;
         const uint32_t result = VISCA_KOVA_GetTemperature(0, &degrees);
         value = degrees;
         return result;
     }},
};

const Thing &findThing(const std::string &name) {
    return *std::find_if(std::begin(THINGS), std::end(THINGS),
                         [&](const Thing &thing) { return thing.name == name; });
}

/* What was asked, and what came of it. */
class Statistics {
  public:
    void add(const Job::Answered &answered) {
        ++m_asked;
        m_lost += answered.lost ? 1 : 0;
        m_shifted += answered.shifted ? 1 : 0;
        m_refused += !answered.trouble.empty() && !answered.lost && !answered.shifted ? 1 : 0;
        if (answered.trouble.empty())
            addTime(Milli(answered.roundTrip).count());
    }
    void addSkipped(int64_t rounds) { m_skipped += rounds; }
    bool allAnswered() const { return m_good == m_asked; }
    std::string sum() const {
        char text[160];
        std::snprintf(text, sizeof text,
                      "%ld asked, %ld answered, %ld lost (%.1f %%), %ld refused, %ld shifted", m_asked,
                      m_good, m_lost,
                      m_asked == 0 ? 0 : 100.0 * static_cast<double>(m_lost) / static_cast<double>(m_asked),
                      m_refused, m_shifted);
        return text;
    }
    std::string times() const {
        char text[128];
        std::snprintf(text, sizeof text, "round trip %.1f / %.1f / %.1f ms (least / mean / most)", m_least,
                      mean(), m_most);
        return text;
    }
    void report(Job &job) const {
        job.number("asked", m_asked);
        job.number("answered", m_good);
        job.number("lost", m_lost);
        job.number("refused", m_refused);
        job.number("shifted", m_shifted);
        job.number("rounds-skipped", m_skipped);
        job.decimal("least-ms", m_least);
        job.decimal("mean-ms", mean());
        job.decimal("most-ms", m_most);
    }

  private:
    void addTime(double time) {
        m_least = m_good == 0 ? time : std::min(m_least, time);
        m_most = std::max(m_most, time);
        m_total += time;
        ++m_good;
    }
    double mean() const { return m_good == 0 ? 0 : m_total / static_cast<double>(m_good); }

    long m_asked = 0;
    long m_good = 0;
    long m_lost = 0;
    long m_refused = 0;
    long m_shifted = 0;
    int64_t m_skipped = 0;
    double m_least = 0;
    double m_most = 0;
    double m_total = 0;
};

std::string shownValue(const Thing &thing, const Job::Answered &answered, int64_t value) {
    if (answered.lost)
        return "lost";
    if (answered.shifted)
        return "shifted";
    if (!answered.trouble.empty())
        return "refused";
    return thing.hex ? inHex(static_cast<uint64_t>(value)) : std::to_string(value);
}

/* One round: a line, or an object. */
class Round {
  public:
    explicit Round(double seconds) {
        char text[32];
        std::snprintf(text, sizeof text, "%8.2f s", seconds);
        m_line = text;
        m_fields.push_back({"seconds", seconds, ""});
    }
    void add(const Thing &thing, const Job::Answered &answered, int64_t value) {
        m_line += std::string("  ") + thing.name + " " + shownValue(thing, answered, value);
        if (answered.trouble.empty())
            m_fields.push_back({thing.name, value, ""});
    }
    void print(Screen &screen) const { screen.line(screen.json() ? jsonOf(m_fields) : m_line); }

  private:
    std::string m_line;
    std::vector<Field> m_fields;
};

void askRound(Job &job, const WatchOptions &options, Clock::time_point start, Statistics &statistics) {
    job.bench().follower.begin(); // what was followed before is not needed any more
    Round round(std::chrono::duration<double>(Clock::now() - start).count());
    for (const std::string &name : options.things) {
        const Thing &thing = findThing(name);
        int64_t value = 0;
        const Job::Answered answered = job.tryToAsk([&] { return thing.read(value); });
        statistics.add(answered);
        round.add(thing, answered, value);
    }
    round.print(job.bench().screen);
}

// Returns false at a Ctrl-C.
bool rounds(Job &job, const WatchOptions &options, Statistics &statistics) {
    Interrupt &interrupt = job.bench().interrupt;
    const Interrupt::Scope breakable(interrupt);
    const Clock::time_point start = Clock::now();
    Clock::time_point due = start;
    for (int64_t i = 0; options.count == 0 || i < options.count; ++i) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
        if (interrupt.wait(std::max(left, std::chrono::milliseconds(0))))
            return false;
        askRound(job, options, start, statistics);
        due += options.every;
        const int64_t missed = std::max<int64_t>((Clock::now() - due) / options.every, 0);
        statistics.addSkipped(missed); // a slow answer does not lead to a burst
        due += options.every * missed;
    }
    return true;
}

} // namespace

Domain watchableThings(uint32_t moduleType) {
    std::vector<Choice> choices;
    Words missing;
    for (const Thing &thing : THINGS)
        if (!thing.kova || moduleType == 0 || isKova(moduleType))
            choices.push_back(
                {thing.name, static_cast<int64_t>(1000 + choices.size())}); // no number is meant
        else
            missing.push_back(thing.name);
    return Domain::choice(choices).without(missing, "only a Kova module measures it");
}

void watch(Job &job, const WatchOptions &options) {
    Statistics statistics;
    const bool complete = rounds(job, options, statistics);
    if (job.bench().screen.json()) {
        statistics.report(job);
    } else {
        job.line(statistics.sum());
        job.line(statistics.times());
    }
    if (!complete && options.count != 0)
        throw Interrupted();
    if (!statistics.allAnswered())
        job.fail("not everything was answered");
}

} // namespace tool::ctl
