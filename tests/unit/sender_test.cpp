// The command sender: starting the threads, sending one command, waiting for its result, the endless loop.
#include "tests/unit/pauses.h"
#include "tests/unit/unit_test.h"

#include <cerrno>

namespace unit {
namespace {

constexpr uint32_t kCommands = VISCA_CMD_QUEUE_ID;
constexpr uint32_t kResults = VISCA_CMD_RESULT_QUEUE_ID;

class StartTest : public UnitTest {};

TEST_F(StartTest, StartsAndDetachesTheSenderThenTheReceiver) {
    EXPECT_EQ(0U, ViscaStartMsgProc());
    EXPECT_THAT(Host().Story({Call::Log, Call::ThreadCreate, Call::ThreadDetach}),
                ElementsAre("DEBUG ViscaStartMsgProc: FUN_ENTRY--param:\n", "thread create", "thread detach",
                            "thread create", "thread detach"));
    const std::vector<ThreadStart> starts = Clib().ThreadStarts();
    ASSERT_EQ(2U, starts.size());
    EXPECT_EQ(&ViscaQueueMsgProc, starts[0].body);
    EXPECT_EQ(&ViscaAckMsgProc, starts[1].body);
    for (const ThreadStart &start : starts) {
        EXPECT_EQ(nullptr, start.argument);
        EXPECT_TRUE(start.default_attributes);
    }
}

TEST_F(StartTest, ASenderThatCannotBeStartedEndsIt) {
    Host().Fail(Call::ThreadCreate, Fault{1, 1, 11, 0});
    EXPECT_EQ(1U, ViscaStartMsgProc());
    EXPECT_EQ("ERROR ViscaStartMsgProc: create Queue Msg Proc fail exit Ret[11]\n", Host().Log().back());
    EXPECT_EQ(1U, Host().Calls(Call::ThreadCreate));
    EXPECT_THAT(Host().Events(Call::ThreadDetach), IsEmpty());
}

TEST_F(StartTest, AReceiverThatCannotBeStartedLeavesTheSenderRunning) {
    Host().Fail(Call::ThreadCreate, Fault{2, 1, 11, 0});
    EXPECT_EQ(1U, ViscaStartMsgProc());
    EXPECT_EQ("ERROR ViscaStartMsgProc: create Ack Msg Proc fail exit Ret[11]\n", Host().Log().back());
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(1));
}

TEST_F(StartTest, HasNoGuardAgainstASecondCall) {
    EXPECT_EQ(0U, ViscaStartMsgProc());
    EXPECT_EQ(0U, ViscaStartMsgProc());
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(4));
}

class SendOneTest : public UnitTest {
  protected:
    static Lines Story() {
        return Host().Story({Call::Take, Call::IsEmpty, Call::Log, Call::CamLog, Call::Send});
    }
    static size_t DebugLines() {
        size_t count = 0;
        for (const std::string &line : Host().Log()) {
            count += line.compare(0, 6, "DEBUG ") == 0 ? 1 : 0;
        }
        return count;
    }
};

