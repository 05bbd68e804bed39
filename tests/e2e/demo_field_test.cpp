// The demo of field service: a firmware upgrade and a log export, by the XMODEM programs at both ends of the
// line.
#include "tests/e2e/command.h"
#include "tests/e2e/trace_lines.h"

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace e2e {

using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

namespace {

const char kPackage[] = "/tmp/update/QDM_VERSION";
const char kProgram[] = "/tmp/update/QDM_program.bin";

bool isThere(const char *path) {
    return access(path, F_OK) == 0;
}

// A package of somebody else's, for as long as the test runs.
class OthersPackage {
  public:
    OthersPackage() {
        mkdir("/tmp/update", 0755);
        std::ofstream(kPackage)
            << "Package 7\nuImage  VER_NEW: 9.9 \nprogram VER_NEW:QDMV200R001B02B09D001SP01 \n";
    }
    ~OthersPackage() {
        unlink(kPackage);
        unlink(kProgram);
        rmdir("/tmp/update");
    }
    OthersPackage(const OthersPackage &) = delete;
    OthersPackage &operator=(const OthersPackage &) = delete;
};

} // namespace

TEST(DemoUpgrade, SendsANewerProgramAndTheModuleThenRunsIt) {
    Command demo({"demo", "upgrade"});
    EXPECT_EQ(demo.finish(), 0) << demo.out();
    EXPECT_THAT(demo.err(), IsEmpty());
    expectInOrder(demo.out(),
                  {"uImage: not sent; module 1.23, package 1.23",
                   "program: sent, 12338 bytes; module B02D014SP05, package B02D014SP06",
                   "81 01 04 AA 00 00 00 00 00 00 00 02 FF", "cpld: register 0x09 set to 1",
                   "Start send file", "->camera  XMODEM: block 1, 1024 bytes", "<-camera  XMODEM: taken",
                   "XMODEM: end of file", "camera: upgrade: flashing", "Send file success!",
                   "cpld: register 0x09 set to 0", "upgrade state 0x03", "upgrade state 0x04",
                   "Upgrade kova success", "host: the module says that the upgrade succeeded",
                   "host: the module runs program B02D014SP06, uImage 1.23"});
    EXPECT_THAT(demo.out(),
                ContainsRegex("host: [0-9]+ %, [0-9]+ of 12338 bytes, [0-9]+ bytes/s, [0-9]+ s left"));
    EXPECT_EQ(chaptersOf(demo.out()).back().others.back(), "7 of 7 agree");
    EXPECT_FALSE(isThere(kPackage)) << "the demo takes its package away again";
}

TEST(DemoUpgrade, ADryRunSaysWhatWouldBeSentAndWhyAndSendsNothing) {
    Command demo({"demo", "upgrade", "--dry-run", "--camera", "kova1"});
    EXPECT_EQ(demo.finish(), 0);
    EXPECT_THAT(demo.out(), HasSubstr("program: sent, 12335 bytes; module D012SP03, package D012SP04"));
    EXPECT_THAT(demo.out(), Not(HasSubstr("81 01 04 AA")));
    EXPECT_FALSE(isThere(kPackage));
}

TEST(DemoUpgrade, LeavesThePackageOfSomebodyElseAlone) {
    const OthersPackage package;
    Command demo({"demo", "upgrade"});
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(),
              "viscacam: there is an upgrade package in /tmp/update already; move it away first\n");
    EXPECT_TRUE(isThere(kPackage));
}

TEST(DemoUpgrade, TakesThePackageThatIsThereForAModuleAtAPort) {
    const OthersPackage package;
    std::ofstream(kProgram) << "not much of a program";
    const std::string link = temporaryPath("module");
    Command module({"sim", "--camera", "kova2", "--link", link, "--boot", "0", "--full-speed"});
    module.waitFor("listening");
    Command demo({"demo", "upgrade", "--dry-run", "--port", link, "--type", "kova2"});
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_THAT(demo.out(),
                HasSubstr("uImage: sent, /tmp/update/QDM_uimage.bin is missing; module 1.23, package 9.9"));
    EXPECT_THAT(demo.out(), HasSubstr("program: sent, 21 bytes; module B02D014SP05, package B09D001SP01"));
    EXPECT_EQ(demo.err(), "viscacam: /tmp/update/QDM_uimage.bin is missing\n");
}

TEST(DemoUpgrade, SaysThatTheModuleFailed) {
    Command demo({"demo", "upgrade", "--fault", "transfer-abort=3"});
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_THAT(demo.out(), HasSubstr("ERROR  Upgrade kova fail"));
    EXPECT_THAT(demo.err(), HasSubstr("viscacam: the module says that the upgrade failed\n"));
}

TEST(DemoExport, BringsTheLogAsAnArchiveThatTarLists) {
    Command demo({"demo", "export"});
    EXPECT_EQ(demo.finish(), 0) << demo.out();
    EXPECT_THAT(demo.err(), IsEmpty());
    expectInOrder(demo.out(),
                  {"81 01 04 A7 00 00 FF", "cpld: register 0x09 set to 1", "Start recv file",
                   "<-camera  XMODEM: block 1, 128 bytes", "Recv file success",
                   "cpld: register 0x09 set to 0", "bytes in /tmp/kova.tgz", "kova-log-00-system.txt"});
    EXPECT_THAT(chaptersOf(demo.out()).back().others,
                Contains(MatchesRegex("an archive that tar can read +all of it +agrees")));
}

TEST(DemoExport, IsForKovaModulesOnly) {
    Command demo({"demo", "export", "--camera", "sony1"});
    EXPECT_EQ(demo.finish(), 2);
    EXPECT_EQ(demo.err(),
              "viscacam: only a Kova module is upgraded and exports its log; choose one with --camera\n");
}

} // namespace e2e
