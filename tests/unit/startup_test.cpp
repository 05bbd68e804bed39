// Bringing the camera up and restoring it after a power cycle.
#include "tests/unit/unit_test.h"
#include "visca_sony_ctrl/lens/lens_speed.h"

namespace unit {
namespace {

const char *const kDzoomOff = "81 01 04 06 03 FF";

class StartupTest : public UnitTest {
  protected:
    static std::string Entry(const std::string &function) {
        return "DEBUG " + function + ": FUN_ENTRY--param:\n";
    }
    /** The line answers at the first rate and nothing has been opened yet. */
    static void CameraOnTheLine() {
        AsAtLoad();
        Host().AnswerProbe(9600, "90 50 02 FF");
    }
    static uint32_t ZoomSpeed() {
        SONY_ZoomIn();
        return Host().Events(Call::Put).back().bytes[4] & 0x0FU;
    }
};

TEST_F(StartupTest, OpensThePortStartsTheThreadsAsksForTheTypeAndSwitchesDigitalZoomOff) {
    CameraOnTheLine();
    EXPECT_EQ(0U, SONY_Init(7));
    EXPECT_THAT(Host().Story({Call::Open, Call::ThreadCreate, Call::ModuleType, Call::Put}),
                ElementsAre("open 7", "thread create", "thread create", "module type",
                            std::string("put 0: ") + kDzoomOff));
    EXPECT_EQ("DEBUG SONY_Init: FUN_ENTRY--param:ulComPort[7]\n", Host().Log().front());
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(2));
}

TEST_F(StartupTest, TheHostsTypeCountsNotThePublicLayersCopy) {
    CameraOnTheLine();
    VISCA_SetCamModuleType(0x02000001);
    Host().SetModuleType(0x02000002);
    EXPECT_EQ(0U, SONY_Init(0));
    EXPECT_THAT(Host().Commands(), IsEmpty());
    EXPECT_EQ(5U, ZoomSpeed());
}

TEST_F(StartupTest, TheLensStartsAtTheSpeedsOfItsType) {
    for (const auto &[type, zoom] : {std::pair{0x02000001U, 6U}, {0x02012001U, 5U}, {0x02000002U, 5U}}) {
        viscacam::g_ulZoomSpeed = 1;
        viscacam::g_ulFocusSpeed = 1;
        EXPECT_EQ(0U, SonyInitCamAF(type));
        EXPECT_EQ(zoom, viscacam::g_ulZoomSpeed);
        EXPECT_EQ(0U, viscacam::g_ulFocusSpeed);
    }
}

TEST_F(StartupTest, APortThatCannotBeOpenedDoesNotStopIt) {
    AsAtLoad();
    Host().Fail(Call::Open);
    EXPECT_EQ(0U, SONY_Init(0));
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "SONY_Init", "Visca Cam Com Init fail exit\n"));
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(2));
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "SonyInitCamAF", "SonyImgEnableDzoom() fail\n"));
}

TEST_F(StartupTest, ACameraThatDoesNotAnswerDoesNotStopIt) {
    AsAtLoad();
    EXPECT_EQ(0U, SONY_Init(0));
    EXPECT_TRUE(Host().Logged(VISCA_LOG_ERROR, "SONY_Init", "Visca Cam Com Init fail exit\n"));
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(2));
    EXPECT_THAT(Host().Commands(), IsEmpty());
}

TEST_F(StartupTest, ThreadsThatCannotBeStartedEndIt) {
    for (unsigned thread : {1U, 2U}) {
        Host().Reset();
        CameraOnTheLine();
        Host().Fail(Call::ThreadCreate, thread);
        EXPECT_EQ(1U, SONY_Init(0));
        EXPECT_EQ("ERROR SONY_Init: ViscaStartMsgProc fail exit\n", Host().Log().back());
        EXPECT_THAT(Host().Story({Call::ModuleType, Call::Put}), IsEmpty());
    }
}

TEST_F(StartupTest, EnvironmentStepsRunInOrder) {
    EXPECT_EQ(0U, SonyInitCamEnv(0x02000001));
    const Lines log = Host().Log();
    ASSERT_GE(log.size(), 4U);
    EXPECT_THAT(Lines(log.begin(), log.begin() + 4),
                ElementsAre(Entry("SonyInitCamEnv"), Entry("SonyInitCamMisc"), Entry("SonyInitCamIMG"),
                            Entry("SonyInitVar4IMG")));
    EXPECT_THAT(Host().Commands(), ElementsAre(kDzoomOff));
}

TEST_F(StartupTest, TheEnvironmentSucceedsEvenWhenItsStepsFail) {
    Host().Fail(Call::Put, 1, kForEver);
    EXPECT_EQ(0U, SonyInitCamEnv(0x02000001));
    EXPECT_EQ("ERROR SonyInitCamAF: SonyImgEnableDzoom() fail\n", Host().Log().back());
}

TEST_F(StartupTest, MiscellaneousAndImageStepsSendNothingForSonyTypes) {
    for (uint32_t type : kSonyTypes) {
        Host().Forget();
        EXPECT_EQ(0U, SonyInitCamMisc(type));
        EXPECT_EQ(0U, SonyInitCamIMG(type));
        EXPECT_THAT(Host().Story({Call::Log, Call::Put, Call::Send}),
                    ElementsAre(Entry("SonyInitCamMisc"), Entry("SonyInitCamIMG"), Entry("SonyInitVar4IMG")));
    }
}

