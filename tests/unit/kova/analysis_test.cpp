// Luma, scene, focus value, and the two as messages of the host.
#include "tests/unit/kova/behaviour_test.h"

#include <cstring>

namespace unit {
namespace {

class AnalysisTest : public KovaTest {
  protected:
    using Reader = uint32_t (*)(uint32_t, int32_t *);
    static void Reads(Reader reader, int32_t expected, const std::string &reply) {
        Answer(reply);
        int32_t value = 4711;
        EXPECT_EQ(0U, reader(0, &value)) << reply;
        EXPECT_EQ(expected, value) << reply;
    }
    /** A reply of zeros with one byte at a data position. */
    static std::string ReplyWith(unsigned position, unsigned value) {
        Bytes reply(16, 0);
        reply[0] = 0x90, reply[1] = 0x50, reply[2 + position] = static_cast<uint8_t>(value);
        return Hex(reply);
    }
    static void FailsQuietly(Reader reader, const std::string &packet, const std::string &line) {
        int32_t value = 4711;
        Answer("90 60 41 FF");
        EXPECT_EQ(1U, reader(0, &value));
        EXPECT_EQ(4711, value);
        EXPECT_EQ((Lines{"send " + packet, line}), Story());
        ViscaSetCamCanCtrl(0);
        EXPECT_EQ(1U, reader(0, &value));
        EXPECT_EQ(1U, reader(0, nullptr));
    }
};

// --- luma

TEST_F(AnalysisTest, LumaIsTheSumOfFourWeightedBytes) {
    Reads(KOVA_GetCurLuma, 0x1234, "90 50 01 02 03 04 FF");
    EXPECT_EQ((Lines{"81 09 04 CE FF"}), Host().Sent());
    Reads(KOVA_GetCurLuma, 1114095, "90 50 FF FF FF FF FF"); // 255 * 0x1111
    Reads(KOVA_GetCurLuma, 0x2000, "90 50 01 10 00 00 FF");
    Reads(KOVA_GetCurLuma, 0, "");
}

TEST_F(AnalysisTest, EveryByteOfALumaReplyIsTaken) {
    const int32_t weights[] = {0x1000, 0x100, 0x10, 1, 0, 0};
    for (unsigned position = 0; position < 6; ++position) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Reads(KOVA_GetCurLuma, weights[position] * static_cast<int32_t>(value),
                  ReplyWith(position, value));
        }
    }
}

TEST_F(AnalysisTest, LumaIsToldInTheLogWhateverThePointer) {
    int32_t luma = 0;
    for (int32_t *pointer : {&luma, static_cast<int32_t *>(nullptr)}) {
        Attach(kKova);
        Answer("90 50 0A 0B 1C FD FF");
        EXPECT_EQ(0U, KOVA_GetCurLuma(7, pointer));
        EXPECT_EQ(
            (Lines{"DEBUG KOVA_GetCurLuma: FUN_ENTRY--param:ulChannelID[7] plLuma[" + Address(pointer) + "]",
                   "DEBUG KOVA_GetCurLuma: pLumaVal  0xa 0xb 0x1c 0xfd"}),
            LogOf("KOVA_GetCurLuma"));
    }
}

TEST_F(AnalysisTest, OtherModulesHaveNoLuma) {
    for (uint32_t type : kOtherTypes) {
        Attach(type);
        Reads(KOVA_GetCurLuma, 0, "90 50 01 02 03 04 FF");
        EXPECT_EQ(0U, KOVA_GetCurLuma(0, nullptr));
        EXPECT_EQ(Lines(), Story());
    }
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        Reads(KOVA_GetCurLuma, 1, "90 50 00 00 00 01 FF");
    }
}

TEST_F(AnalysisTest, AFailedLumaStaysAsItWas) {
    FailsQuietly(KOVA_GetCurLuma, "81 09 04 CE FF", "ERROR KOVA_GetCurLuma: ViscaInquiry failed exit");
}

// --- scene

