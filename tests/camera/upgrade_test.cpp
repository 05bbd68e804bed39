// Firmware upgrade of a Kova module, from the package to the module's verdict.
#include "tests/camera/field_camera_test.h"

namespace camera {

using std::chrono::milliseconds;

namespace {

// What the module of the fixture runs, as a package announces it.
constexpr char kOwnUimage[] = "1.23";
constexpr char kOwnProgram[] = "D012SP03";

constexpr char kAskUimage[] = "71 09 04 B1 FF";
constexpr char kAskProgram[] = "71 09 04 B2 FF";
constexpr char kAskState[] = "81 09 04 A9 FF";
constexpr char kStartPatch[] = "81 01 04 AA 00 00 00 00 00 04 00 00 FF";

// An image of the program D012SP04. The CRC-32 of "123456789" is CBF43926.
constexpr char kNewProgram[] = "viscacam-image program D012SP04 9 CBF43926\n123456789";

bool IsFlashing(const sim::State &state) {
    return state.kova.upgradeState == 3;
}

} // namespace

class UpgradeTest : public FieldCameraTest {
  protected:
    // A package of a patch alone: no version is asked for.
    void StartWithPatch(const std::string &content, const sim::Options &options = Module()) {
        StartModule(options);
        Package::Put(kPatch, content);
    }
    // A package of both files, with other versions than the module's.
    void StartWithBoth(const sim::Options &options = Module()) {
        StartModule(options);
        Package::Announce("1.24", "D013");
        Package::Put(kUimage, Pattern(300));
        Package::Put(kProgram, Pattern(200));
    }
};

struct Announced {
    const char *uimage;
    const char *program;
    std::map<std::string, size_t> package; // sizes of the files that are there
    std::vector<std::string> sent;
    const char *start; // packet
};

class UpgradeDecisionTest : public UpgradeTest {
  protected:
    void ExpectSent(const Announced &row) {
        m_package.Clear();
        Package::Announce(row.uimage, row.program);
        for (const auto &[kind, size] : row.package) {
            Package::Put(kind, Pattern(size));
        }
        Forget();
        EXPECT_EQ(Upgrade(), 0u);
        EXPECT_EQ(Commands(), Start(row));
        ExpectExecuted(row.sent);
        if (!row.sent.empty()) {
            EXPECT_EQ(FilesReceived(), row.sent);
        }
        for (const std::string &kind : row.sent) {
            ExpectArrived(kind, Pattern(row.package.at(kind)));
        }
    }

    static std::vector<std::string> Start(const Announced &row) {
        return row.sent.empty() ? std::vector<std::string>() : std::vector<std::string>{row.start};
    }

