#ifndef VISCACAM_TOOL_DOCTOR_DEVICE_H
#define VISCACAM_TOOL_DOCTOR_DEVICE_H

#include <string>

#include "tool/doctor/report.h"

namespace tool::doctor {

/*
 * Whether the device is there, is a serial one, and may be opened by this user. False when there is no sense
 * in going on. real: its path without symbolic links.
 */
bool checkDevice(const std::string &path, Report &report, std::string &real);
bool checkPermission(const std::string &real, Report &report);

} // namespace tool::doctor

#endif
