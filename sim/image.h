#ifndef VISCACAM_SIM_IMAGE_H
#define VISCACAM_SIM_IMAGE_H

#include "sim/cameras.h"
#include "sim/command_table.h"
#include "sim/settings.h"

namespace sim {

/* ---- exposure.cpp ---- */
void addExposureSettings(Settings &settings, const Traits &traits);
std::vector<Row> exposureRows(const Traits &traits);
/* The shutter time that the host has chosen, in seconds; 0 while the automatic chooses it. */
double shutterSeconds(const Settings &settings, const Traits &traits, double frameRate);

/* ---- picture.cpp ---- */
void addPictureSettings(Settings &settings, const Traits &traits);
std::vector<Row> pictureRows(const Traits &traits);

} // namespace sim

#endif
