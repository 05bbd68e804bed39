// The public layer: each row inside and outside its guard.
#include "tests/unit/unit_test.h"

namespace unit {
namespace {

constexpr uint32_t kInside[] = {0x02000000, 0x02000001, 0x02000004, 0x02001000,
                                0x02012000, 0x02012A01, 0x02FFFFFF};
constexpr uint32_t kOutside[] = {kUnset, 0, 0x01FFFFFF, 0x03000000, 0x12000001};

uint32_t g_zoom;
int16_t g_focus;

/** One row: how it is called, and what its implementation sends, to the queue or to the line. */
struct Row {
    const char *name, *implementation;
    uint32_t (*call)();
    const char *packet;
};

const Row kRows[] = {
    {"VISCA_ZoomIn", "SONY_ZoomIn", VISCA_ZoomIn, "81 01 04 07 26 FF"},
    {"VISCA_ZoomOut", "SONY_ZoomOut", VISCA_ZoomOut, "81 01 04 07 36 FF"},
    {"VISCA_ZoomStop", "SONY_ZoomStop", VISCA_ZoomStop, "81 01 04 07 00 FF"},
    {"VISCA_FocusNear", "SONY_FocusNear", VISCA_FocusNear, "81 01 04 08 30 FF"},
    {"VISCA_FocusFar", "SONY_FocusFar", VISCA_FocusFar, "81 01 04 08 20 FF"},
    {"VISCA_FocusStop", "SONY_FocusStop", VISCA_FocusStop, "81 01 04 08 00 FF"},
    {"VISCA_GetZoomPos", "SONY_GetZoomPos", [] { return VISCA_GetZoomPos(&g_zoom); }, "81 09 04 47 FF"},
    {"VISCA_GetFocusPos", "SONY_GetFocusPos", [] { return VISCA_GetFocusPos(&g_focus); }, "81 09 04 48 FF"},
    {"VISCA_SetZoomPos", "SONY_SetZoomPos", [] { return VISCA_SetZoomPos(0x1234); },
     "81 01 04 47 01 02 03 04 FF"},
    {"VISCA_SetZoomFocusPos", "SONY_SetZoomFocusPos", [] { return VISCA_SetZoomFocusPos(0x1234, 0x5678); },
     "81 01 04 47 01 02 03 04 05 06 07 08 FF"},
    {"VISCA_SetZoomCut", "SonySetRegisterVal", [] { return VISCA_SetZoomCut(1, 5); },
     "81 01 04 24 51 00 05 FF"},
    {"VISCA_RetSetZoomFocus", "SONY_RetSetZoomFocus", VISCA_RetSetZoomFocus, "81 01 04 BA FF"},
    {"VISCA_EnableAF", "SONY_EnableAF", [] { return VISCA_EnableAF(1); }, "81 01 04 38 02 FF"},
    {"VISCA_SetFocusMode", "SONY_SetFocusMode", [] { return VISCA_SetFocusMode(7); }, "81 01 04 38 04 FF"},
    {"VISCA_SetAFType", "SONY_SetAFType", [] { return VISCA_SetAFType(2); }, "81 01 04 57 02 FF"},
    {"VISCA_EnableIrCurve", "SONY_EnableIrCurve", [] { return VISCA_EnableIrCurve(1); }, "81 01 04 11 01 FF"},
};

class DispatchTest : public UnitTest {
  protected:
    DispatchTest() {
        SonyInitCamAF(0x02000001); // zoom speed 6
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
    }
    static Lines Packets() {
        Lines packets = Host().Commands();
        for (const std::string &sent : Host().Sent()) {
            packets.push_back(sent);
        }
        return packets;
    }
};

TEST_F(DispatchTest, ForwardsForEveryTypeOfTheFamily) {
    Host().AnswerEveryInquiry("90 50 01 02 03 04 FF");
    for (uint32_t type : kInside) {
        EXPECT_EQ(0U, VISCA_SetCamModuleType(type));
        for (const Row &row : kRows) {
            Host().Forget();
            EXPECT_EQ(0U, row.call()) << row.name;
            EXPECT_THAT(Packets(), ElementsAre(row.packet)) << row.name << " " << std::hex << type;
            EXPECT_EQ(row.implementation, Host().Events(Call::Log).at(0).log.function);
        }
    }
    EXPECT_EQ(0x1234U, g_zoom);
    EXPECT_EQ(0x1234, g_focus);
}

TEST_F(DispatchTest, ReturnsWhatTheImplementationReturned) {
    VISCA_SetCamModuleType(0x02000001);
    Host().Fail(Call::Put, 1, kForEver);
    Host().AnswerEveryInquiry("90 60 41 FF");
    for (const Row &row : kRows) {
        EXPECT_EQ(1U, row.call()) << row.name;
    }
    EXPECT_EQ(2U, VISCA_GetFocusPos(nullptr)) << "tested by the implementation";
}

TEST_F(DispatchTest, DoesNothingForEveryOtherType) {
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        for (const Row &row : kRows) {
            Host().Forget();
            g_zoom = 0xEEEEEEEE;
            EXPECT_EQ(0U, row.call()) << row.name;
            EXPECT_THAT(Host().Story({Call::Log, Call::Put, Call::Send}),
                        ElementsAre(std::string("DEBUG ") + row.name + ": do nothing\n"));
            EXPECT_EQ(0xEEEEEEEE, g_zoom);
        }
    }
}

TEST_F(DispatchTest, ThePublicLayerNeverAsksTheHostForTheType) {
    for (uint32_t type : {0x02000001U, kUnset}) {
        VISCA_SetCamModuleType(type);
        for (const Row &row : kRows) {
            row.call();
        }
    }
    EXPECT_THAT(Host().Events(Call::ModuleType), IsEmpty());
}

TEST_F(DispatchTest, ANullZoomPointerIsRefusedWhateverTheType) {
    for (uint32_t type : {kUnset, 0x02000001U}) {
        Host().Forget();
        VISCA_SetCamModuleType(type);
        EXPECT_EQ(2U, VISCA_GetZoomPos(nullptr));
        EXPECT_THAT(Host().Log(), ElementsAre("ERROR VISCA_GetZoomPos: input param invalid\n"));
    }
}

TEST_F(DispatchTest, ANullFocusPointerIsNotTestedHere) {
    VISCA_SetCamModuleType(kUnset);
    EXPECT_EQ(0U, VISCA_GetFocusPos(nullptr));
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG VISCA_GetFocusPos: do nothing\n"));
}

TEST_F(DispatchTest, TellsWhetherTheQueueIsEmpty) {
    VISCA_SetCamModuleType(0x02000001);
    EXPECT_EQ(1U, VISCA_IsMsgQueueEmpty());
    Host().Preload(VISCA_CMD_QUEUE_ID, "81 01 04 07 00 FF");
    EXPECT_EQ(0U, VISCA_IsMsgQueueEmpty());
    VISCA_SetCamModuleType(kUnset);
    Host().Forget();
    EXPECT_EQ(1U, VISCA_IsMsgQueueEmpty());
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG VISCA_IsMsgQueueEmpty: do nothing\n"));
}

TEST_F(DispatchTest, TheNearLimitIsForwardedForTheFamily) {
    for (uint32_t type : kInside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_SetFocusMinLen(3000)); // for 0x02000001, which the host tells the driver
        EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 28 07 00 00 00 FF", "81 01 04 18 01 FF"));
        EXPECT_EQ("DEBUG SONY_SetMinFocusLen: FUN_ENTRY--param:ulFocusNearLimit[3000]\n",
                  Host().Log().front());
    }
    Host().FailNext(Call::Put);
    EXPECT_EQ(1U, VISCA_SetFocusMinLen(3000));
}

