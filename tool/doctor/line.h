#ifndef VISCACAM_TOOL_DOCTOR_LINE_H
#define VISCACAM_TOOL_DOCTOR_LINE_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <termios.h>

namespace tool::doctor {

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

/* The device cannot be used, or is gone; the text says why. */
struct LineTrouble : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* A signal asked for the end. */
struct Interrupted : std::runtime_error {
    Interrupted() : std::runtime_error("interrupted") {}
};

/*
 * A serial device, opened for itself alone, raw, 8N1, no flow control. Its settings are at the end of the
 * scope as they were found. Whatever waits throws Interrupted when the signal descriptor becomes readable,
 * and LineTrouble when the device has gone.
 */
class Line {
  public:
    /* Throws LineTrouble. */
    Line(const std::string &path, int signalFd);
    ~Line();
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    int fd() const { return m_fd; }
    /* 9600, 19200 or 38400 bit/s. False when the device cannot. */
    bool setRate(unsigned rate);
    /* False when it does not go out in time. */
    bool send(const Bytes &bytes);
    /* What arrives until then, or until it is enough. */
    Bytes collect(
        Clock::time_point end,
        const std::function<bool(const Bytes &)> &enough = [](const Bytes &) { return false; });

  private:
    bool readable(Clock::time_point end);

    int m_fd = -1;
    int m_signalFd;
    termios m_found = {};
};

} // namespace tool::doctor

#endif
