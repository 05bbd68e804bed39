#include "desk.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using sim::Camera;
using sim::Options;
using sim::Power;
using sim::State;

/* ---- Network ---- */

TEST(Network, AddressSetIsPassedOnWithTheNextAddress) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("88 30 01 FF"), "88 30 02 FF");
    EXPECT_EQ(desk.camera.state().seenCount("30 01"), 1u);
}

TEST(Network, AddressSetToOneCameraIsNoPacket) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 30 01 FF"), SYNTAX);
}

TEST(Network, InterfaceClearIsAnsweredToAddressAndBroadcast) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 01 00 01 FF"), "90 50 FF");
    EXPECT_EQ(desk.host.ask("88 01 00 01 FF"), "90 50 FF");
    EXPECT_EQ(desk.camera.state().seenCount("01 00 01"), 2u);
}

TEST(Network, PacketsForOtherCamerasAreIgnored) {
    Desk desk;
    desk.host.send("82 01 04 07 02 FF 71 09 04 B1 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.camera.state().ignoredPackets, 2u); // 82 ..., and B1 FF
    EXPECT_EQ(desk.camera.state().noiseBytes, 3u);     // 71 09 04
}

TEST(Network, BytesThatBeginNoPacketAreNoise) {
    Desk desk;
    desk.host.send("00 00 FF FF 7F");
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.camera.state().noiseBytes, 5u);
}

/* ---- Refused packets ---- */

TEST(Refusal, UnknownCommandAndUnknownInquiryAreSyntaxErrors) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 01 04 7E 01 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 09 04 7E FF"), SYNTAX);
    EXPECT_EQ(desk.camera.state().sentCount("error 02"), 2u);
    EXPECT_EQ(desk.camera.state().seenCount("01 04 7E"), 1u);
}

TEST(Refusal, ACommandOfTheWrongLengthIsASyntaxError) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 01 04 47 04 00 00 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 01 04 47 04 00 00 00 00 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 FF"), SYNTAX);
}

TEST(Refusal, AHighNibbleWhereNoneBelongsIsASyntaxError) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 01 04 47 14 00 00 00 FF"), SYNTAX);
}

TEST(Refusal, SixteenBytesAreAPacketAndSeventeenAreTooLong) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 01 04 7E 00 00 00 00 00 00 00 00 00 00 00 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 01 04 00 00 00 00 00 00 00 00 00 00 00 00 00 FF"), SYNTAX);
    EXPECT_EQ(desk.camera.state().seenCount("01 04 7E"), 1u);
    EXPECT_EQ(desk.camera.state().seenCount("long"), 1u);
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 02 FF");
}

/* ---- Zoom ---- */

TEST(Zoom, AbsolutePositionIsReachedBeforeTheCompletionAndReadBack) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 47 01 02 0A 0F FF"), DONE);
    EXPECT_EQ(desk.camera.state().zoom, 0x12AFu);
    EXPECT_EQ(desk.host.ask("81 09 04 47 FF"), "90 50 01 02 0A 0F FF");
}

TEST(Zoom, TheWholeTravelTakesLongerThanTwoSeconds) {
    Desk desk;
    const auto begin = sim::Clock::now();
    EXPECT_EQ(desk.host.command("81 01 04 47 04 00 00 00 FF"), DONE);
    EXPECT_GT(sim::Clock::now() - begin, 2000ms / 100);
    EXPECT_EQ(desk.camera.state().zoom, 0x4000u);
}

TEST(Zoom, ADriveGoesOnToTheEndAfterItsCompletion) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 07 26 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().zoom, 0x7AC0u);
    EXPECT_EQ(desk.host.command("81 01 04 07 36 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().zoom, 0u);
    EXPECT_EQ(desk.camera.state().seenCount("01 04 07"), 2u);
}

TEST(Zoom, DriveAtStandardSpeedAndStop) {
    Options options = quick();
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 07 02 FF"), DONE);
    EXPECT_TRUE(
        desk.camera.waitFor([](const State &s) { return s.zoom > 0x20 && s.zoomMoving; }, HostEnd::PATIENCE));
    EXPECT_EQ(desk.host.command("81 01 04 07 00 FF"), DONE);
    const State stopped = desk.camera.state();
    EXPECT_FALSE(stopped.zoomMoving);
    EXPECT_LT(stopped.zoom, 0x7AC0u);
    EXPECT_EQ(desk.host.command("81 01 04 07 03 FF"), DONE);
    EXPECT_TRUE(
        desk.camera.waitFor([&](const State &s) { return s.zoom < stopped.zoom; }, HostEnd::PATIENCE));
}

TEST(Zoom, SpeedSevenIsTheFastestAndEightIsNone) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 07 27 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 01 04 07 28 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 01 04 07 3F FF"), SYNTAX);
}

