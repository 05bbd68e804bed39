#ifndef VISCACAM_TOOL_CTL_WATCH_H
#define VISCACAM_TOOL_CTL_WATCH_H

#include "tool/ctl/job.h"
#include "tool/ctl/values.h"

namespace tool::ctl {

/* What can be watched, for a module type; 0: any. */
Domain watchableThings(uint32_t moduleType);

struct WatchOptions {
    std::vector<std::string> things;
    std::chrono::milliseconds every;
    int64_t count; /* 0: until Ctrl-C */
};

/* Ask for things at an interval, a line a round, and count what got lost. */
void watch(Job &job, const WatchOptions &options);

} // namespace tool::ctl

#endif