TEST_F(SendOneTest, TakesDumpsAndWritesTheOldestCommand) {
    Host().Preload(kCommands, "81 01 04 07 26 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    EXPECT_EQ(0U, ViscaSendOneCmd());
    EXPECT_THAT(Story(),
                ElementsAre("take 0: 81 01 04 07 26 FF", "isempty 1: 1",
                            "cam 7/INFO ViscaPrintPkt: send:ViscaPacket: 0x81 0x01 0x04 0x07 0x26 0xff \n",
                            "send 81 01 04 07 26 FF"));
    EXPECT_EQ(1U, Host().QueueLength(kCommands));
}

TEST_F(SendOneTest, AnEmptyQueueIsAFailureThatTouchesNothing) {
    Host().Preload(kResults, "90 51 FF");
    EXPECT_EQ(1U, ViscaSendOneCmd());
    EXPECT_THAT(Story(), ElementsAre("take 0: none", "DEBUG ViscaSendOneCmd: QUEUE GetSerialData failed!\n"));
}

TEST_F(SendOneTest, AQueueThatGivesNoElementButSaysItDidIsAFailure) {
    Host().Fail(Call::Take, Fault{1, 1, 0, 0});
    EXPECT_EQ(1U, ViscaSendOneCmd());
    EXPECT_THAT(Story(), ElementsAre("take 0: none", "DEBUG ViscaSendOneCmd: QUEUE GetSerialData failed!\n"));
}

TEST_F(SendOneTest, AnythingButACommandIsDiscarded) {
    ViscaPkt too_long = Packet("81 01 04 07 00 FF");
    too_long.ulLength = 17;
    ViscaPkt endless = too_long;
    endless.ulLength = 0xFFFFFFFF;
    const ViscaPkt packets[] = {Packet("81 09 04 47 FF"), Packet("81 00 04 07 FF"), Packet("81"), too_long,
                                endless};
    Host().Preload(kResults, "90 51 FF");
    for (const ViscaPkt &packet : packets) {
        Host().Preload(kCommands, packet);
        EXPECT_EQ(1U, ViscaSendOneCmd());
        EXPECT_EQ("DEBUG ViscaSendOneCmd: Get GET REQ msg in SET Req msg queue,discard it!\n",
                  Host().Log().back());
    }
    EXPECT_THAT(Host().Sent(), IsEmpty());
    EXPECT_THAT(Host().CameraLog(), IsEmpty());
    EXPECT_EQ(1U, Host().QueueLength(kResults)) << "only a command drops stale results";
}

TEST_F(SendOneTest, SixteenBytesWithoutTerminatorAreSent) {
    Host().Preload(kCommands, "81 01 04 47 01 02 03 04 05 06 07 08 09 0A 0B 0C");
    EXPECT_EQ(0U, ViscaSendOneCmd());
    EXPECT_THAT(Host().Sent(), ElementsAre("81 01 04 47 01 02 03 04 05 06 07 08 09 0A 0B 0C"));
}

TEST_F(SendOneTest, AFailedWriteIsNotTriedAgain) {
    Host().Fail(Call::Send, 1, kForEver);
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    EXPECT_EQ(1U, ViscaSendOneCmd());
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaCamComSend: DRV_ComSend fail\n",
                                          "DEBUG ViscaSendOneCmd: ViscaCamComSend failed!\n"));
    EXPECT_THAT(Host().Sent(), SizeIs(1));
    EXPECT_EQ(0U, Host().QueueLength(kCommands));
}

TEST_F(SendOneTest, ACommandOfNoBytesCannotBeWritten) {
    ViscaPkt packet = Packet("81 01");
    packet.ulLength = 0;
    Host().Preload(kCommands, packet);
    EXPECT_EQ(1U, ViscaSendOneCmd());
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaCamComSend: No data need be sent!\n",
                                          "DEBUG ViscaSendOneCmd: ViscaCamComSend failed!\n"));
}

TEST_F(SendOneTest, ResultsLeftOverFromEarlierCommandsAreDroppedBeforeTheWrite) {
    Host().Preload(kResults, "90 51 FF");
    Host().Preload(kResults, "90 60 02 FF");
    Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 02 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    EXPECT_EQ(0U, ViscaSendOneCmd());
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG ViscaSendOneCmd: Drop 2 results of earlier commands\n"));
    const Lines story = Host().Story({Call::Take, Call::IsEmpty, Call::CamLog, Call::Send});
    ASSERT_THAT(story, SizeIs(8));
    EXPECT_THAT(Lines(story.begin(), story.begin() + 6),
                ElementsAre("take 0: 81 01 04 07 00 FF", "isempty 1: 0", "take 1: 90 51 FF", "isempty 1: 0",
                            "take 1: 90 60 02 FF", "isempty 1: 1"));
    EXPECT_EQ("send 81 01 04 07 00 FF", story[7]);
    EXPECT_EQ(1U, Host().QueueLength(VISCA_INQUIRY_RESULT_QUEUE_ID)) << "answers are never dropped";
}

