// White balance, picture controls, noise reduction and defog.
#include "tests/unit/image/image_test.h"

namespace unit {
namespace {

std::string Number(int64_t value) {
    return std::to_string(value);
}

/** A byte as two nibbles: 0x1F -> "01 0F". */
std::string Nibbles(uint32_t byte) {
    static const char digits[] = "0123456789ABCDEF";
    return std::string("0") + digits[byte / 16] + " 0" + digits[byte % 16];
}

class ColourTest : public ImageTest {
  protected:
    static Outcome WbMode(int32_t mode) {
        return Run([=] { return SonySetVideoWBMode(0, mode); });
    }
    static Outcome ManualWb(int32_t red, int32_t blue) {
        return Run([=] { return SonySetManualWB(0, static_cast<int16_t>(red), static_cast<int16_t>(blue)); });
    }
    static Outcome Saturation(uint32_t value) {
        return Run([=] { return SonySetVideoSaturation(0, value); });
    }
    static Outcome Sharpness(uint32_t value) {
        return Run([=] { return SonySetVideoSharpness(0, value); });
    }
    static Outcome Denoise3D(uint32_t value) {
        return Run([=] { return SonySetDenoise3D(0, value); });
    }
    static Outcome Defog(uint32_t mode) {
        return Run([=] { return SonySetDefogMode(0, mode); });
    }
    static Outcome DefogSense(uint32_t sense) {
        return Run([=] { return SonySetDefogSense(0, sense); });
    }
    static std::string TooLarge(const std::string &function, const std::string &argument, uint32_t value) {
        return "WARN " + function + ": ---" + argument + "[" + Number(value) + "] out of 0 ~ 255!---\n";
    }
};

// --- white balance

const struct {
    int32_t mode;
    const char *payload;
} kWbModes[] = {{0, "35 00"},  {6, "35 01"},  {7, "35 02"},  {8, "35 08"}, {10, "35 05"},
                {11, "35 04"}, {12, "35 06"}, {13, "35 07"}, {14, "35 03"}};

TEST_F(ColourTest, EachWhiteBalanceModeHasItsCode) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5, 0x02013000U}) {
        Attach(type);
        for (const auto &row : kWbModes) {
            EXPECT_EQ(Sends({row.payload}), WbMode(row.mode)) << row.mode;
        }
    }
}

TEST_F(ColourTest, AnUnknownWhiteBalanceModeFails) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        WbMode(14);
        for (int32_t mode : {1, 2, 3, 4, 5, 9, 15, 16, 255, 256, 262, 65536, -1, -10, INT32_MIN, INT32_MAX}) {
            EXPECT_EQ(Nothing().Fails().Logs("ERROR SonySetVideoWBMode: unsupport AWBMode[" + Number(mode) +
                                             "], fail exit\n"),
                      WbMode(mode));
        }
        EXPECT_EQ(Nothing(), WbMode(14)) << "still the last one";
    }
}

// 15 is the number that stands for "unknown" here.
TEST_F(ColourTest, WhiteBalanceFifteenIsUnchangedRightAfterInitialisationOnly) {
    EXPECT_EQ(Nothing(), WbMode(15));
    EXPECT_EQ(1U, WbMode(-1).result) << "not an unknown value here";
    EXPECT_EQ(Sends({"35 00"}), WbMode(0)) << "so the first real request is sent";
    EXPECT_EQ(1U, WbMode(15).result);
}

Outcome Offsets(uint32_t red, uint32_t blue) {
    return Sends({"43 00 00 " + Nibbles(red), "44 00 00 " + Nibbles(blue)});
}

TEST_F(ColourTest, ManualOffsetsAreCountedFromMinus127RedFirstAndAlwaysSent) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        uint32_t code = 0;
        for (int32_t offset = -127; offset <= 127; ++offset, ++code) {
            EXPECT_EQ(Offsets(code, 0x7F), ManualWb(offset, 0)) << offset;
            EXPECT_EQ(Offsets(0x80, code), ManualWb(1, offset)) << offset;
            EXPECT_EQ(Offsets(0x80, code), ManualWb(1, offset)) << "again";
        }
    }
}

