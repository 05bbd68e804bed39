#ifndef VISCACAM_TOOL_TIMELINE_SVG_H
#define VISCACAM_TOOL_TIMELINE_SVG_H

#include <string>

#include "tool/timeline/model.h"

namespace tool {

/*
 * The traffic as a still picture: rows of time below each other as lines of text are, each with a lane for
 * what the host sends, one for what the camera sends, one for commands and one for inquiries under way.
 * Scaled so that most packets have room for their words; the rows of a long capture hold more and say less.
 */
std::string svgOf(const Timeline &timeline);

} // namespace tool

#endif
