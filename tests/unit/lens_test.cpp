// Zoom and focus: drive, positions, zoom cut, focus modes and triggers, infrared correction, digital zoom.
#include "tests/unit/unit_test.h"

#include <cstdio>

namespace unit {
namespace {

const std::string kEntry = "FUN_ENTRY--param:";

class LensTest : public UnitTest {
  protected:
    static std::string Entry(const std::string &function, const std::string &arguments = "") {
        return "DEBUG " + function + ": " + kEntry + arguments + "\n";
    }
    /** Speeds as start-up leaves them for this type; journal empty. */
    static void StartUp(uint32_t type) {
        SonyInitCamAF(type);
        Host().Forget();
    }
};

// Needs a process in which nothing has started up yet; ctest gives each test one of its own.
TEST_F(LensTest, BeforeStartUpTheSpeedsAreZero) {
    EXPECT_EQ(0U, SONY_ZoomIn());
    EXPECT_EQ(0U, SONY_FocusNear());
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 07 20 FF", "81 01 04 08 30 FF"));
}

TEST_F(LensTest, DrivesTheZoomAtTheStartUpSpeed) {
    StartUp(0x02000001);
    EXPECT_EQ(0U, SONY_ZoomIn());
    EXPECT_EQ(0U, SONY_ZoomOut());
    EXPECT_EQ(0U, SONY_ZoomStop());
    EXPECT_THAT(Host().Commands(),
                ElementsAre("81 01 04 07 26 FF", "81 01 04 07 36 FF", "81 01 04 07 00 FF"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(Entry("SONY_ZoomIn"), Entry("SONY_ZoomOut"), Entry("SONY_ZoomStop")));
}

TEST_F(LensTest, OtherTypesZoomSlower) {
    for (uint32_t type : {0x02000002U, 0x02000000U, 0x02000006U, 0x02012A01U}) {
        StartUp(type);
        EXPECT_EQ(0U, SONY_ZoomIn());
        EXPECT_EQ(0U, SONY_ZoomOut());
        EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 07 25 FF", "81 01 04 07 35 FF"))
            << std::hex << type;
    }
}

TEST_F(LensTest, DrivesTheFocusAtSpeedZero) {
    for (uint32_t type : {0x02000004U, 0x02000002U}) {
        StartUp(type);
        EXPECT_EQ(0U, SONY_FocusNear());
        EXPECT_EQ(0U, SONY_FocusFar());
        EXPECT_EQ(0U, SONY_FocusStop());
        EXPECT_THAT(Host().Commands(),
                    ElementsAre("81 01 04 08 30 FF", "81 01 04 08 20 FF", "81 01 04 08 00 FF"));
        EXPECT_THAT(Host().Log(),
                    ElementsAre(Entry("SONY_FocusNear"), Entry("SONY_FocusFar"), Entry("SONY_FocusStop")));
    }
}

TEST_F(LensTest, AZoomCommandThatIsNotQueuedIsReportedByTheLensToo) {
    const struct {
        uint32_t (*function)();
        const char *name;
    } cases[] = {{SONY_ZoomIn, "SONY_ZoomIn"},
                 {SONY_ZoomOut, "SONY_ZoomOut"},
                 {SONY_ZoomStop, "SONY_ZoomStop"},
                 {SONY_RetSetZoomFocus, "SONY_RetSetZoomFocus"}};
    Host().Fail(Call::Put, 1, kForEver);
    for (const auto &test : cases) {
        Host().Forget();
        EXPECT_EQ(1U, test.function());
        EXPECT_THAT(Host().Log(),
                    ElementsAre(Entry(test.name), "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n",
                                std::string("ERROR ") + test.name + ": ViscaEnQueueCmd fail exit\n"));
    }
}

TEST_F(LensTest, AFocusCommandThatIsNotQueuedIsReportedByTheQueueAlone) {
    const struct {
        uint32_t (*function)();
        const char *name;
    } cases[] = {{SONY_FocusNear, "SONY_FocusNear"},
                 {SONY_FocusFar, "SONY_FocusFar"},
                 {SONY_FocusStop, "SONY_FocusStop"}};
    Host().Fail(Call::Put, 1, kForEver);
    for (const auto &test : cases) {
        Host().Forget();
        EXPECT_EQ(1U, test.function());
        EXPECT_THAT(Host().Log(),
                    ElementsAre(Entry(test.name), "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n"));
    }
}

TEST_F(LensTest, RefusedCommandsAreReportedWithTheReasonOfTheQueue) {
    ViscaSetCamCanCtrl(0);
    EXPECT_EQ(1U, SONY_ZoomIn());
    EXPECT_EQ(1U, SONY_FocusFar());
    EXPECT_THAT(Host().Log(),
                ElementsAre(Entry("SONY_ZoomIn"), "WARN ViscaEnQueueCmd: Cam Can't Ctrl return directly\n",
                            "ERROR SONY_ZoomIn: ViscaEnQueueCmd fail exit\n", Entry("SONY_FocusFar"),
                            "WARN ViscaEnQueueCmd: Cam Can't Ctrl return directly\n"));
    EXPECT_THAT(Host().Commands(), IsEmpty());
}

TEST_F(LensTest, DrivesTheZoomToAPositionInFourNibbles) {
    EXPECT_EQ(0U, SONY_SetZoomPos(0x4000));
    EXPECT_EQ(0U, SONY_SetZoomPos(0x12345));
    EXPECT_EQ(0U, SONY_SetZoomPos(-2));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 47 04 00 00 00 FF", "81 01 04 47 02 03 04 05 FF",
                                               "81 01 04 47 0F 0F 0F 0E FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(Entry("SONY_SetZoomPos", "sZoomPos[16384]"),
                                          Entry("SONY_SetZoomPos", "sZoomPos[74565]"),
                                          Entry("SONY_SetZoomPos", "sZoomPos[-2]")));
}

TEST_F(LensTest, DrivesZoomAndFocusWithOneCommand) {
    EXPECT_EQ(0U, SONY_SetZoomFocusPos(0x1234, 0x5ABCD));
    EXPECT_EQ(0U, SONY_SetZoomFocusPos(-1, 0));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 47 01 02 03 04 0A 0B 0C 0D FF",
                                               "81 01 04 47 0F 0F 0F 0F 00 00 00 00 FF"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(Entry("SONY_SetZoomFocusPos", "sZoomPos[0x1234] sFocusPos[0x5abcd]"),
                            Entry("SONY_SetZoomFocusPos", "sZoomPos[0xffffffff] sFocusPos[0x0]")));
}

