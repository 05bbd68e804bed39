// White balance and picture controls as a whole, defog, day/night and what is read back.
#include "tests/unit/image/image_test.h"
#include "tests/unit/image/profiles.h"

#include <cstring>

namespace unit {
namespace {

class PictureProfileTest : public ImageTest {
  protected:
    static Outcome White(const WhiteBalanceParam &white, uint32_t image_type = 0) {
        return Run([&] { return SONY_SetWhiteBalance(0, image_type, &white); });
    }
    static Outcome Enhance(const ImageEnhanceParam &enhance, uint32_t image_type = 0) {
        return Run([&] { return SONY_SetImageEnhance(0, image_type, &enhance); });
    }
    /** Mode untouched, blue, red. */
    static std::vector<int64_t> ReadBack() {
        WhiteBalanceParam read = {123, 0, 0};
        EXPECT_EQ(0U, SONY_GetWhiteBalance(0, 0, &read));
        return {read.ulWbMode, read.lBlueOffset, read.lRedOffset};
    }
    using Offsets = std::vector<int64_t>;
};

constexpr uint32_t kFamilies[] = {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5};

// --- white balance

TEST_F(PictureProfileTest, EachWhiteBalanceOfTheHostIsAModeOfTheCamera) {
    const struct {
        uint32_t mode;
        const char *payload;
    } rows[] = {{0, "35 04"}, {3, "35 04"}, {2, "35 00"}, {6, "35 07"}};
    for (uint32_t type : kFamilies) {
        for (const auto &row : rows) {
            Attach(type);
            EXPECT_EQ(Sends({row.payload}), White({row.mode, 5, -6})) << row.mode;
            EXPECT_EQ(Nothing(), White({row.mode, 7, 8})) << "offsets are not for the camera";
            EXPECT_EQ((Offsets{123, 7, 8}), ReadBack());
        }
    }
    White({3, 0, 0});
    EXPECT_EQ(Nothing(), White({0, 0, 0})) << "0 and 3 are the same";
}

TEST_F(PictureProfileTest, ManualWhiteBalanceSendsItsOffsetsEachTimeRedFirst) {
    for (uint32_t type : kFamilies) {
        Attach(type);
        EXPECT_EQ(Sends({"35 05", "43 00 00 07 09", "44 00 00 08 04"}), White({1, 5, -6}));
        EXPECT_EQ(Sends({"43 00 00 07 09", "44 00 00 08 04"}), White({1, 5, -6}));
        EXPECT_EQ((Offsets{123, 5, -6}), ReadBack());
    }
}

TEST_F(PictureProfileTest, AnUnknownWhiteBalanceIsCorrectedToAutoTracing) {
    for (uint32_t type : kFamilies) {
        for (uint32_t mode : {4U, 5U, 7U, 10U, 11U, 13U, 256U, 257U, 0xFFFFFFFFU}) {
            Attach(type);
            const std::string line = "WARN SONY_SetWhiteBalance: Invalid WhiteBalance Mode(" +
                                     std::to_string(mode) + "), correct to ATW. \n";
            EXPECT_EQ(Sends({"35 04"}).Logs(line), White({mode, 3, 4}));
            EXPECT_EQ(Nothing().Logs(line), White({mode, 3, 4}));
            EXPECT_EQ((Offsets{123, 3, 4}), ReadBack());
        }
    }
}

// Only their low 16 bits count, with their sign; they are limited in the manual mode alone.
TEST_F(PictureProfileTest, OffsetsAreReadBackAsOfferedOrAsLimited) {
    White({0, 200, -300});
    EXPECT_EQ((Offsets{123, 200, -300}), ReadBack());
    White({0, 0x12348001, 0x00017FFF});
    EXPECT_EQ((Offsets{123, -32767, 32767}), ReadBack());
    EXPECT_EQ(Sends({"35 05", "43 00 00 08 04", "44 00 00 07 0E"}), White({1, 0x7FFFFFFF, 0x00010005}))
        << "5 and -1";
    EXPECT_EQ((Offsets{123, -1, 5}), ReadBack());
    EXPECT_EQ(Sends({"43 00 00 0F 0E", "44 00 00 0F 0E"})
                  .Logs("WARN SonySetManualWB: sROffset[127] out of -127 ~ 127\n")
                  .Logs("WARN SonySetManualWB: sBOffset[127] out of -127 ~ 127\n"),
              White({1, 200, -128}));
    EXPECT_EQ((Offsets{123, 127, 127}), ReadBack());
}

TEST_F(PictureProfileTest, ARefusedWhiteBalanceLeavesModeAndOffsets) {
    const struct {
        uint32_t mode;
        const char *payload, *number;
    } rows[] = {
        {0, "35 04", "11"}, {3, "35 04", "11"}, {2, "35 00", "0"}, {6, "35 07", "13"}, {1, "35 05", "10"}};
    for (uint32_t type : {kKova, kSony1}) {
        for (const auto &row : rows) {
            Attach(type);
            RefuseCommand(1);
            EXPECT_EQ(IsRefused({row.payload}, "ERROR SonySetVideoWBMode: ViscaEnQueueCmd() fail exit\n")
                          .Logs(std::string("ERROR SONY_SetWhiteBalance: SonySetVideoWBMode(0, ") +
                                row.number + ") fail exit\n"),
                      White({row.mode, 9, 9}));
            EXPECT_EQ((Offsets{123, -1, -1}), ReadBack());
            EXPECT_EQ(Command(row.payload), White({row.mode, 9, 9}).packets.at(0)) << "sent again";
        }
    }
}

TEST_F(PictureProfileTest, RefusedOffsetsLeaveTheOldOnesButTheModeIsSet) {
    const std::string profile = "ERROR SONY_SetWhiteBalance: SonySetManualWB(0, -6, 5) fail exit\n";
    for (uint32_t type : {kKova, kSony1}) {
        Attach(type);
        White({2, 1, 2});
        RefuseCommand(2);
        EXPECT_EQ(
            IsRefused({"35 05", "43 00 00 07 09"}, "ERROR SonySetManualWB: DRV_SetManualWB Rgain fail exit\n")
                .Logs(profile),
            White({1, 5, -6}));
        EXPECT_EQ((Offsets{123, 1, 2}), ReadBack());
        RefuseCommand(2);
        EXPECT_EQ(IsRefused({"43 00 00 07 09", "44 00 00 08 04"},
                            "ERROR SonySetManualWB: ViscaEnQueueCmd() fail exit\n")
                      .Logs(profile),
                  White({1, 5, -6}))
            << "the mode is set already";
        EXPECT_EQ((Offsets{123, 1, 2}), ReadBack());
    }
}

TEST_F(PictureProfileTest, AHeldWhiteBalanceIsKeptWholeAndNotSent) {
    for (uint32_t type : {kKova, kSony1}) {
        for (uint32_t mode : {0U, 1U, 5U, 0xFFFFFFFEU}) {
            Attach(type);
            gstImgDetectParam = {9, 9, 9, 9};
            Hold(1);
            EXPECT_EQ(Nothing(), White({mode, 0x12345678, -300}));
            EXPECT_EQ(9, gstImgDetectParam.lBlackWhiteMode);
            EXPECT_EQ(static_cast<int32_t>(mode), gstImgDetectParam.lWbMode);
            EXPECT_EQ(0x12345678, gstImgDetectParam.lBlueOffset);
            EXPECT_EQ(-300, gstImgDetectParam.lRedOffset);
            EXPECT_EQ((Offsets{123, -1, -1}), ReadBack());
            Hold(0);
            EXPECT_EQ(Sends({"35 04"}), White({0, 1, 1}));
        }
    }
}

TEST_F(PictureProfileTest, AnotherImageTypeIsRefusedAlsoWhileHeld) {
    for (uint32_t held : {0U, 1U}) {
        Attach(kKova);
        Hold(held);
        for (uint32_t image_type : {1U, 0xFFFFFFFFU}) {
            const std::string number = std::to_string(image_type);
            EXPECT_EQ(Nothing().Fails().Logs("ERROR SONY_SetWhiteBalance: DRV_SetWhiteBalance ulImageType=" +
                                             number + " not support!\n"),
                      White({2, 1, 1}, image_type));
            EXPECT_EQ(Nothing().Fails().Logs("ERROR SONY_SetImageEnhance: DRV_SetImageEnhance ulImageType=" +
                                             number + " not support!\n"),
                      Enhance(Enhancement(), image_type));
        }
        EXPECT_EQ(-1, gstImgDetectParam.lWbMode);
        EXPECT_EQ((Offsets{123, -1, -1}), ReadBack());
    }
}

TEST_F(PictureProfileTest, ReadingTheWhiteBalanceLogsItsEntryAndTakesAnyImageType) {
    WhiteBalanceParam read = {4, 0, 0};
    char line[160];
    snprintf(line, sizeof line,
             "DEBUG SONY_GetWhiteBalance: FUN_ENTRY--param:ulChannelID[3] ulImageType[7] pstWb[%p]\n",
             static_cast<void *>(&read));
    Host().Forget();
    EXPECT_EQ(0U, SONY_GetWhiteBalance(3, 7, &read));
    EXPECT_EQ(Lines{line}, Host().Log());
    EXPECT_EQ(4U, read.ulWbMode);
    EXPECT_EQ(-1, read.lBlueOffset);
}

// --- picture controls

const char *const kUsual = "ViscaEnQueueCmd() fail exit\n";

struct Control {
    const char *kova, *block, *function, *profile_line;
};

const Control kControls[] = {
    {"A1 00 00 00 01", nullptr, "SonySetVideoBrightness", "SonySetVideoBrightness(0, 1) fail exit\n"},
    {"A2 00 00 01 02", nullptr, "SonySetVideoContrast", "SonySetVideoContrast(0, 18) fail exit\n"},
    {"49 00 00 08 02", "49 00 00 00 04", "SonySetVideoSaturation", "SonySetVideoSaturation(130) fail exit\n"},
    {"42 00 00 00 03", "42 00 00 00 03", "SonySetVideoSharpness", "SonySetVideoSharpness(0, 50) fail exit\n"},
    {"54 00 00 0F 0E", nullptr, "SonySetDenoise2D", "SonySetDenoise2D(0, 254) fail exit\n"},
    {"55 00 00 03 04", "53 02", "SonySetDenoise3D", "SonySetDenoise3D(0, 52) fail exit\n"},
};

bool IsKovaModule(uint32_t type) {
    return (type >> 12) == 0x02012;
}

std::vector<std::pair<std::string, const Control *>> Steps(uint32_t type) {
    std::vector<std::pair<std::string, const Control *>> steps;
    for (const Control &control : kControls) {
        const char *payload = IsKovaModule(type) ? control.kova : control.block;
        if (payload != nullptr) {
            steps.emplace_back(payload, &control);
        }
    }
    return steps;
}

Lines PayloadsFrom(uint32_t type, size_t first, size_t last) {
    Lines payloads;
    const auto steps = Steps(type);
    for (size_t i = first; i < last && i < steps.size(); ++i) {
        payloads.push_back(steps[i].first);
    }
    return payloads;
}

TEST_F(PictureProfileTest, PictureControlsGoOutInTheirOrderOnce) {
    for (uint32_t type : kFamilies) {
        Attach(type);
        EXPECT_EQ(Sends(PayloadsFrom(type, 0, 6)), Enhance(Enhancement())) << std::hex << type;
        EXPECT_EQ(Nothing(), Enhance(Enhancement()));
        ImageEnhanceParam changed = Enhancement();
        changed.ulReserved3 = changed.ulReserved4 = 0;
        changed.ulSharpness = 255;
        EXPECT_EQ(Sends({"42 00 00 00 0F"}), Enhance(changed));
    }
}

TEST_F(PictureProfileTest, ARefusedPictureControlStopsThereAndTheNextTimeItGoesOn) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        const auto steps = Steps(type);
        for (size_t at = 0; at < steps.size(); ++at) {
            Attach(type);
            const Control &control = *steps[at].second;
            RefuseCommand(static_cast<unsigned>(at + 1));
            EXPECT_EQ(IsRefused(PayloadsFrom(type, 0, at + 1),
                                std::string("ERROR ") + control.function + ": " + kUsual)
                          .Logs(std::string("ERROR SONY_SetImageEnhance: ") + control.profile_line),
                      Enhance(Enhancement()));
            EXPECT_EQ(Sends(PayloadsFrom(type, at, 6)), Enhance(Enhancement()));
        }
    }
}

