#include "host_end.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using sim::Camera;
using sim::Latency;
using sim::Options;
using sim::Power;
using sim::State;

namespace {

Options paced(unsigned baud) {
    Options options = Options::fast();
    options.paced = true;
    options.baud = baud;
    return options;
}

sim::Clock::duration timeOf(HostEnd &host, const std::string &inquiry, const std::string &answer) {
    const auto begin = sim::Clock::now();
    EXPECT_EQ(host.ask(inquiry), answer);
    return sim::Clock::now() - begin;
}

constexpr const char *ZOOM_INQUIRY = "81 09 04 47 FF";
constexpr const char *ZOOM_ANSWER = "90 50 00 00 00 00 FF";

} // namespace

TEST(Line, TwelveBytesTakeTheirTimeAtEveryRate) {
    Camera slow(paced(9600));
    HostEnd slowHost(slow, 9600);
    EXPECT_GE(timeOf(slowHost, ZOOM_INQUIRY, ZOOM_ANSWER), 12500us);
    Camera middle(paced(19200));
    HostEnd middleHost(middle, 19200);
    EXPECT_GE(timeOf(middleHost, ZOOM_INQUIRY, ZOOM_ANSWER), 6250us);
    Camera fast(paced(38400));
    HostEnd fastHost(fast, 38400);
    EXPECT_GE(timeOf(fastHost, ZOOM_INQUIRY, ZOOM_ANSWER), 3125us);
}

TEST(Line, APacketInPiecesIsOnePacket) {
    Camera camera(Options::fast());
    HostEnd host(camera);
    host.send("81 09");
    host.send("04");
    host.send("47 FF");
    EXPECT_EQ(host.packet(), ZOOM_ANSWER);
    EXPECT_EQ(camera.state().packetsSeen, 1u);
}

TEST(Line, ACameraIsDeafAndSilentAtAnotherRate) {
    for (unsigned wrong : {9600u, 19200u}) {
        Camera camera(paced(38400));
        HostEnd host(camera, wrong);
        host.send("81 09 04 00 FF");
        EXPECT_TRUE(camera.waitFor([](const State &s) { return s.noiseBytes == 5; }, HostEnd::PATIENCE));
        EXPECT_EQ(camera.state().packetsSeen, 0u);
        host.setBaud(38400);
        EXPECT_EQ(host.ask(ZOOM_INQUIRY), ZOOM_ANSWER);
    }
}

TEST(Line, HalfAPacketAtTheRightRateDoesNotOutliveNoise) {
    Camera camera(Options::fast());
    HostEnd host(camera);
    host.send("FF 81 09"); // the lone FF shows that all three have been read
    EXPECT_TRUE(camera.waitFor([](const State &s) { return s.noiseBytes == 1; }, HostEnd::PATIENCE));
    host.setBaud(19200);
    host.send("81 09 04");
    EXPECT_TRUE(camera.waitFor([](const State &s) { return s.noiseBytes == 4; }, HostEnd::PATIENCE));
    host.setBaud(9600);
    EXPECT_EQ(host.ask(ZOOM_INQUIRY), ZOOM_ANSWER);
}

TEST(Line, NoByteReachesAHostAtAnotherRateAsItWasSent) {
    const size_t amount = 4096; // by chance some would, were they merely random
    for (unsigned rate : {9600u, 38400u}) {
        Options options = Options::fast();
        options.baud = 19200;
        Camera camera(options);
        HostEnd host(camera, rate);
        camera.sendRaw(sim::Bytes(amount, 0x90));
        const sim::Bytes heard = fromHex(host.bytes(amount));
        EXPECT_EQ(heard.size(), amount);
        EXPECT_EQ(std::count(heard.begin(), heard.end(), 0x90), 0);
    }
}

TEST(Line, ThePowerUpReplyIsGarbledAtAnotherRate) {
    Options options = Options::fast();
    options.start = Power::off;
    Camera camera(options);
    HostEnd host(camera, 19200);
    camera.powerApply();
    const sim::Bytes heard = fromHex(host.bytes(3));
    ASSERT_EQ(heard.size(), 3u);
    EXPECT_NE(heard[0], 0x90);
    EXPECT_NE(heard[1], 0x38);
    EXPECT_NE(heard[2], 0xFF);
}

TEST(Line, AnAnswerIsGarbledFromTheByteOnAtWhichTheHostChangesItsRate) {
    Options options = paced(9600);
    options.timeScale = 0.1; // 10 ms a byte
    Camera camera(options);
    HostEnd host(camera);
    host.send(ZOOM_INQUIRY);
    EXPECT_EQ(host.bytes(1), "90");
    host.setBaud(38400);
    const sim::Bytes rest = fromHex(host.bytes(6));
    ASSERT_EQ(rest.size(), 6u);
    EXPECT_NE(rest.back(), 0xFF);
}

TEST(Line, OnePacketIsProcessedPerVerticalPeriod) {
    Options options = Options::fast();
    options.vertical = true;
    options.frameRate = 200;
    Camera camera(options);
    HostEnd host(camera);
    const auto begin = sim::Clock::now();
    for (int i = 0; i < 10; ++i)
        host.send(ZOOM_INQUIRY);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(host.packet(), ZOOM_ANSWER);
    EXPECT_GE(sim::Clock::now() - begin, 45ms); // nine whole periods and a begun one
}

TEST(Line, ASettingCompletesAVerticalPeriodAfterItsAcknowledgement) {
    Options options = Options::fast();
    options.vertical = true;
    options.frameRate = 20;
    Camera camera(options);
    HostEnd host(camera);
    const auto begin = sim::Clock::now();
    EXPECT_EQ(host.command("81 01 04 61 02 FF"), "90 41 FF 90 51 FF");
    EXPECT_GE(sim::Clock::now() - begin, 50ms);
}

TEST(Line, ARealLineHasTheObservedLatencies) {
    Options options = paced(9600);
    options.vertical = true;
    options.latency = Latency::realLine();
    Camera camera(options);
    HostEnd host(camera);
    const auto begin = sim::Clock::now();
    EXPECT_EQ(host.ask("81 01 04 61 02 FF"), "90 41 FF");
    EXPECT_GE(sim::Clock::now() - begin, 36ms);
    EXPECT_EQ(host.packet(), "90 51 FF");
    EXPECT_GE(sim::Clock::now() - begin, 55ms);
    EXPECT_GE(timeOf(host, "81 01 04 7E FF", "90 60 02 FF"), 24ms);
}

TEST(Line, AHostThatDoesNotReadLosesBytesOfAPacedLine) {
    Options options = paced(38400);
    options.timeScale = 1000;
    Camera camera(options);
    HostEnd host(camera, 38400);
    camera.sendRaw(sim::Bytes(60000, 0x55));
    EXPECT_TRUE(camera.waitFor([](const State &s) { return s.lostBytes > 0; }, HostEnd::PATIENCE));
    EXPECT_EQ(host.bytes(3), "55 55 55");
}

TEST(Line, AtFullSpeedTheCameraWaitsForTheHostAndNothingIsLost) {
    Camera camera(Options::fast());
    HostEnd host(camera);
    constexpr size_t AMOUNT = 60000;
    camera.sendRaw(sim::Bytes(AMOUNT, 0x55));
    EXPECT_EQ(host.bytes(AMOUNT).size(), 3 * AMOUNT - 1);
    EXPECT_EQ(host.ask(ZOOM_INQUIRY), ZOOM_ANSWER);
    EXPECT_EQ(camera.state().lostBytes, 0u);
}
