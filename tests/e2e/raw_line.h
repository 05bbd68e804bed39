/**
 * @file raw_line.h
 * Both ends of a serial line without a program behind them: a port that a test opens as a host does, and a
 * device whose other end the test holds.
 */
#ifndef VISCACAM_E2E_RAW_LINE_H
#define VISCACAM_E2E_RAW_LINE_H

#include <cstdlib>
#include <memory>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace e2e {

/** Bytes that come until there are so many of them, or nothing comes for ten seconds. */
inline std::string readBytes(int fd, size_t count) {
    std::string bytes;
    pollfd source = {fd, POLLIN, 0};
    char buffer[256];
    while (bytes.size() < count && poll(&source, 1, 10000) == 1) {
        const ssize_t got = read(fd, buffer, sizeof buffer);
        if (got <= 0)
            break;
        bytes.append(buffer, static_cast<size_t>(got));
    }
    return bytes;
}

inline void writeBytes(int fd, const std::string &bytes) {
    EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

/** A port as a host opens it: raw, at a rate. */
class RawPort {
  public:
    explicit RawPort(const std::string &path, speed_t speed = B9600)
        : m_fd(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_GE(m_fd, 0) << path;
        set(speed);
    }
    ~RawPort() { close(m_fd); }
    RawPort(const RawPort &) = delete;
    RawPort &operator=(const RawPort &) = delete;

    void set(speed_t speed) const {
        termios settings = {};
        EXPECT_EQ(tcgetattr(m_fd, &settings), 0);
        cfmakeraw(&settings);
        cfsetspeed(&settings, speed);
        EXPECT_EQ(tcsetattr(m_fd, TCSANOW, &settings), 0);
    }
    int fd() const { return m_fd; }

  private:
    int m_fd;
};

/** A device, and its other end. */
class RawDevice {
  public:
    RawDevice() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        grantpt(m_master);
        unlockpt(m_master);
        m_path = ptsname(m_master);
        m_port = std::make_unique<RawPort>(m_path);
    }
    ~RawDevice() { close(m_master); }
    RawDevice(const RawDevice &) = delete;
    RawDevice &operator=(const RawDevice &) = delete;

    const std::string &path() const { return m_path; }
    int otherEnd() const { return m_master; }
    speed_t speed() const {
        termios settings = {};
        tcgetattr(m_master, &settings);
        return cfgetospeed(&settings);
    }

  private:
    int m_master;
    std::string m_path;
    std::unique_ptr<RawPort> m_port; // held open, else the other end would read an error
};

} // namespace e2e

#endif
