// Bytes lost, doubled, changed, and cameras that fail in the middle: every wait ends, and afterwards the link
// is in step again.
#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

class DamageTest : public CameraTest {
  protected:
    void StartAtZoom(uint64_t seed = 1) {
        sim::Options options = sim::Options::fast();
        options.timeScale = 500;
        options.seed = seed;
        Start(options);
        EXPECT_EQ(VISCA_SetZoomPos(0x2345), 0u);
        Drain();
        ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.zoom == 0x2345; }));
        Forget();
    }

    // Commands and inquiries over a damaged line; what comes of them is not known, only that all end.
    void Work(int rounds) {
        SetLibraryTimeScale(20);
        for (int i = 0; i < rounds; ++i) {
            EXPECT_EQ(VISCA_ZoomStop(), 0u);
            uint32_t zoom = 0;
            EXPECT_LE(VISCA_GetZoomPos(&zoom), 1u);
        }
        ASSERT_TRUE(host::WaitDrained(kLimit));
        SetLibraryTimeScale(1);
    }

    // The line is good again. What was torn off on it ends with the next command in each direction.
    void ExpectInStepAgain() {
        Camera().clearFaults();
        HurryUntil(kTimeOut);
        EXPECT_EQ(VISCA_ZoomStop(), 0u);
        Drain();
        SetLibraryTimeScale(1);
        host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID); // answers that came after their inquiry had given up
        const uint64_t before = TimeOuts();
        EXPECT_EQ(Zoom(), 0x2345u);
        EXPECT_EQ(VISCA_EnableAF(0), 0u);
        Drain();
        EXPECT_EQ(State().setting("focusMode"), 3);
        EXPECT_EQ(TimeOuts(), before);
    }
};

/* Lost on the way to the camera */

TEST_F(DamageTest, ACommandWithoutItsFirstByteCostsTwoSeconds) {
    StartAtZoom();
    Camera().setFault("drop-tx=1#1");
    HurryUntil(kTimeOut);
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_GE(PauseAfterCommand(0), 2.0);
    EXPECT_THAT(Commands(), ElementsAre(kZoomStop));
    EXPECT_EQ(TimeOuts(), 1u);
    ExpectInStepAgain();
}

TEST_F(DamageTest, ALineThatLosesBytesToTheCameraEndsEveryWait) {
    StartAtZoom(7);
    Camera().setFault("drop-tx=0.03");
    Work(8);
    EXPECT_EQ(HostSteps("send 81 01").size(), 8u);
    ExpectInStepAgain();
}

/* Lost on the way back */

TEST_F(DamageTest, AnAnswerWithoutItsFirstByteIsJunkAndTheInquiryEnds) {
    StartAtZoom();
    Camera().setFault("drop-rx=1#1");
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_EQ(HostCount("WARN unexpected byte"), 6u) << "50 02 03 04 05 FF";
    EXPECT_EQ(Zoom(), 0x2345u);
}

TEST_F(DamageTest, ALineThatLosesBytesOfRepliesEndsEveryWait) {
    StartAtZoom(3);
    Camera().setFault("drop-rx=0.05");
    Work(8);
    ExpectInStepAgain();
}

TEST_F(DamageTest, AnAcknowledgementWithoutEndSwallowsTheCompletionBehindIt) {
    StartAtZoom();
    Camera().setFault("drop-ff=1#1"); // 90 41 90 51 FF
    HurryUntil(kTimeOut);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_EQ(HostCount("dump recv:ViscaPacket: 0x90 0x41 0x90 0x51 0xff"), 1u);
    EXPECT_EQ(TimeOuts(), 1u) << "the second command has its own completion";
    ExpectInStepAgain();
}

TEST_F(DamageTest, AnAnswerWithoutEndIsGivenUpBeforeTheNextOneComes) {
    StartAtZoom();
    Camera().setFault("drop-ff=1#1");
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_EQ(HostCount("ERROR Unexpected Ack, fail exit"), 1u)
        << "90 50 02 03 04 05 and a second of silence";
    EXPECT_EQ(Zoom(), 0x2345u) << "not merged with the torn one";
}

/* Doubled and changed */