TEST_F(SendOneTest, TheLineAboutDroppedResultsComesBeforeTheDump) {
    Host().Preload(kResults, "90 51 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    EXPECT_EQ(0U, ViscaSendOneCmd());
    const Lines story = Host().Story({Call::Log, Call::CamLog});
    ASSERT_THAT(story, SizeIs(2));
    EXPECT_EQ(0U, story[0].find("DEBUG ViscaSendOneCmd: "));
    EXPECT_EQ(0U, story[1].find("cam "));
}

TEST_F(SendOneTest, AtMost256StaleResultsAreDropped) {
    Host().SetCapacity(kResults, 300);
    for (int i = 0; i < 300; ++i) {
        Host().Preload(kResults, "90 51 FF");
    }
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    EXPECT_EQ(0U, ViscaSendOneCmd());
    EXPECT_EQ(44U, Host().QueueLength(kResults));
    EXPECT_EQ(1U, DebugLines());
    EXPECT_THAT(Host().Sent(), SizeIs(1));
}

TEST_F(SendOneTest, AFailingLookForStaleResultsDoesNotStopTheCommand) {
    Host().Preload(kResults, "90 51 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    Host().Fail(Call::IsEmpty, 1, kForEver);
    EXPECT_EQ(0U, ViscaSendOneCmd());
    EXPECT_EQ(1U, Host().QueueLength(kResults));
    EXPECT_EQ(0U, DebugLines());
}

TEST_F(SendOneTest, ADropThatCannotTakeEnds) {
    Host().Preload(kResults, "90 51 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    Host().Fail(Call::Take, 2, kForEver);
    EXPECT_EQ(0U, ViscaSendOneCmd());
    EXPECT_LE(Host().Events(Call::Take).size(), 257U);
    EXPECT_THAT(Host().Sent(), SizeIs(1));
}

class DropAckTest : public UnitTest {
  protected:
    static Lines Story() { return Host().Story({Call::Select, Call::Take, Call::Log}); }
};

TEST_F(DropAckTest, TakesOneResultWhateverItIs) {
    Host().Preload(kResults, "90 60 41 FF");
    Host().Preload(kResults, "90 51 FF");
    ViscaDropOneCmdAck();
    EXPECT_THAT(Story(), ElementsAre("select queue 1 2000000: ready", "take 1: 90 60 41 FF"));
}

TEST_F(DropAckTest, GivesUpAfterTwoSeconds) {
    ViscaDropOneCmdAck();
    EXPECT_EQ(2000000U, Clib().Now());
    EXPECT_THAT(Story(), ElementsAre("select queue 1 2000000: time-out",
                                     "DEBUG ViscaDropOneCmdAck: Wait VISCA RSP msg tiemout!\n"));
}

TEST_F(DropAckTest, ASignalRestartsTheWholeWait) {
    Clib().Then({1500000, nullptr, EINTR});
    Clib().Then({1500000, nullptr, EINTR});
    Clib().Then({1500000, [] { Host().Preload(kResults, "90 51 FF"); }});
    ViscaDropOneCmdAck();
    EXPECT_THAT(Story(), ElementsAre("select queue 1 2000000: error", "select queue 1 2000000: error",
                                     "select queue 1 2000000: ready", "take 1: 90 51 FF"));
}

TEST_F(DropAckTest, AnyOtherErrorEndsTheWait) {
    Host().Fail(Call::Select, Fault{1, 1, -1, EBADF});
    ViscaDropOneCmdAck();
    EXPECT_THAT(Story(), ElementsAre("select queue 1 2000000: error",
                                     "DEBUG ViscaDropOneCmdAck: Wait VISCA RSP msg failed!\n"));
}

TEST_F(DropAckTest, AQueueWithoutDescriptorIsReported) {
    Host().Preload(kResults, "90 51 FF");
    Host().Fail(Call::ReadFd);
    ViscaDropOneCmdAck();
    EXPECT_THAT(Story(), ElementsAre("ERROR ViscaDropOneCmdAck: Get VISCA_CMD_RESULT_QUEUE_ID fd failed.\n"));
}

TEST_F(DropAckTest, ADescriptorThatCannotBeWaitedOnEndsTheWait) {
    for (int fd : {-1, 1024}) {
        Host().Reset();
        Host().Fail(Call::ReadFd, Fault{1, 1, 0, fd});
        ViscaDropOneCmdAck();
        EXPECT_THAT(Story(), ElementsAre("DEBUG ViscaDropOneCmdAck: Wait VISCA RSP msg failed!\n"));
    }
}

TEST_F(DropAckTest, ATakeThatFailsIsPassedOver) {
    Host().Preload(kResults, "90 51 FF");
    Host().Fail(Call::Take);
    ViscaDropOneCmdAck();
    EXPECT_THAT(Story(), ElementsAre("select queue 1 2000000: ready", "take 1: none"));
}

class SenderThreadTest : public UnitTest {
  protected:
    const std::string m_idle = "select queue 0 6000000";
    const std::string m_waiting = "select queue 1 2000000";
    static void Body() { ViscaQueueMsgProc(nullptr); }
};

TEST_F(SenderThreadTest, RegistersThenNamesItselfThenWaits) {
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_idle, sender.WaitParked());
    EXPECT_THAT(Host().Story({Call::Log, Call::Register, Call::ReadFd}),
                ElementsAre("DEBUG ViscaQueueMsgProc: FUN_ENTRY--param:\n", "register 4 ViscaQueueMsgProc",
                            "readfd 0"));
    const Event registration = Host().Events(Call::Register).at(0);
    EXPECT_EQ(static_cast<uint32_t>(sender.Id()), registration.queue);
    EXPECT_NE("ViscaQueueMsg", registration.thread) << "registered first, named afterwards";
    EXPECT_EQ("ViscaQueueMsg", sender.Name());
}

TEST_F(SenderThreadTest, EndsWhenItsQueueHasNoDescriptor) {
    Host().Fail(Call::ReadFd);
    ThreadUnderTest sender(Body);
    EXPECT_EQ("ended", sender.WaitParked());
    EXPECT_EQ("ERROR ViscaQueueMsgProc: Get VISCA_CMD_QUEUE_ID fd failed.\n", Host().Log().back());
}

TEST_F(SenderThreadTest, WaitsAgainAfterATimeOutWithoutPauseOrLine) {
    ThreadUnderTest sender(Body);
    sender.WaitParked();
    Host().Forget();
    EXPECT_EQ(m_idle, sender.TimeOut());
    EXPECT_EQ(m_idle, sender.TimeOut());
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(SenderThreadTest, TheSecondCommandWaitsForTheResultOfTheFirst) {
    Host().Preload(kCommands, "81 01 04 07 26 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked());
    EXPECT_THAT(Host().Sent(), ElementsAre("81 01 04 07 26 FF"));
    Host().Preload(kResults, "90 60 41 FF");
    EXPECT_EQ(m_waiting, sender.Resume());
    EXPECT_THAT(Host().Sent(), ElementsAre("81 01 04 07 26 FF", "81 01 04 07 00 FF"));
    Host().Preload(kResults, "90 51 FF");
    EXPECT_EQ(m_idle, sender.Resume());
}

TEST_F(SenderThreadTest, AnAcknowledgementAloneDoesNotReleaseIt) {
    Host().Preload(kCommands, "81 01 04 07 26 FF");
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked());
    Host().Feed("90 41 FF 90 51 FF");
    ViscaDealOneAck();
    EXPECT_EQ(m_waiting, sender.Resume());
    ViscaDealOneAck();
    EXPECT_EQ(m_idle, sender.Resume());
}

TEST_F(SenderThreadTest, ASilentCameraCostsTwoSecondsACommand) {
    Host().Preload(kCommands, "81 01 04 07 26 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked());
    EXPECT_EQ(m_waiting, sender.TimeOut());
    EXPECT_EQ(m_idle, sender.TimeOut());
    EXPECT_EQ(4000000U, Clib().Now());
    EXPECT_EQ(2U, Host().CountLogged(VISCA_LOG_DEBUG, "ViscaDropOneCmdAck", "Wait VISCA RSP msg tiemout!\n"));
}

TEST_F(SenderThreadTest, ALateResultDoesNotReleaseTheNextCommand) {
    Host().Preload(kCommands, "81 01 04 47 04 00 00 00 FF");
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked());
    EXPECT_EQ(m_idle, sender.TimeOut());
    Host().Preload(kResults, "90 51 FF"); // the travel has ended at last
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    EXPECT_EQ(m_waiting, sender.Resume());
    EXPECT_EQ(0U, Host().QueueLength(kResults));
}

TEST_F(SenderThreadTest, ADiscardedElementAwaitsNoResultAndTheNextCommandFollows) {
    Host().Preload(kCommands, "81 09 04 47 FF");
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked());
    EXPECT_THAT(Host().Sent(), ElementsAre("81 01 04 07 00 FF"));
    EXPECT_EQ(0U, Clib().Now()) << "at once";
}

TEST_F(SenderThreadTest, AFailedWriteAwaitsNoResult) {
    Host().Fail(Call::Send);
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_idle, sender.WaitParked());
    EXPECT_THAT(Host().Sent(), SizeIs(1));
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
}

TEST_F(SenderThreadTest, TakesThatKeepFailingArePacedUpToASecond) {
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    Host().Fail(Call::Take, 1, 20);
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked()) << "sent when the takes work again";
    ExpectGrowingToASecond(Clib().Pauses());
    EXPECT_LE(Clib().Pauses().size(), 20U);
}

