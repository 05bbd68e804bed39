#ifndef VISCACAM_TOOL_SIM_FRONT_H
#define VISCACAM_TOOL_SIM_FRONT_H

#include <string>

#include "tool/sim/fleet.h"

namespace tool {

/* What stands between the cameras and the person who runs them. Made before the cameras, ends after them. */
class Front {
  public:
    virtual ~Front() = default;

    /* Where a camera reports to; may be empty. Called before begin(). */
    virtual sim::Trace traceFor(const std::string &name, size_t number) = 0;
    /* The cameras run now, until end(). */
    virtual void begin(Fleet &fleet) = 0;
    virtual void end() {}

    /* The descriptor to read from, -1 for none, and what to do when it is readable. */
    virtual int input() const = 0;
    virtual void read() = 0;
    /* How long to wait at most, -1 for as long as it takes, and what to do whenever the waiting is over. */
    virtual int limitMs() const { return -1; }
    virtual void refresh() {}
    /* The state was asked for by a signal. */
    virtual void showState() = 0;
    /* The size of the terminal has changed; the process is to stop for a while. */
    virtual void resized() {}
    virtual void suspend() {}
    /* Somebody has typed "quit", or the end of input was the end. */
    virtual bool over() const = 0;
};

} // namespace tool

#endif
