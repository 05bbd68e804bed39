// Exposure mode, shutter, gain, iris, their ranges, compensation, metering and the reading of the gain.
#include "tests/unit/image/image_test.h"

#include <map>

namespace unit {
namespace {

class ExposureTest : public ImageTest {
  protected:
    static Outcome Mode(uint32_t value) {
        return Run([=] { return SonySetExposureMode(0, value); });
    }
    static Outcome Shutter(uint32_t value) {
        return Run([=] { return SonyImgSetShutter(0, value); });
    }
    static Outcome Gain(uint32_t value) {
        return Run([=] { return SonyImgSetGain(0, value); });
    }
    static Outcome Iris(uint32_t value) {
        return Run([=] { return SonyImgSetIris(0, value); });
    }
    static Outcome ShutterScope(uint32_t slow, uint32_t fast) {
        return Run([=] { return SonyImgSetShutterScope(0, slow, fast); });
    }
    static Outcome GainScope(uint32_t low, uint32_t high) {
        return Run([=] { return SonyImgSetGainScope(0, low, high); });
    }
    static Outcome SlowShutter(uint32_t value) {
        return Run([=] { return SonyImgSetAutoSlowShutter(0, value); });
    }
    static Outcome SlowShutterLimit(uint32_t value) {
        return Run([=] { return SonyImgSetAutoSlowShutterLimit(0, value); });
    }
    static Outcome Compensation(int32_t value) {
        return Run([=] { return SonySetExpComp(0, value); });
    }
    static Outcome Metering(uint32_t value) {
        return Run([=] { return SonySetAEMetering(0, value); });
    }
    static Outcome Spot(uint32_t top_x, uint32_t top_y, uint32_t bot_x, uint32_t bot_y) {
        const uint32_t rectangle[] = {top_x, top_y, bot_x, bot_y};
        return Run([&] { return SonySetSpotAEPos(0, rectangle); });
    }
    static Outcome Complains(const std::string &line) { return Nothing().Logs("ERROR " + line); }
};

std::string Number(uint32_t value) {
    return std::to_string(value);
}

struct Row {
    uint32_t value;
    const char *payload;
};

// --- exposure mode

const Row kKovaModes[] = {{0, "39 00"}, {1, "39 0F"}, {2, "39 0A"}, {3, "39 0B"},
                          {4, "39 0E"}, {5, "39 0C"}, {6, "39 0D"}, {7, "39 03"}};
const Row kBlockModes[] = {{0, "39 00"}, {2, "39 0A"}, {3, "39 0B"}, {7, "39 03"}};

TEST_F(ExposureTest, EachExposureModeHasItsCode) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        for (const Row &row : kKovaModes) {
            EXPECT_EQ(Sends({row.payload}), Mode(row.value)) << std::hex << type;
        }
    }
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        for (const Row &row : kBlockModes) {
            EXPECT_EQ(Sends({row.payload}), Mode(row.value)) << std::hex << type;
        }
    }
}

TEST_F(ExposureTest, AnExposureModeThatTheModuleLacksIsASuccessThatChangesNothing) {
    const std::vector<uint32_t> beyond = {8, 9, 10, 255, 256, 258, 0x80000002, 0xFFFFFFFE};
    std::vector<uint32_t> lacking_in_blocks = {1, 4, 5, 6};
    lacking_in_blocks.insert(lacking_in_blocks.end(), beyond.begin(), beyond.end());
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        Mode(2);
        Mode(2); // the change is over
        Shutter(60);
        for (uint32_t mode : type >= kKova ? beyond : lacking_in_blocks) {
            const std::string line =
                "SonySetExposureMode: unSupported ulExposureMode[" + Number(mode) + "], fail exit\n";
            EXPECT_EQ(Complains(line), Mode(mode));
            EXPECT_EQ(Complains(line), Mode(mode)) << "not remembered";
            EXPECT_EQ(Nothing(), Shutter(60)) << "nothing is forced";
        }
        EXPECT_EQ(Nothing(), Mode(2)) << "still the last one";
    }
}

// --- shutter

