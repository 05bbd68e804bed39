// The focus near limit: a code for each distance and module, then the camera focuses again.
#include "tests/unit/unit_test.h"

#include <cctype>

namespace unit {
namespace {

const std::string kSonyTrigger = "81 01 04 18 01 FF", kKovaTrigger = "81 01 04 18 01 01 FF";
const std::string kUse1000 = "ERROR SONY_SetMinFocusLen: ulFocusNearLimit[%] invalid, use 1000mm instead\n";
const std::string kUse3000 = "WARN SONY_SetMinFocusLen: ulFocusNearLimit[%] invalid, use 3000mm instead\n";

/** A row of the table: the high nibble for 100, 1000, 3000, 10000 mm and for any other distance. */
struct Row {
    uint32_t type;
    char mm100, mm1000, mm3000, mm10000, other;
    const std::string &complaint, &trigger;
};
const Row kRows[] = {
    {0x02000001, 'E', 'C', '7', '3', 'D', kUse3000, kSonyTrigger}, // D, though 3000 mm is 7
    {0x02000005, 'E', 'C', '7', '3', 'D', kUse3000, kSonyTrigger},
    {0x02000004, 'E', 'C', '7', '3', 'D', kUse3000, kSonyTrigger},
    {0x02000003, 'E', 'C', '7', '3', '7', kUse3000, kSonyTrigger},
    {0x02012000, 'F', 'C', '7', '3', 'C', kUse1000, kKovaTrigger},
    {0x02012001, 'F', 'C', '7', '3', 'C', kUse1000, kKovaTrigger},
    {0x02012100, 'F', 'C', '7', '3', 'C', kUse1000, kKovaTrigger},
    {0x02012200, 'F', 'C', '7', '3', 'C', kUse1000, kKovaTrigger},
    {0x02012A02, 'F', 'C', '7', '3', 'C', kUse1000, kKovaTrigger},
    {0x02012FFF, 'F', 'C', '7', '3', 'C', kUse1000, kKovaTrigger},
};

class NearLimitTest : public UnitTest {
  protected:
    static std::string Limit(char nibble) { return std::string("81 01 04 28 0") + nibble + " 00 00 00 FF"; }
    static std::string Entry(uint32_t distance) {
        return "DEBUG SONY_SetMinFocusLen: FUN_ENTRY--param:ulFocusNearLimit[" + std::to_string(distance) +
               "]\n";
    }
    static std::string Set(uint32_t distance, const std::string &code) {
        return "DEBUG SONY_SetMinFocusLen: Set Limit Focuslens " + std::to_string(distance) + " to[0x" +
               code + "]\n";
    }
    static Lines Complained() {
        Lines lines;
        for (const Event &event : Host().Events(Call::Log)) {
            if (event.log.level <= VISCA_LOG_WARN) {
                lines.push_back(event.text);
            }
        }
        return lines;
    }
    static void Attach(uint32_t type) {
        Host().SetModuleType(type);
        Host().Forget();
    }
    const std::string m_refused = "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n";
    const std::string m_failed = "ERROR SONY_SetMinFocusLen: ViscaEnQueueCmd() fail exit\n";
};

TEST_F(NearLimitTest, EachDistanceHasItsCodeAndThenTheCameraFocuses) {
    for (const Row &row : kRows) {
        const std::pair<uint32_t, char> cases[] = {
            {100, row.mm100}, {1000, row.mm1000}, {3000, row.mm3000}, {10000, row.mm10000}};
        for (const auto &[distance, nibble] : cases) {
            Attach(row.type);
            EXPECT_EQ(0U, SONY_SetMinFocusLen(distance));
            EXPECT_THAT(Host().Commands(), ElementsAre(Limit(nibble), row.trigger)) << std::hex << row.type;
            EXPECT_THAT(Complained(), IsEmpty());
            const std::string code = {static_cast<char>(tolower(nibble)), '0', '0', '0'};
            EXPECT_EQ(Set(distance, code), Host().Log()[1]);
        }
    }
}

TEST_F(NearLimitTest, EveryOtherDistanceTakesTheModulesDefaultWithItsMessage) {
    for (const Row &row : kRows) {
        for (uint32_t distance : {0U, 1U, 99U, 101U, 500U, 999U, 1001U, 3001U, 10001U, 0xFFFFFFFEU}) {
            Attach(row.type);
            EXPECT_EQ(0U, SONY_SetMinFocusLen(distance));
            EXPECT_THAT(Host().Commands(), ElementsAre(Limit(row.other), row.trigger))
                << std::hex << row.type;
            std::string complaint = row.complaint;
            complaint.replace(complaint.find('%'), 1, std::to_string(distance));
            EXPECT_THAT(Complained(), ElementsAre(complaint));
            const std::string code = {static_cast<char>(tolower(row.other)), '0', '0', '0'};
            EXPECT_EQ(Set(distance, code), Host().Log()[2]);
        }
    }
}

TEST_F(NearLimitTest, TheHostIsAskedForTheTypeBeforeAnythingIsSaidOfTheDistance) {
    EXPECT_EQ(0U, SONY_SetMinFocusLen(500));
    EXPECT_THAT(Host().Story({Call::ModuleType, Call::Log, Call::Put}),
                ElementsAre(Entry(500), "module type",
                            "WARN SONY_SetMinFocusLen: ulFocusNearLimit[500] invalid, use 3000mm instead\n",
                            Set(500, "d000"), "put 0: " + Limit('D'),
                            "DEBUG SONY_OnePushTriggerAF: FUN_ENTRY--param:\n", "put 0: " + kSonyTrigger));
}

TEST_F(NearLimitTest, AKovaModuleTakesItsOwnTrigger) {
    Attach(0x02012A01);
    EXPECT_EQ(0U, SONY_SetMinFocusLen(100));
    EXPECT_THAT(Host().Log(), ElementsAre(Entry(100), Set(100, "f000"),
                                          "DEBUG KOVA_OnePushTriggerAF: FUN_ENTRY--param:\n"));
    EXPECT_THAT(Host().Commands(), ElementsAre(Limit('F'), kKovaTrigger));
}

TEST_F(NearLimitTest, ARepeatedRequestIsSentAgain) {
    EXPECT_EQ(0U, SONY_SetMinFocusLen(1000));
    EXPECT_EQ(0U, SONY_SetMinFocusLen(1000));
    EXPECT_THAT(Host().Commands(), ElementsAre(Limit('C'), kSonyTrigger, Limit('C'), kSonyTrigger));
}

TEST_F(NearLimitTest, OnlyTheHighestNumberCountsAsSetAlreadyWhateverTheModule) {
    SONY_SetMinFocusLen(1000);
    for (uint32_t type : {0x02000001U, 0x02012001U, 0x02000002U, kUnset}) {
        Attach(type);
        EXPECT_EQ(0U, SONY_SetMinFocusLen(0xFFFFFFFF));
        EXPECT_THAT(Host().Story({Call::ModuleType, Call::Log, Call::Put}),
                    ElementsAre(Entry(0xFFFFFFFF), "module type",
                                "WARN SONY_SetMinFocusLen: No Need Change Foucs Near Limit \n"));
    }
}

TEST_F(NearLimitTest, ATypeWithoutARowFails) {
    const std::pair<uint32_t, const char *> cases[] = {{0x02000000, "0x2000000"},
                                                       {0x02000002, "0x2000002"},
                                                       {0x02000006, "0x2000006"},
                                                       {0x02011FFF, "0x2011fff"},
                                                       {0x02013000, "0x2013000"},
                                                       {0x12012001, "0x12012001"},
                                                       {0, "0x0"},
                                                       {kUnset, "0xffffffff"}};
    for (const auto &[type, text] : cases) {
        for (uint32_t distance : {1000U, 500U}) {
            Attach(type);
            EXPECT_EQ(1U, SONY_SetMinFocusLen(distance));
            EXPECT_THAT(Host().Story({Call::Log, Call::Put}),
                        ElementsAre(Entry(distance), std::string("ERROR SONY_SetMinFocusLen: Unknown "
                                                                 "ulCamModType[") +
                                                         text + "], fail exit\n"));
        }
    }
}

TEST_F(NearLimitTest, ALimitThatIsNotQueuedEndsItWithoutTheTrigger) {
    for (uint32_t type : {0x02000003U, 0x02012001U}) {
        Attach(type);
        Host().FailNext(Call::Put);
        EXPECT_EQ(1U, SONY_SetMinFocusLen(3000));
        EXPECT_THAT(Host().Log(), ElementsAre(Entry(3000), Set(3000, "7000"), m_refused, m_failed));
        EXPECT_THAT(Host().Commands(), ElementsAre(Limit('7')));
    }
}

TEST_F(NearLimitTest, ATriggerThatIsNotQueuedFailsIt) {
    for (const auto &[type, trigger] :
         {std::pair{0x02000003U, "SONY_OnePushTriggerAF"}, std::pair{0x02012001U, "KOVA_OnePushTriggerAF"}}) {
        Attach(type);
        Host().Fail(Call::Put, Host().Calls(Call::Put) + 2);
        EXPECT_EQ(1U, SONY_SetMinFocusLen(10000));
        EXPECT_THAT(Host().Commands(), SizeIs(2));
        EXPECT_THAT(Complained(), ElementsAre(m_refused, std::string("ERROR ") + trigger +
                                                             ": ViscaEnQueueCmd() fail exit\n"));
    }
}

} // namespace
} // namespace unit
