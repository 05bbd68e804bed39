#ifndef VISCACAM_TOOL_MODULE_TYPES_H
#define VISCACAM_TOOL_MODULE_TYPES_H

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

/* A camera module that the library can be told to drive. */
struct ModuleType {
    const char *name; /* as typed on the command line */
    uint32_t code;
};

/* In the order in which a user is shown them. */
const std::vector<ModuleType> &moduleTypes();

/* "sony1 (0x02000001)" */
std::string shown(const ModuleType &type);

/*
 * Find a type by its name, or by its code in C notation ("0x02000001", "33554433").
 * Throws std::invalid_argument; its text lists the known names and codes.
 */
const ModuleType &findModuleType(const std::string &nameOrCode);

} // namespace tool

#endif
