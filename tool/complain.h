#ifndef VISCACAM_TOOL_COMPLAIN_H
#define VISCACAM_TOOL_COMPLAIN_H

#include <string>

namespace tool {

/* Print "viscacam: TEXT" as one line on stderr. Any thread. */
void complain(const std::string &text);

/*
 * End the process without running destructors: the library's threads have no end and use its state, the host
 * and the trace until the very last moment. Whatever was printed has been written already. Any thread.
 */
[[noreturn]] void endProcess(int status);

} // namespace tool

#endif
