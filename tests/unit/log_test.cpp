// The line prefix: every field, exactly. That every line of every other test has it is checked by the
// fixture.
#include "tests/unit/unit_test.h"

#include <cstdlib>
#include <ctime>
#include <fstream>

namespace unit {
namespace {

class LogTest : public UnitTest {
  protected:
    static void SetZone(const char *zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~LogTest() override {
        unsetenv("TZ");
        tzset();
    }
    static Event OneLine() {
        Host().Forget();
        SonySetPower(1);
        return Host().Events(Call::Log).at(0);
    }
};

TEST_F(LogTest, ThePrefixHoldsLocalTimeFileFunctionLineAndTag) {
    SetZone("XYZ-05:30");
    Clib().SetWallClock(1709590149, 42); // 2024-03-04 22:09:09 UTC, half past five hours later there
    const LogLine log = OneLine().log;
    const std::string line = std::to_string(log.line);
    EXPECT_EQ("2024-03-05 03:39:09 000042 " + log.file + std::string(20 - log.file.size(), ' ') +
                  "@fun:SonySetPower                  line:" + line + std::string(6 - line.size(), ' ') +
                  "--[DEBUG]FUN_ENTRY--param:bPowerOn[1]\n",
              log.whole);
}

TEST_F(LogTest, SmallNumbersArePaddedWithZeros) {
    SetZone("UTC0");
    Clib().SetWallClock(981173106, 7); // 2001-02-03 04:05:06
    EXPECT_EQ("2001-02-03 04:05:06 000007 ", OneLine().log.whole.substr(0, 27));
    Clib().SetWallClock(1798761599, 999999);
    EXPECT_EQ("2026-12-31 23:59:59 999999 ", OneLine().log.whole.substr(0, 27));
}

TEST_F(LogTest, TheFileIsABaseNameOfASourceFile) {
    const std::string file = OneLine().log.file;
    EXPECT_EQ(std::string::npos, file.find('/'));
    EXPECT_EQ(".cpp", file.substr(file.size() - 4));
}

TEST_F(LogTest, TheLineIsTheOneThatLogs) {
    const std::string here = __FILE__;
    std::ifstream source(here.substr(0, here.rfind("tests/unit/")) + "visca_sony_ctrl/system/power.cpp");
    ASSERT_TRUE(source.is_open());
    const int number = OneLine().log.line;
    std::string line;
    for (int i = 0; i < number && std::getline(source, line); ++i) {}
    EXPECT_EQ("    LOG_DEBUG(\"FUN_ENTRY--param:bPowerOn[%lu]\\n\", UL(bPowerOn));", line) << number;
}

TEST_F(LogTest, FiveLevelsHaveTheirTags) {
    uint32_t zoom = 0;
    SONY_GetZoomPos(nullptr); // VERBO, ERROR
    Host().AnswerInquiry("90 50 02 FF");
    SonyWaitPowerOn(); // DEBUG, INFO
    ViscaSetCamCanCtrl(0);
    SONY_GetZoomPos(&zoom); // WARN
    const std::map<uint32_t, std::string> tags = {
        {3, "ERROR"}, {4, "WARN"}, {6, "INFO"}, {7, "DEBUG"}, {8, "VERBO"}};
    std::map<uint32_t, std::string> seen;
    for (const Event &event : Host().Events(Call::Log)) {
        seen[event.log.level] = event.log.tag;
    }
    EXPECT_EQ(tags, seen);
}

TEST_F(LogTest, PacketDumpsGoToTheCameraLogAtLevelSevenWithTheInfoTag) {
    const ViscaPkt packet = Packet("81 01 FF");
    ViscaPrintPkt(&packet, 1);
    const LogLine log = Host().Events(Call::CamLog).at(0).log;
    EXPECT_EQ(7U, log.level);
    EXPECT_EQ("INFO", log.tag);
    EXPECT_TRUE(log.well_formed) << log.whole;
    EXPECT_THAT(Host().Events(Call::Log), IsEmpty());
}

} // namespace
} // namespace unit
