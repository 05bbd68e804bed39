// The start-up of Kova modules: capabilities, clock, orientation and the version files that other programs of
// the board read.
#include <ctime>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace camera {

namespace {

constexpr char kInterVersion[] = "/tmp/kova_interversion";
constexpr char kVersion[] = "/tmp/kova_version";
constexpr char kKernelVersion[] = "/tmp/kova_kversion";
constexpr char kMissing[] = "no such file";

constexpr char kSetClock[] = "81 01 04 A4";
constexpr uint32_t kUpsideDownProduct = 0x1001;

std::string Content(const char *path) {
    std::ifstream file(path);
    if (!file) {
        return kMissing;
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void RemoveFiles() {
    for (const char *path : {kInterVersion, kVersion, kKernelVersion}) {
        unlink(path);
    }
}

} // namespace

class KovaStartTest : public CameraTest {
  protected:
    void SetUp() override {
        CameraTest::SetUp();
        RemoveFiles();
        // Long pauses last until the module has done all that it was told.
        OnPause([this](double seconds) {
            const bool isLong = seconds >= 1;
            if (isLong) {
                m_longPauses.push_back(seconds);
            }
            return isLong && host::WaitDrained(kLimit);
        });
    }

    void TearDown() override {
        OnPause(nullptr);
        RemoveFiles();
        CameraTest::TearDown();
    }

    static sim::Options Module(const std::string &camera) {
        sim::Options options = sim::Options::fast(camera);
        options.bootTime = std::chrono::milliseconds(40);
        return options;
    }

    void StartUp(const sim::Options &options, uint32_t productSubType = 0) {
        PlugIn(options);
        host::Board board = host::GetBoard();
        board.ulProductSubType = productSubType;
        host::SetBoard(board);
        StartLibrary();
        EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
    }

    static void ExpectFiles(const std::string &interVersion, const std::string &version,
                            const std::string &kernelVersion) {
        EXPECT_EQ(Content(kInterVersion), interVersion);
        EXPECT_EQ(Content(kVersion), version);
        EXPECT_EQ(Content(kKernelVersion), kernelVersion);
    }

    // Inquiries and commands go out side by side; each kind has its order.
    static std::vector<std::string> Inquiries() {
        std::vector<std::string> inquiries;
        for (const std::string &packet : Heard()) {
            if (packet.compare(3, 2, "09") == 0) {
                inquiries.push_back(packet);
            }
        }
        return inquiries;
    }

    std::vector<double> m_longPauses;
};

TEST_F(KovaStartTest, OfTheFirstGeneration) {
    StartUp(Module("kova1"));
    EXPECT_EQ(KovaGetCamAbility(), 0u);
    EXPECT_THAT(Inquiries(), ElementsAre(kProbe, "81 09 04 AB FF", "71 09 04 B2 FF", "71 09 04 B1 FF"));
    EXPECT_THAT(Commands(),
                ElementsAre(::testing::StartsWith(kSetClock), "81 01 04 61 03 FF", "81 01 04 66 03 FF"));
    ExpectFiles("QDMV100R001B01D012SP03\n", "QDM_730_842-D012SP03\n", "Kernel  version: V1.23\n");
    ExpectNothingRefused();
}

TEST_F(KovaStartTest, OfTheSecondGeneration) {
    StartUp(Module("kova2"));
    EXPECT_EQ(KovaGetCamAbility(), 0x1Cu);
    // B02D014SP05 is 5 letters of three codes and 6 digits: 21 codes, two segments.
    EXPECT_THAT(Inquiries(),
                ElementsAre(kProbe, "81 09 04 AB FF", "81 09 04 61 FF", "81 09 04 66 FF", "71 09 04 B2 FF",
                            "71 09 04 B2 FF", "71 09 04 B2 FF", "71 09 04 B1 FF"));
    EXPECT_THAT(Commands(), ElementsAre(::testing::StartsWith(kSetClock))) << "it stands right already";
    ExpectFiles("QDMV200R001B02B02D014SP05\n", "QDM_K4410-B02D014SP05\n", "Kernel  version: V1.23\n");
    EXPECT_THAT(m_longPauses, IsEmpty());
    ExpectNothingRefused();
}

TEST_F(KovaStartTest, OfAModuleWithOtherVersions) {
    sim::Options options = Module("kova-2100");
    options.kova.oldProgramVersion = {1, 2, 3, 4};
    options.kova.uimageVersion = {1, 2, 3, 0};
    StartUp(options);
    ExpectFiles("QDMV100R001B0101020304\n", "QDM_730_842-01020304\n", "Kernel  version: V12.3\n");
}

TEST_F(KovaStartTest, SetsTheClockToTheHosts) {
    const auto before = static_cast<uint32_t>(time(nullptr));
    StartUp(Module("kova1"));
    const auto after = static_cast<uint32_t>(time(nullptr));
    EXPECT_GE(State().kova.clock, before);
    EXPECT_LE(State().kova.clock, after);
}

TEST_F(KovaStartTest, TurnsThePictureOfAProductThatHangsUpsideDown) {
    StartUp(Module("kova-2100"), kUpsideDownProduct);
    EXPECT_THAT(Commands(),
                ElementsAre(::testing::StartsWith(kSetClock), "81 01 04 61 02 FF", "81 01 04 66 02 FF"));
    ExpectSettings({{"mirror", 2}, {"flip", 2}});
    EXPECT_THAT(m_longPauses, IsEmpty());
}

TEST_F(KovaStartTest, PowerCyclesAModuleThatTurnsThePictureOnlyThen) {
    StartUp(Module("kova2"), kUpsideDownProduct);
    EXPECT_THAT(Commands(), ElementsAre(::testing::StartsWith(kSetClock), "81 01 04 61 02 FF",
                                        "81 01 04 66 02 FF", "81 01 04 00 03 FF", "81 01 04 00 02 FF"));
    EXPECT_THAT(m_longPauses, ElementsAre(1, 3));
    EXPECT_EQ(State().power, sim::Power::on);
    ExpectSettings({{"mirror", 2}, {"flip", 2}});
    EXPECT_EQ(Content(kVersion), "QDM_K4410-B02D014SP05\n") << "asked after the module was on again";

    Forget();
    EXPECT_EQ(KovaReverseCam(), 0u);
    Drain();
    EXPECT_THAT(Commands(), IsEmpty()) << "the module keeps it";
}

TEST_F(KovaStartTest, CutsAVersionThatIsTooLongForTheFiles) {
    sim::Options options = Module("kova2");
    options.kova.programVersion = "B02D014SP05B123456789";
    StartUp(options);
    ExpectFiles("QDMV200R001B02B02D014SP05B1234\n", "QDM_K4410-B02D014SP05B1234\n",
                "Kernel  version: V1.23\n");
}

TEST_F(KovaStartTest, GivesNoVersionToTheShellThatIsMoreThanText) {
    sim::Options options = Module("kova2");
    options.kova.programVersion = "B02`ID`";
    StartUp(options);
    ExpectFiles(kMissing, kMissing, kMissing);
    EXPECT_EQ(HostCount("WARN KovaGetCurKovaProgramVer fail not exit"), 1u);
}

TEST_F(KovaStartTest, LeavesOutTheKernelVersionAloneWhenThatIsMoreThanText) {
    sim::Options options = Module("kova1");
    options.kova.uimageVersion = {0, 1, 2, '|' - '0'};
    StartUp(options);
    ExpectFiles("QDMV100R001B01D012SP03\n", "QDM_730_842-D012SP03\n", kMissing);
    EXPECT_EQ(HostCount("WARN KovaGetCurKovaUimageVer fail not exit"), 1u);
}

TEST_F(KovaStartTest, WritesNoFilesForAModuleInStandby) {
    sim::Options options = Module("kova1");
    options.start = sim::Power::standby;
    StartUp(options);
    ExpectFiles(kMissing, kMissing, kMissing);
    EXPECT_EQ(HostCount("ERROR ViscaInquiry failed exit"), 2u) << "capabilities and program version";
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(KovaStartTest, DoesNothingOfTheSortForABlock) {
    StartUp(Module("sony1"));
    EXPECT_THAT(Heard(), ElementsAre(kProbe, kDzoomOff));
    ExpectFiles(kMissing, kMissing, kMissing);
}

} // namespace camera
