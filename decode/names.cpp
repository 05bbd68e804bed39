#include "decode/names.h"

namespace decode {
namespace {

constexpr NamedValue kSwitch[] = {{2, "on"}, {3, "off"}};
constexpr NamedValue kStep[] = {{0, "reset"}, {2, "up"}, {3, "down"}};

constexpr NamedValue kRegister[] = {
    {0x50, "zoom cut 0"},   {0x51, "zoom cut 1"},    {0x56, "sync mode"},
    {0x72, "monitor mode"}, {0x73, "output enable"},
};

constexpr NamedValue kVendor[] = {{0x0020, "SONY"}, {0x8026, "TALVERO"}};
constexpr NamedValue kModel[] = {{0x0467, "sony 7500"}, {0xA000, "CAM7K3FHD40Z"}, {0xB000, "CAM7K3HD40Z"}};

constexpr NamedValue kFocusMode[] = {{0x02, "auto"}, {0x03, "manual"}, {0x04, "0x04"}, {0x10, "toggle"}};
constexpr NamedValue kAfMode[] = {{0, "normal"}, {1, "interval"}, {2, "zoom trigger"}};
constexpr NamedValue kIrCorrection[] = {{0, "standard"}, {1, "infrared light"}};

constexpr NamedValue kNearLimit[] = {
    {0x3000, "10 m"}, {0x7000, "3 m"}, {0xC000, "1 m"}, {0xE000, "0.1 m"}, {0xF000, "Kova 0.1 m"},
};

constexpr NamedValue kExposure[] = {
    {0x00, "automatic"},        {0x03, "manual"},
    {0x0A, "shutter priority"}, {0x0B, "iris priority"},
    {0x0C, "Kova mode 0x0C"},   {0x0D, "Kova mode 0x0D"},
    {0x0E, "gain priority"},    {0x0F, "automatic within ranges"},
};

// 60 Hz first; where the 50 Hz series has another time it stands behind.
constexpr NamedValue kShutter[] = {
    {0x00, "1 s"},
    {0x01, "1/2 s"},
    {0x02, "1/4 s, PAL 1/3"},
    {0x03, "1/8 s, PAL 1/6"},
    {0x04, "1/15 s, PAL 1/12"},
    {0x05, "1/30 s, PAL 1/25"},
    {0x06, "1/60 s, PAL 1/50"},
    {0x07, "1/90 s, PAL 1/75"},
    {0x08, "1/100 s"},
    {0x09, "1/125 s, PAL 1/120"},
    {0x0A, "1/180 s, PAL 1/150"},
    {0x0B, "1/250 s, PAL 1/215"},
    {0x0C, "1/350 s, PAL 1/300"},
    {0x0D, "1/500 s, PAL 1/425"},
    {0x0E, "1/725 s, PAL 1/600"},
    {0x0F, "1/1000 s"},
    {0x10, "1/1500 s, PAL 1/1250"},
    {0x11, "1/2000 s, PAL 1/1750"},
    {0x12, "1/3000 s, PAL 1/2500"},
    {0x13, "1/4000 s, PAL 1/3500"},
    {0x14, "1/6000 s"},
    {0x15, "1/10000 s"},
};

// The 960-line block (module type 0x02000004) has a series of its own from 0x03 on.
constexpr NamedValue kIris[] = {
    {0x00, "closed"},
    {0x01, "F28"},
    {0x02, "F22"},
    {0x03, "F19, 960-line block F16"},
    {0x04, "F16, 960-line block F14"},
    {0x05, "F14, 960-line block F11"},
    {0x06, "F11, 960-line block F9.6"},
    {0x07, "F9.6, 960-line block F8"},
    {0x08, "F8, 960-line block F6.8"},
    {0x09, "F6.8, 960-line block F5.6"},
    {0x0A, "F5.6, 960-line block F4.8"},
    {0x0B, "F4.8, 960-line block F4"},
    {0x0C, "F4, 960-line block F3.4"},
    {0x0D, "F3.4, 960-line block F2.8"},
    {0x0E, "F2.8, 960-line block F2.4"},
    {0x0F, "F2.4, 960-line block F2"},
    {0x10, "F2, 960-line block F1.6"},
    {0x11, "F1.6, 960-line block F1.4"},
};

constexpr NamedValue kMetering[] = {{2, "spot"}, {3, "whole picture"}, {4, "Kova mode 4"}};

constexpr NamedValue kWdr[] = {{0, "automatic"}, {1, "on (Kova)"}, {2, "on"}, {3, "off"}, {6, "on (mode 6)"}};

constexpr NamedValue kWhiteBalance[] = {
    {0, "auto"},   {1, "indoor"},       {2, "outdoor"},          {3, "one-push"},    {4, "ATW"},
    {5, "manual"}, {6, "outdoor auto"}, {7, "sodium lamp auto"}, {8, "sodium lamp"},
};

constexpr NamedValue kIcr[] = {{2, "on (black and white)"}, {3, "off (colour)"}};

constexpr NamedValue kBoard[] = {{0, "encoder"}, {1, "sensor"}, {2, "motor"}};
constexpr NamedValue kUpgrade[] = {{3, "under way"}, {4, "done"}, {5, "failed"}};

constexpr NamedValue kScene[] = {
    {0x00, "scene 2"},  {0x01, "scene 1"},  {0x02, "scene 4"}, {0x03, "scene 3"},
    {0x04, "scene 5"},  {0x05, "scene 6"},  {0x06, "scene 7"}, {0x07, "scene 8"},
    {0x0D, "scene 80"}, {0x0E, "scene 81"}, {0x0F, "scene 0"},
};

constexpr NamedValue kDome[] = {
    {0, "other model"}, {1, "ITC with WH"}, {2, "ITC with IR"}, {3, "IT with WH"}, {4, "IT with IR"},
};

template <std::size_t N>
constexpr NameList List(const char *format, NameList::Style style, const NamedValue (&values)[N]) {
    return {format, style, values, N};
}

constexpr NameList::Style kName = NameList::Style::Name;
constexpr NameList::Style kWithCode = NameList::Style::WithCode;

constexpr NameList kLists[] = {
    List("switch", kName, kSwitch),
    List("step", kName, kStep),
    List("register", kWithCode, kRegister),
    List("vendor", kWithCode, kVendor),
    List("model", kWithCode, kModel),
    List("focus-mode", kName, kFocusMode),
    List("af-mode", kName, kAfMode),
    List("ir-correction", kName, kIrCorrection),
    List("near-limit", kWithCode, kNearLimit),
    List("exposure", kName, kExposure),
    List("shutter", kWithCode, kShutter),
    List("iris", kWithCode, kIris),
    List("metering", kName, kMetering),
    List("wdr", kName, kWdr),
    List("white-balance", kName, kWhiteBalance),
    List("icr", kName, kIcr),
    List("board", kName, kBoard),
    List("upgrade", kWithCode, kUpgrade),
    List("scene", kWithCode, kScene),
    List("dome", kWithCode, kDome),
};

constexpr bool AreSorted() {
    for (const NameList &list : kLists)
        for (std::size_t i = 1; i < list.count; ++i)
            if (list.values[i - 1].value >= list.values[i].value)
                return false;
    return true;
}
static_assert(AreSorted(), "each list names a value once, in order");

} // namespace

const NameList *FindNameList(const std::string &format) {
    for (const NameList &list : kLists)
        if (format == list.format)
            return &list;
    return nullptr;
}

const char *FindName(const NameList &list, std::uint32_t value) {
    for (std::size_t i = 0; i < list.count; ++i)
        if (list.values[i].value == value)
            return list.values[i].name;
    return nullptr;
}

std::vector<NamedValue> ValuesOf(const std::string &format) {
    const NameList *list = FindNameList(format);
    if (list == nullptr)
        return {};
    return std::vector<NamedValue>(list->values, list->values + list->count);
}

} // namespace decode
