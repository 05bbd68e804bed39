// Power, reset, waiting for power-on, registers.
#include "tests/unit/unit_test.h"

#include <cstdio>

namespace unit {
namespace {

class PowerTest : public UnitTest {};

TEST_F(PowerTest, OnlyOneSwitchesOn) {
    for (uint32_t on : {1U, 0U, 2U, 0xFFFFFFFFU}) {
        EXPECT_EQ(0U, SonySetPower(on));
    }
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 00 02 FF", "81 01 04 00 03 FF", "81 01 04 00 03 FF",
                                               "81 01 04 00 03 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG SonySetPower: FUN_ENTRY--param:bPowerOn[1]\n",
                                          "DEBUG SonySetPower: FUN_ENTRY--param:bPowerOn[0]\n",
                                          "DEBUG SonySetPower: FUN_ENTRY--param:bPowerOn[2]\n",
                                          "DEBUG SonySetPower: FUN_ENTRY--param:bPowerOn[4294967295]\n"));
}

TEST_F(PowerTest, ResetIsTheCameraInitialiseCommandAndLogsNothing) {
    EXPECT_EQ(0U, SonyResetCam());
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 19 03 FF"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(PowerTest, ARefusedPutIsTheResult) {
    Host().Fail(Call::Put, 1, kForEver);
    EXPECT_EQ(1U, SonySetPower(1));
    EXPECT_EQ(1U, SonyResetCam());
    EXPECT_EQ(1U, SonySetRegisterVal(0x72, 1));
    EXPECT_EQ(3U, Host().Calls(Call::Put));
    EXPECT_THAT(Host().Log(),
                ElementsAre("DEBUG SonySetPower: FUN_ENTRY--param:bPowerOn[1]\n",
                            "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n",
                            "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n",
                            "DEBUG SonySetRegisterVal: FUN_ENTRY--param:ucRegisterNo[114] ucRegisterVal[1]\n",
                            "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n"));
}

class PowerOnTest : public UnitTest {};

TEST_F(PowerOnTest, AsksEvery100MillisecondsUntilTheCameraIsOn) {
    Host().AnswerInquiry("90 50 03 FF");
    Host().AnswerInquiry("90 50 00 FF");
    Host().AnswerInquiry("90 50 02 FF");
    EXPECT_EQ(0U, SonyWaitPowerOn());
    EXPECT_THAT(Host().Story({Call::Sleep, Call::Send, Call::Log}),
                ElementsAre("DEBUG SonyWaitPowerOn: FUN_ENTRY--param:\n", "sleep 100000",
                            "send 81 09 04 00 FF", "sleep 100000", "send 81 09 04 00 FF", "sleep 100000",
                            "send 81 09 04 00 FF", "INFO SonyWaitPowerOn: Now Power On\n"));
}

TEST_F(PowerOnTest, ASilentCameraIsAskedAgain) {
    Host().OnRecord([](const Event &event) {
        if (event.call == Call::Send && Host().Events(Call::Send).size() == 40) {
            Host().AnswerInquiry("90 50 02 FF");
        }
    });
    EXPECT_EQ(0U, SonyWaitPowerOn());
    EXPECT_EQ(40U * 100000, Clib().Slept());
    EXPECT_EQ(40U * 100000 + 39U * 6000000, Clib().Now());
}

TEST_F(PowerOnTest, AnOldAnswerDoesNotCountTwice) {
    Host().AnswerInquiry("90 50 02 02 FF"); // on: the reply area is zeroed before each inquiry
    EXPECT_EQ(0U, SonyWaitPowerOn());
    Host().Forget();
    Host().OnRecord([](const Event &event) {
        if (event.call == Call::Send && Host().Events(Call::Send).size() == 2) {
            Host().AnswerInquiry("90 60 41 FF");
        }
    });
    EXPECT_EQ(1U, SonyWaitPowerOn()) << "the first inquiry times out, the second is answered by an error";
    EXPECT_THAT(Host().Sent(), SizeIs(2));
}

TEST_F(PowerOnTest, AnErrorReplyOrARefusalEndsTheWait) {
    Host().AnswerInquiry("90 60 41 FF");
    EXPECT_EQ(1U, SonyWaitPowerOn());
    EXPECT_EQ("ERROR SonyWaitPowerOn: ViscaInquiry failed exit\n", Host().Log().back());
    ViscaSetCamCanCtrl(0);
    EXPECT_EQ(1U, SonyWaitPowerOn());
    EXPECT_EQ("ERROR SonyWaitPowerOn: ViscaInquiry failed exit\n", Host().Log().back());
    EXPECT_EQ(200000U, Clib().Slept()) << "it sleeps before it asks";
}