TEST_F(DispatchTest, TheNearLimitDoesNothingSilentlyForEveryOtherType) {
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        EXPECT_EQ(0U, VISCA_SetFocusMinLen(3000));
    }
    EXPECT_THAT(Host().Events(), IsEmpty());
}

TEST_F(DispatchTest, TheVideoNormIsForwardedForTheFamily) {
    Host().AnswerEveryInquiry("90 50 00 06 FF"); // in the norm already; the other registers are not
    const VideoNormParam norm = {1920, 1080, 30};
    for (uint32_t type : kInside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(1U, VISCA_SetVin(nullptr));
        EXPECT_THAT(Host().Sent(), IsEmpty());
        Host().Fail(Call::Put, Host().Calls(Call::Put) + 1, kForEver); // no further than the first command
        EXPECT_EQ(1U, VISCA_SetVin(&norm));
        ASSERT_FALSE(Host().Sent().empty());
        EXPECT_EQ("81 09 04 24 72 FF", Host().Sent().front());
    }
}

TEST_F(DispatchTest, TheVideoNormDoesNothingForEveryOtherType) {
    const VideoNormParam norm = {1920, 1080, 30};
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_SetVin(&norm));
        EXPECT_EQ(0U, VISCA_SetVin(nullptr));
        EXPECT_THAT(Host().Story({Call::Log, Call::Put, Call::Send}),
                    ElementsAre("DEBUG VISCA_SetVin: do nothing\n", "DEBUG VISCA_SetVin: do nothing\n"));
    }
}