TEST_F(StartupTest, ForgettingTheImageSettingsSendsNothing) {
    SonyInitVar4IMG();
    EXPECT_THAT(Host().Story({Call::Log, Call::Put, Call::Send}), ElementsAre(Entry("SonyInitVar4IMG")));
}

TEST_F(StartupTest, TheFourSonyTypesGetSpeedSixAndDigitalZoomOff) {
    for (uint32_t type : kSonyTypes) {
        Host().Forget();
        EXPECT_EQ(0U, SonyInitCamAF(type));
        EXPECT_THAT(Host().Commands(), ElementsAre(kDzoomOff));
        EXPECT_EQ(6U, ZoomSpeed());
    }
}

TEST_F(StartupTest, EveryOtherTypeGetsSpeedFiveAndNoCommand) {
    for (uint32_t type :
         {0x02000000U, 0x02000002U, 0x02000006U, 0x02000FFFU, 0x02012000U, 0x02012A01U, 0x02FFFFFFU}) {
        SonyInitCamAF(0x02000001);
        Host().Forget();
        EXPECT_EQ(0U, SonyInitCamAF(type));
        EXPECT_THAT(Host().Commands(), IsEmpty());
        EXPECT_EQ(5U, ZoomSpeed()) << std::hex << type;
    }
}

TEST_F(StartupTest, OnlyKovaModulesGetTheAutoFocusTuningThread) {
    for (uint32_t type : {0x02000001U, 0x02000002U, 0x02011FFFU, 0x02013000U, 0x12012001U, kUnset}) {
        EXPECT_EQ(0U, SonyInitCamAF(type));
        EXPECT_THAT(Clib().ThreadStarts(), IsEmpty()) << std::hex << type;
    }
    size_t started = 0;
    for (uint32_t type : {0x02012000U, 0x02012200U, 0x02012A01U, 0x02012FFFU}) {
        EXPECT_EQ(0U, SonyInitCamAF(type));
        ASSERT_THAT(Clib().ThreadStarts(), SizeIs(++started)) << std::hex << type;
        EXPECT_EQ(AF_Debug, Clib().ThreadStarts().back().body);
    }
}

TEST_F(StartupTest, ATuningThreadThatCannotBeStartedStopsNothing) {
    Host().Fail(Call::ThreadCreate);
    EXPECT_EQ(0U, SonyInitCamAF(0x02012001));
    EXPECT_EQ("ERROR AF_Debug_Init: Create Thread for AF_Debug_Init Failed\n", Host().Log().back());
    EXPECT_EQ(5U, ZoomSpeed());
}

TEST_F(StartupTest, AKovaModulesStartUpEndsWithTheTuningThread) {
    CameraOnTheLine();
    Host().SetModuleType(0x02012A01);
    Host().AnswerEveryInquiry("90 60 41 FF");
    EXPECT_EQ(0U, SONY_Init(0));
    ASSERT_THAT(Clib().ThreadStarts(), SizeIs(3));
    EXPECT_EQ(AF_Debug, Clib().ThreadStarts().back().body);
    EXPECT_EQ(5U, ZoomSpeed());
}

TEST_F(StartupTest, DigitalZoomThatIsNotQueuedFailsTheStepWhenTheSpeedsAreSet) {
    SonyInitCamAF(0x02000002);
    Host().FailNext(Call::Put);
    EXPECT_EQ(1U, SonyInitCamAF(0x02000003));
    EXPECT_EQ("ERROR SonyInitCamAF: SonyImgEnableDzoom() fail\n", Host().Log().back());
    EXPECT_EQ(6U, ZoomSpeed());
}

TEST_F(StartupTest, RestoreForgetsTheImageSettingsAndSwitchesDigitalZoomOff) {
    for (uint32_t type : kSonyTypes) {
        Host().Forget();
        EXPECT_EQ(0U, SonyRestoreCamEnv(type));
        EXPECT_THAT(Host().Story({Call::Log, Call::Put}),
                    ElementsAre(Entry("SonyRestoreCamEnv"), Entry("SonyInitVar4IMG"),
                                std::string("put 0: ") + kDzoomOff));
    }
}

TEST_F(StartupTest, RestoreSendsNothingToOtherTypesAndLeavesTheSpeeds) {
    SonyInitCamAF(0x02000001);
    for (uint32_t type : {0x02000002U, 0x02012000U}) {
        Host().Forget();
        EXPECT_EQ(0U, SonyRestoreCamEnv(type));
        EXPECT_THAT(Host().Story({Call::Log, Call::Put}),
                    ElementsAre(Entry("SonyRestoreCamEnv"), Entry("SonyInitVar4IMG")));
    }
    EXPECT_EQ(6U, ZoomSpeed());
}

TEST_F(StartupTest, RestoreReportsACommandThatIsNotQueued) {
    Host().Fail(Call::Put);
    EXPECT_EQ(1U, SonyRestoreCamEnv(0x02000005));
    EXPECT_EQ("ERROR SonyRestoreCamEnv: SonyImgEnableDzoom() fail\n", Host().Log().back());
}

} // namespace
} // namespace unit
