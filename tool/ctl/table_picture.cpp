/* Picture controls and defog. */
#include <cstring>

#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

constexpr uint32_t MESSAGE_DEFOG = 30;
constexpr uint32_t MIDDLE = 128;

Domain level() {
    return Domain::number(0, 255);
}

struct PictureField {
    const char *name;
    uint32_t ImageEnhanceParam::*word;
};
constexpr PictureField CONTROLS[] = {
    {"brightness", &ImageEnhanceParam::ulBrightness}, {"contrast", &ImageEnhanceParam::ulContrast},
    {"saturation", &ImageEnhanceParam::ulSaturation}, {"sharpness", &ImageEnhanceParam::ulSharpness},
    {"denoise2d", &ImageEnhanceParam::ulDenoise2D},   {"denoise3d", &ImageEnhanceParam::ulDenoise3D},
};

std::vector<Argument> controlArguments() {
    std::vector<Argument> arguments;
    for (const PictureField &field : CONTROLS)
        arguments.push_back(keyed(field.name, level()));
    return arguments;
}

// The library remembers what was sent, but does not tell: what is not given is what was given before here.
void setPicture(Job &job, const Arguments &arguments) {
    static ImageEnhanceParam picture = {MIDDLE, MIDDLE, MIDDLE, 0, 0, MIDDLE, MIDDLE, MIDDLE};
    for (const PictureField &field : CONTROLS)
        picture.*field.word = arguments.word(field.name, picture.*field.word);
    job.order([] { return VISCA_SetImageEnhance(0, 0, &picture); });
}

void setDefog(Job &job, const Arguments &arguments) {
    const uint32_t words[] = {arguments.word("mode"), arguments.word("sense")};
    DrvMsgInfo message = {};
    message.ulMsgType = 1;
    message.ulMsgCmd = MESSAGE_DEFOG;
    message.ulMsgLen = sizeof words;
    std::memcpy(message.aucMsgData, words, sizeof words);
    job.order([&] { return VISCA_SetImageVarFn(0, 0, &message); });
}

std::vector<Row> controlRows() {
    return {
        {"picture set",
         controlArguments(),
         "several controls; those never given are 128",
         {"picture set saturation=100 sharpness=200"},
         setPicture,
         {"VISCA_SetImageEnhance"},
         MAY_SEND_NOTHING | NEEDS_A_KEY},
        {"brightness",
         {needed("level", level())},
         "of the picture",
         {"brightness 128"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetVideoBrightness(0, arguments.word("level")); });
         },
         {"SonySetVideoBrightness"},
         MAY_SEND_NOTHING | KOVA_ONLY},
        {"contrast",
         {needed("level", level())},
         "of the picture",
         {"contrast 128"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetVideoContrast(0, arguments.word("level")); });
         },
         {"SonySetVideoContrast"},
         MAY_SEND_NOTHING | KOVA_ONLY},
        {"saturation",
         {needed("level", level())},
         "of the picture",
         {"saturation 100"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetVideoSaturation(0, arguments.word("level")); });
         },
         {"SonySetVideoSaturation"},
         MAY_SEND_NOTHING},
        {"sharpness",
         {needed("level", level())},
         "of the picture",
         {"sharpness 200"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetVideoSharpness(0, arguments.word("level")); });
         },
         {"SonySetVideoSharpness"},
         MAY_SEND_NOTHING},
    };
}

std::vector<Row> noiseRows() {
    return {
        {"denoise2d",
         {needed("level", level())},
         "noise reduction within a picture",
         {"denoise2d 64"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetDenoise2D(0, arguments.word("level")); });
         },
         {"SonySetDenoise2D"},
         MAY_SEND_NOTHING | KOVA_ONLY},
        {"denoise3d",
         {needed("level", level())},
         "noise reduction over several pictures",
         {"denoise3d 64"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetDenoise3D(0, arguments.word("level")); });
         },
         {"SonySetDenoise3D"},
         MAY_SEND_NOTHING},
        {"defog set",
         {together("mode", level()), together("sense", level())},
         "mode and sensitivity together",
         {"defog set mode=2 sense=50"},
         setDefog,
         {"VISCA_SetImageVarFn"},
         MAY_SEND_NOTHING},
        {"defog",
         {needed("mode", level())},
         "0 off, more is stronger; sony3, sony5 and Kova",
         {"defog 2"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetDefogMode(0, arguments.word("mode")); });
         },
         {"SonySetDefogMode"},
         MAY_SEND_NOTHING},
        {"defog sense",
         {needed("level", level())},
         "sensitivity alone",
         {"defog sense 50"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetDefogSense(0, arguments.word("level")); });
         },
         {"SonySetDefogSense"},
         KOVA_ONLY},
        {"picture forget",
         {},
         "the library forgets what it has sent, so that all is sent again",
         {"picture forget"},
         [](Job &job, const Arguments &) {
             SonyInitVar4IMG();
             job.line("the next image settings are sent whole");
         },
         {"SonyInitVar4IMG"}},
    };
}

} // namespace

Subject pictureCommands() {
    Subject subject = {"Picture", controlRows()};
    const std::vector<Row> rows = noiseRows();
    subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
