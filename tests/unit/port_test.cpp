// The serial port: flags, raw write, flush, opening, and the search for the baud rate.
#include "tests/unit/unit_test.h"

#include <cerrno>
#include <fcntl.h>

namespace unit {
namespace {

class LinkStateTest : public UnitTest {};

TEST_F(LinkStateTest, KeepsWhatIsStored) {
    ViscaSetCamComFd(17);
    ViscaSetCamCanCtrl(5);
    ViscaMarkUpdatingCam(6);
    ViscaMarkExportLog(7);
    EXPECT_EQ(17, ViscaGetCamComFd());
    EXPECT_EQ(5U, ViscaIsCamCanCtrl());
    EXPECT_EQ(6U, ViscaIsUpdatingCam());
    EXPECT_EQ(7U, ViscaIsExportLog());
}

TEST_F(LinkStateTest, IsBusyWhenEitherFlagIsExactlyOne) {
    struct {
        uint32_t updating, export_log, busy;
    } const cases[] = {{0, 0, 0}, {1, 0, 1},          {0, 1, 1}, {1, 1, 1}, {2, 0, 0},
                       {0, 2, 0}, {2, 0xFFFFFFFF, 0}, {2, 1, 1}, {1, 2, 1}};
    for (const auto &test : cases) {
        ViscaMarkUpdatingCam(test.updating);
        ViscaMarkExportLog(test.export_log);
        EXPECT_EQ(test.busy, ViscaIsCamComBusy()) << test.updating << " " << test.export_log;
    }
}

class ComSendTest : public UnitTest {
  protected:
    const uint8_t m_bytes[5] = {0x81, 0x09, 0x04, 0x00, 0xFF};
};

TEST_F(ComSendTest, WritesTheBytesUnderTheSendMutex) {
    EXPECT_EQ(0U, ViscaCamComSend(5, m_bytes));
    EXPECT_THAT(Host().Story({Call::Lock, Call::Send, Call::Unlock, Call::Log}),
                ElementsAre("lock", "send 81 09 04 00 FF", "unlock"));
    EXPECT_EQ(Host().PortFd(), Host().Events(Call::Send).at(0).fd);
}

TEST_F(ComSendTest, RefusesNullBeforeAnEmptyLength) {
    EXPECT_EQ(2U, ViscaCamComSend(5, nullptr));
    EXPECT_EQ(2U, ViscaCamComSend(0, nullptr));
    EXPECT_EQ(1U, ViscaCamComSend(0, m_bytes));
    EXPECT_THAT(Host().Sent(), IsEmpty());
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaCamComSend: pucData == NULL\n",
                                          "ERROR ViscaCamComSend: pucData == NULL\n",
                                          "ERROR ViscaCamComSend: No data need be sent!\n"));
}

TEST_F(ComSendTest, AnythingButTheWholeLengthIsAFailureWithoutRetry) {
    for (int32_t result : {-1, 0, 4, 6}) {
        Host().Reset();
        Host().Fail(Call::Send, Fault{1, kForEver, result, 0});
        EXPECT_EQ(1U, ViscaCamComSend(5, m_bytes)) << result;
        EXPECT_THAT(Host().Sent(), SizeIs(1));
        EXPECT_THAT(Host().Log(), ElementsAre("ERROR ViscaCamComSend: DRV_ComSend fail\n"));
    }
    Host().Reset();
    EXPECT_EQ(0U, ViscaCamComSend(5, m_bytes)) << "the mutex was given back";
}

TEST_F(ComSendTest, FlushGivesTheDriversResult) {
    EXPECT_EQ(0U, ViscaCamComFlush(2));
    Host().Fail(Call::Flush, Fault{2, 1, 7, 0});
    EXPECT_EQ(7U, ViscaCamComFlush(1));
    EXPECT_THAT(Host().Story({Call::Flush}), ElementsAre("flush 2", "flush 1"));
    EXPECT_EQ(Host().PortFd(), Host().Events(Call::Flush).at(0).fd);
}

class ProbeTest : public UnitTest {
  protected:
    static uint32_t Probe() { return AdaptCamComBaudRate(Host().PortFd()); }
    static Lines Story() {
        return Host().Story(
            {Call::Log, Call::Fcntl, Call::SetParam, Call::Flush, Call::Write, Call::Read, Call::Sleep});
    }
    static std::string Say(const std::string &level, const std::string &message) {
        return level + " AdaptCamComBaudRate: " + message + "\n";
    }
    static bool Blocking() { return (fcntl(Host().PortFd(), F_GETFL) & O_NONBLOCK) == 0; }
    const std::string m_hopeless =
        Say("ERROR", "--------------Can not ctrl the sony camera module-------------");
};

