#include <thread>

#include <gtest/gtest.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

using namespace std::chrono_literals;

constexpr uint32_t kCmd = VISCA_CMD_QUEUE_ID;
constexpr uint32_t kResult = VISCA_CMD_RESULT_QUEUE_ID;
constexpr uint32_t kInquiry = VISCA_INQUIRY_RESULT_QUEUE_ID;

const Element kZoomTele = {{0x81, 0x01, 0x04, 0x07, 0x26, 0xFF}, 6};
const Element kZoomInquiry = {{0x81, 0x09, 0x04, 0x47, 0xFF}, 5};
const Element kCompletion = {{0x90, 0x51, 0xFF}, 3};
const Element kZoomAnswer = {{0x90, 0x50, 0x01, 0x02, 0x03, 0x04, 0xFF}, 7};
const Element kBufferFull = {{0x90, 0x60, 0x03, 0xFF}, 4};
const Element kNotExecutable = {{0x90, 0x60, 0x41, 0xFF}, 4};

class Traffic : public testing::Test {
  protected:
    void SetUp() override {
        host::SetLog(host::Log::kGeneral, {host::LogTarget::kStderr, host::kLogOff});
        ASSERT_EQ(host::MapPort(0, m_stPty.Path()), "");
        ASSERT_EQ(DRV_OpenCom(0, &m_iFd), 0U);
        host::ResetCounters();
    }
    void TearDown() override {
        for (uint32_t ulQueueId : {kCmd, kResult, kInquiry}) {
            host::EmptyQueue(ulQueueId);
        }
        DRV_Common_Print(VISCA_LOG_DEBUG, "%s Wait VISCA RSP msg tiemout!\n",
                         "x"); // ends a wait of this thread
        host::ClosePort(0);
    }

    int32_t Send(const Element &st) const { return DRV_ComSend(m_iFd, st.ulLength, st.aucData); }

    // What the sender does with the oldest command.
    void SendOldest() const {
        Element st;
        ASSERT_TRUE(Take(kCmd, &st));
        ASSERT_EQ(Send(st), static_cast<int32_t>(st.ulLength));
    }
    static void TakeResult() {
        Element st;
        ASSERT_TRUE(Take(kResult, &st));
    }

    Pty m_stPty;
    int32_t m_iFd = -1;
};

TEST_F(Traffic, CountsACommandFromQueueToCompletion) {
    Put(kCmd, kZoomTele);
    SendOldest();
    Put(kResult, kCompletion);
    TakeResult();
    const host::Counters st = host::GetCounters();
    EXPECT_EQ(st.ullCommandsQueued, 1U);
    EXPECT_EQ(st.ullCommandsSent, 1U);
    EXPECT_EQ(st.ullCommandsUnsent, 0U);
    EXPECT_EQ(st.ullCompletions, 1U);
    EXPECT_EQ(st.ullSends, 1U);
    EXPECT_EQ(st.ullBytesSent, 6U);
    EXPECT_EQ(st.ullInquiriesSent, 0U);
}

TEST_F(Traffic, CountsRefusalsByTheirCode) {
    Put(kResult, kBufferFull);
    Put(kResult, kBufferFull);
    Put(kInquiry, kNotExecutable);
    const host::Counters st = host::GetCounters();
    EXPECT_EQ(st.ullErrors, 3U);
    EXPECT_EQ(st.aullErrorsByCode[0x03], 2U);
    EXPECT_EQ(st.aullErrorsByCode[0x41], 1U);
    EXPECT_EQ(st.ullCompletions, 0U);
    EXPECT_EQ(st.ullAnswers, 0U);
}

TEST_F(Traffic, CountsCommandsThatFoundTheQueueFull) {
    for (int i = 0; i < 258; i++) {
        Put(kCmd, kZoomTele);
    }
    EXPECT_EQ(host::GetCounters().ullCommandsQueued, 256U);
    EXPECT_EQ(host::GetCounters().ullCommandsRefused, 2U);
}

TEST_F(Traffic, CountsResultsThatFoundTheQueueFull) {
    for (int i = 0; i < 257; i++) {
        Put(kResult, kCompletion);
    }
    EXPECT_EQ(host::GetCounters().ullCompletions, 256U);
    EXPECT_EQ(host::GetCounters().ullResultsLost, 1U);
}

TEST_F(Traffic, AnAnswerToAnOpenInquiryIsAsked) {
    Recorder stRecorder;
    Send(kZoomInquiry);
    Put(kInquiry, kZoomAnswer);
    Element st;
    Take(kInquiry, &st);
    EXPECT_FALSE(stRecorder.All()[2].stEvent.bUnasked);
    EXPECT_EQ(host::GetCounters().ullAnswers, 1U);
    EXPECT_EQ(host::GetCounters().ullInquiriesSent, 1U);
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 0U);
}

