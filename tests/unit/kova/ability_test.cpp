// The capability word of a Kova module.
#include "tests/unit/kova/module_test.h"

namespace unit {
namespace {

class AbilityTest : public ModuleTest {};

// Needs a process in which nothing was detected; ctest gives each test one of its own.
TEST(AbilityAtLoad, IsZeroSoVersionsAreReadInTheOldForm) {
    EXPECT_EQ(0U, KovaGetCamAbility());
    EXPECT_EQ(0U, KOVA_HasCamAbility(1));
    ViscaSetCamCanCtrl(1);
    ViscaSetCamComFd(Host().PortFd());
    Host().AnswerInquiry("90 50 00 05 00 00 FF");
    CallersBuffer<100> version;
    EXPECT_EQ(0U, KovaGetCurKovaProgramVer(version.data()));
    EXPECT_EQ("D005", version.text());
    EXPECT_EQ(0U, KovaGetExtVer(version.data()));
    EXPECT_EQ("UNKNOWN", version.text());
    EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 B2 FF"));
}

TEST_F(AbilityTest, AWordIsStoredAndTold) {
    for (uint32_t word : {0x12345678U, 0U, 0xFFFFFFFFU}) {
        EXPECT_EQ(0U, KovaSetCamAbility(word));
        EXPECT_EQ(word, KovaGetCamAbility());
    }
    EXPECT_THAT(Host().Log(), ElementsAre("INFO KovaSetCamAbility: Set g_ulCamAbility[0x12345678]\n",
                                          "INFO KovaSetCamAbility: Set g_ulCamAbility[0]\n",
                                          "INFO KovaSetCamAbility: Set g_ulCamAbility[0xffffffff]\n"));
    EXPECT_THAT(Host().Story({Call::Send, Call::Put}), IsEmpty());
}

TEST_F(AbilityTest, AMaskIsHadWhenEveryBitOfItIs) {
    KovaSetCamAbility(0x80000014);
    for (uint32_t mask : {0U, 0x04U, 0x10U, 0x14U, 0x80000000U, 0x80000014U}) {
        EXPECT_EQ(1U, KOVA_HasCamAbility(mask)) << mask;
    }
    for (uint32_t mask : {0x01U, 0x05U, 0x15U, 0x8000001CU, 0xFFFFFFFFU}) {
        EXPECT_EQ(0U, KOVA_HasCamAbility(mask)) << mask;
    }
    KovaSetCamAbility(0);
    EXPECT_EQ(1U, KOVA_HasCamAbility(0));
}

TEST_F(AbilityTest, DetectionBuildsTheWordFromEightNibblesBehindTheFirstByte) {
    Host().AnswerInquiry("90 50 00 01 02 03 04 05 06 07 08 FF");
    EXPECT_EQ(0U, KovaDetectCamAbility());
    EXPECT_EQ(0x12345678U, KovaGetCamAbility());
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 AB FF"));
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG KovaDetectCamAbility: FUN_ENTRY--param:\n",
                                          "INFO KovaSetCamAbility: Set g_ulCamAbility[0x12345678]\n"));
}

TEST_F(AbilityTest, TheFirstByteAndTheUpperNibblesPlayNoPart) {
    Host().AnswerInquiry("90 50 7F F1 E2 D3 C4 B5 A6 97 88 FF");
    EXPECT_EQ(0U, KovaDetectCamAbility());
    EXPECT_EQ(0x12345678U, KovaGetCamAbility());
    Host().AnswerInquiry("90 50 0F 00 00 00 00 00 00 00 00 0F 0F FF");
    EXPECT_EQ(0U, KovaDetectCamAbility());
    EXPECT_EQ(0U, KovaGetCamAbility());
}

TEST_F(AbilityTest, EveryValueOfEveryByteGivesItsNibble) {
    for (unsigned at = 0; at < 8; ++at) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            Host().AnswerInquiry(Reply(OneByte(9, at + 1, value)));
            EXPECT_EQ(0U, KovaDetectCamAbility());
            EXPECT_EQ((value & 0x0F) << (28 - 4 * at), KovaGetCamAbility());
        }
    }
}

TEST_F(AbilityTest, AFailedDetectionLeavesTheWord) {
    Attach(kKova, 0x1C);
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KovaDetectCamAbility());
    EXPECT_EQ(0x1CU, KovaGetCamAbility());
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG KovaDetectCamAbility: FUN_ENTRY--param:\n",
                                          "ERROR KovaDetectCamAbility: ViscaInquiry failed exit\n"));
}

TEST_F(AbilityTest, ARefusedDetectionLeavesTheWord) {
    Attach(kKova, 0x1C);
    ViscaMarkUpdatingCam(1);
    EXPECT_EQ(1U, KovaDetectCamAbility());
    EXPECT_EQ(0x1CU, KovaGetCamAbility());
    EXPECT_THAT(Complained(), ElementsAre("ERROR KovaDetectCamAbility: ViscaInquiry failed exit\n"));
    EXPECT_THAT(Host().Sent(), IsEmpty());
}

TEST_F(AbilityTest, AModuleThatDoesNotAnswerHasNoAbility) {
    Attach(kKova, 0x1C);
    EXPECT_EQ(0U, KovaDetectCamAbility());
    EXPECT_EQ(0U, KovaGetCamAbility());
    EXPECT_THAT(Complained(), ElementsAre(m_time_out));
}

} // namespace
} // namespace unit
