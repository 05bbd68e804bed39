// The video norm: what it is on each module, when the camera is left alone, and the order of a change.
#include "tests/unit/kova/behaviour_test.h"

#include <cstdio>

namespace unit {
namespace {

constexpr uint32_t kSony1 = 0x02000001, kSony3 = 0x02000003, kSony4 = 0x02000004, kSony5 = 0x02000005;

constexpr uint32_t kGroupA[] = {kSony1,     kSony3,     kSony5,     0x02012000, 0x02012001,
                                0x02012002, 0x02012005, 0x02012A00, 0x02012A01, 0x02012A02};
constexpr uint32_t kGen2[] = {0x02012A00, 0x02012A01, 0x02012A02};
constexpr uint32_t kGroupB[] = {kSony4, 0x02012100};
constexpr uint32_t kPalOnly = 0x02012200;
/** Others of the family, and neighbours. */
constexpr uint32_t kWithoutNorm[] = {0x02012003, 0x02012004, 0x02012006, 0x02012101, 0x02012201,
                                     0x02012A03, 0x02012AFF, 0x020120FF, 0x02000000, 0x02000002,
                                     0x02000006, 0x01000001, 0xFFFFFFFF};

constexpr uint32_t kAnyHeights[] = {1080, 720, 576, 959, 961, 0, 0xFFFFFFFF};
constexpr uint32_t kWidths[] = {1920, 1280, 720, 0, 0xFFFFFFFF};
constexpr uint32_t kOtherRates[] = {0, 1, 24, 26, 29, 31, 49, 51, 59, 61, 256 + 25, 256 + 30, 0xFFFFFFFF};

std::string Reply(unsigned value) {
    char text[32];
    snprintf(text, sizeof text, "90 50 %02X %02X FF", value >> 4, value & 0x0F);
    return text;
}

std::string Write(const char *number, unsigned value) {
    char text[32];
    snprintf(text, sizeof text, "24 %s %02X %02X", number, value >> 4, value & 0x0F);
    return text;
}

std::string Said(const std::string &line) {
    return "ERROR SONY_SetVin: " + line;
}

struct Registers {
    unsigned monitor, output, sync;
};
constexpr unsigned kWrong = 0x2A; // of no norm, no output and no sync mode

bool HasSyncMode(uint32_t type) {
    return type == kSony1 || type == kSony4;
}
bool IsSony(uint32_t type) {
    return type == kSony1 || type == kSony3 || type == kSony4 || type == kSony5;
}

Step ReadRegister(const std::string &number, const std::string &name, unsigned value) {
    return Ask("24 " + number, Reply(value),
               {"ERROR SonyGetRegisterVal: ViscaInquiry failed exit",
                Said("SonyGetRegisterVal(VISCA_REGISTER_NUM_" + number + "_" + name + ") fail exit")});
}

Steps Reading(uint32_t type, const Registers &now, unsigned wanted) {
    const auto change = [](const char *what, unsigned from, unsigned to) {
        return from == to ? Steps{}
                          : Steps{Says(std::string("INFO SONY_SetVin: Need change ") + what + " from " +
                                       std::to_string(from) + " to " + std::to_string(to))};
    };
    Steps steps = Steps{ReadRegister("72", "MONITOR_MODE", now.monitor)} +
                  change("norm", now.monitor, wanted) +
                  Steps{ReadRegister("73", "OUTPUT_ENABLE", now.output)} + change("Output", now.output, 3);
    if (HasSyncMode(type)) {
        steps = steps + Steps{ReadRegister("56", "SYNC_MODE", now.sync)} + change("sync mode", now.sync, 1);
    }
    return steps;
}

Steps Writing(uint32_t type, const Registers &now, unsigned wanted) {
    const auto write = [](const char *number, unsigned numeral, unsigned from, unsigned to) {
        return from == to
                   ? Steps{}
                   : Steps{Put(Write(number, to), {Said("SonySetRegisterVal(" + std::to_string(numeral) +
                                                        ", " + std::to_string(to) + ") fail exit")})};
    };
    Steps steps = write("72", 114, now.monitor, wanted) + write("73", 115, now.output, 3);
    return HasSyncMode(type) ? steps + write("56", 86, now.sync, 1) : steps;
}

Steps BringingBack(uint32_t type) {
    const Lines not_on = {"ERROR SonyWaitPowerOn: ViscaInquiry failed exit",
                          Said("SonyWaitPowerOn fail exit")};
    Steps steps = {Put("00 02", {Said("SonySetPower(BOOL_TRUE) fail exit")}),
                   Pause(100),
                   Ask("00", "90 50 03 FF", not_on),
                   Pause(100),
                   Ask("00", "90 50 03 FF", not_on),
                   Pause(100),
                   Ask("00", "90 50 02 FF", not_on),
                   Says("INFO SonyWaitPowerOn: Now Power On")};
    if (IsSony(type)) {
        steps.push_back(Put("06 03", {"ERROR SonyImgEnableDzoom: ViscaEnQueueCmd() fail exit",
                                      "ERROR SonyRestoreCamEnv: SonyImgEnableDzoom() fail",
                                      Said("SonyRestoreCamEnv fail exit")}));
    }
    return steps;
}

Steps Change(uint32_t type, const Registers &now, unsigned wanted) {
    const Steps steps = Reading(type, now, wanted), writing = Writing(type, now, wanted);
    if (writing.empty()) {
        return steps + Steps{Says("INFO SONY_SetVin: No Need Change Norm or Output or SyncMode")};
    }
    if (type == kSony3 || type == kSony5) {
        return steps + writing + Steps{Put("19 03", {Said("SonyResetCam() fail exit")})} + BringingBack(type);
    }
    return steps + Steps{Put("00 03", {Said("SonySetPower(BOOL_FALSE) fail exit")})} + writing +
           BringingBack(type);
}

class NormTest : public KovaTest {
  protected:
    NormTest() { UseUpDetection(); }

