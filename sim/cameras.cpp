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
    {{"kova1", 0x02012000}, 0x8026, 0xA000, 0x0100, 0x06},
    {{"kova-2001", 0x02012001}, 0x8026, 0xA000, 0x0101, 0x06},
    {{"kova-2002", 0x02012002}, 0x8026, 0xA000, 0x0102, 0x06},
    {{"kova-2003", 0x02012003}, 0x8026, 0xA000, 0x0103, 0x06},
    {{"kova-2004", 0x02012004}, 0x8026, 0xA000, 0x0104, 0x06},
    {{"kova-2005", 0x02012005}, 0x8026, 0xA000, 0x0105, 0x06},
    {{"kova-2100", 0x02012100}, 0x8026, 0xB000, 0x0110, 0x0E},
    {{"kova-2200", 0x02012200}, 0x8026, 0xB000, 0x0120, 0x15},
    {{"kova-2A00", 0x02012A00}, 0x8026, 0xA000, 0x0200, 0x06},
    {{"kova2", 0x02012A01}, 0x8026, 0xA000, 0x0201, 0x06},
    {{"kova-2A02", 0x02012A02}, 0x8026, 0xA000, 0x0202, 0x06},
};

struct Alias {
    const char *name;
    uint32_t code;
};

const Alias ALIASES[] = {
    {"kova", 0x02012001},
    {"kova-2000", 0x02012000},
    {"kova-2A01", 0x02012A01},
};

bool isCalled(const CameraType &type, const std::string &name) {
    for (const Alias &alias : ALIASES) {
        if (name == alias.name && type.code == alias.code)
            return true;
    }
    return type.name == name;
}

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
        if (isCalled(type, nameOrCode) || (isNumber && type.code == code))
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
