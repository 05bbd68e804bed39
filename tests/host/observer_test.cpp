#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "host/host.h"
#include "tests/host/fixtures.h"

namespace {

using host::EventKind;

const Element kZoomTele = {{0x81, 0x01, 0x04, 0x07, 0x26, 0xFF}, 6};

class Observers : public testing::Test {
  protected:
    void TearDown() override { host::EmptyQueue(VISCA_CMD_QUEUE_ID); }
};

TEST_F(Observers, SeeEveryPutAndTakeWithItsBytes) {
    Recorder stRecorder;
    Element st;
    Put(VISCA_CMD_QUEUE_ID, kZoomTele);
    Take(VISCA_CMD_QUEUE_ID, &st);
    const auto vstSeen = stRecorder.All();
    ASSERT_EQ(vstSeen.size(), 2U);
    EXPECT_EQ(vstSeen[0].stEvent.enKind, EventKind::kQueuePut);
    EXPECT_EQ(vstSeen[0].stEvent.ulQueueId, VISCA_CMD_QUEUE_ID);
    EXPECT_EQ(vstSeen[0].stEvent.iResult, 0);
    EXPECT_EQ(vstSeen[0].strBytes, "\x81\x01\x04\x07\x26\xFF");
    EXPECT_EQ(vstSeen[1].stEvent.enKind, EventKind::kQueueTake);
    EXPECT_EQ(vstSeen[1].strBytes, "\x81\x01\x04\x07\x26\xFF");
    EXPECT_LE(vstSeen[0].stEvent.ullTimeNs, vstSeen[1].stEvent.ullTimeNs);
}

TEST_F(Observers, SeeARefusedPut) {
    while (Put(VISCA_CMD_QUEUE_ID, kZoomTele) == 0) {}
    Recorder stRecorder;
    Put(VISCA_CMD_QUEUE_ID, kZoomTele);
    ASSERT_EQ(stRecorder.All().size(), 1U);
    EXPECT_EQ(stRecorder.All()[0].stEvent.iResult, 1);
}

TEST_F(Observers, AreShownAtMost16BytesWhateverTheCountSays) {
    Recorder stRecorder;
    Element st = kZoomTele;
    st.ulLength = 0xFFFFFFFF;
    Put(VISCA_CMD_QUEUE_ID, st);
    EXPECT_EQ(stRecorder.All()[0].strBytes.size(), 16U);
}

TEST_F(Observers, SeeWhatEmptyingDrops) {
    Put(VISCA_CMD_QUEUE_ID, kZoomTele);
    Recorder stRecorder;
    host::EmptyQueue(VISCA_CMD_QUEUE_ID);
    EXPECT_EQ(stRecorder.Count(EventKind::kQueueDrop), 1U);
}

TEST_F(Observers, SeeNothingOnceRemoved) {
    { Recorder stRecorder; }
    std::atomic<int> iCalls{0};
    const auto Count = [](const host::Event &, void *pContext) {
        (*static_cast<std::atomic<int> *>(pContext))++;
    };
    const int32_t iNumber = host::AddObserver(Count, &iCalls);
    Put(VISCA_CMD_QUEUE_ID, kZoomTele);
    host::RemoveObserver(iNumber);
    host::RemoveObserver(iNumber);
    Put(VISCA_CMD_QUEUE_ID, kZoomTele);
    EXPECT_EQ(iCalls.load(), 1);
}

TEST_F(Observers, AreRefusedWhenThereAreTooMany) {
    const auto Ignore = [](const host::Event &, void *) {};
    int32_t aiNumbers[host::kMaxObservers];
    for (int32_t &iNumber : aiNumbers) {
        iNumber = host::AddObserver(Ignore, nullptr);
        EXPECT_GE(iNumber, 0);
    }
    EXPECT_LT(host::AddObserver(Ignore, nullptr), 0);
    host::RemoveObserver(aiNumbers[3]);
    EXPECT_EQ(host::AddObserver(Ignore, nullptr), aiNumbers[3]);
    for (int32_t iNumber : aiNumbers) {
        host::RemoveObserver(iNumber);
    }
    EXPECT_LT(host::AddObserver(nullptr, nullptr), 0);
}

TEST_F(Observers, MayUseTheServices) {
    static uint32_t ulDepthSeen;
    ulDepthSeen = 77;
    const auto Ask = [](const host::Event &stEvent, void *) {
        if (stEvent.enKind == EventKind::kQueuePut) {
            ulDepthSeen = host::QueueDepth(VISCA_CMD_QUEUE_ID);
        }
    };
    const int32_t iNumber = host::AddObserver(Ask, nullptr);
    Put(VISCA_CMD_QUEUE_ID, kZoomTele);
    host::RemoveObserver(iNumber);
    EXPECT_EQ(ulDepthSeen, 0U); // told before a taker can see the element
}

struct Gate {
    std::atomic<bool> bInside{false};
    std::atomic<bool> bMayLeave{false};
    std::atomic<bool> bLeft{false};
};

void WaitInside(const host::Event &, void *pContext) {
    auto *pstGate = static_cast<Gate *>(pContext);
    pstGate->bInside = true;
    while (!pstGate->bMayLeave) {
        std::this_thread::yield();
    }
    pstGate->bLeft = true;
}

TEST_F(Observers, RemovalWaitsForACallThatIsRunning) {
    Gate stGate;
    const int32_t iNumber = host::AddObserver(WaitInside, &stGate);
    std::thread tPut([] { Put(VISCA_CMD_QUEUE_ID, kZoomTele); });
    while (!stGate.bInside) {
        std::this_thread::yield();
    }
    bool bLeftWhenRemoved = false;
    std::thread tRemove([&] {
        host::RemoveObserver(iNumber);
        bLeftWhenRemoved = stGate.bLeft;
    });
    usleep(20000); // gives a removal that does not wait the time to be wrong
    stGate.bMayLeave = true;
    tRemove.join();
    tPut.join();
    EXPECT_TRUE(bLeftWhenRemoved);
}

TEST_F(Observers, ComeAndGoWhileOthersReport) {
    std::atomic<bool> bStop{false};
    std::thread tTraffic([&] {
        Element st;
        while (!bStop) {
            Put(VISCA_CMD_QUEUE_ID, kZoomTele);
            Take(VISCA_CMD_QUEUE_ID, &st);
        }
    });
    for (int i = 0; i < 200; i++) {
        Recorder stShortLived;
    }
    bStop = true;
    tTraffic.join();
}

TEST_F(Observers, EventsHaveNames) {
    EXPECT_STREQ(host::EventName(EventKind::kQueuePut), "queue put");
    EXPECT_STREQ(host::EventName(EventKind::kComBack), "device back");
    EXPECT_STREQ(host::EventName(static_cast<EventKind>(99)), "unknown");
}

} // namespace
