#include "tests/model/calls.h"

#include <cstring>
#include <iterator>

#include "sim/random.h"
#include "viscacam.h"

namespace model {

namespace {

enum class Who { ALL, KOVA, SONY };

/* ---- Calls that always send the same commands ---- */

struct PlainCall {
    const char *name;
    Who who;
    std::vector<uint8_t> commands;
    uint32_t (*call)(uint32_t value);
};

void OnStatus(uint32_t) {}

ViscaStatusCallback Callback(uint32_t value) {
    return value % 3 != 0 ? OnStatus : nullptr;
}

const std::vector<PlainCall> &PlainCalls() {
    static const std::vector<PlainCall> calls = {
        {"zoom-in", Who::ALL, {0x07}, [](uint32_t) { return VISCA_ZoomIn(); }},
        {"zoom-out", Who::ALL, {0x07}, [](uint32_t) { return VISCA_ZoomOut(); }},
        {"zoom-stop", Who::ALL, {0x07}, [](uint32_t) { return VISCA_ZoomStop(); }},
        {"focus-near", Who::ALL, {0x08}, [](uint32_t) { return VISCA_FocusNear(); }},
        {"focus-far", Who::ALL, {0x08}, [](uint32_t) { return VISCA_FocusFar(); }},
        {"focus-stop", Who::ALL, {0x08}, [](uint32_t) { return VISCA_FocusStop(); }},
        {"zoom-to", Who::ALL, {0x47}, [](uint32_t v) { return VISCA_SetZoomPos(static_cast<int>(4 * v)); }},
        {"zoom-focus-to",
         Who::ALL,
         {0x47},
         [](uint32_t v) {
             return VISCA_SetZoomFocusPos(static_cast<int>(4 * v), static_cast<int>(0x1000 + 8 * v));
         }},
        {"zoom-return", Who::ALL, {0xBA}, [](uint32_t) { return VISCA_RetSetZoomFocus(); }},
        {"auto-focus", Who::ALL, {0x38}, [](uint32_t v) { return VISCA_EnableAF(v % 2); }},
        {"focus-mode", Who::ALL, {0x38}, [](uint32_t v) { return VISCA_SetFocusMode(v % 3); }},
        {"af-mode", Who::ALL, {0x57}, [](uint32_t v) { return VISCA_SetAFType(v % 4); }},
        {"near-limit",
         Who::ALL,
         {0x28, 0x18},
         [](uint32_t v) { return VISCA_SetFocusMinLen(v % 2 == 0 ? 1000 : 3000); }},
        {"ir-correction", Who::ALL, {0x11}, [](uint32_t v) { return VISCA_EnableIrCurve(v % 2); }},
        {"one-push", Who::ALL, {0x18}, [](uint32_t) { return VISCA_OnePushAutoFocus(0, nullptr); }},
        {"zoom-cut", Who::ALL, {0x24}, [](uint32_t v) { return VISCA_SetZoomCut(v % 2, v >> 1U); }},
        {"ir-cut",
         Who::KOVA,
         {0xB4},
         [](uint32_t v) { return VISCA_KOVA_SetIRcut(static_cast<int>(v % 2)); }},
        {"scene", Who::KOVA, {0xCD}, [](uint32_t v) { return VISCA_KOVA_SetSceneInfo(v % 9); }},
        {"clock", Who::KOVA, {0xA4}, [](uint32_t v) { return KOVA_SetTime(1700000000 + v); }},
        {"low-delay", Who::KOVA, {0xBF}, [](uint32_t v) { return KOVA_SetLowDelayMode(v % 2); }},
        {"zoom-reports",
         Who::KOVA,
         {0xAE},
         [](uint32_t v) { return VISCA_KOVA_SetSigCallback(0, Callback(v)); }},
        {"focus-reports",
         Who::KOVA,
         {0xAF},
         [](uint32_t v) { return VISCA_KOVA_SetSigCallback(1, Callback(v)); }},
    };
    return calls;
}

const PlainCall *FindPlain(const std::string &name) {
    for (const PlainCall &call : PlainCalls()) {
        if (name == call.name) {
            return &call;
        }
    }
    return nullptr;
}

/* ---- Profiles: few values each, so that many are as before ---- */

constexpr const char *PROFILES[] = {"exposure",  "exposure", "white-balance", "picture",
                                    "day-night", "defog",    "again"};

template <size_t N>
uint32_t Pick(sim::Random &dice, const uint32_t (&values)[N]) {
    return values[dice.below(N)];
}

// 5 is a mode that Sony blocks do not have, 3 an unknown metering.
ExposureParam ExposureOf(uint32_t value) {
    sim::Random dice(value);
    ExposureParam profile = {};
    profile.ulExposureMode = Pick(dice, {0, 1, 1, 2, 2, 3, 4, 5, 7, 7, 7});
    profile.lExpCompValue = static_cast<int32_t>(dice.below(4)) * 42 - 63;
    profile.lExpCompValue = profile.lExpCompValue == -21 ? -1 : profile.lExpCompValue;
    profile.ulIris = Pick(dice, {1600, 1600, 99999});
    profile.ulShutter = Pick(dice, {60, 60, 1000});
    profile.ulGain = Pick(dice, {0, 10});
    profile.ulSlowShutter = Pick(dice, {25, 100});
    profile.ulFastShutter = Pick(dice, {50, 4000});
    profile.ulMaxGain = Pick(dice, {60, 100});
    profile.ulMinGain = Pick(dice, {0, 20});
    profile.bIsAutoSlowShutter = Pick(dice, {0, 1, 1, 0, 1, 2});
    profile.ulMaxSlowShutter = Pick(dice, {3, 12});
    profile.ulWdr = Pick(dice, {0, 1, 2});
    profile.ulWdrLevel = Pick(dice, {2, 9});
    profile.ulMeteringMode = Pick(dice, {0, 1, 3});
    profile.BotX = profile.TopX = Pick(dice, {10, 50});
    profile.ulBlackWhiteMode = Pick(dice, {0, 1, 2, 7});
    return profile;
}

WhiteBalanceParam BalanceOf(uint32_t value) {
    return {value % 7, static_cast<int32_t>(value % 100), -static_cast<int32_t>(value % 50)};
}

ImageEnhanceParam PictureOf(uint32_t value) {
    sim::Random dice(value);
    ImageEnhanceParam picture = {};
    picture.ulBrightness = Pick(dice, {10, 200});
    picture.ulContrast = Pick(dice, {10, 200});
    picture.ulSaturation = Pick(dice, {64, 128, 255});
    picture.ulSharpness = Pick(dice, {0, 100, 240});
    picture.ulDenoise2D = Pick(dice, {0, 60});
    picture.ulDenoise3D = Pick(dice, {0, 60, 255, 300});
    return picture;
}

DrvMsgInfo DefogOf(uint32_t value) {
    DrvMsgInfo message = {};
    message.ulMsgType = 1;
    message.ulMsgCmd = 30;
    message.ulMsgLen = 8;
    const uint32_t words[] = {value % 4, value / 4 % 4};
    std::memcpy(message.aucMsgData, words, sizeof words);
    return message;
}

uint32_t Apply(const std::string &profile, uint32_t value) {
    if (profile == "white-balance") {
        const WhiteBalanceParam balance = BalanceOf(value);
        return VISCA_SetWhiteBalance(0, 0, &balance);
    }
    if (profile == "picture") {
        const ImageEnhanceParam picture = PictureOf(value);
        return VISCA_SetImageEnhance(0, 0, &picture);
    }
    if (profile == "day-night") {
        return VISCA_SetBlackWhiteMode(0, value % 4);
    }
    if (profile == "defog") {
        DrvMsgInfo message = DefogOf(value);
        return VISCA_SetImageVarFn(0, 0, &message);
    }
    const ExposureParam exposure = ExposureOf(value);
    return VISCA_SetExposure(0, 0, &exposure);
}

uint32_t Foreseen(const std::string &profile, uint32_t value, Forecast &forecast) {
    if (profile == "white-balance") {
        return forecast.WhiteBalance(BalanceOf(value));
    }
    if (profile == "picture") {
        return forecast.Picture(PictureOf(value));
    }
    if (profile == "day-night") {
        return forecast.DayNight(value % 4);
    }
    return profile == "defog" ? forecast.Defog() : forecast.Exposure(ExposureOf(value));
}

bool IsProfile(const std::string &name) {
    for (const char *profile : PROFILES) {
        if (name == profile) {
            return true;
        }
    }
    return false;
}

/* ---- Inquiries ---- */

struct Inquiry {
    const char *name;
    Who who;
    uint32_t (*ask)(uint32_t value, std::string *text);
    std::string (*right)(uint32_t value, const sim::State &state);
};

template <typename Number>
uint32_t Told(uint32_t result, Number number, std::string *text) {
    *text = std::to_string(number);
    return result;
}

// Position 1 is 0 dB, and each further one 2 dB; the library tells thousandths.
std::string GainTold(uint32_t, const sim::State &state) {
    const int position = state.setting("gain");
    return std::to_string(position == 0 ? 0 : (position - 1) * 2 * 1000);
}

constexpr uint8_t ZOOM_CUT[] = {0x50, 0x51};

const Inquiry INQUIRIES[] = {
    {"ask-zoom", Who::ALL,
     [](uint32_t, std::string *text) {
         uint32_t zoom = 0;
         const uint32_t result = VISCA_GetZoomPos(&zoom);
         return Told(result, zoom, text);
     },
     [](uint32_t, const sim::State &state) { return std::to_string(state.zoom); }},
    {"ask-focus", Who::ALL,
     [](uint32_t, std::string *text) {
         int16_t focus = 0;
         const uint32_t result = VISCA_GetFocusPos(&focus);
         return Told(result, static_cast<uint16_t>(focus), text);
     },
     [](uint32_t, const sim::State &state) { return std::to_string(state.focus); }},
    {"ask-gain", Who::ALL,
     [](uint32_t, std::string *text) {
         ExposureParam profile = {};
         const uint32_t result = VISCA_GetExposure(0, 0, &profile);
         return Told(result, profile.ulGain, text);
     },
     GainTold},
    {"ask-register", Who::ALL,
     [](uint32_t value, std::string *text) {
         uint8_t content = 0;
         const uint32_t result = SonyGetRegisterVal(ZOOM_CUT[value % 2], &content);
         return Told(result, content, text);
     },
     [](uint32_t value, const sim::State &state) {
         const auto found = state.registers.find(ZOOM_CUT[value % 2]);
         return std::to_string(found == state.registers.end() ? 0 : found->second);
     }},
    {"ask-luma", Who::KOVA,
     [](uint32_t, std::string *text) {
         int32_t luma = 0;
         const uint32_t result = VISCA_KOVA_GetCurLuma(0, &luma);
         return Told(result, luma, text);
     },
     [](uint32_t, const sim::State &) { return std::string("128"); }},
    {"ask-temperature", Who::KOVA,
     [](uint32_t, std::string *text) {
         int32_t degrees = 0;
         const uint32_t result = VISCA_KOVA_GetTemperature(0, &degrees);
         return Told(result, degrees, text);
     },
     [](uint32_t, const sim::State &) { return std::string("41"); }},
    {"ask-software", Who::KOVA,
     [](uint32_t, std::string *text) {
         char version[17] = {};
         const uint32_t result = VISCA_KOVA_GetSoftVer(version);
         *text = version;
         return result;
     },
     [](uint32_t, const sim::State &) { return std::string("V1.0.3"); }},
    {"ask-board", Who::KOVA,
     [](uint32_t, std::string *text) {
         uint32_t version = 0;
         uint32_t type = 0;
         const uint32_t result = VISCA_KOVA_GetMotorBoardVerType(&version, &type);
         return Told(result, 10 * version + type, text);
     },
     [](uint32_t, const sim::State &) { return std::string("32"); }},
};

const Inquiry *FindInquiry(const std::string &name) {
    for (const Inquiry &inquiry : INQUIRIES) {
        if (name == inquiry.name) {
            return &inquiry;
        }
    }
    return nullptr;
}

bool Has(Who who, bool kova) {
    return who == Who::ALL || (who == Who::KOVA) == kova;
}

std::vector<std::string> Names(bool kova) {
    std::vector<std::string> names;
    for (const PlainCall &call : PlainCalls()) {
        if (Has(call.who, kova)) {
            names.emplace_back(call.name);
        }
    }
    for (const Inquiry &inquiry : INQUIRIES) {
        if (Has(inquiry.who, kova)) {
            names.emplace_back(inquiry.name);
        }
    }
    return names;
}

} // namespace

std::string ProfileName(uint64_t number) {
    return PROFILES[number % std::size(PROFILES)];
}

// Profiles remember most, so every second call is one.
std::string CallName(uint64_t number, bool kova) {
    if (number % 2 == 0) {
        return ProfileName(number / 2);
    }
    const std::vector<std::string> names = Names(kova);
    return names[number / 2 % names.size()];
}

bool IsInquiry(const std::string &name) {
    return FindInquiry(name) != nullptr;
}

bool IsCall(const std::string &name) {
    return FindPlain(name) != nullptr || IsProfile(name) || IsInquiry(name);
}

uint32_t Commands::Call(const std::string &name, uint32_t value) {
    if (const PlainCall *plain = FindPlain(name)) {
        return plain->call(value);
    }
    if (name != "again") {
        m_profile = name;
        m_profileValue = value;
    }
    return Apply(m_profile, m_profileValue);
}

uint32_t Commands::Foresee(const std::string &name, uint32_t value, Forecast &forecast) {
    if (const PlainCall *plain = FindPlain(name)) {
        return forecast.Plain(plain->commands);
    }
    const bool again = name == "again";
    return Foreseen(again ? m_profile : name, again ? m_profileValue : value, forecast);
}

uint32_t Ask(const std::string &name, uint32_t value, std::string *text) {
    return FindInquiry(name)->ask(value, text);
}

std::string RightAnswer(const std::string &name, uint32_t value, const sim::State &state) {
    return FindInquiry(name)->right(value, state);
}

} // namespace model
