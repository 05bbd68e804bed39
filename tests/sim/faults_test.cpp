#include "host_end.h"

#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <unistd.h>

using namespace std::chrono_literals;
using sim::Camera;
using sim::Options;
using sim::Power;
using sim::State;
using testing::EndsWith;
using testing::IsEmpty;

namespace {

constexpr const char *COMMAND = "81 01 04 61 02 FF";
constexpr const char *INQUIRY = "81 09 04 00 FF";
constexpr const char *ANSWER = "90 50 02 FF";
constexpr const char *DONE = "90 41 FF 90 51 FF";

struct Desk {
    explicit Desk(const std::string &fault, const Options &options = Options::fast())
        : camera(options), host(camera) {
        camera.setFault(fault);
    }
    bool until(const std::function<bool(const State &)> &predicate) {
        return camera.waitFor(predicate, HostEnd::PATIENCE);
    }

    Camera camera;
    HostEnd host;
};

// Everything up to the first answer to the power inquiry that is whole.
std::string untilAnswer(HostEnd &host) {
    std::string all = host.packet();
    while (!all.empty() && !testing::Matches(EndsWith(ANSWER))(all))
        all += " " + host.packet();
    return all;
}

} // namespace

TEST(Faults, DropTxLosesBytesOnTheWayToTheCamera) {
    Desk desk("drop-tx=1#5");
    desk.host.send(INQUIRY);
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.camera.state().packetsSeen, 1u);
}

TEST(Faults, DropRxLosesBytesOfReplies) {
    Desk desk("drop-rx=1#1");
    EXPECT_EQ(desk.host.ask(INQUIRY), "50 02 FF");
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, DropFfMergesTwoReplies) {
    Desk desk("drop-ff=1#1");
    desk.host.send(INQUIRY);
    EXPECT_EQ(desk.host.ask(INQUIRY), "90 50 02 90 50 02 FF");
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, DupDoublesBytes) {
    Desk desk("dup=1");
    desk.host.send(INQUIRY);
    EXPECT_EQ(desk.host.bytes(8), "90 90 50 50 02 02 FF FF");
}

TEST(Faults, FlipChangesOneBit) {
    Desk desk("flip=1#1");
    desk.host.send(INQUIRY);
    const sim::Bytes bytes = fromHex(desk.host.bytes(4));
    ASSERT_EQ(bytes.size(), 4u);
    EXPECT_EQ(__builtin_popcount(bytes[0] ^ 0x90u), 1);
    EXPECT_EQ(bytes[1], 0x50);
}

TEST(Faults, SplitLeavesAGapInAReply) {
    Desk desk("split=60");
    const auto begin = sim::Clock::now();
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
    EXPECT_GE(sim::Clock::now() - begin, 60ms);
}

TEST(Faults, MergeHoldsRepliesBackForOneRead) {
    Options options = Options::fast();
    options.paced = true;
    Desk desk("merge=60", options);
    const auto begin = sim::Clock::now();
    desk.host.send(COMMAND);
    pollfd waiting{desk.host.descriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&waiting, 1, 20000), 1);
    EXPECT_GE(sim::Clock::now() - begin, 60ms);
    uint8_t buffer[64];
    EXPECT_EQ(read(desk.host.descriptor(), buffer, sizeof buffer), 6);
}

TEST(Faults, NoiseComesInFrontOfReplies) {
    Desk desk("noise=1");
    desk.host.send(INQUIRY);
    const std::string all = untilAnswer(desk.host);
    EXPECT_GT(all.size(), std::string(ANSWER).size());
    desk.camera.clearFault("noise");
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, MuteNeitherHearsNorSpeaksUntilCleared) {
    Desk desk("mute");
    desk.host.send(INQUIRY);
    EXPECT_TRUE(desk.until([](const State &s) { return s.ignoredPackets == 1; }));
    desk.camera.clearFault("mute");
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 03 FF");
}

TEST(Faults, MuteEndsAfterItsTime) {
    const auto begin = sim::Clock::now();
    Desk desk("mute=0.08");
    EXPECT_TRUE(desk.until([](const State &s) { return s.faults.empty(); }));
    EXPECT_GE(sim::Clock::now() - begin, 80ms);
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, BootLetsTheCameraAppearLater) {
    Options options = Options::fast();
    options.faults = {"boot=0.1"};
    options.bootTime = 20ms;
    const auto begin = sim::Clock::now();
    Camera camera(options);
    HostEnd host(camera);
    EXPECT_EQ(host.packet(), "90 38 FF");
    EXPECT_GE(sim::Clock::now() - begin, 100ms);
    EXPECT_TRUE(camera.waitFor([](const State &s) { return s.power == Power::on; }, HostEnd::PATIENCE));
    EXPECT_GE(sim::Clock::now() - begin, 120ms);
}

