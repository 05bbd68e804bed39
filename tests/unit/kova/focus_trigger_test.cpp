// One-push focus: its types and their parameters.
#include "tests/unit/kova/behaviour_test.h"

namespace unit {
namespace {

const Lines kRefused = {"ERROR KOVA_OnePushTriggerAF: ViscaEnQueueCmd() fail exit"};

class FocusTriggerTest : public KovaTest {
  protected:
    static void Sends(const std::string &payload, uint32_t type, const uint32_t *parameters) {
        Follows(
            {Put(payload, kRefused)}, [&] { return KOVA_OnePushTriggerAF(type, parameters); },
            [] { Attach(kKova); });
    }
};

TEST_F(FocusTriggerTest, PlainAndNumberedTypesTakeNoParameters) {
    const uint32_t ignored[4] = {1, 2, 3, 4};
    for (const uint32_t *parameters : {static_cast<const uint32_t *>(nullptr), ignored}) {
        Sends("18 01 01", 0, parameters);
        Sends("18 01 06", 6, parameters);
        Sends("18 01 07", 7, parameters);
        Sends("18 01 08", 8, parameters);
        Sends("18 01 09", 9, parameters);
    }
}

TEST_F(FocusTriggerTest, APointIsSentInNibbles) {
    const uint32_t point[2] = {0x1234, 0xABCD};
    Sends("18 0A 01 02 03 04 0A 0B 0C 0D", 10, point);
    const uint32_t large[2] = {0xFFFF0001, 0x10000};
    Sends("18 0A 00 00 00 01 00 00 00 00", 10, large);
}

TEST_F(FocusTriggerTest, ARectangleIsSentInWholeBytes) {
    const uint32_t rectangle[4] = {0x01FF, 0x1234, 0xABCD, 0x00FE};
    Sends("18 0B 01 FF 12 34 AB CD 00 FE", 11, rectangle);
    const uint32_t large[4] = {0xFFFFFFFF, 0x10000, 0xABCD0102, 0x80000000};
    Sends("18 0B FF FF 00 00 01 02 00 00", 11, large);
}

TEST_F(FocusTriggerTest, OtherTypesAreRefused) {
    const uint32_t parameters[4] = {};
    for (uint32_t type : {1U, 2U, 3U, 4U, 5U, 12U, 13U, 255U, 256U, 262U, 266U, 0x80000000U, 0xFFFFFFFFU}) {
        for (const uint32_t *pointer : {static_cast<const uint32_t *>(nullptr), parameters}) {
            Host().Forget();
            EXPECT_EQ(1U, KOVA_OnePushTriggerAF(type, pointer));
            EXPECT_EQ(Lines{"ERROR KOVA_OnePushTriggerAF: TrigType[" + std::to_string(type) +
                            "] invalid, fail exit"},
                      Story());
        }
    }
}

TEST_F(FocusTriggerTest, APointAndARectangleNeedTheirParameters) {
    for (uint32_t type : {10U, 11U}) {
        Host().Forget();
        EXPECT_EQ(1U, KOVA_OnePushTriggerAF(type, nullptr));
        EXPECT_EQ((Lines{"DEBUG KOVA_OnePushTriggerAF: FUN_ENTRY--param:\n",
                         "ERROR KOVA_OnePushTriggerAF: param invalid\n"}),
                  Host().Log());
        EXPECT_EQ(Lines(), Host().Commands());
    }
}

} // namespace
} // namespace unit