TEST_F(SenderThreadTest, ATakeThatWorksEndsThePauses) {
    Host().Preload(kCommands, "81 01 04 07 00 FF");
    Host().Fail(Call::Take, 1, 20);
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_waiting, sender.WaitParked());
    EXPECT_EQ(m_idle, sender.TimeOut());
    const size_t before = Clib().Pauses().size();
    Host().FailNext(Call::Take, 20);
    Host().Preload(kCommands, "81 01 04 07 26 FF");
    EXPECT_EQ(m_waiting, sender.Resume());
    const std::vector<uint64_t> pauses = Clib().Pauses();
    ExpectGrowingToASecond({pauses.begin() + static_cast<long>(before), pauses.end()});
}

TEST_F(SenderThreadTest, WaitsThatKeepFailingArePacedUpToASecond) {
    Host().Fail(Call::Select, Fault{1, 20, -1, EBADF});
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_idle, sender.WaitParked());
    ExpectGrowingToASecond(Clib().Pauses());
}

TEST_F(SenderThreadTest, ADescriptorThatCannotBeWaitedOnIsPacedAndNeverSelected) {
    for (int fd : {-1, 1024}) {
        Host().Reset();
        Clib().Reset();
        Clib().ParkAtPause(15);
        Host().Fail(Call::ReadFd, Fault{1, 1, 0, fd});
        ThreadUnderTest sender(Body);
        EXPECT_EQ("pause 1000000", sender.WaitParked()) << fd;
        ExpectGrowingToASecond(Clib().Pauses());
        EXPECT_THAT(Host().Events(Call::Select), IsEmpty());
    }
}

TEST_F(SenderThreadTest, ASignalCostsNoPause) {
    Host().Fail(Call::Select, Fault{1, 20, -1, EINTR});
    ThreadUnderTest sender(Body);
    EXPECT_EQ(m_idle, sender.WaitParked());
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
}

} // namespace
} // namespace unit
