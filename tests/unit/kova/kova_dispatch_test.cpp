// The public layer of the Kova modules: each row inside and outside its guard.
#include "tests/unit/kova/module_test.h"

namespace unit {
namespace {

constexpr uint32_t kInside[] = {0x02012000, 0x02012001, 0x02012100, 0x02012A01, 0x02012FFF};
constexpr uint32_t kOutside[] = {kUnset,     0,          0x02000001, 0x02000004, 0x02011FFF,
                                 0x02013000, 0x02FFFFFF, 0x03012001, 0x12012001};

constexpr int32_t kMark = 77;
int32_t g_signed;
uint32_t g_version, g_type;
char g_text[114];

void FillOutputs() {
    g_signed = kMark;
    g_version = g_type = kMark;
    std::fill(std::begin(g_text), std::end(g_text), 'x');
}

bool OutputsUntouched() {
    return g_signed == kMark && g_version == kMark && g_type == kMark &&
           std::all_of(std::begin(g_text), std::end(g_text), [](char byte) { return byte == 'x'; });
}

void OnZoom(uint32_t) {}

struct Row {
    const char *name;
    uint32_t (*call)();
    const char *packet; /**< queued, or asked and answered with 90 50 01 02 03 04 FF */
};

const Row kRows[] = {
    {"VISCA_KOVA_SetSceneInfo", [] { return VISCA_KOVA_SetSceneInfo(80); }, "81 01 04 CD 0D FF"},
    {"VISCA_KOVA_SetSigCallback", [] { return VISCA_KOVA_SetSigCallback(0, OnZoom); }, "81 01 04 AE 02 FF"},
    {"VISCA_KOVA_GetSoftVer", [] { return VISCA_KOVA_GetSoftVer(g_text); }, "81 09 04 B4 03 FF"},
    {"VISCA_KOVA_GetEncBoardVerType", [] { return VISCA_KOVA_GetEncBoardVerType(&g_version, &g_type); },
     "81 09 04 B4 00 FF"},
    {"VISCA_KOVA_GetSensorBoardVerType", [] { return VISCA_KOVA_GetSensorBoardVerType(&g_version, &g_type); },
     "81 09 04 B4 01 FF"},
    {"VISCA_KOVA_GetMotorBoardVerType", [] { return VISCA_KOVA_GetMotorBoardVerType(&g_version, &g_type); },
     "81 09 04 B4 02 FF"},
    {"VISCA_KOVA_GetTemperature", [] { return VISCA_KOVA_GetTemperature(5, &g_signed); }, "81 09 04 68 FF"},
    {"VISCA_KOVA_SetIRcut", [] { return VISCA_KOVA_SetIRcut(1); }, "81 01 04 B4 04 FF"},
};

class KovaDispatchTest : public ModuleTest {
  protected:
    KovaDispatchTest() { FillOutputs(); }
    ~KovaDispatchTest() override { KovaSetZoomStatusCallback(nullptr); }
    static Lines Packets() {
        Lines packets = Host().Commands();
        for (const std::string &sent : Host().Sent()) {
            packets.push_back(sent);
        }
        return packets;
    }
    static std::string DidNothing(const std::string &name) { return "DEBUG " + name + ": do nothing\n"; }
};

TEST_F(KovaDispatchTest, ForwardsForEveryModuleOfTheFamily) {
    Host().AnswerEveryInquiry("90 50 01 02 03 04 FF");
    for (uint32_t type : kInside) {
        VISCA_SetCamModuleType(type);
        for (const Row &row : kRows) {
            Host().Forget();
            EXPECT_EQ(0U, row.call()) << row.name;
            EXPECT_THAT(Packets(), ElementsAre(row.packet)) << row.name << " " << std::hex << type;
            EXPECT_FALSE(Host().Logged(VISCA_LOG_DEBUG, row.name, "do nothing\n"));
        }
    }
    EXPECT_EQ(1U, g_version);
    EXPECT_EQ(2U, g_type);
    EXPECT_EQ(3 * 16 + 4 - 127, g_signed);
    EXPECT_EQ(OnZoom, gpfnReportZoomStatus);
}

TEST_F(KovaDispatchTest, DoesNothingForEveryOtherType) {
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        for (const Row &row : kRows) {
            Host().Forget();
            EXPECT_EQ(0U, row.call()) << row.name;
            EXPECT_THAT(Host().Story({Call::Log, Call::Put, Call::Send, Call::ModuleType}),
                        ElementsAre(DidNothing(row.name)));
        }
    }
    EXPECT_TRUE(OutputsUntouched());
    EXPECT_EQ(nullptr, gpfnReportZoomStatus);
}

TEST_F(KovaDispatchTest, ReturnsWhatTheImplementationReturned) {
    VISCA_SetCamModuleType(kKova);
    Host().Fail(Call::Put, 1, kForEver);
    Host().AnswerEveryInquiry(kErrorReply);
    for (const Row &row : kRows) {
        EXPECT_EQ(1U, row.call()) << row.name;
    }
    EXPECT_TRUE(OutputsUntouched());
    EXPECT_EQ(1U, VISCA_KOVA_SetSceneInfo(9));
    EXPECT_EQ(2U, VISCA_KOVA_SetSigCallback(2, OnZoom));
}

TEST_F(KovaDispatchTest, ArgumentsArriveAsTheyAre) {
    VISCA_SetCamModuleType(kKova);
    VISCA_KOVA_SetIRcut(2);
    VISCA_KOVA_SetSigCallback(1, nullptr);
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 B4 05 FF", "81 01 04 AF 03 FF"));
    VISCA_KOVA_GetTemperature(5, &g_signed);
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "KOVA_GetTemperature", "FUN_ENTRY--param:ulChannelID [5]\n"));
}

