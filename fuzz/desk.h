// One simulated camera under a clock of its own.
#ifndef VISCACAM_FUZZ_DESK_H
#define VISCACAM_FUZZ_DESK_H

#include "fuzz/input.h"
#include "fuzz/memory_pty.h"
#include "sim/simulation.h"

#include <string>
#include <vector>

namespace fuzz {

class Desk {
  public:
    explicit Desk(sim::Options options);

    /** The host sends bytes. */
    void Send(Span bytes);
    /** The camera's time goes on, with at most so many passes. Returns the passes. */
    unsigned long Pass(std::chrono::milliseconds time, unsigned long most);
    sim::Simulation &Camera() { return m_camera; }
    sim::Clock::time_point Now() const { return m_now; }
    sim::State State() { return m_camera.state(m_now); }
    /** The replies and remarks of the camera since the last call. */
    std::vector<sim::TraceEvent> Diary() { return m_camera.takeDiary(); }

  private:
    sim::Clock::time_point m_now;
    sim::Simulation m_camera;
};

/** What holds of the state of every camera at any time. */
void CheckState(const sim::State &state);

/** It is on or in standby, and says so when it is asked, whatever was before. A few seconds pass. */
void CheckAlive(Desk &desk);

/** Whether the text is one line that is not empty. */
bool IsLine(const std::string &text);

} // namespace fuzz

#endif
