// Orientation: what it is compared with, and the power cycle that a module may need.
#include "tests/unit/kova/behaviour_test.h"

namespace unit {
namespace {

constexpr uint32_t kByPower = 0x08;

const char *const kOn = "90 50 02 FF", *const kOff = "90 50 03 FF";

/** Mirror and flip command of each orientation mode. */
const char *const kMirror[] = {"61 03", "61 02", "61 02", "61 03"};
const char *const kFlip[] = {"66 03", "66 02", "66 03", "66 02"};

std::string Said(const std::string &line) {
    return "ERROR KOVA_SetSensorReverse: " + line;
}

class OrientationTest : public KovaTest {
  protected:
    static void AttachWith(uint32_t ability, uint32_t type = kKova) {
        Attach(type);
        KovaSetCamAbility(ability);
        Host().Forget();
    }
    static Steps Comparison(const char *mirror, const char *flip) {
        const auto value = [](const char *reply) { return std::string(reply == kOn ? "0x2" : "0x3"); };
        return {Ask("61", mirror, {Said("SonyGetMirrorMode fail exit")}),
                Says("INFO SonyGetMirrorMode: mirror_mode " + value(mirror)),
                Ask("66", flip, {Said("SonyGetFlipMode fail exit")}),
                Says("INFO SonyGetFlipMode: flip_mode " + value(flip))};
    }
    static Steps Setting(uint32_t mode) {
        const std::string own = Said("SonySetCamReverse(" + std::to_string(mode) + ") fail exit");
        return {
            Put(kMirror[mode], {"ERROR SonySetCamReverse: set kova mirror, ViscaEnQueueCmd fail exit", own}),
            Put(kFlip[mode], {"ERROR SonySetCamReverse: set kova flip, ViscaEnQueueCmd fail exit", own})};
    }
    static Steps PowerCycle() {
        const Lines not_on = {"ERROR SonyWaitPowerOn: ViscaInquiry failed exit",
                              Said("SonyWaitPowerOn fail exit")};
        return {Put("00 03", {Said("SonySetPower(BOOL_FALSE) fail exit")}),
                Pause(1000),
                Put("00 02", {Said("SonySetPower(BOOL_TRUE) fail exit")}),
                Pause(3000),
                Pause(100),
                Ask("00", "90 50 03 FF", not_on),
                Pause(100),
                Ask("00", "", not_on),
                Pause(100),
                Ask("00", "90 50 02 FF", not_on),
                Says("INFO SonyWaitPowerOn: Now Power On")};
    }
};

TEST_F(OrientationTest, WithoutTheNeedOfPowerItIsSentWithoutComparisonAndWithoutPowerCycle) {
    for (uint32_t mode = 0; mode < 4; ++mode) {
        for (uint32_t force : {0U, 2U, 0xFFFFFFFFU}) {
            Follows(
                Setting(mode), [&] { return KOVA_SetSensorReverse(mode, force); }, [] { AttachWith(0); });
        }
    }
}

TEST_F(OrientationTest, NoOtherAbilityMatters) {
    Follows(
        Setting(1), [] { return KOVA_SetSensorReverse(1, 0); }, [] { AttachWith(~kByPower); });
}

TEST_F(OrientationTest, WithTheNeedOfPowerOnlyADifferentOneIsSetWithAPowerCycle) {
    const struct {
        const char *mirror, *flip;
        uint32_t current;
    } rows[] = {{kOff, kOff, 0}, {kOff, kOn, 3}, {kOn, kOn, 1}, {kOn, kOff, 2}};
    for (const auto &row : rows) {
        for (uint32_t wanted = 0; wanted < 4; ++wanted) {
            for (uint32_t force : {0U, 2U}) {
                const Steps look = Comparison(row.mirror, row.flip);
                Follows(
                    wanted == row.current ? look : look + Setting(wanted) + PowerCycle(),
                    [&] { return KOVA_SetSensorReverse(wanted, force); }, [] { AttachWith(kByPower); });
            }
        }
    }
}

TEST_F(OrientationTest, ForceSetsItAndCyclesThePowerWithoutALook) {
    for (uint32_t ability : {0U, kByPower, 0xFFFFFFFFU}) {
        for (uint32_t mode = 0; mode < 4; ++mode) {
            Follows(
                Setting(mode) + PowerCycle(), [&] { return KOVA_SetSensorReverse(mode, 1); },
                [&] { AttachWith(ability); });
        }
    }
}

TEST_F(OrientationTest, OnlyTheLowNibbleOfAnAnswerCounts) {
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        AttachWith(kByPower);
        const std::string reply = "90 50 " + Hex({static_cast<uint8_t>(byte)}) + " FF";
        Answers({reply, reply, "90 50 02 FF"});
        EXPECT_EQ(0U, KOVA_SetSensorReverse((byte & 0x0F) == 2 ? 1 : 0, 0));
        EXPECT_EQ(Lines(), Host().Commands()) << reply;
    }
}

TEST_F(OrientationTest, AModuleThatDoesNotAnswerCountsAsNeither) {
    AttachWith(kByPower);
    EXPECT_EQ(0U, KOVA_SetSensorReverse(0, 0));
    EXPECT_EQ(Lines(), Host().Commands());
    EXPECT_EQ(2U * 6000000, Clib().Now());
    Answers({"", "", "90 50 02 FF"});
    EXPECT_EQ(0U, KOVA_SetSensorReverse(3, 0));
    EXPECT_EQ(Packets({"61 03", "66 02", "00 03", "00 02"}), Host().Commands());
}

TEST_F(OrientationTest, AnUnknownModeIsRefused) {
    for (uint32_t mode : {4U, 256U, 0xFFFFFFFFU}) {
        for (uint32_t force : {0U, 1U}) {
            AttachWith(0);
            EXPECT_EQ(1U, KOVA_SetSensorReverse(mode, force));
            const std::string number = std::to_string(mode);
            EXPECT_THAT(Story(), ElementsAre("ERROR SonySetCamReverse: Not support ulReverseMode[" + number +
                                                 "] yet, fail exit",
                                             Said("SonySetCamReverse(" + number + ") fail exit")));
        }
    }
    AttachWith(kByPower);
    Answers({kOn, kOn});
    EXPECT_EQ(1U, KOVA_SetSensorReverse(4, 0));
    EXPECT_EQ(Lines(), Host().Commands());
    EXPECT_EQ((Lines{"81 09 04 61 FF", "81 09 04 66 FF"}), Host().Sent()) << "the comparison comes first";
}

TEST_F(OrientationTest, BothLogTheirEntry) {
    EXPECT_EQ(0U, KovaReverseCam());
    const std::string entry = ": FUN_ENTRY--param:\n";
    ASSERT_GE(Host().Log().size(), 2U);
    EXPECT_EQ("DEBUG KovaReverseCam" + entry, Host().Log()[0]);
    EXPECT_EQ("DEBUG KOVA_SetSensorReverse" + entry, Host().Log()[1]);
}

// At start-up the product says which way round the module is mounted; nothing is forced.
TEST_F(OrientationTest, OneProductIsUpsideDown) {
    for (uint32_t product : {0x1001U, 0U, 1U, 0x1000U, 0x1002U, 0x11001U, 0xFFFFFFFFU}) {
        AttachWith(0);
        Host().SetSubType(product);
        EXPECT_EQ(0U, KovaReverseCam());
        EXPECT_EQ(product == 0x1001 ? Packets({"61 02", "66 02"}) : Packets({"61 03", "66 03"}),
                  Host().Commands())
            << product;
    }
}

TEST_F(OrientationTest, AtStartupAModuleThatIsRightAlreadyKeepsItsPower) {
    AttachWith(kByPower);
    Host().SetSubType(0x1001);
    Answers({kOn, kOn});
    EXPECT_EQ(0U, KovaReverseCam());
    EXPECT_EQ(Lines(), Host().Commands());
}

TEST_F(OrientationTest, AFailureAtStartupNamesTheOrientation) {
    for (uint32_t product : {0x1001U, 0x2002U}) {
        AttachWith(0);
        Host().SetSubType(product);
        RefusePut(2);
        EXPECT_EQ(1U, KovaReverseCam());
        const std::string line =
            std::string("SonySetCamReverse(") + (product == 0x1001 ? "1" : "0") + ") fail exit";
        EXPECT_EQ((Lines{Said(line), "ERROR KovaReverseCam: " + line}),
                  (Lines{Story().end()[-2], Story().end()[-1]}));
    }
}

} // namespace
} // namespace unit