TEST_F(PictureProfileTest, LimitedPictureControlsAreNoFailure) {
    Attach(kKova);
    const Outcome outcome = Enhance({256, 257, 258, 0, 0, 259, 260, 261});
    EXPECT_EQ(0U, outcome.result);
    EXPECT_EQ(Commands({"A1 00 00 0F 0F", "A2 00 00 0F 0F", "49 00 00 00 02", "42 00 00 00 0F",
                        "54 00 00 0F 0F", "55 00 00 0F 0F"}),
              outcome.packets);
    EXPECT_EQ(5U, outcome.log.size()) << "the saturation says nothing";
    EXPECT_EQ(Lines(), Enhance({256, 257, 258, 0, 0, 259, 260, 261}).packets);
}

TEST_F(PictureProfileTest, ADayNightChangeForcesTheContrastOfEveryProfileUntilItIsConfirmed) {
    Attach(kKova);
    Enhance(Enhancement());
    SonySetBlackWhiteMode(0, 2);
    EXPECT_EQ(Sends({"A2 00 00 01 02"}), Enhance(Enhancement()));
    EXPECT_EQ(Sends({"A2 00 00 01 02"}), Enhance(Enhancement()));
    SonySetBlackWhiteMode(0, 2);
    EXPECT_EQ(Nothing(), Enhance(Enhancement()));
}

