// Power, reset and registers, end to end: what the camera believes afterwards.
#include <thread>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

constexpr uint8_t kSyncMode = 0x56;
constexpr uint8_t kMonitorMode = 0x72;
constexpr uint8_t kOutputEnable = 0x73;

// The block boots in 60 ms.
sim::Options QuickBoot() {
    sim::Options options = sim::Options::fast();
    options.timeScale = 50;
    return options;
}

uint8_t Register(uint8_t number) {
    uint8_t value = 0;
    EXPECT_EQ(SonyGetRegisterVal(number, &value), 0u);
    return value;
}

} // namespace

class PowerTest : public CameraTest {
  protected:
    void Standby() {
        EXPECT_EQ(SonySetPower(0), 0u);
        Drain();
        ASSERT_EQ(State().power, sim::Power::standby);
    }

    void SwitchOn() {
        EXPECT_EQ(SonySetPower(1), 0u);
        Drain();
        EXPECT_EQ(SonyWaitPowerOn(), 0u);
        EXPECT_EQ(State().power, sim::Power::on);
    }
};

TEST_F(PowerTest, GoesToStandbyAndComesBackAfterItsBoot) {
    Start(QuickBoot());
    Standby();
    SwitchOn();
    EXPECT_EQ(HostCount("INFO Now Power On"), 1u);
    EXPECT_EQ(Zoom(), 0u);
}

TEST_F(PowerTest, EveryValueButOneMeansStandby) {
    Start();
    EXPECT_EQ(SonySetPower(2), 0u);
    Drain();
    EXPECT_EQ(State().power, sim::Power::standby);
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 00 03 FF"));
}

TEST_F(PowerTest, WaitingForPowerGoesOnWhileTheCameraIsInStandby) {
    Start();
    Standby();
    std::thread power([] {
        EXPECT_TRUE(AwaitWire("< 90 50 03 FF", 2));
        EXPECT_EQ(SonySetPower(1), 0u);
    });
    EXPECT_EQ(SonyWaitPowerOn(), 0u);
    power.join();
    EXPECT_EQ(State().power, sim::Power::on);
}

TEST_F(PowerTest, WaitingForPowerEndsWithAnErrorReply) {
    Start();
    Camera().setFault("error=65#1"); // 90 60 41 FF
    EXPECT_EQ(SonyWaitPowerOn(), 1u);
    EXPECT_EQ(HostCount("ERROR ViscaInquiry failed exit"), 1u);
}

TEST_F(PowerTest, RegistersAreWrittenAndReadBack) {
    Start();
    EXPECT_EQ(SonySetRegisterVal(0x7F, 0xC3), 0u);
    EXPECT_EQ(SonySetRegisterVal(0x00, 0x3C), 0u);
    Drain();
    EXPECT_EQ(State().registers[0x7F], 0xC3u);
    EXPECT_EQ(Register(0x7F), 0xC3);
    EXPECT_EQ(Register(0x00), 0x3C);
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 24 7F 0C 03 FF", "81 01 04 24 00 03 0C FF"));
}

TEST_F(PowerTest, RegistersAbove7FAreNotSent) {
    Start();
    uint8_t value = 9;
    EXPECT_EQ(SonyGetRegisterVal(0x80, &value), 1u);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(SonySetRegisterVal(0xFF, 1), 1u);
    Drain();
    EXPECT_THAT(Heard(), IsEmpty());
}

TEST_F(PowerTest, ModeRegistersTakeEffectAtTheNextPowerOn) {
    Start(QuickBoot());
    EXPECT_EQ(SonySetRegisterVal(kMonitorMode, 0x15), 0u);
    EXPECT_EQ(SonySetRegisterVal(kOutputEnable, 0x01), 0u);
    Drain();
    EXPECT_EQ(Register(kMonitorMode), 0x06) << "as it left the factory";
    EXPECT_EQ(State().pendingRegisters[kMonitorMode], 0x15u);
    Standby();
    SwitchOn();
    EXPECT_EQ(Register(kMonitorMode), 0x15);
    EXPECT_EQ(Register(kOutputEnable), 0x01);
    EXPECT_THAT(State().pendingRegisters, IsEmpty());
}

TEST_F(PowerTest, RegistersCanBeWrittenInStandby) {
    Start(QuickBoot());
    Standby();
    EXPECT_EQ(SonySetRegisterVal(kSyncMode, 0x02), 0u);
    Drain();
    EXPECT_EQ(State().pendingRegisters[kSyncMode], 0x02u);
    SwitchOn();
    EXPECT_EQ(Register(kSyncMode), 0x02);
}

TEST_F(PowerTest, AResetAppliesModeRegistersAndForgetsSettings) {
    Start(QuickBoot());
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    EXPECT_EQ(SonySetRegisterVal(kMonitorMode, 0x15), 0u);
    Drain();
    EXPECT_EQ(SonyResetCam(), 0u);
    Drain();
    EXPECT_EQ(SonyWaitPowerOn(), 0u);

    EXPECT_EQ(Register(kMonitorMode), 0x15);
    EXPECT_EQ(State().setting("focusMode"), 2);
    EXPECT_EQ(State().setting("dzoom"), 2) << "on again, as the block powers up";
}

TEST_F(PowerTest, TheRestoreSwitchesDigitalZoomOffAgain) {
    Start(QuickBoot());
    Standby();
    SwitchOn();
    ASSERT_EQ(State().setting("dzoom"), 2);
    EXPECT_EQ(SonyRestoreCamEnv(0x02000001), 0u);
    Drain();
    EXPECT_EQ(State().setting("dzoom"), 3);
}

TEST_F(PowerTest, AnAnnouncedPowerUpIsLoggedAsUnexpectedAndHarmless) {
    Start(QuickBoot());
    Camera().powerCut();
    Camera().powerApply();
    ASSERT_TRUE(AwaitHost("ERROR Unexpected Ack, fail exit"));
    EXPECT_EQ(HostCount("dump recv:ViscaPacket: 0x90 0x38 0xff"), 2u);
    EXPECT_EQ(SonyWaitPowerOn(), 0u);
    EXPECT_EQ(Zoom(), 0u);
}

} // namespace camera