TEST(Faults, NoAckLeavesTheAcknowledgementOut) {
    Desk desk("no-ack");
    EXPECT_EQ(desk.host.ask(COMMAND), "90 51 FF");
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, NoCompletionLeavesTheCompletionOutAndFreesTheSocket) {
    Desk desk("no-completion#1");
    EXPECT_EQ(desk.host.ask(COMMAND), "90 41 FF");
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
    EXPECT_THAT(desk.camera.state().faults, IsEmpty());
}

TEST(Faults, LateDelaysTheCompletion) {
    Desk desk("late=0.08");
    const auto begin = sim::Clock::now();
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
    EXPECT_GE(sim::Clock::now() - begin, 80ms);
}

TEST(Faults, ReorderSendsTheCompletionFirst) {
    Desk desk("reorder");
    EXPECT_EQ(desk.host.command(COMMAND), "90 51 FF 90 41 FF");
}

TEST(Faults, WrongSocketNamesAnIdleOrImpossibleOne) {
    Desk desk("wrong-socket");
    EXPECT_EQ(desk.host.command(COMMAND), "90 41 FF 90 53 FF");
    desk.camera.setFault("wrong-socket=0");
    EXPECT_EQ(desk.host.command(COMMAND), "90 41 FF 90 50 FF");
    desk.camera.setFault("wrong-socket=15");
    EXPECT_EQ(desk.host.command(COMMAND), "90 41 FF 90 5F FF");
}

TEST(Faults, AddressChangesWhoReplies) {
    Desk desk("address=2");
    EXPECT_EQ(desk.host.command(COMMAND), "A0 41 FF A0 51 FF");
    desk.camera.setFault("address=7");
    EXPECT_EQ(desk.host.ask(INQUIRY), "F0 50 02 FF");
}

TEST(Faults, ErrorRefusesCommandsAndInquiries) {
    Desk desk("error=0x41");
    EXPECT_EQ(desk.host.ask(COMMAND), "90 61 41 FF") << "of the socket that it would have had";
    EXPECT_EQ(desk.host.ask(INQUIRY), "90 60 41 FF");
    desk.camera.setFault("error=2");
    EXPECT_EQ(desk.host.ask(COMMAND), "90 60 02 FF");
    EXPECT_EQ(desk.camera.state().setting("mirror"), 3);
}

TEST(Faults, ErrorUnaskedIsSentOnce) {
    Desk desk("error-unasked=3");
    EXPECT_EQ(desk.host.packet(), "90 60 03 FF");
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, BusyRefusesEveryThirdCommand) {
    Desk desk("busy");
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
    EXPECT_EQ(desk.host.ask(COMMAND), "90 60 03 FF");
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
}

TEST(Faults, LateAnswerComesAfterThatOfALaterInquiry) {
    Desk desk("late-answer=0.08#1");
    const auto begin = sim::Clock::now();
    desk.host.send(INQUIRY);
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 03 FF");
    EXPECT_EQ(desk.host.packet(), ANSWER);
    EXPECT_GE(sim::Clock::now() - begin, 80ms);
}

TEST(Faults, DupAnswerAnswersTwice) {
    Desk desk("dup-answer#1");
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
    EXPECT_EQ(desk.host.packet(), ANSWER);
    EXPECT_EQ(desk.host.ask("81 09 04 61 FF"), "90 50 03 FF");
}

TEST(Faults, PowerCutEndsTheChosenCommandWithoutCompletion) {
    Options options = Options::fast();
    options.timeScale = 20;
    Desk desk("power-cut=2", options);
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
    EXPECT_EQ(desk.host.ask(COMMAND), "90 41 FF");
    EXPECT_EQ(desk.host.packet(), "90 38 FF");
    EXPECT_TRUE(desk.until([](const State &s) { return s.power == Power::on && s.faults.empty(); }));
    EXPECT_EQ(desk.camera.state().setting("mirror"), 3);
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
}

TEST(Faults, StandbyComesByItself) {
    Desk desk("standby");
    EXPECT_EQ(desk.host.ask(INQUIRY), "90 50 03 FF");
    EXPECT_EQ(desk.host.ask(COMMAND), "90 61 41 FF");
}

TEST(Faults, RateMakesTheCameraListenElsewhere) {
    Desk desk("rate=19200");
    desk.host.send(INQUIRY);
    EXPECT_TRUE(desk.until([](const State &s) { return s.noiseBytes == 5 && s.baud == 19200; }));
    desk.host.setBaud(19200);
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
    desk.camera.clearFault("rate");
    EXPECT_EQ(desk.camera.state().baud, 9600u);
}