// --- defog

DrvMsgInfo DefogMessage(uint32_t command, uint32_t mode, uint32_t sense) {
    DrvMsgInfo message{};
    message.ulMsgType = 1;
    message.ulMsgCmd = command;
    memcpy(message.aucMsgData, &mode, sizeof mode);
    memcpy(message.aucMsgData + 4, &sense, sizeof sense);
    return message;
}

Outcome VarFn(uint32_t command, uint32_t mode, uint32_t sense) {
    DrvMsgInfo message = DefogMessage(command, mode, sense);
    return ImageTest::Run([&] { return SONY_SetImageVarFn(9, 9, &message); });
}

TEST_F(PictureProfileTest, VariableFunctionThirtyIsDefogThenItsSense) {
    Attach(kKova);
    EXPECT_EQ(Sends({"C8 05", "C9 A7"}), VarFn(30, 5, 0xA7));
    EXPECT_EQ(Sends({"C8 05", "C9 A7"}), VarFn(30, 5, 0xA7)) << "always";
    EXPECT_EQ(Sends({"C8 02", "C9 01"}), VarFn(30, 0x102, 0x301));
    Attach(kSony5);
    EXPECT_EQ(Sends({"37 02 02"}), VarFn(30, 3, 0xA7));
    EXPECT_EQ(Sends({"37 03 00"}), VarFn(30, 256, 1)) << "the low byte is 0";
    Attach(kSony3);
    EXPECT_EQ(Sends({"37 02 00"}), VarFn(30, 3, 0xA7));
    for (uint32_t type : {kSony1, kSony4}) {
        Attach(type);
        EXPECT_EQ(Nothing().Logs("WARN SonySetDefogMode: not support defog, do nothing!\n"), VarFn(30, 3, 1));
    }
}