TEST(Zoom, ASlowDriveTakesLongerThanAFastOne) {
    Desk desk;
    const auto travel = [&](const std::string &drive) {
        const auto begin = sim::Clock::now();
        desk.host.command(drive);
        EXPECT_TRUE(desk.rests());
        return sim::Clock::now() - begin;
    };
    desk.host.command("81 01 04 06 03 FF");
    EXPECT_GE(travel("81 01 04 07 23 FF"), 48ms); // half the top speed: 2 x 2.4 s
    EXPECT_GE(travel("81 01 04 07 37 FF"), 24ms);
}

TEST(Zoom, WithoutDigitalZoomTheOpticalEndIsTheLimit) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 47 05 00 00 00 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 06 03 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().zoom, 0x4000u);
    EXPECT_EQ(desk.host.ask("81 01 04 47 04 00 00 01 FF"), REFUSED);
    EXPECT_EQ(desk.host.command("81 01 04 07 27 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().zoom, 0x4000u);
}

TEST(Zoom, NoPositionLiesBeyondTheDigitalEnd) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 47 07 0A 0C 00 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 01 04 47 07 0A 0C 01 FF"), SYNTAX);
}

TEST(Zoom, DigitalZoomIsToldAndIsOnAfterPowerUp) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 09 04 06 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.command("81 01 04 06 03 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 06 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 06 04 FF"), SYNTAX);
    EXPECT_EQ(desk.camera.state().setting("dzoom"), 3);
}

TEST(Zoom, ZoomAndFocusGoToTheirPositionsTogether) {
    Desk desk;
    desk.host.command("81 01 04 38 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 47 02 00 00 00 09 00 00 0F FF"), DONE);
    EXPECT_EQ(desk.camera.state().zoom, 0x2000u);
    EXPECT_EQ(desk.camera.state().focus, 0x900Fu);
    EXPECT_EQ(desk.host.ask("81 01 04 47 02 00 00 00 00 0F 0F 0F FF"), SYNTAX);
}

TEST(Zoom, TheReturnCommandIsAccepted) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 BA FF"), DONE);
}

/* ---- Focus ---- */

TEST(Focus, DriveIsRefusedInAutoFocusWithTheSocketThatItWouldHaveHad) {
    Desk desk;
    for (const char *drive :
         {"81 01 04 08 00 FF", "81 01 04 08 02 FF", "81 01 04 08 03 FF", "81 01 04 08 20 FF",
          "81 01 04 08 37 FF", "81 01 04 48 05 00 00 00 FF", "81 01 04 18 02 FF"})
        EXPECT_EQ(desk.host.ask(drive), REFUSED) << drive;
    EXPECT_EQ(desk.camera.state().sentCount("error 41"), 7u);
}

TEST(Focus, DriveNearRaisesAndDriveFarLowersThePosition) {
    Desk desk;
    desk.host.command("81 01 04 38 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 08 37 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.host.ask("81 09 04 48 FF"), "90 50 0F 00 00 00 FF");
    EXPECT_EQ(desk.host.command("81 01 04 08 27 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.host.ask("81 09 04 48 FF"), "90 50 01 00 00 00 FF");
}

TEST(Focus, StopHoldsTheFocusWhereItIs) {
    Options options = quick();
    options.timeScale = 1;
    Desk desk(options);
    desk.host.command("81 01 04 38 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 08 03 FF"), DONE);
    EXPECT_TRUE(desk.camera.state().focusMoving);
    EXPECT_EQ(desk.host.command("81 01 04 08 00 FF"), DONE);
    EXPECT_FALSE(desk.camera.state().focusMoving);
    EXPECT_LT(desk.camera.state().focus, 0xF000u);
}

TEST(Focus, AbsolutePositionInManualFocus) {
    Desk desk;
    desk.host.command("81 01 04 38 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 48 0A 0B 0C 0D FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 48 FF"), "90 50 0A 0B 0C 0D FF");
    EXPECT_EQ(desk.host.ask("81 01 04 48 00 0F 0F 0F FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 01 04 48 0F 00 00 01 FF"), SYNTAX);
}

TEST(Focus, NearLimitHoldsTheFocusBack) {
    Desk desk;
    desk.host.command("81 01 04 38 03 FF");
    desk.host.command("81 01 04 48 0E 00 00 00 FF");
    EXPECT_EQ(desk.host.command("81 01 04 28 0C 00 00 00 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().focus, 0xC000u);
    desk.host.command("81 01 04 48 0F 00 00 00 FF");
    EXPECT_EQ(desk.camera.state().focus, 0xC000u);
    EXPECT_EQ(desk.host.ask("81 09 04 28 FF"), "90 50 0C 00 00 00 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 28 00 00 00 00 FF"), SYNTAX);
}

TEST(Focus, ModesAreSetToggledAndTold) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 09 04 38 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.command("81 01 04 38 03 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 38 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 38 10 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 38 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.command("81 01 04 38 10 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 38 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 38 04 FF"), DONE);
    EXPECT_EQ(desk.camera.state().setting("focusMode"), 4);
    EXPECT_EQ(desk.host.ask("81 01 04 38 05 FF"), SYNTAX);
}

TEST(Focus, AutoFocusAndOnePushFindTheScene) {
    Desk desk;
    const unsigned scene = desk.camera.state().focus;
    desk.host.command("81 01 04 38 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 18 02 FF"), DONE);
    EXPECT_EQ(desk.camera.state().focus, 0x1000u);
    EXPECT_EQ(desk.host.command("81 01 04 18 01 FF"), DONE);
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().focus, scene);
    desk.host.command("81 01 04 48 0E 00 00 00 FF");
    desk.host.command("81 01 04 38 02 FF");
    EXPECT_TRUE(desk.rests());
    EXPECT_EQ(desk.camera.state().focus, scene);
}