    static void ExpectExecuted(const std::vector<std::string> &kinds) {
        std::vector<std::string> lines;
        for (const std::string &kind : kinds) {
            lines.push_back("INFO Now execute cmd[xmodem -lsz -big " + PackagePath(kind) + "]");
        }
        EXPECT_EQ(HostSteps("INFO Now execute"), lines);
    }
};

TEST_F(UpgradeDecisionTest, TheVersionsDecideWhichFilesAreSentAndTheyArriveWhole) {
    const Announced rows[] = {
        {kOwnUimage, kOwnProgram, {{kUimage, 1}, {kProgram, 1}}, {}, ""},
        {"1.24",
         kOwnProgram,
         {{kUimage, 0}, {kProgram, 1}},
         {kUimage},
         "81 01 04 AA 00 00 00 00 00 00 00 01 FF"},
        {kOwnUimage,
         "D012SP02",
         {{kUimage, 9}, {kProgram, 1}},
         {kProgram},
         "81 01 04 AA 00 00 00 00 00 00 00 02 FF"},
        {"1.22",
         "D013",
         {{kUimage, 127}, {kProgram, 128}},
         {kUimage, kProgram},
         "81 01 04 AA 00 00 00 00 00 00 00 03 FF"},
        {"9",
         "D",
         {{kUimage, 129}, {kProgram, 1023}},
         {kUimage, kProgram},
         "81 01 04 AA 00 00 00 00 00 00 00 03 FF"},
        {"1.24", "D013", {{kUimage, 9}, {kProgram, 9}, {kPatch, 1024}}, {kPatch}, kStartPatch},
        {kOwnUimage, kOwnProgram, {{kPatch, 1025}}, {kPatch}, kStartPatch},
        {kOwnUimage, "D013", {{kProgram, 100000}}, {kProgram}, "81 01 04 AA 00 00 00 00 00 00 00 02 FF"},
    };
    StartModule();
    SetLibraryTimeScale(4);
    for (const Announced &row : rows) {
        SCOPED_TRACE(std::string(row.uimage) + " " + row.program);
        ExpectSent(row);
    }
    SetLibraryTimeScale(1);
    ExpectServing();
}

TEST_F(UpgradeDecisionTest, WhenTheModuleRunsThePackagesVersionsNothingIsSent) {
    StartModule();
    Package::Announce(kOwnUimage, "D012SP04");
    Package::Put(kProgram, kNewProgram);
    EXPECT_EQ(Upgrade(), 0u);
    EXPECT_EQ(HostCount("INFO Upgrade kova success"), 1u);
    Forget();
    EXPECT_EQ(Upgrade(), 0u);
    EXPECT_THAT(Heard(), ElementsAre(kAskUimage, kAskProgram));
    EXPECT_EQ(HostCount("INFO No need update kova"), 1u);
    EXPECT_EQ(HostCount("cpld"), 0u);
}

TEST_F(UpgradeDecisionTest, UntilTheHostClearsTheWordAFurtherUpgradeIsIgnored) {
    StartWithPatch(Pattern(9));
    EXPECT_EQ(Upgrade(), 0u);
    EXPECT_EQ(gulUpdateFileforKova, 0x400u);
    Forget();
    EXPECT_EQ(KOVA_UpdateKova([](uint32_t) { ADD_FAILURE() << "called back"; }), 0u);
    EXPECT_EQ(HostCount("WARN Upgrading..., ignore this cmd"), 1u);
    EXPECT_THAT(Heard(), IsEmpty());
}

TEST_F(UpgradeDecisionTest, AModuleThatDoesNotTellItsVersionStartsNothing) {
    StartWithBoth();
    Camera().setFault("error=0x41#1");
    EXPECT_EQ(KOVA_UpdateKova([](uint32_t) { ADD_FAILURE() << "called back"; }), 1u);
    EXPECT_EQ(gulUpdateFileforKova, 0u);
    ExpectLineGivenBack();
    CatchUp();
    EXPECT_THAT(Heard(), ElementsAre(kAskUimage));
    ExpectServing();
}

/* ---- While it runs ---- */

TEST_F(UpgradeTest, QueuedCommandsGoFirstAndTheLineIsTheTransfersUntilItEnds) {
    Gate gate;
    StartWithPatch(Pattern(2048));
    HoldThreeCommands();
    BeginUpgrade();
    ASSERT_TRUE(AwaitHost("Wait queue empty"));
    EXPECT_EQ(ViscaIsUpdatingCam(), 1u);
    EXPECT_EQ(VISCA_ZoomIn(), 1u) << "refused, while others still wait";
    gate.AwaitKnock();
    SetLibraryTimeScale(1);
    EXPECT_THAT(Results(), IsEmpty()) << "the host did not wait for the transfer";
    EXPECT_EQ(VISCA_ZoomIn(), 1u);
    gate.Open();
    EXPECT_EQ(EndUpgrade(), 0u);
    Drain();
    EXPECT_THAT(Commands(), ElementsAre(kTele, kWide, kZoomStop, kStartPatch));
    EXPECT_THAT(HeardDuringTransfer(), IsEmpty());
    ExpectArrived(kPatch, Pattern(2048));
    ExpectServing();
}

TEST_F(UpgradeTest, OnlyTheModulesStateMayBeAskedMeanwhile) {
    Gate gate;
    StartWithPatch(Pattern(10));
    BeginUpgrade();
    gate.AwaitKnock();
    Forget();
    uint32_t zoom = 7;
    EXPECT_EQ(VISCA_GetZoomPos(&zoom), 1u);
    EXPECT_EQ(HostCount("send"), 0u);
    // The receiver leaves the answer to the owner of the line.
    HurryUntil(kTimeOut);
    EXPECT_EQ(KovaGetStatus(), 0u);
    CatchUp();
    EXPECT_THAT(Line(),
                ::testing::IsSupersetOf({std::string("> ") + kAskState, std::string("< 90 50 00 01 FF")}));
    EXPECT_THAT(HeardDuringTransfer(), IsEmpty());
    gate.Open();
    EXPECT_EQ(EndUpgrade(), 0u);
    ExpectArrived(kPatch, Pattern(10));
    ExpectServing();
}

TEST_F(UpgradeTest, TheReceiverStandsAsideWithoutSpinning) {
    Gate gate;
    HurryPrograms(false);
    sim::Options options = Module();
    options.paced = true;
    StartWithPatch(Pattern(1024), options);
    const auto begin = std::chrono::steady_clock::now();
    const double before = ReceiverSeconds();
    BeginUpgrade();
    gate.AwaitKnock();
    EXPECT_GT(ReceiverSleeps(milliseconds(300)), 0.2) << "though the module's invitation waits in the port";
    gate.Open();
    EXPECT_EQ(EndUpgrade(), 0u);
    const double used = ReceiverSeconds() - before;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took.count(), 1.0) << "1024 bytes at 9600 bit/s";
    EXPECT_LT(used, 0.02 * took.count());
    ExpectArrived(kPatch, Pattern(1024));
    ExpectServing();
}

