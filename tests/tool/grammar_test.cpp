// What can be typed to "viscacam ctl", and what completes it.
#include "tool/ctl/grammar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tool::ctl {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr uint32_t SONY_1 = 0x02000001;
constexpr uint32_t SONY_4 = 0x02000004;
constexpr uint32_t KOVA_2 = 0x02012A01;

Call parsed(const std::string &line, uint32_t moduleType = KOVA_2) {
    return parseCommand(commandsOf(line).front(), moduleType);
}

void expectRefused(const std::string &line, const std::string &why, uint32_t moduleType = SONY_1) {
    try {
        parsed(line, moduleType);
        ADD_FAILURE() << line << " is understood";
    } catch (const UsageError &refused) {
        EXPECT_THAT(refused.what(), HasSubstr(why)) << line;
    }
}

} // namespace

TEST(Grammar, UnderstandsWhatTheHandbookShows) {
    for (const char *line :
         {"zoom in 2s", "zoom to 0x4000", "focus auto", "exposure show",
          "exposure set mode=manual shutter=60 gain=10", "wb manual red=10 blue=-5", "norm 1920x1080@25",
          "info", "temperature", "kova upgrade", "kova upgrade --dry-run", "kova export-log FILE",
          "watch zoom focus luma --every 200ms --count 50", "raw 81 01 04 07 00"})
        EXPECT_NO_THROW(parsed(line)) << line;
}

TEST(Grammar, TakesValuesWhereTheyStandAndByTheirNames) {
    const Call call = parsed("watch zoom --every 200ms luma count=5 --every=1s");
    EXPECT_EQ(call.row->words, "watch");
    EXPECT_EQ(call.arguments.list().size(), 2U);
    EXPECT_EQ(call.arguments.number("every"), 1000);
    EXPECT_EQ(call.arguments.number("count"), 5);
}

TEST(Grammar, SaysWhichWordsThereAre) {
    expectRefused("zoom", "zoom: say more; use cut, digital, in, out, show, stop or to");
    expectRefused("zoom up", "zoom: \"up\" is not known here; use cut");
    expectRefused("blink", "no command is called \"blink\"; \"help\" shows them all");
}

TEST(Grammar, SaysWhichValuesThereAre) {
    expectRefused("zoom to", "zoom to: a value is missing: position, 0x0 to 0xFFFF");
    expectRefused("zoom in fast", "zoom in: time: \"fast\" is not allowed; use a time from 1ms to 60s");
    expectRefused("gain 30", "gain: value: \"30\" is not allowed; use 0 to 29 dB");
    expectRefused("exposure set mode", "mode needs a value: mode=VALUE; use auto, shutter, iris or manual");
    expectRefused("exposure set modus=auto", "\"modus\" is not known here; use mode=, compensation=");
    expectRefused("zoom stop now", "\"now\" is not understood; use zoom stop");
    expectRefused("watch", "a value is missing: thing, zoom, focus or gain");
    expectRefused("watch zoom --every", "--every needs a value; use a time from 10ms");
    expectRefused("watch zoom luma",
                  "thing: \"luma\" is not allowed: only a Kova module measures it; use zoom, "
                  "focus or gain");
}

TEST(Grammar, SaysBoundsAsTheValueIsUsuallyTyped) {
    expectRefused("zoom to 65536", "use 0x0 to 0xFFFF");
    expectRefused("register show 0x80", "use 0x0 to 0x7F");
    expectRefused("board subtype=x", "use 0x0 to 0xFFFFFFFF");
    expectRefused("exposure set fastest=0", "use 1 to 65535 (N of 1/N s)");
    expectRefused("watch zoom --count 0", "use 1 to 1000000000");
    expectRefused("message get 65536", "use 0 to 65535");
    expectRefused("focus once at 65536 0", "use 0 to 65535", KOVA_2);
    expectRefused("kova time x", "use 0 to 4294967295 seconds since 1970", KOVA_2);
    expectRefused("kova offset set 32768 0", "use -32768 to 32767", KOVA_2);
}

TEST(Grammar, SaysTheNameOfACommandAndItsValueOnce) {
    expectRefused("norm 7", "norm: \"7\" is not allowed; use WIDTHxHEIGHT@RATE");
    try {
        parsed("norm 7", SONY_1);
    } catch (const UsageError &refused) {
        EXPECT_THAT(refused.what(), Not(HasSubstr("norm: norm:")));
    }
}

