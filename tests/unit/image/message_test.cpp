// Messages of the host: which handler they reach, and what the host learns.
#include "tests/unit/image/image_test.h"

#include <cstring>

namespace unit {
namespace {

constexpr uint32_t kGet = 0, kSet = 1;

class MessageTest : public ImageTest {
  protected:
    static DrvMsgInfo Message(uint32_t type, uint32_t command, uint32_t channel = 0) {
        DrvMsgInfo message{};
        message.ulMsgType = type;
        message.ulMsgCmd = command;
        message.ulMsgChannel = channel;
        message.ulReserved0 = message.ulReserved1 = 0xDEADBEEF;
        message.ulMsgLen = 8;
        return message;
    }
    static DrvMsgInfo Debug(uint32_t item, uint8_t value) {
        DrvMsgInfo message = Message(kSet, 2, item);
        message.aucMsgData[0] = value;
        message.aucMsgData[1] = 0xEE; // only the first byte counts
        return message;
    }
    static DrvMsgInfo Defog(uint32_t mode, uint32_t sense) {
        DrvMsgInfo message = Message(kSet, 30);
        memcpy(message.aucMsgData, &mode, sizeof mode);
        memcpy(message.aucMsgData + 4, &sense, sizeof sense);
        return message;
    }
    static Outcome Process(DrvMsgInfo message) {
        return Run([&] { return SONY_MessageProcess(&message); });
    }
    static Lines InfoLines() {
        Lines lines;
        for (const Event &event : Host().Events(Call::Log)) {
            if (event.log.level == VISCA_LOG_INFO) {
                lines.push_back(event.text);
            }
        }
        return lines;
    }
};

TEST_F(MessageTest, NoRecordAndAnUnknownTypeAreRefused) {
    EXPECT_EQ(Nothing().Fails().Logs("ERROR SONY_MessageProcess: pstMsgInfo is NULL.\n"),
              Run([] { return SONY_MessageProcess(nullptr); }));
    for (uint32_t type : {2U, 3U, 256U, 257U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Nothing().Fails().Logs("WARN SONY_MessageProcess: Drv msg type(" + std::to_string(type) +
                                         ") no support.\n"),
                  Process(Message(type, 30)));
    }
}

TEST_F(MessageTest, DefogReachesTheCamera) {
    Attach(kKova);
    EXPECT_EQ(Sends({"C8 03", "C9 81"}), Process(Defog(3, 0x81)));
    Attach(kSony5);
    EXPECT_EQ(Sends({"37 02 02"}), Process(Defog(3, 0x81)));
    Attach(kSony1);
    EXPECT_EQ(Nothing().Logs("WARN SonySetDefogMode: not support defog, do nothing!\n"),
              Process(Defog(3, 1)));
}

TEST_F(MessageTest, AFailureOfASetMessageIsLoggedAndSwallowed) {
    Attach(kKova);
    RefuseCommand(1);
    const Outcome mode = {0,
                          Commands({"C8 03"}),
                          {kQueueRefused, "ERROR SonySetDefogMode: ViscaEnQueueCmd() fail exit\n",
                           "ERROR SONY_SetImageVarFn: SonySetDefogMode(0, 3) fail exit\n",
                           "ERROR SonyProcSetMsg: SONY_SetImageVarFn fail, type(1).\n"}};
    EXPECT_EQ(mode, Process(Defog(3, 4)));
    RefuseCommand(2);
    const Outcome sense = {0,
                           Commands({"C8 03", "C9 04"}),
                           {kQueueRefused, "ERROR SonySetDefogSense: ViscaEnQueueCmd() fail exit\n",
                            "ERROR SONY_SetImageVarFn: SonySetDefogSense(0, 4) fail exit\n",
                            "ERROR SonyProcSetMsg: SONY_SetImageVarFn fail, type(1).\n"}};
    EXPECT_EQ(sense, Process(Defog(3, 4)));
    RefuseCommand(1);
    const Outcome debug = {
        0,
        Commands({"CF 01 02 0F 0E"}),
        {kQueueRefused, "ERROR SonyProcIQDebugMsg: ViscaEnQueueCmd() fail exit\n",
         "ERROR SonyProcSetMsg: SonyProcIQDebugMsg fail, ulChannelID(18) ucMsgData(254).\n"}};
    EXPECT_EQ(debug, Process(Debug(18, 254)));
}

TEST_F(MessageTest, OtherCommandsAreIgnored) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        for (uint32_t command : {0U, 1U, 3U, 29U, 31U, 32U, 34U, 258U, 0x1EU + 256U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Nothing(), Process(Message(kSet, command, 0x51)));
        }
        for (uint32_t command : {0U, 1U, 2U, 30U, 31U, 33U, 35U, 290U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Nothing(), Process(Message(kGet, command, 0x51)));
        }
        EXPECT_EQ(Lines(), Host().Sent());
    }
}

