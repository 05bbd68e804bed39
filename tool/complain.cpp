#include "tool/complain.h"

#include <unistd.h>

#include "tool/console.h"

namespace tool {

void complain(const std::string &text) {
    (void)writeAll(STDERR_FILENO, "viscacam: " + text + "\n");
}

void endProcess(int status) {
    _exit(status);
}

} // namespace tool