const std::map<uint32_t, const char *> kShutters = {
    {1, "00"},    {2, "01"},    {3, "02"},    {4, "02"},    {6, "03"},    {8, "03"},    {10, "04"},
    {12, "04"},   {15, "04"},   {20, "05"},   {25, "05"},   {30, "05"},   {50, "06"},   {60, "06"},
    {75, "07"},   {90, "07"},   {100, "08"},  {120, "09"},  {125, "09"},  {150, "0A"},  {180, "0A"},
    {200, "0B"},  {215, "0B"},  {250, "0B"},  {300, "0C"},  {350, "0C"},  {425, "0D"},  {500, "0D"},
    {600, "0E"},  {725, "0E"},  {1000, "0F"}, {1250, "10"}, {1500, "10"}, {1750, "11"}, {2000, "11"},
    {2500, "12"}, {3000, "12"}, {3500, "13"}, {4000, "13"}, {6000, "14"}, {8000, "15"}, {10000, "15"}};

/** Two digits as the camera gets them: "1F" -> "01 0F". */
std::string Split(const std::string &code) {
    return std::string("0") + code[0] + " 0" + code[1];
}

std::vector<uint32_t> WithNeighbours(const std::map<uint32_t, const char *> &table) {
    std::vector<uint32_t> values = {0, 65535, 65536, 65537, 0x80000001, 0xFFFFFFFE};
    for (const auto &row : table) {
        values.insert(values.end(), {row.first, row.first - 1, row.first + 1, row.first + 0x10000});
    }
    for (uint32_t value = 0; value <= 1000; ++value) {
        values.push_back(value);
    }
    return values;
}

/** Every value of the list, each right after the one before: the table's rows go out, the rest is complained
 * about. */
void ExpectTable(const std::map<uint32_t, const char *> &table, Outcome (*ask)(uint32_t),
                 const std::string &command, const std::string &before, const std::string &after) {
    uint32_t last = kUnset;
    for (uint32_t value : WithNeighbours(table)) {
        const auto row = table.find(value);
        if (value == last) {
            EXPECT_EQ(Nothing(), ask(value)) << value;
        } else if (row != table.end()) {
            EXPECT_EQ(Sends({command + " 00 00 " + Split(row->second)}), ask(value)) << value;
            last = value;
        } else {
            EXPECT_EQ(Nothing().Logs("ERROR " + before + Number(value) + after), ask(value)) << value;
        }
    }
}

TEST_F(ExposureTest, EachShutterOfASonyBlockHasItsPositionAndOthersAreASuccessThatChangesNothing) {
    for (uint32_t type : {kSony1, kSony3, kSony4, kSony5, 0x02013000U}) {
        Attach(type);
        ExpectTable(kShutters, Shutter, "4A", "SonyImgSetShutter: shutter[", "] not supported, fail exit\n");
    }
}

TEST_F(ExposureTest, AnUnsupportedShutterDoesNotStandInTheWayOfTheNext) {
    EXPECT_EQ(Complains("SonyImgSetShutter: shutter[5] not supported, fail exit\n"), Shutter(5));
    EXPECT_EQ(Complains("SonyImgSetShutter: shutter[5] not supported, fail exit\n"), Shutter(5));
    EXPECT_EQ(Sends({"4A 00 00 00 02"}), Shutter(4));
}

TEST_F(ExposureTest, AKovaModuleTakesEveryShutterInFourNibbles) {
    const Row rows[] = {{0x1234, "CB 01 02 03 04"},     {0, "CB 00 00 00 00"},
                        {1, "CB 00 00 00 01"},          {5, "CB 00 00 00 05"},
                        {1100, "CB 00 04 04 0C"},       {10000, "CB 02 07 01 00"},
                        {0xFFFF, "CB 0F 0F 0F 0F"},     {0x10000, "CB 00 00 00 00"},
                        {0x12345678, "CB 05 06 07 08"}, {0xFFFFFFFE, "CB 0F 0F 0F 0E"}};
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        for (const Row &row : rows) {
            EXPECT_EQ(Sends({row.payload}), Shutter(row.value)) << std::hex << type;
        }
    }
}

// --- gain

TEST_F(ExposureTest, ASonyBlockTakesTheGainInStepsOfTwoDecibels) {
    const char *const codes[] = {"01", "01", "02", "02", "03", "03", "04", "04", "05", "05",
                                 "06", "06", "07", "07", "08", "08", "09", "09", "0A", "0A",
                                 "0B", "0B", "0C", "0C", "0D", "0D", "0E", "0E", "0F", "0F"};
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        for (uint32_t gain = 0; gain < 30; ++gain) {
            EXPECT_EQ(Sends({std::string("4C 00 00 00 ") + codes[gain]}), Gain(gain)) << gain;
        }
        for (uint32_t gain : {30U, 31U, 100U, 256U, 0x100U, 0x80000000U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Complains("SonyImgSetGain: ulGain[" + Number(gain) + "] invalid, fail exit\n"),
                      Gain(gain));
        }
        EXPECT_EQ(Nothing(), Gain(29));
    }
}

