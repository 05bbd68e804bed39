// The reply receiver: framing, routing, junk, gaps, and the endless loop.
#include "tests/unit/pauses.h"
#include "tests/unit/unit_test.h"

#include <cerrno>
#include <cstring>

namespace unit {
namespace {

constexpr uint64_t kSecond = 1000000;

class ReceiverTest : public UnitTest {
  protected:
    /** Feed the bytes and handle one reply, or one run of junk. */
    static void Deal(std::string_view hex) {
        Host().Feed(hex);
        ViscaDealOneAck();
    }
    static std::string Dump(const std::string &bytes) { return "recv:ViscaPacket: " + bytes + "\n"; }
    static Lines PutLines() { return Host().Story({Call::Put}); }
    static Lines WarnLines() {
        Lines lines;
        for (const Event &event : Host().Events(Call::Log)) {
            if (event.log.level == VISCA_LOG_WARN) {
                lines.push_back(event.text);
            }
        }
        return lines;
    }
    const std::string m_unexpected = "ERROR ViscaDealOneAck: Unexpected Ack, fail exit\n";
    static std::string Junk(const std::string &byte) {
        return "WARN ViscaDealOneAck: unexpected byte[0x" + byte + "]\n";
    }
};

TEST_F(ReceiverTest, AnInquiryAnswerGoesToTheInquiryQueueAsAWholeRecord) {
    Deal("90 50 02 FF");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 02 FF"));
    const auto whole = Host().Events(Call::Put).at(0).bytes;
    ASSERT_EQ(20U, whole.size());
    uint32_t length = 0;
    memcpy(&length, &whole[16], sizeof length); // in the machine's own byte order
    EXPECT_EQ(4U, length);
    EXPECT_THAT(Host().CameraLog(), ElementsAre(Dump("0x90 0x50 0x02 0xff ")));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(ReceiverTest, OnlyTheCompletionOfACommandReachesTheResultQueue) {
    Host().Feed("90 41 FF 90 51 FF");
    ViscaDealOneAck();
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_EQ(3U, Host().Unread()) << "one call handles one reply";
    ViscaDealOneAck();
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_THAT(Host().CameraLog(), ElementsAre(Dump("0x90 0x41 0xff "), Dump("0x90 0x51 0xff ")));
}

TEST_F(ReceiverTest, RoutesBySecondByteForAllOfThem) {
    for (unsigned second = 0; second <= 0xFE; ++second) {
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
        const Bytes reply = {0x90, static_cast<uint8_t>(second), 0x41, 0xFF};
        Host().Feed(reply);
        ViscaDealOneAck();
        const unsigned type = second >> 4, socket = second & 0x0F;
        const bool to_results = (type == 5 || type == 6) && socket != 0;
        const bool to_answers = second == 0x50 || second == 0x60;
        const bool unexpected = (type >= 1 && type <= 3) || type >= 7;
        SCOPED_TRACE(Hex(reply));
        EXPECT_EQ(to_results ? Lines{Hex(reply)} : Lines{}, Host().Results());
        EXPECT_EQ(to_answers ? Lines{Hex(reply)} : Lines{}, Host().Answers());
        const bool no_report = type == 0 && socket != 7;
        EXPECT_EQ(unexpected || no_report ? 2U : 1U, Host().CameraLog().size());
        EXPECT_EQ(unexpected ? 1U : 0U,
                  Host().CountLogged(VISCA_LOG_ERROR, "ViscaDealOneAck", "Unexpected Ack, fail exit\n"));
        EXPECT_EQ(no_report ? 1U : 0U,
                  Host().CountLogged(VISCA_LOG_WARN, "KovaDealReport", "Invalid ack, fail exit\n"));
        EXPECT_EQ(second == 7 ? 1U : 0U,
                  Host().CountLogged(VISCA_LOG_WARN, "KovaDealReport", "Not support 255 yet\n"));
        EXPECT_EQ(unexpected || type == 0 ? 1U : 0U, Host().Log().size());
        EXPECT_EQ(0U, Host().Unread());
        EXPECT_THAT(Host().Complaints(), IsEmpty());
    }
}

TEST_F(ReceiverTest, ErrorsWithoutSocketGoByTheirCode) {
    for (unsigned code = 0; code <= 0xFE; ++code) {
        Host().Forget();
        const Bytes reply = {0x90, 0x60, static_cast<uint8_t>(code), 0xFF};
        Host().Feed(reply);
        ViscaDealOneAck();
        const bool command = code == 0x02 || code == 0x03;
        EXPECT_THAT(PutLines(), ElementsAre((command ? "put 1: " : "put 3: ") + Hex(reply)));
    }
}

TEST_F(ReceiverTest, ErrorsWithASocketAreCommandErrorsWhateverTheirCode) {
    for (const char *reply : {"90 61 02 FF", "90 6F 41 FF", "90 62 04 FF", "90 61 FF"}) {
        Host().Forget();
        Deal(reply);
        EXPECT_THAT(PutLines(), ElementsAre(std::string("put 1: ") + reply));
    }
}

TEST_F(ReceiverTest, ASocketlessErrorWithoutCodeAnswersAnInquiry) {
    Deal("90 60 FF");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 60 FF"));
}

TEST_F(ReceiverTest, AReportIsHandedOnInsideTheCallAndPutNowhere) {
    static std::vector<uint32_t> reported;
    reported.clear();
    gpfnReportZoomStatus = [](uint32_t active) { reported.push_back(active); };
    Deal("90 07 00 AE 01 FF");
    Deal("90 07 00 AE 10 FF");
    gpfnReportZoomStatus = nullptr;
    EXPECT_THAT(reported, ElementsAre(1U, 0U));
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_THAT(Host().CameraLog(),
                ElementsAre(Dump("0x90 0x07 0x00 0xae 0x01 0xff "), Dump("0x90 0x07 0x00 0xae 0x10 0xff ")));
}

TEST_F(ReceiverTest, AReportIsHandedOnAsAWholeRecord) {
    Deal("90 03 01 02 FF");
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_THAT(Host().Story({Call::CamLog, Call::Log}),
                ElementsAre("cam 7/INFO ViscaPrintPkt: " + Dump("0x90 0x03 0x01 0x02 0xff "),
                            "WARN KovaDealReport: Invalid ack, fail exit\n",
                            "cam 7/INFO ViscaPrintPkt: " + Dump("0x90 0x03 0x01 0x02 0xff ")));
    EXPECT_EQ(0U, Host().Unread());
}

TEST_F(ReceiverTest, AReplyBehindAReportIsRouted) {
    Host().Feed("90 07 00 AF 01 FF 90 50 02 FF");
    ViscaDealOneAck();
    EXPECT_EQ(4U, Host().Unread()) << "one call handles one reply";
    ViscaDealOneAck();
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 02 FF"));
}

TEST_F(ReceiverTest, AnAfDebugMarkHandsTheRestToTheTuningAnswer) {
    Host().Feed("66 03 61 62 63 90 51 FF");
    ViscaDealOneAck();
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG AF_DebugAck: AF_DEBUG recv ack:abc\n"));
    EXPECT_EQ(3U, Host().Unread()) << "the answer ends the call";
    ViscaDealOneAck();
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverTest, AStrayAfDebugMarkCostsASecondAtMost) {
    Host().Feed("66");
    ViscaDealOneAck();
    EXPECT_THAT(WarnLines(), SizeIs(1));
    Deal("90 51 FF");
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverTest, RejectsTwoBytes) {
    Deal("90 FF");
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_THAT(Host().Story({Call::CamLog, Call::Log}),
                ElementsAre("cam 7/INFO ViscaPrintPkt: " + Dump("0x90 0xff "),
                            "cam 7/INFO ViscaPrintPkt: " + Dump("0x90 0xff "), m_unexpected));
}

TEST_F(ReceiverTest, SixteenBytesWithTerminatorAreRouted) {
    Deal("90 50 00 01 02 03 04 05 06 07 08 09 0A 0B 0C FF");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 00 01 02 03 04 05 06 07 08 09 0A 0B 0C FF"));
    EXPECT_THAT(Host().CameraLog(), SizeIs(1));
}

TEST_F(ReceiverTest, SixteenBytesWithoutTerminatorAreRejected) {
    Host().Feed("90 50 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D FF");
    ViscaDealOneAck();
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_THAT(Host().CameraLog(), SizeIs(2));
    EXPECT_THAT(Host().Log(), ElementsAre(m_unexpected));
    EXPECT_EQ(1U, Host().Unread()) << "nothing is read beyond the sixteenth byte";
}

TEST_F(ReceiverTest, JunkIsWarnedAboutByteByByteAndATerminatorEndsTheRun) {
    Host().Feed("12 34 FF 90 51 FF");
    ViscaDealOneAck();
    EXPECT_THAT(Host().Log(), ElementsAre(Junk("12"), Junk("34"), Junk("ff")));
    EXPECT_THAT(PutLines(), IsEmpty());
    ViscaDealOneAck();
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverTest, JunkWithoutTerminatorIsSkippedInTheSameCall) {
    Deal("00 7F 90 50 03 FF");
    EXPECT_THAT(Host().Log(), ElementsAre(Junk("0"), Junk("7f")));
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 03 FF"));
}

TEST_F(ReceiverTest, AMarkAfterJunkStillCounts) {
    Host().Feed("12 66 01 61 90 51 FF");
    ViscaDealOneAck();
    EXPECT_THAT(Host().Log(), ElementsAre(Junk("12"), "DEBUG AF_DebugAck: AF_DEBUG recv ack:a\n"));
    EXPECT_EQ(3U, Host().Unread());
}

TEST_F(ReceiverTest, AStartByteInsideAReplyIsData) {
    Deal("90 50 90 50 FF");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 90 50 FF"));
}

TEST_F(ReceiverTest, ReadsSingleBytesOnly) {
    Deal("90 50 01 02 03 04 FF");
    for (const Event &read : Host().Events(Call::Read)) {
        EXPECT_EQ(1U, read.length);
    }
    EXPECT_THAT(Host().Events(Call::Read), SizeIs(7));
}

TEST_F(ReceiverTest, AFailedReadInTheHuntIsReportedAndEndsTheCall) {
    for (int32_t result : {-1, 0}) {
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
        Host().Feed("90 51 FF");
        Host().Fail(Call::Read, Fault{1, 1, result, EIO});
        ViscaDealOneAck();
        EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaDealOneAck: read error, fail exit\n"));
        EXPECT_THAT(Host().Events(Call::Read), SizeIs(1));
        EXPECT_THAT(PutLines(), IsEmpty());
    }
}

TEST_F(ReceiverTest, AFailedReadInsideAReplyEndsItAndWhatWasThereIsRejected) {
    for (int32_t result : {-1, 0}) {
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
        Host().Feed("90 50 02 FF");
        Host().Fail(Call::Read, Fault{4, 1, result, EIO});
        ViscaDealOneAck();
        EXPECT_THAT(PutLines(), IsEmpty());
        EXPECT_THAT(Host().CameraLog(), ElementsAre(Dump("0x90 0x50 0x02 "), Dump("0x90 0x50 0x02 ")));
        EXPECT_THAT(Host().Log(), ElementsAre(m_unexpected));
    }
}

TEST_F(ReceiverTest, AFailedPutIsReportedByTheTypeOfTheReply) {
    const struct {
        const char *reply, *message;
    } cases[] = {{"90 50 02 FF", "Put Inquiry Result msg to queue failed!\n"},
                 {"90 60 41 FF", "Put Inquiry Result msg to queue failed!\n"},
                 {"90 60 02 FF", "Put Inquiry Result msg to queue failed!\n"},
                 {"90 61 41 FF", "Put Inquiry Result msg to queue failed!\n"},
                 {"90 51 FF", "Put CMD Result msg to queue failed!\n"}};
    Host().Fail(Call::Put, 1, kForEver);
    for (const auto &test : cases) {
        Host().Forget();
        Deal(test.reply);
        EXPECT_THAT(PutLines(), SizeIs(1)) << "no second try";
        EXPECT_THAT(Host().Log(), ElementsAre(std::string("ERROR ViscaDealOneAck: ") + test.message))
            << test.reply;
    }
}

TEST_F(ReceiverTest, AcknowledgementsAndRejectsPutNothing) {
    Host().Fail(Call::Put, 1, kForEver);
    Deal("90 42 FF");
    Deal("90 70 FF");
    EXPECT_EQ(0U, Host().Calls(Call::Put));
}

class ReceiverBusyTest : public ReceiverTest {};

TEST_F(ReceiverBusyTest, ReadsNothingWhileTheLineIsOwnedByAnother) {
    Host().Feed("90 51 FF");
    for (const auto mark : {ViscaMarkUpdatingCam, ViscaMarkExportLog}) {
        mark(1);
        ViscaDealOneAck();
        mark(0);
    }
    EXPECT_EQ(3U, Host().Unread());
    EXPECT_THAT(Host().Events(Call::Read), IsEmpty());
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(ReceiverBusyTest, StopsInTheMiddleOfJunk) {
    Host().OnRecord([](const Event &event) {
        if (event.text == "read 12") {
            ViscaMarkUpdatingCam(1);
        }
    });
    Deal("12 34 FF");
    EXPECT_THAT(Host().Log(), ElementsAre(Junk("12")));
    EXPECT_EQ(2U, Host().Unread());
}

TEST_F(ReceiverBusyTest, StopsInTheMiddleOfAReplyWithADump) {
    Host().OnRecord([](const Event &event) {
        if (event.text == "read 50") {
            ViscaMarkExportLog(1);
        }
    });
    Deal("90 50 02 FF");
    EXPECT_THAT(Host().CameraLog(), ElementsAre(Dump("0x90 0x50 ")));
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_EQ(2U, Host().Unread());
}

TEST_F(ReceiverBusyTest, ABytePastTheWaitBelongsToTheNewOwnerOfTheLine) {
    Clib().Then({300000, [] {
                     ViscaMarkUpdatingCam(1);
                     Host().Feed("50 02 FF");
                 }});
    Deal("90");
    EXPECT_THAT(Host().CameraLog(), ElementsAre(Dump("0x90 ")));
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_EQ(3U, Host().Unread());
}

class ReceiverGapTest : public ReceiverTest {
  protected:
    static SelectStep After(uint64_t micros, const char *bytes) {
        return {micros, [bytes] { Host().Feed(bytes); }};
    }
};

TEST_F(ReceiverGapTest, AReplyWhoseBytesComeUpToASecondApartIsAssembled) {
    Clib().Then(After(900000, "50"));
    Clib().Then(After(900000, "02"));
    Clib().Then(After(900000, "FF"));
    Deal("90");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 02 FF"));
    EXPECT_EQ(2700000U, Clib().Now());
}

TEST_F(ReceiverGapTest, AGapOfMoreThanASecondEndsTheReplyAsAFailedReadDoes) {
    Deal("90 50 02");
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_THAT(Host().CameraLog(), ElementsAre(Dump("0x90 0x50 0x02 "), Dump("0x90 0x50 0x02 ")));
    EXPECT_THAT(Host().Log(), ElementsAre(m_unexpected));
    EXPECT_GE(Clib().Now(), kSecond);
    EXPECT_LE(Clib().Now(), kSecond + 50000);
    Deal("90 50 03 FF");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 03 FF")) << "the next reply is whole";
}

TEST_F(ReceiverGapTest, AWaitThatReturnsEarlyDoesNotEndTheReply) {
    Clib().Then({300000});
    Clib().Then({300000});
    Clib().Then(After(300000, "51 FF"));
    Deal("90");
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverGapTest, ASignalDoesNotEndTheReply) {
    Clib().Then({300000, nullptr, EINTR});
    Clib().Then(After(300000, "51 FF"));
    Deal("90");
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverGapTest, EarlyReturnsAndSignalsDoNotStretchTheSecond) {
    Clib().Then({400000});
    Clib().Then({400000, nullptr, EINTR});
    Deal("90 50");
    EXPECT_THAT(PutLines(), IsEmpty());
    EXPECT_GE(Clib().Now(), kSecond);
    EXPECT_LE(Clib().Now(), kSecond + 50000);
}

TEST_F(ReceiverGapTest, EachByteHasASecondOfItsOwn) {
    Clib().Then({700000});
    Clib().Then(After(200000, "50"));
    Clib().Then({700000});
    Clib().Then(After(200000, "02 FF"));
    Deal("90");
    EXPECT_THAT(PutLines(), ElementsAre("put 3: 90 50 02 FF"));
}

class ReceiverThreadTest : public ReceiverTest {
  protected:
    const std::string m_idle = "select port 6000000";
    static void Body() { ViscaAckMsgProc(nullptr); }
};

TEST_F(ReceiverThreadTest, NamesThenRegistersItselfThenWaits) {
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    EXPECT_THAT(Host().Story({Call::Register}), ElementsAre("register 3 ViscaAckMsgProc"));
    const Event registration = Host().Events(Call::Register).at(0);
    EXPECT_EQ(static_cast<uint32_t>(receiver.Id()), registration.queue);
    EXPECT_EQ("ViscaAckMsgProc", registration.thread) << "named first, registered afterwards";
    EXPECT_EQ("ViscaAckMsgProc", receiver.Name());
}

TEST_F(ReceiverThreadTest, HandlesWhateverArrivesOneReplyAPass) {
    ThreadUnderTest receiver(Body);
    receiver.WaitParked();
    Host().Feed("90 41 FF 90 51 FF");
    EXPECT_EQ(m_idle, receiver.Resume());
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
    EXPECT_EQ(m_idle, receiver.TimeOut());
    Host().Feed("12 FF 90 50 02 FF");
    EXPECT_EQ(m_idle, receiver.Resume());
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF", "put 3: 90 50 02 FF"));
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
}

TEST_F(ReceiverThreadTest, ATuningAnswerCostsNoPause) {
    ThreadUnderTest receiver(Body);
    receiver.WaitParked();
    Host().Feed("66 01 61 90 51 FF");
    EXPECT_EQ(m_idle, receiver.Resume());
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
}

TEST_F(ReceiverThreadTest, StandsAsideWithAShortPauseAPassWhileTheLinkIsBusy) {
    ViscaMarkUpdatingCam(1);
    Host().Feed("90 51 FF");
    Clib().OnPause([](unsigned number) {
        if (number == 100) {
            EXPECT_EQ(3U, Host().Unread());
            ViscaMarkUpdatingCam(0);
        }
    });
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    const std::vector<uint64_t> pauses = Clib().Pauses();
    ASSERT_EQ(100U, pauses.size());
    for (uint64_t pause : pauses) {
        EXPECT_GE(pause, 5000U);
        EXPECT_LE(pause, 50000U)
            << "the pause does not grow: replies must not wait when the line is free again";
    }
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverThreadTest, ReadsThatKeepFailingArePacedUpToASecond) {
    Host().Feed("90 51 FF");
    Host().Fail(Call::Read, Fault{1, 20, -1, EIO});
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    ExpectGrowingToASecond(Clib().Pauses());
    EXPECT_LE(Clib().Pauses().size(), 20U);
    EXPECT_EQ(20U, Host().CountLogged(VISCA_LOG_ERROR, "ViscaDealOneAck", "read error, fail exit\n"));
    EXPECT_THAT(PutLines(), ElementsAre("put 1: 90 51 FF"));
}

TEST_F(ReceiverThreadTest, ALineThatHungUpIsPacedToo) {
    Host().HangUp();
    Clib().ParkAtPause(15);
    ThreadUnderTest receiver(Body);
    EXPECT_EQ("pause 1000000", receiver.WaitParked());
    ExpectGrowingToASecond(Clib().Pauses());
}

TEST_F(ReceiverThreadTest, ASuccessfulReadEndsThePauses) {
    Host().Feed("90 51 FF");
    Host().Fail(Call::Read, Fault{1, 20, -1, EIO});
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    const size_t before = Clib().Pauses().size();
    Host().FailNext(Call::Read, 20);
    Host().Feed("90 51 FF");
    EXPECT_EQ(m_idle, receiver.Resume());
    const std::vector<uint64_t> pauses = Clib().Pauses();
    ExpectGrowingToASecond({pauses.begin() + static_cast<long>(before), pauses.end()});
}

TEST_F(ReceiverThreadTest, JunkIsASuccessfulReadToo) {
    Host().Feed("12 FF 90 51 FF");
    Host().Fail(Call::Read, Fault{1, 20, -1, EIO});
    Host().Fail(Call::Read, Fault{23, 20, -1, EIO}); // the junk run is read between
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    const std::vector<uint64_t> pauses = Clib().Pauses();
    EXPECT_FALSE(std::is_sorted(pauses.begin(), pauses.end())) << "short again after the junk";
}

TEST_F(ReceiverThreadTest, JunkEndsThePausesAlsoWhenTheReadBehindItFails) {
    Host().Feed("12 FF");
    Host().Fail(Call::Read, Fault{1, 3, -1, EIO});
    Host().Fail(Call::Read, Fault{5, 2, -1, EIO});
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    EXPECT_THAT(Clib().Pauses(), ElementsAre(20000U, 200000U, 1000000U, 20000U));
}

TEST_F(ReceiverThreadTest, JunkEndsThePausesAlsoWhenTheLineGetsANewOwnerBehindIt) {
    Host().Feed("12 FF");
    Host().Fail(Call::Read, Fault{1, 3, -1, EIO});
    Host().Fail(Call::Read, Fault{5, 1, -1, EIO});
    Host().OnRecord([](const Event &event) {
        if (event.text == "read 12") {
            ViscaMarkUpdatingCam(1);
        }
    });
    Clib().OnPause([](unsigned number) {
        if (number == 4) { // it has stood aside
            ViscaMarkUpdatingCam(0);
        }
    });
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    EXPECT_THAT(Clib().Pauses(), ElementsAre(20000U, 200000U, 1000000U, 20000U, 20000U));
}

TEST_F(ReceiverThreadTest, ADescriptorThatCannotBeWaitedOnIsPacedAndNeverSelected) {
    for (int fd : {-1, 1024, 100000}) {
        Host().Forget();
        Clib().Reset();
        Clib().ParkAtPause(15);
        ViscaSetCamComFd(fd);
        ThreadUnderTest receiver(Body);
        EXPECT_EQ("pause 1000000", receiver.WaitParked()) << fd;
        ExpectGrowingToASecond(Clib().Pauses());
        EXPECT_THAT(Host().Events(Call::Select), IsEmpty());
        EXPECT_THAT(Host().Events(Call::Read), IsEmpty());
        EXPECT_LE(Host().Log().size(), 15U);
    }
}

TEST_F(ReceiverThreadTest, WaitsThatKeepFailingArePacedUpToASecond) {
    Host().Fail(Call::Select, Fault{1, 20, -1, EBADF});
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    ExpectGrowingToASecond(Clib().Pauses());
}

TEST_F(ReceiverThreadTest, ASignalCostsNoPause) {
    Host().Fail(Call::Select, Fault{1, 20, -1, EINTR});
    ThreadUnderTest receiver(Body);
    EXPECT_EQ(m_idle, receiver.WaitParked());
    EXPECT_THAT(Clib().Pauses(), IsEmpty());
}

} // namespace
} // namespace unit
