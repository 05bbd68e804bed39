#ifndef VISCACAM_TOOL_DEMO_FAMILIES_H
#define VISCACAM_TOOL_DEMO_FAMILIES_H

#include "tool/demo/demo.h"

namespace tool {

/*
 * The demo with a simulated camera of each family, one after the other, each in a process of its own: the
 * library's state belongs to a process and is never taken down. Options other than the camera go to both.
 * Returns the exit status: 0 when both agree in everything. A signal that asks the program to end ends them.
 */
int runDemoOfBothFamilies(const DemoOptions &options);

} // namespace tool

#endif
