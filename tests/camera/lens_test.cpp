// Lens functions of the public layer, end to end: what the camera believes afterwards.
#include "tests/camera/camera_test.h"

namespace camera {

namespace {

sim::Options Hurried() {
    sim::Options options = sim::Options::fast();
    options.timeScale = 100;
    return options;
}

bool AtRest(const sim::State &state) {
    return !state.zoomMoving && !state.focusMoving;
}

} // namespace

class LensTest : public CameraTest {
  protected:
    int16_t Focus() {
        int16_t focus = 0;
        EXPECT_EQ(VISCA_GetFocusPos(&focus), 0u);
        return focus;
    }
};

TEST_F(LensTest, ZoomsInUntilItIsStopped) {
    Start();
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoomMoving && state.zoom > 0; }));
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();

    EXPECT_FALSE(State().zoomMoving);
    EXPECT_GT(State().zoom, 0u);
    EXPECT_EQ(Zoom(), State().zoom);
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 07 26 FF", kZoomStop));
}

TEST_F(LensTest, ZoomsInToTheOpticalEndSinceDigitalZoomIsOff) {
    Start(Hurried());
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera(AtRest));
    EXPECT_EQ(Zoom(), 0x4000u);
}

TEST_F(LensTest, ZoomsOutToTheWideEnd) {
    Start(Hurried());
    EXPECT_EQ(VISCA_SetZoomPos(0x3000), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoom == 0x3000; }));
    EXPECT_EQ(VISCA_ZoomOut(), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera(AtRest));
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 47 03 00 00 00 FF", "81 01 04 07 36 FF"));
}

TEST_F(LensTest, GoesToAZoomPositionByItsLow16Bits) {
    Start(Hurried());
    EXPECT_EQ(VISCA_SetZoomPos(0x12345), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera(AtRest));
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(State().zoom, 0x2345u);
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 47 02 03 04 05 FF"));
}

TEST_F(LensTest, GoesToZoomAndFocusPositionsWithOneCommand) {
    Start(Hurried());
    EXPECT_EQ(VISCA_SetZoomFocusPos(0x1ABC, 0x9DEF), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera(AtRest));
    EXPECT_EQ(State().zoom, 0x1ABCu);
    EXPECT_EQ(State().focus, 0x9DEFu);
    EXPECT_EQ(Zoom(), 0x1ABCu);
    EXPECT_EQ(Focus(), 0x9DEF - 0x10000) << "positions above 0x7FFF are negative in 16 bits";
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 47 01 0A 0B 0C 09 0D 0E 0F FF"));
}

TEST_F(LensTest, TheNextCommandWaitsUntilTheLensHasArrived) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 10; // a full travel takes 0.24 s
    Start(options);
    EXPECT_EQ(VISCA_SetZoomPos(0x4000), 0u);
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    Drain();
    EXPECT_EQ(State().zoom, 0x4000u);
    EXPECT_THAT(Line(), ElementsAre("> 81 01 04 47 04 00 00 00 FF", "< 90 41 FF", "< 90 51 FF",
                                    "> 81 01 04 38 03 FF", "< 90 41 FF", "< 90 51 FF"));
    EXPECT_GE(PauseAfterCommand(0), 0.23);
}

TEST_F(LensTest, FocusesNearAndFarInManualFocus) {
    Start(Hurried());
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    EXPECT_EQ(VISCA_FocusNear(), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return AtRest(state) && state.focus == 0xF000; }));
    EXPECT_EQ(VISCA_FocusFar(), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return AtRest(state) && state.focus == 0x1000; }));
    EXPECT_EQ(Focus(), 0x1000);
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 38 03 FF", "81 01 04 08 30 FF", "81 01 04 08 20 FF"));
}

TEST_F(LensTest, FocusStopsWhereItIs) {
    Start();
    EXPECT_EQ(VISCA_SetFocusMode(0), 0u);
    Drain();
    const unsigned before = State().focus;
    EXPECT_EQ(VISCA_FocusNear(), 0u);
    ASSERT_TRUE(
        AwaitCamera([&](const sim::State &state) { return state.focusMoving && state.focus > before; }));
    EXPECT_EQ(VISCA_FocusStop(), 0u);
    Drain();
    EXPECT_FALSE(State().focusMoving);
    EXPECT_GT(State().focus, before);
    EXPECT_EQ(static_cast<uint16_t>(Focus()), State().focus);
}

TEST_F(LensTest, FocusStaysWhereItIsInAutoFocus) {
    Start(Hurried());
    const unsigned before = State().focus;
    EXPECT_EQ(VISCA_FocusNear(), 0u);
    EXPECT_EQ(VISCA_FocusFar(), 0u);
    EXPECT_EQ(VISCA_FocusStop(), 0u);
    Drain();
    EXPECT_EQ(State().focus, before);
    EXPECT_EQ(State().sentCount("error 41"), 3u);
}

TEST_F(LensTest, FocusModesAreSet) {
    Start();
    const auto modeAfter = [this](uint32_t result) {
        EXPECT_EQ(result, 0u);
        Drain();
        return State().setting("focusMode");
    };
    EXPECT_EQ(State().setting("focusMode"), 2) << "blocks power up in auto focus";
    EXPECT_EQ(modeAfter(VISCA_EnableAF(0)), 3);
    EXPECT_EQ(modeAfter(VISCA_EnableAF(1)), 2);
    EXPECT_EQ(modeAfter(VISCA_EnableAF(2)), 3) << "only 1 means auto";
    EXPECT_EQ(modeAfter(VISCA_SetFocusMode(1)), 2);
    EXPECT_EQ(modeAfter(VISCA_SetFocusMode(0)), 3);
    EXPECT_EQ(modeAfter(VISCA_SetFocusMode(2)), 4);
    EXPECT_EQ(modeAfter(SONY_SetFocusMode(1)), 2);
}

TEST_F(LensTest, DigitalZoomIsSwitchedAndExtendsTheRange) {
    Start(Hurried());
    EXPECT_EQ(SonyImgEnableDzoom(1), 0u);
    EXPECT_EQ(VISCA_SetZoomPos(0x7AC0), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera(AtRest));
    EXPECT_EQ(State().setting("dzoom"), 2);
    EXPECT_EQ(Zoom(), 0x7AC0u);
    EXPECT_EQ(SonyImgEnableDzoom(2), 0u) << "only 1 means on";
    Drain();
    EXPECT_EQ(State().setting("dzoom"), 3);
}

TEST_F(LensTest, ZoomCutWritesItsTwoRegisters) {
    Start();
    EXPECT_EQ(VISCA_SetZoomCut(0, 0x12), 0u);
    EXPECT_EQ(VISCA_SetZoomCut(1, 0x1A5), 0u);
    EXPECT_EQ(VISCA_SetZoomCut(2, 5), 0u);
    Drain();
    EXPECT_EQ(State().registers[0x50], 0x12u);
    EXPECT_EQ(State().registers[0x51], 0xA5u) << "the low 8 bits count";
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 24 50 01 02 FF", "81 01 04 24 51 0A 05 FF"));
}

TEST_F(LensTest, ZoomFocusReturnIsTheCamerasOwnCommand) {
    Start();
    EXPECT_EQ(VISCA_RetSetZoomFocus(), 0u);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 BA FF"));
    EXPECT_EQ(State().seenCount("01 04 BA"), 1u);
}

} // namespace camera
