#include "tool/sim/view.h"

#include <cerrno>

#include <unistd.h>

#include "tool/sim/dialog.h"

namespace tool {

namespace {

constexpr int REFRESH_MS = 100;
constexpr std::chrono::seconds CHANGE_SHOWN{2};
constexpr size_t LONGEST_LINE = 1000;

constexpr char CTRL_D = 'D' - '@';
constexpr char CTRL_L = 'L' - '@';
constexpr char CTRL_U = 'U' - '@';
constexpr char BACKSPACE = 'H' - '@';
constexpr char DELETE = '\x7f';
constexpr char ESCAPE = '\x1b';

} // namespace

sim::Trace View::traceFor(const std::string &, size_t) {
    m_recorders.emplace_back(m_start);
    return [&recorder = m_recorders.back()](const sim::TraceEvent &event) { recorder.record(event); };
}

void View::begin(Fleet &fleet) {
    m_fleet = &fleet;
    m_panel.cameras.resize(fleet.size());
    m_panel.packets = [this](size_t count) { return m_recorders[m_panel.chosen].last(count); };
    m_screen = std::make_unique<Screen>();
}

int View::input() const {
    return STDIN_FILENO;
}

int View::limitMs() const {
    return REFRESH_MS;
}

void View::refresh() {
    for (size_t i = 0; i < m_fleet->size(); ++i) {
        const sim::State state = m_fleet->camera(i).state();
        if (i == m_panel.chosen)
            noteChanges(state);
        m_panel.cameras[i] = {m_fleet->name(i), m_fleet->camera(i).path(), state};
    }
    m_screen->show(drawPanel(m_panel, m_screen->size()));
}

void View::noteChanges(const sim::State &state) {
    const auto now = sim::Clock::now();
    for (const auto &[name, value] : state.settings) {
        const auto before = m_settings.find(name);
        if (before != m_settings.end() && before->second != value)
            m_changes[name] = now;
    }
    m_settings = state.settings;
    m_panel.changed.clear();
    for (const auto &[name, time] : m_changes) {
        if (now - time < CHANGE_SHOWN)
            m_panel.changed.insert(name);
    }
}

void View::read() {
    char bytes[256];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN))
        m_over = true; // the terminal is gone
    for (ssize_t i = 0; i < count; ++i) {
        if (m_escape.empty() && bytes[i] != ESCAPE)
            key(bytes[i]);
        else
            escape(bytes[i]);
    }
}

void View::key(char c) {
    if (c == '\n' || c == '\r')
        submit();
    else if (c == '\t')
        choose(1);
    else if (c == CTRL_U)
        m_panel.typed.clear();
    else if (c == CTRL_L)
        m_screen->forget();
    else if (c == CTRL_D)
        m_over = m_over || m_panel.typed.empty();
    else if ((c == BACKSPACE || c == DELETE) && !m_panel.typed.empty())
        m_panel.typed.pop_back();
    else if (c >= ' ' && c <= '~' && m_panel.typed.size() < LONGEST_LINE)
        m_panel.typed += c;
}

// "ESC [ A" is up, "ESC [ B" down, "ESC [ Z" Shift-Tab; such keys end with a letter or '~'.
void View::escape(char c) {
    if (c == ESCAPE) {
        m_escape = c;
        return;
    }
    m_escape += c;
    if (m_escape.size() == 2 && (c == '[' || c == 'O'))
        return;
    if (m_escape.size() > 2 && c >= ' ' && c < '@')
        return;
    if (c == 'A' || c == 'Z')
        choose(-1);
    else if (c == 'B')
        choose(1);
    m_escape.clear();
}

void View::choose(long step) {
    const long count = static_cast<long>(m_fleet->size());
    m_panel.chosen = static_cast<size_t>((static_cast<long>(m_panel.chosen) + step + count) % count);
    m_settings.clear();
    m_changes.clear();
}

void View::submit() {
    const DialogReply reply = obey(*m_fleet, m_panel.typed, m_panel.chosen);
    m_over = m_over || reply.quit;
    m_panel.answer = asText(reply);
    m_panel.typed.clear();
}

} // namespace tool