TEST_F(ColourTest, AnOffsetOutOfRangeBecomesTheGreatestOnWhicheverSide) {
    const std::string red = "WARN SonySetManualWB: sROffset[127] out of -127 ~ 127\n";
    const std::string blue = "WARN SonySetManualWB: sBOffset[127] out of -127 ~ 127\n";
    std::vector<int32_t> outside = {-32768, -32767, -256, -255, 255, 256, 32640, 32641, 32767};
    for (int32_t value = 128; value <= 1000; value += 31) {
        outside.insert(outside.end(), {value, -value});
    }
    for (int32_t offset : outside) {
        EXPECT_EQ(Offsets(0xFE, 0x7F).Logs(red), ManualWb(offset, 0)) << offset;
        EXPECT_EQ(Offsets(0x7F, 0xFE).Logs(blue), ManualWb(0, offset)) << offset;
    }
    EXPECT_EQ(Offsets(0xFE, 0xFE).Logs(red).Logs(blue), ManualWb(-128, 128));
}

/** Offsets as they are read back: blue, red. */
std::pair<int32_t, int32_t> ReadBack() {
    WhiteBalanceParam read{};
    EXPECT_EQ(0U, SONY_GetWhiteBalance(0, 0, &read));
    return {read.lBlueOffset, read.lRedOffset};
}

TEST_F(ColourTest, OffsetsAreRememberedAsLimitedOnceBothWereQueued) {
    EXPECT_EQ(std::make_pair(-1, -1), ReadBack()) << "unknown";
    ManualWb(5, -6);
    EXPECT_EQ(std::make_pair(-6, 5), ReadBack());
    RefuseCommand(1);
    EXPECT_EQ(IsRefused({"43 00 00 08 06"}, "ERROR SonySetManualWB: DRV_SetManualWB Rgain fail exit\n"),
              ManualWb(7, 8));
    EXPECT_EQ(std::make_pair(-6, 5), ReadBack());
    RefuseCommand(2);
    EXPECT_EQ(IsRefused({"43 00 00 08 06", "44 00 00 08 07"},
                        "ERROR SonySetManualWB: ViscaEnQueueCmd() fail exit\n"),
              ManualWb(7, 8));
    EXPECT_EQ(std::make_pair(-6, 5), ReadBack());
    ManualWb(-128, 500);
    EXPECT_EQ(std::make_pair(127, 127), ReadBack());
}

// --- picture controls

const struct {
    const char *function, *argument, *command;
    uint32_t (*set)(uint32_t channel, uint32_t value);
} kByteControls[] = {
    {"SonySetVideoBrightness", "ulBrightness", "A1", SonySetVideoBrightness},
    {"SonySetVideoContrast", "ulContrast", "A2", SonySetVideoContrast},
    {"SonySetDenoise2D", "ulDenoise2D", "54", SonySetDenoise2D},
};

TEST_F(ColourTest, BrightnessContrastAndPlaneNoiseReductionAreABytePerKovaModule) {
    for (const auto &control : kByteControls) {
        for (uint32_t type : kKovaTypes) {
            Attach(type);
            for (uint32_t value = 0; value <= 255; ++value) {
                EXPECT_EQ(Sends({std::string(control.command) + " 00 00 " + Nibbles(value)}),
                          Run([&] { return control.set(0, value); }));
            }
            for (uint32_t value : {256U, 257U, 512U, 1000U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
                EXPECT_EQ(Sends({std::string(control.command) + " 00 00 0F 0F"})
                              .Logs(TooLarge(control.function, control.argument, value)),
                          Run([&] { return control.set(0, value); }));
                EXPECT_EQ(Nothing(), Run([&] { return control.set(0, value); })) << "remembered as asked for";
            }
        }
    }
}

TEST_F(ColourTest, BrightnessContrastPlaneNoiseReductionAndDefogSenseAreForKovaModulesOnly) {
    for (uint32_t type : kBlockTypes) {
        for (const auto &control : kByteControls) {
            Attach(type);
            EXPECT_EQ(Nothing(), Run([&] { return control.set(0, 300); })) << "nothing said either";
            Exchange(kKova);
            EXPECT_EQ(1U, Run([&] { return control.set(0, 300); }).packets.size()) << "was not remembered";
        }
        Attach(type);
        EXPECT_EQ(Nothing(), DefogSense(5));
    }
}

TEST_F(ColourTest, AKovaModuleTakesTheLowByteOfTheSaturation) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        for (uint32_t value = 0; value <= 1000; ++value) {
            EXPECT_EQ(Sends({"49 00 00 " + Nibbles(value % 256)}), Saturation(value)) << value;
        }
        EXPECT_EQ(Sends({"49 00 00 00 00"}), Saturation(0x10000));
        EXPECT_EQ(Sends({"49 00 00 0F 0F"}), Saturation(0xFFFFFFFF));
    }
}

