/** @file profiles.h Records of the host that the profile tests start from. */
#ifndef VISCACAM_UNIT_IMAGE_PROFILES_H
#define VISCACAM_UNIT_IMAGE_PROFILES_H

#include "viscacam.h"

namespace unit {

/** Every value exists on every module, every switch is on, and the words that are not read are noisy. */
inline ExposureParam Exposure(uint32_t mode) {
    ExposureParam profile{};
    profile.ulExposureMode = mode;
    profile.lExpCompValue = 20;
    profile.ulIris = 400;
    profile.ulShutter = 500;
    profile.ulGain = 10;
    profile.ulReserved5 = profile.ulReserved6 = profile.ulReserved21 = 0xDEADBEEF;
    profile.ulSlowShutter = 25;
    profile.ulFastShutter = 10000;
    profile.ulMaxGain = 90;
    profile.ulMinGain = 10;
    profile.bIsAutoSlowShutter = 1;
    profile.ulMaxSlowShutter = 12;
    profile.ulWdr = 1;
    profile.ulWdrLevel = 7;
    profile.ulMeteringMode = 1;
    profile.TopX = 20;
    profile.TopY = 10;
    profile.BotX = 60;
    profile.BotY = 30;
    profile.ulBlackWhiteMode = 2;
    return profile;
}

inline ImageEnhanceParam Enhancement() {
    return {1, 18, 130, 0xDEADBEEF, 0xDEADBEEF, 50, 254, 52};
}

} // namespace unit

#endif
