// Sensor offset, IR cut, clock, low delay.
#include "tests/unit/kova/behaviour_test.h"

#include <climits>

namespace unit {
namespace {

class SensorTest : public KovaTest {
  protected:
    struct Offset {
        uint32_t result;
        int32_t x, y;
    };
    static Offset Read(const std::string &reply) {
        Answer(reply);
        Offset offset{0, 4711, 4712};
        offset.result = KOVA_GetSensorOffset(&offset.x, &offset.y);
        return offset;
    }
    static void Reads(int32_t x, int32_t y, const std::string &reply) {
        const Offset offset = Read(reply);
        EXPECT_EQ(0U, offset.result) << reply;
        EXPECT_EQ(x, offset.x) << reply;
        EXPECT_EQ(y, offset.y) << reply;
    }
};

TEST_F(SensorTest, TheOffsetIsReadFromFourNibblesEach) {
    Reads(-2, 300, "90 50 0F 0F 0F 0E 00 01 02 0C FF");
    EXPECT_EQ((Lines{"81 09 04 BD FF"}), Host().Sent());
    EXPECT_EQ((Lines{"DEBUG KOVA_GetSensorOffset: FUN_ENTRY--param:",
                     "INFO KOVA_GetSensorOffset: Kova cur offset(-2, 300)"}),
              LogOf("KOVA_GetSensorOffset"));
    Reads(-32768, 32767, "90 50 08 00 00 00 07 0F 0F 0F FF");
    Reads(0x1234, -0x1234, "90 50 01 02 03 04 0E 0D 0C 0C FF");
    Reads(0, -1, "90 5F 00 00 00 00 0F 0F 0F 0F FF");
}

// The bytes are laid over one another, not added and not masked; what lies above 16 bits is cut.
TEST_F(SensorTest, UpperNibblesOfAnOffsetAreLaidOverTheDigitInFront) {
    Reads(0x1000, 0x0F00, "90 50 01 10 00 00 00 0F F0 00 FF");
    Reads(0x10, -0x1000, "90 50 F0 00 01 10 FF 00 00 00 FF");
    Reads(-1, -1, "90 50 FF FF FF FF FF FF FF FF FF");
}

TEST_F(SensorTest, EveryByteOfAnOffsetReplyIsTaken) {
    for (unsigned position = 0; position < 8; ++position) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Bytes reply(16, 0);
            reply[0] = 0x90, reply[1] = 0x50, reply[2 + position] = static_cast<uint8_t>(value);
            const auto expected = static_cast<int16_t>(value << (12 - 4 * (position % 4)));
            Reads(position < 4 ? expected : 0, position < 4 ? 0 : expected, Hex(reply));
        }
    }
}

TEST_F(SensorTest, ASilentModuleHasNoOffset) {
    Reads(0, 0, "");
    EXPECT_EQ("INFO KOVA_GetSensorOffset: Kova cur offset(0, 0)", LogOf("KOVA_GetSensorOffset").back());
}

TEST_F(SensorTest, AFailedQuestionLeavesTheOffsetsAlone) {
    const Offset offset = Read("90 60 41 FF");
    EXPECT_EQ(1U, offset.result);
    EXPECT_EQ(4711, offset.x);
    EXPECT_EQ(4712, offset.y);
    EXPECT_THAT(Story(),
                ElementsAre("send 81 09 04 BD FF", "ERROR KOVA_GetSensorOffset: ViscaInquiry failed exit"));
}

// For a receiver that hands error replies through: older modules do not know the question.
TEST_F(SensorTest, AnErrorReplyHandedThroughIsNoOffset) {
    g_inquiry = [](ViscaPkt *reply) {
        *reply = Packet("90 60 02 0F 0F 0F 0F 0F 0F FF");
        return 0U;
    };
    Reads(0, 0, "");
    EXPECT_THAT(Story(),
                ElementsAre("WARN KOVA_GetSensorOffset: Kova curret ver unsupport get sensor offset"));
    g_inquiry = [](ViscaPkt *reply) { // with a socket it is another reply
        *reply = Packet("90 61 00 00 00 01 00 00 00 02 FF");
        return 0U;
    };
    Reads(1, 2, "");
}

TEST_F(SensorTest, BothOffsetsAreWanted) {
    int32_t value = 5;
    EXPECT_EQ(1U, KOVA_GetSensorOffset(nullptr, &value));
    EXPECT_EQ(1U, KOVA_GetSensorOffset(&value, nullptr));
    EXPECT_EQ(1U, KOVA_GetSensorOffset(nullptr, nullptr));
    EXPECT_EQ(5, value);
    EXPECT_THAT(Story(), ElementsAre("ERROR KOVA_GetSensorOffset: plOffsetX == NULL",
                                     "ERROR KOVA_GetSensorOffset: plOffsetY == NULL",
                                     "ERROR KOVA_GetSensorOffset: plOffsetX == NULL"));
    EXPECT_EQ("DEBUG KOVA_GetSensorOffset: FUN_ENTRY--param:", LogOf("KOVA_GetSensorOffset").front());
}

