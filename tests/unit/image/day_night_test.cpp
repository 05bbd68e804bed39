// Day and night, and the wide dynamic range.
#include "tests/unit/image/image_test.h"

namespace unit {
namespace {

class DayNightTest : public ImageTest {
  protected:
    static Outcome DayNight(uint32_t mode) {
        return Run([=] { return SonySetBlackWhiteMode(0, mode); });
    }
    static Outcome Contrast(uint32_t value) {
        return Run([=] { return SonySetVideoContrast(0, value); });
    }
    static Outcome Wdr(uint32_t mode) {
        return Run([=] { return SonyImgSetWDR(0, mode); });
    }
    static Outcome Level(uint32_t level) {
        return Run([=] { return SonyImgSetWDRLevel(0, level); });
    }
    static std::string Invalid(uint32_t mode) {
        return "ERROR SonySetBlackWhiteMode: ulBlackWhiteMode[" + std::to_string(mode) +
               "] invalid, fail exit\n";
    }
};

TEST_F(DayNightTest, TheCamerasOwnDecisionGoesOffBeforeOurs) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5, 0x02013000U}) {
        Attach(type);
        EXPECT_EQ(Sends({"51 02"}), DayNight(0));
        EXPECT_EQ(Sends({"51 03", "01 03"}), DayNight(1));
        EXPECT_EQ(Sends({"51 03", "01 02"}), DayNight(2));
        EXPECT_EQ(Nothing(), DayNight(2));
        EXPECT_EQ(Sends({"51 03", "01 03"}), DayNight(1));
        EXPECT_EQ(Sends({"51 02"}), DayNight(0));
        EXPECT_EQ(Nothing(), DayNight(0));
    }
}

TEST_F(DayNightTest, AnotherModeIsASuccessThatChangesNothing) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        Attach(type);
        DayNight(1);
        for (uint32_t mode : {3U, 4U, 256U, 257U, 0x80000001U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Nothing().Logs(Invalid(mode)), DayNight(mode));
        }
        EXPECT_EQ(Nothing(), DayNight(1));
    }
}

TEST_F(DayNightTest, ARefusedHalfLeavesTheOldModeAndIsSentAgainWhole) {
    const std::string usual = "ERROR SonySetBlackWhiteMode: ViscaEnQueueCmd() fail exit\n";
    const std::string automatic = "ERROR SonySetBlackWhiteMode: Switch to Auto ICR OFF fail exit\n";
    for (uint32_t type : {kKova, kSony1}) {
        for (uint32_t mode : {1U, 2U}) {
            const char *filter = mode == 1 ? "01 03" : "01 02";
            Attach(type);
            DayNight(0);
            RefuseCommand(1);
            EXPECT_EQ(IsRefused({"51 03"}, automatic), DayNight(mode));
            RefuseCommand(2);
            EXPECT_EQ(IsRefused({"51 03", filter}, usual), DayNight(mode));
            EXPECT_EQ(Nothing(), DayNight(0))
                << "what is remembered, though the camera's decision is off now";
            EXPECT_EQ(Sends({"51 03", filter}), DayNight(mode));
        }
        RefuseCommand(1);
        EXPECT_EQ(IsRefused({"51 02"}, usual), DayNight(0));
    }
}

TEST_F(DayNightTest, TheSameModeAgainEndsTheForceOnTheContrast) {
    Attach(kKova);
    Contrast(40);
    DayNight(1);
    DayNight(1);
    EXPECT_EQ(Nothing(), Contrast(40));
    DayNight(2);
    EXPECT_EQ(Sends({"A2 00 00 02 08"}), Contrast(40));
}

// --- the hold of the detection phase

TEST_F(DayNightTest, AHeldRequestIsKeptAndNotSent) {
    for (uint32_t type : {kKova, kSony1}) {
        for (uint32_t mode : {2U, 1U, 0U, 77U, 0xFFFFFFFFU}) {
            Attach(type);
            DayNight(2);
            gstImgDetectParam = {5, 6, 7, 8};
            Hold(1);
            EXPECT_EQ(Nothing(), DayNight(mode)) << "also one that is unchanged or unknown";
            EXPECT_EQ(static_cast<int32_t>(mode), gstImgDetectParam.lBlackWhiteMode);
            EXPECT_EQ(6, gstImgDetectParam.lWbMode);
            EXPECT_EQ(7, gstImgDetectParam.lBlueOffset);
            EXPECT_EQ(8, gstImgDetectParam.lRedOffset);
            Hold(0);
            EXPECT_EQ(Nothing(), DayNight(2)) << "still what is remembered";
        }
    }
}

