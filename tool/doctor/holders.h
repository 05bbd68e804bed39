#ifndef VISCACAM_TOOL_DOCTOR_HOLDERS_H
#define VISCACAM_TOOL_DOCTOR_HOLDERS_H

#include <string>

#include "tool/doctor/report.h"

namespace tool::doctor {

/*
 * Who else has the device open, or prints on it. Two programs on one port take each other's bytes, so that
 * nothing more can be learned then: returns false.
 */
bool checkHolders(const std::string &real, Report &report);

} // namespace tool::doctor

#endif
