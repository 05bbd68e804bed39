// The video norm of every module, against its camera: already in the norm, and not.
#include <algorithm>
#include <cstdio>
#include <ostream>
#include <utility>

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

namespace {

constexpr unsigned kSyncMode = 0x56;
constexpr unsigned kMonitorMode = 0x72;
constexpr unsigned kOutputEnable = 0x73;

constexpr uint32_t kWithoutDetection = 2; // a host that leaves the picture to others

constexpr char kStandby[] = "81 01 04 00 03 FF";
constexpr char kPowerOn[] = "81 01 04 00 02 FF";
constexpr char kReset[] = "81 01 04 19 03 FF";

struct Module {
    const char *name;
    bool hasSync;         // a sync mode that counts
    bool isReset;         // reset instead of switched off
    VideoNormParam norm;  // as it leaves the factory
    VideoNormParam other; // and its monitor mode
    unsigned otherMode;
};

void PrintTo(const Module &module, std::ostream *out) {
    *out << module.name;
}

constexpr VideoNormParam kHd30 = {1920, 1080, 30};
constexpr VideoNormParam kHd25 = {1920, 1080, 25};

const Module kModules[] = {
    {"sony1", true, false, kHd30, kHd25, 0x08},
    {"sony3", false, true, kHd30, kHd25, 0x08},
    {"sony4", true, false, {1280, 720, 30}, {1280, 960, 30}, 0x16},
    {"sony5", false, true, kHd30, kHd25, 0x08},
    {"kova1", false, false, kHd30, kHd25, 0x08},
    {"kova-2001", false, false, kHd30, kHd25, 0x08},
    {"kova-2002", false, false, kHd30, {704, 576, 25}, 0x08},
    {"kova-2005", false, false, kHd30, kHd25, 0x08},
    {"kova-2100", false, false, {1280, 720, 30}, {1280, 720, 25}, 0x11},
    {"kova-2200", false, false, {720, 576, 25}, {720, 576, 25}, 0x15},
    {"kova-2A00", false, false, kHd30, {1920, 1080, 60}, 0x13},
    {"kova2", false, false, kHd30, {1920, 1080, 50}, 0x14},
    {"kova-2A02", false, false, kHd30, kHd25, 0x08},
};

const char *const kWithoutNorm[] = {"kova-2003", "kova-2004"};

std::string Write(unsigned number, unsigned value) {
    char text[40];
    std::snprintf(text, sizeof text, "81 01 04 24 %02X %02X %02X FF", number, value >> 4, value & 0x0F);
    return text;
}

std::string ModuleName(const ::testing::TestParamInfo<Module> &module) {
    std::string name = module.param.name;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
}

} // namespace

class VideoNormTest : public CameraTest {
  protected:
    void StartModule(const std::string &camera, std::chrono::milliseconds bootTime) {
        sim::Options options = sim::Options::fast(camera);
        options.bootTime = bootTime;
        StartWithoutFiles(options);
        host::Board board = host::GetBoard();
        board.ulCaller = kWithoutDetection;
        host::SetBoard(board);
    }

    // The camera has these registers already, in effect.
    void Prepare(const std::map<unsigned, unsigned> &registers) {
        EXPECT_EQ(SonySetPower(0), 0u);
        for (const auto &[number, value] : registers) {
            EXPECT_EQ(SonySetRegisterVal(static_cast<uint8_t>(number), static_cast<uint8_t>(value)), 0u);
        }
        EXPECT_EQ(SonySetPower(1), 0u);
        Drain();
        ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.power == sim::Power::on; }));
        Forget();
    }

    // The library pauses before it asks for the power. However slow the machine is: the camera has had all
    // commands by then.
    uint32_t SetNorm(const VideoNormParam &norm) {
        OnPause([first = true](double) mutable {
            return std::exchange(first, false) && host::WaitDrained(kLimit);
        });
        const uint32_t result = VISCA_SetVin(&norm);
        OnPause(nullptr);
        Drain();
        return result;
    }
};

