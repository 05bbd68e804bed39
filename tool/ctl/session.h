#ifndef VISCACAM_TOOL_CTL_SESSION_H
#define VISCACAM_TOOL_CTL_SESSION_H

#include <atomic>
#include <memory>

#include "sim/sim.h"
#include "tool/ctl/ctl.h"
#include "tool/ctl/job.h"
#include "tool/tap/tap.h"
#include "tool/trace.h"

namespace tool::ctl {

/* A camera, and all that is needed to command it. Made once and never destroyed. */
struct Session {
    explicit Session(const CtlOptions &options);
    std::unique_ptr<Trace> trace;
    Bench bench;
    std::unique_ptr<sim::Camera> camera;
    std::atomic<CaptureTap *> tap{nullptr}; /* between the camera and the library; null: none */
    std::string place;                      /* "sony1 (0x02000001) at /dev/ttyUSB0" */
};

/*
 * Find the camera and start the library: about a second, up to a minute and a quarter when there is no
 * camera. Throws Refused, and std::invalid_argument for a fault that there is not.
 */
void openCamera(Session &session, const CtlOptions &options);

/* From now on SIGINT breaks off what can be broken off; it and the other signals else end the process. Call
 * before any thread is started. */
void watchSignals(Session &session, const sigset_t &signals);

/* Stop what is still driven. */
void stopDrives(Bench &bench);

/* Print what is left to say, and end the process. */
[[noreturn]] void endSession(Session &session, int status);

} // namespace tool::ctl

#endif
