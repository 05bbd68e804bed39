#ifndef VISCACAM_TOOL_CTL_GRAMMAR_H
#define VISCACAM_TOOL_CTL_GRAMMAR_H

#include "tool/ctl/command.h"

namespace tool::ctl {

/*
 * Understand one command, with all its values. The module type decides which values there are; 0: any. Throws
 * UsageError; its text says what is allowed.
 */
Call parseCommand(const Words &words, uint32_t moduleType);

/* What can be typed next: whole words that begin as the one that was begun, sorted. */
struct Completion {
    std::string begun;
    Words words;
    bool file = false; /* the name of a file */
};
Completion complete(const std::string &line, uint32_t moduleType);

/* Every command in a line each, by subject. */
std::string overview(uint32_t moduleType);
/* All about the commands that begin with these words, or whose subject has this name. Throws UsageError. */
std::string explain(const Words &words, uint32_t moduleType);

} // namespace tool::ctl

#endif