TEST(Focus, CorrectionAndAutoFocusModeAreStored) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 11 01 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 57 02 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 01 04 11 02 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 01 04 57 03 FF"), SYNTAX);
    EXPECT_EQ(desk.camera.state().setting("irCorrection"), 1);
    EXPECT_EQ(desk.host.ask("81 09 04 57 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 11 FF"), "90 50 01 FF");
}

/* ---- Orientation and identity ---- */

TEST(Orientation, MirrorAndFlipAreSetAndTold) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 66 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), DONE);
    EXPECT_EQ(desk.host.command("81 01 04 66 02 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 66 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 61 04 FF"), SYNTAX);
}

TEST(Identity, NamesVendorModelVersionAndSockets) {
    Desk sony1(quick("sony1"));
    EXPECT_EQ(sony1.host.ask("81 09 00 02 FF"), "90 50 00 20 04 67 01 10 02 FF");
    Desk sony4(quick("sony4"));
    EXPECT_EQ(sony4.host.ask("81 09 00 02 FF"), "90 50 00 20 04 67 01 40 02 FF");
}

/* ---- Registers ---- */

TEST(Registers, AreWrittenAndReadInNibbles) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 24 50 0A 05 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 24 50 FF"), "90 50 0A 05 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 24 7F FF"), "90 50 00 00 FF");
    EXPECT_EQ(desk.camera.state().registers.at(0x50), 0xA5u);
}

TEST(Registers, NumbersEndAt7F) {
    Desk desk;
    EXPECT_EQ(desk.host.command("81 01 04 24 7F 00 01 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 01 04 24 80 00 01 FF"), SYNTAX);
    EXPECT_EQ(desk.host.ask("81 09 04 24 80 FF"), SYNTAX);
}

TEST(Registers, LeaveTheFactoryWithTheNormOfTheirBlock) {
    for (const char *name : {"sony1", "sony3", "sony5"})
        EXPECT_EQ(Desk(quick(name)).host.ask("81 09 04 24 72 FF"), "90 50 00 06 FF") << name;
    Desk sony4(quick("sony4"));
    EXPECT_EQ(sony4.host.ask("81 09 04 24 72 FF"), "90 50 00 0E FF");
    EXPECT_EQ(sony4.host.ask("81 09 04 24 73 FF"), "90 50 00 03 FF");
    EXPECT_EQ(sony4.host.ask("81 09 04 24 56 FF"), "90 50 00 01 FF");
}

TEST(Registers, NormRegistersTakeEffectAtPowerOn) {
    Desk desk;
    desk.host.command("81 01 04 24 72 00 08 FF");
    desk.host.command("81 01 04 24 73 00 01 FF");
    desk.host.command("81 01 04 24 56 00 00 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 24 72 FF"), "90 50 00 06 FF");
    EXPECT_EQ(desk.camera.state().pendingRegisters.size(), 3u);
    desk.host.command("81 01 04 00 03 FF");
    desk.host.command("81 01 04 00 02 FF");
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.power == Power::on; }, HostEnd::PATIENCE));
    EXPECT_EQ(desk.host.ask("81 09 04 24 72 FF"), "90 50 00 08 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 24 73 FF"), "90 50 00 01 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 24 56 FF"), "90 50 00 00 FF");
    EXPECT_TRUE(desk.camera.state().pendingRegisters.empty());
}

TEST(Registers, NormRegistersTakeEffectAtResetAndOutliveAPowerCut) {
    Desk desk;
    desk.host.command("81 01 04 24 72 01 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 19 03 FF"), DONE);
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.power == Power::on; }, HostEnd::PATIENCE));
    EXPECT_EQ(desk.host.ask("81 09 04 24 72 FF"), "90 50 01 03 FF");
    desk.camera.powerCut();
    EXPECT_EQ(desk.camera.state().registers.at(0x72), 0x13u);
}