TEST_F(ExposureTest, AKovaModuleTakesTheGainAsAPercentage) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        char code[8];
        for (uint32_t gain = 0; gain <= 100; ++gain) {
            snprintf(code, sizeof code, "%02X", gain);
            EXPECT_EQ(Sends({"4C 00 00 " + Split(code)}), Gain(gain));
        }
        for (uint32_t gain : {101U, 255U, 256U, 0x10001U, 0xFFFFFFFFU}) {
            EXPECT_EQ(
                Sends({"4C 00 00 06 04"})
                    .Logs("WARN SonyImgSetGain: ulGain[" + Number(gain) + "] too large, limit to 100\n"),
                Gain(gain));
        }
    }
}

TEST_F(ExposureTest, ALimitedGainIsRememberedAsItWasAskedFor) {
    Attach(kKova);
    Gain(250);
    EXPECT_EQ(Nothing(), Gain(250));
    EXPECT_EQ(Sends({"4C 00 00 06 04"}), Gain(100)) << "another value, though the camera has it";
}

TEST_F(ExposureTest, AnUnchangedGainDoesNotEvenAskForTheModule) {
    Gain(10);
    Gain(10);
    EXPECT_EQ(Lines(), Host().Story({Call::ModuleType}));
}

// --- iris

const std::map<uint32_t, const char *> kIrisesOfType4 = {
    {99999, "00"}, {2800, "01"}, {2200, "02"}, {1600, "03"}, {1400, "04"}, {1100, "05"}, {960, "06"},
    {800, "07"},   {680, "08"},  {560, "09"},  {480, "0A"},  {400, "0B"},  {340, "0C"},  {280, "0D"},
    {240, "0E"},   {200, "0F"},  {160, "10"},  {140, "11"},  {130, "11"},  {100, "11"}};
const std::map<uint32_t, const char *> kIrises = {
    {99999, "00"}, {2800, "01"}, {2200, "02"}, {1900, "03"}, {1600, "04"}, {1400, "05"}, {1100, "06"},
    {960, "07"},   {800, "08"},  {680, "09"},  {560, "0A"},  {480, "0B"},  {400, "0C"},  {340, "0D"},
    {280, "0E"},   {240, "0F"},  {200, "10"},  {160, "11"},  {100, "11"}};

TEST_F(ExposureTest, EachIrisHasItsPositionAndOthersAreASuccessThatChangesNothing) {
    const std::string before = "SonyImgSetIris: ulIris[", after = "] invalid, fail exit\n";
    for (uint32_t type : {kSony1, kSony3, kSony5, 0x02000000U, kKova, kKovaGen2}) {
        Attach(type);
        ExpectTable(kIrises, Iris, "4B", before, after);
    }
    Attach(kSony4);
    ExpectTable(kIrisesOfType4, Iris, "4B", before, after);
    EXPECT_EQ(Complains(before + "1900" + after), Iris(1900));
    Exchange(kSony1);
    EXPECT_EQ(Complains(before + "140" + after), Iris(140));
    EXPECT_EQ(Complains(before + "130" + after), Iris(130));
}

TEST_F(ExposureTest, ARefusedIrisHasWordsOfItsOwn) {
    RefuseCommand(1);
    EXPECT_EQ(IsRefused({"4B 00 00 01 00"}, "ERROR SonyImgSetIris: ViscaQueueCmdCushion() fail exit\n"),
              Iris(200));
}

// --- ranges

TEST_F(ExposureTest, TheShutterRangeIsSentSmallerBoundFirst) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        EXPECT_EQ(Sends({"A3 00 00 01 09 02 07 01 00"}), ShutterScope(25, 10000));
        EXPECT_EQ(Nothing(), ShutterScope(10000, 25)) << "the same range";
        EXPECT_EQ(Nothing(), ShutterScope(25, 10000));
        EXPECT_EQ(Sends({"A3 00 00 01 09 00 00 01 09"}), ShutterScope(25, 25));
        EXPECT_EQ(Sends({"A3 01 02 03 04 05 06 07 08"}), ShutterScope(0x5678, 0x1234));
        EXPECT_EQ(Sends({"A3 00 00 00 00 0F 0F 0F 0F"}), ShutterScope(0xFFFF, 0));
        EXPECT_EQ(Sends({"A3 00 00 00 02 00 00 00 01"}), ShutterScope(0x10001, 2))
            << "ordered by the whole word";
        EXPECT_EQ(Sends({"A3 00 00 00 05 0F 0F 0F 0F"}), ShutterScope(kUnset, 5)) << "no sign";
    }
}

