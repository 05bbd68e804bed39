#include "host_end.h"

#include <gtest/gtest.h>

using sim::Camera;
using sim::Options;
using sim::State;

namespace {

// Slow motions, so that sockets stay busy for as long as a test needs them to.
struct SlowDesk {
    SlowDesk() : camera(options()), host(camera) {}
    static Options options() {
        Options options = Options::fast();
        options.timeScale = 0.1;
        return options;
    }
    void startZoom() { EXPECT_EQ(host.ask("81 01 04 47 04 00 00 00 FF"), "90 41 FF"); }
    void startFocus() {
        EXPECT_EQ(host.command("81 01 04 38 03 FF"), "90 41 FF 90 51 FF");
        EXPECT_EQ(host.ask("81 01 04 48 0F 00 00 00 FF"), "90 41 FF");
    }

    Camera camera;
    HostEnd host;
};

} // namespace

TEST(Sockets, ACommandDuringALongMotionTakesTheSecondSocketAndCompletesFirst) {
    SlowDesk desk;
    desk.startZoom();
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), "90 42 FF 90 52 FF");
    const State state = desk.camera.state();
    EXPECT_TRUE(state.socketBusy[0]);
    EXPECT_FALSE(state.socketBusy[1]);
}

TEST(Sockets, TheThirdConcurrentCommandFindsTheBufferFull) {
    SlowDesk desk;
    desk.startFocus();
    EXPECT_EQ(desk.host.ask("81 01 04 47 04 00 00 00 FF"), "90 42 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 61 02 FF"), "90 60 03 FF");
    EXPECT_EQ(desk.camera.state().setting("mirror"), 3);
    EXPECT_EQ(desk.camera.state().sentCount("error 03"), 1u);
}

TEST(Sockets, InquiriesAndWrongCommandsNeedNoSocket) {
    SlowDesk desk;
    desk.startFocus();
    EXPECT_EQ(desk.host.ask("81 01 04 47 04 00 00 00 FF"), "90 42 FF");
    EXPECT_EQ(desk.host.ask("81 09 04 38 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask("81 01 04 7E FF"), "90 60 02 FF");
}

TEST(Sockets, CancelEndsTheMotionAndFreesTheSocket) {
    SlowDesk desk;
    desk.startZoom();
    EXPECT_EQ(desk.host.ask("81 21 FF"), "90 61 04 FF");
    const State state = desk.camera.state();
    EXPECT_FALSE(state.zoomMoving);
    EXPECT_FALSE(state.socketBusy[0]);
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), "90 41 FF 90 51 FF");
    EXPECT_EQ(desk.camera.state().seenCount("2y"), 1u);
}

TEST(Sockets, CancelOfAnIdleSocketFindsNone) {
    SlowDesk desk;
    EXPECT_EQ(desk.host.ask("81 22 FF"), "90 62 05 FF");
    EXPECT_EQ(desk.host.ask("81 20 FF"), "90 60 05 FF");
}

TEST(Sockets, InterfaceClearFreesBothAndNoCompletionFollows) {
    SlowDesk desk;
    desk.startFocus();
    EXPECT_EQ(desk.host.ask("81 01 04 47 04 00 00 00 FF"), "90 42 FF");
    EXPECT_EQ(desk.host.ask("88 01 00 01 FF"), "90 50 FF");
    EXPECT_FALSE(desk.camera.state().socketBusy[0] || desk.camera.state().socketBusy[1]);
    EXPECT_EQ(desk.host.command("81 01 04 61 02 FF"), "90 41 FF 90 51 FF");
}

TEST(Sockets, AMotionThatIsStoppedCompletesAtOnce) {
    SlowDesk desk;
    desk.startZoom();
    EXPECT_EQ(desk.host.ask("81 01 04 07 00 FF"), "90 51 FF");
    EXPECT_EQ(desk.host.packet(), "90 42 FF");
    EXPECT_EQ(desk.host.packet(), "90 52 FF");
}

TEST(Sockets, SeveralPacketsInOneWriteAreAnsweredInOrder) {
    SlowDesk desk;
    desk.host.send("81 01 04 61 02 FF 81 09 04 61 FF 81 01 04 7E FF");
    EXPECT_EQ(desk.host.packet(), "90 41 FF");
    EXPECT_EQ(desk.host.packet(), "90 51 FF");
    EXPECT_EQ(desk.host.packet(), "90 50 02 FF");
    EXPECT_EQ(desk.host.packet(), "90 60 02 FF");
}
