// Start-up of a Kova module: what it can do, the time, the orientation, the version files.
#include "tests/unit/kova/module_test.h"

namespace unit {
namespace {

constexpr uint32_t kTypes[] = {0x02012000, 0x02012001, 0x02012003, 0x02012100,
                               0x02012200, 0x02012A01, 0x02012FFF};

// The virtual clock stands at 1770091506 seconds, 0x698173F2.
const std::string kClock = "put 0: 81 01 04 A4 06 09 08 01 07 03 0F 02 FF";
const std::string kMirrorOff = "put 0: 81 01 04 61 03 FF", kFlipOff = "put 0: 81 01 04 66 03 FF";
const std::string kDetect = "send 81 09 04 AB FF", kProgram = "send 71 09 04 B2 FF",
                  kUimage = "send 71 09 04 B1 FF";
const std::string kInterFile = "system echo QDMV100R001B01D005 > /tmp/kova_interversion",
                  kVersionFile = "system echo QDM_730_842-D005 > /tmp/kova_version",
                  kKernelFile = "system echo \"Kernel  version: V1.23\" > /tmp/kova_kversion";

class KovaStartupTest : public ModuleTest {
  protected:
    /** The module can do this, has program D005 and uImage 1.23. */
    static void AnswerAll(const std::string &ability = "90 50 00 00 00 00 00 00 00 00 00 FF") {
        Host().AnswerInquiry(ability);
        Host().AnswerInquiry("90 50 00 05 00 00 FF");
        Host().AnswerInquiry("90 50 00 01 02 03 FF");
    }
    static Lines Story() { return Host().Story({Call::Send, Call::Put, Call::SubType, Call::System}); }
    static const Lines &Whole() {
        static const Lines whole = {kDetect,  kClock,     "sub type",   kMirrorOff, kFlipOff,
                                    kProgram, kInterFile, kVersionFile, kUimage,    kKernelFile};
        return whole;
    }
};

TEST_F(KovaStartupTest, CapabilitiesThenTheTimeThenTheOrientationThenTheVersions) {
    AnswerAll();
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_EQ(Whole(), Story());
    EXPECT_EQ("DEBUG SonyInitCamMisc: FUN_ENTRY--param:\n", Host().Log().front());
    EXPECT_THAT(Complained(), IsEmpty());
}

TEST_F(KovaStartupTest, EveryModuleOfTheFamilyTakesTheSteps) {
    for (uint32_t type : kTypes) {
        Host().Forget();
        AnswerAll();
        EXPECT_EQ(0U, SonyInitCamMisc(type));
        EXPECT_EQ(Whole(), Story()) << std::hex << type; // the files ask the host for the type themselves
    }
}

TEST_F(KovaStartupTest, NoOtherTypeDoes) {
    for (uint32_t type : {0x02000001U, 0x02000002U, 0x02011FFFU, 0x02013000U, 0x12012001U, kUnset}) {
        Host().Forget();
        EXPECT_EQ(0U, SonyInitCamMisc(type));
        EXPECT_THAT(Host().Story({Call::Log, Call::Send, Call::Put, Call::SubType, Call::System}),
                    ElementsAre("DEBUG SonyInitCamMisc: FUN_ENTRY--param:\n"));
    }
}

TEST_F(KovaStartupTest, TheCapabilitiesDecideHowOrientationAndVersionsAreRead) {
    Host().AnswerInquiry("90 50 00 00 00 00 00 00 00 00 0C FF"); // compare, and segments
    for (const char *reply :
         {"90 50 03 FF", "90 50 03 FF", "90 50 00 00 00 01 FF", "90 50 04 02 FF", "90 50 00 01 02 03 FF"}) {
        Host().AnswerInquiry(reply);
    }
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_THAT(Story(),
                ElementsAre(kDetect, kClock, "sub type", "send 81 09 04 61 FF", "send 81 09 04 66 FF",
                            kProgram, kProgram, "system echo QDMV100R001B0142 > /tmp/kova_interversion",
                            "system echo QDM_730_842-42 > /tmp/kova_version", kUimage, kKernelFile));
}

TEST_F(KovaStartupTest, AProductMountedUpsideDownIsTurned) {
    Host().SetSubType(0x1001);
    AnswerAll();
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_THAT(Host().Commands(), ElementsAre(kClock.substr(7), "81 01 04 61 02 FF", "81 01 04 66 02 FF"));
}

TEST_F(KovaStartupTest, AFailedDetectionStopsNothing) {
    AnswerAll(kErrorReply);
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_EQ(Whole(), Story());
    EXPECT_THAT(Complained(), ElementsAre("ERROR KovaDetectCamAbility: ViscaInquiry failed exit\n"));
}

TEST_F(KovaStartupTest, ATimeThatIsNotQueuedStopsNothing) {
    AnswerAll();
    Host().FailNext(Call::Put);
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_EQ(Whole(), Story());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "KOVA_SetTime", "ViscaEnQueueCmd() fail exit\n"));
}