TEST_F(ProbeTest, TheFirstRateAnswers) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    EXPECT_EQ(0U, Probe());
    EXPECT_THAT(Story(),
                ElementsAre(Say("DEBUG", "FUN_ENTRY--param:"), "fcntl getfl", "fcntl setfl nonblock",
                            "setparam 0: 1 3 9600 8 1 0 0", "flush 2", "write 81 09 04 00 FF", "read 90",
                            "read 50", Say("DEBUG", "i=0 j=2"), Say("INFO", "The current baudrate is 9600"),
                            "flush 2", "fcntl setfl block"));
    EXPECT_EQ(0U, Host().Unread()) << "the rest of the answer is discarded";
    EXPECT_TRUE(Blocking());
}

TEST_F(ProbeTest, TheLastRateAnswersAfterTwoSilentOnes) {
    Host().AnswerProbe(38400, "90 50 02 FF");
    EXPECT_EQ(0U, Probe());
    EXPECT_THAT(Host().Log(), ElementsAre(Say("DEBUG", "FUN_ENTRY--param:"), Say("DEBUG", "i=0 j=0"),
                                          Say("DEBUG", "i=1 j=0"), Say("DEBUG", "i=2 j=2"),
                                          Say("INFO", "The current baudrate is 38400")));
    EXPECT_THAT(Host().Story({Call::SetParam}),
                ElementsAre("setparam 0: 1 3 9600 8 1 0 0", "setparam 0: 1 3 19200 8 1 0 0",
                            "setparam 0: 1 3 38400 8 1 0 0"));
    EXPECT_EQ(1000000U, Clib().Slept()) << "five empty reads at each silent rate";
}

TEST_F(ProbeTest, TheMiddleRateAnswers) {
    Host().AnswerProbe(19200, "90 50 03 FF");
    EXPECT_EQ(0U, Probe());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_INFO, "AdaptCamComBaudRate", "The current baudrate is 19200\n"));
    EXPECT_EQ(2U, Host().Calls(Call::SetParam));
}

TEST_F(ProbeTest, NoCameraAnswers) {
    EXPECT_EQ(1U, Probe());
    Lines wanted = {Say("DEBUG", "FUN_ENTRY--param:"), "fcntl getfl", "fcntl setfl nonblock"};
    const char *rates[] = {"9600", "19200", "38400"};
    for (int i = 0; i < 3; ++i) {
        wanted.push_back(std::string("setparam 0: 1 3 ") + rates[i] + " 8 1 0 0");
        wanted.insert(wanted.end(), {"flush 2", "write 81 09 04 00 FF"});
        for (int empty = 0; empty < 5; ++empty) {
            wanted.insert(wanted.end(), {"read: none", "sleep 100000"});
        }
        wanted.push_back(Say("DEBUG", "i=" + std::to_string(i) + " j=0"));
    }
    wanted.insert(wanted.end(), {m_hopeless, "flush 2", "fcntl setfl block"});
    EXPECT_THAT(Story(), ElementsAreArray(wanted));
    EXPECT_TRUE(Blocking());
}

TEST_F(ProbeTest, AWrongSecondByteIsNoAnswerAtThatRate) {
    Host().AnswerProbe(9600, "90 41 FF");
    EXPECT_EQ(1U, Probe());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "AdaptCamComBaudRate", "i=0 j=1\n"));
    EXPECT_EQ(1000000U, Clib().Slept()) << "a wrong byte ends the rate without a pause";
}

TEST_F(ProbeTest, AWrongFirstByteIsNoAnswerEvenWhenTheAnswerFollows) {
    Host().AnswerProbe(9600, "00 90 50 02 FF");
    Host().AnswerProbe(19200, "90 50 02 FF");
    EXPECT_EQ(0U, Probe());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "AdaptCamComBaudRate", "i=0 j=0\n"));
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "AdaptCamComBaudRate", "i=1 j=2\n"));
    EXPECT_EQ(0U, Clib().Slept());
}

