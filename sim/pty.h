#ifndef VISCACAM_SIM_PTY_H
#define VISCACAM_SIM_PTY_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace sim {

/*
 * The camera's end of the cable: the master of a pseudo-terminal. The slave, which a host opens, starts raw
 * at 9600 bit/s. One slave descriptor stays open here, else the master would read EIO whenever no host is
 * there.
 */
class Pty {
  public:
    explicit Pty(std::string link) : m_link(std::move(link)) {}
    ~Pty() { close(); }
    Pty(const Pty &) = delete;
    Pty &operator=(const Pty &) = delete;

    void open();
    void close();
    bool isOpen() const { return m_master >= 0; }
    int master() const { return m_master; }
    /* Readable when a host has opened or closed the slave; -1 if the system has no such watch left. */
    int watch() const { return m_watch; }
    const std::string &path() const { return m_link.empty() ? m_slavePath : m_link; }

    /* The rate that the host has set on the slave, in bit/s; 0 if it is none that a serial line has. */
    unsigned hostBaud() const;
    /* Whether a host has the slave open, once handleWatch() was called; also where that cannot be watched. */
    bool hasHost() const { return m_watch < 0 || m_hosts > 0; }
    /* Bytes read into the buffer, 0 if there are none now. */
    size_t read(uint8_t *buffer, size_t size) const;
    /* Bytes taken, fewer than size when the host does not read. */
    size_t write(const uint8_t *bytes, size_t size) const;
    /* Bytes that the host has not read yet. */
    size_t unreadByHost() const;
    void handleWatch();

  private:
    void openMaster();
    void openSlave();
    void makeLink();
    void startWatch();

    std::string m_link;
    std::string m_slavePath;
    int m_master = -1;
    int m_slave = -1;
    int m_watch = -1;
    int m_hosts = 0;
    bool m_linked = false;
};

} // namespace sim

#endif