class RegisterTest : public UnitTest {};

TEST_F(RegisterTest, WritesTheValueInTwoNibbles) {
    EXPECT_EQ(0U, SonySetRegisterVal(0x72, 0x15));
    EXPECT_EQ(0U, SonySetRegisterVal(0x7F, 0xFF));
    EXPECT_EQ(0U, SonySetRegisterVal(0x00, 0x00));
    EXPECT_THAT(Host().Commands(),
                ElementsAre("81 01 04 24 72 01 05 FF", "81 01 04 24 7F 0F 0F FF", "81 01 04 24 00 00 00 FF"));
    EXPECT_EQ("DEBUG SonySetRegisterVal: FUN_ENTRY--param:ucRegisterNo[114] ucRegisterVal[21]\n",
              Host().Log().at(0));
}

TEST_F(RegisterTest, AWriteToANumberAbove0x7FIsRefused) {
    for (uint8_t number : {0x80, 0xFF}) {
        Host().Forget();
        EXPECT_EQ(1U, SonySetRegisterVal(number, 1));
        const std::string arguments = "ucRegisterNo[" + std::to_string(number) + "] ucRegisterVal[1]";
        EXPECT_THAT(
            Host().Story({Call::Log, Call::Put}),
            ElementsAre("DEBUG SonySetRegisterVal: FUN_ENTRY--param:" + arguments + "\n",
                        "ERROR SonySetRegisterVal: Invalid arguments, " + arguments + ", fail exit\n"));
    }
}

TEST_F(RegisterTest, ReadsTheValueFromTwoNibbles) {
    uint8_t value = 0xEE;
    Host().AnswerInquiry("90 50 01 05 FF");
    EXPECT_EQ(0U, SonyGetRegisterVal(0x72, &value));
    EXPECT_EQ(0x15, value);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 24 72 FF"));
    char entry[96];
    snprintf(entry, sizeof entry,
             "DEBUG SonyGetRegisterVal: FUN_ENTRY--param:ucRegisterNo[114] pucRegisterVal[%p]\n",
             static_cast<void *>(&value));
    EXPECT_THAT(Host().Log(), ElementsAre(entry));
}

TEST_F(RegisterTest, TheFirstNibbleLosesItsUpperHalfByTruncationTheSecondByMask) {
    uint8_t value = 0;
    Host().AnswerInquiry("90 50 15 F7 FF");
    EXPECT_EQ(0U, SonyGetRegisterVal(0x10, &value));
    EXPECT_EQ(0x57, value);
}

TEST_F(RegisterTest, TheLastRegisterIs0x7F) {
    uint8_t value = 0;
    Host().AnswerInquiry("90 50 01 02 FF");
    EXPECT_EQ(0U, SonyGetRegisterVal(0x7F, &value));
    EXPECT_EQ(0x12, value);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 24 7F FF"));
}

TEST_F(RegisterTest, AReadOfANumberAbove0x7FIsRefusedAndGivesZero) {
    uint8_t value = 0xEE;
    EXPECT_EQ(1U, SonyGetRegisterVal(0x80, &value));
    EXPECT_EQ(0, value);
    EXPECT_THAT(Host().Sent(), IsEmpty());
    EXPECT_EQ("ERROR SonyGetRegisterVal: Invalid arguments ucRegisterNo[128], fail exit\n",
              Host().Log().back());
}

TEST_F(RegisterTest, AFailedInquiryGivesZero) {
    uint8_t value = 0xEE;
    Host().AnswerInquiry("90 60 41 FF");
    EXPECT_EQ(1U, SonyGetRegisterVal(0x72, &value));
    EXPECT_EQ(0, value);
    EXPECT_EQ("ERROR SonyGetRegisterVal: ViscaInquiry failed exit\n", Host().Log().back());
}

TEST_F(RegisterTest, ASilentCameraIsASuccessOfZero) {
    uint8_t value = 0xEE;
    EXPECT_EQ(0U, SonyGetRegisterVal(0x72, &value));
    EXPECT_EQ(0, value);
}

} // namespace
} // namespace unit
