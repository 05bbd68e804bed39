#include "tool/tap/device.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "host/host.h"

namespace tool {

namespace {

constexpr unsigned FIRST_PTY_MAJOR = 136;
constexpr unsigned LAST_PTY_MAJOR = 143;

struct Rate {
    speed_t speed;
    unsigned baud;
};

constexpr Rate RATES[] = {
    {B1200, 1200},   {B2400, 2400},   {B4800, 4800},     {B9600, 9600},     {B19200, 19200},
    {B38400, 38400}, {B57600, 57600}, {B115200, 115200}, {B230400, 230400},
};

// On a pseudo-terminal the mark would outlive this process: the other end keeps the terminal.
void keepOthersOut(int fd) {
    struct stat found = {};
    const bool known = fstat(fd, &found) == 0;
    if (known && (major(found.st_rdev) < FIRST_PTY_MAJOR || major(found.st_rdev) > LAST_PTY_MAJOR))
        ioctl(fd, TIOCEXCL);
}

// Adapters hold bytes back for 16 ms otherwise. Drivers that do not know it refuse, which is fine.
void askForLowLatency(int fd) {
    serial_struct serial = {};
    if (ioctl(fd, TIOCGSERIAL, &serial) == 0) {
        serial.flags |= ASYNC_LOW_LATENCY;
        ioctl(fd, TIOCSSERIAL, &serial);
    }
}

ssize_t resultOf(ssize_t count) {
    return count < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : count;
}

} // namespace

bool operator==(const LineSettings &a, const LineSettings &b) {
    return a.speed == b.speed && a.twoStopBits == b.twoStopBits;
}

LineSettings lineSettingsOf(const termios &settings) {
    return {cfgetospeed(&settings), (settings.c_cflag & CSTOPB) != 0};
}

unsigned baudOf(speed_t speed) {
    for (const Rate &rate : RATES)
        if (rate.speed == speed)
            return rate.baud;
    return 0;
}

speed_t speedOf(unsigned baud) {
    for (const Rate &rate : RATES)
        if (rate.baud == baud)
            return rate.speed;
    return B9600;
}

std::string TappedDevice::lock() {
    if (tcgetattr(m_fd, &m_found) != 0)
        return "not a serial device";
    if (flock(m_fd, LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? "in use by another process" : std::strerror(errno);
    return "";
}

// The host's own check tells the common troubles apart in words; it holds the device for a moment only.
std::string TappedDevice::open(const LineSettings &settings) {
    std::string why = host::CheckDevice(m_path);
    if (!why.empty())
        return why;
    const int mode = m_readOnly ? O_RDONLY : O_RDWR;
    m_fd = ::open(m_path.c_str(), mode | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_fd < 0)
        return "cannot open " + m_path + ": " + std::strerror(errno);
    why = lock();
    if (why.empty() && !set(settings))
        why = "it does not take the rate";
    if (why.empty()) {
        tcflush(m_fd, TCIFLUSH); // what came before is not part of what passes now
        keepOthersOut(m_fd);
        askForLowLatency(m_fd);
        return "";
    }
    ::close(m_fd);
    m_fd = -1;
    return "cannot open " + m_path + ": " + why;
}

void TappedDevice::close() {
    if (m_fd < 0)
        return;
    tcsetattr(m_fd, TCSANOW, &m_found);
    ioctl(m_fd, TIOCNXCL);
    ::close(m_fd);
    m_fd = -1;
}

// Succeeds also when it could do a part only, so the rate is read back.
bool TappedDevice::set(const LineSettings &settings) {
    termios now = {};
    if (tcgetattr(m_fd, &now) != 0)
        return false;
    cfmakeraw(&now);
    now.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    now.c_cflag |= CLOCAL | CREAD | (settings.twoStopBits ? static_cast<tcflag_t>(CSTOPB) : 0);
    now.c_cc[VMIN] = 1;
    now.c_cc[VTIME] = 0;
    cfsetispeed(&now, settings.speed);
    cfsetospeed(&now, settings.speed);
    if (tcsetattr(m_fd, m_readOnly ? TCSANOW : TCSADRAIN, &now) != 0 || tcgetattr(m_fd, &now) != 0)
        return false;
    return cfgetospeed(&now) == settings.speed;
}

// A terminal whose other end is gone reads as ended.
ssize_t TappedDevice::read(uint8_t *buffer, size_t size) const {
    const ssize_t count = ::read(m_fd, buffer, size);
    return count == 0 ? -1 : resultOf(count);
}

ssize_t TappedDevice::write(const uint8_t *bytes, size_t size) const {
    return resultOf(::write(m_fd, bytes, size));
}

} // namespace tool
