#ifndef VISCACAM_TOOL_DEMO_STAGE_H
#define VISCACAM_TOOL_DEMO_STAGE_H

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

#include "tool/demo/asked.h"
#include "tool/demo/witness.h"
#include "tool/drives.h"
#include "tool/trace.h"

namespace tool {

/* The story cannot go on; the text says why. */
struct StoryOver : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* How a value looks in the table. */
using Words = std::string (*)(unsigned value);
std::string hexWord(unsigned value);    /* 0x2800 */
std::string hexByte(unsigned value);    /* 0x0B */
std::string hexLong(unsigned value);    /* 0x0000001C */
std::string switchWord(unsigned value); /* 2 on, 3 off */

/*
 * What the chapters of the demo share: giving commands and following them, and comparing what was asked with
 * what the camera believes. A chapter throws StoryOver, here or itself, when it cannot go on. All chapters
 * run on one thread.
 */
class Stage {
  public:
    static constexpr uint32_t PORT_NUMBER = 0; /* of the host; must be mapped */

    Stage(Trace &trace, Drives &drives, Witness &witness, AskedTable &table)
        : m_trace(trace), m_drives(drives), m_witness(witness), m_table(table) {}

    void heading(const std::string &text) { m_trace.heading(text); }
    /* A line of the trace that the demo itself has to say. Any thread. */
    void say(const std::string &text) { m_trace.remark(Clock::now(), "host: " + text); }

    /* Give the library commands. */
    template <typename Call>
    void begin(Call call) {
        accept(m_drives.queue(call));
    }
    /* Wait until the camera has dealt with all commands. */
    void follow();
    /* Both. */
    template <typename Call>
    void order(Call call) {
        begin(call);
        follow();
    }
    /* Drive the lens for a while and stop it. */
    void drive(Drives::Command command, Drives::Command stop, Clock::duration time);
    /* Run a call that is not to be ended in its middle. Returns its result. */
    template <typename Call>
    uint32_t perform(Call call) {
        return m_drives.perform(call);
    }
    /*
     * Run a call that switches the camera off and on, and follow it. The inquiries that nobody answers
     * meanwhile do not count as silence. Returns the call's result.
     */
    uint32_t procedure(const std::function<uint32_t()> &call);

    /* An inquiry that nobody answers is a success to the library: its value is worth nothing then. */
    void checkAnswering() const;
    /* The same, and that an inquiry was a success; what: "the zoom position". */
    void checkRead(uint32_t result, const std::string &what) const;

    /* Look at something that the camera believes. */
    Belief look(const Item &item);
    Witness &witness() { return m_witness; }
    /* A row of the table. */
    void compare(const std::string &asked, const Belief &belief, unsigned expected, Words words);
    void compare(const std::string &asked, const Item &item, unsigned expected, Words words);
    AskedTable &table() { return m_table; }

  private:
    void accept(uint32_t result) const;

    Trace &m_trace;
    Drives &m_drives;
    Witness &m_witness;
    AskedTable &m_table;
    uint64_t m_forgiven = 0; /* inquiries without an answer that do not count */
};

} // namespace tool

#endif
