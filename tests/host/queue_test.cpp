#include <thread>

#include <gtest/gtest.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

constexpr uint32_t kCmd = VISCA_CMD_QUEUE_ID;
constexpr uint32_t kResult = VISCA_CMD_RESULT_QUEUE_ID;
constexpr uint32_t kInquiry = VISCA_INQUIRY_RESULT_QUEUE_ID;

class Queue : public testing::Test {
  protected:
    void TearDown() override {
        for (uint32_t ulQueueId : {kCmd, kResult, kInquiry}) {
            host::EmptyQueue(ulQueueId);
        }
    }
};

Element Numbered(uint32_t ulNumber) {
    Element st = {};
    std::memcpy(st.aucData, &ulNumber, sizeof(ulNumber));
    st.ulLength = 4;
    return st;
}

uint32_t NumberOf(const Element &st) {
    uint32_t ulNumber = 0;
    std::memcpy(&ulNumber, st.aucData, sizeof(ulNumber));
    return ulNumber;
}

bool IsReadable(uint32_t ulQueueId) {
    int32_t iFd = -1;
    EXPECT_EQ(QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, ulQueueId, &iFd), 0U);
    pollfd stPoll = {iFd, POLLIN, 0};
    return poll(&stPoll, 1, 0) == 1;
}

TEST_F(Queue, HandsElementsOutInTheOrderTheyCameIn) {
    for (uint32_t i = 0; i < 3; i++) {
        ASSERT_EQ(Put(kCmd, Numbered(i)), 0U);
    }
    EXPECT_EQ(host::QueueDepth(kCmd), 3U);
    for (uint32_t i = 0; i < 3; i++) {
        Element st;
        ASSERT_TRUE(Take(kCmd, &st));
        EXPECT_EQ(NumberOf(st), i);
        EXPECT_EQ(st.ulLength, 4U);
    }
}

TEST_F(Queue, KeepsItsOrderWhenTheRingWrapsAround) {
    Element st;
    for (uint32_t i = 0; i < 1000; i++) {
        ASSERT_EQ(Put(kCmd, Numbered(i)), 0U);
        ASSERT_EQ(Put(kCmd, Numbered(i + 100000)), 0U);
        ASSERT_TRUE(Take(kCmd, &st));
        if (i >= 200) {
            ASSERT_TRUE(Take(kCmd, &st));
        }
    }
    EXPECT_EQ(host::QueueDepth(kCmd), 200U);
    EXPECT_EQ(NumberOf(st), 100899U); // 1800 taken; the last is the 900th pair's second
}

TEST_F(Queue, FailsWhenFullAndLosesNothing) {
    for (uint32_t i = 0; i < 256; i++) {
        ASSERT_EQ(Put(kCmd, Numbered(i)), 0U);
    }
    EXPECT_NE(Put(kCmd, Numbered(999)), 0U);
    for (uint32_t i = 0; i < 256; i++) {
        Element st;
        ASSERT_TRUE(Take(kCmd, &st));
        ASSERT_EQ(NumberOf(st), i);
    }
    EXPECT_EQ(host::QueueDepth(kCmd), 0U);
}

TEST_F(Queue, TakesAgainAfterOneWasTakenFromAFullQueue) {
    Element st;
    while (Put(kCmd, Numbered(1)) == 0) {}
    ASSERT_TRUE(Take(kCmd, &st));
    EXPECT_EQ(Put(kCmd, Numbered(2)), 0U);
    EXPECT_NE(Put(kCmd, Numbered(3)), 0U);
}

TEST_F(Queue, QueuesAreApartFromEachOther) {
    ASSERT_EQ(Put(kResult, Numbered(7)), 0U);
    EXPECT_EQ(host::QueueDepth(kCmd), 0U);
    EXPECT_EQ(host::QueueDepth(kInquiry), 0U);
    EXPECT_FALSE(IsReadable(kCmd));
    EXPECT_TRUE(IsReadable(kResult));
}

TEST_F(Queue, DescriptorIsReadableExactlyWhileAnElementWaits) {
    Element st;
    EXPECT_FALSE(IsReadable(kCmd));
    Put(kCmd, Numbered(1));
    Put(kCmd, Numbered(2));
    EXPECT_TRUE(IsReadable(kCmd));
    Take(kCmd, &st);
    EXPECT_TRUE(IsReadable(kCmd));
    Take(kCmd, &st);
    EXPECT_FALSE(IsReadable(kCmd));
    EXPECT_FALSE(Take(kCmd, &st));
    EXPECT_FALSE(IsReadable(kCmd));
    Put(kCmd, Numbered(3));
    EXPECT_TRUE(IsReadable(kCmd));
}

