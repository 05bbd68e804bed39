#include "tool/doctor/line.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

namespace tool::doctor {

namespace {

constexpr std::chrono::milliseconds SEND_LIMIT{1000};

struct Rate {
    unsigned rate;
    speed_t code;
};
constexpr Rate RATES[] = {{9600, B9600}, {19200, B19200}, {38400, B38400}};

std::string openTrouble(int error) {
    switch (error) {
    case EBUSY:
        return "another program has it open for itself alone";
    case EIO:
    case ENXIO:
    case ENODEV:
        return "there is no hardware behind it";
    default:
        return std::string("it cannot be opened: ") + std::strerror(error);
    }
}

int openAlone(const std::string &path) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        throw LineTrouble(openTrouble(errno));
    std::string trouble;
    if (isatty(fd) == 0)
        trouble = errno == EIO ? openTrouble(EIO) : "it is a character device, but not a serial one";
    else if (flock(fd, LOCK_EX | LOCK_NB) != 0)
        trouble = "another program has locked it";
    if (trouble.empty())
        return fd;
    close(fd);
    throw LineTrouble(trouble);
}

} // namespace

Line::Line(const std::string &path, int signalFd) : m_fd(openAlone(path)), m_signalFd(signalFd) {
    if (tcgetattr(m_fd, &m_found) == 0)
        return;
    const std::string trouble = openTrouble(errno);
    close(m_fd);
    throw LineTrouble(trouble);
}

Line::~Line() {
    tcsetattr(m_fd, TCSANOW, &m_found);
    close(m_fd);
}

// tcsetattr() succeeds when it could do any part of what it was asked for, so the rate is read back.
bool Line::setRate(unsigned rate) {
    const auto known = std::find_if(std::begin(RATES), std::end(RATES),
                                    [rate](const Rate &entry) { return entry.rate == rate; });
    termios wanted = m_found;
    cfmakeraw(&wanted);
    wanted.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    wanted.c_cflag |= CLOCAL | CREAD;
    wanted.c_cc[VMIN] = 1;
    wanted.c_cc[VTIME] = 0;
    cfsetspeed(&wanted, known->code);
    return tcsetattr(m_fd, TCSADRAIN, &wanted) == 0 && tcgetattr(m_fd, &wanted) == 0 &&
           cfgetospeed(&wanted) == known->code;
}

bool Line::send(const Bytes &bytes) {
    const Clock::time_point end = Clock::now() + SEND_LIMIT;
    size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = write(m_fd, bytes.data() + sent, bytes.size() - sent);
        if (count > 0) {
            sent += static_cast<size_t>(count);
            continue;
        }
        if (count < 0 && errno != EAGAIN && errno != EINTR)
            throw LineTrouble("it has gone while it was in use");
        if (Clock::now() >= end)
            return false;
        pollfd sources[] = {{m_fd, POLLOUT, 0}, {m_signalFd, POLLIN, 0}};
        poll(sources, 2, 10);
        if (sources[1].revents != 0)
            throw Interrupted();
    }
    return true;
}

bool Line::readable(Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd sources[] = {{m_fd, POLLIN, 0}, {m_signalFd, POLLIN, 0}};
        const int ready =
            poll(sources, 2, static_cast<int>(std::max(left.count(), decltype(left.count())(0))));
        if (sources[1].revents != 0)
            throw Interrupted();
        if (ready >= 0 || errno != EINTR)
            return sources[0].revents != 0;
    }
}

Bytes Line::collect(Clock::time_point end, const std::function<bool(const Bytes &)> &enough) {
    Bytes bytes;
    while (!enough(bytes) && readable(end)) {
        uint8_t piece[256];
        const ssize_t count = read(m_fd, piece, sizeof piece);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
            throw LineTrouble("it has gone while it was in use");
        bytes.insert(bytes.end(), piece, piece + std::max<ssize_t>(count, 0));
        if (Clock::now() >= end)
            break; // a flood has no end
    }
    return bytes;
}

} // namespace tool::doctor