TEST_F(KovaStartupTest, AnOrientationThatIsNotQueuedStopsNothing) {
    AnswerAll();
    Host().Fail(Call::Put, 2);
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    Lines story = Whole();
    story.erase(story.begin() + 4); // the flip command
    EXPECT_EQ(story, Story());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "KovaReverseCam", "SonySetCamReverse(0) fail exit\n"));
}

TEST_F(KovaStartupTest, NothingThatFailsFailsTheStep) {
    ViscaSetCamCanCtrl(0);
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_THAT(Story(), ElementsAre("sub type"));
    for (const auto &[function, message] :
         {std::pair{"KovaDetectCamAbility", "ViscaInquiry failed exit\n"},
          std::pair{"KOVA_SetTime", "ViscaEnQueueCmd() fail exit\n"},
          std::pair{"SonySetCamReverse", "set kova mirror, ViscaEnQueueCmd fail exit\n"},
          std::pair{"KOVA_SetSensorReverse", "SonySetCamReverse(0) fail exit\n"},
          std::pair{"KovaReverseCam", "SonySetCamReverse(0) fail exit\n"},
          std::pair{"KovaGetCurKovaProgramVer", "ViscaInquiry failed exit\n"}}) {
        EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, function, message)) << function;
    }
    EXPECT_EQ("WARN KovaDumpVerInfo: KovaGetCurKovaProgramVer fail not exit\n", Host().Log().back());
}

TEST_F(KovaStartupTest, ASilentModuleIsGivenUpInquiryByInquiry) {
    EXPECT_EQ(0U, SonyInitCamMisc(kKova));
    EXPECT_EQ(3U * 6000000U, Clib().Now());
    EXPECT_THAT(Host().Story({Call::System}), SizeIs(3));
}

TEST_F(KovaStartupTest, TheEnvironmentForgetsTheImageSettingsAfterThemAndSetsTheLensSpeed) {
    SonyInitCamAF(0x02000001);
    Host().Forget();
    AnswerAll();
    EXPECT_EQ(0U, SonyInitCamEnv(kKova));
    EXPECT_EQ(Whole(), Story()) << "no digital zoom command";
    const Lines log = Host().Log();
    EXPECT_EQ("DEBUG SonyInitCamEnv: FUN_ENTRY--param:\n", log.at(0));
    EXPECT_EQ("DEBUG SonyInitCamMisc: FUN_ENTRY--param:\n", log.at(1));
    ASSERT_GE(log.size(), 5U);
    EXPECT_THAT(Lines(log.end() - 3, log.end()), ElementsAre("DEBUG SonyInitCamIMG: FUN_ENTRY--param:\n",
                                                             "DEBUG SonyInitVar4IMG: FUN_ENTRY--param:\n",
                                                             "DEBUG AF_Debug_Init: FUN_ENTRY--param:\n"));
    SONY_ZoomIn();
    EXPECT_EQ("81 01 04 07 25 FF", Host().Commands().back());
}

TEST_F(KovaStartupTest, TheWholeStartUpAsksTheHostForTheTypeOnceTheThreadsRun) {
    AsAtLoad();
    Host().AnswerProbe(9600, "90 50 02 FF");
    AnswerAll();
    EXPECT_EQ(0U, SONY_Init(3));
    const Lines story = Host().Story(
        {Call::Open, Call::ThreadCreate, Call::ModuleType, Call::SubType, Call::Send, Call::Put});
    ASSERT_GE(story.size(), 5U);
    EXPECT_THAT(Lines(story.begin(), story.begin() + 5),
                ElementsAre("open 3", "thread create", "thread create", "module type", kDetect));
    EXPECT_EQ(Whole(), Story());
}

TEST_F(KovaStartupTest, AModuleThatDoesNotAnswerTheProbeIsNotAskedAnything) {
    AsAtLoad();
    EXPECT_EQ(0U, SONY_Init(3));
    EXPECT_THAT(Story(), ElementsAre("sub type"));
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "SONY_Init", "Visca Cam Com Init fail exit\n"));
}

TEST_F(KovaStartupTest, ThreadsThatDoNotStartEndItBeforeTheModuleIsAsked) {
    AsAtLoad();
    Host().AnswerProbe(9600, "90 50 02 FF");
    Host().Fail(Call::ThreadCreate);
    EXPECT_EQ(1U, SONY_Init(0));
    EXPECT_THAT(Story(), IsEmpty());
}

} // namespace
} // namespace unit
