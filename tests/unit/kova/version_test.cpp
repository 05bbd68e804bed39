// Versions that come in one answer: uImage, program in the old form; and the stamped camera version.
#include "tests/unit/kova/module_test.h"

namespace unit {
namespace {

struct Form {
    const char *reply, *text;
};

class UimageVersionTest : public ModuleTest {
  protected:
    CallersBuffer<100> m_version;
};

TEST_F(UimageVersionTest, OuterDigitsThatAreZeroAreLeftOut) {
    const Form forms[] = {{"90 50 00 01 02 03 FF", "1.23"}, {"90 50 01 02 03 00 FF", "12.3"},
                          {"90 50 00 02 00 00 FF", "2.0"},  {"90 50 09 08 07 06 FF", "98.76"},
                          {"90 50 00 00 00 00 FF", "0.0"},  {"90 50 01 00 00 01 FF", "10.01"},
                          {"90 50 0A 11 31 4A FF", ":A.az"}}; // no range check
    for (const Form &form : forms) {
        Host().AnswerInquiry(form.reply);
        EXPECT_EQ(0U, KovaGetCurKovaUimageVer(m_version.data()));
        EXPECT_EQ(form.text, m_version.text()) << form.reply;
    }
    EXPECT_TRUE(m_version.intact());
}

TEST_F(UimageVersionTest, AsksWithTheModulesOwnHeaderAndLogsTheFourBytes) {
    Host().AnswerInquiry("90 50 00 1A 02 FE FF");
    EXPECT_EQ(0U, KovaGetCurKovaUimageVer(m_version.data()));
    EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 B1 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG KovaGetCurKovaUimageVer: ptr 0x0 0x1a 0x2 0xfe\n"));
}

TEST_F(UimageVersionTest, ANullBufferIsRefusedWithoutTraffic) {
    EXPECT_EQ(1U, KovaGetCurKovaUimageVer(nullptr));
    EXPECT_THAT(Host().Story({Call::Log, Call::Send}),
                ElementsAre("ERROR KovaGetCurKovaUimageVer: ptr == NULL\n"));
}

TEST_F(UimageVersionTest, AFailedInquiryLeavesTheBuffer) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KovaGetCurKovaUimageVer(m_version.data()));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR KovaGetCurKovaUimageVer: ViscaInquiry failed exit\n"));
    EXPECT_TRUE(m_version.untouched());
}

TEST_F(UimageVersionTest, ASilentModuleReadsAsZero) {
    EXPECT_EQ(0U, KovaGetCurKovaUimageVer(m_version.data()));
    EXPECT_EQ("0.0", m_version.text());
    EXPECT_THAT(Host().Log(),
                ElementsAre(m_time_out, "DEBUG KovaGetCurKovaUimageVer: ptr 0x0 0x0 0x0 0x0\n"));
}

TEST_F(UimageVersionTest, NoByteOfTheAnswerWritesOutsideTheText) {
    for (size_t at = 0; at < 13; ++at) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            Host().AnswerInquiry(Reply(OneByte(13, at, value)));
            CallersBuffer<6> version; // five characters at the most
            EXPECT_EQ(0U, KovaGetCurKovaUimageVer(version.data()));
            EXPECT_TRUE(version.intact());
        }
    }
}

class OldProgramVersionTest : public ModuleTest {
  protected:
    CallersBuffer<100> m_version;
};

TEST_F(OldProgramVersionTest, OneAnswerHoldsItAll) {
    const Form forms[] = {{"90 50 00 05 00 00 FF", "D005"},     {"90 50 00 0C 00 03 FF", "D012SP03"},
                          {"90 50 00 0C 09 03 FF", "D012SP03"}, {"90 50 00 05 63 00 FF", "D005"},
                          {"90 50 00 1C 00 21 FF", "D028SP33"}, {"90 50 01 02 03 04 FF", "01020304"},
                          {"90 50 63 62 61 60 FF", "99989796"}, {"90 50 0A 00 00 00 FF", "10000000"},
                          {"90 50 00 00 00 00 FF", "D000"},     {"90 50 00 63 00 63 FF", "D099SP99"}};
    for (const Form &form : forms) {
        Host().AnswerInquiry(form.reply);
        EXPECT_EQ(0U, KovaGetCurKovaProgramVer(m_version.data()));
        EXPECT_EQ(form.text, m_version.text()) << form.reply;
    }
    EXPECT_TRUE(m_version.intact());
}

TEST_F(OldProgramVersionTest, IsAskedForOnceAndItsBytesAreLogged) {
    Host().AnswerInquiry("90 50 00 0C 00 03 FF");
    EXPECT_EQ(0U, KovaGetCurKovaProgramVer(m_version.data()));
    EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 B2 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre("INFO KovaGetCurKovaProgramVer: Old Ver Camera\n",
                                          "DEBUG KovaGetCurKovaProgramVer: ptr 0x0 0xc 0x0 0x3\n"));
}