TEST_F(VideoNormTest, EveryCameraHasItsCases) {
    std::vector<std::string> tested(std::begin(kWithoutNorm), std::end(kWithoutNorm));
    for (const Module &module : kModules) {
        tested.push_back(module.name);
    }
    std::vector<std::string> known;
    for (const sim::CameraType &type : sim::knownCameras()) {
        known.push_back(type.name);
    }
    EXPECT_THAT(tested, ::testing::UnorderedElementsAreArray(known));
}

class ModuleNormTest : public VideoNormTest, public ::testing::WithParamInterface<Module> {
  protected:
    void SetUp() override {
        CameraTest::SetUp();
        // A block that is booting does not hear the command that follows its reset.
        StartModule(GetParam().name, std::chrono::milliseconds(GetParam().isReset ? 0 : 40));
    }

    static std::vector<std::string> Inquiries() {
        std::vector<std::string> inquiries = {"81 09 04 24 72 FF", "81 09 04 24 73 FF"};
        if (GetParam().hasSync) {
            inquiries.push_back("81 09 04 24 56 FF");
        }
        return inquiries;
    }

    static std::vector<std::string> Change(const std::vector<std::string> &writes) {
        std::vector<std::string> commands = writes;
        if (GetParam().isReset) {
            commands.push_back(kReset);
        } else {
            commands.insert(commands.begin(), kStandby);
        }
        commands.push_back(kPowerOn);
        if (StartsWith(GetParam().name, "sony")) {
            commands.push_back(kDzoomOff);
        }
        return commands;
    }

    void ExpectRunning(unsigned monitorMode) {
        sim::State state = State();
        EXPECT_EQ(state.power, sim::Power::on);
        EXPECT_EQ(state.registers[kMonitorMode], monitorMode);
        EXPECT_EQ(state.registers[kOutputEnable], 3u);
        EXPECT_EQ(state.registers[kSyncMode], 1u);
        EXPECT_THAT(state.pendingRegisters, IsEmpty());
        EXPECT_EQ(state.setting("dzoom"), StartsWith(GetParam().name, "sony") ? 3 : 2);
        ExpectNothingRefused();
    }
};

TEST_P(ModuleNormTest, IsLeftAloneWhenItIsSetAlready) {
    const unsigned mode = State().registers[kMonitorMode];
    EXPECT_EQ(SetNorm(GetParam().norm), 0u);
    EXPECT_EQ(Heard(), Inquiries());
    EXPECT_EQ(HostCount("INFO No Need Change Norm or Output or SyncMode"), 1u);
    ExpectRunning(mode);
}

TEST_P(ModuleNormTest, IsChanged) {
    if (std::string(GetParam().name) == "kova-2200") {
        Prepare({{kMonitorMode, 0x06}}); // there is only one norm that it can be set to
    }
    EXPECT_EQ(SetNorm(GetParam().other), 0u);
    EXPECT_EQ(Commands(), Change({Write(kMonitorMode, GetParam().otherMode)}));
    ExpectRunning(GetParam().otherMode);
    EXPECT_EQ(HostCount("INFO Now Power On"), 1u);
    Forget();
    EXPECT_EQ(SetNorm(GetParam().other), 0u);
    EXPECT_EQ(Heard(), Inquiries());
}

TEST_P(ModuleNormTest, IsChangedTogetherWithOutputAndSync) {
    Prepare({{kMonitorMode, 0x01}, {kOutputEnable, 0x01}, {kSyncMode, GetParam().hasSync ? 0x02u : 0x01u}});
    EXPECT_EQ(SetNorm(GetParam().other), 0u);
    std::vector<std::string> writes = {Write(kMonitorMode, GetParam().otherMode), Write(kOutputEnable, 3)};
    if (GetParam().hasSync) {
        writes.push_back(Write(kSyncMode, 1));
    }
    EXPECT_EQ(Commands(), Change(writes));
    ExpectRunning(GetParam().otherMode);
}

TEST_P(ModuleNormTest, ForgetsTheImageSettingsThatTheCameraForgot) {
    Prepare({{kOutputEnable, 0x01}});
    EXPECT_EQ(SonySetExposureMode(0, 2), 0u);
    Drain();
    ASSERT_EQ(State().setting("exposureMode"), 0x0A);
    EXPECT_EQ(SetNorm(GetParam().norm), 0u);
    ASSERT_EQ(State().setting("exposureMode"), 0x00);
    EXPECT_EQ(SonySetExposureMode(0, 2), 0u);
    Drain();
    EXPECT_EQ(State().setting("exposureMode"), 0x0A);
}

