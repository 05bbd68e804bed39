#ifndef VISCACAM_TOOL_DEMO_STORY_H
#define VISCACAM_TOOL_DEMO_STORY_H

#include <cstdint>
#include <stdexcept>
#include <string>

#include "tool/asked.h"
#include "tool/drives.h"
#include "tool/trace.h"
#include "tool/witness.h"

namespace tool {

/* The story cannot go on; the text says why. */
struct StoryOver : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/*
 * What the demo does, chapter by chapter, through the public functions of the library. Port 0 of the host
 * must be mapped and the board set. All of it runs on one thread.
 */
class Story {
  public:
    Story(Trace &trace, Drives &drives, Witness &witness, AskedTable &table)
        : m_trace(trace), m_drives(drives), m_witness(witness), m_table(table) {}

    /* Blocks while the camera is searched, up to a minute. Throws StoryOver when there is none. */
    void startUp(uint32_t moduleType);
    /* Zoom and focus; some six seconds. Throws StoryOver when the camera falls silent. */
    void tell();

  private:
    using Look = std::optional<unsigned> (Witness::*)();
    using MotionRule = bool (*)(unsigned from, unsigned to);
    using Words = std::string (*)(unsigned value);

    void waitUntilOn();
    void zoomInAndStop();
    void zoomToPosition(unsigned target);
    void driveFocus();
    void driveFocusOneWay(const char *way, Drives::Command command, MotionRule agrees);
    void backToAutoFocus();
    void countCommands();

    unsigned readZoom();
    unsigned readFocus();
    void drive(Drives::Command command, Drives::Command stop, Clock::duration time);
    void accept(uint32_t result) const;
    void follow();
    void checkAnswering() const;
    void compareMotion(const std::string &asked, Look look, MotionRule agrees, unsigned from);
    void compareValue(const std::string &asked, Look look, unsigned expected, Words words);

    Trace &m_trace;
    Drives &m_drives;
    Witness &m_witness;
    AskedTable &m_table;
};

} // namespace tool

#endif
