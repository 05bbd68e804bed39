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
    Bytes damage(const Bytes &reply, std::string &text);
    void hold(const Bytes &bytes, const std::string &text);
    void release();

    World &m_world;
    Line &m_line;
    std::function<unsigned()> m_baud;
    unsigned m_reports = 0;
    Bytes m_held;
    std::string m_heldText;
    std::map<std::string, unsigned long> m_counts;
};

} // namespace sim

#endif
