#ifndef VISCACAM_TOOL_CTL_SHELL_H
#define VISCACAM_TOOL_CTL_SHELL_H

#include "tool/ctl/session.h"

namespace tool::ctl {

/*
 * Commands from a person at a terminal, with line editing, history and completion, until "quit" or the end of
 * input. Ctrl-C breaks off what is under way and stops what is driven. Returns the exit status.
 */
int runShell(Session &session, const std::string &name);

} // namespace tool::ctl

#endif
