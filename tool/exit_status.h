#ifndef VISCACAM_TOOL_EXIT_STATUS_H
#define VISCACAM_TOOL_EXIT_STATUS_H

namespace tool {

/* What every subcommand ends with. */
constexpr int EXIT_DONE = 0;
constexpr int EXIT_REFUSED = 1; /* the camera, the library or the system said no; also after an interrupt */
constexpr int EXIT_USAGE = 2;   /* the command line asks for something that does not exist */

} // namespace tool

#endif
