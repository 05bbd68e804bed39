#ifndef VISCACAM_TOOL_TAP_HOST_END_H
#define VISCACAM_TOOL_TAP_HOST_END_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "tool/tap/device.h"

namespace tool {

/*
 * The pseudo-terminal that a host opens in place of the device; it starts raw at 9600 bit/s. Nobody but hosts
 * has the slave open, as only then the master tells whether there is one: counting who opens and closes
 * would not do, equal notices in a row are joined by the system.
 */
class HostEnd {
  public:
    /* link: leads to the slave, whatever its number; empty: none, path() is the slave itself. Throws
     * std::runtime_error or std::invalid_argument. */
    explicit HostEnd(std::string link);
    ~HostEnd() { close(); }
    HostEnd(const HostEnd &) = delete;
    HostEnd &operator=(const HostEnd &) = delete;

    const std::string &path() const { return m_link.empty() ? m_slave : m_link; }
    /* Readable when there are bytes; hung up, and so not to be waited for, without a host. */
    int fd() const { return m_master; }
    /* Readable when somebody opened the slave; -1 if the system has no such watch left. */
    int watch() const { return m_watch; }
    void handleWatch() const;

    bool hasHost() const;
    LineSettings settings() const;
    /* Bytes read, 0 for none now; what a host wrote may be read also when it is gone. */
    size_t read(uint8_t *buffer, size_t size) const;
    /* Bytes taken, fewer than size when the host does not read. */
    size_t write(const uint8_t *bytes, size_t size) const;

    /*
     * As a port is after its last close: without what the last host did not read, and open to everybody. To
     * be called when there is no host.
     */
    void refresh();

  private:
    void open();
    void openMaster();
    void setUpSlave() const;
    void makeLink();
    void close();

    const std::string m_link;
    std::string m_slave;
    int m_master = -1;
    int m_watch = -1;
};

} // namespace tool

#endif
