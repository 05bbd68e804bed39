#ifndef VISCACAM_TOOL_CTL_SCREEN_H
#define VISCACAM_TOOL_CTL_SCREEN_H

#include <mutex>
#include <string>

#include "tool/trace.h"

namespace tool::ctl {

/*
 * Where everything is printed: results on stdout, notes and progress on stderr, with a trace all of it in the
 * trace. Any thread.
 */
class Screen {
  public:
    /* trace: null for none; it must outlive the screen. */
    Screen(Trace *trace, bool json);

    bool json() const { return m_json; }
    bool colours() const { return m_colours; }
    /* A line of results. With JSON it must be an object. */
    void line(const std::string &text);
    /* Something that has to be known beside the result. */
    void note(const std::string &text);
    /* How far long work is: on a terminal one line that is written anew, else a line now and then. */
    void progress(const std::string &text);
    /* The work is over. */
    void endProgress();
    /* Everything is out, in its order. */
    void settle();

  private:
    void clearProgress();

    Trace *const m_trace;
    const bool m_json;
    const bool m_colours;
    const bool m_terminal;
    std::mutex m_mutex;
    bool m_progressShown = false;
    Clock::time_point m_progressAt{};
};

} // namespace tool::ctl

#endif
