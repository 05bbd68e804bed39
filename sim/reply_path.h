#ifndef VISCACAM_SIM_REPLY_PATH_H
#define VISCACAM_SIM_REPLY_PATH_H

#include "sim/line.h"
#include "sim/world.h"

#include <functional>

namespace sim {

/* The way of a reply from the camera to the line, and what the faults of the line do to it there. */
class ReplyPath {
  public:
    /* baud: the rate that the camera sends at now. */
    ReplyPath(World &world, Line &line, std::function<unsigned()> baud)
        : m_world(world), m_line(line), m_baud(std::move(baud)) {}

    /* kind: name under which it is counted. */
    void send(Bytes reply, const std::string &kind);
    /* While the line is lent to a transfer, nothing but answers gets out beside it. */
    void lend(bool lent) { m_lent = lent; }
    /* What a transfer says: hit by faults as a reply is, but it has no address, and no terminator to lose. */
    void sendTransfer(const Bytes &bytes);
    /* As it is. */
    void sendRaw(const Bytes &bytes, const std::string &text);
    /* Acknowledgements without end while the flood fault of this serial number lasts. */
    void flood(unsigned long serial);
    /* Reports of every low nibble and length while the report fault of this serial number lasts. */
    void randomReports(unsigned long serial);
    /* Forget replies that are held back: the camera has lost its supply. */
    void clear() { m_held.clear(); }
    const std::map<std::string, unsigned long> &counts() const { return m_counts; }

  private:
    void sendRuns();
    void sendNoise();
    Bytes damage(const Bytes &bytes, std::string &text);
    void damage(Bytes &bytes, uint8_t byte, std::string &text);
    void hold(const Bytes &bytes, const std::string &text);
    void release();

    World &m_world;
    Line &m_line;
    std::function<unsigned()> m_baud;
    unsigned m_reports = 0;
    bool m_lent = false;
    Bytes m_held;
    std::string m_heldText;
    std::map<std::string, unsigned long> m_counts;
};

} // namespace sim

#endif