TEST(Grammar, AProfileWithoutAValueIsNoProfile) {
    expectRefused("exposure set",
                  "exposure set: say what to set; use mode=, compensation=, iris=, shutter=, gain=, "
                  "slowest=, fastest=, min-gain=, max-gain=, slow-shutter=, slow-limit=, wdr=, "
                  "wdr-level=, metering=, left=, top=, right=, bottom= or picture=");
    expectRefused("picture set", "picture set: say what to set; use brightness=, contrast=");
    EXPECT_NO_THROW(parsed("board"));
}

TEST(Grammar, ValuesThatTheLibrarySetsTogetherAreGivenTogether) {
    expectRefused("wb manual red=5",
                  "wb manual: blue= is missing, -127 to 127; red= and blue= are set together");
    expectRefused("wb manual", "wb manual: red= is missing, -127 to 127; red= and blue= are set together");
    expectRefused("defog set mode=2",
                  "defog set: sense= is missing, 0 to 255; mode= and sense= are set together");
    EXPECT_NO_THROW(parsed("wb manual --blue -5 --red=10"));
    EXPECT_THAT(explain({"wb", "manual"}, SONY_1), HasSubstr("wb manual red=RED blue=BLUE\n"));
}

TEST(Grammar, KnowsWhichValuesAModuleHas) {
    EXPECT_NO_THROW(parsed("gain 60", KOVA_2));
    EXPECT_NO_THROW(parsed("iris 1.3", SONY_4));
    expectRefused("iris 1.3", "use closed, 28, 22, 19, 16");
    expectRefused("shutter 61", "use 1, 2, 3, 4, 6, 8");
    expectRefused("norm 1920x1080@60", "RATE 25 or 30");
    EXPECT_NO_THROW(parsed("norm 1920x1080@60", KOVA_2));
    expectRefused("kova dome", "only Kova modules have it");
}

TEST(Completion, OffersTheWordsOfCommands) {
    EXPECT_THAT(complete("zo", SONY_1).words, ElementsAre("zoom"));
    EXPECT_THAT(complete("info; zoom ", SONY_1).words,
                ElementsAre("cut", "digital", "in", "out", "show", "stop", "to"));
    EXPECT_THAT(complete("kov", SONY_1).words, IsEmpty());
    EXPECT_THAT(complete("kov", KOVA_2).words, ElementsAre("kova"));
}

TEST(Completion, OffersValues) {
    EXPECT_THAT(complete("wdr ", SONY_1).words, ElementsAre("auto", "off", "on"));
    EXPECT_THAT(complete("exposure set mo", SONY_1).words, ElementsAre("mode="));
    EXPECT_THAT(complete("exposure set mode=m", SONY_1).words, ElementsAre("mode=manual"));
    EXPECT_THAT(complete("norm 1920x1080@2", SONY_1).words, ElementsAre("1920x1080@25"));
    EXPECT_THAT(complete("watch zoom ", KOVA_2).words, Contains("temperature"));
    EXPECT_THAT(complete("watch zoom ", SONY_1).words, Not(Contains("temperature")));
    EXPECT_THAT(complete("help ex", SONY_1).words, ElementsAre("exit", "exposure"));
    EXPECT_TRUE(complete("kova export-log /t", KOVA_2).file);
}

TEST(Completion, OffersNothingBehindAMistake) {
    EXPECT_THAT(complete("zoom in fast ", SONY_1).words, IsEmpty());
    EXPECT_THAT(complete("# zo", SONY_1).words, IsEmpty());
}

TEST(Help, FitsOnALineACommand) {
    size_t start = 0;
    const std::string text = overview(KOVA_2);
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
        EXPECT_LE(end - start, 110U) << text.substr(start, end - start);
        start = end + 1;
    }
}

TEST(Help, ExplainsWhatBeginsWithSomeWords) {
    EXPECT_EQ(explain({"zoom", "stop"}, SONY_1), "zoom stop\n    stop the zoom\n    Example: zoom stop\n");
    EXPECT_THAT(explain({"zoom"}, SONY_1), HasSubstr("zoom to POSITION\n"));
    EXPECT_THROW(explain({"blink"}, SONY_1), UsageError);
}

} // namespace tool::ctl
