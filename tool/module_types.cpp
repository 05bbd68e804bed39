#include "tool/module_types.h"

#include <cstdio>
#include <stdexcept>

namespace tool {

namespace {

constexpr size_t LINE_WIDTH = 100;

// "known are ...", on several lines.
std::string knownModuleTypes() {
    std::string text = "known are";
    size_t column = LINE_WIDTH;
    for (const ModuleType &type : sim::knownCameras()) {
        const std::string item = shown(type) + (&type == &sim::knownCameras().back() ? "" : ",");
        const bool fits = column + 1 + item.size() <= LINE_WIDTH;
        text += (fits ? " " : "\n  ") + item;
        column = fits ? column + 1 + item.size() : 2 + item.size();
    }
    return text;
}

const ModuleType &find(const std::string &what, const std::string &nameOrCode) {
    try {
        return sim::findCamera(nameOrCode);
    } catch (const std::invalid_argument &) {
        throw std::invalid_argument("no " + what + " is called \"" + nameOrCode + "\"; " +
                                    knownModuleTypes());
    }
}

} // namespace

std::string shown(const ModuleType &type) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(type.code));
    return type.name + " (" + code + ")";
}

const ModuleType &findModuleType(const std::string &nameOrCode) {
    return find("module type", nameOrCode);
}
const ModuleType &findCameraType(const std::string &nameOrCode) {
    return find("camera", nameOrCode);
}

bool isKova(uint32_t moduleType) {
    return (moduleType & 0xFFFFF000) == 0x02012000;
}
bool isSecondKova(uint32_t moduleType) {
    return (moduleType & 0xFFFFFF00) == 0x02012A00;
}

} // namespace tool