TEST_F(PictureProfileTest, OtherVariableFunctionsDoNothing) {
    for (uint32_t type : kFamilies) {
        Attach(type);
        for (uint32_t command : {0U, 2U, 29U, 31U, 34U, 0x11EU, 0xFFFFFFFFU}) {
            EXPECT_EQ(Nothing(), VarFn(command, 1, 1));
        }
    }
}

TEST_F(PictureProfileTest, ARefusedDefogStopsThere) {
    Attach(kKova);
    RefuseCommand(1);
    EXPECT_EQ(IsRefused({"C8 05"}, "ERROR SonySetDefogMode: ViscaEnQueueCmd() fail exit\n")
                  .Logs("ERROR SONY_SetImageVarFn: SonySetDefogMode(0, 5) fail exit\n"),
              VarFn(30, 5, 7));
    RefuseCommand(2);
    EXPECT_EQ(IsRefused({"C8 05", "C9 07"}, "ERROR SonySetDefogSense: ViscaEnQueueCmd() fail exit\n")
                  .Logs("ERROR SONY_SetImageVarFn: SonySetDefogSense(0, 263) fail exit\n"),
              VarFn(30, 5, 263));
    Attach(kSony3);
    RefuseCommand(1);
    EXPECT_EQ(IsRefused({"37 02 00"}, "ERROR SonySetDefogMode: ViscaEnQueueCmd() fail exit\n")
                  .Logs("ERROR SONY_SetImageVarFn: SonySetDefogMode(0, 5) fail exit\n"),
              VarFn(30, 5, 7));
}

