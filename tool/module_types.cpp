#include "tool/module_types.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace tool {

const std::vector<ModuleType> &moduleTypes() {
    static const std::vector<ModuleType> types = {
        {"sony1", 0x02000001},
        {"sony3", 0x02000003},
        {"sony4", 0x02000004},
        {"sony5", 0x02000005},
    };
    return types;
}

std::string shown(const ModuleType &type) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(type.code));
    return std::string(type.name) + " (" + code + ")";
}

const ModuleType &findModuleType(const std::string &nameOrCode) {
    char *end = nullptr;
    const unsigned long code = std::strtoul(nameOrCode.c_str(), &end, 0);
    const bool isNumber = !nameOrCode.empty() && *end == '\0';
    std::string known;
    for (const ModuleType &type : moduleTypes()) {
        if (type.name == nameOrCode || (isNumber && type.code == code))
            return type;
        known += (known.empty() ? "" : ", ") + shown(type);
    }
    throw std::invalid_argument("no module type is called \"" + nameOrCode + "\"; known are " + known);
}

} // namespace tool
