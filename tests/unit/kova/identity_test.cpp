// Vendor, model and firmware of the camera.
#include "tests/unit/kova/module_test.h"

#include <cstdio>
#include <cstring>

namespace unit {
namespace {

class IdentityTest : public ModuleTest {
  protected:
    IdentityTest() { Host().SetModuleType(0x02000001); }
    uint32_t Read(uint32_t channel = 0) { return SONY_GetCamInfo(channel, Info()); }
    CameraInfo *Info() { return reinterpret_cast<CameraInfo *>(m_record.data()); }
    std::string Entry(uint32_t channel) {
        char text[96];
        snprintf(text, sizeof text,
                 "DEBUG SONY_GetCamInfo: FUN_ENTRY--param:ulChannelID[%u] pstCameraInfo[%p]\n", channel,
                 static_cast<void *>(Info()));
        return text;
    }
    CallersBuffer<sizeof(CameraInfo)> m_record;
};

TEST_F(IdentityTest, AKnownCameraIsNamed) {
    Host().AnswerInquiry("90 50 00 20 04 67 01 23 02 FF");
    EXPECT_EQ(0U, Read(3));
    EXPECT_STREQ("SONY ", Info()->szVendor);
    EXPECT_STREQ("sony 7500 ", Info()->szModel);
    EXPECT_STREQ("123 ", Info()->szFirmware);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 00 02 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre(Entry(3)));
    EXPECT_TRUE(m_record.intact());
}

TEST_F(IdentityTest, EveryIdentifierHasItsText) {
    const struct {
        const char *reply, *vendor, *model, *firmware;
    } cases[] = {
        {"90 50 80 26 A0 00 00 00 FF", "TALVERO ", "CAM7K3FHD40Z ", "0 "},
        {"90 50 00 20 B0 00 0A 0B FF", "SONY ", "CAM7K3HD40Z ", "a0b "},
        {"90 50 00 21 04 68 FE DC FF", "Unknow Vender ID 0x21", "Unknow Model ID 0x468 ", "fedc "},
        {"90 50 20 00 67 04 00 01 FF", "Unknow Vender ID 0x2000", "Unknow Model ID 0x6704 ", "1 "},
        {"90 50 FE FE FE FE FE FE FF", "Unknow Vender ID 0xfefe", "Unknow Model ID 0xfefe ", "fefe "},
        {"90 50 26 80 00 A0 10 00 FF", "Unknow Vender ID 0x2680", "Unknow Model ID 0xa0 ", "1000 "}};
    for (const auto &test : cases) {
        Host().AnswerInquiry(test.reply);
        EXPECT_EQ(0U, Read());
        EXPECT_STREQ(test.vendor, Info()->szVendor);
        EXPECT_STREQ(test.model, Info()->szModel);
        EXPECT_STREQ(test.firmware, Info()->szFirmware);
    }
}

TEST_F(IdentityTest, AFailedInquiryLeavesTheRecord) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Host().Log(),
                ElementsAre(Entry(0), "ERROR SONY_GetCamInfo: ViscaGetInquiryData failed exit\n"));
    EXPECT_TRUE(m_record.untouched());
}

TEST_F(IdentityTest, ACameraThatCannotBeControlledIsNotAsked) {
    ViscaSetCamCanCtrl(0);
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Complained(), ElementsAre("WARN ViscaInquiry: Cam Can't Ctrl return directly\n",
                                          "ERROR SONY_GetCamInfo: ViscaGetInquiryData failed exit\n"));
    EXPECT_THAT(Host().Sent(), IsEmpty());
    EXPECT_TRUE(m_record.untouched());
}

TEST_F(IdentityTest, ASilentCameraHasUnknownIdentifiersOfZero) {
    EXPECT_EQ(0U, Read());
    EXPECT_STREQ("Unknow Vender ID 0x0", Info()->szVendor);
    EXPECT_STREQ("Unknow Model ID 0x0 ", Info()->szModel);
    EXPECT_STREQ("0 ", Info()->szFirmware);
    EXPECT_THAT(Complained(), ElementsAre(m_time_out));
}

TEST_F(IdentityTest, TheFirmwareTextTakesSixBytesAtTheMost) {
    memset(Info()->szFirmware, 'x', sizeof Info()->szFirmware);
    Host().AnswerInquiry("90 50 00 20 04 67 FF FF 02 FF");
    EXPECT_EQ(0U, Read());
    EXPECT_STREQ("ffff ", Info()->szFirmware);
    EXPECT_EQ(std::string(26, 'x'), std::string(Info()->szFirmware + 6, 26));
}

TEST_F(IdentityTest, NoByteOfTheAnswerWritesOutsideItsField) {
    for (size_t at = 0; at < 13; ++at) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            Host().AnswerInquiry(Reply(OneByte(13, at, value)));
            EXPECT_EQ(0U, Read());
            EXPECT_TRUE(m_record.intact());
            EXPECT_LT(strnlen(Info()->szVendor, 32), 32U);
            EXPECT_LT(strnlen(Info()->szModel, 32), 32U);
            EXPECT_LT(strnlen(Info()->szFirmware, 32), 6U);
        }
    }
}

TEST_F(IdentityTest, TheCameraIsAskedWhateverTheModule) {
    for (uint32_t type : {0x02000002U, kKova, kKovaGen2, 0x03000000U, kUnset}) {
        Host().Forget();
        Host().SetModuleType(type);
        Host().AnswerInquiry("90 50 00 20 04 67 01 23 02 FF");
        EXPECT_EQ(0U, Read());
        EXPECT_STREQ("SONY ", Info()->szVendor);
    }
}

} // namespace
} // namespace unit
