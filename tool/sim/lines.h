#ifndef VISCACAM_TOOL_SIM_LINES_H
#define VISCACAM_TOOL_SIM_LINES_H

#include <string>

#include "tool/sim/front.h"
#include "tool/trace.h"

namespace tool {

/* Lines on standard input, answers and the trace on standard output. */
class Lines : public Front {
  public:
    explicit Lines(const SimOptions &options);

    sim::Trace traceFor(const std::string &name, size_t number) override;
    void begin(Fleet &fleet) override;
    int input() const override { return m_input; }
    void read() override;
    void showState() override;
    bool over() const override { return m_over; }

  private:
    void line(const std::string &text);

    Trace m_output;
    Fleet *m_fleet = nullptr;
    bool m_trace;
    bool m_several; /* cameras */
    bool m_untilEof;
    int m_input;
    std::string m_text; /* of a line that has no end yet */
    bool m_over = false;
};

} // namespace tool

#endif