INSTANTIATE_TEST_SUITE_P(Of, ModuleNormTest, ::testing::ValuesIn(kModules), ModuleName);

/* What cannot be */

class WithoutNormTest : public VideoNormTest, public ::testing::WithParamInterface<const char *> {};

TEST_P(WithoutNormTest, IsAskedOneRegisterAndRefused) {
    StartModule(GetParam(), std::chrono::milliseconds(40));
    EXPECT_EQ(SetNorm(kHd30), 1u);
    EXPECT_THAT(Heard(), ElementsAre("81 09 04 24 72 FF"));
    const std::string type = std::string(GetParam()) == "kova-2003" ? "33628163" : "33628164";
    EXPECT_EQ(HostCount("ERROR Not Supported CM[" + type + "] yet, fail exit"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Of, WithoutNormTest, ::testing::ValuesIn(kWithoutNorm),
                         [](const auto &camera) { return "kova" + std::string(camera.param).substr(5); });

TEST_F(VideoNormTest, SixtyFramesAreRefusedByAFirstGenerationModule) {
    StartModule("kova1", std::chrono::milliseconds(40));
    EXPECT_EQ(SetNorm({1920, 1080, 60}), 1u);
    EXPECT_EQ(HostCount("ERROR Not Supported norm[1920, 1080, 60], fail exit"), 1u);
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(VideoNormTest, TheStandardDefinitionModuleKnowsOneNormOnly) {
    StartModule("kova-2200", std::chrono::milliseconds(40));
    EXPECT_EQ(SetNorm({720, 576, 30}), 1u);
    EXPECT_EQ(HostCount("ERROR QDM730K2S only support pal now, fail exit"), 1u);
    EXPECT_THAT(Commands(), IsEmpty());
}

/* Coming back */

TEST_F(VideoNormTest, AResetBlockDoesNotHearThePowerOnAndIsWaitedFor) {
    StartModule("sony3", std::chrono::milliseconds(500));
    OnPause([first = true](double) mutable { return std::exchange(first, false) && AwaitWire("* booting"); });
    HurryUntil(kTimeOut);
    EXPECT_EQ(VISCA_SetVin(&kHd25), 0u);
    OnPause(nullptr);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre(Write(kMonitorMode, 0x08), kReset, kPowerOn, kDzoomOff));
    EXPECT_EQ(TimeOuts(), 1u) << "the power-on command";
    EXPECT_EQ(State().registers[kMonitorMode], 0x08u);
    EXPECT_EQ(State().setting("dzoom"), 3);
}

TEST_F(VideoNormTest, AModuleThatDoesNotComeBackIsGivenUpWhenItAnswersWithAnError) {
    StartModule("kova1", std::chrono::minutes(10));
    int pauses = 0;
    OnPause([&](double) {
        if (++pauses == 3) {
            Camera().setFault("error=65#1"); // 90 60 41 FF
        }
        return host::WaitDrained(kLimit);
    });
    EXPECT_EQ(VISCA_SetVin(&kHd25), 1u);
    OnPause(nullptr);
    Drain();
    EXPECT_EQ(pauses, 3);
    EXPECT_EQ(HostCount("ERROR SonyWaitPowerOn fail exit"), 1u);
    EXPECT_THAT(Commands(), ElementsAre(kStandby, Write(kMonitorMode, 0x08), kPowerOn));
    EXPECT_EQ(State().power, sim::Power::booting);
}

TEST_F(VideoNormTest, ARefusedRegisterReadChangesNothing) {
    StartModule("sony1", std::chrono::milliseconds(40));
    Camera().setFault("error=65#1");
    EXPECT_EQ(SetNorm(kHd25), 1u);
    EXPECT_THAT(Commands(), IsEmpty());
    EXPECT_EQ(State().power, sim::Power::on);
}

} // namespace camera