TEST_F(Traffic, AnAnswerWithNoInquiryOpenIsUnasked) {
    Recorder stRecorder;
    Put(kInquiry, kZoomAnswer);
    EXPECT_TRUE(stRecorder.All()[0].stEvent.bUnasked);
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 1U);
}

TEST_F(Traffic, ASecondAnswerToOneInquiryIsUnasked) {
    Send(kZoomInquiry);
    Put(kInquiry, kZoomAnswer);
    Put(kInquiry, kZoomAnswer);
    EXPECT_EQ(host::GetCounters().ullAnswers, 2U);
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 1U);
}

TEST_F(Traffic, AnAnswerAfterTheInquirysTimeOutIsUnasked) {
    Send(kZoomInquiry);
    DRV_Common_Print(VISCA_LOG_ERROR, "%s Wait VISCA RSP msg tiemout!\n", "prefix");
    Put(kInquiry, kZoomAnswer);
    EXPECT_EQ(host::GetCounters().ullInquiryTimeouts, 1U);
    EXPECT_EQ(host::GetCounters().ullCommandTimeouts, 0U);
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 1U);
}

TEST_F(Traffic, CountsJunkByTheLinesThatAreNotShown) {
    DRV_Common_Print(VISCA_LOG_WARN, "%s unexpected byte[0x%x]\n", "prefix", 0x12U);
    DRV_Common_Print(VISCA_LOG_WARN, "%s unexpected byte[0x%x]\n", "prefix", 0xFFU);
    DRV_Common_Print(VISCA_LOG_ERROR, "%s Unexpected Ack, fail exit\n", "prefix");
    DRV_Common_Print(VISCA_LOG_ERROR, "%s read error, fail exit\n", "prefix");
    const host::Counters st = host::GetCounters();
    EXPECT_EQ(st.ullJunkBytes, 2U);
    EXPECT_EQ(st.ullBadReplies, 1U);
    EXPECT_EQ(st.ullReadErrors, 1U);
}

TEST_F(Traffic, ResetSetsAllToZero) {
    Put(kResult, kBufferFull);
    host::ResetCounters();
    EXPECT_EQ(host::GetCounters().ullErrors, 0U);
    EXPECT_EQ(host::GetCounters().aullErrorsByCode[3], 0U);
}

TEST_F(Traffic, IsDrainedWhenNothingWasQueued) {
    EXPECT_TRUE(host::WaitDrained(0ms));
}

TEST_F(Traffic, IsDrainedOnlyWhenTheResultWasTaken) {
    Put(kCmd, kZoomTele);
    EXPECT_FALSE(host::WaitDrained(0ms));
    SendOldest();
    EXPECT_FALSE(host::WaitDrained(0ms));
    Put(kResult, kCompletion);
    EXPECT_FALSE(host::WaitDrained(0ms));
    TakeResult();
    EXPECT_TRUE(host::WaitDrained(0ms));
}

TEST_F(Traffic, ALeftOverResultTakenBeforeTheWriteDoesNotCount) {
    Element st;
    Put(kCmd, kZoomTele);
    Put(kResult, kCompletion);
    Take(kCmd, &st);
    Take(kResult, &st);
    Send(kZoomTele);
    EXPECT_FALSE(host::WaitDrained(0ms));
}

TEST_F(Traffic, IsDrainedWhenTheSenderGivesUpOnAResult) {
    Put(kCmd, kZoomTele);
    SendOldest();
    DRV_Common_Print(VISCA_LOG_DEBUG, "%s Wait VISCA RSP msg tiemout!\n", "prefix");
    EXPECT_TRUE(host::WaitDrained(0ms));
    EXPECT_EQ(host::GetCounters().ullCommandTimeouts, 1U);
    EXPECT_EQ(host::GetCounters().ullInquiryTimeouts, 0U);
}

TEST_F(Traffic, IsDrainedTwoSecondsAfterTheWriteByItself) {
    Put(kCmd, kZoomTele);
    SendOldest();
    const auto tStart = std::chrono::steady_clock::now();
    EXPECT_TRUE(host::WaitDrained(kPatience));
    EXPECT_GE(std::chrono::steady_clock::now() - tStart, 1900ms);
    EXPECT_EQ(host::GetCounters().ullCommandTimeouts, 1U);
}

