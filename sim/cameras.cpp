#include "sim/cameras.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace sim {

namespace {

const Traits TRAITS[] = {
    {{"sony1", 0x02000001}, 0x0020, 0x0467, 0x0110, 0x06},
    {{"sony3", 0x02000003}, 0x0020, 0x0467, 0x0130, 0x06},
    {{"sony4", 0x02000004}, 0x0020, 0x0467, 0x0140, 0x0E},
    {{"sony5", 0x02000005}, 0x0020, 0x0467, 0x0150, 0x06},
};

std::string knownNames() {
    std::string names;
    for (const CameraType &type : knownCameras()) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", type.code);
        names += (names.empty() ? "" : ", ") + type.name + " (" + code + ")";
    }
    return names;
}

} // namespace

const std::vector<CameraType> &knownCameras() {
    static const std::vector<CameraType> cameras = [] {
        std::vector<CameraType> list;
        for (const Traits &traits : TRAITS)
            list.push_back(traits.type);
        return list;
    }();
    return cameras;
}

const CameraType &findCamera(const std::string &nameOrCode) {
    char *end = nullptr;
    const unsigned long code = std::strtoul(nameOrCode.c_str(), &end, 0);
    const bool isNumber = !nameOrCode.empty() && *end == '\0';
    for (const CameraType &type : knownCameras()) {
        if (type.name == nameOrCode || (isNumber && type.code == code))
            return type;
    }
    throw std::invalid_argument("no camera is called \"" + nameOrCode + "\"; known are " + knownNames());
}

const Traits &traitsOf(const CameraType &type) {
    for (const Traits &traits : TRAITS) {
        if (traits.type.code == type.code)
            return traits;
    }
    throw std::invalid_argument("no camera is called \"" + type.name + "\"; known are " + knownNames());
}

} // namespace sim