TEST_F(ProbeTest, EachByteHasFiveFreshTries) {
    Clib().OnPause([](unsigned number) {
        if (number == 4) {
            Host().Feed("90"); // the fifth try of the first byte finds it
        } else if (number == 8) {
            Host().Feed("50"); // and the fifth of the second
        }
    });
    EXPECT_EQ(0U, Probe());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "AdaptCamComBaudRate", "i=0 j=2\n"));
    EXPECT_EQ(800000U, Clib().Slept());
}

TEST_F(ProbeTest, ASecondByteThatNeverComesCostsFivePauses) {
    Host().AnswerProbe(9600, "90");
    EXPECT_EQ(1U, Probe());
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "AdaptCamComBaudRate", "i=0 j=1\n"));
    EXPECT_EQ(1500000U, Clib().Slept());
}

TEST_F(ProbeTest, AnAnswerThatComesAfterTheFifthTryBelongsToNoRate) {
    Clib().OnPause([](unsigned number) {
        if (number == 5) {
            Host().Feed("90 50 02 FF");
        }
    });
    EXPECT_EQ(1U, Probe()) << "the flush before the next rate discards it";
    EXPECT_TRUE(Host().Logged(VISCA_LOG_DEBUG, "AdaptCamComBaudRate", "i=1 j=0\n"));
}

TEST_F(ProbeTest, AFailingReadCountsAsAnEmptyOne) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    Host().Fail(Call::Read, 1, 4);
    EXPECT_EQ(0U, Probe());
    EXPECT_EQ(400000U, Clib().Slept());
}

TEST_F(ProbeTest, FailsWhenTheStatusFlagsCannotBeReadOrSet) {
    for (unsigned call : {1U, 2U}) {
        Host().Reset();
        Host().Fail(Call::Fcntl, call);
        EXPECT_EQ(1U, Probe());
        EXPECT_THAT(Host().Log(),
                    ElementsAre(Say("DEBUG", "FUN_ENTRY--param:"), Say("ERROR", "fcntl fail exit")));
        EXPECT_EQ(call, Host().Calls(Call::Fcntl)) << "nothing is set that was not read";
        EXPECT_EQ(0U, Host().Calls(Call::SetParam));
    }
}

TEST_F(ProbeTest, FailsWhenTheStatusFlagsCannotBeRestored) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    Host().Fail(Call::Fcntl, 3);
    EXPECT_EQ(1U, Probe());
    EXPECT_EQ(Say("WARN", "fcntl fail exit"), Host().Log().back());
}

TEST_F(ProbeTest, FailsAtOnceWhenARateIsRefused) {
    for (unsigned rate : {0U, 1U, 2U}) {
        Host().Reset();
        Host().Fail(Call::SetParam, rate + 1);
        EXPECT_EQ(1U, Probe());
        EXPECT_EQ(Say("ERROR", "i[" + std::to_string(rate) + "] DRV_SetComParam 0 fail exit"),
                  Host().Log().back());
        EXPECT_EQ(rate + 1, Host().Calls(Call::SetParam));
        EXPECT_FALSE(Blocking()) << "the status flags are not restored on this path";
    }
}

TEST_F(ProbeTest, FailsAtOnceWhenTheProbeIsNotWrittenWhole) {
    for (int32_t result : {-1, 0, 4}) {
        Host().Reset();
        Host().AnswerProbe(9600, "90 50 02 FF");
        Host().Fail(Call::Write, Fault{1, 1, result, EIO});
        EXPECT_EQ(1U, Probe());
        EXPECT_EQ(Say("ERROR", "write fail exit"), Host().Log().back());
        EXPECT_EQ(1U, Host().Calls(Call::SetParam));
        EXPECT_FALSE(Blocking()) << "the status flags are not restored on this path";
    }
}

TEST_F(ProbeTest, FlushesAgainEvery100MillisecondsUntilItWorks) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    Host().Fail(Call::Flush, 1, 2); // before the probe
    Host().Fail(Call::Flush, 4, 3); // and after the answer
    EXPECT_EQ(0U, Probe());
    EXPECT_EQ(5U,
              Host().CountLogged(VISCA_LOG_WARN, "AdaptCamComBaudRate", "DRV_FlushCom fail, try it again\n"));
    EXPECT_EQ(500000U, Clib().Slept());
    EXPECT_EQ(7U, Host().Calls(Call::Flush));
    const Lines story = Host().Story({Call::Flush, Call::Log, Call::Sleep});
    const Lines again = {"flush 2", Say("WARN", "DRV_FlushCom fail, try it again"), "sleep 100000"};
    EXPECT_EQ(again, Lines(story.begin() + 1, story.begin() + 4)) << "said before the pause";
}