TEST_F(DispatchTest, TheIdentityIsAskedForWhateverTheType) {
    Host().AnswerEveryInquiry("90 50 00 20 04 67 01 23 02 FF");
    for (uint32_t type : {0x02000001U, 0x02012001U, kUnset, 0U, 0x03000000U}) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        CameraInfo info = {};
        EXPECT_EQ(0U, VISCA_GetCamInfo(6, &info));
        EXPECT_STREQ("SONY ", info.szVendor);
        EXPECT_STREQ("sony 7500 ", info.szModel);
        EXPECT_STREQ("123 ", info.szFirmware);
        EXPECT_THAT(Host().Sent(), ElementsAre("81 09 00 02 FF"));
        EXPECT_THAT(Host().Log(), SizeIs(1)) << "the driver's entry line alone";
        EXPECT_EQ(0U, Host().Log().front().find("DEBUG SONY_GetCamInfo: FUN_ENTRY--param:ulChannelID[6] "));
    }
    Host().AnswerEveryInquiry("90 60 41 FF");
    CameraInfo info = {};
    EXPECT_EQ(1U, VISCA_GetCamInfo(0, &info));
}

class InitTest : public UnitTest {
  protected:
    InitTest() { AsAtLoad(); }
};

TEST_F(InitTest, TheFamilyIsBroughtUpOnTheGivenPort) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    VISCA_SetCamModuleType(0x02000004);
    EXPECT_EQ(0U, VISCA_Init(5));
    EXPECT_THAT(Host().Story({Call::Open}), ElementsAre("open 5"));
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(2));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 06 03 FF"));
}

TEST_F(InitTest, ItSucceedsEvenWhenNoCameraAnswers) {
    VISCA_SetCamModuleType(0x02000001);
    EXPECT_EQ(0U, VISCA_Init(0));
    EXPECT_EQ(0U, ViscaIsCamCanCtrl());
}

TEST_F(InitTest, ItFailsWhenTheThreadsDoNotStart) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    Host().Fail(Call::ThreadCreate);
    VISCA_SetCamModuleType(0x02000001);
    EXPECT_EQ(1U, VISCA_Init(0));
}

TEST_F(InitTest, AnyOtherTypeOnlyOpensAndProbesPortZero) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    for (uint32_t type : kOutside) {
        Host().Forget();
        AsAtLoad();
        VISCA_SetCamModuleType(type);
        EXPECT_EQ(0U, VISCA_Init(5));
        EXPECT_THAT(Host().Story({Call::Open, Call::ThreadCreate, Call::Put}), ElementsAre("open 0"));
        EXPECT_EQ(1U, ViscaIsCamCanCtrl());
        for (const std::string &line : Host().Log()) {
            EXPECT_EQ(std::string::npos, line.find("VISCA_Init")) << line;
        }
    }
}

TEST_F(InitTest, AnyOtherTypeReportsAPortThatFailsAndSucceeds) {
    Host().Fail(Call::Open);
    EXPECT_EQ(0U, VISCA_Init(5));
    EXPECT_EQ("ERROR VISCA_Init: Visca Cam Com Init fail exit\n", Host().Log().back());
    EXPECT_THAT(Clib().ThreadStarts(), IsEmpty());
}

// Needs a process in which no type was ever set; ctest gives each test one of its own.
TEST(DispatchAtLoad, TheTypeIsUnset) {
    EXPECT_EQ(0U, VISCA_ZoomIn());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "VISCA_ZoomIn", "do nothing\n"));
}

TEST(DispatchAtLoad, ThePortIsClosedAndNoFlagIsUp) {
    EXPECT_EQ(-1, ViscaGetCamComFd());
    EXPECT_EQ(0U, ViscaIsCamCanCtrl());
    EXPECT_EQ(0U, ViscaIsUpdatingCam());
    EXPECT_EQ(0U, ViscaIsExportLog());
    EXPECT_EQ(0U, ViscaIsCamComBusy());
}

} // namespace
} // namespace unit
