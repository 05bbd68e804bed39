/* Power, identity, norm, orientation, registers, and the host's messages. */
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "tool/module_types.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

constexpr uint32_t SONY_4 = 0x02000004;
constexpr uint32_t KOVA_2100 = 0x02012100;
constexpr uint32_t KOVA_2200 = 0x02012200;

constexpr uint32_t MESSAGE_GET = 0;
constexpr uint32_t MESSAGE_SET = 1;
constexpr uint32_t GET_LENGTH = 4; // of what can be asked for
constexpr uint8_t POWER_ON = 0x02;

Domain normOf(uint32_t moduleType) {
    if (moduleType == KOVA_2200)
        return Domain::norm({25}, {"720x576"}, {"720x576@25"});
    if (moduleType == SONY_4 || moduleType == KOVA_2100)
        return Domain::norm({25, 30}, {}, {"1280x960@25", "1280x960@30", "1280x720@25", "1280x720@30"});
    if (moduleType == 0 || isSecondKova(moduleType))
        return Domain::norm({25, 30, 50, 60}, {},
                            {"1920x1080@25", "1920x1080@30", "1920x1080@50", "1920x1080@60"});
    return Domain::norm({25, 30}, {}, {"1920x1080@25", "1920x1080@30"});
}

Domain registerNumber() {
    return Domain::hex(0, 0x7F);
}

void check(uint32_t result, const std::string &what) {
    if (result != VISCA_SUCCESS)
        throw Refused(what);
}

void showIdentity(Job &job, const Arguments &) {
    CameraInfo info = {};
    if (!job.ask([&] { return VISCA_GetCamInfo(0, &info); }, "the camera's identity"))
        return;
    job.text("vendor", info.szVendor);
    job.text("model", info.szModel);
    job.text("firmware", info.szFirmware);
}

void setNorm(Job &job, const Arguments &arguments) {
    Norm norm;
    parseNorm(arguments.text("norm"), norm);
    const VideoNormParam param = {norm.width, norm.height, norm.rate};
    check(job.perform("setting the norm", [param] { return VISCA_SetVin(&param); }), "the norm was not set");
    job.text("norm", arguments.text("norm"));
}

void showPower(Job &job, const Arguments &) {
    ViscaPkt question = {};
    ViscaPkt reply = {};
    ViscaInitPkt(&question);
    for (const uint8_t byte : {uint8_t{0x09}, uint8_t{0x04}, uint8_t{0x00}})
        ViscaAppendByte(byte, &question);
    if (job.ask([&] { return ViscaInquiry(&question, &reply); }, "the power state"))
        job.flag("power", reply.aucData[2] == POWER_ON, "on", "standby, or not ready yet");
}

void showOrientation(Job &job, const Arguments &) {
    uint32_t mirror = 0;
    uint32_t flip = 0;
    if (job.ask([&] { return SonyGetMirrorMode(&mirror); }, "the mirror setting"))
        job.flag("mirror", mirror == 1);
    if (job.ask([&] { return SonyGetFlipMode(&flip); }, "the flip setting"))
        job.flag("flip", flip == 1);
}

void readRegister(Job &job, const Arguments &arguments) {
    uint8_t value = 0;
    const auto number = static_cast<uint8_t>(arguments.number("register"));
    if (job.ask([&] { return SonyGetRegisterVal(number, &value); }, "the register"))
        job.number("value", value, inHex(value, 2));
}

DrvMsgInfo messageOf(uint32_t type, const Arguments &arguments) {
    DrvMsgInfo message = {};
    message.ulMsgType = type;
    message.ulMsgCmd = arguments.word("command");
    message.ulMsgChannel = arguments.word("channel");
    message.ulMsgLen = GET_LENGTH;
    return message;
}

void setByMessage(Job &job, const Arguments &arguments) {
    DrvMsgInfo message = messageOf(MESSAGE_SET, arguments);
    const std::vector<Value> &bytes = arguments.list();
    if (bytes.size() > sizeof message.aucMsgData)
        throw Refused("a message holds at most " + std::to_string(sizeof message.aucMsgData) + " bytes");
    message.ulMsgLen = static_cast<uint32_t>(bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i)
        message.aucMsgData[i] = static_cast<uint8_t>(bytes[i].number);
    job.order([&] { return VISCA_MessageProcess(&message); });
}

void getByMessage(Job &job, const Arguments &arguments) {
    DrvMsgInfo message = messageOf(MESSAGE_GET, arguments);
    if (!job.ask([&] { return VISCA_MessageProcess(&message); }, "the message"))
        return;
    const size_t length = std::min<size_t>(message.ulMsgLen, sizeof message.aucMsgData);
    job.text("data", hexText(decode::Bytes(message.aucMsgData, message.aucMsgData + length)));
}