TEST_F(DamageTest, DoubledBytesAreRejectedAndNeverOverflowTheRecord) {
    StartAtZoom();
    Camera().setFault("dup=1");
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_EQ(HostCount("ERROR Unexpected Ack, fail exit"), 1u) << "90 90 50 50 02 02 ...";
    Camera().clearFaults();
    EXPECT_EQ(Zoom(), 0x2345u);
}

TEST_F(DamageTest, ALineThatDoublesBytesEndsEveryWait) {
    StartAtZoom(5);
    Camera().setFault("dup=0.1");
    Work(8);
    ExpectInStepAgain();
}

TEST_F(DamageTest, ALineThatChangesBitsEndsEveryWait) {
    StartAtZoom(11);
    Camera().setFault("flip=0.1");
    Work(8);
    ExpectInStepAgain();
}

TEST_F(DamageTest, NoiseBeforeEveryReplyEndsEveryWait) {
    StartAtZoom(2);
    Camera().setFault("noise=1");
    Work(10);
    ExpectInStepAgain();
}

TEST_F(DamageTest, AllAtOnceEndsEveryWait) {
    StartAtZoom(4);
    for (const char *fault : {"drop-tx=0.01", "drop-rx=0.02", "drop-ff=0.05", "dup=0.02", "flip=0.02",
                              "noise=0.2", "no-ack=0.2", "no-completion=0.1", "dup-answer=0.1"}) {
        Camera().setFault(fault);
    }
    Work(10);
    ExpectInStepAgain();
}

/* Sockets and addresses */

TEST_F(DamageTest, ACompletionOfSocketZeroIsTakenForAnAnswer) {
    StartAtZoom();
    Camera().setFault("wrong-socket=0#1");
    HurryUntil(kTimeOut);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_THAT(HostSteps("put 3"), ElementsAre("put 3 90 50 FF unasked"));
    ExpectInStepAgain();
}

TEST_F(DamageTest, AReplyFromAnotherAddressIsJunkUpToItsEnd) {
    StartAtZoom();
    Camera().setFault("address=2#1"); // A0 50 02 03 04 05 FF
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    EXPECT_EQ(HostCount("WARN unexpected byte"), 7u);
    EXPECT_EQ(Zoom(), 0x2345u);
}

TEST_F(DamageTest, ACameraAtAnotherRateIsSilentAndComesBack) {
    StartAtZoom();
    Camera().setFault("rate=38400");
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    Camera().clearFault("rate");
    EXPECT_EQ(Zoom(), 0x2345u);
}

/* A camera that fails in the middle */

TEST_F(DamageTest, APowerCycleInTheMiddleOfACommandIsSurvivedAndRestored) {
    sim::Options options = sim::Options::fast();
    options.timeScale = 10; // 0.02 s without supply, 0.3 s to boot
    Start(options);
    ASSERT_EQ(State().setting("dzoom"), 3);
    Camera().setFault("power-cut=1");
    HurryUntil(kTimeOut);
    EXPECT_EQ(VISCA_SetZoomPos(0x4000), 0u);
    Drain();
    EXPECT_EQ(TimeOuts(), 1u) << "the completion never comes";
    ASSERT_TRUE(AwaitHost("dump recv:ViscaPacket: 0x90 0x38 0xff")) << "the camera says that it is back";
    EXPECT_EQ(SonyWaitPowerOn(), 0u);
    EXPECT_EQ(State().setting("dzoom"), 2) << "the camera has forgotten";
    EXPECT_EQ(SonyRestoreCamEnv(0x02000001), 0u);
    Drain();
    EXPECT_EQ(State().setting("dzoom"), 3);
    EXPECT_EQ(TimeOuts(), 1u);
}

TEST_F(DamageTest, ACameraThatStopsReadingHoldsNobodyUpForEver) {
    StartAtZoom();
    Camera().setFault("stall");
    HurryUntil(kTimeOut);
    EXPECT_EQ(Zoom(), 0u);
    Camera().clearFault("stall"); // it now hears the inquiry and answers
    ASSERT_TRUE(AwaitHost("put 3 90 50 02 03 04 05 FF unasked"));
    ExpectInStepAgain();
}

} // namespace camera