TEST_F(ExposureTest, EachBoundOfTheShutterRangeCounts) {
    Attach(kKova);
    ShutterScope(10000, 25);
    EXPECT_EQ(Sends({"A3 00 00 01 0A 02 07 01 00"}), ShutterScope(26, 10000));
    EXPECT_EQ(Sends({"A3 00 00 01 0A 02 07 00 0F"}), ShutterScope(26, 9999));
}

TEST_F(ExposureTest, TheGainRangeIsSentAsItIs) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        EXPECT_EQ(Sends({"2C 00 0A 05 0A"}), GainScope(10, 90));
        EXPECT_EQ(Sends({"2C 05 0A 00 0A"}), GainScope(90, 10)) << "not reordered";
        EXPECT_EQ(Nothing(), GainScope(90, 10));
        EXPECT_EQ(Sends({"2C 05 0A 00 0B"}), GainScope(90, 11));
        EXPECT_EQ(Sends({"2C 05 0B 00 0B"}), GainScope(91, 11));
        EXPECT_EQ(Sends({"2C 00 00 0F 0F"}), GainScope(0, 255));
        EXPECT_EQ(Sends({"2C 00 00 03 04"}), GainScope(256, 0x1234)) << "low bytes";
        EXPECT_EQ(Sends({"2C 00 00 03 04"}), GainScope(0, 0x34)) << "compared whole";
    }
}

TEST_F(ExposureTest, TheRangesAndTheSlowShutterLimitAreForKovaModulesOnly) {
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        EXPECT_EQ(Nothing(), ShutterScope(25, 10000));
        EXPECT_EQ(Nothing(), GainScope(10, 90));
        EXPECT_EQ(Nothing(), SlowShutterLimit(25));
        Exchange(kKova);
        EXPECT_EQ(Sends({"A3 00 00 01 09 02 07 01 00"}), ShutterScope(25, 10000)) << "was not remembered";
        EXPECT_EQ(Sends({"2C 00 0A 05 0A"}), GainScope(10, 90));
        EXPECT_EQ(Sends({"CA 00 00 01 09"}), SlowShutterLimit(25));
    }
}

// --- automatic slow shutter

TEST_F(ExposureTest, TheSlowShutterSwitchesOnAndOffAndAnythingElseFails) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        EXPECT_EQ(Sends({"5A 02"}), SlowShutter(1));
        EXPECT_EQ(Sends({"5A 03"}), SlowShutter(0));
        for (uint32_t value : {2U, 3U, 255U, 256U, 257U, 0x80000001U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Nothing().Fails().Logs("WARN SonyImgSetAutoSlowShutter: bIsAutoSlowShutter[" +
                                             Number(value) + "] invalid, fail exit\n"),
                      SlowShutter(value));
        }
        EXPECT_EQ(Nothing(), SlowShutter(0));
    }
}

TEST_F(ExposureTest, TheSlowShutterLimitIsSentAsItsLowByte) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        EXPECT_EQ(Sends({"CA 00 00 01 09"}), SlowShutterLimit(25));
        EXPECT_EQ(Sends({"CA 00 00 00 00"}), SlowShutterLimit(0));
        EXPECT_EQ(Sends({"CA 00 00 0F 0F"}), SlowShutterLimit(255));
        EXPECT_EQ(Sends({"CA 00 00 00 00"}), SlowShutterLimit(256));
        EXPECT_EQ(Sends({"CA 00 00 0A 0B"}), SlowShutterLimit(0xFFFFFFAB));
    }
}

// --- compensation

struct Step {
    int32_t from, to;
    const char *code;
};

// 14 units each, the middle one double, as the division drops the sign.
const Step kCompensation[] = {
    {-141, -128, "FE"}, {-127, -114, "FF"}, {-113, -87, "00"}, {-86, -73, "01"}, {-72, -59, "02"},
    {-58, -45, "03"},   {-44, -31, "04"},   {-30, -17, "05"},  {-16, -3, "06"},  {-2, 11, "07"},
    {12, 25, "08"},     {26, 39, "09"},     {40, 53, "0A"},    {54, 67, "0B"},   {68, 81, "0C"},
    {82, 95, "0D"},     {96, 109, "0E"},    {110, 123, "0F"},  {124, 137, "10"}, {138, 151, "11"},
};

