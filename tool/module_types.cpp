#include "tool/module_types.h"

#include <cstdio>
#include <stdexcept>

namespace tool {

std::string shown(const ModuleType &type) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(type.code));
    return type.name + " (" + code + ")";
}

const ModuleType &findModuleType(const std::string &nameOrCode) {
    try {
        return sim::findCamera(nameOrCode);
    } catch (const std::invalid_argument &) {
        std::string known;
        for (const ModuleType &type : sim::knownCameras())
            known += (known.empty() ? "" : ", ") + shown(type);
        throw std::invalid_argument("no module type is called \"" + nameOrCode + "\"; known are " + known);
    }
}

bool isKova(uint32_t moduleType) {
    return (moduleType & 0xFFFFF000) == 0x02012000;
}
bool isSecondKova(uint32_t moduleType) {
    return (moduleType & 0xFFFFFF00) == 0x02012A00;
}

} // namespace tool
