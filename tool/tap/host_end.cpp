#include "tool/tap/host_end.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

[[noreturn]] void fail(const std::string &what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

} // namespace

HostEnd::HostEnd(std::string link) : m_link(std::move(link)) {
    try {
        open();
    } catch (...) {
        close();
        throw;
    }
}

void HostEnd::open() {
    openMaster();
    setUpSlave();
    m_watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (m_watch >= 0)
        inotify_add_watch(m_watch, m_slave.c_str(), IN_OPEN);
    if (!m_link.empty())
        makeLink();
}

void HostEnd::openMaster() {
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char name[128];
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0 ||
        ptsname_r(m_master, name, sizeof name) != 0)
        fail("cannot make a pseudo-terminal");
    m_slave = name;
}

// The settings last as long as the master. An echo would come back to the camera as a packet.
void HostEnd::setUpSlave() const {
    const int slave = ::open(m_slave.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    if (slave < 0 || tcgetattr(slave, &settings) != 0)
        fail("cannot open " + m_slave);
    cfmakeraw(&settings);
    cfsetspeed(&settings, B9600);
    const bool done = tcsetattr(slave, TCSANOW, &settings) == 0;
    ::close(slave);
    if (!done)
        fail("cannot set up " + m_slave);
}

// Renamed into place, so that a host never finds half a link.
void HostEnd::makeLink() {
    struct stat found = {};
    if (lstat(m_link.c_str(), &found) == 0 && !S_ISLNK(found.st_mode))
        throw std::invalid_argument(m_link + " exists and is no symbolic link; choose another name");
    const std::string fresh = m_link + "." + std::to_string(getpid());
    unlink(fresh.c_str());
    if (symlink(m_slave.c_str(), fresh.c_str()) == 0 && rename(fresh.c_str(), m_link.c_str()) == 0)
        return;
    const std::string why = std::strerror(errno);
    unlink(fresh.c_str());
    throw std::runtime_error("cannot make the link " + m_link + ": " + why);
}

// Only our own link is removed: somebody else may have taken the name over.
void HostEnd::close() {
    char target[256];
    const ssize_t length = readlink(m_link.c_str(), target, sizeof target);
    if (length > 0 && m_slave == std::string(target, static_cast<size_t>(length)))
        unlink(m_link.c_str());
    for (int *descriptor : {&m_watch, &m_master}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
}

void HostEnd::handleWatch() const {
    char ignored[4096];
    while (m_watch >= 0 && ::read(m_watch, ignored, sizeof ignored) > 0) {}
}

bool HostEnd::hasHost() const {
    pollfd entry = {m_master, 0, 0};
    return poll(&entry, 1, 0) == 0 || (entry.revents & POLLHUP) == 0;
}

// The master shows what was set on the slave.
LineSettings HostEnd::settings() const {
    termios found = {};
    return tcgetattr(m_master, &found) == 0 ? lineSettingsOf(found) : LineSettings{B0, false};
}

size_t HostEnd::read(uint8_t *buffer, size_t size) const {
    const ssize_t count = ::read(m_master, buffer, size);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

size_t HostEnd::write(const uint8_t *bytes, size_t size) const {
    const ssize_t count = ::write(m_master, bytes, size);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

// A host that held the terminal exclusively and did not give that up has locked us out too. Then there is
// another terminal behind the link.
void HostEnd::refresh() {
    const int slave = ::open(m_slave.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (slave >= 0) {
        ioctl(slave, TIOCNXCL);
        tcflush(slave, TCIFLUSH);
        ::close(slave);
        return;
    }
    const int watch = m_watch;
    const int master = m_master;
    open();
    if (watch >= 0)
        ::close(watch);
    ::close(master);
}

} // namespace tool
