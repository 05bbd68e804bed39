#ifndef VISCACAM_TOOL_TRACE_SOURCES_H
#define VISCACAM_TOOL_TRACE_SOURCES_H

#include <string>

#include "sim/sim.h"
#include "tool/trace.h"

namespace tool {

/*
 * What a simulated camera sees and says, for sim::Options::trace. The trace must outlive the camera. name: of
 * the camera, where there are several.
 */
sim::Trace cameraTrace(Trace &trace, const std::string &name = "");

/* From now on the lines of the general log from INFO up are part of the trace, until the process ends. */
void followLog(Trace &trace);

/*
 * From now on what the host sends and what the library reports in the camera log are part of the trace, until
 * the process ends. Packets that the library exchanges during its search for the rate are not among them.
 */
void followHost(Trace &trace);

/* What a line of a log says, without its time and place. */
std::string messageOfLog(const std::string &line);

} // namespace tool

#endif
