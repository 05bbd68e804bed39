// Values that commands take.
#include "tool/ctl/values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tool::ctl {

using std::chrono::milliseconds;
using ::testing::ElementsAre;

namespace {

void expectRefused(const Domain &domain, const std::string &text, const std::string &why) {
    try {
        domain.parse(text);
        ADD_FAILURE() << text << " is understood";
    } catch (const UsageError &refused) {
        EXPECT_EQ(refused.what(), "\"" + text + "\" is not allowed; use " + why);
    }
}

} // namespace

TEST(Values, NumbersAreDecimalOrHexadecimal) {
    const Domain position = Domain::hex(0, 0xFFFF);
    EXPECT_EQ(position.parse("0x4000").number, 16384);
    EXPECT_EQ(position.parse("65535").number, 65535);
    for (const char *wrong : {"65536", "-1", "0x", "12a", "", "1.5", "99999999999999999999"})
        expectRefused(position, wrong, "0x0 to 0xFFFF");
    EXPECT_EQ(Domain::number(1, 65535).parse("0x10").number, 16);
    expectRefused(Domain::number(1, 65535), "0", "1 to 65535");
}

TEST(Values, NumbersMayBeNegative) {
    const Domain offset = Domain::number(-127, 127);
    EXPECT_EQ(offset.parse("-127").number, -127);
    EXPECT_EQ(offset.parse("+5").number, 5);
    expectRefused(offset, "-128", "-127 to 127");
}

TEST(Values, StepsAreListed) {
    const Domain steps = Domain::steps({100, 1000, 3000}, "millimetres");
    EXPECT_EQ(steps.parse("1000").number, 1000);
    expectRefused(steps, "200", "100, 1000 or 3000 millimetres");
    EXPECT_THAT(steps.completions(), ElementsAre("100", "1000", "3000"));
}

TEST(Values, NamesStandForNumbers) {
    const Domain mode = Domain::choice({{"auto", 0}, {"manual", 7}});
    EXPECT_EQ(mode.parse("manual").number, 7);
    EXPECT_EQ(mode.parse("7").number, 7);
    expectRefused(mode, "Auto", "auto or manual");
    expectRefused(mode, "1", "auto or manual");
}

TEST(Values, ANameThatAnotherModuleHasIsRefusedWithTheReason) {
    const Domain thing =
        Domain::choice({{"zoom", 1}, {"gain", 2}}).without({"luma"}, "only others measure it");
    try {
        thing.parse("luma");
        ADD_FAILURE() << "luma is understood";
    } catch (const UsageError &refused) {
        EXPECT_STREQ(refused.what(), "\"luma\" is not allowed: only others measure it; use zoom or gain");
    }
    expectRefused(thing, "focus", "zoom or gain");
}

TEST(Values, TimesHaveAUnit) {
    const Domain time = Domain::time(milliseconds(10), std::chrono::minutes(1));
    EXPECT_EQ(time.parse("2s").number, 2000);
    EXPECT_EQ(time.parse("200ms").number, 200);
    EXPECT_EQ(time.parse("1.5s").number, 1500);
    EXPECT_EQ(time.parse("1m").number, 60000);
    for (const char *wrong : {"2", "61s", "9ms", "s", "-1s", "1e3ms", "1..5s", "2 s", "2h"})
        expectRefused(time, wrong, "a time from 10ms to 60s, with ms, s or m");
}

TEST(Values, AperturesAreFNumbers) {
    const Domain iris = Domain::aperture({99999, 560, 280});
    EXPECT_EQ(iris.parse("2.8").number, 280);
    EXPECT_EQ(iris.parse("F5.6").number, 560);
    EXPECT_EQ(iris.parse("closed").number, 99999);
    expectRefused(iris, "4", "closed, 5.6 or 2.8");
}

TEST(Values, NormsHaveASizeAndARate) {
    const Domain norm = Domain::norm({25, 30}, {}, {});
    Norm parsed;
    ASSERT_TRUE(parseNorm(norm.parse("1920x1080@25").text, parsed));
    EXPECT_EQ(parsed.width, 1920U);
    EXPECT_EQ(parsed.height, 1080U);
    EXPECT_EQ(parsed.rate, 25U);
    for (const char *wrong : {"1920x1080@60", "1920x1080", "1920x1080@25p", "-1x1080@25", "1920@25"})
        expectRefused(norm, wrong, "WIDTHxHEIGHT@RATE, RATE 25 or 30");
    expectRefused(Domain::norm({25}, {"720x576"}, {}), "1920x1080@25", "720x576@RATE, RATE 25");
}

TEST(Values, BytesAreHexadecimal) {
    EXPECT_EQ(Domain::byte().parse("81").number, 0x81);
    EXPECT_EQ(Domain::byte().parse("0xff").number, 0xFF);
    for (const char *wrong : {"100", "G1", "", "8 1"})
        expectRefused(Domain::byte(), wrong, "a byte in hexadecimal, 00 to FF");
}

} // namespace tool::ctl
