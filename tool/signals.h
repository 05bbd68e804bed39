#ifndef VISCACAM_TOOL_SIGNALS_H
#define VISCACAM_TOOL_SIGNALS_H

#include <functional>

#include <csignal>

namespace tool {

/*
 * Block the signals that ask a program to end (SIGINT, SIGTERM, SIGHUP, those that are not ignored already)
 * in this thread and in all that it starts, and ignore SIGPIPE: an output that nobody reads any more is
 * noticed where it is written. Call before any thread is started. Returns the signals that were blocked.
 */
sigset_t holdSignals();

/*
 * From now on a thread waits for the first of these signals and then calls the action, which may do
 * everything that a thread may and must end the process. A second signal meanwhile ends the process at once.
 */
void onSignal(const sigset_t &signals, std::function<void()> action);

} // namespace tool

#endif
