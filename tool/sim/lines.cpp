#include "tool/sim/lines.h"

#include <cerrno>

#include <unistd.h>

#include "tool/sim/dialog.h"
#include "tool/trace_sources.h"

namespace tool {

namespace {

constexpr size_t LONGEST_LINE = 4096;

// What is typed while a shell has started us in the background is meant for the shell.
bool isTypedForOthers() {
    return isatty(STDIN_FILENO) == 1 && tcgetpgrp(STDIN_FILENO) != getpgrp();
}

} // namespace

Lines::Lines(const SimOptions &options)
    : m_trace(options.trace), m_several(options.cameras.size() > 1), m_untilEof(options.untilEof),
      m_input(isTypedForOthers() ? -1 : STDIN_FILENO) {}

sim::Trace Lines::traceFor(const std::string &name, size_t) {
    return m_trace ? cameraTrace(m_output, m_several ? name : "") : sim::Trace();
}

void Lines::begin(Fleet &fleet) {
    m_fleet = &fleet;
    for (size_t i = 0; i < fleet.size(); ++i)
        m_output.line(fleet.greeting(i));
}

void Lines::read() {
    char bytes[512];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count <= 0) {
        m_input = -1;
        m_over = m_over || m_untilEof;
        return;
    }
    m_text.append(bytes, static_cast<size_t>(count));
    for (size_t end = m_text.find('\n'); end != std::string::npos; end = m_text.find('\n')) {
        line(m_text.substr(0, end));
        m_text.erase(0, end + 1);
    }
    if (m_text.size() > LONGEST_LINE)
        m_text.clear();
}

void Lines::line(const std::string &text) {
    const DialogReply reply = obey(*m_fleet, text);
    m_over = m_over || reply.quit;
    const std::string answer = asText(reply);
    if (!answer.empty())
        m_output.line(answer);
}

void Lines::showState() {
    for (size_t i = 0; i < m_fleet->size(); ++i)
        m_output.line(stateLine(*m_fleet, i));
}

} // namespace tool
