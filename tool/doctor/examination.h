#ifndef VISCACAM_TOOL_DOCTOR_EXAMINATION_H
#define VISCACAM_TOOL_DOCTOR_EXAMINATION_H

#include "tool/doctor/line.h"
#include "tool/doctor/report.h"
#include "tool/doctor/search.h"

namespace tool::doctor {

/*
 * Look at a camera that answers: its power state, as first heard, round-trip times, versions, and what it
 * says unasked. Inquiries only.
 */
void examine(Line &line, const Heard &first, Milliseconds limit, Report &report);

} // namespace tool::doctor

#endif
