#include "tool/console.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace tool {

namespace {

const char *codeOf(Style style) {
    switch (style) {
    case Style::heading:
        return "\x1b[1m";
    case Style::dim:
        return "\x1b[2m";
    case Style::good:
        return "\x1b[32m";
    case Style::warning:
        return "\x1b[33m";
    case Style::bad:
        return "\x1b[31m";
    case Style::plain:
        break;
    }
    return "";
}

// stdout may have been made non-blocking by whoever shares it.
bool waitWritable(int fd) {
    pollfd entry = {fd, POLLOUT, 0};
    return poll(&entry, 1, -1) == 1 || errno == EINTR;
}

} // namespace

bool writeAll(int fd, const std::string &text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written >= 0)
            done += static_cast<size_t>(written);
        else if (errno == EAGAIN ? !waitWritable(fd) : errno != EINTR)
            return false;
    }
    return true;
}

bool stdoutHasColours() {
    const char *term = std::getenv("TERM");
    const bool capable = term != nullptr && *term != '\0' && std::strcmp(term, "dumb") != 0;
    const char *refused = std::getenv("NO_COLOR");
    return capable && (refused == nullptr || *refused == '\0') && isatty(STDOUT_FILENO) == 1;
}

std::string styled(const std::string &text, Style style, bool colours) {
    return colours && style != Style::plain ? codeOf(style) + text + "\x1b[0m" : text;
}

} // namespace tool
