#ifndef VISCACAM_TESTS_SIM_HOST_END_H
#define VISCACAM_TESTS_SIM_HOST_END_H

#include "sim/sim.h"

#include <chrono>
#include <string>

/* The host's end of a simulated camera's line: bare bytes, written and read as hex text. */
class HostEnd {
  public:
    static constexpr std::chrono::seconds PATIENCE{
        20}; /* for what must come; never waited for in full by a good run */

    explicit HostEnd(const sim::Camera &camera, unsigned baud = 9600) : HostEnd(camera.path(), baud) {}
    explicit HostEnd(const std::string &path, unsigned baud = 9600);
    ~HostEnd();
    HostEnd(const HostEnd &) = delete;
    HostEnd &operator=(const HostEnd &) = delete;

    void setBaud(unsigned baud) const;
    void send(const std::string &hex) const;
    /* The next bytes up to 0xFF, "90 41 FF"; what there was of them if no more come. */
    std::string packet();
    /* The next bytes, exactly so many. */
    std::string bytes(size_t count);
    /* Send, then the next packet. */
    std::string ask(const std::string &hex);
    /* Send a command and take its acknowledgement and completion off the line; both as text with a blank
     * between. */
    std::string command(const std::string &hex);
    int descriptor() const { return m_descriptor; }

  private:
    bool readByte(uint8_t &byte, sim::Clock::time_point deadline) const;

    int m_descriptor;
};

sim::Bytes fromHex(const std::string &hex);
std::string toHex(const sim::Bytes &bytes);

#endif
