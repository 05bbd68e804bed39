// Reports that a Kova module sends unasked: they arrive in the host's callbacks, whatever else is under way.
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "tests/camera/camera_test.h"

namespace camera {

namespace {

constexpr char kZoomMoves[] = "90 07 00 AE 01 FF";
constexpr char kFocusMoves[] = "90 07 00 AF 05 FF";
constexpr char kZoomInquiry[] = "81 09 04 47 FF";

// What the callbacks were told, in order: "zoom 1", "focus 0", "configure".
class Told {
  public:
    void Add(const std::string &what) {
        const std::lock_guard lock(m_mutex);
        m_what.push_back(what);
        m_changed.notify_all();
    }
    bool Await(size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kLimit, [&] { return m_what.size() >= count; });
    }
    std::vector<std::string> Get() const {
        const std::lock_guard lock(m_mutex);
        return m_what;
    }

  private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_what;
};

// Outlives the receiver thread, which may be in a callback when the process ends.
Told &TheTold() {
    static Told &told = *new Told;
    return told;
}

void OnZoom(uint32_t active) {
    TheTold().Add("zoom " + std::to_string(active));
}

void OnFocus(uint32_t active) {
    TheTold().Add("focus " + std::to_string(active));
}

void OnReconfigure() {
    TheTold().Add("configure");
}

std::atomic<uint64_t> g_calls[2];

template <size_t Which>
void Count(uint32_t) {
    ++g_calls[Which];
}

bool AwaitCalls(size_t which, uint64_t more) {
    const uint64_t wanted = g_calls[which] + more;
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (g_calls[which] < wanted && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    return g_calls[which] >= wanted;
}

} // namespace

class ReportsTest : public CameraTest {
  protected:
    void StartModule(double timeScale = 1) {
        sim::Options options = sim::Options::fast("kova2");
        options.timeScale = timeScale;
        StartWithoutFiles(options);
    }

    void Listen() {
        EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, OnZoom), 0u);
        EXPECT_EQ(VISCA_KOVA_SetSigCallback(1, OnFocus), 0u);
        KOVA_SetRecfgImgParamCallback(OnReconfigure);
        Drain();
    }
};

TEST_F(ReportsTest, TellThatTheZoomMovesAndStops) {
    StartModule();
    Listen();
    ExpectSettings({{"zoomReports", 2}, {"focusReports", 2}});
    EXPECT_EQ(VISCA_ZoomIn(), 0u);
    ASSERT_TRUE(TheTold().Await(1));
    EXPECT_TRUE(State().zoomMoving);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(TheTold().Await(2));
    Drain();
    EXPECT_THAT(TheTold().Get(), ElementsAre("zoom 1", "zoom 0"));
}

TEST_F(ReportsTest, TellThatTheFocusMovesAndArrives) {
    StartModule(100);
    Listen();
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    EXPECT_EQ(VISCA_FocusNear(), 0u);
    ASSERT_TRUE(TheTold().Await(2)) << "at the near end, by itself";
    Drain();
    EXPECT_THAT(TheTold().Get(), ElementsAre("focus 1", "focus 0"));
    EXPECT_EQ(State().focus, 0xF000u);
}

TEST_F(ReportsTest, CeaseWhenTheCallbackIsTakenAway) {
    StartModule(100);
    Listen();
    EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, nullptr), 0u);
    EXPECT_EQ(VISCA_SetZoomPos(0x2000), 0u);
    EXPECT_EQ(VISCA_EnableAF(0), 0u); // behind the arrival
    Drain();
    ExpectSettings({{"zoomReports", 3}, {"focusReports", 2}});
    EXPECT_EQ(State().sentCount("report"), 0u);
    SendRaw(kZoomMoves);
    EXPECT_EQ(Zoom(), 0x2000u); // behind the report
    EXPECT_THAT(TheTold().Get(), IsEmpty()) << "dropped without a word";
    EXPECT_THAT(HostSteps("WARN"), IsEmpty());
}

