#include "tool/ctl/screen.h"

#include <csignal>
#include <unistd.h>

#include "tool/complain.h"
#include "tool/console.h"

namespace tool::ctl {

namespace {

constexpr std::chrono::seconds LINE_EVERY{5};

} // namespace

Screen::Screen(Trace *trace, bool json)
    : m_trace(trace), m_json(json), m_colours(!json && stdoutHasColours()),
      m_terminal(isatty(STDERR_FILENO) == 1) {}

void Screen::line(const std::string &text) {
    if (m_trace != nullptr)
        return m_trace->line(text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    clearProgress();
    if (!writeAll(STDOUT_FILENO, text + "\n"))
        kill(getpid(), SIGTERM); // nobody reads any more: end as if told to, a drive is stopped then
}

void Screen::note(const std::string &text) {
    if (m_trace != nullptr)
        return m_trace->line("viscacam: " + text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    clearProgress();
    complain(text);
}

void Screen::progress(const std::string &text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Clock::time_point now = Clock::now();
    if (m_trace == nullptr && m_terminal) {
        (void)writeAll(STDERR_FILENO, "\r\x1b[K" + text);
        m_progressShown = true;
        return;
    }
    if (m_progressAt == Clock::time_point())
        m_progressAt = now;
    if (now - m_progressAt < LINE_EVERY)
        return;
    m_progressAt = now;
    if (m_trace != nullptr)
        m_trace->line("viscacam: " + text);
    else
        complain(text);
}

void Screen::endProgress() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    clearProgress();
    m_progressAt = Clock::time_point();
}

void Screen::clearProgress() {
    if (m_progressShown)
        (void)writeAll(STDERR_FILENO, "\r\x1b[K");
    m_progressShown = false;
}

void Screen::settle() {
    if (m_trace != nullptr)
        m_trace->settle();
}

} // namespace tool::ctl
