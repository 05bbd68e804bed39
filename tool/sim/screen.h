#ifndef VISCACAM_TOOL_SIM_SCREEN_H
#define VISCACAM_TOOL_SIM_SCREEN_H

#include <string>
#include <vector>

#include "tool/console.h"

namespace tool {

/* A piece of a row, and a row of the screen. Text is printable ASCII. */
struct Span {
    std::string text;
    Style style = Style::plain;
};
using Row = std::vector<Span>;

struct ScreenSize {
    size_t columns = 80;
    size_t rows = 24;
};

/* Whether stdin and stdout are a terminal that a picture can be drawn on, and ours to draw on now. */
bool canDraw();

/*
 * The terminal as a picture. From the constructor to the end of the scope the terminal shows what show() is
 * given and hands over keys as they are typed; then it is as it was before, also when the process is stopped
 * for a while or ends by a fault of its own. One at a time.
 */
class Screen {
  public:
    Screen();
    ~Screen();
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    ScreenSize size() const;
    /* Show these rows, cut to the size, with the cursor behind the last one's text. */
    void show(const std::vector<Row> &rows);
    /* Draw everything again next time. */
    void forget();
    /* Give the terminal back, stop until the process is continued, take the terminal again. */
    void suspend();

  private:
    void enter();
    void leave();

    bool m_colours;
    std::vector<std::string> m_shown;
    std::string m_cursor;
};

} // namespace tool

#endif
