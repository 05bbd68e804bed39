// Whole exposure profiles: which commands, in which order, and what a refusal in the middle leaves.
#include "tests/unit/image/image_test.h"
#include "tests/unit/image/profiles.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace unit {
namespace {

const char kCompensationOn[] = "3E 02"; // its refusal is passed over
const char kSpot[] = "29 00 06 00 03";  // always sent

const std::map<uint32_t, Lines> kKovaProfiles = {
    {0,
     {"5A 02", "CA 00 00 00 0C", "39 00", "3E 02", "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02",
      kSpot}},
    {1,
     {"5A 02", "CA 00 00 00 0C", "39 0F", "2C 00 0A 05 0A", "A3 00 00 01 09 02 07 01 00", "3E 02",
      "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02", kSpot}},
    {2,
     {"5A 02", "CA 00 00 00 0C", "39 0A", "CB 00 01 0F 04", "3E 02", "4E 00 00 00 08", "3D 01",
      "2D 00 00 00 07", "59 02", kSpot}},
    {3,
     {"5A 03", "39 0B", "4B 00 00 00 0C", "3E 02", "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02",
      kSpot}},
    {4,
     {"5A 03", "39 0E", "4C 00 00 00 0A", "3E 02", "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02",
      kSpot}},
    {5,
     {"5A 02", "CA 00 00 00 0C", "39 0C", "3E 02", "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02",
      kSpot}},
    {6,
     {"5A 02", "CA 00 00 00 0C", "39 0D", "3E 02", "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02",
      kSpot}},
    {7,
     {"5A 02", "CA 00 00 00 0C", "39 03", "CB 00 01 0F 04", "4B 00 00 00 0C", "4C 00 00 00 0A", "3D 01",
      "2D 00 00 00 07"}},
    {8, {"5A 02", "CA 00 00 00 0C", "3E 02", "4E 00 00 00 08", "3D 01", "2D 00 00 00 07", "59 02", kSpot}},
};

// A Sony block in general; see BlockProfile for the two that differ.
const std::map<uint32_t, Lines> kBlockProfiles = {
    {0, {"5A 02", "39 00", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03", "01 02"}},
    {1, {"5A 02", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03", "01 02"}},
    {2,
     {"5A 02", "39 0A", "4A 00 00 00 0D", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03",
      "01 02"}},
    {3,
     {"5A 03", "39 0B", "4B 00 00 00 0C", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03",
      "01 02"}},
    {4, {"5A 03", "4C 00 00 00 06", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03", "01 02"}},
    {5, {"5A 02", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03", "01 02"}},
    {6, {"5A 02", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03", "01 02"}},
    {7, {"5A 02", "39 03", "4A 00 00 00 0D", "4B 00 00 00 0C", "4C 00 00 00 06", "3D 02", "51 03", "01 02"}},
    {8, {"5A 02", "3E 02", "4E 00 00 00 08", "3D 02", "59 02", kSpot, "51 03", "01 02"}},
};

Lines BlockProfile(uint32_t type, uint32_t mode) {
    Lines profile = kBlockProfiles.at(mode);
    if (type == kSony4) {
        std::replace(profile.begin(), profile.end(), std::string("4B 00 00 00 0C"),
                     std::string("4B 00 00 00 0B"));
    }
    if (type == kSony5) {
        std::replace(profile.begin(), profile.end(), std::string("3D 02"), std::string("3D 06"));
    }
    return profile;
}

bool IsKovaModule(uint32_t type) {
    return (type >> 12) == 0x02012;
}

Lines Profile(uint32_t type, uint32_t mode) {
    return IsKovaModule(type) ? kKovaProfiles.at(mode) : BlockProfile(type, mode);
}

std::string Unsupported(uint32_t mode) {
    return "ERROR SonySetExposureMode: unSupported ulExposureMode[" + std::to_string(mode) + "], fail exit\n";
}

Lines ModeComplaint(uint32_t type, uint32_t mode) {
    const bool lacking = mode > 7 || (!IsKovaModule(type) && (mode == 1 || (mode > 3 && mode < 7)));
    return lacking ? Lines{Unsupported(mode)} : Lines();
}

/** Who complains about a refused command, and how the profile does. The first byte tells which. */
struct Refusal {
    const char *command, *primitive, *profile;
};
const Refusal kRefusals[] = {
    {"5A 02", "SonyImgSetAutoSlowShutter: ViscaEnQueueCmd() fail exit\n",
     "SonyImgSetAutoSlowShutter(0, 1) fail exit\n"},
    {"5A 03", "SonyImgSetAutoSlowShutter: ViscaEnQueueCmd() fail exit\n",
     "SonyImgSetAutoSlowShutter(0, 0) fail exit\n"},
    {"CA", "SonyImgSetAutoSlowShutterLimit: ViscaEnQueueCmd() fail exit\n",
     "SonyImgSetAutoSlowShutterLimit(0, 12) fail exit\n"},
    {"39", "SonySetExposureMode: ViscaEnQueueCmd() fail exit\n", "SonySetExposureMode(0, MODE) fail exit\n"},
    {"2C", "SonyImgSetGainScope: ViscaEnQueueCmd() fail exit\n",
     "SonyImgSetGainScope(0, 10, 90) fail exit\n"},
    {"A3", "SonyImgSetShutterScope: ViscaEnQueueCmd() fail exit\n",
     "SonyImgSetShutterScope(0, 25, 10000) fail exit\n"},
    {"CB", "SonyImgSetShutter: ViscaEnQueueCmd() fail exit\n", "SonyImgSetShutter(0, 500) fail exit\n"},
    {"4A", "SonyImgSetShutter: ViscaEnQueueCmd() fail exit\n", "SonyImgSetShutter(0, 500) fail exit\n"},
    {"4B", "SonyImgSetIris: ViscaQueueCmdCushion() fail exit\n", "SonyImgSetIris(0, 400) fail exit\n"},
    {"4C", "SonyImgSetGain: ViscaEnQueueCmd() fail exit\n", "SonyImgSetGain(0, 10) fail exit\n"},
    {"4E", "SonySetExpComp: ViscaEnQueueCmd() fail exit\n", "SonySetExpComp(0, 20) fail exit\n"},
    {"3D", "SonyImgSetWDR: Set wdr mode fail exit\n", "SonyImgSetWDR(0, 1) fail exit\n"},
    {"2D", "SonyImgSetWDRLevel: Set wdr mode fail exit\n", "SonyImgSetWDRLevel(0, 7) fail exit\n"},
    {"59", "SonySetAEMetering: ViscaEnQueueCmd() fail exit\n", "SonySetAEMetering(0, 1) fail exit\n"},
    {"29", "SonySetSpotAEPos: ViscaEnQueueCmd() fail exit\n", "SonySetSpotAEPos fail exit. \n"},
    {"51", "SonySetBlackWhiteMode: Switch to Auto ICR OFF fail exit\n",
     "SonySetBlackWhiteMode fail exit. \n"},
    {"01", "SonySetBlackWhiteMode: ViscaEnQueueCmd() fail exit\n", "SonySetBlackWhiteMode fail exit. \n"},
};

Lines RefusalLines(const std::string &payload, uint32_t mode) {
    for (const Refusal &row : kRefusals) {
        if (payload.compare(0, strlen(row.command), row.command) == 0) {
            std::string profile = row.profile;
            const size_t at = profile.find("MODE");
            if (at != std::string::npos) {
                profile.replace(at, 4, std::to_string(mode));
            }
            return {kQueueRefused, std::string("ERROR ") + row.primitive,
                    "ERROR SONY_SetExposure: " + profile};
        }
    }
    return {};
}

/** The command with which the setting that holds command `at` begins. */
size_t FirstOfSetting(const Lines &profile, size_t at) {
    const std::string &payload = profile[at];
    return payload.compare(0, 2, "4E") == 0 || payload.compare(0, 2, "01") == 0 ? at - 1 : at;
}

class ExposureProfileTest : public ImageTest {
  protected:
    static Outcome Apply(const ExposureParam &profile, uint32_t image_type = 0) {
        return Run([&] { return SONY_SetExposure(0, image_type, &profile); });
    }
    /** The profile with command `at` refused, then once more without. */
    static void ExpectRefused(uint32_t type, uint32_t mode, size_t at);
    /** A profile of other values, so that nothing that is remembered is unknown. */
    static ExposureParam Other() {
        ExposureParam other = Exposure(0);
        other.lExpCompValue = -60;
        other.bIsAutoSlowShutter = other.ulWdr = other.ulMeteringMode = 0;
        other.ulBlackWhiteMode = 1;
        return other;
    }
};

TEST_F(ExposureProfileTest, EachModeHasItsSettingsInTheirOrder) {
    for (uint32_t type :
         {kKova, 0x02012000U, 0x02012100U, 0x02012200U, kSony1, kSony3, kSony4, kSony5, 0x02000002U}) {
        for (uint32_t mode = 0; mode <= 8; ++mode) {
            Attach(type);
            const Outcome expected = {0, Commands(Profile(type, mode)), ModeComplaint(type, mode)};
            EXPECT_EQ(expected, Apply(Exposure(mode))) << std::hex << type << " mode " << mode;
        }
    }
}

TEST_F(ExposureProfileTest, TheSecondKovaGenerationGetsTheSameSettings) {
    for (uint32_t type : {0x02012A00U, kKovaGen2, 0x02012AFFU}) {
        for (uint32_t mode = 0; mode <= 8; ++mode) {
            Attach(type);
            const Outcome outcome = Apply(Exposure(mode));
            EXPECT_EQ(0U, outcome.result);
            EXPECT_EQ(Commands(kKovaProfiles.at(mode)), outcome.packets) << mode;
        }
    }
}

TEST_F(ExposureProfileTest, TheSameProfileAgainSendsTheSpotAlone) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        for (uint32_t mode = 0; mode <= 8; ++mode) {
            Attach(type);
            Apply(Exposure(mode));
            const Lines spot = mode == 7 ? Lines() : Commands({kSpot});
            for (int round = 0; round < 2; ++round) {
                EXPECT_EQ(spot, Apply(Exposure(mode)).packets) << std::hex << type << " mode " << mode;
            }
        }
    }
}

TEST_F(ExposureProfileTest, OneChangedValueIsOneCommand) {
    Attach(kKova);
    ExposureParam profile = Exposure(1);
    profile.ulMeteringMode = 0;
    Apply(profile);
    EXPECT_EQ(Nothing(), Apply(profile));
    profile.ulMaxGain = 91;
    EXPECT_EQ(Sends({"2C 00 0A 05 0B"}), Apply(profile));
    profile.ulSlowShutter = 26;
    EXPECT_EQ(Sends({"A3 00 00 01 0A 02 07 01 00"}), Apply(profile));
    profile.ulMaxSlowShutter = 6;
    EXPECT_EQ(Sends({"CA 00 00 00 06"}), Apply(profile));
    profile.ulWdrLevel = 0;
    EXPECT_EQ(Sends({"2D 00 00 00 00"}), Apply(profile));
    profile.lExpCompValue = 0;
    EXPECT_EQ(Sends({"3E 02", "4E 00 00 00 07"}), Apply(profile));
    profile.ulReserved5 = profile.ulGain = profile.ulShutter = profile.ulIris = 3;
    EXPECT_EQ(Nothing(), Apply(profile)) << "not a value of this mode";
}

// The camera forgets what depends on the mode, so manual values go out again though they are the same.
TEST_F(ExposureProfileTest, AModeChangeTakesItsSettingsWithIt) {
    Attach(kSony1);
    Apply(Exposure(7));
    EXPECT_EQ(Sends({"39 0A", "4A 00 00 00 0D", "3E 02", "4E 00 00 00 08", "59 02", kSpot}),
              Apply(Exposure(2)));
    EXPECT_EQ(Sends({"39 03", "4A 00 00 00 0D", "4B 00 00 00 0C", "4C 00 00 00 06"}), Apply(Exposure(7)));
    EXPECT_EQ(Nothing(), Apply(Exposure(7)));
    EXPECT_EQ(Sends({"5A 03", "39 0B", "4B 00 00 00 0C", kSpot}), Apply(Exposure(3)));
    Attach(kKova);
    Apply(Exposure(1));
    Apply(Exposure(0));
    EXPECT_EQ(Sends({"39 0F", "2C 00 0A 05 0A", "A3 00 00 01 09 02 07 01 00", kSpot}), Apply(Exposure(1)));
}

// The block does not know mode 4: the change to mode 7 is its last one, and nothing has confirmed it since.
TEST_F(ExposureProfileTest, AModeThatTheBlockLacksLeavesTheForceOfTheLastChange) {
    Attach(kSony1);
    Apply(Exposure(7));
    const Outcome first = Apply(Exposure(4));
    EXPECT_EQ(Commands({"5A 03", "4C 00 00 00 06", "3E 02", "4E 00 00 00 08", "59 02", kSpot}),
              first.packets);
    EXPECT_EQ(Commands({"4C 00 00 00 06", kSpot}), Apply(Exposure(4)).packets);
}

TEST_F(ExposureProfileTest, IrisPriorityAndFixedGainSwitchTheSlowShutterOffWhateverIsAsked) {
    for (uint32_t type : {kKova, kSony1}) {
        for (uint32_t mode : {3U, 4U}) {
            for (uint32_t asked : {0U, 1U, 2U, kUnset}) {
                Attach(type);
                ExposureParam profile = Exposure(mode);
                profile.bIsAutoSlowShutter = asked;
                EXPECT_EQ(Commands(Profile(type, mode)), Apply(profile).packets);
            }
        }
    }
}

TEST_F(ExposureProfileTest, TheSlowShutterLimitGoesWithASwitchThatIsOne) {
    Attach(kKova);
    ExposureParam profile = Exposure(7);
    profile.bIsAutoSlowShutter = 0;
    Lines expected = kKovaProfiles.at(7);
    expected[0] = "5A 03";
    expected.erase(expected.begin() + 1);
    EXPECT_EQ(Sends(expected), Apply(profile));
}

TEST_F(ExposureProfileTest, ASlowShutterThatIsNeitherOnNorOffStopsTheProfile) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        for (uint32_t mode : {0U, 1U, 2U, 5U, 6U, 7U, 8U}) {
            Attach(type);
            ExposureParam profile = Exposure(mode);
            profile.bIsAutoSlowShutter = 2;
            EXPECT_EQ(Nothing()
                          .Fails()
                          .Logs("WARN SonyImgSetAutoSlowShutter: bIsAutoSlowShutter[2] invalid, fail exit\n")
                          .Logs("ERROR SONY_SetExposure: SonyImgSetAutoSlowShutter(0, 2) fail exit\n"),
                      Apply(profile));
        }
    }
}

TEST_F(ExposureProfileTest, ValuesThatTheBlockLacksDoNotStopTheProfile) {
    ExposureParam profile = Exposure(7);
    profile.ulShutter = 5;
    profile.ulIris = 5;
    profile.ulGain = 30;
    profile.ulWdr = 3;
    profile.ulBlackWhiteMode = 3;
    const Outcome expected = {0,
                              Commands({"5A 02", "39 03"}),
                              {"ERROR SonyImgSetShutter: shutter[5] not supported, fail exit\n",
                               "ERROR SonyImgSetIris: ulIris[5] invalid, fail exit\n",
                               "ERROR SonyImgSetGain: ulGain[30] invalid, fail exit\n",
                               "ERROR SonyImgSetWDR: ulWdr[3] invalid, fail exit\n",
                               "ERROR SonySetBlackWhiteMode: ulBlackWhiteMode[3] invalid, fail exit\n"}};
    EXPECT_EQ(expected, Apply(profile));
    profile = Exposure(0);
    profile.ulMeteringMode = 2;
    const Outcome metering = {0,
                              Commands({"39 00", "3E 02", "4E 00 00 00 08", "3D 02", "51 03", "01 02"}),
                              {"ERROR SonySetAEMetering: Do not support mode(2)\n"}};
    EXPECT_EQ(metering, Apply(profile)) << "and no spot";
}

TEST_F(ExposureProfileTest, TheLevelGoesWithWideRangeOnAndTheSpotWithSpotMetering) {
    for (uint32_t other : {0U, 2U}) {
        Attach(kKova);
        ExposureParam profile = Exposure(0);
        profile.ulWdr = other;
        profile.ulMeteringMode = other;
        EXPECT_EQ(Sends({"5A 02", "CA 00 00 00 0C", "39 00", "3E 02", "4E 00 00 00 08",
                         other == 0 ? "3D 03" : "3D 00", other == 0 ? "59 03" : "59 04"}),
                  Apply(profile));
    }
}

TEST_F(ExposureProfileTest, DayNightIsForPlainSonyBlocksAndOnlyWhenItIsNotZero) {
    const auto last = [](uint32_t type, uint32_t mode) {
        Attach(type);
        ExposureParam profile = Exposure(7);
        profile.ulWdr = 0;
        profile.ulBlackWhiteMode = mode;
        const Lines packets = Apply(profile).packets;
        return packets.empty() ? "" : packets.back();
    };
    for (uint32_t type : {0x02000000U, kSony1, kSony3, kSony4, kSony5, 0x02000FFFU}) {
        EXPECT_EQ(Command("3D 03"), last(type, 0)) << std::hex << type;
        EXPECT_EQ(Command("01 03"), last(type, 1)) << std::hex << type;
        EXPECT_EQ(Command("01 02"), last(type, 2)) << std::hex << type;
    }
    for (uint32_t type : {kKova, kKovaGen2, 0x02001000U, 0x02011FFFU, 0x02013000U, 0x12000001U}) {
        EXPECT_EQ(Command("3D 03"), last(type, 1)) << std::hex << type;
        EXPECT_EQ(Command("3D 03"), last(type, 2)) << std::hex << type;
    }
}

TEST_F(ExposureProfileTest, AHeldDayNightModeOfAProfileIsKept) {
    Attach(kSony1);
    Hold(1);
    EXPECT_EQ(Sends({"5A 02", "39 03", "4A 00 00 00 0D", "4B 00 00 00 0C", "4C 00 00 00 06", "3D 02"}),
              Apply(Exposure(7)));
    EXPECT_EQ(2, gstImgDetectParam.lBlackWhiteMode);
}

// --- refusals

void ExposureProfileTest::ExpectRefused(uint32_t type, uint32_t mode, size_t at) {
    const Lines profile = Profile(type, mode);
    SCOPED_TRACE(std::to_string(type) + " mode " + std::to_string(mode) + ", command " + std::to_string(at));
    RefuseCommand(static_cast<unsigned>(at + 1));
    Outcome expected = {1, Commands(Lines(profile.begin(), profile.begin() + static_cast<long>(at) + 1)),
                        ModeComplaint(type, mode)};
    if (profile[at] == kCompensationOn) {
        expected = {0, Commands(profile), ModeComplaint(type, mode)};
        expected.log.push_back(kQueueRefused);
        EXPECT_EQ(expected, Apply(Exposure(mode)));
        return;
    }
    const Lines lines = RefusalLines(profile[at], mode);
    const bool before_mode = profile[at].compare(0, 2, "5A") == 0 || profile[at].compare(0, 2, "CA") == 0;
    if (before_mode) {
        expected.log.clear(); // the mode was not reached
    }
    expected.log.insert(expected.log.end(), lines.begin(), lines.end());
    EXPECT_EQ(expected, Apply(Exposure(mode)));

    // What was queued is remembered, the rest is not: the same profile goes on where it stopped.
    Lines rest(profile.begin() + static_cast<long>(FirstOfSetting(profile, at)), profile.end());
    const auto spot = std::find(profile.begin(), profile.end(), kSpot);
    if (spot != profile.end() && std::find(rest.begin(), rest.end(), kSpot) == rest.end()) {
        rest.insert(rest.begin(), kSpot);
    }
    EXPECT_EQ(Commands(rest), Apply(Exposure(mode)).packets);
}

TEST_F(ExposureProfileTest, ARefusalAtAnyStepStopsItThereAndTheNextTimeItGoesOn) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        for (uint32_t mode = 0; mode <= 8; ++mode) {
            for (size_t at = 0; at < Profile(type, mode).size(); ++at) {
                Attach(type);
                ExpectRefused(type, mode, at);
            }
        }
    }
}

// The same with every setting known before: old values are not taken for the new ones.
TEST_F(ExposureProfileTest, ARefusalAtAnyStepOfAChangeOfProfilesIsTheSame) {
    for (uint32_t type : {kKova, kSony1, kSony4}) {
        for (uint32_t mode : {1U, 2U, 3U, 4U, 7U}) {
            if (!ModeComplaint(type, mode).empty()) {
                continue;
            }
            for (size_t at = 0; at < Profile(type, mode).size(); ++at) {
                Attach(type);
                Apply(Other());
                if (mode != 3 && mode != 4) {
                    ExpectRefused(type, mode, at);
                } else if (at > 0) { // the slow shutter is off already
                    RefuseCommand(static_cast<unsigned>(at));
                    Lines profile = Profile(type, mode);
                    const Lines queued(profile.begin() + 1, profile.begin() + static_cast<long>(at) + 1);
                    const Outcome outcome = Apply(Exposure(mode));
                    const bool passed_over = profile[at] == kCompensationOn;
                    EXPECT_EQ(passed_over ? 0U : 1U, outcome.result);
                    EXPECT_EQ(Commands(passed_over ? Lines(profile.begin() + 1, profile.end()) : queued),
                              outcome.packets);
                }
            }
        }
    }
}

// The old profile again after the change was refused in the middle: what went out goes back, the rest is
// still there.
TEST_F(ExposureProfileTest, ARefusedSettingStillCountsAsItWas) {
    Attach(kSony1);
    ExposureParam before = Exposure(7), after = before;
    before.ulMeteringMode = after.ulMeteringMode = 0;
    after.ulShutter = 60;
    after.ulIris = 200;
    after.ulGain = 20;
    after.ulWdr = 2;
    Apply(before);
    Apply(before);
    RefuseCommand(2);
    EXPECT_EQ(Commands({"4A 00 00 00 06", "4B 00 00 01 00"}), Apply(after).packets);
    EXPECT_EQ(Sends({"4A 00 00 00 0D"}), Apply(before)) << "iris, gain and WDR were never changed";
}

TEST_F(ExposureProfileTest, EverythingRefusedStopsAtTheFirstStep) {
    RefuseCommand(1, kForEver);
    EXPECT_EQ(1U, Apply(Exposure(0)).result);
    EXPECT_EQ(Commands({"5A 02"}), Apply(Exposure(0)).packets);
    ViscaSetCamCanCtrl(0);
    const Outcome expected = {1,
                              {},
                              {"WARN ViscaEnQueueCmd: Cam Can't Ctrl return directly\n",
                               "ERROR SonyImgSetAutoSlowShutter: ViscaEnQueueCmd() fail exit\n",
                               "ERROR SONY_SetExposure: SonyImgSetAutoSlowShutter(0, 0) fail exit\n"}};
    EXPECT_EQ(expected, Apply(Exposure(3)));
}

// Signed and unsigned words of a failure line.
TEST_F(ExposureProfileTest, TheFailureLineTellsTheValueAsItIs) {
    ExposureParam profile = Exposure(0);
    profile.lExpCompValue = -50;
    RefuseCommand(4);
    const Outcome outcome = Apply(profile);
    EXPECT_EQ("ERROR SONY_SetExposure: SonySetExpComp(0, -50) fail exit\n", outcome.log.back());
    Attach(kKova);
    profile = Exposure(2);
    profile.ulShutter = 4294967290U;
    RefuseCommand(4);
    EXPECT_EQ("ERROR SONY_SetExposure: SonyImgSetShutter(0, 4294967290) fail exit\n",
              Apply(profile).log.back());
    Attach(kKova);
    profile = Exposure(0);
    profile.ulWdrLevel = 12;
    RefuseCommand(7);
    EXPECT_EQ("ERROR SONY_SetExposure: SonyImgSetWDRLevel(0, 12) fail exit\n", Apply(profile).log.back());
}

// --- the record

bool SameRecord(const ExposureParam &a, const ExposureParam &b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

ExposureParam LastOffered() {
    ExposureParam read;
    memset(&read, 0xEE, sizeof read);
    EXPECT_EQ(0U, SONY_GetExposureCfg(&read));
    return read;
}

TEST_F(ExposureProfileTest, AnotherImageTypeIsRefusedBeforeAnythingIsSentButTheRecordIsKept) {
    EXPECT_EQ(88U, sizeof(ExposureParam));
    for (uint32_t type : {kKova, kKovaGen2, kSony1}) {
        for (uint32_t image_type : {1U, 2U, 256U, 0xFFFFFFFFU}) {
            Attach(type);
            ExposureParam profile = Exposure(image_type % 7);
            const std::string line = "ERROR SONY_SetExposure: ulImageType[" + std::to_string(image_type);
            EXPECT_EQ(Nothing().Fails().Logs(line + "] invalid, fail exit\n"), Apply(profile, image_type));
            EXPECT_TRUE(SameRecord(profile, LastOffered()));
        }
    }
}

TEST_F(ExposureProfileTest, TheRecordOfferedLastIsReadBackWholeWhateverBecameOfIt) {
    EXPECT_TRUE(SameRecord(ExposureParam{}, LastOffered())) << "none yet";
    ExposureParam profile = Exposure(7);
    Apply(profile);
    EXPECT_TRUE(SameRecord(profile, LastOffered()));
    profile.bIsAutoSlowShutter = 5;
    profile.ulReserved6 = 0x01020304;
    EXPECT_EQ(1U, Apply(profile).result);
    EXPECT_TRUE(SameRecord(profile, LastOffered()));
    SonyInitVar4IMG();
    EXPECT_TRUE(SameRecord(profile, LastOffered()));
}

TEST_F(ExposureProfileTest, TheProfileLogsItsEntryFirst) {
    const ExposureParam profile = Exposure(7);
    char line[160];
    snprintf(line, sizeof line,
             "DEBUG SONY_SetExposure: FUN_ENTRY--param:ulChannelID[3] ulImageType[4] pstExposure[%p]\n",
             static_cast<const void *>(&profile));
    Host().Forget();
    SONY_SetExposure(3, 4, &profile);
    EXPECT_EQ(line, Host().Log().at(0));
}

// There is one picture: the channel of the host goes no further than the profile's own line.
TEST_F(ExposureProfileTest, TheSettingsOfAProfileAreForChannelZero) {
    const ExposureParam exposure = Exposure(1);
    const WhiteBalanceParam white = {1, 2, 3};
    const ImageEnhanceParam enhance = Enhancement();
    DrvMsgInfo defog{};
    defog.ulMsgCmd = 30;
    Attach(kKova);
    SONY_SetExposure(3, 0, &exposure);
    SONY_SetWhiteBalance(3, 0, &white);
    SONY_SetImageEnhance(3, 0, &enhance);
    SONY_SetImageVarFn(3, 0, &defog);
    size_t settings = 0;
    for (const Event &event : Host().Events(Call::Log)) {
        if (event.log.function != "SONY_SetExposure" &&
            event.log.message.find("ulChannelID[") != std::string::npos) {
            ++settings;
            EXPECT_NE(std::string::npos, event.log.message.find("ulChannelID[0]")) << event.text;
        }
    }
    EXPECT_GE(settings, 19U);
}

// --- reading the gain

TEST_F(ExposureProfileTest, ReadingTheExposureFillsTheGainAlone) {
    ExposureParam read = Exposure(7), expected = read;
    expected.ulGain = 8000;
    Host().AnswerInquiry("90 50 00 00 00 05 FF");
    EXPECT_EQ(Nothing(), Run([&] { return SONY_GetExposure(0, 0, &read); }));
    EXPECT_TRUE(SameRecord(expected, read));
    EXPECT_EQ(Lines{"81 09 04 4C FF"}, Host().Sent());
}

TEST_F(ExposureProfileTest, AnExposureThatCannotBeReadIsLeftAsItWas) {
    ExposureParam read = Exposure(7);
    const ExposureParam before = read;
    char line[160];
    snprintf(line, sizeof line, "ERROR SONY_GetExposure: SonyGetCurrentGain(0, %p) fail exit\n",
             static_cast<void *>(&read.ulGain));
    Host().AnswerInquiry("90 60 41 FF");
    EXPECT_EQ(Nothing().Fails().Logs("ERROR SonyGetCurrentGain: ViscaInquiry failed exit\n").Logs(line),
              Run([&] { return SONY_GetExposure(5, 0, &read); }));
    snprintf(line, sizeof line,
             "DEBUG SONY_GetExposure: FUN_ENTRY--param:ulChannelID[5] ulImageType[0] pstExposure[%p]\n",
             static_cast<void *>(&read));
    EXPECT_EQ(line, Host().Log().at(0));
    EXPECT_EQ(Nothing().Fails().Logs("ERROR SONY_GetExposure: ulImageType[1] invalid, fail exit\n"),
              Run([&] { return SONY_GetExposure(0, 1, &read); }));
    EXPECT_EQ(Lines(), Host().Sent());
    EXPECT_TRUE(SameRecord(before, read));
}

TEST_F(ExposureProfileTest, TheGainIsReadInWholeDecibels) {
    uint32_t gain = 77;
    Host().AnswerInquiry("90 50 00 00 00 05 FF");
    EXPECT_EQ(Nothing(), Run([&] { return SONY_GetGain(0, &gain); }));
    EXPECT_EQ(8U, gain);
    Host().AnswerInquiry("90 50 00 00 00 00 FF");
    EXPECT_EQ(0U, SONY_GetGain(0, &gain));
    EXPECT_EQ(0U, gain);
    gain = 77;
    Host().AnswerInquiry("90 60 41 FF");
    EXPECT_EQ(Nothing().Fails().Logs("ERROR SonyGetCurrentGain: ViscaInquiry failed exit\n"),
              Run([&] { return SONY_GetGain(0, &gain); }));
    EXPECT_EQ(0U, gain) << "also when it failed";
}

} // namespace
} // namespace unit