Outcome Compensated(const std::string &code) {
    return Sends({"3E 02", "4E 00 00 " + Split(code)});
}

TEST_F(ExposureTest, CompensationGoesInStepsOfFourteenWithoutALimit) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        EXPECT_EQ(Compensated("FF"), Compensation(-114)); // so that -1 is not what is remembered
        for (const Step &step : kCompensation) {
            for (int32_t value = step.from; value <= step.to; ++value) {
                EXPECT_EQ(value == -114 ? Compensated("FF") : Compensated(step.code), Compensation(value))
                    << value;
            }
        }
    }
}

// 255, 256 and 257 steps of 14 from -100: the low byte alone is sent.
TEST_F(ExposureTest, CompensationFarOutWrapsInTheCodeAndAtTheEndsOfTheWord) {
    EXPECT_EQ(Compensated("FF"), Compensation(3470));
    EXPECT_EQ(Compensated("00"), Compensation(3484));
    EXPECT_EQ(Compensated("01"), Compensation(3498));
    EXPECT_EQ(Compensated("00"), Compensation(-3684));
    EXPECT_EQ(Compensated("49"), Compensation(0x7FFFFFFF - 100)); // 2147483647 / 14 = 0x9249249
    EXPECT_EQ(Compensated("BE"), Compensation(0x7FFFFFFF));       // -2147483549 / 14 = -0x9249242
    EXPECT_EQ(Compensated("BE"), Compensation(INT32_MIN));        // -2147483548 / 14 = -0x9249242
}

TEST_F(ExposureTest, OnlyTheValueOfTheCompensationDecides) {
    RefuseCommand(1);
    EXPECT_EQ((Outcome{0, Commands({"3E 02", "4E 00 00 00 08"}), {kQueueRefused}}), Compensation(20));
    EXPECT_EQ(Nothing(), Compensation(20)) << "counts as sent";
    RefuseCommand(1, 2);
    EXPECT_EQ(
        (Outcome{1,
                 Commands({"3E 02", "4E 00 00 00 09"}),
                 {kQueueRefused, kQueueRefused, "ERROR SonySetExpComp: ViscaEnQueueCmd() fail exit\n"}}),
        Compensation(30));
    EXPECT_EQ(Nothing(), Compensation(20));
}

// --- metering

TEST_F(ExposureTest, EachMeteringModeHasItsCode) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        EXPECT_EQ(Sends({"59 03"}), Metering(0));
        EXPECT_EQ(Sends({"59 02"}), Metering(1));
        EXPECT_EQ(Sends({"59 04"}), Metering(2));
        for (uint32_t mode : {3U, 4U, 256U, 257U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Complains("SonySetAEMetering: Do not support Mode(" + Number(mode) + ")\n"),
                      Metering(mode));
        }
        EXPECT_EQ(Nothing(), Metering(2));
    }
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        EXPECT_EQ(Sends({"59 03"}), Metering(0));
        EXPECT_EQ(Sends({"59 02"}), Metering(1));
        for (uint32_t mode : {2U, 3U, 256U, 257U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Complains("SonySetAEMetering: Do not support mode(" + Number(mode) + ")\n"),
                      Metering(mode));
        }
        EXPECT_EQ(Nothing(), Metering(1));
    }
}

// First and last sum of two edges, in hundredths of the picture, for each position.
const struct {
    uint32_t from, to;
    const char *code;
} kSpotSteps[] = {{0, 12, "00"},      {13, 24, "01"},    {25, 37, "02"},   {38, 49, "03"},
                  {50, 62, "04"},     {63, 74, "05"},    {75, 87, "06"},   {88, 99, "07"},
                  {100, 112, "08"},   {113, 124, "09"},  {125, 137, "0A"}, {138, 149, "0B"},
                  {150, 162, "0C"},   {163, 174, "0D"},  {175, 187, "0E"}, {188, 3199, "0F"},
                  {3200, 3212, "00"}, {3213, 3224, "01"}};

