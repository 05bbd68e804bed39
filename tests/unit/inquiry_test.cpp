// Synchronous inquiries: order of checks, the answer, the time-out, the failures.
#include "tests/unit/unit_test.h"

#include <cerrno>
#include <cstring>

namespace unit {
namespace {

class InquiryTest : public UnitTest {
  protected:
    uint32_t Inquire(std::string_view hex) {
        m_packet = Packet(hex);
        return ViscaInquiry(&m_packet, &m_reply);
    }
    static std::string Say(const std::string &level, const std::string &message) {
        return level + " ViscaInquiry: " + message + "\n";
    }
    bool ReplyUntouched() const {
        const ViscaPkt before = Packet("AA BB CC");
        return memcmp(&before, &m_reply, sizeof m_reply) == 0;
    }
    ViscaPkt m_packet{};
    ViscaPkt m_reply = Packet("AA BB CC");
};

TEST_F(InquiryTest, WritesTheInquiryAndDeliversTheWholeAnswer) {
    Host().AnswerInquiry("90 50 04 00 00 00 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 47"));
    const ViscaPkt wanted = Packet("90 50 04 00 00 00 FF");
    EXPECT_EQ(0, memcmp(&wanted, &m_reply, sizeof m_reply));
    EXPECT_EQ(5U, m_packet.ulLength) << "the terminator was appended to the caller's packet";
    EXPECT_EQ(0xFF, m_packet.aucData[4]);
}

TEST_F(InquiryTest, GoesThroughItsStepsInOrder) {
    Host().AnswerInquiry("90 50 02 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_THAT(Host().Story({Call::ReadFd, Call::Lock, Call::Unlock, Call::Log, Call::CamLog, Call::Send,
                              Call::Select, Call::Take}),
                ElementsAre("readfd 3", "lock",
                            "cam 7/INFO ViscaPrintPkt: send:ViscaPacket: 0x81 0x09 0x04 0x00 0xff \n", "lock",
                            "send 81 09 04 00 FF", "unlock", "select queue 3 6000000: ready",
                            "take 3: 90 50 02 FF", "unlock"));
}

TEST_F(InquiryTest, IsRefusedUnlessCanControlIsExactlyOne) {
    ViscaMarkExportLog(1); // looked at later only
    for (uint32_t flag : {0U, 2U}) {
        ViscaSetCamCanCtrl(flag);
        Host().Forget();
        EXPECT_EQ(1U, Inquire("81 09 04 00"));
        EXPECT_THAT(Host().Log(), ElementsAre(Say("WARN", "Cam Can't Ctrl return directly")));
    }
    EXPECT_EQ(4U, m_packet.ulLength);
    EXPECT_TRUE(ReplyUntouched());
}

TEST_F(InquiryTest, IsRefusedDuringALogExportTheUpgradeStatusToo) {
    ViscaMarkExportLog(1);
    ViscaMarkUpdatingCam(1);
    for (const char *inquiry : {"81 09 04 00", "81 09 04 A9"}) {
        Host().Forget();
        EXPECT_EQ(1U, Inquire(inquiry));
        EXPECT_THAT(Host().Log(), ElementsAre(Say("DEBUG", "ViscaIsExportLog true")));
    }
    EXPECT_THAT(Host().Sent(), IsEmpty());
}

TEST_F(InquiryTest, DuringAnUpgradeOnlyItsStatusIsAsked) {
    ViscaMarkUpdatingCam(1);
    EXPECT_EQ(1U, Inquire("81 09 04 47"));
    EXPECT_THAT(Host().Events(), IsEmpty()) << "refused without a message";
    EXPECT_EQ(4U, m_packet.ulLength);
    Host().AnswerInquiry("90 50 01 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 A9"));
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 A9 FF"));
    EXPECT_EQ(0x01, m_reply.aucData[2]);
}

