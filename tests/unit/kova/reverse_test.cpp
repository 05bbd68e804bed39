// Mirror and flip, read and set.
#include "tests/unit/kova/module_test.h"

#include <cstdio>

namespace unit {
namespace {

struct Mode {
    const char *name, *inquiry, *label;
    uint32_t (*read)(uint32_t *);
};
const Mode kModes[] = {{"SonyGetMirrorMode", "81 09 04 61 FF", "mirror_mode", SonyGetMirrorMode},
                       {"SonyGetFlipMode", "81 09 04 66 FF", "flip_mode", SonyGetFlipMode}};

class ReverseTest : public ModuleTest {
  protected:
    static std::string Entry(const Mode &mode, const uint32_t *pointer) {
        char text[64];
        snprintf(text, sizeof text, "FUN_ENTRY--param:pbSet[%p]\n", static_cast<const void *>(pointer));
        return std::string("DEBUG ") + mode.name + ": " + text;
    }
    const std::string m_entry = "DEBUG SonySetCamReverse: FUN_ENTRY--param:\n";
    const std::string m_refused = "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n";
};

TEST_F(ReverseTest, ALowNibbleOfTwoIsOnAndAllElseIsOff) {
    for (const Mode &mode : kModes) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            uint32_t set = 77;
            Host().AnswerInquiry(Reply({static_cast<uint8_t>(value)}));
            EXPECT_EQ(0U, mode.read(&set));
            EXPECT_EQ((value & 0x0F) == 2 ? 1U : 0U, set) << value;
        }
    }
}

TEST_F(ReverseTest, TheWholeByteIsLogged) {
    for (const Mode &mode : kModes) {
        Host().Forget();
        uint32_t set = 0;
        Host().AnswerInquiry("90 50 A3 FF");
        EXPECT_EQ(0U, mode.read(&set));
        EXPECT_THAT(Host().Sent(), ElementsAre(mode.inquiry));
        EXPECT_THAT(Host().Log(), ElementsAre(Entry(mode, &set), std::string("INFO ") + mode.name + ": " +
                                                                     mode.label + " 0xa3\n"));
    }
}

TEST_F(ReverseTest, ANullPointerIsRefusedWithoutTraffic) {
    for (const Mode &mode : kModes) {
        Host().Forget();
        EXPECT_EQ(2U, mode.read(nullptr));
        EXPECT_THAT(
            Host().Story({Call::Log, Call::Send}),
            ElementsAre(Entry(mode, nullptr), std::string("ERROR ") + mode.name + ": input param invalid\n"));
    }
}

TEST_F(ReverseTest, AFailedInquiryIsADebugLineAndLeavesTheWord) {
    for (const Mode &mode : kModes) {
        Host().Forget();
        uint32_t set = 77;
        Host().AnswerInquiry(kErrorReply);
        EXPECT_EQ(1U, mode.read(&set));
        EXPECT_THAT(Host().Log(), ElementsAre(Entry(mode, &set), std::string("DEBUG ") + mode.name +
                                                                     ": ViscaInquiry failed exit\n"));
        EXPECT_EQ(77U, set);
    }
}

TEST_F(ReverseTest, ASilentCameraIsNeitherMirroredNorFlipped) {
    for (const Mode &mode : kModes) {
        Host().Forget();
        uint32_t set = 77;
        EXPECT_EQ(0U, mode.read(&set));
        EXPECT_EQ(0U, set);
        EXPECT_THAT(Complained(), ElementsAre(m_time_out));
    }
}

TEST_F(ReverseTest, EachModeIsAMirrorCommandAndThenAFlipCommand) {
    const char *const commands[][2] = {{"81 01 04 61 03 FF", "81 01 04 66 03 FF"},
                                       {"81 01 04 61 02 FF", "81 01 04 66 02 FF"},
                                       {"81 01 04 61 02 FF", "81 01 04 66 03 FF"},
                                       {"81 01 04 61 03 FF", "81 01 04 66 02 FF"}};
    for (uint32_t mode = 0; mode <= 3; ++mode) {
        Host().Forget();
        EXPECT_EQ(0U, SonySetCamReverse(mode));
        EXPECT_THAT(Host().Commands(), ElementsAre(commands[mode][0], commands[mode][1])) << mode;
        EXPECT_THAT(Host().Log(), ElementsAre(m_entry));
    }
}

TEST_F(ReverseTest, OtherModesAreRefusedWithoutTraffic) {
    for (uint32_t mode : {4U, 5U, 0x100U, 0xFFFFFFFFU}) {
        Host().Forget();
        EXPECT_EQ(1U, SonySetCamReverse(mode));
        EXPECT_THAT(Host().Story({Call::Log, Call::Put}),
                    ElementsAre(m_entry, "ERROR SonySetCamReverse: Not support ulReverseMode[" +
                                             std::to_string(mode) + "] yet, fail exit\n"));
    }
}

TEST_F(ReverseTest, AMirrorCommandThatIsNotQueuedEndsIt) {
    Host().FailNext(Call::Put);
    EXPECT_EQ(1U, SonySetCamReverse(2));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 61 02 FF"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(m_entry, m_refused,
                            "ERROR SonySetCamReverse: set kova mirror, ViscaEnQueueCmd fail exit\n"));
}

TEST_F(ReverseTest, AFlipCommandThatIsNotQueuedIsReported) {
    Host().Fail(Call::Put, 2);
    EXPECT_EQ(1U, SonySetCamReverse(2));
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 61 02 FF", "81 01 04 66 03 FF"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(m_entry, m_refused,
                            "ERROR SonySetCamReverse: set kova flip, ViscaEnQueueCmd fail exit\n"));
}

} // namespace
} // namespace unit
