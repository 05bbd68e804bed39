#include "tests/model/plan.h"

#include <iterator>
#include <sstream>
#include <stdexcept>

#include "sim/random.h"
#include "tests/model/calls.h"

namespace model {

namespace {

constexpr const char *CAMERAS[] = {"sony1", "sony3", "sony4", "sony5", "kova1", "kova2"};

class Maker {
  public:
    Maker(uint64_t seed, unsigned steps) : m_dice(seed), m_count(steps) {}

    std::string Camera() { return CAMERAS[m_dice.below(std::size(CAMERAS))]; }

    std::vector<Step> Make(bool kova) {
        while (m_steps.size() < m_count) {
            AddSome(kova);
        }
        m_steps.resize(m_count);
        return m_steps;
    }

  private:
    // A stretch of the plan: mostly calls, now and then something that changes how they go.
    void AddSome(bool kova) {
        switch (m_dice.below(12)) {
        case 0:
        case 1:
            AddFaults(kova);
            break;
        case 2:
            AddRefusal();
            break;
        case 3:
            Between({m_dice.below(2) == 0 ? "updating" : "exporting"}, "free", kova);
            break;
        case 4:
            m_steps.push_back({"restart"});
            break;
        default:
            AddCalls(1 + m_dice.below(8), kova);
            break;
        }
    }

    void AddFaults(bool kova) {
        for (uint64_t left = 1 + m_dice.below(3); left > 0; --left) {
            m_steps.push_back({"fault", 0, Faults()[m_dice.below(Faults().size())]});
            AddCalls(1 + m_dice.below(4), kova);
        }
        m_steps.push_back({"calm"});
    }

    // A profile is refused in the middle, and then offered again.
    void AddRefusal() {
        m_steps.push_back({"refuse-after", static_cast<uint32_t>(m_dice.below(8))});
        m_steps.push_back({ProfileName(m_dice.next()), static_cast<uint32_t>(m_dice.below(4096))});
        m_steps.push_back({"allow"});
        m_steps.push_back({"again"});
    }

    void Between(const Step &begin, const char *end, bool kova) {
        m_steps.push_back(begin);
        AddCalls(1 + m_dice.below(3), kova);
        m_steps.push_back({end});
    }

    void AddCalls(uint64_t count, bool kova) {
        for (; count > 0; --count) {
            m_steps.push_back({CallName(m_dice.next(), kova), static_cast<uint32_t>(m_dice.below(4096))});
        }
    }

    sim::Random m_dice;
    unsigned m_count;
    std::vector<Step> m_steps;
};

bool IsKnown(const std::string &name) {
    for (const char *known :
         {"fault", "calm", "refuse-after", "allow", "updating", "exporting", "free", "restart"}) {
        if (name == known) {
            return true;
        }
    }
    return IsCall(name);
}

Step StepFrom(const std::string &text) {
    const size_t colon = text.find(':');
    Step step = {text.substr(0, colon)};
    if (!IsKnown(step.name)) {
        throw std::invalid_argument("there is no step \"" + text + "\"");
    }
    if (colon != std::string::npos && step.name == "fault") {
        step.fault = text.substr(colon + 1);
    } else if (colon != std::string::npos) {
        step.value = static_cast<uint32_t>(std::stoul(text.substr(colon + 1), nullptr, 16));
    }
    return step;
}

} // namespace

const std::vector<std::string> &Faults() {
    static const std::vector<std::string> faults = {
        "drop-tx=0.05", "drop-tx=0.3",     "drop-rx=0.05", "drop-rx=0.3",     "drop-ff=0.3",
        "dup=0.1",      "flip=0.1",        "split=40",     "merge=100",       "noise=0.5",
        "mute=2",       "mute=9",          "no-ack",       "no-completion=1", "no-completion=0.3",
        "late=2.5",     "late=1",          "reorder",      "wrong-socket=0",  "wrong-socket=7",
        "address=3",    "error=2",         "error=4",      "error=65",        "error-unasked=2",
        "busy",         "late-answer=6.5", "dup-answer",   "power-cut=2",     "standby",
        "rate=19200",   "replug=1",        "hang-up",      "flood",           "length=20",
        "length=16",    "stall=1",         "report"};
    return faults;
}

Plan MakePlan(uint64_t seed, unsigned steps, const std::string &camera) {
    Maker maker(seed, steps);
    Plan plan;
    plan.camera = maker.Camera(); // drawn in any case: the steps are the same then
    if (!camera.empty()) {
        plan.camera = camera;
    }
    plan.steps = maker.Make(plan.camera.compare(0, 4, "kova") == 0);
    return plan;
}

std::string ToLine(const Plan &plan) {
    std::ostringstream line;
    line << plan.camera << std::hex;
    for (const Step &step : plan.steps) {
        line << " " << step.name;
        if (!step.fault.empty()) {
            line << ":" << step.fault;
        } else if (step.value != 0) {
            line << ":" << step.value;
        }
    }
    return line.str();
}

Plan FromLine(const std::string &line) {
    std::istringstream stream(line);
    Plan plan;
    stream >> plan.camera;
    for (std::string text; stream >> text;) {
        plan.steps.push_back(StepFrom(text));
    }
    return plan;
}

} // namespace model