struct Range {
    uint32_t from, to, code;
};

const Range kColourGains[] = {{0, 31, 0},     {32, 63, 1},    {64, 95, 2},    {96, 127, 3},   {128, 140, 4},
                              {141, 153, 5},  {154, 166, 6},  {167, 178, 7},  {179, 191, 8},  {192, 204, 9},
                              {205, 216, 10}, {217, 229, 11}, {230, 242, 12}, {243, 254, 13}, {255, 267, 14}};

TEST_F(ColourTest, ASonyBlockTakesTheSaturationInFifteenSteps) {
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        for (const Range &range : kColourGains) {
            for (uint32_t value = range.from; value <= range.to; ++value) {
                EXPECT_EQ(Sends({"49 00 00 " + Nibbles(range.code)}), Saturation(value)) << value;
            }
        }
        for (uint32_t value = 268; value <= 1000; ++value) {
            EXPECT_EQ(
                Sends({"49 00 00 00 0E"}).Logs(TooLarge("SonySetVideoSaturation", "ulSaturation", value)),
                Saturation(value));
        }
    }
}

// Reckoned in 32 bits and cut to a byte before the limit: 10 * 3328 - 1280 = 32000 is 251 times 127, and with
// the 4 gives 255; one more gives 256.
TEST_F(ColourTest, ASonyBlockStepsThroughTheColoursAgainFarOutOfRange) {
    EXPECT_EQ(Sends({"49 00 00 00 0E"}).Logs(TooLarge("SonySetVideoSaturation", "ulSaturation", 3328)),
              Saturation(3328));
    EXPECT_EQ(Sends({"49 00 00 00 00"}), Saturation(3329));
    EXPECT_EQ(Sends({"49 00 00 00 01"}), Saturation(3342));
    EXPECT_EQ(Sends({"49 00 00 00 09"}), Saturation(0xFFFFFFFF)); // 4294966006 / 127 + 4 = 0x2040809
}

TEST_F(ColourTest, SharpnessGoesInSixteenStepsOfSixteen) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        uint32_t value = 0;
        for (uint32_t code = 0; code <= 15; ++code) {
            for (uint32_t step = 0; step < 16; ++step, ++value) {
                EXPECT_EQ(Sends({"42 00 00 " + Nibbles(code)}), Sharpness(value)) << value;
            }
        }
        for (; value <= 1000; ++value) {
            EXPECT_EQ(Sends({"42 00 00 00 0F"}).Logs(TooLarge("SonySetVideoSharpness", "ulSharpness", value)),
                      Sharpness(value));
        }
    }
}

TEST_F(ColourTest, SharpnessOutOfRangeIsSentAsItComesOut) {
    const Range rows[] = {{4095, 0, 15},       {4096, 0, 0},      {4111, 0, 0},  {4112, 0, 1},
                          {4335, 0, 14},       {4336, 0, 15},     {65536, 0, 0}, {65536 + 128, 0, 8},
                          {0xFFFFFFFF, 0, 15}, {0xFFFFF000, 0, 0}};
    Sharpness(0);
    for (const Range &row : rows) {
        EXPECT_EQ(Sends({"42 00 00 " + Nibbles(row.code)})
                      .Logs(TooLarge("SonySetVideoSharpness", "ulSharpness", row.from)),
                  Sharpness(row.from));
        EXPECT_EQ(Nothing(), Sharpness(row.from));
    }
}

// --- noise reduction in time

const Range kNoiseLevels[] = {{0, 0, 0},     {1, 51, 1},    {52, 102, 2},
                              {103, 153, 3}, {154, 204, 4}, {205, 255, 5}};

TEST_F(ColourTest, NoiseReductionIsALevelForASonyBlockAndAByteForAKovaModule) {
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        for (const Range &range : kNoiseLevels) {
            for (uint32_t value = range.from; value <= range.to; ++value) {
                EXPECT_EQ(Sends({"53 " + Nibbles(range.code).substr(3)}), Denoise3D(value)) << value;
            }
        }
    }
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        for (uint32_t value = 0; value <= 255; ++value) {
            EXPECT_EQ(Sends({"55 00 00 " + Nibbles(value)}), Denoise3D(value)) << value;
        }
    }
}

