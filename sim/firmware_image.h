#ifndef VISCACAM_SIM_FIRMWARE_IMAGE_H
#define VISCACAM_SIM_FIRMWARE_IMAGE_H

#include "sim/sim.h"

namespace sim {

/* What a received file turned out to be. */
struct FirmwareImage {
    std::string version; /* empty: it does not say */
    std::string fault;   /* what is wrong with it; empty: nothing */
};

/*
 * Check a file that came as this kind. One without an image line at its beginning is taken as it is. Behind
 * the bytes that the line counts there may be the padding of the last block, nothing else.
 */
FirmwareImage checkImage(const Bytes &file, const std::string &kind);

} // namespace sim

#endif
