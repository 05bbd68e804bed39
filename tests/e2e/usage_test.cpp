// What can be typed, and what is said about what cannot.
#include "tests/e2e/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::SizeIs;

namespace {

const char kKnown[] =
    "known are\n  sony1 (0x02000001), sony3 (0x02000003), sony4 (0x02000004), sony5 (0x02000005),\n  kova1 ";

void expectWrongUsage(const std::vector<std::string> &arguments, const std::string &why) {
    Command command(arguments);
    EXPECT_EQ(command.finish(), 2);
    EXPECT_THAT(command.err(), HasSubstr(why));
    EXPECT_THAT(command.out(), IsEmpty());
}

void expectHelpOnOneScreen(const std::vector<std::string> &arguments) {
    Command command(arguments);
    EXPECT_EQ(command.finish(), 0);
    EXPECT_THAT(command.out(), HasSubstr("Example: viscacam"));
    EXPECT_THAT(linesOf(command.out()), SizeIs(Le(30)));
    for (const std::string &line : linesOf(command.out()))
        EXPECT_LE(line.size(), 100U) << line;
}

} // namespace

TEST(Usage, TheVersionIsThatOfTheLibrary) {
    Command command({"--version"});
    EXPECT_EQ(command.finish(), 0);
    EXPECT_EQ(command.out(), "viscacam 0.1.0\n");
}

TEST(Usage, EachHelpFitsOnAScreenAndHasAnExample) {
    expectHelpOnOneScreen({"--help"});
    expectHelpOnOneScreen({"ctl", "--help"});
    expectHelpOnOneScreen({"demo", "--help"});
    expectHelpOnOneScreen({"sim", "--help"});
    expectHelpOnOneScreen({"demo", "upgrade", "--help"});
    expectHelpOnOneScreen({"demo", "export", "--help"});
    expectHelpOnOneScreen({"doctor", "--help"});
    expectHelpOnOneScreen({"decode", "--help"});
    expectHelpOnOneScreen({"tap", "--help"});
    expectHelpOnOneScreen({"timeline", "--help"});
}

TEST(Usage, AnUnknownCameraIsAnsweredByTheKnownOnes) {
    expectWrongUsage({"demo", "--camera", "sony2"}, std::string("no camera is called \"sony2\"; ") + kKnown);
    expectWrongUsage({"sim", "--camera", "0x02000002"},
                     std::string("no camera is called \"0x02000002\"; ") + kKnown);
}

TEST(Usage, AnUnknownModuleTypeIsAnsweredByTheKnownOnes) {
    const std::string why = std::string("\"; ") + kKnown;
    expectWrongUsage({"demo", "--port", "/dev/null", "--type", "sony2"},
                     "no module type is called \"sony2" + why);
    expectWrongUsage({"demo", "--port", "/dev/null", "--type", "0x02"},
                     "no module type is called \"0x02" + why);
    expectWrongUsage({"demo", "--port", "/dev/null", "--type", ""}, "no module type is called \"" + why);
}

TEST(Usage, AModuleTypeIsNamedAsASimulatedCameraIsOrByItsCode) {
    for (const char *type : {"kova2", "0x02012A01", "33630721", "kova-2100"}) {
        Command demo({"demo", "--port", "/dev/no-such-device", "--type", type});
        EXPECT_EQ(demo.finish(), 1) << type;
        EXPECT_EQ(demo.err(), "viscacam: cannot open /dev/no-such-device: no such device\n");
    }
}

TEST(Usage, AnUnknownFaultIsAnsweredByTheKnownOnes) {
    expectWrongUsage({"demo", "--fault", "nonsense"}, "no fault is called \"nonsense\"; known are drop-tx,");
    expectWrongUsage({"sim", "--fault", "nonsense"}, "no fault is called \"nonsense\"; known are drop-tx,");
}

TEST(Usage, AnUnknownSubcommandIsAnsweredByTheKnownOnes) {
    expectWrongUsage(
        {"nonsense", "--port"},
        "viscacam: no subcommand is called \"nonsense\"; use ctl, demo, sim, doctor, decode, tap "
        "or timeline; \"viscacam --help\" explains them\n");
    expectWrongUsage({"--nonsense"}, "The following argument was not expected: --nonsense");
}

TEST(Usage, WhatCannotBeMeantIsRefused) {
    expectWrongUsage({}, "viscacam: say what to do: ctl, demo, sim");
    expectWrongUsage({"demo", "--baud", "1200"}, "--baud: 1200 not in {9600,19200,38400}");
    expectWrongUsage({"demo", "--type", "sony1"}, "--type requires --port");
    expectWrongUsage({"demo", "--port", "/dev/null", "--camera", "sony1"}, "excludes");
    expectWrongUsage({"demo", "--port", ""}, "no device is given");
    expectWrongUsage({"sim", "--latency", "some"},
                     "--latency: some is neither real nor none nor milliseconds");
    expectWrongUsage({"sim", "--boot", "-1"}, "--boot");
}

} // namespace e2e