TEST_F(Traffic, TheNextTakeEndsACommandWithoutResult) {
    Put(kCmd, kZoomTele);
    Put(kCmd, kZoomTele);
    SendOldest();
    SendOldest();
    EXPECT_EQ(host::GetCounters().ullCommandTimeouts, 1U);
    Put(kResult, kCompletion);
    TakeResult();
    EXPECT_TRUE(host::WaitDrained(0ms));
}

TEST_F(Traffic, AnElementThatIsNoCommandIsDealtWithWhenTaken) {
    Element st;
    Element stLong = kZoomTele;
    stLong.ulLength = 17;
    Put(kCmd, kZoomInquiry);
    Put(kCmd, stLong);
    Take(kCmd, &st);
    Take(kCmd, &st);
    EXPECT_TRUE(host::WaitDrained(0ms));
    EXPECT_EQ(host::GetCounters().ullCommandsUnsent, 2U);
}

TEST_F(Traffic, ACommandThatCouldNotBeWrittenIsDealtWith) {
    Element st;
    Put(kCmd, kZoomTele);
    Take(kCmd, &st);
    m_stPty.Close();
    EXPECT_LT(Send(st), 0);
    EXPECT_TRUE(host::WaitDrained(0ms));
    EXPECT_EQ(host::GetCounters().ullSendFailures, 1U);
    EXPECT_EQ(host::GetCounters().ullCommandsUnsent, 1U);
    EXPECT_EQ(host::GetCounters().ullCommandsSent, 0U);
    EXPECT_EQ(host::GetCounters().ullBytesSent, 0U);
}

TEST_F(Traffic, DroppedCommandsAreDealtWith) {
    Put(kCmd, kZoomTele);
    Put(kCmd, kZoomTele);
    host::EmptyQueue(kCmd);
    EXPECT_TRUE(host::WaitDrained(0ms));
    EXPECT_EQ(host::GetCounters().ullCommandsUnsent, 2U);
}

TEST_F(Traffic, AnInquiryBetweenACommandAndItsResultChangesNothing) {
    Put(kCmd, kZoomTele);
    SendOldest();
    std::thread([this] {
        Element st;
        Send(kZoomInquiry);
        Put(kInquiry, kZoomAnswer);
        Take(kInquiry, &st);
    }).join();
    EXPECT_FALSE(host::WaitDrained(0ms));
    Put(kResult, kCompletion);
    TakeResult();
    EXPECT_TRUE(host::WaitDrained(0ms));
    EXPECT_EQ(host::GetCounters().ullUnaskedAnswers, 0U);
}

TEST_F(Traffic, AnInquiryThatTimesOutDoesNotEndTheCommand) {
    Put(kCmd, kZoomTele);
    SendOldest();
    std::thread([this] {
        Send(kZoomInquiry);
        DRV_Common_Print(VISCA_LOG_ERROR, "%s Wait VISCA RSP msg tiemout!\n", "prefix");
    }).join();
    EXPECT_FALSE(host::WaitDrained(0ms));
    EXPECT_EQ(host::GetCounters().ullInquiryTimeouts, 1U);
    EXPECT_EQ(host::GetCounters().ullCommandTimeouts, 0U);
}

TEST_F(Traffic, ManyCommandsAreDrained) {
    for (int i = 0; i < 50; i++) {
        Put(kCmd, kZoomTele);
    }
    std::thread tSender([this] {
        for (int i = 0; i < 50; i++) {
            SendOldest();
            Put(kResult, kCompletion);
            TakeResult();
        }
    });
    EXPECT_TRUE(host::WaitDrained(kPatience));
    EXPECT_EQ(host::GetCounters().ullCompletions, 50U);
    tSender.join();
}

// How long WaitDrained waits for pfnDealWith to deal with one element of the command queue.
std::chrono::steady_clock::duration WaitWhile(void (*pfnDealWith)()) {
    Put(kCmd, kZoomInquiry);
    std::thread tOther([pfnDealWith] {
        usleep(20000); // lets the wait begin; nothing fails when it has not
        pfnDealWith();
    });
    const auto tStart = std::chrono::steady_clock::now();
    EXPECT_TRUE(host::WaitDrained(kPatience));
    const auto tWaited = std::chrono::steady_clock::now() - tStart;
    tOther.join();
    return tWaited;
}

TEST_F(Traffic, WaitingEndsWhenTheLastElementIsTaken) {
    const auto Take1 = [] {
        Element st;
        Take(kCmd, &st);
    };
    EXPECT_LT(WaitWhile(Take1), kPatience / 2);
}

TEST_F(Traffic, WaitingEndsWhenTheLastElementIsDropped) {
    EXPECT_LT(WaitWhile([] { host::EmptyQueue(kCmd); }), kPatience / 2);
}

} // namespace