std::vector<Row> identityRows() {
    return {
        {"info", {}, "vendor, model and firmware", {"info"}, showIdentity, {"VISCA_GetCamInfo"}},
        {"norm",
         {needed("norm", normOf)},
         "set the video norm; the camera may go off and on",
         {"norm 1920x1080@25"},
         setNorm,
         {"VISCA_SetVin"}},
        {"orientation show",
         {},
         "ask whether the picture is mirrored and flipped",
         {"orientation show"},
         showOrientation,
         {"SonyGetMirrorMode", "SonyGetFlipMode"}},
        {"orientation",
         {needed("mode", Domain::choice({{"normal", 0}, {"both", 1}, {"mirror", 2}, {"flip", 3}}))},
         "mirror and flip the picture",
         {"orientation mirror"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonySetCamReverse(arguments.word("mode")); });
         },
         {"SonySetCamReverse"}},
        {"register show",
         {needed("register", registerNumber())},
         "read a register",
         {"register show 0x72"},
         readRegister,
         {"SonyGetRegisterVal"}},
        {"register set",
         {needed("register", registerNumber()), needed("value", Domain::hex(0, 0xFF))},
         "write a register; some count from the next power-on",
         {"register set 0x72 0x06"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] {
                 return SonySetRegisterVal(static_cast<uint8_t>(arguments.number("register")),
                                           static_cast<uint8_t>(arguments.number("value")));
             });
         },
         {"SonySetRegisterVal"}},
    };
}

std::vector<Row> powerRows() {
    return {
        {"power on",
         {},
         "switch the camera on",
         {"power on"},
         [](Job &job, const Arguments &) { job.order([] { return SonySetPower(1); }); },
         {"SonySetPower"}},
        {"power off",
         {},
         "into standby",
         {"power off"},
         [](Job &job, const Arguments &) { job.order([] { return SonySetPower(0); }); },
         {"SonySetPower"}},
        {"power show",
         {},
         "ask whether it is on",
         {"power show"},
         showPower,
         {"ViscaInitPkt", "ViscaAppendByte", "ViscaInquiry"}},
        {"power wait",
         {},
         "wait until it is on, as long as that takes",
         {"power wait"},
         [](Job &job, const Arguments &) {
             check(job.perform("waiting for the camera", SonyWaitPowerOn), "the power state cannot be read");
             job.text("power", "on");
         },
         {"SonyWaitPowerOn"}},
        {"reset",
         {},
         "the camera initialises itself",
         {"reset"},
         [](Job &job, const Arguments &) { job.order(SonyResetCam); },
         {"SonyResetCam"}},
        {"restore",
         {},
         "set again what a power cycle took, as far as the library does",
         {"restore"},
         [](Job &job, const Arguments &) { job.order([&] { return SonyRestoreCamEnv(job.moduleType()); }); },
         {"SonyRestoreCamEnv"},
         MAY_SEND_NOTHING},
    };
}

std::vector<Row> startUpRows() {
    return {
        {"startup",
         {},
         "all steps of the start-up once more but the search",
         {"startup"},
         [](Job &job, const Arguments &) {
             check(job.perform("starting up", [&] { return SonyInitCamEnv(job.moduleType()); }),
                   "a step failed");
         },
         {"SonyInitCamEnv"},
         MAY_SEND_NOTHING},
        {"startup services",
         {},
         "that of a Kova module's services alone",
         {"startup services"},
         [](Job &job, const Arguments &) {
             check(job.perform("starting up", [&] { return SonyInitCamMisc(job.moduleType()); }),
                   "a step failed");
         },
         {"SonyInitCamMisc"},
         MAY_SEND_NOTHING},
        {"startup image",
         {},
         "that of the image settings alone",
         {"startup image"},
         [](Job &job, const Arguments &) { job.order([&] { return SonyInitCamIMG(job.moduleType()); }); },
         {"SonyInitCamIMG"},
         MAY_SEND_NOTHING},
        {"startup lens",
         {},
         "that of the lens alone",
         {"startup lens"},
         [](Job &job, const Arguments &) { job.order([&] { return SonyInitCamAF(job.moduleType()); }); },
         {"SonyInitCamAF"},
         MAY_SEND_NOTHING},
    };
}

std::vector<Row> messageRows() {
    const Domain command = Domain::number(0, 0xFFFF);
    return {
        {"message set",
         {needed("command", command), keyed("channel", Domain::number(0, 0xFFFF)),
          list("data", Domain::byte())},
         "a set message of the host: 30 defog, 2 image tuning",
         {"message set 30 02 00 00 00 32 00 00 00"},
         setByMessage,
         {"VISCA_MessageProcess"},
         MAY_SEND_NOTHING},
        {"message get",
         {needed("command", command), keyed("channel", Domain::number(0, 0xFFFF))},
         "a get message of the host: 34 focus value",
         {"message get 34"},
         getByMessage,
         {"VISCA_MessageProcess"}},
        {"tuning",
         {needed("item", Domain::hex(0, 0xFF)), needed("value", Domain::hex(0, 0xFF))},
         "an image-tuning debug command",
         {"tuning 0x51 0x1B"},
         [](Job &job, const Arguments &arguments) {
             job.order([&] { return SonyProcIQDebugMsg(arguments.word("item"), arguments.word("value")); });
         },
         {"SonyProcIQDebugMsg"}},
    };
}

} // namespace

Subject systemCommands() {
    Subject subject = {"Camera", identityRows()};
    for (const std::vector<Row> &rows : {powerRows(), startUpRows(), messageRows()})
        subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
