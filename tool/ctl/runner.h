#ifndef VISCACAM_TOOL_CTL_RUNNER_H
#define VISCACAM_TOOL_CTL_RUNNER_H

#include "tool/ctl/command.h"
#include "tool/ctl/job.h"

namespace tool::ctl {

/*
 * Carry out a command, follow what it has sent to the end, and print what came of it. source: where it was
 * read, "FILE:12", may be empty. Returns whether it is done. Throws Interrupted at a Ctrl-C, when whatever
 * moved was told to stop.
 */
bool runCommand(Bench &bench, const Call &call, const std::string &source);

/* Print what was noticed since the last command. */
void printNotes(Bench &bench);

} // namespace tool::ctl

#endif
