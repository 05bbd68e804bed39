#ifndef VISCACAM_TOOL_MODULE_TYPES_H
#define VISCACAM_TOOL_MODULE_TYPES_H

#include <cstdint>
#include <string>

#include "sim/sim.h"

namespace tool {

/* A camera module that the library can be told to drive: there is a simulated one of each. */
using ModuleType = sim::CameraType;

/* "sony1 (0x02000001)" */
std::string shown(const ModuleType &type);

/*
 * Find a type by its name, or by its code in C notation ("0x02000001", "33554433").
 * Throws std::invalid_argument; its text lists the known names and codes.
 */
const ModuleType &findModuleType(const std::string &nameOrCode);
/* The same, but the text speaks of a camera. */
const ModuleType &findCameraType(const std::string &nameOrCode);

bool isKova(uint32_t moduleType);
bool isSecondKova(uint32_t moduleType); /* the second generation of them */

} // namespace tool

#endif