TEST_F(Queue, DescriptorStaysTheSame) {
    int32_t iFirst = -1;
    int32_t iSecond = -2;
    QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, kCmd, &iFirst);
    QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, kCmd, &iSecond);
    EXPECT_EQ(iFirst, iSecond);
}

TEST_F(Queue, TakenElementStaysValidUntilTheNextTake) {
    void *pFirst = nullptr;
    void *pOther = nullptr;
    Put(kCmd, Numbered(1));
    Put(kCmd, Numbered(2));
    ASSERT_EQ(QUEUE_GetSerialData(kCmd, &pFirst), 0U);
    while (Put(kCmd, Numbered(3)) == 0) { // every place of the ring is written
    }
    Put(kResult, Numbered(4));
    ASSERT_EQ(QUEUE_GetSerialData(kResult, &pOther), 0U);
    EXPECT_EQ(NumberOf(*static_cast<Element *>(pFirst)), 1U);
    ASSERT_EQ(QUEUE_GetSerialData(kCmd, &pFirst), 0U);
    EXPECT_EQ(NumberOf(*static_cast<Element *>(pFirst)), 2U);
}

TEST_F(Queue, EmptyFlagIsOneOrZero) {
    uint32_t ulFlag = 77;
    EXPECT_EQ(QUEUE_IsEmpty(VISCA_QUEUE_TYPE, kCmd, &ulFlag), 0U);
    EXPECT_EQ(ulFlag, 1U);
    Put(kCmd, Numbered(1));
    EXPECT_EQ(QUEUE_IsEmpty(VISCA_QUEUE_TYPE, kCmd, &ulFlag), 0U);
    EXPECT_EQ(ulFlag, 0U);
}

TEST_F(Queue, RefusesAnotherTypeAnUnknownNumberAndAnotherSize) {
    const Element st = Numbered(1);
    uint32_t ulFlag = 0;
    int32_t iFd = 0;
    void *pElem = nullptr;
    EXPECT_NE(QUEUE_PutRawData(2, kCmd, &st, 20), 0U);
    EXPECT_NE(QUEUE_PutRawData(3, 2, &st, 20), 0U);
    EXPECT_NE(QUEUE_PutRawData(3, 4, &st, 20), 0U);
    EXPECT_NE(QUEUE_PutRawData(3, kCmd, &st, 19), 0U);
    EXPECT_NE(QUEUE_PutRawData(3, kCmd, nullptr, 20), 0U);
    EXPECT_NE(QUEUE_IsEmpty(4, kCmd, &ulFlag), 0U);
    EXPECT_NE(QUEUE_IsEmpty(3, 2, &ulFlag), 0U);
    EXPECT_NE(QUEUE_GetQueueReadFd(0, kCmd, &iFd), 0U);
    EXPECT_NE(QUEUE_GetQueueReadFd(3, 9, &iFd), 0U);
    EXPECT_NE(QUEUE_GetSerialData(2, &pElem), 0U);
    EXPECT_EQ(host::QueueDepth(kCmd), 0U);
}

TEST_F(Queue, EmptyingDropsAllAndSaysHowMany) {
    Put(kInquiry, Numbered(1));
    Put(kInquiry, Numbered(2));
    EXPECT_EQ(host::EmptyQueue(kInquiry), 2U);
    EXPECT_FALSE(IsReadable(kInquiry));
    EXPECT_EQ(host::EmptyQueue(kInquiry), 0U);
    EXPECT_EQ(host::EmptyQueue(2), 0U);
}

void PutMany(uint32_t ulProducer, uint32_t ulCount) {
    for (uint32_t i = 0; i < ulCount; i++) {
        while (Put(kCmd, Numbered(ulProducer * 100000 + i)) != 0) {
            std::this_thread::yield();
        }
    }
}

TEST_F(Queue, ConcurrentProducersLoseNothingAndKeepTheirOwnOrder) {
    constexpr uint32_t kProducers = 4;
    constexpr uint32_t kEach = 2000;
    std::vector<std::thread> vtProducers;
    for (uint32_t i = 0; i < kProducers; i++) {
        vtProducers.emplace_back(PutMany, i, kEach);
    }
    uint32_t aulNext[kProducers] = {};
    int32_t iFd = -1;
    QUEUE_GetQueueReadFd(VISCA_QUEUE_TYPE, kCmd, &iFd);
    for (uint32_t i = 0; i < kProducers * kEach; i++) {
        pollfd stPoll = {iFd, POLLIN, 0};
        Element st;
        ASSERT_EQ(poll(&stPoll, 1, 20000), 1);
        ASSERT_TRUE(Take(kCmd, &st));
        const uint32_t ulNumber = NumberOf(st);
        ASSERT_EQ(ulNumber % 100000, aulNext[ulNumber / 100000]++);
    }
    EXPECT_FALSE(IsReadable(kCmd));
    for (std::thread &t : vtProducers) {
        t.join();
    }
}

} // namespace
