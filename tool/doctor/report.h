#ifndef VISCACAM_TOOL_DOCTOR_REPORT_H
#define VISCACAM_TOOL_DOCTOR_REPORT_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool::doctor {

enum class Verdict {
    good,
    note, /* works, but could be better, or is worth knowing */
    bad,  /* in the way of working with the camera */
};

const char *nameOf(Verdict verdict); /* "ok", "note", "bad" */

/* What a piece of advice is about: the order in which an engineer goes through it. */
enum class Topic { device, rate, address, cable, power, afterwards };

struct Finding {
    std::string check; /* "device", "round trip" */
    Verdict verdict;
    std::string text;
};

struct RoundTrips {
    unsigned asked = 0;
    unsigned lost = 0;
    double leastMs = 0;
    double medianMs = 0;
    double mostMs = 0;
};

/* What was found, and what to do about it. */
class Report {
  public:
    /* device: as the user named it. onFinding: called for each finding as it is made. */
    Report(const std::string &device, std::function<void(const Finding &)> onFinding)
        : m_device(device), m_onFinding(std::move(onFinding)) {}

    void add(const std::string &check, Verdict verdict, const std::string &text);
    void advise(Topic topic, const std::string &text);

    std::optional<unsigned> rate; /* bit/s, at which the camera answers */
    std::optional<RoundTrips> roundTrips;
    std::vector<std::string> versions;

    const std::string &device() const { return m_device; }
    bool healthy() const;
    const std::vector<Finding> &findings() const { return m_findings; }
    /* What to do, in order; when there is nothing to do, that. */
    std::vector<std::string> advice() const;
    /* A finding as a line, and what stands below them all. */
    static std::string asLine(const Finding &finding, bool colours);
    std::string closing(bool colours) const;

  private:
    struct Advice {
        Topic topic;
        std::string text;
    };

    std::string m_device;
    std::function<void(const Finding &)> m_onFinding;
    std::vector<Finding> m_findings;
    std::vector<Advice> m_advice;
};

/* Everything as one object on one line, without its newline. */
std::string asJson(const Report &report);

} // namespace tool::doctor

#endif
