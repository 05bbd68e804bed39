#ifndef VISCACAM_TOOL_DOCTOR_SEARCH_H
#define VISCACAM_TOOL_DOCTOR_SEARCH_H

#include <chrono>
#include <optional>
#include <string>

#include "tool/doctor/line.h"
#include "tool/doctor/report.h"

namespace tool::doctor {

using Milliseconds = std::chrono::milliseconds;

/* What came after a question. */
struct Heard {
    Bytes reply;          /* the answer or the refusal, header to terminator; empty: none */
    unsigned address = 0; /* of the camera that sent it, 1 to 7 */
    bool echo = false;    /* the question itself came back first */
    Bytes others;         /* all bytes that are neither */
    double ms = 0;        /* from the question's first byte to the reply's last one, as seen here */

    bool refused() const { return !reply.empty() && reply[1] >> 4U == 6; }
};

/* Ask, and wait for the reply at most so long. What had arrived before is among the others. */
Heard ask(Line &line, const Bytes &question, Milliseconds limit);

/* What comes unasked, as a finding: "idle line". True when bytes are among it that belong to no packet. */
bool judgeIdle(const Bytes &bytes, Milliseconds time, Report &report);

/*
 * Ask for the power state at each rate until a camera answers. Says what was found, and sets the rate of the
 * report. Nothing when no camera answers as address 1; the line then stays at no rate in particular.
 */
std::optional<Heard> findCamera(Line &line, Milliseconds limit, Report &report);

} // namespace tool::doctor

#endif