TEST_F(UpgradeTest, WhileTheModuleFlashesTheLineIsTheHostsAndTheStateIsPolled) {
    StartWithPatch(Pattern(1));
    Camera().setFault("upgrade-stuck");
    SetLibraryTimeScale(4);
    BeginUpgrade();
    ASSERT_TRUE(AwaitCamera(IsFlashing));
    ASSERT_TRUE(AwaitHost("DEBUG Upgrading kova ..."));
    ExpectLineGivenBack();
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    SetLibraryTimeScale(20);
    ASSERT_TRUE(AwaitHost("DEBUG Upgrading kova ...", 25)) << "without end";
    SetLibraryTimeScale(1);
    EXPECT_THAT(Results(), IsEmpty());
    EXPECT_THAT(Commands(), ElementsAre(kStartPatch, kZoomStop));
    Camera().clearFault("upgrade-stuck");
    EXPECT_EQ(EndUpgrade(), 0u);
    ExpectServing();
}

/* ---- Failures ---- */

TEST_F(UpgradeTest, AStartPacketThatIsNotWrittenLeavesTheFlagRaisedUntilTheNextUpgrade) {
    Folder folder;
    sim::Options options = Module();
    options.link = folder / "module";
    StartWithPatch(Pattern(5), options);
    Camera().hangUp();
    ASSERT_TRUE(AwaitHost("vanished"));
    BeginUpgrade();
    ASSERT_TRUE(AwaitHost("ERROR KOVA update:ViscaCamComSend fail"));
    while (Results().empty()) {
        std::this_thread::yield();
    }
    EXPECT_THAT(Results(), ElementsAre(1u));
    EXPECT_EQ(ViscaIsUpdatingCam(), 1u);
    EXPECT_EQ(HostCount("INFO cpld"), 0u);
    Camera().replug();
    ASSERT_TRUE(AwaitHost("back 9600"));
    EXPECT_EQ(VISCA_ZoomStop(), 1u) << "refused, deliberately";
    EXPECT_EQ(Upgrade(), 0u);
    ExpectArrived(kPatch, Pattern(5));
    ExpectServing();
}