class OpenTest : public UnitTest {
  protected:
    OpenTest() { AsAtLoad(); }
};

TEST_F(OpenTest, OpensThePortAndFindsTheCamera) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    EXPECT_EQ(0U, ViscaCamComInit(3));
    EXPECT_THAT(Host().Story({Call::Open}), ElementsAre("open 3"));
    EXPECT_EQ(Host().PortFd(), ViscaGetCamComFd());
    EXPECT_EQ(1U, ViscaIsCamCanCtrl());
    EXPECT_EQ(0U, Clib().Slept());
}

TEST_F(OpenTest, ASecondCallDoesNothing) {
    Host().AnswerProbe(9600, "90 50 02 FF");
    EXPECT_EQ(0U, ViscaCamComInit(0));
    Host().Forget();
    EXPECT_EQ(0U, ViscaCamComInit(0));
    EXPECT_THAT(Host().Story({Call::Open, Call::Write, Call::Log}),
                ElementsAre("WARN ViscaCamComInit: No need to done initialization again\n"));
}

TEST_F(OpenTest, APortThatCannotBeOpenedStaysClosedAndCanBeTriedAgain) {
    Host().Fail(Call::Open);
    EXPECT_EQ(1U, ViscaCamComInit(0));
    EXPECT_EQ(-1, ViscaGetCamComFd());
    EXPECT_EQ(0U, ViscaIsCamCanCtrl());
    EXPECT_THAT(Host().Story({Call::Open, Call::Log, Call::SetParam}),
                ElementsAre("open 0", "ERROR ViscaCamComInit: Open sony ctrl serial port fail exit\n"));
    Host().AnswerProbe(9600, "90 50 02 FF");
    EXPECT_EQ(0U, ViscaCamComInit(0));
}

TEST_F(OpenTest, TriesTwentyTimesWithASecondAfterEachAttempt) {
    EXPECT_EQ(1U, ViscaCamComInit(0));
    EXPECT_EQ(60U, Host().Calls(Call::Write));
    EXPECT_EQ(20U * (1500000 + 1000000), Clib().Slept());
    for (int attempt = 1; attempt <= 20; ++attempt) {
        EXPECT_EQ(1U, Host().CountLogged(VISCA_LOG_ERROR, "ViscaCamComInit",
                                         "AdaptCamComBaudRate fail " + std::to_string(attempt) +
                                             " times, try it after 1 sec\n"));
    }
    EXPECT_EQ(1000000U, Clib().Pauses().back());
    EXPECT_EQ("sleep 1000000", Host().Story({Call::Log, Call::Sleep}).back()) << "said before the pause";
    EXPECT_EQ(Host().PortFd(), ViscaGetCamComFd()) << "the port stays open";
    EXPECT_EQ(0U, ViscaIsCamCanCtrl());
}

TEST_F(OpenTest, AfterAHopelessSearchASecondCallSucceedsAndCanControlStaysZero) {
    ViscaSetCamCanCtrl(1);
    EXPECT_EQ(1U, ViscaCamComInit(0));
    EXPECT_EQ(0U, ViscaIsCamCanCtrl());
    Host().Forget();
    EXPECT_EQ(0U, ViscaCamComInit(0));
    EXPECT_THAT(Host().Log(), ElementsAre("WARN ViscaCamComInit: No need to done initialization again\n"));
    EXPECT_EQ(0U, ViscaIsCamCanCtrl());
    ViscaPkt packet = Packet("81 01 04 07 00");
    EXPECT_EQ(1U, ViscaEnQueueCmd(&packet));
}

TEST_F(OpenTest, ACameraThatWakesUpLateIsFoundAtALaterAttempt) {
    Host().OnRecord([](const Event &event) {
        if (event.call == Call::Write && Host().Events(Call::Write).size() == 8) {
            Host().AnswerProbe(19200, "90 50 02 FF"); // third attempt, second rate
        }
    });
    EXPECT_EQ(0U, ViscaCamComInit(0));
    EXPECT_EQ(8U, Host().Calls(Call::Write));
    EXPECT_EQ(1U, ViscaIsCamCanCtrl());
    EXPECT_EQ(2U * 2500000 + 500000, Clib().Slept());
}

} // namespace
} // namespace unit
