#include "host_end.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

sim::Bytes fromHex(const std::string &hex) {
    sim::Bytes bytes;
    std::istringstream stream(hex);
    unsigned byte;
    while (stream >> std::hex >> byte)
        bytes.push_back(static_cast<uint8_t>(byte));
    return bytes;
}

std::string toHex(const sim::Bytes &bytes) {
    std::string text;
    for (uint8_t byte : bytes) {
        char two[4];
        std::snprintf(two, sizeof two, "%02X", byte);
        text += (text.empty() ? "" : " ") + std::string(two);
    }
    return text;
}

HostEnd::HostEnd(const std::string &path, unsigned baud)
    : m_descriptor(open(path.c_str(), O_RDWR | O_NOCTTY)) {
    if (m_descriptor < 0)
        throw std::runtime_error("cannot open " + path);
    setBaud(baud);
}

HostEnd::~HostEnd() {
    close(m_descriptor);
}

void HostEnd::setBaud(unsigned baud) const {
    termios settings{};
    tcgetattr(m_descriptor, &settings);
    cfmakeraw(&settings);
    cfsetspeed(&settings, baud == 115200 ? B115200 : baud == 38400 ? B38400 : baud == 19200 ? B19200 : B9600);
    tcsetattr(m_descriptor, TCSANOW, &settings);
}

void HostEnd::send(const std::string &hex) const {
    const sim::Bytes bytes = fromHex(hex);
    if (write(m_descriptor, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("cannot send " + hex);
}

bool HostEnd::readByte(uint8_t &byte, sim::Clock::time_point deadline) const {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - sim::Clock::now()).count();
        pollfd waiting{m_descriptor, POLLIN, 0};
        const int ready = left > 0 ? poll(&waiting, 1, static_cast<int>(left)) : 0;
        if (ready < 0 && errno == EINTR)
            continue;
        return ready > 0 && read(m_descriptor, &byte, 1) == 1;
    }
}

std::string HostEnd::packet() {
    const auto deadline = sim::Clock::now() + PATIENCE;
    sim::Bytes bytes;
    uint8_t byte = 0;
    while (byte != 0xFF && readByte(byte, deadline))
        bytes.push_back(byte);
    return toHex(bytes);
}

std::string HostEnd::bytes(size_t count) {
    const auto deadline = sim::Clock::now() + PATIENCE;
    sim::Bytes bytes;
    uint8_t byte;
    while (bytes.size() < count && readByte(byte, deadline))
        bytes.push_back(byte);
    return toHex(bytes);
}

std::string HostEnd::ask(const std::string &hex) {
    send(hex);
    return packet();
}

std::string HostEnd::command(const std::string &hex) {
    const std::string first = ask(hex);
    return first + " " + packet();
}