TEST_F(UpgradeTest, AQueueThatDoesNotDrainDelaysItTenSecondsOnly) {
    Gate gate;
    StartWithPatch(Pattern(100));
    OccupyQueue();
    BeginUpgrade();
    gate.AwaitKnock();
    EXPECT_EQ(HostCount("WARN ViscaWaitCmdQueueEmpty(10) fail exit"), 1u);
    Forget();
    ASSERT_TRUE(AwaitWire("> 81 01 04 07 00 FF")) << "those that waited still go out, though nobody listens";
    FreeQueue();
    gate.Open();
    EXPECT_EQ(EndUpgrade(), 0u);
    ExpectArrived(kPatch, Pattern(100));
    ExpectServing();
}

TEST_F(UpgradeTest, ATransferThatIsAbortedFailsItAndTheNextFileIsStillSent) {
    StartWithBoth();
    Camera().setFault("transfer-abort=1#1");
    EXPECT_EQ(Upgrade(), 1u);
    EXPECT_EQ(State().kova.upgradeState, 5u);
    EXPECT_THAT(FilesReceived(), ElementsAre(kProgram));
    ExpectArrived(kProgram, Pattern(200));
    EXPECT_EQ(HostCount("WARN Send file success!"), 1u) << "the transfers' results are not looked at";
    EXPECT_EQ(HostCount("ERROR Upgrade kova fail"), 1u);
    ExpectServing();
}

TEST_F(UpgradeTest, AFileThatIsNotInThePackageFailsItAndTheNextIsStillSent) {
    StartWithBoth();
    unlink(PackagePath(kUimage).c_str());
    EXPECT_EQ(Upgrade(), 1u);
    EXPECT_THAT(FilesReceived(), ElementsAre(kProgram));
    ExpectServing();
}

TEST_F(UpgradeTest, AModuleThatRefusesWhatItGotFailsIt) {
    StartModule();
    Package::Announce(kOwnUimage, "D012SP04");
    Package::Put(kProgram, std::string(kNewProgram) + "0"); // the length is wrong
    EXPECT_EQ(Upgrade(), 1u);
    EXPECT_THAT(FilesReceived(), ElementsAre(kProgram));
    EXPECT_EQ(gulUpdateFileforKova, 2u);
    ExpectServing();
}

TEST_F(UpgradeTest, ABlockWithAWrongChecksumIsSentAgain) {
    StartWithPatch(Pattern(2000));
    Camera().setFault("transfer-checksum=1#2");
    EXPECT_EQ(Upgrade(), 0u);
    ExpectArrived(kPatch, Pattern(2000));
    EXPECT_GE(State().kova.transferBlocks, 4u);
    ExpectServing();
}

TEST_F(UpgradeTest, TwentyStatesOutsideTheTableEndIt) {
    StartWithPatch(Pattern(1));
    Camera().setFault("upgrade-state=9");
    BeginUpgrade();
    ASSERT_TRUE(AwaitHost("WARN Send file success!"));
    SetLibraryTimeScale(20);
    ASSERT_TRUE(AwaitHost("ERROR Unexpected state[9]", 20));
    SetLibraryTimeScale(1);
    EXPECT_EQ(EndUpgrade(), 1u);
    EXPECT_EQ(HostCount("ERROR Unexpected state[9]"), 20u);
    Camera().clearFaults();
    ExpectServing();
}

TEST_F(UpgradeTest, NoiseEndsInAVerdictAndNeverInAHang) {
    sim::Options options = Module();
    options.kova.transferPatience = milliseconds(3000);
    host::SetTransferLimit(std::chrono::seconds(3));
    StartWithPatch(Pattern(2048), options);
    for (const char *fault : {"noise=0.3#2", "flip=0.02", "drop-tx=0.0005", "transfer-checksum=0.3"}) {
        Camera().setFault(fault);
    }
    BeginUpgrade();
    ASSERT_TRUE(AwaitHost("WARN Send file success!"));
    Camera().clearFaults();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return !state.kova.transferring; }));
    const uint32_t result = EndUpgrade();
    EXPECT_EQ(State().kova.upgradeState, result == 0 ? 4u : 5u);
    if (result == 0) {
        ExpectArrived(kPatch, Pattern(2048));
    }
    ExpectServing();
}

} // namespace camera
