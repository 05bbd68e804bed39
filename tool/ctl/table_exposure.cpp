/* Exposure: whole profiles, and its parameters one by one. */
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "tool/module_types.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

constexpr uint32_t SONY_4 = 0x02000004;
constexpr uint32_t SPOT = 1;

Domain modeOf(uint32_t moduleType) {
    std::vector<Choice> modes = {{"auto", 0}, {"shutter", 2}, {"iris", 3}, {"manual", 7}};
    if (moduleType == 0 || isKova(moduleType))
        modes.insert(modes.end(), {{"range", 1}, {"gain", 4}, {"mode5", 5}, {"mode6", 6}});
    return Domain::choice(modes);
}

// N of 1/N s: a Sony block's steps of both video norms.
Domain shutterOf(uint32_t moduleType) {
    if (moduleType == 0 || isKova(moduleType))
        return Domain::number(1, 65535, "(N of 1/N s)");
    return Domain::steps({1,   2,   3,    4,    6,    8,    10,   12,   15,   20,   25,   30,   50,   60,
                          75,  90,  100,  120,  125,  150,  180,  200,  215,  250,  300,  350,  425,  500,
                          600, 725, 1000, 1250, 1500, 1750, 2000, 2500, 3000, 3500, 4000, 6000, 8000, 10000},
                         "(N of 1/N s)");
}

Domain irisOf(uint32_t moduleType) {
    std::vector<int64_t> stops = {99999, 2800, 2200, 1900, 1600, 1400, 1100, 960, 800, 680,
                                  560,   480,  400,  340,  280,  240,  200,  160, 100};
    if (moduleType == SONY_4)
        stops = {99999, 2800, 2200, 1600, 1400, 1100, 960, 800, 680, 560,
                 480,   400,  340,  280,  240,  200,  160, 140, 130, 100};
    return Domain::aperture(stops);
}

Domain gainOf(uint32_t moduleType) {
    return moduleType == 0 || isKova(moduleType) ? Domain::number(0, 100) : Domain::number(0, 29, "dB");
}

Domain meteringOf(uint32_t moduleType) {
    std::vector<Choice> modes = {{"average", 0}, {"spot", SPOT}};
    if (moduleType == 0 || isKova(moduleType))
        modes.push_back({"third", 2});
    return Domain::choice(modes);
}

Domain speed() {
    return Domain::number(1, 65535, "(N of 1/N s)");
}
Domain percent() {
    return Domain::number(0, 100);
}
Domain wdrMode() {
    return Domain::choice({{"off", 0}, {"on", 1}, {"auto", 2}});
}
Domain slowLimit() {
    return Domain::number(1, 255, "(N of 1/N s)");
}

/* A field of the profile, by the name that is typed. */
struct ProfileField {
    const char *name;
    uint32_t ExposureParam::*word;
};
constexpr ProfileField PROFILE[] = {
    {"mode", &ExposureParam::ulExposureMode},
    {"iris", &ExposureParam::ulIris},
    {"shutter", &ExposureParam::ulShutter},
    {"gain", &ExposureParam::ulGain},
    {"slowest", &ExposureParam::ulSlowShutter},
    {"fastest", &ExposureParam::ulFastShutter},
    {"min-gain", &ExposureParam::ulMinGain},
    {"max-gain", &ExposureParam::ulMaxGain},
    {"slow-shutter", &ExposureParam::bIsAutoSlowShutter},
    {"slow-limit", &ExposureParam::ulMaxSlowShutter},
    {"wdr", &ExposureParam::ulWdr},
    {"wdr-level", &ExposureParam::ulWdrLevel},
    {"metering", &ExposureParam::ulMeteringMode},
    {"left", &ExposureParam::TopX},
    {"top", &ExposureParam::TopY},
    {"right", &ExposureParam::BotX},
    {"bottom", &ExposureParam::BotY},
    {"picture", &ExposureParam::ulBlackWhiteMode},
};