TEST_F(AnalysisTest, ScenesHaveTheirCodes) {
    const struct {
        uint32_t scene;
        const char *code;
    } rows[] = {{0, "0F"}, {1, "01"}, {2, "00"}, {3, "03"},  {4, "02"}, {5, "04"},
                {6, "05"}, {7, "06"}, {8, "07"}, {80, "0D"}, {81, "0E"}};
    for (const auto &row : rows) {
        Follows(
            {Put(std::string("CD ") + row.code, {"ERROR KOVA_SetSceneMode: ViscaEnQueueCmd() fail exit"})},
            [&] { return KOVA_SetSceneMode(row.scene); }, [] { Attach(kKova); });
        EXPECT_EQ("DEBUG KOVA_SetSceneMode: FUN_ENTRY--param:ulSceneType[" + std::to_string(row.scene) + "]",
                  LogOf("KOVA_SetSceneMode").front());
    }
}

TEST_F(AnalysisTest, OtherScenesAreRefused) {
    std::vector<uint32_t> scenes = {256, 257, 336, 0x80000000, 0xFFFFFFFF};
    for (uint32_t scene = 9; scene < 256; ++scene) {
        scenes.push_back(scene);
    }
    for (uint32_t scene : scenes) {
        if (scene == 80 || scene == 81) {
            continue;
        }
        Host().Forget();
        EXPECT_EQ(1U, KOVA_SetSceneMode(scene));
        EXPECT_EQ(
            Lines{"ERROR KOVA_SetSceneMode: unsupport ulSceneType[" + std::to_string(scene) + "], fail exit"},
            Story());
    }
}

TEST_F(AnalysisTest, OtherModulesHaveNoScene) {
    for (uint32_t type : kOtherTypes) {
        Attach(type);
        EXPECT_EQ(0U, KOVA_SetSceneMode(1));
        EXPECT_EQ(0U, KOVA_SetSceneMode(9));
        EXPECT_EQ(Lines(), Story());
    }
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        EXPECT_EQ(0U, KOVA_SetSceneMode(1));
        EXPECT_EQ(Packets({"CD 01"}), Host().Commands());
    }
}

// --- focus value

TEST_F(AnalysisTest, TheFocusValueIsFourWholeBytesTheHighestFirst) {
    Reads(KovaGetImageFocusValue, 0x12345678, "90 50 12 34 56 78 FF");
    EXPECT_EQ((Lines{"81 09 04 AD FF"}), Host().Sent());
    Reads(KovaGetImageFocusValue, -1, "90 50 FF FF FF FF FF");
    Reads(KovaGetImageFocusValue, INT32_MIN, "90 50 80 00 00 00 FF");
    Reads(KovaGetImageFocusValue, 0, "");
    Host().SetModuleType(0x02000001); // whoever asks for it by this name knows his module
    Reads(KovaGetImageFocusValue, 2, "90 50 00 00 00 02 FF");
}

TEST_F(AnalysisTest, EveryByteOfAFocusReplyIsTaken) {
    for (unsigned position = 0; position < 6; ++position) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            const uint32_t expected = position < 4 ? value << (24 - 8 * position) : 0;
            Reads(KovaGetImageFocusValue, static_cast<int32_t>(expected), ReplyWith(position, value));
        }
    }
}

TEST_F(AnalysisTest, TheFocusValueIsToldInTheLogWhateverThePointer) {
    int32_t value = 0;
    for (int32_t *pointer : {&value, static_cast<int32_t *>(nullptr)}) {
        Attach(kKova);
        Answer("90 50 0A 0B 1C FD FF");
        EXPECT_EQ(0U, KovaGetImageFocusValue(7, pointer));
        EXPECT_EQ((Lines{"DEBUG KovaGetImageFocusValue: FUN_ENTRY--param:ulChannelID[7] psZoom[" +
                             Address(pointer) + "]",
                         "DEBUG KovaGetImageFocusValue: plFocusValue  0xa 0xb 0x1c 0xfd"}),
                  LogOf("KovaGetImageFocusValue"));
    }
}

