// Host values of the exposure parameters and the camera's codes for them.
#ifndef VISCACAM_VISCA_SONY_CTRL_IMAGE_EXPOSURE_TABLES_H
#define VISCACAM_VISCA_SONY_CTRL_IMAGE_EXPOSURE_TABLES_H

#include "visca_sony_ctrl/setting.h"

namespace viscacam {

// clang-format off

// AE mode, command 01 04 39 mm.
constexpr CodeRow EXPOSURE_MODES_KOVA[] = {
    {0, 0x00}, // full automatic
    {1, 0x0F}, // automatic within gain and shutter ranges
    {2, 0x0A}, // shutter priority
    {3, 0x0B}, // iris priority
    {4, 0x0E}, // gain fixed by the host
    {5, 0x0C},
    {6, 0x0D},
    {7, 0x03}, // manual
};
constexpr CodeRow EXPOSURE_MODES_SONY[] = {
    {0, 0x00},
    {2, 0x0A},
    {3, 0x0B},
    {7, 0x03},
};

// Shutter position of Sony blocks, command 01 04 4A 00 00 0p 0q: N of 1/N s, NTSC and PAL side by side.
constexpr CodeRow SHUTTERS_SONY[] = {
    {1, 0x00},
    {2, 0x01},
    {3, 0x02},    {4, 0x02},
    {6, 0x03},    {8, 0x03},
    {10, 0x04},   {12, 0x04},   {15, 0x04},
    {20, 0x05},   {25, 0x05},   {30, 0x05},
    {50, 0x06},   {60, 0x06},
    {75, 0x07},   {90, 0x07},
    {100, 0x08},
    {120, 0x09},  {125, 0x09},
    {150, 0x0A},  {180, 0x0A},
    {200, 0x0B},  {215, 0x0B},  {250, 0x0B},
    {300, 0x0C},  {350, 0x0C},
    {425, 0x0D},  {500, 0x0D},
    {600, 0x0E},  {725, 0x0E},
    {1000, 0x0F},
    {1250, 0x10}, {1500, 0x10},
    {1750, 0x11}, {2000, 0x11},
    {2500, 0x12}, {3000, 0x12},
    {3500, 0x13}, {4000, 0x13},
    {6000, 0x14},
    {8000, 0x15}, {10000, 0x15},
};

// Iris position, command 01 04 4B 00 00 0p 0q: F-number times 100. The lens of 0x02000004 has one stop less
// (F19) and knows two more wide openings.
constexpr uint32_t IRIS_CLOSED = 99999;
constexpr CodeRow IRISES_SONY_4[] = {
    {IRIS_CLOSED, 0x00},
    {2800, 0x01},
    {2200, 0x02},
    {1600, 0x03},
    {1400, 0x04},
    {1100, 0x05},
    {960,  0x06},
    {800,  0x07},
    {680,  0x08},
    {560,  0x09},
    {480,  0x0A},
    {400,  0x0B},
    {340,  0x0C},
    {280,  0x0D},
    {240,  0x0E},
    {200,  0x0F},
    {160,  0x10},
    {140,  0x11},
    {130,  0x11},
    {100,  0x11},
};
constexpr CodeRow IRISES_OTHERS[] = {
    {IRIS_CLOSED, 0x00},
    {2800, 0x01},
    {2200, 0x02},
    {1900, 0x03},
    {1600, 0x04},
    {1400, 0x05},
    {1100, 0x06},
    {960,  0x07},
    {800,  0x08},
    {680,  0x09},
    {560,  0x0A},
    {480,  0x0B},
    {400,  0x0C},
    {340,  0x0D},
    {280,  0x0E},
    {240,  0x0F},
    {200,  0x10},
    {160,  0x11},
    {100,  0x11},
};

// Metering, command 01 04 59 mm.
constexpr CodeRow METERINGS_KOVA[] = {
    {0, 0x03}, // average
    {1, 0x02}, // spot
    {2, 0x04},
};
constexpr CodeRow METERINGS_SONY[] = {
    {0, 0x03},
    {1, 0x02},
};

// clang-format on

static_assert(HasUniqueValues(EXPOSURE_MODES_KOVA) && HasUniqueValues(EXPOSURE_MODES_SONY));
static_assert(HasUniqueValues(SHUTTERS_SONY));
static_assert(HasUniqueValues(IRISES_SONY_4) && HasUniqueValues(IRISES_OTHERS));
static_assert(HasUniqueValues(METERINGS_KOVA) && HasUniqueValues(METERINGS_SONY));

} // namespace viscacam

#endif