std::vector<Argument> profileArguments() {
    return {keyed("mode", modeOf),
            keyed("compensation", Domain::number(-100, 100)),
            keyed("iris", irisOf),
            keyed("shutter", shutterOf),
            keyed("gain", gainOf),
            keyed("slowest", speed()),
            keyed("fastest", speed()),
            keyed("min-gain", percent()),
            keyed("max-gain", percent()),
            keyed("slow-shutter", Domain::onOff()),
            keyed("slow-limit", slowLimit()),
            keyed("wdr", wdrMode()),
            keyed("wdr-level", Domain::number(0, 9)),
            keyed("metering", meteringOf),
            keyed("left", percent()),
            keyed("top", percent()),
            keyed("right", percent()),
            keyed("bottom", percent()),
            keyed("picture", Domain::choice({{"as-is", 0}, {"colour", 1}, {"black-white", 2}}))};
}

constexpr uint32_t AUTOMATIC = 0; // an exposure mode

// What is not given stays as in the profile before. At first that is 0, and of shutter and iris 0 is none.
void setExposure(Job &job, const Arguments &arguments) {
    ExposureParam profile = {};
    VISCA_GetExposureCfg(&profile);
    for (const ProfileField &field : PROFILE)
        profile.*field.word = arguments.word(field.name, profile.*field.word);
    profile.lExpCompValue = static_cast<int32_t>(arguments.number("compensation", profile.lExpCompValue));
    for (const char *name : {"shutter", "iris", "gain"})
        if (profile.ulExposureMode == AUTOMATIC && arguments.has(name))
            throw Refused(std::string(name) + " has no effect in automatic exposure; give mode= too");
    if (profile.ulIris == 0)
        job.mute("ulIris[0] invalid");
    if (profile.ulShutter == 0)
        job.mute("ulShutter[0] invalid");
    job.order([&] { return VISCA_SetExposure(0, 0, &profile); });
}

std::string nameOf(const Domain &domain, uint32_t number) {
    for (const std::string &word : domain.completions())
        if (domain.parse(word).number == number)
            return word;
    return std::to_string(number);
}

void showProfile(Job &job, const ExposureParam &profile) {
    job.text("mode", nameOf(modeOf(0), profile.ulExposureMode));
    job.number("compensation", profile.lExpCompValue);
    for (const ProfileField &field : PROFILE)
        if (std::string(field.name) != "mode")
            job.number(field.name, profile.*field.word);
}

void showGain(Job &job, const Arguments &) {
    uint32_t gain = 0;
    if (job.ask([&] { return VISCA_GetGain(0, &gain); }, "the gain"))
        job.number("gain", gain, std::to_string(gain) + " dB");
}

// The camera tells its gain; the rest is the profile that was offered last.
void showExposure(Job &job, const Arguments &) {
    ExposureParam now = {};
    if (job.ask([&] { return VISCA_GetExposure(0, 0, &now); }, "the gain"))
        job.number("gain-now", now.ulGain / 1000, std::to_string(now.ulGain / 1000) + " dB");
    ExposureParam profile = {};
    VISCA_GetExposureCfg(&profile);
    job.line("all but gain-now as set last in this session, 0 where never set; the camera was not asked");
    showProfile(job, profile);
}

std::vector<Row> profileRows() {
    return {
        {"exposure show",
         {},
         "the gain now, and the profile that was set last",
         {"exposure show"},
         showExposure,
         {"VISCA_GetExposure", "VISCA_GetExposureCfg"}},
        {"exposure set",
         profileArguments(),
         "apply a profile; not given: as set before, at first auto and 0",
         {"exposure set mode=manual shutter=60 gain=10"},
         setExposure,
         {"VISCA_GetExposureCfg", "VISCA_SetExposure"},
         MAY_SEND_NOTHING | NEEDS_A_KEY},
        {"exposure mode",
         {needed("mode", modeOf)},
         "the exposure mode alone",
         {"exposure mode manual"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetExposureMode(0, arguments.word("mode")); });
         },
         {"SonySetExposureMode"},
         MAY_SEND_NOTHING},
        {"compensation",
         {needed("value", Domain::number(-100, 100))},
         "exposure compensation, in steps of 14",
         {"compensation -28"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetExpComp(0, static_cast<int32_t>(arguments.number("value"))); });
         },
         {"SonySetExpComp"},
         MAY_SEND_NOTHING},
    };
}