TEST_F(ColourTest, NoiseReductionIsLimitedBeforeItIsCompared) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        const Outcome full = Sends({type == kKova ? "55 00 00 0F 0F" : "53 05"});
        EXPECT_EQ(full.Logs("WARN SonySetDenoise3D: ulDenoise3D[300] out of 0 ~ 255\n"), Denoise3D(300));
        EXPECT_EQ(Nothing(), Denoise3D(255)) << "255 is what was sent";
        for (uint32_t value : {256U, 1000U, 0x10000U, 0xFFFFFFFFU}) {
            EXPECT_EQ(
                Nothing().Logs("WARN SonySetDenoise3D: ulDenoise3D[" + Number(value) + "] out of 0 ~ 255\n"),
                Denoise3D(value));
        }
    }
}

// --- defog

TEST_F(ColourTest, AKovaModuleTakesDefogAndItsSenseAsRawBytesEachTime) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(Sends({"C8 00"}), Defog(0));
            EXPECT_EQ(Sends({"C8 05"}), Defog(5));
            EXPECT_EQ(Sends({"C8 AB"}), Defog(0xAB));
            EXPECT_EQ(Sends({"C8 FF"}), Defog(kUnset));
            EXPECT_EQ(Sends({"C8 01"}), Defog(0x101));
            EXPECT_EQ(Sends({"C9 00"}), DefogSense(0));
            EXPECT_EQ(Sends({"C9 5A"}), DefogSense(0x5A));
            EXPECT_EQ(Sends({"C9 02"}), DefogSense(0x302));
        }
    }
}

TEST_F(ColourTest, TwoSonyBlocksHaveADefogOfTheirOwn) {
    Attach(kSony3);
    for (int round = 0; round < 2; ++round) {
        for (uint32_t mode : {0U, 256U, 0xFFFFFF00U}) {
            EXPECT_EQ(Sends({"37 03 00"}), Defog(mode));
        }
        for (uint32_t mode : {1U, 2U, 5U, 255U, 257U, kUnset}) {
            EXPECT_EQ(Sends({"37 02 00"}), Defog(mode));
        }
    }
    Attach(kSony5);
    for (int round = 0; round < 2; ++round) {
        for (uint32_t mode : {0U, 256U}) {
            EXPECT_EQ(Sends({"37 03 00"}), Defog(mode));
        }
        const char *const levels[] = {"01", "01", "02", "02", "03", "03", "03"};
        for (uint32_t mode = 1; mode <= 7; ++mode) {
            EXPECT_EQ(Sends({std::string("37 02 ") + levels[mode - 1]}), Defog(mode));
            EXPECT_EQ(Sends({std::string("37 02 ") + levels[mode - 1]}), Defog(mode + 0x100));
        }
        EXPECT_EQ(Sends({"37 02 03"}), Defog(255));
    }
}

TEST_F(ColourTest, OtherBlocksHaveNoDefog) {
    for (uint32_t type : {kSony1, kSony4, 0x02000000U, 0x02000002U, 0x02000006U, 0x02011FFFU, 0x02013000U}) {
        Attach(type);
        EXPECT_EQ(Nothing().Logs("WARN SonySetDefogMode: not support defog, do nothing!\n"), Defog(1));
        EXPECT_EQ(Nothing().Logs("WARN SonySetDefogMode: not support defog, do nothing!\n"), Defog(0));
    }
}

TEST_F(ColourTest, ARefusedDefogFails) {
    const std::string mode = "ERROR SonySetDefogMode: ViscaEnQueueCmd() fail exit\n";
    const std::string sense = "ERROR SonySetDefogSense: ViscaEnQueueCmd() fail exit\n";
    Attach(kKova);
    RefuseCommand(1, 2);
    EXPECT_EQ(IsRefused({"C8 01"}, mode), Defog(1));
    EXPECT_EQ(IsRefused({"C9 01"}, sense), DefogSense(1));
    for (uint32_t type : {kSony3, kSony5}) {
        Attach(type);
        RefuseCommand(1, 2);
        EXPECT_EQ(IsRefused({"37 03 00"}, mode), Defog(0));
        EXPECT_EQ(IsRefused({type == kSony3 ? "37 02 00" : "37 02 02"}, mode), Defog(4));
    }
}

} // namespace
} // namespace unit
