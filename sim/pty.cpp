#include "sim/pty.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace sim {

namespace {

[[noreturn]] void fail(const std::string &what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

struct Rate {
    speed_t code;
    unsigned baud;
};

constexpr Rate RATES[] = {{B1200, 1200},   {B2400, 2400},   {B4800, 4800},   {B9600, 9600},
                          {B19200, 19200}, {B38400, 38400}, {B57600, 57600}, {B115200, 115200}};

} // namespace

void Pty::open() {
    try {
        openMaster();
        openSlave();
        startWatch();
        makeLink();
    } catch (...) {
        close();
        throw;
    }
}

void Pty::openMaster() {
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (m_master < 0)
        fail("cannot open a pseudo-terminal");
    char name[128];
    if (grantpt(m_master) != 0 || unlockpt(m_master) != 0 || ptsname_r(m_master, name, sizeof name) != 0)
        fail("cannot prepare a pseudo-terminal");
    m_slavePath = name;
}

void Pty::openSlave() {
    m_slave = ::open(m_slavePath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (m_slave < 0 || tcgetattr(m_slave, &settings) != 0)
        fail("cannot open " + m_slavePath);
    cfmakeraw(&settings); // before the first byte: an echo would come back to the camera as a packet
    cfsetspeed(&settings, B9600);
    if (tcsetattr(m_slave, TCSANOW, &settings) != 0)
        fail("cannot set up " + m_slavePath);
}

void Pty::makeLink() {
    if (m_link.empty())
        return;
    struct stat status {};
    if (lstat(m_link.c_str(), &status) == 0 && !S_ISLNK(status.st_mode))
        throw std::invalid_argument(
            m_link + " exists and is no symbolic link; choose another name for the camera's port");
    // Renamed into place, so that a host never finds half a link.
    const std::string fresh = m_link + "." + std::to_string(getpid());
    unlink(fresh.c_str());
    if (symlink(m_slavePath.c_str(), fresh.c_str()) != 0)
        fail("cannot make the link " + m_link);
    if (rename(fresh.c_str(), m_link.c_str()) != 0) {
        const int error = errno;
        unlink(fresh.c_str());
        errno = error;
        fail("cannot make the link " + m_link);
    }
    m_linked = true;
}

void Pty::startWatch() {
    m_hosts = 0;
    m_watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (m_watch >= 0 && inotify_add_watch(m_watch, m_slavePath.c_str(), IN_OPEN | IN_CLOSE) < 0) {
        ::close(m_watch);
        m_watch = -1;
    }
}

void Pty::close() {
    // Only our own link: another camera may have taken the name over.
    char target[256];
    const ssize_t length = m_linked ? readlink(m_link.c_str(), target, sizeof target) : -1;
    if (length > 0 && m_slavePath == std::string(target, static_cast<size_t>(length)))
        unlink(m_link.c_str());
    m_linked = false;
    for (int *descriptor : {&m_watch, &m_slave, &m_master}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
}

unsigned Pty::hostBaud() const {
    termios settings{};
    if (tcgetattr(m_slave, &settings) != 0)
        return 0;
    const speed_t code = cfgetospeed(&settings);
    for (const Rate &rate : RATES) {
        if (rate.code == code)
            return rate.baud;
    }
    return 0;
}

size_t Pty::read(uint8_t *buffer, size_t size) const {
    const ssize_t count = ::read(m_master, buffer, size);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

size_t Pty::write(const uint8_t *bytes, size_t size) const {
    const ssize_t count = ::write(m_master, bytes, size);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

size_t Pty::unreadByHost() const {
    int count = 0;
    return ioctl(m_slave, FIONREAD, &count) == 0 ? static_cast<size_t>(count) : 0;
}

/*
 * A host that opened the port exclusively and ended without giving that up leaves the mark on the terminal,
 * which our own descriptor keeps alive. A real port forgets it with the last close, so it is taken off then.
 */
void Pty::handleWatch() {
    alignas(inotify_event) char buffer[4096];
    ssize_t count;
    while ((count = ::read(m_watch, buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < count;) {
            inotify_event event;
            std::memcpy(&event, buffer + at, sizeof event);
            if (event.mask & IN_OPEN)
                ++m_hosts;
            if ((event.mask & IN_CLOSE) && m_hosts > 0 && --m_hosts == 0)
                ioctl(m_slave, TIOCNXCL);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

} // namespace sim