TEST_F(KovaDispatchTest, LumaIsForwardedForAKovaModule) {
    VISCA_SetCamModuleType(kKovaGen2);
    Host().AnswerEveryInquiry("90 50 01 02 03 04 FF");
    EXPECT_EQ(0U, VISCA_KOVA_GetCurLuma(5, &g_signed));
    EXPECT_EQ(0x1234, g_signed);
    EXPECT_EQ(0U, VISCA_KOVA_GetCurLuma(5, nullptr));
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 CE FF", "81 09 04 CE FF"));
    Host().AnswerEveryInquiry(kErrorReply);
    EXPECT_EQ(1U, VISCA_KOVA_GetCurLuma(5, &g_signed));
}

TEST_F(KovaDispatchTest, LumaOfAnyOtherModuleIsZeroInWordsOfItsOwn) {
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        g_signed = kMark;
        EXPECT_EQ(0U, VISCA_KOVA_GetCurLuma(5, &g_signed));
        EXPECT_EQ(0, g_signed);
        EXPECT_EQ(0U, VISCA_KOVA_GetCurLuma(5, nullptr));
        const std::string line = "DEBUG VISCA_KOVA_GetCurLuma: do nothing !\n";
        EXPECT_THAT(Host().Story({Call::Log, Call::Send, Call::ModuleType}), ElementsAre(line, line));
    }
}

TEST_F(KovaDispatchTest, TheExtensionVersionOfAnyOtherModuleIsAFailure) {
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(1U, VISCA_KOVA_GetExtVer(g_text));
        EXPECT_EQ(1U, VISCA_KOVA_GetExtVer(nullptr));
        const std::string line = "ERROR VISCA_KOVA_GetExtVer: not kova, fail exit\n";
        EXPECT_THAT(Host().Story({Call::Log, Call::Send}), ElementsAre(line, line));
    }
    EXPECT_TRUE(OutputsUntouched());
}

TEST_F(KovaDispatchTest, TheExtensionVersionIsForwardedForAKovaModule) {
    for (uint32_t type : kInside) {
        VISCA_SetCamModuleType(type);
        FillOutputs();
        EXPECT_EQ(0U, VISCA_KOVA_GetExtVer(g_text));
        EXPECT_STREQ("UNKNOWN", g_text);
        EXPECT_EQ(1U, VISCA_KOVA_GetExtVer(nullptr));
        EXPECT_EQ("ERROR KovaGetExtVer: pcExtVer == NULL\n", Host().Log().back());
    }
}

