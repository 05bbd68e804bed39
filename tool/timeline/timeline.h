#ifndef VISCACAM_TOOL_TIMELINE_TIMELINE_H
#define VISCACAM_TOOL_TIMELINE_TIMELINE_H

#include <string>

namespace tool {

struct TimelineOptions {
    std::string capture;
    std::string output; /* its ending says what it becomes: .svg or .html */
};

/* viscacam timeline: a capture as a picture. Returns the exit status. */
int runTimeline(const TimelineOptions &options);

} // namespace tool

#endif
