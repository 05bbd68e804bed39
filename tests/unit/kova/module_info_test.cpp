// Encoder software, boards and temperature of a Kova module.
#include "tests/unit/kova/module_test.h"

namespace unit {
namespace {

class SoftVersionTest : public ModuleTest {
  protected:
    CallersBuffer<16> m_version;
};

TEST_F(SoftVersionTest, TheTextUpToTheTerminatorFillsSixteenBytesWithNuls) {
    Host().AnswerInquiry("90 50 31 2E 32 62 FF");
    EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_EQ(std::string("1.2b") + std::string(12, '\0'), m_version.bytes());
    EXPECT_TRUE(m_version.intact());
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 B4 03 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG KOVA_GetSoftVer:  Encode Soft Version:** 1.2b ** \n"));
}

TEST_F(SoftVersionTest, AFullAnswerFitsWithItsNul) {
    Host().AnswerInquiry("90 50 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D FF");
    EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_EQ(std::string("ABCDEFGHIJKLM") + std::string(3, '\0'), m_version.bytes());
    Host().AnswerInquiry("90 50 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E");
    EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_EQ(std::string("ABCDEFGHIJKLMN") + std::string(2, '\0'), m_version.bytes());
    EXPECT_TRUE(m_version.intact());
}

TEST_F(SoftVersionTest, AnEmptyAnswerIsAnEmptyText) {
    Host().AnswerInquiry("90 50 FF");
    EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_EQ(std::string(16, '\0'), m_version.bytes());
}

TEST_F(SoftVersionTest, NothingBehindTheFirstTerminatorIsTaken) {
    Host().AnswerInquiry("90 50 41 FF 42 43 44");
    EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_EQ(std::string("A") + std::string(15, '\0'), m_version.bytes());
}

TEST_F(SoftVersionTest, AFailedInquiryLeavesTheBuffer) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR KOVA_GetSoftVer: ViscaInquiry failed exit\n"));
    EXPECT_TRUE(m_version.untouched());
}

TEST_F(SoftVersionTest, ASilentModuleHasAnEmptyText) {
    EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
    EXPECT_EQ(std::string(16, '\0'), m_version.bytes());
    EXPECT_TRUE(m_version.intact());
    EXPECT_THAT(Complained(), ElementsAre(m_time_out));
}

TEST_F(SoftVersionTest, EveryByteIsTakenAsItIs) {
    for (unsigned value = 0; value < 0xFF; ++value) {
        Host().Forget();
        Host().AnswerInquiry(Reply({0x41, static_cast<uint8_t>(value), 0x42}));
        EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
        EXPECT_EQ(std::string("A") + static_cast<char>(value) + "B" + std::string(13, '\0'),
                  m_version.bytes());
        Host().AnswerInquiry(Reply(Bytes(14, static_cast<uint8_t>(value))));
        EXPECT_EQ(0U, KOVA_GetSoftVer(m_version.data()));
        EXPECT_TRUE(m_version.intact());
    }
}

class BoardTest : public ModuleTest {
  protected:
    uint32_t m_version = 77, m_type = 88;
};

TEST_F(BoardTest, EachBoardIsAskedForByItsNumber) {
    const char *const inquiries[] = {"81 09 04 B4 00 FF", "81 09 04 B4 01 FF", "81 09 04 B4 02 FF"};
    for (uint32_t board : {0U, 1U, 2U}) {
        Host().Forget();
        Host().AnswerInquiry("90 50 12 FE FF");
        EXPECT_EQ(0U, KOVA_GetBoardVerType(board, &m_version, &m_type));
        EXPECT_EQ(0x12U, m_version);
        EXPECT_EQ(0xFEU, m_type);
        EXPECT_THAT(Host().Sent(), ElementsAre(inquiries[board]));
        EXPECT_THAT(Host().Log(), ElementsAre("DEBUG KOVA_GetBoardVerType: KOVA BoardType[" +
                                              std::to_string(board) + "] pulVer [18] Type [254] \n"));
    }
}

TEST_F(BoardTest, TheNumberIsSentAsOneByte) {
    KOVA_GetBoardVerType(0x1A7, &m_version, &m_type);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 B4 A7 FF"));
}

TEST_F(BoardTest, AFailedInquiryLeavesBothWords) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KOVA_GetBoardVerType(0, &m_version, &m_type));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR KOVA_GetBoardVerType: ViscaInquiry failed exit\n"));
    EXPECT_EQ(77U, m_version);
    EXPECT_EQ(88U, m_type);
}

