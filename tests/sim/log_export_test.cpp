#include "xmodem_end.h"

#include "sim/temp_folder.h"

#include <array>
#include <cstdio>
#include <future>
#include <gmock/gmock.h>

using namespace std::chrono_literals;
using sim::Bytes;
using sim::Options;
using sim::State;

namespace {

constexpr const char *EXPORT = "81 01 04 A7 03 04 FF";
constexpr const char *POWER = "81 09 04 00 FF";
constexpr const char *IS_ON = "90 50 02 FF";

Bytes exported(const Options &options) {
    Desk desk(options);
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    return receiveFile(desk.host);
}

/* What tar lists of an archive, and whether it took it. */
struct Listing {
    explicit Listing(const Bytes &archive) {
        const sim::TempFolder folder;
        sim::writeFile(folder.file("log.tgz"), std::string(archive.begin(), archive.end()));
        FILE *tar = popen(("tar tzf " + folder.file("log.tgz") + " 2>&1").c_str(), "r");
        std::array<char, 256> line{};
        while (std::fgets(line.data(), line.size(), tar) != nullptr)
            names += line.data();
        accepted = pclose(tar) == 0;
    }
    std::string names;
    bool accepted;
};

constexpr const char *NAMES = "kova-log-34-system.txt\nkova-log-34-serial.txt\nkova-log-34-focus.txt\n";

} // namespace

TEST(KovaLogExport, TheArchiveIsPaddedToWholeBlocksAndTakenByTar) {
    Desk desk("kova1");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    const Bytes archive = receiveFile(desk.host);
    EXPECT_GE(archive.size(), 512u);
    EXPECT_EQ(archive.size() % 128, 0u);
    const Listing listing(archive);
    EXPECT_TRUE(listing.accepted);
    EXPECT_EQ(listing.names, NAMES);
    EXPECT_TRUE(desk.until([](const State &s) { return !s.kova.transferring; }));
    const State state = desk.camera.state();
    EXPECT_EQ(state.kova.logExports, 1u);
    EXPECT_EQ(state.kova.transfersCompleted, 1u);
    EXPECT_EQ(state.kova.transferBlocks, archive.size() / 128);
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaLogExport, TheSameSeedGivesTheSameArchive) {
    Options other = quick("kova1");
    other.seed = 2;
    auto first = std::async(std::launch::async, [] { return exported(quick("kova1")); });
    auto second = std::async(std::launch::async, [] { return exported(quick("kova1")); });
    auto third = std::async(std::launch::async, [&] { return exported(other); });
    const Bytes archive = first.get();
    EXPECT_FALSE(archive.empty());
    EXPECT_EQ(second.get(), archive);
    EXPECT_NE(third.get(), archive);
}

TEST(KovaLogExport, TheBlocksHave128Bytes) {
    Desk desk("kova1");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    desk.host.send("43");
    EXPECT_EQ(desk.host.bytes(133).substr(0, 14), "01 01 FE 1F 8B"); // gzip's mark
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferBlocks == 1; }));
}

TEST(KovaLogExport, TheSecondGenerationSendsAt115200AndReturnsToItsRate) {
    Desk desk("kova2");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.baud == 115200; }));
    desk.host.setBaud(115200);
    const Bytes archive = receiveFile(desk.host);
    EXPECT_EQ(Listing(archive).names, NAMES);
    EXPECT_TRUE(desk.until([](const State &s) { return s.baud == 9600; }));
    desk.host.setBaud(9600);
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaLogExport, TheSecondGenerationIsDeafAtAnotherRate) {
    Options options = quick("kova2");
    options.kova.transferPatience = 300ms;
    Desk desk(options);
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.baud == 115200; }));
    desk.host.send("43");
    EXPECT_TRUE(desk.until([](const State &s) { return s.noiseBytes == 1; }));
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transfersFailed == 1 && s.baud == 9600; }));
    EXPECT_EQ(desk.camera.state().kova.transferBlocks, 0u);
    EXPECT_NE(desk.host.bytes(5), "18 18 18 18 18"); // garbled
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaLogExport, AnAbortedTransferIsCancelledAtTheHost) {
    Desk desk("kova1");
    desk.camera.setFault("transfer-abort=2");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    EXPECT_TRUE(receiveFile(desk.host).empty());
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transfersFailed == 1; }));
    EXPECT_EQ(desk.camera.state().kova.transferBlocks, 2u);
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaLogExport, ABlockWithAWrongChecksumIsSentAgain) {
    Desk desk("kova1");
    desk.camera.setFault("transfer-checksum=1#1");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    desk.host.send("43");
    const std::string wrong = desk.host.bytes(133);
    desk.host.send("15");
    const std::string right = desk.host.bytes(133);
    const size_t exceptLast = 3 * 132;
    EXPECT_EQ(wrong.substr(0, exceptLast), right.substr(0, exceptLast));
    EXPECT_NE(wrong, right);
}

TEST(KovaLogExport, FaultsOfTheLineHitItsBytes) {
    Desk desk("kova1");
    desk.camera.setFault("drop-rx=1#3");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    desk.host.send("43");
    EXPECT_EQ(desk.host.bytes(2), "1F 8B");
}

TEST(KovaLogExport, AHostThatNeverAsksIsGivenUp) {
    Options options = quick("kova1");
    options.kova.transferPatience = 100ms;
    Desk desk(options);
    desk.host.send(EXPORT);
    EXPECT_EQ(desk.host.bytes(5), "18 18 18 18 18");
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaLogExport, APowerCutEndsIt) {
    const TempHere temp;
    Desk desk("kova2");
    desk.host.send(EXPORT);
    EXPECT_TRUE(desk.until([](const State &s) { return s.kova.transferring; }));
    desk.camera.powerCut();
    EXPECT_EQ(desk.camera.state().baud, 9600u);
    EXPECT_TRUE(hasNoChild());
    EXPECT_TRUE(temp.isEmpty());
    desk.camera.powerApply();
    EXPECT_TRUE(desk.isOn());
    EXPECT_EQ(desk.host.packet(), "90 38 FF");
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
}

TEST(KovaLogExport, WithoutTarNothingIsSent) {
    const TempHere temp;
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/nowhere", 1);
    {
        Desk desk("kova1");
        desk.host.send(EXPORT);
        EXPECT_EQ(desk.host.ask(POWER), IS_ON);
        EXPECT_EQ(desk.camera.state().kova.logExports, 1u);
        EXPECT_TRUE(temp.isEmpty());
    }
    setenv("PATH", path.c_str(), 1);
}

TEST(KovaLogSave, IsCountedAndNotAnswered) {
    Desk desk("kova2");
    desk.host.send("81 01 04 B6 FF");
    EXPECT_EQ(desk.host.ask(POWER), IS_ON);
    EXPECT_EQ(desk.camera.state().kova.logSaves, 1u);
    EXPECT_EQ(Desk("sony1").host.ask("81 01 04 B6 FF"), SYNTAX);
}
