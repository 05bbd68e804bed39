#ifndef VISCACAM_TOOL_TAP_DEVICE_H
#define VISCACAM_TOOL_TAP_DEVICE_H

#include <cstdint>
#include <string>

#include <termios.h>

namespace tool {

/* What of a line's settings a pseudo-terminal passes on; its parity never shows. */
struct LineSettings {
    speed_t speed = B9600;
    bool twoStopBits = false;
};
bool operator==(const LineSettings &a, const LineSettings &b);
LineSettings lineSettingsOf(const termios &settings);

/* bit/s; 0 for none that a serial line has. */
unsigned baudOf(speed_t speed);
/* 9600, 19200 or 38400 bit/s; 9600 for any other. */
speed_t speedOf(unsigned baud);

/*
 * The serial device of a tap: held exclusively as the reference host holds it, raw, eight bits, no flow
 * control, low latency where the driver has it. The settings that were found are restored at the end.
 */
class TappedDevice {
  public:
    /* readOnly: opened so that the kernel refuses each write. */
    TappedDevice(std::string path, bool readOnly) : m_path(std::move(path)), m_readOnly(readOnly) {}
    ~TappedDevice() { close(); }
    TappedDevice(const TappedDevice &) = delete;
    TappedDevice &operator=(const TappedDevice &) = delete;

    /* Empty, or why not in one line. */
    std::string open(const LineSettings &settings);
    void close();
    bool isOpen() const { return m_fd >= 0; }
    int fd() const { return m_fd; }
    const std::string &path() const { return m_path; }

    /* Once all that was written has gone out. False when the device does not do that. */
    bool set(const LineSettings &settings);

    /* Bytes read or written; 0 for none now, -1 when the device is gone. */
    ssize_t read(uint8_t *buffer, size_t size) const;
    ssize_t write(const uint8_t *bytes, size_t size) const;

  private:
    std::string lock();

    const std::string m_path;
    const bool m_readOnly;
    int m_fd = -1;
    termios m_found{};
};

} // namespace tool

#endif