TEST_F(LensTest, APositionThatIsNotQueuedIsReported) {
    Host().Fail(Call::Put, 1, kForEver);
    EXPECT_EQ(1U, SONY_SetZoomPos(1));
    EXPECT_EQ("ERROR SONY_SetZoomPos: ViscaEnQueueCmd() fail exit\n", Host().Log().back());
    EXPECT_EQ(1U, SONY_SetZoomFocusPos(1, 2));
    EXPECT_EQ("ERROR SONY_SetZoomFocusPos: ViscaEnQueueCmd() fail exit\n", Host().Log().back());
}

TEST_F(LensTest, TheReturnCommandHasNoArguments) {
    EXPECT_EQ(0U, SONY_RetSetZoomFocus());
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 BA FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(Entry("SONY_RetSetZoomFocus")));
}

TEST_F(LensTest, ZoomCutWritesOneOfTwoRegisters) {
    EXPECT_EQ(0U, SONY_SetZoomCut(0, 0xA7));
    EXPECT_EQ(0U, SONY_SetZoomCut(1, 5));
    EXPECT_EQ(0U, SONY_SetZoomCut(1, 0x123));
    EXPECT_THAT(Host().Commands(),
                ElementsAre("81 01 04 24 50 0A 07 FF", "81 01 04 24 51 00 05 FF", "81 01 04 24 51 02 03 FF"));
    for (const Event &line : Host().Events(Call::Log)) {
        EXPECT_EQ("SonySetRegisterVal", line.log.function) << "zoom cut itself logs nothing";
    }
    Host().Forget();
    EXPECT_EQ(0U, SONY_SetZoomCut(2, 5));
    EXPECT_THAT(Host().Events(), IsEmpty());
    Host().Fail(Call::Put, 1, kForEver);
    EXPECT_EQ(1U, SONY_SetZoomCut(0, 5));
}

class PositionTest : public UnitTest {
  protected:
    static std::string VerboEntry(const char *function, const char *name, const void *pointer) {
        char text[128];
        snprintf(text, sizeof text, "VERBO %s: FUN_ENTRY--param:%s[%p]\n", function, name, pointer);
        return text;
    }
    uint32_t m_zoom = 0xEEEEEEEE;
    int16_t m_focus = 0x0EEE;
};

TEST_F(PositionTest, ReadsTheZoomPosition) {
    Host().AnswerInquiry("90 50 04 00 00 00 FF");
    EXPECT_EQ(0U, SONY_GetZoomPos(&m_zoom));
    EXPECT_EQ(0x4000U, m_zoom);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 47 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(VerboEntry("SONY_GetZoomPos", "psZoom", &m_zoom),
                                          "VERBO SONY_GetZoomPos: pulZoomPos 0x4 0x0 0x0 0x0\n"));
}