TEST_F(InquiryTest, OtherFlagValuesDoNotRefuse) {
    ViscaMarkUpdatingCam(2);
    ViscaMarkExportLog(2);
    Host().AnswerInquiry("90 50 02 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_THAT(Host().Sent(), SizeIs(1));
}

TEST_F(InquiryTest, AQueueWithoutDescriptorIsAFailureBeforeTheLock) {
    Host().Fail(Call::ReadFd);
    EXPECT_EQ(1U, Inquire("81 09 04 00"));
    EXPECT_THAT(Host().Story({Call::Log, Call::Lock, Call::Send}),
                ElementsAre(Say("ERROR", "Get VISCA_INQUIRY_RESULT_QUEUE_ID fd failed.")));
    EXPECT_EQ(4U, m_packet.ulLength);
}

TEST_F(InquiryTest, ALockFailureIsAFailureBeforeTheWrite) {
    Host().FailNext(Call::Lock);
    EXPECT_EQ(1U, Inquire("81 09 04 00"));
    EXPECT_THAT(Host().Story({Call::Log, Call::Unlock, Call::Send}),
                ElementsAre(Say("ERROR", "pthread_mutex_lock fail exit")));
    EXPECT_EQ(4U, m_packet.ulLength);
}

TEST_F(InquiryTest, AFullPacketIsSentWithoutTerminator) {
    Host().AnswerInquiry("90 50 02 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 24 01 02 03 04 05 06 07 08 09 0A 0B 0C"));
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 24 01 02 03 04 05 06 07 08 09 0A 0B 0C"));
    ASSERT_THAT(Host().Events(Call::Log), SizeIs(1));
    EXPECT_EQ("Visca packet too long, fail exit\n", Host().Events(Call::Log)[0].log.message);
    EXPECT_EQ(VISCA_LOG_ERROR, Host().Events(Call::Log)[0].log.level);
}

TEST_F(InquiryTest, AFailedWriteGivesTheMutexBack) {
    Host().Fail(Call::Send);
    EXPECT_EQ(1U, Inquire("81 09 04 00"));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaCamComSend: DRV_ComSend fail\n",
                                          Say("ERROR", "ViscaCamComSend fail")));
    EXPECT_THAT(Host().Events(Call::Select), IsEmpty());
    EXPECT_THAT(Host().Story({Call::Lock, Call::Unlock}), ElementsAre("lock", "lock", "unlock", "unlock"));
    EXPECT_TRUE(ReplyUntouched());
}

TEST_F(InquiryTest, AFailedWriteAndAFailedUnlockAreBothReported) {
    Host().Fail(Call::Send);
    Host().Fail(Call::Unlock, Host().Calls(Call::Unlock) + 2); // the first is the send mutex
    EXPECT_EQ(1U, Inquire("81 09 04 00"));
    EXPECT_EQ(Say("ERROR", "pthread_mutex_unlock fail exit"), Host().Log().back());
}

TEST_F(InquiryTest, ASilentCameraIsASuccessThatLeavesTheReplyAlone) {
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_TRUE(ReplyUntouched());
    EXPECT_EQ(6000000U, Clib().Now());
    EXPECT_THAT(Host().Log(), ElementsAre(Say("ERROR", "Wait VISCA RSP msg tiemout!")));
    EXPECT_THAT(Host().Sent(), SizeIs(1)) << "no retry";
}

