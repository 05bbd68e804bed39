// Building packets, queueing commands, waiting for the queue, dumping packets.
#include "tests/unit/unit_test.h"

#include <cstring>

namespace unit {
namespace {

class PacketTest : public UnitTest {
  protected:
    static ViscaPkt Full() { return Packet("81 01 04 47 01 02 03 04 05 06 07 08 09 0A 0B 0C"); }
};

TEST_F(PacketTest, StartsWithTheHeaderOfCameraOneAndLeavesTheOtherBytes) {
    ViscaPkt packet;
    memset(&packet, 0xA5, sizeof packet);
    EXPECT_EQ(0U, ViscaInitPkt(&packet));
    EXPECT_EQ(0x81, packet.aucData[0]);
    EXPECT_EQ(0xA5, packet.aucData[1]);
    EXPECT_EQ(0xA5, packet.aucData[15]);
    EXPECT_EQ(1U, packet.ulLength);
    EXPECT_EQ(0U, ViscaInitPkt4Kova(&packet));
    EXPECT_EQ(0x71, packet.aucData[0]);
    EXPECT_EQ(0xA5, packet.aucData[1]);
    EXPECT_EQ(1U, packet.ulLength);
}

TEST_F(PacketTest, AppendsBytesUpToSixteen) {
    ViscaPkt packet{};
    ViscaInitPkt(&packet);
    for (uint8_t byte = 1; byte < 16; ++byte) {
        ViscaAppendByte(byte, &packet);
        EXPECT_EQ(byte, packet.aucData[byte]);
        EXPECT_EQ(byte + 1U, packet.ulLength);
    }
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(PacketTest, AFullPacketStaysAsItIsWhenAByteIsAppended) {
    ViscaPkt packet = Full();
    ViscaAppendByte(0xEE, &packet);
    const ViscaPkt before = Full();
    EXPECT_EQ(0, memcmp(&before, &packet, sizeof packet));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaAppendByte: Visca packet too long, fail exit\n"));
}

TEST_F(PacketTest, ACountBeyondTheRecordIsFullToo) {
    ViscaPkt packet = Full();
    packet.ulLength = 0xFFFFFFFF;
    ViscaAppendByte(0xEE, &packet);
    EXPECT_EQ(0xFFFFFFFF, packet.ulLength);
    EXPECT_EQ(0x0C, packet.aucData[15]);
}

TEST_F(PacketTest, ACommandIsQueuedWithItsTerminatorAsAWholeRecord) {
    ViscaPkt packet;
    memset(&packet, 0xA5, sizeof packet);
    ViscaInitPkt(&packet);
    for (uint8_t byte : {0x01, 0x04, 0x07, 0x26}) {
        ViscaAppendByte(byte, &packet);
    }
    EXPECT_EQ(0U, ViscaEnQueueCmd(&packet));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 07 26 FF"));
    EXPECT_EQ(6U, packet.ulLength);
    EXPECT_EQ(0xFF, packet.aucData[5]);
    const Event put = Host().Events(Call::Put).at(0);
    ASSERT_EQ(20U, put.bytes.size());
    EXPECT_EQ("81 01 04 07 26 FF A5 A5 A5 A5 A5 A5 A5 A5 A5 A5", Hex(put.bytes).substr(0, 47));
    uint32_t length = 0;
    memcpy(&length, &put.bytes[16], sizeof length); // in the machine's own byte order
    EXPECT_EQ(6U, length);
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(PacketTest, ANullPacketIsRefusedBeforeAnythingElseIsLookedAt) {
    ViscaSetCamCanCtrl(0);
    EXPECT_EQ(2U, ViscaEnQueueCmd(nullptr));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaEnQueueCmd: pstQueueElem == NULL\n"));
}

TEST_F(PacketTest, ACommandIsRefusedUnlessCanControlIsExactlyOne) {
    for (uint32_t flag : {0U, 2U, 0xFFFFFFFFU}) {
        Host().Forget();
        ViscaSetCamCanCtrl(flag);
        ViscaMarkUpdatingCam(1); // looked at later only
        ViscaPkt packet = Packet("81 01 04 07 00");
        EXPECT_EQ(1U, ViscaEnQueueCmd(&packet));
        EXPECT_EQ(5U, packet.ulLength);
        EXPECT_THAT(Host().Commands(), IsEmpty());
        EXPECT_THAT(Host().Log(), ElementsAre("WARN ViscaEnQueueCmd: Cam Can't Ctrl return directly\n"));
    }
}

TEST_F(PacketTest, ACommandIsDroppedWhileAnUpgradeOrALogExportOwnsTheLine) {
    for (const auto mark : {ViscaMarkUpdatingCam, ViscaMarkExportLog}) {
        Host().Forget();
        mark(1);
        ViscaPkt packet = Packet("81 01 04 07 00");
        EXPECT_EQ(1U, ViscaEnQueueCmd(&packet));
        EXPECT_EQ(5U, packet.ulLength);
        EXPECT_THAT(Host().Commands(), IsEmpty());
        EXPECT_THAT(Host().Log(), ElementsAre("DEBUG ViscaEnQueueCmd: ViscaIsCamComBusy true\n"));
        mark(0);
    }
}

TEST_F(PacketTest, AFullPacketIsQueuedWithoutTerminator) {
    ViscaPkt packet = Full();
    EXPECT_EQ(0U, ViscaEnQueueCmd(&packet));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 47 01 02 03 04 05 06 07 08 09 0A 0B 0C"));
    ASSERT_THAT(Host().Events(Call::Log), SizeIs(1));
    EXPECT_EQ("Visca packet too long, fail exit\n", Host().Events(Call::Log)[0].log.message);
    EXPECT_EQ(VISCA_LOG_ERROR, Host().Events(Call::Log)[0].log.level);
}

TEST_F(PacketTest, ARefusedPutIsReportedOnceAndNotTriedAgain) {
    Host().Fail(Call::Put, 1, kForEver);
    ViscaPkt packet = Packet("81 01 04 07 00");
    EXPECT_EQ(1U, ViscaEnQueueCmd(&packet));
    EXPECT_THAT(Host().Commands(), SizeIs(1));
    EXPECT_EQ(6U, packet.ulLength);
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n"));
}

TEST_F(PacketTest, AFullQueueRefusesAndKeepsWhatItHolds) {
    Host().SetCapacity(VISCA_CMD_QUEUE_ID, 1);
    for (uint32_t wanted : {0U, 1U}) {
        ViscaPkt packet = Packet("81 01 04 07 00");
        EXPECT_EQ(wanted, ViscaEnQueueCmd(&packet));
    }
    EXPECT_EQ(1U, Host().QueueLength(VISCA_CMD_QUEUE_ID));
}

class QueueEmptyTest : public UnitTest {};

TEST_F(QueueEmptyTest, TellsAnEmptyQueueUnderTheInquiryMutex) {
    EXPECT_EQ(1U, ViscaIsCmdQueueEmpty());
    EXPECT_THAT(
        Host().Story({Call::Log, Call::Lock, Call::IsEmpty, Call::Unlock}),
        ElementsAre("DEBUG ViscaIsCmdQueueEmpty: FUN_ENTRY--param:\n", "lock", "isempty 0: 1", "unlock"));
}

TEST_F(QueueEmptyTest, IsZeroForAFilledQueueAFailedCallAndAnOddFlag) {
    Host().Preload(VISCA_CMD_QUEUE_ID, "81 01 04 07 00 FF");
    EXPECT_EQ(0U, ViscaIsCmdQueueEmpty());
    Host().Reset();
    Host().Fail(Call::IsEmpty, Fault{1, 1, 1, 0});
    Host().Fail(Call::IsEmpty, Fault{2, 1, 0, 2});
    EXPECT_EQ(0U, ViscaIsCmdQueueEmpty());
    EXPECT_EQ(0U, ViscaIsCmdQueueEmpty());
    EXPECT_EQ(1U, ViscaIsCmdQueueEmpty());
}

TEST_F(QueueEmptyTest, ALockFailureGivesZero) {
    Host().FailNext(Call::Lock);
    EXPECT_EQ(0U, ViscaIsCmdQueueEmpty());
    EXPECT_THAT(Host().Story({Call::Log, Call::IsEmpty, Call::Unlock}),
                ElementsAre("DEBUG ViscaIsCmdQueueEmpty: FUN_ENTRY--param:\n",
                            "ERROR ViscaIsCmdQueueEmpty: pthread_mutex_lock fail exit\n"));
}

TEST_F(QueueEmptyTest, AnUnlockFailureIsLoggedAndTheResultStays) {
    Host().FailNext(Call::Unlock);
    EXPECT_EQ(1U, ViscaIsCmdQueueEmpty());
    EXPECT_EQ("ERROR ViscaIsCmdQueueEmpty: pthread_mutex_unlock fail exit\n", Host().Log().back());
}

TEST_F(QueueEmptyTest, WaitsForAnInquiryUnderWay) {
    ThreadUnderTest inquiry([] {
        ViscaPkt packet = Packet("81 09 04 47"), reply{};
        ViscaInquiry(&packet, &reply);
    });
    ASSERT_EQ("select queue 3 6000000", inquiry.WaitParked());
    Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 00 FF");
    Host().Forget();
    // The moment in which the second caller wants the mutex lets the inquiry go on.
    ThreadUnderTest asker([] { ViscaIsCmdQueueEmpty(); });
    while (Host().Story({Call::Lock}).empty()) {
        sched_yield();
    }
    EXPECT_EQ("ended", inquiry.Resume());
    EXPECT_EQ("ended", asker.WaitParked());
    EXPECT_THAT(Host().Story({Call::Take, Call::IsEmpty}),
                ElementsAre("take 3: 90 50 00 FF", "isempty 0: 1"));
}

class WaitQueueEmptyTest : public UnitTest {
  protected:
    /** The command queue empties during pause number `pause`. */
    static void EmptyAtPause(unsigned pause) {
        Host().Preload(VISCA_CMD_QUEUE_ID, "81 01 04 07 00 FF");
        Clib().OnPause([pause](unsigned number) {
            void *element = nullptr;
            if (number == pause) {
                QUEUE_GetSerialData(VISCA_CMD_QUEUE_ID, &element);
            }
        });
    }
    static Lines Warnings() {
        Lines lines;
        for (const std::string &line : Host().Log()) {
            if (line.compare(0, 5, "WARN ") == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }
};

TEST_F(WaitQueueEmptyTest, AnEmptyQueueNeedsNoPause) {
    EXPECT_EQ(0U, ViscaWaitCmdQueueEmpty(3));
    EXPECT_EQ("DEBUG ViscaWaitCmdQueueEmpty: FUN_ENTRY--param:ulWaitTime[3]\n", Host().Log().at(0));
    EXPECT_THAT(Warnings(), IsEmpty());
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
}

TEST_F(WaitQueueEmptyTest, ZeroSecondsAreLateEvenOnAnEmptyQueue) {
    EXPECT_EQ(1U, ViscaWaitCmdQueueEmpty(0));
    EXPECT_THAT(Warnings(), ElementsAre("WARN ViscaWaitCmdQueueEmpty: MsgQueue is busy time out [0]\n"));
}

TEST_F(WaitQueueEmptyTest, LooksEvery100MillisecondsUntilTheQueueIsEmpty) {
    EmptyAtPause(2);
    EXPECT_EQ(0U, ViscaWaitCmdQueueEmpty(1));
    EXPECT_THAT(Clib().Pauses(), ElementsAre(100000, 100000));
    EXPECT_THAT(Warnings(),
                ElementsAre("WARN ViscaWaitCmdQueueEmpty: [  1] Wait queue empty, usleep(100,000)\n",
                            "WARN ViscaWaitCmdQueueEmpty: [  2] Wait queue empty, usleep(100,000)\n"));
}

TEST_F(WaitQueueEmptyTest, GivesUpAfterTenLooksASecond) {
    Host().Preload(VISCA_CMD_QUEUE_ID, "81 01 04 07 00 FF");
    EXPECT_EQ(1U, ViscaWaitCmdQueueEmpty(3));
    EXPECT_THAT(Clib().Pauses(), SizeIs(30));
    EXPECT_EQ(3000000U, Clib().Slept());
    ASSERT_THAT(Warnings(), SizeIs(31));
    EXPECT_EQ("WARN ViscaWaitCmdQueueEmpty: [ 30] Wait queue empty, usleep(100,000)\n", Warnings()[29]);
    EXPECT_EQ("WARN ViscaWaitCmdQueueEmpty: MsgQueue is busy time out [30]\n", Warnings()[30]);
}

TEST_F(WaitQueueEmptyTest, EmptyAtTheVeryLastLookIsLate) {
    EmptyAtPause(10);
    EXPECT_EQ(1U, ViscaWaitCmdQueueEmpty(1));
    EXPECT_EQ("WARN ViscaWaitCmdQueueEmpty: MsgQueue is busy time out [10]\n", Warnings().back());
    Host().Reset();
    Clib().Reset();
    EmptyAtPause(9);
    EXPECT_EQ(0U, ViscaWaitCmdQueueEmpty(1));
}

class DumpTest : public UnitTest {};

TEST_F(DumpTest, NamesTheDirectionAndEveryByteInTheCameraLog) {
    const ViscaPkt packet = Packet("81 01 04 07 2F FF");
    ViscaPrintPkt(&packet, 1);
    ViscaPrintPkt(&packet, 0);
    ViscaPrintPkt(&packet, 2);
    const std::string bytes = "ViscaPacket: 0x81 0x01 0x04 0x07 0x2f 0xff \n";
    EXPECT_THAT(Host().Story({Call::CamLog, Call::Log}),
                ElementsAre("cam 7/INFO ViscaPrintPkt: send:" + bytes,
                            "cam 7/INFO ViscaPrintPkt: recv:" + bytes,
                            "cam 7/INFO ViscaPrintPkt: recv:" + bytes));
}

TEST_F(DumpTest, AnEmptyPacketIsTheTitleAlone) {
    const ViscaPkt packet{};
    ViscaPrintPkt(&packet, 1);
    EXPECT_THAT(Host().CameraLog(), ElementsAre("send:ViscaPacket: \n"));
}

TEST_F(DumpTest, SixteenBytesFit) {
    const ViscaPkt packet = Packet("90 50 00 01 02 03 04 05 06 07 08 09 0A 0B 0C FF");
    ViscaPrintPkt(&packet, 0);
    EXPECT_THAT(
        Host().CameraLog(),
        ElementsAre("recv:ViscaPacket: 0x90 0x50 0x00 0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 0x09 0x0a "
                    "0x0b 0x0c 0xff \n"));
}

TEST_F(DumpTest, ACountAboveSixteenIsToldInsteadOfTheBytes) {
    ViscaPkt packet{};
    for (uint32_t count : {17U, 0xFFFFFFFFU}) {
        packet.ulLength = count;
        ViscaPrintPkt(&packet, 1);
    }
    EXPECT_THAT(Host().Story({Call::CamLog, Call::Log}),
                ElementsAre("cam 7/INFO ViscaPrintPkt: The Visca packet is too long to print[17]\n",
                            "cam 7/INFO ViscaPrintPkt: The Visca packet is too long to print[4294967295]\n"));
}

} // namespace
} // namespace unit