std::vector<Row> fixedValueRows() {
    return {
        {"shutter",
         {needed("speed", shutterOf)},
         "N of 1/N s",
         {"shutter 60"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetShutter(0, arguments.word("speed")); });
         },
         {"SonyImgSetShutter"},
         MAY_SEND_NOTHING},
        {"iris",
         {needed("stop", irisOf)},
         "F-number, or closed",
         {"iris 2.8"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetIris(0, arguments.word("stop")); });
         },
         {"SonyImgSetIris"},
         MAY_SEND_NOTHING},
        {"gain",
         {needed("value", gainOf)},
         "dB; of a Kova module 0 to 100",
         {"gain 10"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetGain(0, arguments.word("value")); });
         },
         {"SonyImgSetGain"},
         MAY_SEND_NOTHING},
        {"gain show", {}, "ask for the gain", {"gain show"}, showGain, {"VISCA_GetGain"}},
    };
}

std::vector<Row> rangeRows() {
    return {
        {"shutter range",
         {needed("slowest", speed()), needed("fastest", speed())},
         "bounds of the automatic modes",
         {"shutter range 25 1000"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] {
                 return SonyImgSetShutterScope(0, arguments.word("slowest"), arguments.word("fastest"));
             });
         },
         {"SonyImgSetShutterScope"},
         MAY_SEND_NOTHING | KOVA_ONLY},
        {"gain range",
         {needed("least", percent()), needed("most", percent())},
         "bounds of the automatic modes",
         {"gain range 0 60"},
         [](Job &job, const Arguments &arguments) {
             job.order(
                 [&] { return SonyImgSetGainScope(0, arguments.word("least"), arguments.word("most")); });
         },
         {"SonyImgSetGainScope"},
         MAY_SEND_NOTHING | KOVA_ONLY},
        {"slow-shutter",
         {needed("switch", Domain::onOff())},
         "automatic slow shutter",
         {"slow-shutter on"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetAutoSlowShutter(0, arguments.word("switch")); });
         },
         {"SonyImgSetAutoSlowShutter"},
         MAY_SEND_NOTHING},
        {"slow-shutter limit",
         {needed("speed", slowLimit())},
         "how slow it may become",
         {"slow-shutter limit 6"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetAutoSlowShutterLimit(0, arguments.word("speed")); });
         },
         {"SonyImgSetAutoSlowShutterLimit"},
         MAY_SEND_NOTHING | KOVA_ONLY},
    };
}

std::vector<Row> meteringRows() {
    return {
        {"metering",
         {needed("mode", meteringOf)},
         "where the camera measures",
         {"metering spot"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetAEMetering(0, arguments.word("mode")); });
         },
         {"SonySetAEMetering"},
         MAY_SEND_NOTHING},
        {"metering at",
         {needed("left", percent()), needed("top", percent()), needed("right", percent()),
          needed("bottom", percent())},
         "the spot, in hundredths of the picture",
         {"metering at 40 40 60 60"},
         [](Job &job, const Arguments &arguments) {
             const uint32_t spot[] = {arguments.word("left"), arguments.word("top"), arguments.word("right"),
                                      arguments.word("bottom")};
             job.order([&] { return SonySetSpotAEPos(0, spot); });
         },
         {"SonySetSpotAEPos"}},
        {"wdr",
         {needed("mode", wdrMode())},
         "wide dynamic range",
         {"wdr on"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetWDR(0, arguments.word("mode")); });
         },
         {"SonyImgSetWDR"},
         MAY_SEND_NOTHING},
        {"wdr level",
         {needed("level", Domain::number(0, 9))},
         "its strength",
         {"wdr level 5"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyImgSetWDRLevel(0, arguments.word("level")); });
         },
         {"SonyImgSetWDRLevel"},
         MAY_SEND_NOTHING | KOVA_ONLY},
    };
}

} // namespace

Subject exposureCommands() {
    Subject subject = {"Exposure", profileRows()};
    for (const std::vector<Row> &rows : {fixedValueRows(), rangeRows(), meteringRows()})
        subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