TEST_F(DayNightTest, AHeldRequestForTheSameModeKeepsTheForceOnTheContrast) {
    Attach(kKova);
    Contrast(40);
    DayNight(2);
    Hold(1);
    DayNight(2);
    EXPECT_EQ(Sends({"A2 00 00 02 08"}), Contrast(40));
}

TEST_F(DayNightTest, TheHoldIsOnWhenItIsOneAndForNothingElse) {
    gstImgDetectParam.lBlackWhiteMode = 5;
    Hold(2);
    EXPECT_EQ(Sends({"51 03", "01 02"}), DayNight(2));
    EXPECT_EQ(5, gstImgDetectParam.lBlackWhiteMode);
    Hold(1);
    EXPECT_EQ(Sends({"3D 02"}), Wdr(1)) << "not held";
}

// --- wide dynamic range

TEST_F(DayNightTest, EachWideRangeModeHasItsCode) {
    const auto expect = [](uint32_t type, const char *on) {
        Attach(type);
        EXPECT_EQ(Sends({"3D 03"}), Wdr(0)) << std::hex << type;
        EXPECT_EQ(Sends({on}), Wdr(1)) << std::hex << type;
        EXPECT_EQ(Nothing(), Wdr(1));
        EXPECT_EQ(Sends({"3D 00"}), Wdr(2)) << std::hex << type;
        for (uint32_t mode : {3U, 4U, 256U, 257U, 0x80000000U, 0xFFFFFFFFU}) {
            EXPECT_EQ(Nothing().Logs("ERROR SonyImgSetWDR: ulWdr[" + std::to_string(mode) +
                                     "] invalid, fail exit\n"),
                      Wdr(mode));
        }
        EXPECT_EQ(Nothing(), Wdr(2));
    };
    for (uint32_t type : kKovaTypes) {
        expect(type, "3D 01");
    }
    for (uint32_t type : kBlockTypes) {
        expect(type, type == kSony5 ? "3D 06" : "3D 02");
    }
}

TEST_F(DayNightTest, AKovaModuleTakesTheLevelUpToNine) {
    for (uint32_t type : kKovaTypes) {
        Attach(type);
        for (uint32_t level = 0; level <= 9; ++level) {
            EXPECT_EQ(Sends({"2D 00 00 00 0" + std::to_string(level)}), Level(level));
        }
        Level(0);
        EXPECT_EQ(
            Sends({"2D 00 00 00 09"}).Logs("WARN SonyImgSetWDRLevel: ulWdrLevel[12] too big, change to 9\n"),
            Level(12));
        EXPECT_EQ(Nothing(), Level(9));
        for (uint32_t level : {10U, 256U, 0x10003U, 0xFFFFFFFFU}) {
            const std::string text = std::to_string(level);
            EXPECT_EQ(
                Nothing().Logs("WARN SonyImgSetWDRLevel: ulWdrLevel[" + text + "] too big, change to 9\n"),
                Level(level));
        }
        Wdr(1);
        EXPECT_EQ(Sends({"2D 00 00 00 09"}), Level(9)) << "the mode changed in between";
        Wdr(1);
        EXPECT_EQ(Nothing(), Level(9));
    }
}

TEST_F(DayNightTest, ASonyBlockHasNoLevelButIsToldOfOneThatIsTooBig) {
    for (uint32_t type : kBlockTypes) {
        Attach(type);
        EXPECT_EQ(Nothing(), Level(5));
        EXPECT_EQ(Nothing(), Level(9));
        EXPECT_EQ(Nothing().Logs("WARN SonyImgSetWDRLevel: ulWdrLevel[10] too big, change to 9\n"),
                  Level(10));
        Exchange(kKova);
        EXPECT_EQ(Sends({"2D 00 00 00 09"}), Level(9)) << "was not remembered";
    }
}

} // namespace
} // namespace unit