// Unlike the orientation's, this power cycle asks at once whether the module is on again.
TEST_F(SensorTest, AnOffsetIsSetWithAPowerCycle) {
    const auto said = [](const std::string &line) { return "ERROR KOVA_SetSensorOffset: " + line; };
    const Lines not_on = {"ERROR SonyWaitPowerOn: ViscaInquiry failed exit",
                          said("SonyWaitPowerOn fail exit")};
    const Steps steps = {
        Put("BD 0F 0F 0F 0E 00 01 02 0C 07", {said("set kova sensor offset, ViscaEnQueueCmd fail exit")}),
        Put("00 03", {said("SonySetPower(BOOL_FALSE) fail exit")}),
        Pause(1000),
        Put("00 02", {said("SonySetPower(BOOL_TRUE) fail exit")}),
        Pause(100),
        Ask("00", "90 50 03 FF", not_on),
        Pause(100),
        Ask("00", "90 50 02 FF", not_on),
        Says("INFO SonyWaitPowerOn: Now Power On")};
    for (uint32_t ability : {0U, 0x08U}) {
        Follows(
            steps, [] { return KOVA_SetSensorOffset(-2, 300, 7); },
            [&] {
                Attach(kKova);
                KovaSetCamAbility(ability);
            });
    }
    EXPECT_EQ("DEBUG KOVA_SetSensorOffset: FUN_ENTRY--param:", LogOf("KOVA_SetSensorOffset").front());
}

TEST_F(SensorTest, OffsetsAndFlagAreCut) {
    const struct {
        int32_t x, y;
        uint32_t flag;
        const char *packet;
    } rows[] = {
        {0, 0, 0, "BD 00 00 00 00 00 00 00 00 00"},
        {0x12345, -0x12345, 0x1AB, "BD 02 03 04 05 0D 0C 0B 0B AB"},
        {INT_MIN, INT_MAX, 0xFFFFFFFF, "BD 00 00 00 00 0F 0F 0F 0F FF"},
        {-32768, 32767, 0x100, "BD 08 00 00 00 07 0F 0F 0F 00"},
    };
    for (const auto &row : rows) {
        Attach(kKova);
        Answer("90 50 02 FF");
        EXPECT_EQ(0U, KOVA_SetSensorOffset(row.x, row.y, row.flag));
        EXPECT_EQ(Packets({row.packet})[0], Host().Commands()[0]);
    }
}

TEST_F(SensorTest, OnlyOneSwitchesTheIrCutFilterOn) {
    for (int32_t value : {1, 0, 2, -1, 257, INT_MIN, INT_MAX}) {
        Attach(kKova);
        EXPECT_EQ(0U, KOVA_SetIRcut(value));
        EXPECT_EQ(Packets({value == 1 ? "B4 04" : "B4 05"}), Host().Commands()) << value;
        EXPECT_EQ((Lines{"DEBUG KOVA_SetIRcut: FUN_ENTRY--param:bIsEnable[" + std::to_string(value) + "]"}),
                  LogOf("KOVA_SetIRcut"));
    }
}

TEST_F(SensorTest, TheClockIsSetInEightNibblesTheHighestFirst) {
    for (uint32_t seconds : {0x12345678U, 0U, 0xFFFFFFFFU, 0x80000001U}) {
        EXPECT_EQ(0U, KOVA_SetTime(seconds));
    }
    EXPECT_EQ(Packets({"A4 01 02 03 04 05 06 07 08", "A4 00 00 00 00 00 00 00 00",
                       "A4 0F 0F 0F 0F 0F 0F 0F 0F", "A4 08 00 00 00 00 00 00 01"}),
              Host().Commands());
}

TEST_F(SensorTest, AnythingButZeroSwitchesLowDelayOn) {
    for (uint32_t value : {0U, 1U, 2U, 256U, 0xFFFFFFFFU}) {
        Attach(kKova);
        EXPECT_EQ(0U, KOVA_SetLowDelayMode(value));
        EXPECT_EQ(Packets({value != 0 ? "BF 02" : "BF 03"}), Host().Commands()) << value;
    }
}

TEST_F(SensorTest, ARefusedCommandIsAFailure) {
    const auto fresh = [] { Attach(kKova); };
    const auto said = [](const std::string &who) {
        return Lines{"ERROR " + who + ": ViscaEnQueueCmd() fail exit"};
    };
    Follows(
        {Put("B4 04", said("KOVA_SetIRcut"))}, [] { return KOVA_SetIRcut(1); }, fresh);
    Follows(
        {Put("B4 05", said("KOVA_SetIRcut"))}, [] { return KOVA_SetIRcut(0); }, fresh);
    Follows(
        {Put("A4 00 00 00 00 00 00 00 09", said("KOVA_SetTime"))}, [] { return KOVA_SetTime(9); }, fresh);
    Follows(
        {Put("BF 02", said("KOVA_SetLowDelayMode"))}, [] { return KOVA_SetLowDelayMode(1); }, fresh);
    Follows(
        {Put("BF 03", said("KOVA_SetLowDelayMode"))}, [] { return KOVA_SetLowDelayMode(0); }, fresh);
}

} // namespace
} // namespace unit