// Only a Kova module has a focus value; the length is looked at there alone.
TEST_F(MessageTest, TheFocusValueOfASonyBlockIsNothing) {
    for (uint32_t type : kBlockTypes) {
        for (uint32_t length : {4U, 8U, 0U}) {
            Attach(type);
            DrvMsgInfo message = Message(kGet, 34);
            message.ulMsgLen = length;
            const DrvMsgInfo before = message;
            EXPECT_EQ(Nothing(), Run([&] { return SONY_MessageProcess(&message); }));
            EXPECT_EQ(0, memcmp(&before, &message, sizeof message));
            EXPECT_EQ(Lines(), Host().Sent());
        }
    }
}

TEST_F(MessageTest, TheHalvesLogTheirEntry) {
    const std::string entry = "FUN_ENTRY--param:ulMsgCmd[29] ulMsgChannel[7] ulMsgLens[8]\n";
    DrvMsgInfo message = Message(kSet, 29, 7);
    Host().Forget();
    EXPECT_EQ(0U, SonyProcSetMsg(&message));
    EXPECT_EQ(0U, SonyProcGetMsg(&message));
    EXPECT_EQ(0U, SONY_MessageProcess(&message));
    message.ulMsgType = kGet;
    EXPECT_EQ(0U, SONY_MessageProcess(&message));
    EXPECT_EQ((Lines{"DEBUG SonyProcSetMsg: " + entry, "DEBUG SonyProcGetMsg: " + entry,
                     "DEBUG SonyProcSetMsg: " + entry, "DEBUG SonyProcGetMsg: " + entry}),
              Host().Log());
}

TEST_F(MessageTest, ImageTuningIsSentInNibblesForEveryModule) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(Sends({"CF 00 00 00 00"}), Process(Debug(0, 0)));
            EXPECT_EQ(Sends({"CF 01 02 0F 0E"}), Process(Debug(0x12, 0xFE)));
            EXPECT_EQ(Sends({"CF 0F 0F 0F 0F"}), Process(Debug(0xFFFFFFFF, 0xFF)));
            EXPECT_EQ(Sends({"CF 03 04 00 01"}), Process(Debug(0x1234, 1))) << "low byte of the item";
            EXPECT_EQ(Sends({"CF 05 01 01 0A"}), Process(Debug(0x51, 0x1A)));
            EXPECT_EQ(Sends({"CF 05 00 01 0B"}), Process(Debug(0x50, 0x1B)));
            EXPECT_EQ(Sends({"CF 05 01 01 0B"}), Process(Debug(0x151, 0x1B))) << "another item than 0x51";
        }
        EXPECT_EQ(Lines(), Host().Sent()) << "nothing is asked";
    }
}

TEST_F(MessageTest, ImageTuningByItselfTellsItsArgumentsAndItsFailure) {
    EXPECT_EQ(Sends({"CF 0A 0B 0C 0D"}), Run([] { return SonyProcIQDebugMsg(0x1AB, 0x2CD); }));
    EXPECT_EQ(Lines{"DEBUG SonyProcIQDebugMsg: FUN_ENTRY--param:ulChannelID[427] ulMsgData[717]\n"},
              Host().Log());
    RefuseCommand(1);
    EXPECT_EQ(IsRefused({"CF 00 01 00 02"}, "ERROR SonyProcIQDebugMsg: ViscaEnQueueCmd() fail exit\n"),
              Run([] { return SonyProcIQDebugMsg(1, 2); }));
}

// A Sony block has no luminance to tell: 0.
TEST_F(MessageTest, OneTuningItemTellsLuminanceAndGainPosition) {
    const struct {
        const char *reply, *line;
    } rows[] = {
        {"90 50 00 00 00 05 FF", "INFO SonyProcSetMsg: *****IQ info luma[0], gain[5]\n"},
        {"90 50 00 00 00 00 FF", "INFO SonyProcSetMsg: *****IQ info luma[0], gain[1]\n"},
        {"90 50 00 00 00 01 FF", "INFO SonyProcSetMsg: *****IQ info luma[0], gain[1]\n"},
        {"90 50 00 00 00 0F FF", "INFO SonyProcSetMsg: *****IQ info luma[0], gain[15]\n"},
        {"90 60 41 FF", "INFO SonyProcSetMsg: *****IQ info luma[0], gain[1]\n"},
    };
    for (const auto &row : rows) {
        Host().AnswerInquiry(row.reply);
        const Outcome outcome = Process(Debug(0x51, 0x1B));
        EXPECT_EQ(0U, outcome.result);
        EXPECT_EQ(Commands({"CF 05 01 01 0B"}), outcome.packets);
        EXPECT_EQ(Lines{"81 09 04 4C FF"}, Host().Sent());
        EXPECT_EQ(Lines{row.line}, InfoLines());
        EXPECT_THAT(Host().Log(), Contains(::testing::StartsWith(
                                      "DEBUG KOVA_GetCurLuma: FUN_ENTRY--param:ulChannelID[0] ")));
    }
}

TEST_F(MessageTest, LuminanceAndGainAreToldAlsoWhenTheTuningWasRefused) {
    Host().AnswerInquiry("90 50 00 00 00 05 FF");
    RefuseCommand(1);
    EXPECT_EQ(0U, Process(Debug(0x51, 0x1B)).result);
    EXPECT_EQ(Lines{"INFO SonyProcSetMsg: *****IQ info luma[0], gain[5]\n"}, InfoLines());
}

} // namespace
} // namespace unit
