#include "tool/sim/screen.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <csignal>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace tool {

namespace {

// The other page of the terminal, no wrapping at its edge; and back.
const char ENTER[] = "\x1b[?1049h\x1b[?7l\x1b[2J";
const char LEAVE[] = "\x1b[0m\x1b[?7h\x1b[?1049l";

constexpr int FATAL[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// As found. Read by the handler of fatal signals too, so it stands here and is complete before that is set.
termios found;

// Only what a signal handler may call.
void giveBack() {
    (void)!write(STDOUT_FILENO, LEAVE, sizeof LEAVE - 1);
    tcsetattr(STDIN_FILENO, TCSANOW, &found);
}

void onFatal(int signal) {
    giveBack();
    raise(signal); // the default action is back, SA_RESETHAND
}

// Where a sanitizer reports, it reports.
void handleFatal(void (*handler)(int)) {
    for (const int signal : FATAL) {
        struct sigaction now = {};
        sigaction(signal, nullptr, &now);
        const bool ours = now.sa_handler == onFatal;
        if (now.sa_handler != SIG_DFL && !ours)
            continue;
        struct sigaction wanted = {};
        wanted.sa_handler = handler;
        wanted.sa_flags = SA_RESETHAND | SA_NODEFER;
        sigaction(signal, &wanted, nullptr);
    }
}

std::string rendered(const Row &row, size_t columns, bool colours) {
    std::string text;
    for (const Span &span : row) {
        const std::string part = span.text.substr(0, columns);
        columns -= part.size();
        text += part.empty() ? "" : styled(part, span.style, colours);
    }
    return text;
}

size_t widthOf(const Row &row) {
    size_t width = 0;
    for (const Span &span : row)
        width += span.text.size();
    return width;
}

std::string moveTo(size_t row, size_t column) {
    return "\x1b[" + std::to_string(row) + ";" + std::to_string(column) + "H";
}

} // namespace

bool canDraw() {
    const char *term = std::getenv("TERM");
    return term != nullptr && *term != '\0' && std::strcmp(term, "dumb") != 0 && isatty(STDIN_FILENO) == 1 &&
           isatty(STDOUT_FILENO) == 1 && tcgetpgrp(STDIN_FILENO) == getpgrp();
}

Screen::Screen() : m_colours(stdoutHasColours()) {
    tcgetattr(STDIN_FILENO, &found);
    enter();
}

Screen::~Screen() {
    leave();
}

void Screen::enter() {
    handleFatal(onFatal);
    termios keys = found;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | IEXTEN);
    keys.c_iflag &= ~static_cast<tcflag_t>(IXON);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &keys);
    (void)writeAll(STDOUT_FILENO, ENTER);
    forget();
}

void Screen::leave() {
    giveBack();
    handleFatal(SIG_DFL);
}

void Screen::forget() {
    m_shown.clear();
    m_cursor.clear();
}

void Screen::suspend() {
    leave();
    raise(SIGSTOP);
    tcgetattr(STDIN_FILENO, &found);
    enter();
}

ScreenSize Screen::size() const {
    winsize told = {};
    ScreenSize size;
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &told) == 0 && told.ws_col > 0 && told.ws_row > 0)
        size = {told.ws_col, told.ws_row};
    return size;
}

// Rows that have not changed are not sent again.
void Screen::show(const std::vector<Row> &rows) {
    const ScreenSize now = size();
    std::string text = m_shown.empty() ? "\x1b[2J" : "";
    m_shown.resize(std::max(m_shown.size(), rows.size()));
    for (size_t i = 0; i < m_shown.size() && i < now.rows; ++i) {
        const std::string row = i < rows.size() ? rendered(rows[i], now.columns, m_colours) : "";
        if (row != m_shown[i])
            text += moveTo(i + 1, 1) + "\x1b[0m\x1b[K" +
                    row; // cleared behind a full row, its last character would go
        m_shown[i] = row;
    }
    const size_t column = rows.empty() ? 1 : std::min(widthOf(rows.back()) + 1, now.columns);
    const std::string cursor = moveTo(std::min(rows.size(), now.rows), column);
    if (!text.empty() || cursor != m_cursor)
        (void)writeAll(STDOUT_FILENO, text + cursor);
    m_cursor = cursor;
}

} // namespace tool