TEST_F(AnalysisTest, AFailedFocusValueStaysAsItWas) {
    FailsQuietly(KovaGetImageFocusValue, "81 09 04 AD FF",
                 "ERROR KovaGetImageFocusValue: ViscaInquiry failed exit");
}

// --- messages of the host

class KovaMessageTest : public AnalysisTest {
  protected:
    static DrvMsgInfo FocusValue(uint32_t length = 4) {
        DrvMsgInfo message = {0, 34, 3, 0xAAAAAAAA, 0xBBBBBBBB, length, {}};
        memset(message.aucMsgData, 0xEE, sizeof message.aucMsgData);
        return message;
    }
    static std::string Data(const DrvMsgInfo &message) {
        return Hex(Bytes(message.aucMsgData, message.aucMsgData + 8));
    }
};

TEST_F(KovaMessageTest, TheFocusValueIsTakenAsTextItsLowestByteFirst) {
    const struct {
        const char *reply, *data;
        uint32_t length;
    } rows[] = {
        {"90 50 00 00 12 34 FF", "34 12 00 00 EE EE EE EE", 3},
        {"90 50 12 34 56 78 FF", "78 56 34 12 00 EE EE EE", 5},
        {"90 50 FF FF FF FF FF", "FF FF FF FF 00 EE EE EE", 5},
        {"90 50 00 34 56 78 FF", "78 56 34 00 EE EE EE EE", 4},
        {"90 50 12 34 00 78 FF", "78 00 34 12 EE EE EE EE", 2},
        {"90 50 12 34 56 00 FF", "00 56 34 12 EE EE EE EE", 1},
        {"90 50 00 00 00 00 FF", "00 00 00 00 EE EE EE EE", 1},
        {"", "00 00 00 00 EE EE EE EE", 1},
    };
    for (const auto &row : rows) {
        Answer(row.reply);
        DrvMsgInfo message = FocusValue();
        EXPECT_EQ(0U, SONY_MessageProcess(&message));
        EXPECT_EQ(row.length, message.ulMsgLen) << row.reply;
        EXPECT_EQ(row.data, Data(message));
        EXPECT_EQ(0xAAAAAAAA, message.ulReserved0);
        EXPECT_EQ(0xBBBBBBBB, message.ulReserved1);
    }
}

TEST_F(KovaMessageTest, NoReplyMakesTheTextLongerThanFour) {
    for (unsigned position = 0; position < 4; ++position) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Bytes reply = FromHex("90 50 41 41 41 41 FF");
            reply[2 + position] = static_cast<uint8_t>(value);
            Answer(Hex(reply));
            DrvMsgInfo message = FocusValue();
            EXPECT_EQ(0U, KOVA_GetImageFocusValue(0, &message));
            EXPECT_EQ(value == 0 ? 4 - position : 5U, message.ulMsgLen);
            EXPECT_EQ("EE EE EE", Data(message).substr(15));
        }
    }
}

TEST_F(KovaMessageTest, EveryOtherLengthIsWrong) {
    for (uint32_t length : {0U, 1U, 3U, 5U, 8U, 260U, 0xFFFFFFFFU}) {
        Host().Forget();
        DrvMsgInfo message = FocusValue(length);
        const DrvMsgInfo before = message;
        EXPECT_EQ(1U, SONY_MessageProcess(&message));
        EXPECT_EQ(0, memcmp(&before, &message, sizeof message));
        EXPECT_EQ((Lines{"ERROR KOVA_GetImageFocusValue: pstMsgInfo->ulMsgLen wrong",
                         "ERROR SonyProcGetMsg: SONY_SetImageVarFn fail, type(0).",
                         "ERROR SONY_MessageProcess: SonyProcGetMsg fail, type(0), errno(1)."}),
                  Story());
    }
}

