// The Kova module's log comes home over the camera's line.
#include "tests/camera/field_camera_test.h"

#include <future>

namespace camera {

namespace {

constexpr char kStart[] = "81 01 04 A7 03 04 FF";
constexpr char kStartOther[] = "81 01 04 A7 00 05 FF";

bool IsTransferring(const sim::State &state) {
    return state.kova.transferring;
}

} // namespace

class LogExportTest : public FieldCameraTest {
  protected:
    static sim::Options Paced(const std::string &camera) {
        sim::Options options = Module(camera);
        options.paced = true;
        return options;
    }
};

TEST_F(LogExportTest, TheArchiveArrivesWholeAndTheReceiverStandsAsideWithoutSpinning) {
    StartModule(Paced("kova1"));
    const auto begin = std::chrono::steady_clock::now();
    const double before = ReceiverSeconds();
    EXPECT_EQ(Export(0x1234), 0u);
    const double used = ReceiverSeconds() - before;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took.count(), 1.0) << "more than 1000 bytes at 9600 bit/s";
    EXPECT_LT(used, 0.02 * took.count());
    EXPECT_THAT(Commands(), ElementsAre(kStart));
    ExpectArchive("34");
    EXPECT_EQ(State().kova.transfersCompleted, 1u);
    ExpectServing();
}

TEST_F(LogExportTest, TheSecondGenerationSendsAt115200AndTheLineIsItsOwnAgain) {
    StartModule(Paced("kova2"));
    EXPECT_EQ(Export(0x34), 0u);
    EXPECT_EQ(HostCount("INFO Now execute cmd: xmodem -lrz -small /tmp/kova.tgz 115200"), 1u);
    EXPECT_EQ(State().noiseBytes, 0u) << "the module hears no other rate meanwhile";
    ExpectArchive("34");
    ExpectServing();
}

TEST_F(LogExportTest, EverythingElseIsRefusedMeanwhile) {
    Gate gate;
    StartModule();
    std::future<uint32_t> result = std::async(std::launch::async, KOVA_ExportLog, 0x34);
    gate.AwaitKnock();
    EXPECT_EQ(ViscaIsExportLog(), 1u);
    EXPECT_EQ(VISCA_ZoomIn(), 1u);
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(KovaGetStatus(), 1u) << "also the state of an upgrade";
    EXPECT_EQ(HostCount("DEBUG ViscaIsExportLog true"), 2u);
    gate.Open();
    EXPECT_EQ(result.get(), 0u);
    ExpectLineGivenBack();
    Drain();
    EXPECT_THAT(Heard(), ::testing::Not(::testing::Contains("81 01 04 07 25 FF")));
    EXPECT_THAT(Commands(), ElementsAre(kStart));
    EXPECT_THAT(HeardDuringTransfer(), IsEmpty());
    ExpectArchive("34");
    ExpectServing();
}

TEST_F(LogExportTest, QueuedCommandsGoFirst) {
    StartModule();
    HoldThreeCommands();
    std::future<uint32_t> result = std::async(std::launch::async, KOVA_ExportLog, 0x34);
    ASSERT_TRUE(AwaitHost("Wait queue empty"));
    EXPECT_EQ(VISCA_ZoomIn(), 1u);
    EXPECT_EQ(result.get(), 0u);
    SetLibraryTimeScale(1);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre(kTele, kWide, kZoomStop, kStart));
    EXPECT_THAT(HeardDuringTransfer(), IsEmpty());
    ExpectArchive("34");
    ExpectServing();
}

TEST_F(LogExportTest, TwoAtOnceAreOneAfterTheOther) {
    Gate gate;
    StartModule();
    std::future<uint32_t> first = std::async(std::launch::async, KOVA_ExportLog, 0x34);
    gate.AwaitKnock();
    std::future<uint32_t> second = std::async(std::launch::async, KOVA_ExportLog, 0x05);
    gate.Open();
    EXPECT_EQ(first.get(), 0u);
    gate.AwaitKnock();
    EXPECT_EQ(State().kova.transfersCompleted, 1u);
    gate.Open();
    EXPECT_EQ(second.get(), 0u);
    ExpectLineGivenBack();
    CatchUp();
    EXPECT_THAT(Commands(), ElementsAre(kStart, kStartOther));
    EXPECT_THAT(HeardDuringTransfer(), IsEmpty());
    EXPECT_EQ(State().kova.transfersCompleted, 2u);
    ExpectArchive("05");
    ExpectServing();
}

/* ---- Failures ---- */

TEST_F(LogExportTest, AQueueThatDoesNotDrainFailsItBeforeAnythingIsSent) {
    StartModule();
    OccupyQueue();
    EXPECT_EQ(KOVA_ExportLog(0x34), 1u);
    ExpectLineGivenBack();
    FreeQueue();
    EXPECT_EQ(State().kova.logExports, 0u);
    EXPECT_EQ(Export(0x34), 0u) << "the lock is free again";
    ExpectArchive("34");
    ExpectServing();
}

TEST_F(LogExportTest, AStartPacketThatIsNotWrittenFailsItAndTheNextSucceeds) {
    Folder folder;
    sim::Options options = Module();
    options.link = folder / "module";
    StartModule(options);
    Camera().hangUp();
    ASSERT_TRUE(AwaitHost("vanished"));
    EXPECT_EQ(KOVA_ExportLog(0x34), 1u);
    EXPECT_EQ(ViscaIsExportLog(), 0u);
    EXPECT_EQ(HostCount("INFO cpld"), 0u);
    Camera().replug();
    ASSERT_TRUE(AwaitHost("back 9600"));
    EXPECT_EQ(Export(0x34), 0u);
    ExpectArchive("34");
    ExpectServing();
}

TEST_F(LogExportTest, ATransferThatIsAbortedIsNotNoticedAndLeavesNoArchive) {
    StartModule(Module("kova2"));
    Camera().setFault("transfer-abort=2#1");
    EXPECT_EQ(Export(0x34), 0u);
    EXPECT_EQ(HostCount("WARN Recv file success..."), 1u);
    EXPECT_FALSE(m_archive.IsThere());
    EXPECT_EQ(State().kova.transfersFailed, 1u);
    ExpectServing();
}

TEST_F(LogExportTest, BlocksWithAWrongChecksumAreAskedForAgain) {
    StartModule();
    Camera().setFault("transfer-checksum=1#2");
    EXPECT_EQ(Export(0x34), 0u);
    ExpectArchive("34");
    ExpectServing();
}

TEST_F(LogExportTest, NoiseEndsItAndNeverInAHang) {
    sim::Options options = Module();
    options.kova.transferPatience = std::chrono::milliseconds(3000);
    host::SetTransferLimit(std::chrono::seconds(3));
    StartModule(options);
    for (const char *fault : {"noise=0.1", "flip=0.0005", "drop-rx=0.0002", "drop-tx=0.02"}) {
        Camera().setFault(fault);
    }
    EXPECT_EQ(Export(0x34), 0u);
    Camera().clearFaults();
    if (m_archive.IsThere()) {
        ExpectArchive("34");
    }
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return !IsTransferring(state); }));
    ExpectServing();
}

} // namespace camera
