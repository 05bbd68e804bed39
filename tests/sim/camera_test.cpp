#include "host_end.h"

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sys/ioctl.h>
#include <thread>

using namespace std::chrono_literals;
using sim::Camera;
using sim::Direction;
using sim::Options;
using sim::Power;
using sim::State;
using sim::TraceEvent;
using testing::HasSubstr;

namespace {

constexpr const char *INQUIRY = "81 09 04 00 FF";
constexpr const char *ANSWER = "90 50 02 FF";

class TemporaryFolder {
  public:
    TemporaryFolder() {
        char name[] = "/tmp/sim_test.XXXXXX";
        m_path = mkdtemp(name);
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    std::string file(const std::string &name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

class Diary {
  public:
    sim::Trace trace() {
        return [this](const TraceEvent &event) {
            const std::lock_guard lock(m_mutex);
            m_events.push_back(event);
            m_changed.notify_all();
        };
    }
    /* The first so many events of one direction. */
    std::vector<TraceEvent> events(Direction direction, size_t count) {
        std::unique_lock lock(m_mutex);
        std::vector<TraceEvent> found;
        m_changed.wait_for(lock, HostEnd::PATIENCE, [&] {
            found.clear();
            for (const TraceEvent &event : m_events) {
                if (event.direction == direction && found.size() < count)
                    found.push_back(event);
            }
            return found.size() == count;
        });
        return found;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<TraceEvent> m_events;
};

std::string refusalOf(const Options &options) {
    try {
        Camera camera(options);
    } catch (const std::exception &error) {
        return error.what();
    }
    return "accepted";
}

// What the camera sends while it is asked a hundred times, with faults that draw lots.
std::vector<std::string> misbehaviour(uint64_t seed) {
    Diary diary;
    Options options = Options::fast();
    options.seed = seed;
    options.faults = {"noise=0.3", "drop-rx=0.1", "flip=0.1", "dup=0.1"};
    options.trace = diary.trace();
    Camera camera(options);
    HostEnd host(camera);
    for (int i = 0; i < 100; ++i)
        host.send(INQUIRY);
    std::vector<std::string> sent;
    for (const TraceEvent &event : diary.events(Direction::toHost, 100))
        sent.push_back(toHex(event.bytes));
    return sent;
}

} // namespace

/* ---- Which cameras there are ---- */

TEST(KnownCameras, AreFoundByNameAndByCode) {
    EXPECT_EQ(sim::findCamera("sony1").code, 0x02000001u);
    EXPECT_EQ(sim::findCamera("sony3").code, 0x02000003u);
    EXPECT_EQ(sim::findCamera("0x02000004").name, "sony4");
    EXPECT_EQ(sim::findCamera("33554437").name, "sony5");
}

TEST(KnownCameras, AnUnknownOneIsAnsweredWithThoseThatThereAre) {
    for (const char *name : {"sony2", "", "0x1"}) {
        try {
            sim::findCamera(name);
            FAIL() << name;
        } catch (const std::invalid_argument &error) {
            EXPECT_THAT(error.what(),
                        HasSubstr("sony1 (0x02000001), sony3 (0x02000003), sony4 (0x02000004)"));
        }
    }
}

/* ---- Options ---- */

TEST(OptionsCheck, WrongOnesAreRefusedWithWhatIsAllowed) {
    Options options = Options::fast();
    options.baud = 57600;
    EXPECT_THAT(refusalOf(options), HasSubstr("9600, 19200 or 38400"));
    options = Options::fast();
    options.timeScale = 0;
    EXPECT_THAT(refusalOf(options), HasSubstr("0.01 to 1000"));
    options = Options::fast();
    options.frameRate = 0;
    EXPECT_THAT(refusalOf(options), HasSubstr("frame rate"));
    options = Options::fast();
    options.bootTime = -1ms;
    EXPECT_THAT(refusalOf(options), HasSubstr("boot time"));
    options = Options::fast();
    options.latency.answer = {2ms, 1ms};
    EXPECT_THAT(refusalOf(options), HasSubstr("latency"));
    options = Options::fast("sony9");
    EXPECT_THAT(refusalOf(options), HasSubstr("\"sony9\""));
}

/* ---- The port ---- */

TEST(Port, TheLinkLeadsToTheCameraAndGoesWithIt) {
    TemporaryFolder folder;
    Options options = Options::fast();
    options.link = folder.file("port");
    {
        Camera camera(options);
        EXPECT_EQ(camera.path(), options.link);
        HostEnd host(options.link);
        EXPECT_EQ(host.ask(INQUIRY), ANSWER);
    }
    EXPECT_FALSE(std::filesystem::is_symlink(options.link));
}

TEST(Port, AStaleLinkIsReplacedAndAFileIsNot) {
    TemporaryFolder folder;
    Options options = Options::fast();
    options.link = folder.file("stale");
    std::filesystem::create_symlink("/nowhere", options.link);
    EXPECT_EQ(refusalOf(options), "accepted");
    options.link = folder.file("file");
    std::ofstream(options.link) << "precious";
    EXPECT_THAT(refusalOf(options), HasSubstr("is no symbolic link"));
    EXPECT_EQ(std::filesystem::file_size(options.link), 8u);
    options.link = folder.file("no/such/folder");
    EXPECT_THAT(refusalOf(options), HasSubstr("cannot make the link"));
}

TEST(Port, ALinkThatAnotherCameraTookOverIsLeftToIt) {
    TemporaryFolder folder;
    Options options = Options::fast();
    options.link = folder.file("port");
    auto first = std::make_unique<Camera>(options);
    Camera second(options);
    first.reset();
    HostEnd host(options.link);
    EXPECT_EQ(host.ask(INQUIRY), ANSWER);
}

TEST(Port, HangUpTakesTheLinkAwayAndReplugBringsANewPty) {
    TemporaryFolder folder;
    Options options = Options::fast();
    options.link = folder.file("port");
    Camera camera(options);
    HostEnd old(camera);
    const auto before = std::filesystem::read_symlink(options.link);
    camera.hangUp();
    EXPECT_FALSE(std::filesystem::is_symlink(options.link));
    EXPECT_EQ(old.bytes(1), "");
    camera.replug();
    EXPECT_NE(std::filesystem::read_symlink(options.link), before);
    HostEnd fresh(camera);
    EXPECT_EQ(fresh.ask(INQUIRY), ANSWER);
}

TEST(Port, TheCameraKeepsItsStateThroughAReplug) {
    Camera camera(Options::fast());
    HostEnd(camera).command("81 01 04 61 02 FF");
    camera.replug();
    EXPECT_EQ(camera.state().setting("mirror"), 2);
    EXPECT_EQ(HostEnd(camera).ask("81 09 04 61 FF"), "90 50 02 FF");
}

TEST(Port, AHostCanComeAfterAnotherOneHasGone) {
    Camera camera(Options::fast());
    EXPECT_EQ(HostEnd(camera).ask(INQUIRY), ANSWER);
    EXPECT_EQ(HostEnd(camera).ask(INQUIRY), ANSWER);
}

TEST(Port, AnExclusiveMarkIsForgottenWithTheLastClose) {
    Camera camera(Options::fast());
    {
        HostEnd host(camera);
        EXPECT_EQ(ioctl(host.descriptor(), TIOCEXCL), 0);
    }
    const auto deadline = sim::Clock::now() + HostEnd::PATIENCE;
    int exclusive = 1;
    while (exclusive && sim::Clock::now() < deadline) {
        HostEnd host(camera);
        ASSERT_EQ(ioctl(host.descriptor(), TIOCGEXCL, &exclusive), 0);
        std::this_thread::yield();
    }
    EXPECT_EQ(exclusive, 0);
}

/* ---- State and trace ---- */

TEST(StateJson, IsOneLineThatTellsWhatTheCameraBelieves) {
    Camera camera(Options::fast("sony4"));
    HostEnd host(camera);
    host.command("81 01 04 38 03 FF");
    host.command("81 01 04 24 72 01 05 FF");
    host.ask("81 01 04 7E FF");
    camera.setFault("late=3@600");
    const std::string text = camera.stateJson();
    EXPECT_EQ(text.find('\n'), std::string::npos);
    const auto json = nlohmann::json::parse(text);
    EXPECT_EQ(json["camera"], "sony4");
    EXPECT_EQ(json["type"], "0x02000004");
    EXPECT_EQ(json["power"], "on");
    EXPECT_EQ(json["booting"], false);
    EXPECT_EQ(json["baud"], 9600);
    EXPECT_EQ(json["zoom"], 0);
    EXPECT_EQ(json["focusMode"], "manual");
    EXPECT_EQ(json["dzoom"], true);
    EXPECT_EQ(json["settings"]["mirror"], 3);
    EXPECT_EQ(json["registers"]["0x72"], "0x0E");
    EXPECT_EQ(json["pendingRegisters"]["0x72"], "0x15");
    EXPECT_EQ(json["sockets"], nlohmann::json::array());
    EXPECT_EQ(json["seen"]["01 04 38"], 1);
    EXPECT_EQ(json["sent"]["completion"], 2);
    EXPECT_EQ(json["sent"]["error 02"], 1);
    EXPECT_EQ(json["noiseBytes"], 0);
    EXPECT_EQ(json["faults"][0], "late=3@600");
}

TEST(StateJson, NamesBusySocketsAndMotion) {
    Options options = Options::fast();
    options.timeScale = 0.1;
    Camera camera(options);
    HostEnd host(camera);
    host.ask("81 01 04 47 04 00 00 00 FF");
    const auto json = nlohmann::json::parse(camera.stateJson());
    EXPECT_EQ(json["sockets"], nlohmann::json({1}));
    EXPECT_EQ(json["zoomMoving"], true);
}

TEST(StateSnapshot, AnUnknownSettingIsAnError) {
    Camera camera(Options::fast());
    EXPECT_THROW(camera.state().setting("colour of the case"), std::invalid_argument);
}

TEST(StateSnapshot, WaitForGivesUpAtItsTimeout) {
    Camera camera(Options::fast());
    EXPECT_FALSE(camera.waitFor([](const State &) { return false; }, 5ms));
}

TEST(StateSnapshot, WaitForSeesTheLensPassByWithoutAnyTraffic) {
    Options options = Options::fast();
    options.timeScale = 10;
    Camera camera(options);
    HostEnd(camera).command("81 01 04 07 27 FF");
    EXPECT_TRUE(camera.waitFor([](const State &s) { return s.zoom > 0x2000; }, HostEnd::PATIENCE));
}

TEST(StateSnapshot, KindsOfPacketsAreBounded) {
    Camera camera(Options::fast());
    HostEnd host(camera);
    for (unsigned i = 0; i < 0x300; ++i) {
        char packet[24];
        std::snprintf(packet, sizeof packet, "81 7E %02X %02X FF", i >> 8, i & 0x7F);
        host.ask(packet);
        std::snprintf(packet, sizeof packet, "81 7D %02X %02X FF", i >> 8, i & 0x7F);
        host.ask(packet);
    }
    EXPECT_LE(camera.state().seen.size(), 513u);
    EXPECT_GT(camera.state().seenCount("other"), 0u);
}

TEST(TraceOfALine, ShowsPacketsBothWaysWithRisingTimes) {
    Diary diary;
    Options options = Options::fast();
    options.trace = diary.trace();
    Camera camera(options);
    HostEnd host(camera);
    host.send("00 81 09 04 00 FF");
    const auto in = diary.events(Direction::toCamera, 2);
    const auto out = diary.events(Direction::toHost, 1);
    ASSERT_EQ(in.size(), 2u);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(toHex(in[0].bytes), "00");
    EXPECT_THAT(in[0].text, HasSubstr("noise"));
    EXPECT_EQ(toHex(in[1].bytes), INQUIRY);
    EXPECT_EQ(in[1].text, "");
    EXPECT_EQ(toHex(out[0].bytes), ANSWER);
    EXPECT_LE(in[1].time, out[0].time);
}

TEST(TraceOfALine, NamesFaultsPowerAndWrongRates) {
    Diary diary;
    Options options = Options::fast();
    options.trace = diary.trace();
    Camera camera(options);
    HostEnd host(camera);
    camera.setFault("drop-ff=1");
    host.send(INQUIRY);
    EXPECT_EQ(diary.events(Direction::toHost, 1).at(0).text, "drop-ff");
    camera.powerCut();
    const auto remarks = diary.events(Direction::remark, 2);
    EXPECT_EQ(remarks.at(0).text, "fault begins: drop-ff=1");
    EXPECT_EQ(remarks.at(1).text, "supply off");
    host.setBaud(19200);
    host.send(INQUIRY);
    EXPECT_THAT(diary.events(Direction::toCamera, 2).at(1).text,
                HasSubstr("sent at 19200, the camera listens at 9600"));
}

TEST(TraceOfALine, ItsCallbackMayUseTheCamera) {
    std::atomic<Camera *> self{nullptr};
    std::atomic<unsigned long> seen{0};
    Options options = Options::fast();
    options.trace = [&](const TraceEvent &event) {
        Camera *camera = self;
        if (camera == nullptr || event.direction != Direction::toCamera)
            return;
        seen = camera->state().packetsSeen;
        camera->setFault("no-ack");
    };
    Camera camera(options);
    self = &camera;
    HostEnd host(camera);
    EXPECT_EQ(host.ask(INQUIRY), ANSWER);
    EXPECT_TRUE(camera.waitFor([](const State &s) { return !s.faults.empty(); }, HostEnd::PATIENCE));
    EXPECT_EQ(host.ask("81 01 04 61 02 FF"), "90 51 FF");
    EXPECT_GE(seen, 1u);
}

/* ---- Seeds, many cameras, idleness ---- */

TEST(Seed, TheSameSeedMisbehavesTheSameWayAndAnotherOtherwise) {
    const auto first = misbehaviour(7);
    EXPECT_EQ(first.size(), 100u);
    EXPECT_EQ(first, misbehaviour(7));
    EXPECT_NE(first, misbehaviour(8));
}

TEST(ManyCameras, LiveInOneProcessAndEachAnswersForItself) {
    std::vector<std::unique_ptr<Camera>> cameras;
    std::vector<std::unique_ptr<HostEnd>> hosts;
    for (int i = 0; i < 40; ++i) {
        cameras.push_back(std::make_unique<Camera>(Options::fast(i % 2 ? "sony4" : "sony1")));
        hosts.push_back(std::make_unique<HostEnd>(*cameras.back()));
        hosts.back()->send("81 09 04 24 72 FF");
    }
    for (size_t i = 0; i < hosts.size(); ++i)
        EXPECT_EQ(hosts[i]->packet(), i % 2 ? "90 50 00 0E FF" : "90 50 00 06 FF");
}

TEST(ManyCameras, IdleOnesSleepWithoutWakingUp) {
    std::vector<std::unique_ptr<Camera>> cameras;
    for (int i = 0; i < 5; ++i) {
        Options options;
        options.start = Power::on;
        cameras.push_back(std::make_unique<Camera>(options));
        EXPECT_EQ(HostEnd(*cameras.back()).ask(INQUIRY), ANSWER);
    }
    const auto wakeUps = [&] {
        unsigned long sum = 0;
        for (const auto &camera : cameras)
            sum += camera->state().wakeUps;
        return sum;
    };
    // The host's close wakes them once more; then nothing may. Waiting is the subject: 100 ms without a
    // wake-up.
    bool quiet = false;
    const auto deadline = sim::Clock::now() + HostEnd::PATIENCE;
    while (!quiet && sim::Clock::now() < deadline) {
        const unsigned long before = wakeUps();
        std::this_thread::sleep_for(100ms);
        quiet = wakeUps() == before;
    }
    EXPECT_TRUE(quiet);
}

TEST(ManyCameras, SeveralThreadsMayUseOneCamera) {
    Camera camera(Options::fast());
    HostEnd host(camera);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&camera] {
            for (int n = 0; n < 25; ++n) {
                camera.setFault("late=0.001");
                camera.stateJson();
                camera.clearFaults();
            }
        });
    }
    for (int n = 0; n < 50; ++n)
        EXPECT_EQ(host.ask(INQUIRY), ANSWER);
    for (std::thread &thread : threads)
        thread.join();
}
