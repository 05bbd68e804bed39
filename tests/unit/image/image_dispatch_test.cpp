// The public layer of image control: each row inside and outside its guard.
#include "tests/unit/image/image_test.h"
#include "tests/unit/image/profiles.h"

#include <cstring>

namespace unit {
namespace {

ExposureParam g_exposure;
WhiteBalanceParam g_white;
ImageEnhanceParam g_enhance;
DrvMsgInfo g_message;
uint32_t g_word;

/** Records that a row that does nothing must not touch. */
void FillRecords() {
    g_exposure = Exposure(7);
    g_white = {2, 3, 4};
    g_enhance = Enhancement();
    g_message = {};
    g_message.ulMsgType = 1;
    g_message.ulMsgCmd = 30;
    g_word = 77;
}

struct Row {
    const char *name;
    uint32_t (*call)();
    const char *packet; /**< first packet for block 0x02000005, queued or asked; empty for none */
    const char *entry;  /**< first log line for it, without addresses; empty where none has to be */
};

const Row kRows[] = {
    {"VISCA_MessageProcess", [] { return VISCA_MessageProcess(&g_message); }, "81 01 04 37 03 00 FF",
     "DEBUG SonyProcSetMsg: FUN_ENTRY--param:ulMsgCmd[30]"},
    {"VISCA_SetExposure", [] { return VISCA_SetExposure(3, 0, &g_exposure); }, "81 01 04 5A 02 FF",
     "DEBUG SONY_SetExposure: FUN_ENTRY--param:ulChannelID[3] ulImageType[0] pstExposure["},
    {"VISCA_GetExposure", [] { return VISCA_GetExposure(3, 0, &g_exposure); }, "81 09 04 4C FF",
     "DEBUG SONY_GetExposure: FUN_ENTRY--param:ulChannelID[3] ulImageType[0] pstExposure["},
    {"VISCA_GetExposureCfg", [] { return VISCA_GetExposureCfg(&g_exposure); }, "", ""},
    {"VISCA_SetWhiteBalance", [] { return VISCA_SetWhiteBalance(3, 0, &g_white); }, "81 01 04 35 00 FF", ""},
    {"VISCA_GetWhiteBalance", [] { return VISCA_GetWhiteBalance(3, 5, &g_white); }, "",
     "DEBUG SONY_GetWhiteBalance: FUN_ENTRY--param:ulChannelID[3] ulImageType[5] pstWb["},
    {"VISCA_GetGain", [] { return VISCA_GetGain(3, &g_word); }, "81 09 04 4C FF", ""},
    {"VISCA_SetImageEnhance", [] { return VISCA_SetImageEnhance(3, 0, &g_enhance); },
     "81 01 04 49 00 00 00 04 FF", ""},
    {"VISCA_SetImageVarFn", [] { return VISCA_SetImageVarFn(3, 4, &g_message); }, "81 01 04 37 03 00 FF", ""},
    {"VISCA_SetBlackWhiteMode", [] { return VISCA_SetBlackWhiteMode(3, 0); }, "81 01 04 51 02 FF",
     "DEBUG SONY_SetBlackWhiteMode: FUN_ENTRY--param:ulChannelID[3] ulBlackWhiteMode[0]"},
    {"VISCA_GetBlackWhiteMode", [] { return VISCA_GetBlackWhiteMode(&g_word); }, "", ""},
};

class ImageDispatchTest : public ImageTest {
  protected:
    ImageDispatchTest() {
        Attach(kSony5);
        FillRecords();
    }
    static std::string FirstPacket() {
        for (const Event &event : Host().Events()) {
            if (event.call == Call::Put || event.call == Call::Send) {
                return event.text.substr(event.text.find("81 "));
            }
        }
        return "";
    }
    static Lines DidNothing(const std::string &name) { return {"DEBUG " + name + ": do nothing\n"}; }
};

TEST_F(ImageDispatchTest, ForwardsForEveryTypeOfTheFamily) {
    Host().AnswerEveryInquiry("90 50 00 00 00 05 FF");
    for (uint32_t type : {0x02000000U, 0x02000001U, 0x02001000U, 0x02012001U, 0x02012A01U, 0x02FFFFFFU}) {
        VISCA_SetCamModuleType(type);
        for (const Row &row : kRows) {
            Attach(kSony5); // what the driver asks the host for is another word
            FillRecords();
            row.call();
            EXPECT_EQ(row.packet, FirstPacket()) << row.name;
            EXPECT_FALSE(Host().Logged(VISCA_LOG_DEBUG, row.name, "do nothing\n"));
            if (*row.entry != '\0') {
                EXPECT_EQ(row.entry, Host().Log().at(0).substr(0, strlen(row.entry)));
            }
        }
    }
}

TEST_F(ImageDispatchTest, DoesNothingOutsideTheFamily) {
    for (uint32_t type : {kUnset, 0U, 0x01FFFFFFU, 0x03000000U, 0x12000001U}) {
        VISCA_SetCamModuleType(type);
        for (const Row &row : kRows) {
            FillRecords();
            const ExposureParam exposure = g_exposure;
            const WhiteBalanceParam white = g_white;
            Host().Forget();
            EXPECT_EQ(0U, row.call()) << row.name;
            EXPECT_EQ(DidNothing(row.name), Host().Log());
            EXPECT_EQ("", FirstPacket());
            EXPECT_EQ(0, memcmp(&exposure, &g_exposure, sizeof exposure));
            EXPECT_EQ(0, memcmp(&white, &g_white, sizeof white));
            EXPECT_EQ(77U, g_word);
        }
        EXPECT_EQ(0U, VISCA_MessageProcess(nullptr));
        EXPECT_EQ(0U, VISCA_GetBlackWhiteMode(nullptr));
    }
}

TEST_F(ImageDispatchTest, ReturnsWhatTheDriverReturned) {
    VISCA_SetCamModuleType(kSony5);
    EXPECT_EQ(1U, VISCA_MessageProcess(nullptr));
    EXPECT_EQ(1U, VISCA_SetExposure(0, 1, &g_exposure));
    EXPECT_EQ(1U, VISCA_GetExposure(0, 1, &g_exposure));
    EXPECT_EQ(1U, VISCA_SetWhiteBalance(0, 1, &g_white));
    EXPECT_EQ(1U, VISCA_SetImageEnhance(0, 1, &g_enhance));
    EXPECT_EQ(1U, VISCA_GetBlackWhiteMode(nullptr));
    Host().AnswerEveryInquiry("90 60 41 FF");
    EXPECT_EQ(1U, VISCA_GetGain(0, &g_word));
    RefuseCommand(1, kForEver);
    EXPECT_EQ(1U, VISCA_SetImageVarFn(0, 0, &g_message));
    EXPECT_EQ(1U, VISCA_SetBlackWhiteMode(0, 2));
}

TEST_F(ImageDispatchTest, AnswersReachTheHost) {
    VISCA_SetCamModuleType(kSony5);
    Host().AnswerEveryInquiry("90 50 00 00 00 05 FF");
    EXPECT_EQ(0U, VISCA_GetExposure(0, 0, &g_exposure));
    EXPECT_EQ(8000U, g_exposure.ulGain);
    EXPECT_EQ(0U, VISCA_GetGain(0, &g_word));
    EXPECT_EQ(8U, g_word);
    VISCA_SetBlackWhiteMode(0, 2);
    EXPECT_EQ(0U, VISCA_GetBlackWhiteMode(&g_word));
    EXPECT_EQ(2U, g_word);
    VISCA_SetWhiteBalance(0, 0, &g_white);
    WhiteBalanceParam white{};
    EXPECT_EQ(0U, VISCA_GetWhiteBalance(0, 0, &white));
    EXPECT_EQ(3, white.lBlueOffset);
    EXPECT_EQ(4, white.lRedOffset);
    VISCA_SetExposure(0, 0, &g_exposure);
    ExposureParam exposure{};
    EXPECT_EQ(0U, VISCA_GetExposureCfg(&exposure));
    EXPECT_EQ(0, memcmp(&exposure, &g_exposure, sizeof exposure));
}

TEST_F(ImageDispatchTest, ReadingAVariableFunctionDoesNothingForEveryModule) {
    for (uint32_t type : {kUnset, 0U, 0x02000001U, 0x02012001U, 0x03000000U}) {
        VISCA_SetCamModuleType(type);
        Host().Forget();
        EXPECT_EQ(0U, VISCA_GetImageVarFn(0, 0, &g_message));
        EXPECT_EQ(0U, VISCA_GetImageVarFn(0, 0, nullptr));
        EXPECT_EQ(
            (Lines{"DEBUG VISCA_GetImageVarFn: do nothing\n", "DEBUG VISCA_GetImageVarFn: do nothing\n"}),
            Host().Log());
    }
}

} // namespace
} // namespace unit