// --- day and night

TEST_F(PictureProfileTest, DayNightLogsItsEntryTwiceAndGivesTheResultOn) {
    for (uint32_t type : {kKova, kSony1}) {
        Attach(type);
        EXPECT_EQ(Sends({"51 03", "01 02"}), Run([] { return SONY_SetBlackWhiteMode(4, 2); }));
        const Lines log = Host().Log();
        const std::string entry = "FUN_ENTRY--param:ulChannelID[4] ulBlackWhiteMode[2]\n";
        EXPECT_EQ((Lines{"DEBUG SONY_SetBlackWhiteMode: " + entry, "DEBUG SonySetBlackWhiteMode: " + entry}),
                  log);
        RefuseCommand(1);
        EXPECT_EQ(1U, SONY_SetBlackWhiteMode(0, 1));
        EXPECT_EQ(0U, SONY_SetBlackWhiteMode(0, 3));
    }
}

TEST_F(PictureProfileTest, DayNightIsReadBackUnlessTheCameraDecides) {
    const auto unreadable = [](const char *number) {
        uint32_t mode = 77;
        const std::string line =
            std::string("ERROR SONY_GetBlackWhiteMode: BlackWhiteMode[") + number + "] is error!\n";
        EXPECT_EQ(Nothing().Fails().Logs(line), Run([&] { return SONY_GetBlackWhiteMode(&mode); }));
        EXPECT_EQ(77U, mode);
    };
    unreadable("4294967295");
    for (uint32_t mode : {1U, 2U}) {
        uint32_t read = 77;
        SONY_SetBlackWhiteMode(0, mode);
        EXPECT_EQ(Nothing(), Run([&] { return SONY_GetBlackWhiteMode(&read); }));
        EXPECT_EQ(mode, read);
    }
    SONY_SetBlackWhiteMode(0, 0);
    unreadable("0");
    EXPECT_EQ(Nothing().Fails().Logs("ERROR SONY_GetBlackWhiteMode: pulBlackWhiteMode == NULL\n"),
              Run([] { return SONY_GetBlackWhiteMode(nullptr); }));
}

} // namespace
} // namespace unit
