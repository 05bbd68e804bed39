/**
 * @file run.h
 * Runs a plan: the library with the reference host against a simulated camera, over a pseudo-terminal.
 *
 * Until a fault strikes, everything is right: each inquiry is answered by what the camera is, nothing times
 * out, and host and camera agree about every packet. While faults strike, the link keeps its laws and the
 * library its memory. When they are over ("calm"), everything answers again. Time runs faster for camera and
 * library while faults strike, and for the library at its own pace otherwise.
 */
#ifndef VISCACAM_TESTS_MODEL_RUN_H
#define VISCACAM_TESTS_MODEL_RUN_H

#include <string>

#include "tests/model/plan.h"

namespace model {

/**
 * Run a plan in a process of its own, which may crash or hang.
 * @return what went wrong and where, empty if nothing
 */
std::string RunApart(const Plan &plan);

} // namespace model

#endif