TEST_F(OldProgramVersionTest, OnlyTheOneBitOfTheAbilityDecides) {
    Attach(kKova, ~kSegmented);
    Host().AnswerInquiry("90 50 00 05 00 00 FF");
    EXPECT_EQ(0U, KovaGetCurKovaProgramVer(m_version.data()));
    EXPECT_EQ("D005", m_version.text());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_INFO, "KovaGetCurKovaProgramVer", "Old Ver Camera\n"));
}

TEST_F(OldProgramVersionTest, AFailedInquiryLeavesTheBuffer) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KovaGetCurKovaProgramVer(m_version.data()));
    EXPECT_THAT(Host().Log(), ElementsAre("INFO KovaGetCurKovaProgramVer: Old Ver Camera\n",
                                          "ERROR KovaGetCurKovaProgramVer: ViscaInquiry failed exit\n"));
    EXPECT_TRUE(m_version.untouched());
}

TEST_F(OldProgramVersionTest, ASilentModuleReadsAsZero) {
    EXPECT_EQ(0U, KovaGetCurKovaProgramVer(m_version.data()));
    EXPECT_EQ("D000", m_version.text());
    EXPECT_THAT(Complained(), ElementsAre(m_time_out));
}

TEST_F(OldProgramVersionTest, NoByteOfTheAnswerWritesOutsideTheText) {
    for (size_t at = 0; at < 13; ++at) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            Host().AnswerInquiry(Reply(OneByte(13, at, value)));
            CallersBuffer<9> version; // eight characters at the most
            EXPECT_EQ(0U, KovaGetCurKovaProgramVer(version.data()));
            EXPECT_TRUE(version.intact());
        }
    }
}

class CameraVersionTest : public ModuleTest {
  protected:
    CallersBuffer<114> m_version;
};

TEST_F(CameraVersionTest, TheStampIsThatOfTheGeneration) {
    const struct {
        uint32_t type;
        const char *text;
    } cases[] = {{0x02012000, "QDMV100R001B01D005"}, {0x02012005, "QDMV100R001B01D005"},
                 {0x02012100, "QDMV100R001B01D005"}, {0x02012200, "QDMV100R001B01D005"},
                 {0x020129FF, "QDMV100R001B01D005"}, {0x02012A00, "QDMV200R001B02D005"},
                 {0x02012A02, "QDMV200R001B02D005"}, {0x02012AFF, "QDMV200R001B02D005"},
                 {0x02012B00, "QDMV100R001B01D005"}, {0x02000001, "QDMV100R001B01D005"}};
    for (const auto &test : cases) {
        Attach(test.type);
        Host().AnswerInquiry("90 50 00 05 00 00 FF");
        EXPECT_EQ(0U, KOVA_GetCamVersion(m_version.data()));
        EXPECT_EQ(test.text, m_version.text()) << std::hex << test.type;
        EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 B2 FF"));
    }
}

TEST_F(CameraVersionTest, WithoutABufferNothingIsDone) {
    EXPECT_EQ(0U, KOVA_GetCamVersion(nullptr));
    EXPECT_THAT(Host().Events(), IsEmpty());
}

TEST_F(CameraVersionTest, AVersionThatCannotBeReadIsReported) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KOVA_GetCamVersion(m_version.data()));
    EXPECT_THAT(Complained(), ElementsAre("ERROR KovaGetCurKovaProgramVer: ViscaInquiry failed exit\n",
                                          "ERROR KOVA_GetCamVersion: KovaGetCurKovaProgramVer fail exit\n"));
    EXPECT_EQ(std::string("QDMV100R001B01") + std::string(100, '\x5A'), m_version.bytes());
}

TEST_F(CameraVersionTest, ASilentModuleReadsAsZero) {
    EXPECT_EQ(0U, KOVA_GetCamVersion(m_version.data()));
    EXPECT_EQ("QDMV100R001B01D000", m_version.text());
}

TEST_F(CameraVersionTest, TheLongestVersionFillsTheBufferToItsLastByte) {
    Attach(kKovaGen2, kSegmented);
    Host().AnswerInquiry("90 50 00 00 00 09 FF");
    for (unsigned segment = 0; segment < 9; ++segment) {
        Host().AnswerInquiry(Reply(Bytes(13, 7)));
    }
    EXPECT_EQ(0U, KOVA_GetCamVersion(m_version.data()));
    EXPECT_EQ("QDMV200R001B02" + std::string(99, '7'), m_version.text());
    EXPECT_EQ(113U, m_version.text().size());
    EXPECT_TRUE(m_version.intact());
}

} // namespace
} // namespace unit
