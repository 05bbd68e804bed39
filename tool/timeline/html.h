#ifndef VISCACAM_TOOL_TIMELINE_HTML_H
#define VISCACAM_TOOL_TIMELINE_HTML_H

#include <string>

#include "tool/timeline/model.h"

namespace tool {

/* The traffic as a page of its own, to zoom and to move in; it needs nothing from anywhere. */
std::string htmlOf(const Timeline &timeline);

} // namespace tool

#endif
