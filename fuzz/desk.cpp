#include "fuzz/desk.h"

#include "fuzz/law.h"
#include "sim/state_json.h"

#include <algorithm>
#include <climits>
#include <iterator>

namespace fuzz {

namespace {

constexpr uint8_t POWER_INQUIRY[] = {0x81, 0x09, 0x04, 0x00, 0xFF};
constexpr std::chrono::milliseconds RECOVERY{10000}; // boot included
constexpr sim::Clock::time_point BEGIN{std::chrono::hours(1)};

sim::Options Traced(sim::Options options) {
    TheCable() = Cable();
    options.trace = [](const sim::TraceEvent &) {}; // the diary is kept only where somebody reads it
    return options;
}

void CheckSetting(const sim::State &state, const char *name, int least, int most) {
    const auto setting = state.settings.find(name);
    if (setting != state.settings.end())
        LAW(setting->second >= least && setting->second <= most);
}

} // namespace

Desk::Desk(sim::Options options) : m_now(BEGIN), m_camera(Traced(std::move(options)), m_now) {}

void Desk::Send(Span bytes) {
    TheCable().to_camera = bytes;
    m_camera.pass(m_now);
}

unsigned long Desk::Pass(std::chrono::milliseconds time, unsigned long most) {
    const sim::Clock::time_point end = m_now + time;
    unsigned long passes = 0;
    for (auto next = m_camera.next(); next && *next <= end && passes < most; next = m_camera.next()) {
        m_now = std::max(m_now, *next);
        m_camera.pass(m_now);
        ++passes;
    }
    m_now = end;
    return passes;
}

bool IsLine(const std::string &text) {
    return !text.empty() && text.find_first_of("\r\n") == std::string::npos;
}

void CheckState(const sim::State &state) {
    LAW(state.zoom <= 0x7AC0);
    LAW(state.focus >= 0x1000 && state.focus <= 0xF000);
    CheckSetting(state, "shutter", 0, 0x15);
    CheckSetting(state, "iris", 0, 0x11);
    CheckSetting(state, "gain", 0, 100);
    CheckSetting(state, "expCompLevel", 0, 0x0E);
    CheckSetting(state, "aperture", 0, 15);
    CheckSetting(state, "wbMode", 0, 8);
    CheckSetting(state, "redGain", 0, 255);
    CheckSetting(state, "blueGain", 0, 255);
    CheckSetting(state, "shutterValue", 0, 65535);
    CheckSetting(state, "domeType", 0, 4);
    for (const auto &[number, value] : state.registers)
        LAW(number < 0x80 && value > 0 && value <= 0xFF);
    const std::string json = sim::toJson(state);
    LAW(IsLine(json) && json.front() == '{' && json.back() == '}');
}

void CheckAlive(Desk &desk) {
    desk.Send({POWER_INQUIRY + 4, 1}); // whatever packet was under way is over
    (void)desk.Pass(RECOVERY, ULONG_MAX);
    TheCable().to_host.clear();
    desk.Send({POWER_INQUIRY, sizeof(POWER_INQUIRY)});
    (void)desk.Pass(RECOVERY, ULONG_MAX);
    const std::vector<uint8_t> &said = TheCable().to_host;
    const sim::Power power = desk.State().power;
    LAW(power == sim::Power::on || power == sim::Power::standby);
    const uint8_t answer[] = {0x90, 0x50, static_cast<uint8_t>(power == sim::Power::on ? 2 : 3), 0xFF};
    LAW(std::search(said.begin(), said.end(), std::begin(answer), std::end(answer)) != said.end());
}

} // namespace fuzz