TEST_F(PositionTest, ZoomBytesAreNotMaskedToTheirLowNibble) {
    Host().AnswerInquiry("90 50 14 23 35 46 FF");
    EXPECT_EQ(0U, SONY_GetZoomPos(&m_zoom));
    EXPECT_EQ(0x16696U, m_zoom); // 0x14000 + 0x2300 + 0x350 + 0x46
    EXPECT_EQ("VERBO SONY_GetZoomPos: pulZoomPos 0x14 0x23 0x35 0x46\n", Host().Log().back());
}

TEST_F(PositionTest, ReadsTheFocusPositionAsSixteenSignedBits) {
    Host().AnswerInquiry("90 50 01 02 03 04 FF");
    EXPECT_EQ(0U, SONY_GetFocusPos(&m_focus));
    EXPECT_EQ(0x1234, m_focus);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 48 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(VerboEntry("SONY_GetFocusPos", "psFocus", &m_focus),
                                          "VERBO SONY_GetFocusPos: pulFocus 0x1 0x2 0x3 0x4\n"));
    Host().AnswerInquiry("90 50 0F 0F 0F 0E FF");
    EXPECT_EQ(0U, SONY_GetFocusPos(&m_focus));
    EXPECT_EQ(-2, m_focus);
}

TEST_F(PositionTest, TheFocusValueIsStoredBeforeItIsLoggedTheZoomValueAfterwards) {
    std::vector<long> seen;
    Host().OnRecord([this, &seen](const Event &event) {
        if (event.log.message.compare(0, 8, "pulFocus") == 0) {
            seen.push_back(m_focus);
        } else if (event.log.message.compare(0, 7, "pulZoom") == 0) {
            seen.push_back(m_zoom);
        }
    });
    Host().AnswerEveryInquiry("90 50 01 02 03 04 FF");
    EXPECT_EQ(0U, SONY_GetFocusPos(&m_focus));
    EXPECT_EQ(0U, SONY_GetZoomPos(&m_zoom));
    EXPECT_THAT(seen, ElementsAre(0x1234, 0xEEEEEEEE));
    Host().OnRecord(nullptr);
}

TEST_F(PositionTest, ANullPointerIsRefusedWithoutTraffic) {
    EXPECT_EQ(2U, SONY_GetZoomPos(nullptr));
    EXPECT_EQ(2U, SONY_GetFocusPos(nullptr));
    EXPECT_THAT(Host().Sent(), IsEmpty());
    EXPECT_THAT(Host().Log(), ElementsAre(VerboEntry("SONY_GetZoomPos", "psZoom", nullptr),
                                          "ERROR SONY_GetZoomPos: input param invalid\n",
                                          VerboEntry("SONY_GetFocusPos", "psFocus", nullptr),
                                          "ERROR SONY_GetFocusPos: input param invalid\n"));
}

TEST_F(PositionTest, AFailedInquiryIsADebugLineForZoomAndAnErrorForFocus) {
    Host().AnswerEveryInquiry("90 60 41 FF");
    EXPECT_EQ(1U, SONY_GetZoomPos(&m_zoom));
    EXPECT_EQ("DEBUG SONY_GetZoomPos: ViscaInquiry failed exit\n", Host().Log().back());
    EXPECT_EQ(0xEEEEEEEEU, m_zoom);
    EXPECT_EQ(1U, SONY_GetFocusPos(&m_focus));
    EXPECT_EQ("ERROR SONY_GetFocusPos: ViscaInquiry failed exit\n", Host().Log().back());
    EXPECT_EQ(0x0EEE, m_focus);
}

TEST_F(PositionTest, ASilentCameraIsASuccessOfPositionZero) {
    EXPECT_EQ(0U, SONY_GetZoomPos(&m_zoom));
    EXPECT_EQ(0U, SONY_GetFocusPos(&m_focus));
    EXPECT_EQ(0U, m_zoom);
    EXPECT_EQ(0, m_focus);
}

class FocusModeTest : public LensTest {};