TEST_F(ReportsTest, AskForTheImageParameters) {
    StartModule();
    Camera().requestConfiguration();
    Zoom(); // nobody wants to know
    EXPECT_THAT(TheTold().Get(), IsEmpty());
    KOVA_SetRecfgImgParamCallback(OnReconfigure);
    Camera().requestConfiguration();
    ASSERT_TRUE(TheTold().Await(1));
    EXPECT_THAT(TheTold().Get(), ElementsAre("configure"));
    EXPECT_THAT(Commands(), IsEmpty()) << "no packet switches these reports";
}

TEST_F(ReportsTest, OfAnUnknownKindAreLogged) {
    StartModule();
    Listen();
    SendRaw("90 07 00 B0 01 FF");
    SendRaw("90 03 00 AE 01 FF");
    Zoom();
    EXPECT_EQ(HostCount("WARN Not support 176 yet"), 1u);
    EXPECT_EQ(HostCount("WARN Invalid ack, fail exit"), 1u);
    EXPECT_THAT(TheTold().Get(), IsEmpty());
}

TEST_F(ReportsTest, AreReadNoFurtherThanTheyReach) {
    StartModule();
    Listen();
    SendRaw("90 07 FF");
    SendRaw("90 07 00 AE FF"); // the terminator stands where the state would be
    ASSERT_TRUE(TheTold().Await(1));
    Zoom();
    EXPECT_THAT(TheTold().Get(), ElementsAre("zoom 1"));
}

/* While something else is under way */

TEST_F(ReportsTest, DoNotDisturbAnInquiryThatIsUnderWay) {
    StartModule();
    Listen();
    Camera().setFault("mute");
    std::thread asking([] { EXPECT_EQ(Zoom(), 0x1234u); });
    EXPECT_TRUE(AwaitHost(std::string("send ") + kZoomInquiry));
    SendRaw(kZoomMoves);
    SendRaw(kFocusMoves);
    EXPECT_TRUE(TheTold().Await(2));
    SendRaw("90 50 01 02 03 04 FF");
    asking.join();
    EXPECT_THAT(TheTold().Get(), ElementsAre("zoom 1", "focus 1"));
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(ReportsTest, DoNotReleaseACommandThatIsUnderWay) {
    StartModule();
    Listen();
    Forget();
    HoldNextCompletion();
    EXPECT_EQ(VISCA_EnableAF(0), 0u);
    EXPECT_EQ(VISCA_EnableAF(1), 0u);
    ASSERT_TRUE(AwaitWire("< 90 41 FF"));
    SendRaw(kZoomMoves);
    ASSERT_TRUE(TheTold().Await(1));
    Zoom();
    EXPECT_THAT(HostSteps("send 81 01"), SizeIs(1));
    Complete();
    Drain();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 38 03 FF", "81 01 04 38 02 FF"));
}

TEST_F(ReportsTest, ComeWhileTheLensMovesAndIsAskedForItsPosition) {
    StartModule(10);
    Listen();
    EXPECT_EQ(VISCA_SetZoomPos(0x4000), 0u); // 0.24 s
    uint32_t before = 0;
    while (TheTold().Get().size() < 2) {
        const uint32_t zoom = Zoom();
        ASSERT_GE(zoom, before);
        ASSERT_LE(zoom, 0x4000u);
        before = zoom;
    }
    EXPECT_EQ(Zoom(), 0x4000u);
    EXPECT_THAT(TheTold().Get(), ElementsAre("zoom 1", "zoom 0"));
    Drain();
    EXPECT_EQ(TimeOuts(), 0u);
}

TEST_F(ReportsTest, MayBeAnsweredByACommandFromTheCallback) {
    StartModule(100);
    EXPECT_EQ(VISCA_KOVA_SetSigCallback(0,
                                        [](uint32_t active) {
                                            EXPECT_EQ(SonySetRegisterVal(0x20, active == 1 ? 0x11 : 0x22),
                                                      0u);
                                            OnZoom(active);
                                        }),
              0u);
    Drain();
    Forget();
    EXPECT_EQ(VISCA_SetZoomPos(0x2000), 0u);
    ASSERT_TRUE(TheTold().Await(2));
    Drain();
    EXPECT_THAT(Commands(), ElementsAre("81 01 04 47 02 00 00 00 FF", "81 01 04 24 20 01 01 FF",
                                        "81 01 04 24 20 02 02 FF"));
    EXPECT_EQ(State().registers[0x20], 0x22u);
    EXPECT_EQ(TimeOuts(), 0u);
    ExpectOneInFlight();
}

TEST_F(ReportsTest, MayEndThemselvesFromTheCallback) {
    StartModule(100);
    EXPECT_EQ(VISCA_KOVA_SetSigCallback(0,
                                        [](uint32_t active) {
                                            EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, nullptr), 0u);
                                            OnZoom(active);
                                        }),
              0u);
    EXPECT_EQ(VISCA_SetZoomPos(0x1000), 0u);
    ASSERT_TRUE(TheTold().Await(1));
    Drain();
    ExpectSettings({{"zoomReports", 3}});
    SendRaw(kZoomMoves);
    EXPECT_EQ(Zoom(), 0x1000u);
    EXPECT_THAT(TheTold().Get(), ElementsAre("zoom 1"));
}

