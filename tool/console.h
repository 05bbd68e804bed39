#ifndef VISCACAM_TOOL_CONSOLE_H
#define VISCACAM_TOOL_CONSOLE_H

#include <string>

namespace tool {

/* Write a whole text, whatever the descriptor takes at a time. False when it takes no more. */
bool writeAll(int fd, const std::string &text);

/* How a piece of a line is to look. Without colours a style changes nothing. */
enum class Style { plain, heading, dim, good, warning, bad };

/* Whether lines on stdout may be coloured: it is a terminal that understands it, and NO_COLOR is not set. */
bool stdoutHasColours();

/* The text in a style, or as it is. */
std::string styled(const std::string &text, Style style, bool colours);

} // namespace tool

#endif