TEST(Faults, HangUpEndsTheLineAndClearingItPlugsInAgain) {
    Desk desk("hang-up");
    uint8_t byte;
    EXPECT_LE(read(desk.host.descriptor(), &byte, 1), 0);
    EXPECT_LT(write(desk.host.descriptor(), "x", 1), 0);
    EXPECT_EQ(errno, EIO);
    EXPECT_FALSE(desk.camera.state().pluggedIn);
    desk.camera.clearFault("hang-up");
    HostEnd again(desk.camera);
    EXPECT_EQ(again.ask(INQUIRY), ANSWER);
}

TEST(Faults, ReplugPlugsInAgainAfterItsTime) {
    const auto begin = sim::Clock::now();
    Desk desk("replug=0.08");
    EXPECT_TRUE(desk.until([](const State &s) { return s.pluggedIn; }));
    EXPECT_GE(sim::Clock::now() - begin, 80ms);
    HostEnd again(desk.camera);
    EXPECT_EQ(again.ask(INQUIRY), ANSWER);
    EXPECT_THAT(desk.camera.state().faults, IsEmpty());
}

TEST(Faults, FloodSendsAcknowledgementsAndServesOn) {
    Options options = Options::fast();
    options.timeScale = 100;
    Desk desk("flood#50", options);
    desk.host.send(INQUIRY);
    unsigned acknowledged = 0, answered = 0;
    for (int i = 0; i < 51; ++i) {
        const std::string packet = desk.host.packet();
        acknowledged += packet == "90 41 FF";
        answered += packet == ANSWER;
    }
    EXPECT_EQ(acknowledged, 50u);
    EXPECT_EQ(answered, 1u);
}

TEST(Faults, LengthPutsARunWithoutTerminatorInFrontOfAReply) {
    Desk desk("length=2#1");
    EXPECT_EQ(desk.host.ask(INQUIRY), "90 50 90 50 02 FF");
    desk.camera.setFault("length=17#1");
    EXPECT_EQ(fromHex(desk.host.ask(INQUIRY)).size(), 21u);
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, StallStopsReadingUntilCleared) {
    Desk desk("stall");
    fcntl(desk.host.descriptor(), F_SETFL, O_NONBLOCK);
    const sim::Bytes zeros(4096, 0);
    size_t written = 0;
    ssize_t count;
    while ((count = write(desk.host.descriptor(), zeros.data(), zeros.size())) > 0)
        written += static_cast<size_t>(count);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(desk.camera.state().noiseBytes, 0u);
    desk.camera.clearFault("stall");
    EXPECT_TRUE(desk.until([&](const State &s) { return s.noiseBytes == written; }));
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, ReportSendsEveryNibbleAndLength) {
    Options options = Options::fast();
    options.timeScale = 1000;
    Desk desk("report=random#224", options);
    std::set<std::pair<unsigned, size_t>> seen;
    for (int i = 0; i < 224; ++i) {
        const sim::Bytes report = fromHex(desk.host.packet());
        ASSERT_GE(report.size(), 3u);
        EXPECT_EQ(report[0], 0x90);
        EXPECT_LT(report[1], 0x10);
        seen.insert({report[1], report.size()});
    }
    EXPECT_EQ(seen.size(), 16u * 14u); // lengths 3 to 16
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, ReportLeavesTheCameraAtWork) {
    Desk desk("report=random");
    desk.host.send(INQUIRY);
    EXPECT_TRUE(desk.until([](const State &s) { return s.sentCount("answer") == 1; }));
    desk.camera.clearFault("report");
    EXPECT_GE(desk.camera.state().sentCount("report"), 1u);
}

/* ---- Times, counts and combinations ---- */

TEST(Faults, AFaultDoesNotStrikeBeforeItsStart) {
    Desk desk("no-ack@600");
    EXPECT_EQ(desk.host.command(COMMAND), DONE);
    EXPECT_EQ(desk.camera.state().faults.size(), 1u);
}

TEST(Faults, AFaultIsOverAtItsEnd) {
    Desk desk("mute@0.02..0.06");
    EXPECT_TRUE(desk.until([](const State &s) { return s.faults.empty(); }));
    EXPECT_EQ(desk.host.ask(INQUIRY), ANSWER);
}

TEST(Faults, AFaultThatIsSetAgainIsNotEndedByTheTimeOfTheFirst) {
    Desk desk("mute=0.02");
    desk.camera.setFault("mute");
    desk.camera.setFault("no-ack@0..0.06");
    EXPECT_TRUE(desk.until([](const State &s) { return s.faults.size() == 1; }));
    EXPECT_EQ(desk.camera.state().faults[0], "mute");
}

TEST(Faults, AnEventCanBeSetForLater) {
    Desk desk("standby@0.05");
    EXPECT_TRUE(desk.until([](const State &s) { return s.power == Power::standby; }));
}

TEST(Faults, FaultsCombine) {
    Desk desk("no-ack");
    desk.camera.setFault("address=2");
    desk.camera.setFault("wrong-socket=2");
    EXPECT_EQ(desk.host.ask(COMMAND), "A0 52 FF");
}