    static uint32_t Set(const VideoNormParam &norm) { return SONY_SetVin(&norm); }
    /** All three registers right or wrong, in every combination. */
    static void Changes(uint32_t type, const VideoNormParam &norm, unsigned wanted) {
        for (unsigned wrong = 0; wrong < 8; ++wrong) {
            const Registers now = {(wrong & 1) != 0 ? kWrong : wanted, (wrong & 2) != 0 ? kWrong : 3,
                                   (wrong & 4) != 0 ? kWrong : 1};
            SCOPED_TRACE("type " + std::to_string(type) + ", wrong " + std::to_string(wrong));
            Follows(
                Change(type, now, wanted), [&] { return Set(norm); }, [&] { Attach(type); });
        }
    }
    /** The norm is this value of register 0x72: a camera that has it is left alone. */
    static void IsValue(uint32_t type, const VideoNormParam &norm, unsigned wanted) {
        Attach(type);
        Answers({Reply(wanted), Reply(3), Reply(1)});
        EXPECT_EQ(0U, Set(norm));
        EXPECT_EQ(Lines(), Host().Commands())
            << norm.ulWidth << " " << norm.ulHeight << " " << norm.ulFrameRate << " on " << type;
    }
    static void IsRefused(uint32_t type, const VideoNormParam &norm, const std::string &line) {
        Attach(type);
        Answers({Reply(6), Reply(3), Reply(1)});
        EXPECT_EQ(1U, Set(norm));
        EXPECT_EQ((Lines{"send 81 09 04 24 72 FF", Said(line)}), Story());
    }
    static void IsNoNorm(uint32_t type, const VideoNormParam &norm) {
        IsRefused(type, norm,
                  "Not Supported norm[" + std::to_string(norm.ulWidth) + ", " +
                      std::to_string(norm.ulHeight) + ", " + std::to_string(norm.ulFrameRate) +
                      "], fail exit");
    }
};

TEST_F(NormTest, NoRecordIsRefused) {
    EXPECT_EQ(1U, SONY_SetVin(nullptr));
    EXPECT_THAT(Host().Story({Call::Log, Call::Send, Call::ModuleType}),
                ElementsAre("ERROR SONY_SetVin: pstVideoNorm == NULL\n"));
}

TEST_F(NormTest, TheEntryTellsTheNorm) {
    Set({1920, 1080, 4294967295});
    EXPECT_EQ("DEBUG SONY_SetVin: FUN_ENTRY--param:pstVideoNorm[1920, 1080, 4294967295]",
              LogOf("SONY_SetVin").front());
}

TEST_F(NormTest, GroupAHasItsRatesAtAnySize) {
    for (uint32_t type : kGroupA) {
        for (uint32_t height : {1080U, 960U, 576U, 0U, 0xFFFFFFFFU}) {
            IsValue(type, {1920, height, 30}, 0x06);
            IsValue(type, {height, 720, 25}, 0x08);
        }
    }
    for (uint32_t type : kGen2) {
        IsValue(type, {1920, 1080, 60}, 0x13);
        IsValue(type, {1280, 960, 60}, 0x13);
        IsValue(type, {1920, 1080, 50}, 0x14);
        IsValue(type, {0, 0, 50}, 0x14);
    }
}

TEST_F(NormTest, GroupBHasAnotherValueFor960Lines) {
    for (uint32_t type : kGroupB) {
        for (uint32_t width : kWidths) {
            IsValue(type, {width, 960, 30}, 0x16);
            IsValue(type, {width, 960, 25}, 0x15);
            for (uint32_t height : kAnyHeights) {
                IsValue(type, {width, height, 30}, 0x0E);
                IsValue(type, {width, height, 25}, 0x11);
            }
        }
    }
}

TEST_F(NormTest, OneModuleHasPalOnly) {
    const char *const line = "QDM730K2S only support pal now, fail exit";
    IsValue(kPalOnly, {720, 576, 25}, 0x15);
    for (const VideoNormParam &norm :
         {VideoNormParam{720, 576, 30}, VideoNormParam{720, 576, 50}, VideoNormParam{720, 575, 25},
          VideoNormParam{719, 576, 25}, VideoNormParam{576, 720, 25}, VideoNormParam{0, 0, 25},
          VideoNormParam{1920, 1080, 25}, VideoNormParam{0, 0, 0}}) {
        IsRefused(kPalOnly, norm, line);
    }
}

TEST_F(NormTest, RatesOutsideTheTableAreRefused) {
    for (uint32_t type : kGroupA) {
        for (uint32_t rate : kOtherRates) {
            IsNoNorm(type, {1920, 1080, rate});
        }
    }
    for (uint32_t type : {kSony1, kSony3, kSony5, 0x02012000U, 0x02012001U, 0x02012002U, 0x02012005U}) {
        IsNoNorm(type, {1920, 1080, 60});
        IsNoNorm(type, {1920, 1080, 50});
    }
    for (uint32_t type : kGroupB) {
        for (uint32_t height : {960U, 1080U}) {
            for (uint32_t rate : kOtherRates) {
                IsNoNorm(type, {1280, height, rate});
            }
            IsNoNorm(type, {1280, height, 60});
            IsNoNorm(type, {1280, height, 50});
        }
    }
}

TEST_F(NormTest, OtherModulesAreRefusedOnceTheirRegisterWasRead) {
    for (uint32_t type : kWithoutNorm) {
        for (uint32_t rate : {25U, 30U, 60U}) {
            IsRefused(type, {1920, 1080, rate},
                      "Not Supported CM[" + std::to_string(type) + "] yet, fail exit");
        }
    }
}

TEST_F(NormTest, ChangesOnEveryModuleOfGroupA) {
    for (uint32_t type : kGroupA) {
        Changes(type, {1920, 1080, 25}, 0x08);
    }
}

TEST_F(NormTest, ChangesOnTheSecondGenerationToItsOwnRates) {
    for (uint32_t type : kGen2) {
        Changes(type, {1920, 1080, 60}, 0x13);
    }
}

TEST_F(NormTest, ChangesOnEveryModuleOfGroupB) {
    for (uint32_t type : kGroupB) {
        Changes(type, {1280, 960, 30}, 0x16);
        Changes(type, {1920, 1080, 25}, 0x11);
    }
}

TEST_F(NormTest, ChangesOnThePalModule) {
    Changes(kPalOnly, {720, 576, 25}, 0x15);
}

// The same once more, packet for packet.
TEST_F(NormTest, From30To25Frames) {
    Attach(kSony1);
    Answers(
        {"90 50 00 06 FF", "90 50 00 03 FF", "90 50 00 01 FF", "90 50 03 FF", "90 50 03 FF", "90 50 02 FF"});
    EXPECT_EQ(0U, Set({1920, 1080, 25}));
    EXPECT_EQ(
        (Lines{"send 81 09 04 24 72 FF", "INFO SONY_SetVin: Need change norm from 6 to 8",
               "send 81 09 04 24 73 FF", "send 81 09 04 24 56 FF", "put 0: 81 01 04 00 03 FF",
               "put 0: 81 01 04 24 72 00 08 FF", "put 0: 81 01 04 00 02 FF", "sleep 100000",
               "send 81 09 04 00 FF", "sleep 100000", "send 81 09 04 00 FF", "sleep 100000",
               "send 81 09 04 00 FF", "INFO SonyWaitPowerOn: Now Power On", "put 0: 81 01 04 06 03 FF"}),
        Story());
    Attach(kSony5);
    Answers({"90 50 00 06 FF", "90 50 00 00 FF", "90 50 02 FF"});
    EXPECT_EQ(0U, Set({1920, 1080, 25}));
    EXPECT_EQ(Packets({"24 72 00 08", "24 73 00 03", "19 03", "00 02", "06 03"}), Host().Commands());
}

TEST_F(NormTest, RegistersThatAreNotToldReadAsZeroAndAreWritten) {
    Attach(kSony4);
    Answers({"", "", "", "90 50 02 FF"});
    EXPECT_EQ(0U, Set({1280, 960, 25}));
    EXPECT_EQ(Packets({"00 03", "24 72 01 05", "24 73 00 03", "24 56 00 01", "00 02", "06 03"}),
              Host().Commands());
    EXPECT_THAT(LogOf("SONY_SetVin"),
                ElementsAre("DEBUG SONY_SetVin: FUN_ENTRY--param:pstVideoNorm[1280, 960, 25]",
                            "INFO SONY_SetVin: Need change norm from 0 to 21",
                            "INFO SONY_SetVin: Need change Output from 0 to 3",
                            "INFO SONY_SetVin: Need change sync mode from 0 to 1"));
    EXPECT_EQ(3U * 6000000 + 100000, Clib().Now());
}

TEST_F(NormTest, OfARegisterReplyEveryByteIsTaken) {
    for (unsigned value = 0; value <= 0xFF; ++value) {
        Attach(kKova);
        const std::string byte = Hex({static_cast<uint8_t>(value)});
        Answers({"90 50 " + byte + " F6 FF", "90 50 F0 " + byte + " FF", "90 50 02 FF"});
        EXPECT_EQ(0U, Set({1920, 1080, 30}));
        Lines expected;
        if ((value & 0x0F) != 0) {
            expected.push_back("24 72 00 06");
        }
        if ((value & 0x0F) != 3) {
            expected.push_back("24 73 00 03");
        }
        expected.insert(expected.begin(), "00 03");
        expected.push_back("00 02");
        EXPECT_EQ(Packets(expected), Host().Commands()) << byte;
    }
}

TEST_F(NormTest, ACameraThatStaysSilentIsAskedAgain) {
    Answers({Reply(6), Reply(3), "", "", "90 50 00 FF", "90 50 02 FF"});
    EXPECT_EQ(0U, Set({1920, 1080, 25}));
    EXPECT_EQ(4U * 100000, Clib().Slept());
    EXPECT_EQ(4U * 100000 + 2U * 6000000, Clib().Now());
}

TEST_F(NormTest, AChangeForgetsTheImageSettingsAnotherCallDoesNot) {
    SonySetBlackWhiteMode(0, 1);
    Answers({Reply(6), Reply(3)});
    EXPECT_EQ(0U, Set({1920, 1080, 30}));
    Host().Forget();
    SonySetBlackWhiteMode(0, 1);
    EXPECT_EQ(Lines(), Host().Commands());
    Answers({Reply(6), Reply(3), "90 50 02 FF"});
    EXPECT_EQ(0U, Set({1920, 1080, 25}));
    Host().Forget();
    SonySetBlackWhiteMode(0, 1);
    EXPECT_EQ(Packets({"51 03", "01 03"}), Host().Commands());
}

TEST_F(NormTest, TheHostsTypeCountsNotThePublicLayersCopy) {
    VISCA_SetCamModuleType(0x02000001);
    Attach(kKovaGen2);
    Answers({Reply(0x13), Reply(3)});
    EXPECT_EQ(0U, Set({1920, 1080, 60}));
    EXPECT_EQ(Lines(), Host().Commands());
}

} // namespace
} // namespace unit