TEST_F(ExposureTest, TheSpotIsWhereTheMiddleOfTheRectangleIs) {
    for (uint32_t type : {kKova, kSony1}) {
        Attach(type);
        for (const auto &step : kSpotSteps) {
            for (uint32_t sum = step.from; sum <= step.to; sum += sum < 200 || sum >= 3190 ? 1 : 97) {
                const uint32_t top = sum / 3;
                EXPECT_EQ(Sends({std::string("29 00 ") + step.code + " 00 00"}), Spot(top, 2, sum - top, 3))
                    << sum;
                EXPECT_EQ(Sends({std::string("29 00 00 00 ") + step.code}), Spot(5, sum, 7, 0)) << sum;
            }
        }
    }
}

TEST_F(ExposureTest, TheSpotIsAlwaysSentAndReckonedInThirtyTwoBits) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(Sends({"29 00 08 00 08"}), Spot(50, 50, 50, 50));
            EXPECT_EQ(Sends({"29 00 08 00 08"}), Spot(0, 0, 100, 100));
            EXPECT_EQ(Sends({"29 00 0F 00 0F"}), Spot(100, 100, 100, 100));
        }
        EXPECT_EQ(Sends({"29 00 00 00 00"}), Spot(3200, 1600, 0, 1600));
        EXPECT_EQ(Sends({"29 00 08 00 00"}), Spot(0x80000000, 0x20000000, 0x80000064, 0))
            << "sum, product wrap";
    }
    RefuseCommand(1);
    EXPECT_EQ(IsRefused({"29 00 04 00 04"}, "ERROR SonySetSpotAEPos: ViscaEnQueueCmd() fail exit\n"),
              Spot(25, 25, 25, 25));
}

TEST_F(ExposureTest, TheSpotLogsItsEntry) {
    Spot(1, 2, 3, 4);
    const Lines log = Host().Log();
    ASSERT_EQ(1U, log.size());
    EXPECT_EQ(0U, log[0].find("DEBUG SonySetSpotAEPos: FUN_ENTRY--param:ulChannelID[0]")) << log[0];
}

// --- current gain

TEST_F(ExposureTest, TheCurrentGainIsReadInThousandthsOfADecibel) {
    const struct {
        const char *reply;
        uint32_t gain;
    } rows[] = {{"90 50 00 00 00 00 FF", 0},
                {"90 50 00 00 00 01 FF", 0},
                {"90 50 00 00 00 02 FF", 2000},
                {"90 50 00 00 00 05 FF", 8000},
                {"90 50 00 00 00 0F FF", 28000},
                {"90 50 00 00 01 00 FF", 30000},
                {"90 50 00 01 00 00 FF", 510000},
                {"90 50 01 00 00 00 FF", 8190000},
                {"90 50 0F 0F 0F 0F FF", 131068000},
                {"90 50 00 00 00 13 FF", 36000}, // whole bytes are added: position 19
                {"90 50 10 00 00 00 FF", 131070000}};
    for (uint32_t type : {kSony1, kKova}) {
        Attach(type);
        for (const auto &row : rows) {
            uint32_t gain = 77;
            Host().AnswerInquiry(row.reply);
            EXPECT_EQ(Nothing(), Run([&] { return SonyGetCurrentGain(0, &gain); }));
            EXPECT_EQ(row.gain, gain) << row.reply;
            EXPECT_EQ(Lines{"81 09 04 4C FF"}, Host().Sent());
            EXPECT_EQ(Lines(), Host().Log()) << "not even its entry";
        }
    }
}

TEST_F(ExposureTest, TheCurrentGainMayBeAskedForWithoutAPlaceForIt) {
    Host().AnswerInquiry("90 50 00 00 00 05 FF");
    EXPECT_EQ(Nothing(), Run([] { return SonyGetCurrentGain(0, nullptr); }));
    EXPECT_EQ(Lines{"81 09 04 4C FF"}, Host().Sent());
}

TEST_F(ExposureTest, AGainThatCannotBeReadLeavesTheWordAsItWas) {
    uint32_t gain = 77;
    Host().AnswerInquiry("90 60 41 FF");
    EXPECT_EQ(Nothing().Fails().Logs("ERROR SonyGetCurrentGain: ViscaInquiry failed exit\n"),
              Run([&] { return SonyGetCurrentGain(0, &gain); }));
    EXPECT_EQ(77U, gain);
}

TEST_F(ExposureTest, ASilentCameraHasNoGain) {
    uint32_t gain = 77;
    EXPECT_EQ(Nothing().Logs("ERROR ViscaInquiry: Wait VISCA RSP msg tiemout!\n"),
              Run([&] { return SonyGetCurrentGain(0, &gain); }));
    EXPECT_EQ(0U, gain);
}

} // namespace
} // namespace unit
