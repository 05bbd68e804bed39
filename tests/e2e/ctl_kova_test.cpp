// "viscacam ctl" and a Kova module: what it tells, its reports, upgrade and log.
#include "tests/e2e/command.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

const char kPackage[] = "/tmp/update";

/** An upgrade package with another program than the simulated module has, and the same uImage. */
class Package : public ::testing::Test {
  protected:
    void SetUp() override {
        if (std::filesystem::exists(kPackage))
            GTEST_SKIP() << kPackage << " is somebody else's";
        std::filesystem::create_directory(kPackage);
        m_made = true;
        std::ofstream(std::string(kPackage) + "/QDM_VERSION")
            << "Package of a test\nuImage  VER_NEW: 1.23 \nprogram VER_NEW:QDMV200R001B02B02D014SP06 \n";
        std::ofstream(std::string(kPackage) + "/QDM_program.bin") << std::string(1500, 'p');
    }
    void TearDown() override {
        if (m_made)
            std::filesystem::remove_all(kPackage);
    }

    bool m_made = false;
};

Command kova(const std::string &commands) {
    return Command({"ctl", "--sim", "kova2", commands});
}

} // namespace

TEST(CtlKova, ReadsWhatAModuleTells) {
    Command ctl({"ctl", "--sim", "kova2", "--json", "temperature; kova version; kova boards; luma"});
    EXPECT_EQ(ctl.finish(), 0);
    const std::vector<std::string> lines = linesOf(ctl.out());
    ASSERT_THAT(lines, SizeIs(4));
    EXPECT_EQ(lines[0], R"({"command":"temperature","ok":true,"values":{"temperature":41}})");
    EXPECT_THAT(lines[1], HasSubstr(R"("uimage":"1.23","program":"B02D014SP05","extension":"R01-B02_C3")"));
    EXPECT_THAT(lines[2],
                HasSubstr(R"("sensor-version":2,"sensor-type":1,"motor-version":3,"motor-type":2)"));
    EXPECT_THAT(lines[3], HasSubstr(R"("luma":)"));
}

TEST(CtlKova, TellsWhatAModuleReports) {
    Command ctl = kova("kova reports zoom on; zoom in 200ms; wait 100ms");
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.err(), HasSubstr("viscacam: report: the zoom has begun to move\n"));
    EXPECT_THAT(ctl.err(), HasSubstr("viscacam: report: the zoom stands\n"));
}

TEST_F(Package, IsComparedByADryRunWhichSendsNothing) {
    Command ctl = kova("kova upgrade --dry-run; kova upgrade state");
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.out(), HasSubstr("uImage: not sent; module 1.23, package 1.23\n"
                                     "program: sent, 1500 bytes; module B02D014SP05, package B02D014SP06\n"));
    EXPECT_THAT(ctl.out(), HasSubstr("state  0, "));
}

TEST_F(Package, IsSentByAnUpgrade) {
    Command ctl = kova("kova upgrade; kova upgrade state");
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.out(), HasSubstr("upgrade  done\n"));
    EXPECT_THAT(ctl.out(), HasSubstr("state  4, done\n"));
    EXPECT_THAT(ctl.err(), Not(HasSubstr("Send file"))); // the library says it whatever came of it
}

TEST_F(Package, ThatLacksAFileIsNotBegun) {
    std::filesystem::remove(std::string(kPackage) + "/QDM_program.bin");
    Command ctl = kova("kova upgrade");
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_EQ(ctl.err(), "viscacam: kova upgrade: /tmp/update/QDM_program.bin is missing\n");
}

TEST(CtlKova, FetchesTheLogIntoAFile) {
    const std::string path = temporaryPath("log.tgz");
    Command ctl({"ctl", "--sim", "kova2", "kova", "export-log", path});
    EXPECT_EQ(ctl.finish(), 0);
    EXPECT_THAT(ctl.out(), StartsWith("file   " + path + "\nbytes  "));
    EXPECT_EQ(std::filesystem::file_size(path) % 128, 0U); // whole blocks
    std::filesystem::remove(path);
}

TEST(CtlKova, SaysBeforehandWhenALogCannotBeWritten) {
    Command ctl = kova("kova export-log /no-such-folder/log.tgz");
    EXPECT_EQ(ctl.finish(), 1);
    EXPECT_EQ(ctl.err(),
              "viscacam: kova export-log /no-such-folder/log.tgz: cannot write /no-such-folder/log.tgz\n");
}

} // namespace e2e