TEST_F(KovaDispatchTest, TheCameraVersionIsForwardedForTheWholeFamilyOfBlocksAndModules) {
    Host().AnswerEveryInquiry("90 50 00 05 00 00 FF");
    for (uint32_t type : {0x02000000U, 0x02000004U, 0x02012001U, 0x02FFFFFFU}) {
        VISCA_SetCamModuleType(type);
        FillOutputs();
        EXPECT_EQ(0U, VISCA_KOVA_GetCamVer(g_text));
        EXPECT_STREQ("QDMV100R001B01D005", g_text) << "by the type that the host tells the driver";
    }
    Host().AnswerEveryInquiry(kErrorReply);
    EXPECT_EQ(1U, VISCA_KOVA_GetCamVer(g_text));
    EXPECT_EQ(0U, VISCA_KOVA_GetCamVer(nullptr));
}

TEST_F(KovaDispatchTest, TheCameraVersionOfAnythingElseIsNothing) {
    for (uint32_t type : {kUnset, 0U, 0x01FFFFFFU, 0x03000000U, 0x12012001U}) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_KOVA_GetCamVer(g_text));
        EXPECT_EQ(0U, VISCA_KOVA_GetCamVer(nullptr));
        EXPECT_THAT(Host().Story({Call::Log, Call::Send, Call::ModuleType}),
                    ElementsAre(DidNothing("VISCA_KOVA_GetCamVer"), DidNothing("VISCA_KOVA_GetCamVer")));
    }
    EXPECT_TRUE(OutputsUntouched());
}

TEST_F(KovaDispatchTest, AbilitiesAreTestedForAKovaModuleOnly) {
    KovaSetCamAbility(0x14);
    for (uint32_t type : kInside) {
        VISCA_SetCamModuleType(type);
        EXPECT_EQ(1U, VISCA_KOVA_HasCamAbility(0x14));
        EXPECT_EQ(1U, VISCA_KOVA_HasCamAbility(0));
        EXPECT_EQ(0U, VISCA_KOVA_HasCamAbility(0x1C));
    }
    for (uint32_t type : kOutside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_KOVA_HasCamAbility(0x14));
        EXPECT_EQ(0U, VISCA_KOVA_HasCamAbility(0));
        EXPECT_THAT(Host().Log(), ElementsAre(DidNothing("VISCA_KOVA_HasCamAbility"),
                                              DidNothing("VISCA_KOVA_HasCamAbility")));
    }
}

TEST_F(KovaDispatchTest, OnePushFocusGoesToTheKovaImplementationFirst) {
    const uint32_t point[] = {0x1234, 0x5678};
    for (uint32_t type : kInside) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_OnePushAutoFocus(0, nullptr));
        EXPECT_EQ(0U, VISCA_OnePushAutoFocus(10, point));
        EXPECT_EQ(1U, VISCA_OnePushAutoFocus(10, nullptr));
        EXPECT_EQ(1U, VISCA_OnePushAutoFocus(5, point));
        EXPECT_THAT(Host().Commands(),
                    ElementsAre("81 01 04 18 01 01 FF", "81 01 04 18 0A 01 02 03 04 05 06 07 08 FF"));
    }
}

TEST_F(KovaDispatchTest, OnePushFocusOfASonyBlockIgnoresItsArguments) {
    for (uint32_t type : {0x02000000U, 0x02000001U, 0x02000FFFU}) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_OnePushAutoFocus(5, nullptr));
        EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 18 01 FF"));
        Host().FailNext(Call::Put);
        EXPECT_EQ(1U, VISCA_OnePushAutoFocus(0, nullptr));
    }
}

TEST_F(KovaDispatchTest, OnePushFocusDoesNothingForTheRestOfTheFamily) {
    for (uint32_t type : {0x02001000U, 0x02011FFFU, 0x02013000U, 0x02FFFFFFU, 0x03000001U, kUnset}) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_OnePushAutoFocus(0, nullptr));
        EXPECT_THAT(Host().Story({Call::Log, Call::Put}), ElementsAre(DidNothing("VISCA_OnePushAutoFocus")));
    }
}

} // namespace
} // namespace unit