TEST_F(FocusModeTest, OnlyOneEnablesAutoFocus) {
    for (uint32_t enable : {1U, 0U, 2U}) {
        EXPECT_EQ(0U, SONY_EnableAF(enable));
    }
    EXPECT_THAT(Host().Commands(),
                ElementsAre("81 01 04 38 02 FF", "81 01 04 38 03 FF", "81 01 04 38 03 FF"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(Entry("SONY_EnableAF", "bIsEnable[1]"), Entry("SONY_EnableAF", "bIsEnable[0]"),
                            Entry("SONY_EnableAF", "bIsEnable[2]")));
}

TEST_F(FocusModeTest, EveryOtherModeIsTheThird) {
    for (uint32_t mode : {1U, 0U, 2U, 7U, 0xFFFFFFFFU}) {
        EXPECT_EQ(0U, SONY_SetFocusMode(mode));
    }
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 38 02 FF", "81 01 04 38 03 FF", "81 01 04 38 04 FF",
                                               "81 01 04 38 04 FF", "81 01 04 38 04 FF"));
    EXPECT_EQ(Entry("SONY_SetFocusMode", "ulFocusMode[4294967295]"), Host().Log().back());
}

TEST_F(FocusModeTest, OnlyOneSwitchesDigitalZoomOnAndNothingIsLogged) {
    for (uint32_t enable : {1U, 0U, 2U}) {
        EXPECT_EQ(0U, SonyImgEnableDzoom(enable));
    }
    EXPECT_THAT(Host().Commands(),
                ElementsAre("81 01 04 06 02 FF", "81 01 04 06 03 FF", "81 01 04 06 03 FF"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(FocusModeTest, OnePushFocusesOnce) {
    EXPECT_EQ(0U, SONY_OnePushTriggerAF());
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 18 01 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(Entry("SONY_OnePushTriggerAF")));
}

TEST_F(FocusModeTest, TheInfraredCorrectionIsOnOrOff) {
    EXPECT_EQ(0U, SONY_EnableIrCurve(0));
    EXPECT_EQ(0U, SONY_EnableIrCurve(1));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 11 00 FF", "81 01 04 11 01 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(Entry("SONY_EnableIrCurve", "bIrCurve[0]"),
                                          Entry("SONY_EnableIrCurve", "bIrCurve[1]")));
}

TEST_F(FocusModeTest, AnyOtherInfraredCorrectionIsRefused) {
    for (uint32_t value : {2U, 0x100U, 0xFFFFFFFFU}) {
        Host().Forget();
        EXPECT_EQ(1U, SONY_EnableIrCurve(value));
        const std::string argument = "bIrCurve[" + std::to_string(value) + "]";
        EXPECT_THAT(Host().Story({Call::Log, Call::Put}),
                    ElementsAre(Entry("SONY_EnableIrCurve", argument),
                                "WARN SONY_EnableIrCurve: " + argument + " invalid, fail exit\n"));
    }
}

TEST_F(FocusModeTest, TheAutoFocusModeIsSentAsOneByteWithoutATest) {
    for (uint32_t type : {0U, 2U, 0xFEU, 0x1234U}) {
        EXPECT_EQ(0U, SONY_SetAFType(type));
    }
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 57 00 FF", "81 01 04 57 02 FF", "81 01 04 57 FE FF",
                                               "81 01 04 57 34 FF"));
    EXPECT_EQ(Entry("SONY_SetAFType", "4660"), Host().Log().back());
}

TEST_F(FocusModeTest, ACommandThatIsNotQueuedIsReportedInEachFunctionsOwnWords) {
    Host().Fail(Call::Put, 1, kForEver);
    EXPECT_EQ(1U, SONY_EnableAF(1));
    EXPECT_EQ("ERROR SONY_EnableAF: ViscaEnQueueCmd fail exit\n", Host().Log().back());
    EXPECT_EQ(1U, SONY_SetFocusMode(1));
    EXPECT_EQ("ERROR SONY_SetFocusMode: ViscaEnQueueCmd fail exit\n", Host().Log().back());
    EXPECT_EQ(1U, SonyImgEnableDzoom(1));
    EXPECT_EQ("ERROR SonyImgEnableDzoom: ViscaEnQueueCmd() fail exit\n", Host().Log().back());
    EXPECT_EQ(1U, SONY_OnePushTriggerAF());
    EXPECT_EQ("ERROR SONY_OnePushTriggerAF: ViscaEnQueueCmd() fail exit\n", Host().Log().back());
    EXPECT_EQ(1U, SONY_EnableIrCurve(1));
    EXPECT_EQ("ERROR SONY_EnableIrCurve: ViscaEnQueueCmd() fail exit\n", Host().Log().back());
    EXPECT_EQ(1U, SONY_SetAFType(1));
    EXPECT_EQ("ERROR SONY_SetAFType: ViscaEnQueueCmd fail exit\n", Host().Log().back());
}

} // namespace
} // namespace unit
