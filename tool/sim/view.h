#ifndef VISCACAM_TOOL_SIM_VIEW_H
#define VISCACAM_TOOL_SIM_VIEW_H

#include <deque>
#include <map>
#include <memory>
#include <string>

#include "tool/sim/front.h"
#include "tool/sim/panel.h"
#include "tool/sim/recorder.h"
#include "tool/sim/screen.h"

namespace tool {

/*
 * The cameras as a full-screen picture that follows what happens, with a line at its bottom to type commands
 * on. They are for the camera that is shown; Tab shows the next one.
 */
class View : public Front {
  public:
    sim::Trace traceFor(const std::string &name, size_t number) override;
    void begin(Fleet &fleet) override;
    void end() override { m_screen.reset(); }
    int input() const override;
    void read() override;
    int limitMs() const override;
    void refresh() override;
    void showState() override { m_screen->forget(); }
    void resized() override { m_screen->forget(); }
    void suspend() override { m_screen->suspend(); }
    bool over() const override { return m_over; }

  private:
    void key(char c);
    void escape(char c);
    void submit();
    void choose(long step);
    void noteChanges(const sim::State &state);

    const sim::Clock::time_point m_start = sim::Clock::now();
    std::deque<Recorder> m_recorders;
    Fleet *m_fleet = nullptr;
    std::unique_ptr<Screen> m_screen;
    Panel m_panel;
    std::map<std::string, int> m_settings; /* of the chosen camera, when last looked at */
    std::map<std::string, sim::Clock::time_point> m_changes;
    std::string m_escape; /* a key that sends several characters, so far */
    bool m_over = false;
};

} // namespace tool

#endif