TEST_F(InquiryTest, ASignalRestartsTheWholeWait) {
    Clib().Then({4000000, nullptr, EINTR});
    Clib().Then({4000000, nullptr, EINTR});
    Clib().Then({4000000, [] { Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 02 FF"); }});
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_EQ(0x02, m_reply.aucData[2]);
    EXPECT_THAT(Host().Story({Call::Select}),
                ElementsAre("select queue 3 6000000: error", "select queue 3 6000000: error",
                            "select queue 3 6000000: ready"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(InquiryTest, AnyOtherErrorOfTheWaitIsASuccessThatLeavesTheReplyAlone) {
    Host().Fail(Call::Select, Fault{1, 1, -1, EBADF});
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_TRUE(ReplyUntouched());
    EXPECT_THAT(Host().Log(), ElementsAre(Say("ERROR", "Wait VISCA RSP msg failed!")));
    EXPECT_THAT(Host().Story({Call::Lock, Call::Unlock}), ElementsAre("lock", "lock", "unlock", "unlock"));
}

TEST_F(InquiryTest, ADescriptorThatCannotBeWaitedOnEndsTheWait) {
    for (int fd : {-1, 1024}) {
        Host().Reset();
        Host().Fail(Call::ReadFd, Fault{1, 1, 0, fd});
        EXPECT_EQ(0U, Inquire("81 09 04 00"));
        EXPECT_TRUE(ReplyUntouched());
        EXPECT_THAT(Host().Events(Call::Select), IsEmpty());
        EXPECT_THAT(Host().Log(), ElementsAre(Say("ERROR", "Wait VISCA RSP msg failed!")));
    }
}

TEST_F(InquiryTest, ACountBeyondTheRecordSendsTheRecordOnly) {
    m_packet = Packet("81 09 04 24 01 02 03 04 05 06 07 08 09 0A 0B 0C");
    m_packet.ulLength = 0xFFFFFFFF;
    ViscaInquiry(&m_packet, &m_reply);
    EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 24 01 02 03 04 05 06 07 08 09 0A 0B 0C"));
}

TEST_F(InquiryTest, AnAnswerThatCannotBeTakenIsASuccessThatLeavesTheReplyAlone) {
    Host().AnswerInquiry("90 50 02 FF");
    Host().Fail(Call::Take);
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_TRUE(ReplyUntouched());
}

TEST_F(InquiryTest, AnErrorReplyIsAFailureThatLeavesTheReplyAlone) {
    for (const char *reply : {"90 60 41 FF", "90 41 FF", "90 00 FF", "90 F0 FF"}) {
        Host().AnswerInquiry(reply);
        EXPECT_EQ(1U, Inquire("81 09 04 00")) << reply;
        EXPECT_TRUE(ReplyUntouched());
    }
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(InquiryTest, EveryTypeWithTheHighNibbleFiveIsAnAnswer) {
    Host().AnswerInquiry("90 5F 07 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_EQ(0x5F, m_reply.aucData[1]);
}

TEST_F(InquiryTest, ALateAnswerIsTakenByTheNextInquiryAsItsOwn) {
    Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 03 FF");
    Host().AnswerInquiry("90 50 04 00 00 00 FF");
    EXPECT_EQ(0U, Inquire("81 09 04 47"));
    EXPECT_EQ(4U, m_reply.ulLength);
    EXPECT_EQ(1U, Host().QueueLength(VISCA_INQUIRY_RESULT_QUEUE_ID))
        << "its own answer waits for the one after it";
}

TEST_F(InquiryTest, AFailedUnlockAtTheEndIsAWarningOnly) {
    Host().AnswerInquiry("90 50 02 FF");
    Host().Fail(Call::Unlock, Host().Calls(Call::Unlock) + 2);
    EXPECT_EQ(0U, Inquire("81 09 04 00"));
    EXPECT_THAT(Host().Log(), ElementsAre(Say("WARN", "pthread_mutex_unlock fail")));
    EXPECT_EQ(0x02, m_reply.aucData[2]);
}

TEST_F(InquiryTest, TheKovaHeaderIsSentAsItIs) {
    Host().AnswerInquiry("90 50 02 FF");
    EXPECT_EQ(0U, Inquire("71 09 04 22"));
    EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 22 FF"));
}

TEST_F(InquiryTest, TheSecondInquiryIsWrittenOnlyWhenTheFirstIsAnswered) {
    const auto inquire = [] {
        ViscaPkt packet = Packet("81 09 04 47"), reply{};
        ViscaInquiry(&packet, &reply);
    };
    ThreadUnderTest first(inquire);
    ASSERT_EQ("select queue 3 6000000", first.WaitParked());
    Host().Forget();
    ThreadUnderTest second(inquire);
    while (Host().Story({Call::Lock}).empty()) {
        sched_yield();
    }
    Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 01 FF");
    EXPECT_EQ("ended", first.Resume());
    ASSERT_EQ("select queue 3 6000000", second.WaitParked());
    Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, "90 50 02 FF");
    EXPECT_EQ("ended", second.Resume());
    EXPECT_THAT(Host().Story({Call::Take, Call::Send}),
                ElementsAre("take 3: 90 50 01 FF", "send 81 09 04 47 FF", "take 3: 90 50 02 FF"));
}

TEST_F(InquiryTest, AnAnswerFromTheLineReachesItsCaller) {
    ThreadUnderTest caller([] {
        uint32_t zoom = 0;
        EXPECT_EQ(0U, SONY_GetZoomPos(&zoom));
        EXPECT_EQ(0x1234U, zoom);
    });
    ASSERT_EQ("select queue 3 6000000", caller.WaitParked());
    Host().Feed("90 51 FF 90 50 01 02 03 04 FF");
    ViscaDealOneAck(); // a command completes in between
    EXPECT_EQ("select queue 3 6000000", caller.Resume());
    ViscaDealOneAck();
    EXPECT_EQ("ended", caller.Resume());
}

} // namespace
} // namespace unit