/* Floods */

TEST_F(ReportsTest, FloodInWhileTheCallbacksAreReplaced) {
    StartModule();
    std::atomic<bool> flooding{true};
    std::atomic<uint64_t> sent{0};
    std::thread flood([&] {
        while (flooding) {
            if (sent < g_calls[0] + g_calls[1] + 50) { // no more on the line than is soon dealt with
                SendRaw(kZoomMoves);
                ++sent;
            }
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, Count<0>), 0u);
    sent = 0;
    for (int i = 0; i < 25; ++i) {
        EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, Count<0>), 0u);
        EXPECT_TRUE(AwaitCalls(0, 2));
        EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, Count<1>), 0u);
        EXPECT_TRUE(AwaitCalls(1, 2));
        KOVA_SetRecfgImgParamCallback(i % 2 == 0 ? OnReconfigure : nullptr);
    }
    EXPECT_EQ(VISCA_KOVA_SetSigCallback(0, nullptr), 0u);
    flooding = false;
    flood.join();
    Drain();
    ExpectSettings({{"zoomReports", 3}});
    EXPECT_EQ(Zoom(), 0u);
    ExpectNothingRefused();
}

// Every low nibble and every length from 3 to 16 bytes takes 224 reports.
TEST_F(ReportsTest, OfEveryLengthAndContentLeaveTheLinkInStep) {
    StartModule(200);
    EXPECT_EQ(VISCA_SetZoomFocusPos(0x2345, 0x5678), 0u);
    Drain();
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return !state.zoomMoving && !state.focusMoving; }));
    Listen();
    Forget();
    Camera().setFault("report=random#224");
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(Zoom(), 0x2345u);
        EXPECT_EQ(SonySetRegisterVal(0x20, static_cast<uint8_t>(i)), 0u);
    }
    ASSERT_TRUE(AwaitCamera([](const sim::State &state) { return state.sentCount("report") == 224; }));
    Drain();
    EXPECT_EQ(Zoom(), 0x2345u);
    EXPECT_EQ(State().registers[0x20], 9u);
    EXPECT_EQ(State().seenCount("01 04 24"), 10u);
    EXPECT_EQ(HostCount("Unexpected Ack"), 0u);
    EXPECT_EQ(HostCount("WARN unexpected byte"), 0u);
    EXPECT_EQ(HostCount("WARN Invalid ack, fail exit"), 210u) << "15 of 16 low nibbles";
    ExpectNothingRefused();
}

} // namespace camera