TEST_F(KovaMessageTest, AFailedFocusValueReachesTheHost) {
    Answer("90 60 41 FF");
    DrvMsgInfo message = FocusValue();
    const DrvMsgInfo before = message;
    EXPECT_EQ(1U, SONY_MessageProcess(&message));
    EXPECT_EQ(0, memcmp(&before, &message, sizeof message));
    EXPECT_EQ((Lines{"send 81 09 04 AD FF", "ERROR KovaGetImageFocusValue: ViscaInquiry failed exit",
                     "ERROR KOVA_GetImageFocusValue: KovaGetImageFocusValue fail, type(34), errno(1).",
                     "ERROR SonyProcGetMsg: SONY_SetImageVarFn fail, type(0).",
                     "ERROR SONY_MessageProcess: SonyProcGetMsg fail, type(0), errno(1)."}),
              Story());
}

TEST_F(KovaMessageTest, TheFocusMessageLogsItsEntry) {
    Answer("90 50 00 00 00 01 FF");
    DrvMsgInfo message = FocusValue();
    EXPECT_EQ(0U, SONY_MessageProcess(&message));
    EXPECT_EQ(Lines{"DEBUG SonyProcGetMsg: FUN_ENTRY--param:ulMsgCmd[34] ulMsgChannel[3] ulMsgLens[4]"},
              LogOf("SonyProcGetMsg"));
    EXPECT_EQ(Lines{"DEBUG KOVA_GetImageFocusValue: FUN_ENTRY--param:ulChannelID[3] psZoom[" +
                    Address(&message) + "]"},
              LogOf("KOVA_GetImageFocusValue"));
    EXPECT_EQ("DEBUG KovaGetImageFocusValue: plFocusValue  0x0 0x0 0x0 0x1",
              LogOf("KovaGetImageFocusValue").back());
}

// One image-tuning item has luma and gain told.
TEST_F(KovaMessageTest, LumaAndGainAreToldAfterTheirTuningItem) {
    const struct {
        const char *luma, *gain, *line;
    } rows[] = {
        {"90 50 01 02 03 04 FF", "90 50 00 00 00 05 FF", "luma[4660], gain[5]"},
        {"90 50 FF FF FF FF FF", "90 50 00 00 0F 0F FF", "luma[1114095], gain[255]"},
        {"90 50 00 00 00 00 FF", "90 50 00 00 00 00 FF", "luma[0], gain[1]"},
        {"", "", "luma[0], gain[1]"},
    };
    for (const auto &row : rows) {
        Attach(kKova);
        Answers({row.luma, row.gain});
        DrvMsgInfo message = {1, 2, 0x51, 0, 0, 1, {0x1B}};
        EXPECT_EQ(0U, SONY_MessageProcess(&message));
        EXPECT_EQ(Events({Put("CF 05 01 01 0B"), Ask("CE", ""), Ask("4C", ""),
                          Says(std::string("INFO SonyProcSetMsg: *****IQ info ") + row.line)}),
                  Story());
    }
}

TEST_F(KovaMessageTest, LumaAndGainThatFailReadAsNothing) {
    Answers({"90 60 41 FF", "90 50 00 00 00 02 FF"});
    RefusePut(1);
    DrvMsgInfo message = {1, 2, 0x51, 0, 0, 1, {0x1B}};
    EXPECT_EQ(0U, SONY_MessageProcess(&message));
    EXPECT_EQ((Lines{Put("CF 05 01 01 0B").event, "ERROR SonyProcIQDebugMsg: ViscaEnQueueCmd() fail exit",
                     "ERROR SonyProcSetMsg: SonyProcIQDebugMsg fail, ulChannelID(81) ucMsgData(27).",
                     "send 81 09 04 CE FF", "ERROR KOVA_GetCurLuma: ViscaInquiry failed exit",
                     "send 81 09 04 4C FF", "INFO SonyProcSetMsg: *****IQ info luma[0], gain[2]"}),
              Story());
}

} // namespace
} // namespace unit