TEST(Registers, AreServedInStandby) {
    Desk desk;
    desk.host.command("81 01 04 00 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 24 72 00 08 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 24 72 FF"), "90 50 00 06 FF");
}

/* ---- Power ---- */

TEST(PowerState, InquiryTellsOnAndStandby) {
    Desk desk;
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 02 FF");
    EXPECT_EQ(desk.host.command("81 01 04 00 03 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 00 04 FF"), SYNTAX);
}

TEST(PowerState, StandbyExecutesNothingElse) {
    Desk desk;
    desk.host.command("81 01 04 00 03 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 07 26 FF"), REFUSED);
    EXPECT_EQ(desk.host.ask("81 01 04 19 03 FF"), REFUSED);
    EXPECT_EQ(desk.host.ask("81 09 04 47 FF"), "90 60 41 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 7E 01 FF"), SYNTAX);
}

TEST(PowerState, SwitchedOnItBootsAndAnswersStandbyToThePowerInquiryOnly) {
    Options options = quick();
    options.bootTime = 60s;
    options.start = Power::standby;
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 00 02 FF"), DONE);
    desk.host.send("81 09 04 47 FF 81 01 04 07 26 FF 81 01 04 00 02 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.camera.state().power, Power::booting);
    EXPECT_EQ(desk.camera.state().ignoredPackets, 3u);
}

TEST(PowerState, BootEndsAfterItsTime) {
    Options options = quick();
    options.start = Power::booting;
    options.timeScale = 20;
    const auto begin = sim::Clock::now();
    Desk desk(options);
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.power == Power::on; }, HostEnd::PATIENCE));
    EXPECT_GE(sim::Clock::now() - begin, 3000ms / 20);
    EXPECT_EQ(desk.host.packet(), "90 38 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 02 FF");
}

TEST(PowerState, ACameraCanBeSilentWhileBooting) {
    Options options = quick();
    options.start = Power::booting;
    options.bootTime = 600s;
    options.timeScale = 1;
    options.silentWhileBooting = true;
    Desk desk(options);
    EXPECT_EQ(desk.host.packet(), "90 38 FF");
    desk.host.send("81 09 04 00 FF");
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.ignoredPackets == 1; }, HostEnd::PATIENCE));
    EXPECT_EQ(desk.camera.state().sentCount("answer"), 0u);
}

TEST(PowerState, AnnouncesItselfWhenTheSupplyReturnsWithDefaultsRestored) {
    Desk desk;
    desk.host.command("81 01 04 38 03 FF");
    desk.host.command("81 01 04 61 02 FF");
    desk.host.command("81 01 04 47 01 00 00 00 FF");
    desk.camera.powerCut();
    EXPECT_EQ(desk.camera.state().power, Power::off);
    desk.host.send("81 09 04 00 FF");
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.ignoredPackets == 1; }, HostEnd::PATIENCE));
    desk.camera.powerApply();
    EXPECT_EQ(desk.host.packet(), "90 38 FF");
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.power == Power::on; }, HostEnd::PATIENCE));
    const State state = desk.camera.state();
    EXPECT_EQ(state.setting("focusMode"), 2);
    EXPECT_EQ(state.setting("mirror"), 3);
    EXPECT_EQ(state.zoom, 0u);
    EXPECT_EQ(state.sentCount("power-up"), 1u);
}

TEST(PowerState, ResetBootsAsPowerOnDoes) {
    Options options = quick();
    options.bootTime = 600s;
    options.timeScale = 1;
    Desk desk(options);
    EXPECT_EQ(desk.host.command("81 01 04 19 03 FF"), DONE);
    EXPECT_EQ(desk.host.ask("81 09 04 00 FF"), "90 50 03 FF");
}

TEST(PowerState, ResetRestoresDefaults) {
    Desk desk;
    desk.host.command("81 01 04 06 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 19 03 FF"), DONE);
    EXPECT_TRUE(desk.camera.waitFor([](const State &s) { return s.power == Power::on; }, HostEnd::PATIENCE));
    EXPECT_EQ(desk.camera.state().setting("dzoom"), 2);
}

TEST(PowerState, SwitchedOnTwiceItBootsOnce) {
    Desk desk;
    desk.host.command("81 01 04 38 03 FF");
    EXPECT_EQ(desk.host.command("81 01 04 00 02 FF"), DONE);
    EXPECT_EQ(desk.camera.state().power, Power::on);
    EXPECT_EQ(desk.camera.state().setting("focusMode"), 3);
}

TEST(LensReset, GoesToTheWideEnd) {
    Desk desk;
    desk.host.command("81 01 04 47 02 00 00 00 FF");
    EXPECT_EQ(desk.host.command("81 01 04 19 01 FF"), DONE);
    EXPECT_EQ(desk.camera.state().zoom, 0u);
}