TEST_F(BoardTest, ASilentModuleReadsAsZero) {
    EXPECT_EQ(0U, KOVA_GetBoardVerType(1, &m_version, &m_type));
    EXPECT_EQ(0U, m_version);
    EXPECT_EQ(0U, m_type);
}

TEST_F(BoardTest, BothAreWholeBytes) {
    for (unsigned value = 0; value < 0xFF; ++value) {
        Host().Forget();
        Host().AnswerInquiry(Reply({static_cast<uint8_t>(value), static_cast<uint8_t>(0xFE - value), 1, 2}));
        EXPECT_EQ(0U, KOVA_GetBoardVerType(2, &m_version, &m_type));
        EXPECT_EQ(value, m_version);
        EXPECT_EQ(0xFE - value, m_type);
    }
}

class TemperatureTest : public ModuleTest {
  protected:
    int32_t m_degrees = 77;
};

TEST_F(TemperatureTest, TwoNibblesCountFromMinusOneHundredAndTwentySeven) {
    const struct {
        const char *reply;
        int32_t degrees;
    } cases[] = {{"90 50 00 00 00 00 FF", -127}, {"90 50 00 00 07 0F FF", 0}, {"90 50 00 00 09 06 FF", 23},
                 {"90 50 00 00 0F 0F FF", 128},  {"90 50 0F 0F 08 00 FF", 1}, {"90 50 00 00 F9 A6 FF", 23}};
    for (const auto &test : cases) {
        Host().AnswerInquiry(test.reply);
        EXPECT_EQ(0U, KOVA_GetTemperature(0, &m_degrees));
        EXPECT_EQ(test.degrees, m_degrees) << test.reply;
    }
}

TEST_F(TemperatureTest, ChannelAndResultAreLogged) {
    Host().AnswerInquiry("90 50 00 00 06 0B FF");
    EXPECT_EQ(0U, KOVA_GetTemperature(4000000000U, &m_degrees));
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 68 FF"));
    EXPECT_THAT(Host().Log(),
                ElementsAre("DEBUG KOVA_GetTemperature: FUN_ENTRY--param:ulChannelID [4000000000]\n",
                            "DEBUG KOVA_GetTemperature: KOVA Temperature [-20] \n"));
}

TEST_F(TemperatureTest, AFailedInquiryLeavesTheWord) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KOVA_GetTemperature(0, &m_degrees));
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG KOVA_GetTemperature: FUN_ENTRY--param:ulChannelID [0]\n",
                                          "ERROR KOVA_GetTemperature: ViscaInquiry failed exit\n"));
    EXPECT_EQ(77, m_degrees);
}

TEST_F(TemperatureTest, ASilentModuleIsAsColdAsItGets) {
    EXPECT_EQ(0U, KOVA_GetTemperature(0, &m_degrees));
    EXPECT_EQ(-127, m_degrees);
}

TEST_F(TemperatureTest, EveryByteCountsWithItsLowNibble) {
    for (unsigned value = 0; value <= 0xFF; ++value) {
        Host().Forget();
        const uint8_t byte = static_cast<uint8_t>(value);
        Host().AnswerInquiry(Reply({byte, byte, byte, 0x01}));
        EXPECT_EQ(0U, KOVA_GetTemperature(0, &m_degrees));
        EXPECT_EQ(static_cast<int32_t>(value & 0x0F) * 16 + 1 - 127, m_degrees);
        Host().AnswerInquiry(Reply({byte, byte, 0x01, byte}));
        EXPECT_EQ(0U, KOVA_GetTemperature(0, &m_degrees));
        EXPECT_EQ(16 + static_cast<int32_t>(value & 0x0F) - 127, m_degrees);
    }
}

} // namespace
} // namespace unit
