#ifndef VISCACAM_TOOL_REPLAY_REPLAY_H
#define VISCACAM_TOOL_REPLAY_REPLAY_H

#include <string>

namespace tool {

struct ReplayOptions {
    std::string capture; /* file */
    std::string link;    /* that leads to the host's end; empty: see Links */
    bool fullSpeed = false;
    bool trace = false;
    bool untilEof = false; /* the end of standard input ends it */
};

/*
 * viscacam sim --replay: answers as the camera of a capture did, until a signal. Returns the exit status: 1
 * when the host did anything else than the capture's.
 */
int runReplay(const ReplayOptions &options);

} // namespace tool

#endif
