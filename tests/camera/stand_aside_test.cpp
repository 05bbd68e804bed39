// While an upgrade or a log export owns the line, the receiver leaves every byte to whoever does.
#include <ostream>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

int BytesOnTheLine() {
    int count = 0;
    EXPECT_EQ(ioctl(ViscaGetCamComFd(), FIONREAD, &count), 0);
    return count;
}

// What another reader of the port gets, as text.
std::string Read(size_t count) {
    std::vector<uint8_t> bytes(count);
    size_t have = 0;
    pollfd wanted = {ViscaGetCamComFd(), POLLIN, 0};
    while (have < count && poll(&wanted, 1, static_cast<int>(kLimit.count())) == 1) {
        const ssize_t got = read(wanted.fd, bytes.data() + have, count - have);
        if (got <= 0) {
            break;
        }
        have += static_cast<size_t>(got);
    }
    return Hex(bytes.data(), have);
}

} // namespace

struct Owner {
    const char *name;
    void (*mark)(uint32_t);
};

void PrintTo(const Owner &owner, std::ostream *stream) {
    *stream << owner.name;
}

class StandAsideTest : public CameraTest, public ::testing::WithParamInterface<Owner> {
  protected:
    static void TakeLine() { GetParam().mark(1); }
    static void GiveLineBack() { GetParam().mark(0); }
};

TEST_P(StandAsideTest, EveryByteIsLeftToTheOwnerOfTheLine) {
    Start();
    TakeLine();
    SendRaw("90 51 FF 66 12 34 90 50");
    EXPECT_EQ(Read(8), "90 51 FF 66 12 34 90 50");
    EXPECT_THAT(HostSteps("put"), IsEmpty());
    GiveLineBack();
    EXPECT_EQ(Zoom(), 0u);
}

TEST_P(StandAsideTest, BytesThatNobodyReadsYetCostNoProcessorTime) {
    Start();
    TakeLine();
    SendRaw("90 50 0A 0B FF");
    CatchUp();
    EXPECT_GT(ReceiverSleeps(std::chrono::milliseconds(500)), 0.2) << "it looks every 20 ms";
    EXPECT_EQ(BytesOnTheLine(), 5);
    EXPECT_EQ(HostCount(""), 0u) << "and no log lines";
    GiveLineBack();
    ASSERT_TRUE(AwaitHost("put 3 90 50 0A 0B FF unasked")) << "the receiver goes on where it was";
}

TEST_P(StandAsideTest, CommandsAndInquiriesAreRefusedMeanwhile) {
    Start();
    TakeLine();
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_ZoomIn(), 1u);
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(HostCount("DEBUG ViscaIsCamComBusy true"), 1u);
    GiveLineBack();
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_THAT(Heard(), ElementsAre(kZoomStop));
}

TEST_P(StandAsideTest, AReplyUnderWayIsGivenUpWhenTheLineGetsAnOwner) {
    Start();
    SendRaw("90 51 FF 90 50 01");
    ASSERT_TRUE(AwaitHost("put 1 90 51 FF")); // all of it has arrived
    while (BytesOnTheLine() != 0) {           // until the receiver has the beginning
        Pass(std::chrono::milliseconds(1));
    }
    Forget();
    TakeLine();
    SendRaw("02 FF");
    EXPECT_EQ(Read(2), "02 FF");
    ASSERT_TRUE(AwaitHost("dump recv:ViscaPacket: 0x90 0x50 0x01"));
    EXPECT_THAT(HostSteps("put"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(For, StandAsideTest,
                         ::testing::Values(Owner{"AnUpgrade", ViscaMarkUpdatingCam},
                                           Owner{"ALogExport", ViscaMarkExportLog}),
                         [](const auto &owner) { return owner.param.name; });

} // namespace camera
