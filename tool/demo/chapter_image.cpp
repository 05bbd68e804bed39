/*
 * The chapter of the image: only what differs from what was sent before goes over the line.
 * What the camera believes is compared in its own terms, which stand here as its manual has them.
 */
#include "tool/demo/chapters.h"
#include "tool/module_types.h"
#include "viscacam.h"

namespace tool {

namespace {

constexpr Item EXPOSURE_MODE = {"exposureMode", 0x39, 1};
constexpr Item SHUTTER_POSITION = {"shutter", 0x4A, 4};
constexpr Item SHUTTER_VALUE = {"shutterValue", NO_INQUIRY, 0};
constexpr Item IRIS = {"iris", 0x4B, 4};
constexpr Item GAIN = {"gain", 0x4C, 4};
constexpr Item COMPENSATION = {"expCompLevel", 0x4E, 4};
constexpr Item WHITE_BALANCE = {"wbMode", 0x35, 1};
constexpr Item RED_GAIN = {"redGain", 0x43, 4};
constexpr Item BLUE_GAIN = {"blueGain", 0x44, 4};
constexpr Item COLOUR_GAIN = {"colourGain", 0x49, 4};
constexpr Item APERTURE = {"aperture", 0x42, 4};
constexpr Item NOISE_REDUCTION = {"noiseReduction", 0x53, 1};
constexpr Item BRIGHTNESS = {"brightness", NO_INQUIRY, 0};
constexpr Item CONTRAST = {"contrast", NO_INQUIRY, 0};
constexpr Item NOISE_2D = {"noise2d", NO_INQUIRY, 0};
constexpr Item NOISE_3D = {"noise3d", NO_INQUIRY, 0};
constexpr Item FILTER = {"icr", 0x01, 1};

constexpr uint32_t AUTOMATIC = 0; // exposure modes of the library
constexpr uint32_t SHUTTER_PRIORITY = 2;
constexpr uint32_t MANUAL = 7;
constexpr uint32_t WB_MANUAL = 1; // its white-balance modes
constexpr uint32_t WB_AUTO = 2;
constexpr uint32_t DAY = 1; // its day/night modes
constexpr uint32_t NIGHT = 2;

constexpr uint32_t SLOW = 100; // 1/100 s
constexpr uint32_t FAST = 250;
constexpr uint32_t SONY_4 = 0x02000004;

std::string number(unsigned value) {
    return std::to_string(value);
}
std::string step(unsigned value) {
    return "step " + number(value);
}
std::string level(unsigned value) {
    return "level " + number(value);
}
std::string colourGain(unsigned value) {
    return "gain " + number(value);
}
std::string position(unsigned value) {
    return "position " + hexByte(value);
}
std::string perSecond(unsigned value) {
    return "1/" + number(value) + " s";
}
std::string percent(unsigned value) {
    return number(value) + " %";
}

std::string exposureModeWord(unsigned value) {
    switch (value) {
    case 0x00:
        return "automatic";
    case 0x03:
        return "manual";
    case 0x0A:
        return "shutter priority";
    default:
        return "mode " + hexByte(value);
    }
}

std::string whiteBalanceWord(unsigned value) {
    if (value == 0x00)
        return "automatic";
    return value == 0x05 ? "manual" : "mode " + hexByte(value);
}

std::string filterWord(unsigned value) {
    if (value == 0x02)
        return "black and white";
    return value == 0x03 ? "colour" : number(value);
}

/* What a camera is asked for and how it has it, where the families differ. */
struct Terms {
    Item shutter;
    Words shutterWords;
    unsigned slow;
    unsigned fast;
    unsigned iris; // F2.8
    uint32_t gainAsked;
    const char *gainText;
    Words gainWords;
    unsigned gain;
};

constexpr Terms SONY_TERMS = {SHUTTER_POSITION, position, 0x08, 0x0B, 0x0E, 6, "6 dB", position, 0x04};
constexpr Terms KOVA_TERMS = {SHUTTER_VALUE, perSecond, SLOW, FAST, 0x0E, 40, "40 %", percent, 40};

Terms termsOf(uint32_t moduleType) {
    Terms terms = isKova(moduleType) ? KOVA_TERMS : SONY_TERMS;
    if (moduleType == SONY_4)
        terms.iris = 0x0D;
    return terms;
}

/* The exposure as it is told, with the profile that was applied last. */
struct Exposure {
    Stage &stage;
    Terms terms;
    bool tellsDome; // the second generation is told its dome type with every profile
    ExposureParam profile;
};

Exposure firstExposure(Stage &stage, uint32_t moduleType) {
    Exposure exposure = {stage, termsOf(moduleType), isSecondKova(moduleType), {}};
    exposure.profile.ulExposureMode = SHUTTER_PRIORITY;
    exposure.profile.ulShutter = SLOW;
    exposure.profile.lExpCompValue = 28; // two steps of 14 above the neutral 7
    exposure.profile.ulIris = 280;
    exposure.profile.ulGain = exposure.terms.gainAsked;
    return exposure;
}

// How many packets the camera received for it.
unsigned long apply(Exposure &exposure) {
    Witness &witness = exposure.stage.witness();
    const unsigned long before = witness.packets();
    exposure.stage.order([&exposure] { return VISCA_SetExposure(0, 0, &exposure.profile); });
    return witness.packets() - before;
}

std::string packets(unsigned long count) {
    if (count == 0)
        return "no packet";
    return std::to_string(count) + (count == 1 ? " packet" : " packets");
}

// Apply the profile, and count what goes over the line for what was changed in it.
void applyAndCount(Exposure &exposure, const std::string &asked, unsigned long changes) {
    const unsigned long received = apply(exposure);
    exposure.stage.say("sent for it: " + packets(received));
    exposure.stage.table().add(asked + (exposure.tellsDome ? ", and the dome type" : ""), packets(received),
                               received == changes + (exposure.tellsDome ? 1 : 0));
}

void compareModeAndShutter(Exposure &exposure, const std::string &modeText, unsigned mode,
                           const std::string &shutterText, unsigned shutter) {
    exposure.stage.compare(modeText, EXPOSURE_MODE, mode, exposureModeWord);
    exposure.stage.compare(shutterText, exposure.terms.shutter, shutter, exposure.terms.shutterWords);
}

void applyTwice(Exposure &exposure) {
    Stage &stage = exposure.stage;
    stage.heading("Apply an exposure profile: shutter priority, 1/100 s, two steps brighter");
    apply(exposure);
    compareModeAndShutter(exposure, "shutter priority", 0x0A, "shutter 1/100 s", exposure.terms.slow);
    stage.compare("exposure compensation 28", COMPENSATION, 9, step);
    stage.heading(exposure.tellsDome
                      ? "Apply the same profile again: nothing differs, so nothing is sent but the "
                        "dome type, which goes with every profile"
                      : "Apply the same profile again: nothing differs, so nothing is sent");
    applyAndCount(exposure, "same profile again: nothing", 0);
}

void changeOneValue(Exposure &exposure) {
    exposure.stage.heading(exposure.tellsDome
                               ? "Change the shutter to 1/250 s: one packet behind the dome type"
                               : "Change the shutter to 1/250 s: one packet");
    exposure.profile.ulShutter = FAST;
    applyAndCount(exposure, "shutter changed: one packet", 1);
    exposure.stage.compare("shutter 1/250 s", exposure.terms.shutter, exposure.terms.fast,
                           exposure.terms.shutterWords);
}

void switchToManual(Exposure &exposure) {
    Stage &stage = exposure.stage;
    const Terms &terms = exposure.terms;
    stage.heading("Switch to manual exposure: shutter, iris and gain follow, the unchanged shutter too");
    exposure.profile.ulExposureMode = MANUAL;
    apply(exposure);
    compareModeAndShutter(exposure, "manual exposure", 0x03, "shutter still 1/250 s", terms.fast);
    stage.compare("iris F2.8", IRIS, terms.iris, position);
    stage.compare(std::string("gain ") + terms.gainText, GAIN, terms.gain, terms.gainWords);
}

void setWhiteBalance(Stage &stage) {
    stage.heading("White balance by hand, a little redder");
    const WhiteBalanceParam manual = {WB_MANUAL, -20, 20};
    stage.order([&manual] { return VISCA_SetWhiteBalance(0, 0, &manual); });
    stage.compare("manual white balance", WHITE_BALANCE, 0x05, whiteBalanceWord);
    stage.compare("red offset 20", RED_GAIN, 127 + 20, colourGain);
    stage.compare("blue offset -20", BLUE_GAIN, 127 - 20, colourGain);
}

void setPicture(Stage &stage, bool kova) {
    stage.heading(kova ? "Picture: brightness, contrast, saturation, sharpness, noise reduction"
                       : "Picture: saturation, sharpness, noise reduction");
    ImageEnhanceParam picture = {};
    picture.ulBrightness = 120;
    picture.ulContrast = 140;
    picture.ulSaturation = 160;
    picture.ulSharpness = 160;
    picture.ulDenoise2D = 60;
    picture.ulDenoise3D = 100;
    stage.order([&picture] { return VISCA_SetImageEnhance(0, 0, &picture); });
    stage.compare("saturation 160", COLOUR_GAIN, kova ? 160 : 6, level);
    stage.compare("sharpness 160", APERTURE, 10, level);
    if (!kova) {
        stage.compare("noise reduction 100", NOISE_REDUCTION, 2, level);
        return;
    }
    stage.compare("brightness 120", BRIGHTNESS, 120, level);
    stage.compare("contrast 140", CONTRAST, 140, level);
    stage.compare("noise reduction 60 in 2D", NOISE_2D, 60, level);
    stage.compare("noise reduction 100 in 3D", NOISE_3D, 100, level);
}

void setNightAndDay(Stage &stage) {
    stage.heading("From day to night");
    stage.order([] { return VISCA_SetBlackWhiteMode(0, NIGHT); });
    stage.compare("night", FILTER, 0x02, filterWord);
    stage.heading("And back to day");
    stage.order([] { return VISCA_SetBlackWhiteMode(0, DAY); });
    stage.compare("day", FILTER, 0x03, filterWord);
}

void backToAutomatic(Exposure &exposure) {
    Stage &stage = exposure.stage;
    stage.heading("Back to automatic exposure and white balance");
    exposure.profile.ulExposureMode = AUTOMATIC;
    apply(exposure);
    const WhiteBalanceParam automatic = {WB_AUTO, 0, 0};
    stage.order([&automatic] { return VISCA_SetWhiteBalance(0, 0, &automatic); });
    stage.compare("automatic exposure", EXPOSURE_MODE, 0x00, exposureModeWord);
    stage.compare("automatic white balance", WHITE_BALANCE, 0x00, whiteBalanceWord);
}

} // namespace

void tellImage(Stage &stage, uint32_t moduleType) {
    Exposure exposure = firstExposure(stage, moduleType);
    applyTwice(exposure);
    changeOneValue(exposure);
    switchToManual(exposure);
    setWhiteBalance(stage);
    setPicture(stage, isKova(moduleType));
    setNightAndDay(stage);
    backToAutomatic(exposure);
}

} // namespace tool
