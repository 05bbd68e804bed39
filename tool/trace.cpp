#include "tool/trace.h"

#include <algorithm>
#include <cstdio>

#include <csignal>
#include <unistd.h>

#include "decode/trace.h"
#include "viscacam_host.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds HOLD{50};
constexpr size_t SOURCE_COLUMNS = 9;
constexpr size_t BYTE_COLUMNS = 9; // the longest packet of the lens with one position

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

const char *levelName(uint32_t level) {
    switch (level) {
    case VISCA_LOG_ERROR:
        return "ERROR";
    case VISCA_LOG_WARN:
        return "WARN";
    case VISCA_LOG_INFO:
        return "INFO";
    default:
        return "DEBUG";
    }
}

Style styleOfLevel(uint32_t level) {
    if (level <= VISCA_LOG_ERROR)
        return Style::bad;
    return level == VISCA_LOG_WARN ? Style::warning : Style::dim;
}

// Whatever came from a line or a device name: one line of printable text.
std::string printable(std::string text) {
    for (char &c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
            c = '?';
    }
    return text;
}

} // namespace

Trace::Trace() {
    m_printer = std::thread(&Trace::printLoop, this);
}

Trace::~Trace() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    m_printer.join();
}

void Trace::packet(Clock::time_point time, decode::Direction direction, const decode::Bytes &bytes,
                   const std::string &note, const std::string &source) {
    add(time, {Entry::Kind::packet, note, direction, bytes, source});
}

void Trace::log(uint32_t level, const std::string &message) {
    const Clock::time_point now = Clock::now();
    const std::string text = padded(levelName(level), 5) + "  " + printable(message);
    add(now, {Entry::Kind::text, stamp(now) + "  " + styled(text, styleOfLevel(level), m_colours)});
}

void Trace::remark(Clock::time_point time, const std::string &text) {
    add(time, {Entry::Kind::text, stamp(time) + "  " + styled(printable(text), Style::dim, m_colours)});
}

void Trace::heading(const std::string &text) {
    add(Clock::now(), {Entry::Kind::text, "\n" + styled(text, Style::heading, m_colours)});
}

void Trace::line(const std::string &text, Clock::time_point time) {
    add(time, {Entry::Kind::text, text});
}

void Trace::add(Clock::time_point time, Entry entry) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_held.emplace(time, std::move(entry));
    }
    m_changed.notify_all();
}

void Trace::settle() {
    std::unique_lock<std::mutex> lock(m_mutex);
    const Clock::time_point now = Clock::now();
    m_changed.wait(lock, [&] { return !m_printing && (m_held.empty() || m_held.begin()->first > now); });
}

std::string Trace::stamp(Clock::time_point time) const {
    char text[32];
    const std::chrono::duration<double, std::milli> since = time - m_start;
    std::snprintf(text, sizeof text, "%9.1f ms", std::max(since.count(), 0.0));
    return text;
}

std::string Trace::renderedPacket(Clock::time_point time, const Entry &entry) {
    // A report that came later than it should have is put into words as if it were new.
    const auto since = std::chrono::duration_cast<decode::Microseconds>(time - m_start);
    m_latest = std::max(m_latest, since);
    const decode::Meaning meaning =
        m_conversations[entry.source].Next(entry.direction, m_latest, entry.bytes);
    const std::string note = entry.text.empty() ? "" : " [" + printable(entry.text) + "]";
    const bool trouble =
        meaning.surprise || meaning.kind == decode::Kind::Error || meaning.kind == decode::Kind::Noise;
    const std::string words = styled(meaning.text + note, trouble ? Style::warning : Style::plain, m_colours);
    const std::string source = entry.source.empty() ? "" : padded(entry.source, SOURCE_COLUMNS) + "  ";
    return source + decode::TraceLine(since, entry.direction, entry.bytes.data(), entry.bytes.size(), words,
                                      BYTE_COLUMNS);
}

std::string Trace::rendered(Clock::time_point time, const Entry &entry) {
    return (entry.kind == Entry::Kind::packet ? renderedPacket(time, entry) : entry.text) + "\n";
}

void Trace::printLoop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_ending || !m_held.empty(); });
        if (m_held.empty())
            return;
        const Clock::time_point due = m_held.begin()->first + HOLD;
        if (!m_ending && Clock::now() < due) {
            m_changed.wait_until(lock, due);
            continue;
        }
        const auto entry = m_held.extract(m_held.begin());
        m_printing = true;
        lock.unlock();
        print(rendered(entry.key(), entry.mapped()));
        lock.lock();
        m_printing = false;
        m_changed.notify_all();
    }
}

void Trace::print(const std::string &text) {
    if (!m_outputLost && !writeAll(STDOUT_FILENO, text)) {
        m_outputLost = true;
        kill(getpid(), SIGTERM);
    }
}

} // namespace tool
