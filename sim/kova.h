#ifndef VISCACAM_SIM_KOVA_H
#define VISCACAM_SIM_KOVA_H

#include "sim/cameras.h"
#include "sim/command_table.h"
#include "sim/settings.h"

namespace sim {

constexpr uint8_t KOVA_HEADER = 0x71; // of the three version inquiries

constexpr uint32_t ABILITY_SEGMENTED_VERSION = 0x04;
constexpr uint32_t ABILITY_TURNS_AT_POWER_ON = 0x08; // mirror and flip
constexpr uint32_t ABILITY_EXTENSION_VERSION = 0x10;

/*
 * A version text that is told in a series of answers: first the count of segments as four nibbles, then one
 * segment a time. The text is coded as entries: a digit as itself, a letter as 10, tens and units of its
 * distance from 'A', a separator as 11 and 0 for '-' or 1 for '_'.
 *
 * The next inquiry begins a new series when the last segment has been told, after a power-up or reset, and
 * when nobody has asked for longer than the time that a host waits for an answer. So a lost answer costs one
 * segment, and a series that a host gave up is not gone on with by the next.
 */
class Segments {
  public:
    explicit Segments(const std::string &text);
    Outcome tell(Clock::time_point now, Clock::duration memory);
    void restart() { m_told = 0; }

  private:
    std::vector<Bytes> m_segments;
    size_t m_told = 0; /* answers of this series, the count included */
    Clock::time_point m_last{};
};

/* What the module sees: light that comes and goes, and an edge to focus on. */
class Scene {
  public:
    Scene(Clock::time_point begin, double timeScale, bool moves)
        : m_begin(begin), m_scale(timeScale), m_moves(moves) {}
    unsigned luma(Clock::time_point now) const;
    uint32_t focusValue(Clock::time_point now, unsigned focus) const;

  private:
    Clock::time_point m_begin;
    double m_scale;
    bool m_moves;
};

/* What a Kova module has beside its settings. A block has none of it, and no ability. */
struct Kova {
    Kova(const Options &options, const Traits &traits, Clock::time_point now);
    uint32_t ability() const { return m_ability; }
    bool has(uint32_t ability) const { return (m_ability & ability) == ability; }
    void restart();
    void describe(State &state, Clock::time_point now) const;

    /* Another version, by the kind of its file. A module can only run one that it can tell: a uimage's
       is 1.23 or 12.3, a program's and a patch's a text in segments, or D012SP03 or eight digits in the old
       form. */
    bool canRun(const std::string &kind, const std::string &version) const;
    void run(const std::string &kind, const std::string &version);

    const KovaOptions &options;
    std::array<uint8_t, 4> uimageVersion;
    std::array<uint8_t, 4> oldProgramVersion;
    Segments program;
    Segments extension;
    Scene scene;
    uint32_t clock = 0;

  private:
    bool m_present;
    uint32_t m_ability;
};

void addKovaSettings(Settings &settings);
/* kova_versions.cpp */
std::vector<Row> kovaVersionRows();
/* kova_services.cpp: clock, sensor, filter, scene mode, one-push focus, what the picture measures */
std::vector<Row> kovaServiceRows();
/* A text that can be told in segments. */
bool isVersionText(const std::string &text);
/* lens_reports.cpp */
std::vector<Row> lensReportRows();

} // namespace sim

#endif
