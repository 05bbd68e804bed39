#include "tests/model/forecast.h"

#include <algorithm>
#include <utility>

namespace model {

namespace {

enum Slot {
    MODE,
    COMPENSATION,
    IRIS,
    SHUTTER,
    GAIN,
    LOW_SHUTTER,
    HIGH_SHUTTER,
    LOW_GAIN,
    HIGH_GAIN,
    SLOW,
    SLOW_LIMIT,
    WDR,
    WDR_LEVEL,
    METERING,
    DAY,
    BALANCE,
    BRIGHTNESS,
    CONTRAST,
    SATURATION,
    SHARPNESS,
    DENOISE_2D,
    DENOISE_3D,
};

constexpr uint32_t SONY_3 = 0x02000003;
constexpr uint32_t SONY_5 = 0x02000005;

} // namespace

Forecast::Forecast(uint32_t moduleType)
    : m_type(moduleType), m_kova((moduleType & 0xFFFFF000) == 0x02012000) {
    (void)Restore();
    m_commands.clear();
}

std::vector<uint8_t> Forecast::TakeCommands() {
    return std::exchange(m_commands, {});
}

bool Forecast::Put(uint8_t command) {
    if (Refuses()) {
        return false;
    }
    m_limit -= m_limit == NO_LIMIT ? 0 : 1;
    m_commands.push_back(command);
    return true;
}

uint32_t Forecast::Plain(const std::vector<uint8_t> &commands) {
    return std::all_of(commands.begin(), commands.end(), [this](uint8_t command) { return Put(command); })
               ? 0
               : 1;
}

bool Forecast::Knows(int slot, int64_t value) const {
    const auto found = m_known.find(slot);
    return found != m_known.end() && found->second == value;
}

// The word "changed" belongs to settings that others depend on: those go out again after a change.
bool Forecast::Send(uint8_t command, int slot, int64_t value, bool *changed, bool forced) {
    if (Knows(slot, value) && !forced) {
        if (changed != nullptr) {
            *changed = false;
        }
        return true;
    }
    if (!Put(command)) {
        return false;
    }
    if (changed != nullptr) {
        *changed = true;
    }
    m_known[slot] = value;
    return true;
}

bool Forecast::SlowShutter(const ExposureParam &profile) {
    const bool off = profile.ulExposureMode == 3 || profile.ulExposureMode == 4;
    const uint32_t wanted = off ? 0 : profile.bIsAutoSlowShutter;
    if (wanted > 1 || !Send(0x5A, SLOW, wanted, &m_slowChanged)) {
        return false;
    }
    return off || wanted != 1 || !m_kova ||
           Send(0xCA, SLOW_LIMIT, profile.ulMaxSlowShutter, nullptr, m_slowChanged);
}

// A mode that the module does not have is passed over, and the rest is applied.
bool Forecast::Mode(uint32_t mode) {
    const bool sony = mode == 0 || mode == 2 || mode == 3 || mode == 7;
    return !(m_kova ? mode <= 7 : sony) || Send(0x39, MODE, mode, &m_modeChanged);
}

bool Forecast::Range(uint8_t command, int low, uint32_t lowValue, int high, uint32_t highValue) {
    if (Knows(low, lowValue) && Knows(high, highValue) && !m_modeChanged) {
        return true;
    }
    if (!Put(command)) {
        return false;
    }
    m_known[low] = lowValue;
    m_known[high] = highValue;
    return true;
}

bool Forecast::Ranges(const ExposureParam &profile) {
    return !m_kova || profile.ulExposureMode != 1 ||
           (Range(0x2C, LOW_GAIN, profile.ulMinGain, HIGH_GAIN, profile.ulMaxGain) &&
            Range(0xA3, LOW_SHUTTER, std::min(profile.ulSlowShutter, profile.ulFastShutter), HIGH_SHUTTER,
                  std::max(profile.ulSlowShutter, profile.ulFastShutter)));
}

bool Forecast::Values(const ExposureParam &profile) {
    const uint32_t mode = profile.ulExposureMode;
    if ((mode == 2 || mode == 7) &&
        !Send(m_kova ? 0xCB : 0x4A, SHUTTER, profile.ulShutter, nullptr, m_modeChanged)) {
        return false;
    }
    if ((mode == 3 || mode == 7) && !Send(0x4B, IRIS, profile.ulIris, nullptr, m_modeChanged)) {
        return false;
    }
    return (mode != 4 && mode != 7) || Send(0x4C, GAIN, profile.ulGain, nullptr, m_modeChanged);
}

// Compensation is switched on first; what becomes of that does not count.
bool Forecast::Compensation(int32_t value) {
    if (Knows(COMPENSATION, value)) {
        return true;
    }
    (void)Put(0x3E);
    return Send(0x4E, COMPENSATION, value);
}

bool Forecast::Wdr(const ExposureParam &profile) {
    if (!Send(0x3D, WDR, profile.ulWdr, &m_wdrChanged)) {
        return false;
    }
    return profile.ulWdr != 1 || !m_kova || Send(0x2D, WDR_LEVEL, profile.ulWdrLevel, nullptr, m_wdrChanged);
}

bool Forecast::Metering(const ExposureParam &profile) {
    const bool known = profile.ulMeteringMode <= (m_kova ? 2 : 1);
    if (known && !Send(0x59, METERING, profile.ulMeteringMode)) {
        return false;
    }
    return profile.ulMeteringMode != 1 || Put(0x29); // the spot always
}

bool Forecast::Day(uint32_t mode) {
    if (Knows(DAY, mode)) {
        m_dayChanged = false;
        return true;
    }
    if (mode > 2) {
        return true;
    }
    if (!Put(0x51) || (mode != 0 && !Put(0x01))) {
        return false;
    }
    m_dayChanged = true;
    m_known[DAY] = mode;
    return true;
}

uint32_t Forecast::Exposure(const ExposureParam &profile) {
    if ((m_type & 0xFFFFFF00) == 0x02012A00) {
        (void)Put(0xD1); // the dome type always
    }
    const bool manual = profile.ulExposureMode == 7;
    const bool done = SlowShutter(profile) && Mode(profile.ulExposureMode) && Ranges(profile) &&
                      Values(profile) && (manual || Compensation(profile.lExpCompValue)) && Wdr(profile) &&
                      (manual || Metering(profile)) &&
                      (m_kova || profile.ulBlackWhiteMode == 0 || Day(profile.ulBlackWhiteMode));
    return done ? 0 : 1;
}

uint32_t Forecast::WhiteBalance(const WhiteBalanceParam &balance) {
    constexpr int MANUAL = 1;
    const int asked = static_cast<int>(balance.ulWbMode);
    const int mode = asked == MANUAL || asked == 2 || asked == 6 ? asked : 0; // all else is auto tracing
    if (!Send(0x35, BALANCE, mode)) {
        return 1;
    }
    return mode != MANUAL || (Put(0x43) && Put(0x44)) ? 0 : 1; // the offsets always
}

uint32_t Forecast::Picture(const ImageEnhanceParam &picture) {
    const bool done =
        (!m_kova || (Send(0xA1, BRIGHTNESS, picture.ulBrightness) &&
                     Send(0xA2, CONTRAST, picture.ulContrast, nullptr, m_dayChanged))) &&
        Send(0x49, SATURATION, picture.ulSaturation) && Send(0x42, SHARPNESS, picture.ulSharpness) &&
        (!m_kova || Send(0x54, DENOISE_2D, picture.ulDenoise2D)) &&
        Send(m_kova ? 0x55 : 0x53, DENOISE_3D, picture.ulDenoise3D > 255 ? 255 : picture.ulDenoise3D);
    return done ? 0 : 1;
}

uint32_t Forecast::DayNight(uint32_t mode) {
    return Day(mode) ? 0 : 1;
}

uint32_t Forecast::Defog() {
    if (m_kova) {
        return Plain({0xC8, 0xC9});
    }
    return m_type == SONY_3 || m_type == SONY_5 ? Plain({0x37}) : 0;
}

uint32_t Forecast::OnePush() {
    return Plain({0x18});
}

uint32_t Forecast::Restore() {
    m_known.clear();
    m_known[COMPENSATION] = -1; // -1 stands for unknown there: such a request is taken as known
    m_modeChanged = false;
    m_dayChanged = false;
    return m_kova ? 0 : Plain({0x06});
}

} // namespace model
