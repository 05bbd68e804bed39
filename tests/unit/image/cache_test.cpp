// What was sent last is not sent again: the skip rules, what forces a setting out again, what is forgotten.
#include "tests/unit/image/primitives.h"

namespace unit {
namespace {

const std::string kEntry = "FUN_ENTRY--param:";

class ImageCacheTest : public ImageTest {
  protected:
    static Outcome Ask(const Primitive &primitive, bool second) {
        return Run([&] { return primitive.set(primitive.Value(second)); });
    }
    /** Every setting at its first value, and no change that still forces anything. */
    static void SettleEverything(uint32_t type) {
        Attach(type);
        for (int round = 0; round < 2; ++round) {
            for (const Primitive &primitive : Primitives()) {
                Ask(primitive, false);
            }
        }
    }
    static Outcome Shutter(uint32_t value) {
        return Run([=] { return SonyImgSetShutter(0, value); });
    }
    static Outcome Set(const char *name, bool second) { return Ask(Find(name), second); }
};

TEST_F(ImageCacheTest, AnUnchangedValueIsNotSentAgain) {
    for (uint32_t type : {kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5}) {
        for (const Primitive &primitive : Primitives()) {
            SCOPED_TRACE(primitive.name);
            Attach(type);
            EXPECT_EQ(Sends(primitive.Payloads(type, false)), Ask(primitive, false));
            EXPECT_EQ(Nothing(), Ask(primitive, false));
            EXPECT_EQ(Sends(primitive.Payloads(type, true)), Ask(primitive, true));
            EXPECT_EQ(Nothing(), Ask(primitive, true));
            EXPECT_EQ(Sends(primitive.Payloads(type, false)), Ask(primitive, false));
        }
    }
}

TEST_F(ImageCacheTest, ARefusedValueIsForgottenAndTheOldOneStillCounts) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        for (const Primitive &primitive : Primitives()) {
            const Lines &first = primitive.Payloads(type, false), &second = primitive.Payloads(type, true);
            if (second.empty()) {
                continue;
            }
            SCOPED_TRACE(primitive.name);
            Attach(type);
            RefuseCommand(static_cast<unsigned>(first.size()));
            EXPECT_EQ(IsRefused(first, primitive.RefusedLine()), Ask(primitive, false));
            EXPECT_EQ(Sends(first), Ask(primitive, false)) << "never queued";
            RefuseCommand(static_cast<unsigned>(second.size()));
            EXPECT_EQ(IsRefused(second, primitive.RefusedLine()), Ask(primitive, true));
            EXPECT_EQ(Nothing(), Ask(primitive, false)) << "the camera still has it";
            EXPECT_EQ(Sends(second), Ask(primitive, true));
        }
    }
}

// What a mode governs is sent once more after its change, everything else is not.
TEST_F(ImageCacheTest, AChangedModeForcesWhatItGovernsAndNothingElse) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        for (const Primitive &mode : Primitives()) {
            SettleEverything(type);
            EXPECT_EQ(Sends(mode.Payloads(type, true)), Ask(mode, true));
            for (const Primitive &other : Primitives()) {
                if (other.name != mode.name) {
                    const bool forced = other.governor == mode.name;
                    EXPECT_EQ(forced ? Sends(other.Payloads(type, false)) : Nothing(), Ask(other, false))
                        << mode.name << " then " << other.name;
                }
            }
        }
    }
}

TEST_F(ImageCacheTest, AChangedModeForcesUntilItIsAskedForUnchanged) {
    for (const Primitive &dependent : Primitives()) {
        if (dependent.governor.empty()) {
            continue;
        }
        SCOPED_TRACE(dependent.name);
        const Primitive &mode = Find(dependent.governor);
        SettleEverything(kKova);
        Ask(mode, true);
        EXPECT_EQ(Sends(dependent.kova_a), Ask(dependent, false));
        EXPECT_EQ(Sends(dependent.kova_a), Ask(dependent, false)) << "still forced";
        EXPECT_EQ(Nothing(), Ask(mode, true));
        EXPECT_EQ(Nothing(), Ask(dependent, false));
        Ask(mode, false);
        EXPECT_EQ(Sends(dependent.kova_a), Ask(dependent, false)) << "forced by the next change";
    }
}

TEST_F(ImageCacheTest, AForcedValueThatIsRefusedIsStillTheOneThatCounts) {
    for (const Primitive &dependent : Primitives()) {
        if (dependent.governor.empty()) {
            continue;
        }
        SCOPED_TRACE(dependent.name);
        SettleEverything(kKova);
        Ask(Find(dependent.governor), true);
        RefuseCommand(1);
        EXPECT_EQ(IsRefused(dependent.kova_a, dependent.RefusedLine()), Ask(dependent, false));
        EXPECT_EQ(Nothing(), Ask(Find(dependent.governor), true));
        EXPECT_EQ(Nothing(), Ask(dependent, false));
    }
}

TEST_F(ImageCacheTest, AModeThatIsRefusedOrUnknownForcesNothing) {
    for (const Primitive &dependent : Primitives()) {
        if (dependent.governor.empty()) {
            continue;
        }
        SCOPED_TRACE(dependent.name);
        const Primitive &mode = Find(dependent.governor);
        SettleEverything(kKova);
        RefuseCommand(static_cast<unsigned>(mode.kova_b.size()));
        Ask(mode, true);
        EXPECT_EQ(Nothing(), Ask(dependent, false));
        Run([&] { return mode.set(77); });
        EXPECT_EQ(Nothing(), Ask(dependent, false));
    }
}

// The other way round: a request that is refused or unknown does not count as unchanged either.
TEST_F(ImageCacheTest, AModeThatIsUnknownKeepsTheForceOfTheLastChange) {
    SettleEverything(kKova);
    Set("SonySetExposureMode", true);
    Run([] { return SonySetExposureMode(0, 99); });
    EXPECT_EQ(Sends({"CB 00 01 0F 04"}), Shutter(500));
    Set("SonyImgSetWDR", true);
    Run([] { return SonyImgSetWDR(0, 3); });
    EXPECT_EQ(Sends({"2D 00 00 00 03"}), Set("SonyImgSetWDRLevel", false));
    Set("SonyImgSetAutoSlowShutter", true);
    Run([] { return SonyImgSetAutoSlowShutter(0, 2); });
    EXPECT_EQ(Sends({"CA 00 00 01 09"}), Set("SonyImgSetAutoSlowShutterLimit", false));
    Set("SonySetBlackWhiteMode", true);
    Run([] { return SonySetBlackWhiteMode(0, 3); });
    EXPECT_EQ(Sends({"A2 00 00 08 00"}), Set("SonySetVideoContrast", false));
}

TEST_F(ImageCacheTest, InitialisationForgetsEveryValue) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        SettleEverything(type);
        SonyInitVar4IMG();
        for (const Primitive &primitive : Primitives()) {
            EXPECT_EQ(Sends(primitive.Payloads(type, false)), Ask(primitive, false)) << primitive.name;
        }
    }
}

TEST_F(ImageCacheTest, InitialisationSaysSoAndSendsNothing) {
    Host().Forget();
    SonyInitVar4IMG();
    EXPECT_EQ(Lines{"DEBUG SonyInitVar4IMG: " + kEntry + "\n"}, Host().Log());
    for (uint32_t type : {kSony1, kKova, 0U, kUnset}) {
        Host().Forget();
        EXPECT_EQ(0U, SonyInitCamIMG(type));
        EXPECT_EQ(
            (Lines{"DEBUG SonyInitCamIMG: " + kEntry + "\n", "DEBUG SonyInitVar4IMG: " + kEntry + "\n"}),
            Host().Log());
        EXPECT_EQ(Lines(), Host().Commands());
        EXPECT_EQ(Lines(), Host().Sent());
    }
}

TEST_F(ImageCacheTest, StartUpAndRestoreForgetEveryValueToo) {
    for (const auto &forget : {SonyInitCamIMG, SonyRestoreCamEnv}) {
        Attach(kSony5);
        EXPECT_EQ(Sends({"4A 00 00 00 0D"}), Shutter(500));
        EXPECT_EQ(Sends({"35 04"}), Set("SonySetVideoWBMode", true));
        EXPECT_EQ(Nothing(), Shutter(500));
        EXPECT_EQ(0U, forget(kSony5));
        EXPECT_EQ(Sends({"4A 00 00 00 0D"}), Shutter(500));
        EXPECT_EQ(Sends({"35 04"}), Set("SonySetVideoWBMode", true));
    }
}

TEST_F(ImageCacheTest, InitialisationEndsTheForceOfExposureModeAndDayNight) {
    Attach(kKova);
    Set("SonySetExposureMode", true);
    Set("SonySetBlackWhiteMode", true);
    SonyInitVar4IMG();
    EXPECT_EQ(Sends({"CB 00 01 0F 04"}), Shutter(500));
    EXPECT_EQ(Nothing(), Shutter(500));
    EXPECT_EQ(Sends({"A2 00 00 08 00"}), Set("SonySetVideoContrast", false));
    EXPECT_EQ(Nothing(), Set("SonySetVideoContrast", false));
}

TEST_F(ImageCacheTest, InitialisationKeepsTheForceOfWdrAndSlowShutter) {
    Attach(kKova);
    Set("SonyImgSetWDR", true);
    Set("SonyImgSetAutoSlowShutter", false);
    SonyInitVar4IMG();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Sends({"2D 00 00 00 03"}), Set("SonyImgSetWDRLevel", false));
        EXPECT_EQ(Sends({"CA 00 00 01 09"}), Set("SonyImgSetAutoSlowShutterLimit", false));
    }
}

TEST_F(ImageCacheTest, InitialisationKeepsTheHoldAndTheLastProfile) {
    ExposureParam profile{}, read{};
    profile.ulGain = 12;
    profile.ulReserved21 = 0xDEADBEEF;
    SONY_SetExposure(0, 1, &profile);
    Hold(1);
    SonyInitVar4IMG();
    EXPECT_EQ(Nothing(), Run([] { return SonySetBlackWhiteMode(0, 2); }));
    EXPECT_EQ(2, gstImgDetectParam.lBlackWhiteMode);
    EXPECT_EQ(0U, SONY_GetExposureCfg(&read));
    EXPECT_EQ(12U, read.ulGain);
    EXPECT_EQ(0xDEADBEEF, read.ulReserved21);
}

// -1 stands for "unknown", so a request for it right after initialisation counts as unchanged.
TEST_F(ImageCacheTest, ARequestForMinusOneRightAfterInitialisationSendsNothing) {
    for (uint32_t type : {kKova, kSony1, kSony3, kSony4, kSony5}) {
        for (const Primitive &primitive : Primitives()) {
            const std::string &name = primitive.name;
            if (name == "SonySetVideoWBMode" || name == "SonySetDenoise3D" || name == "SonyImgSetWDRLevel" ||
                name == "SonyImgSetShutterScope" || name == "SonyImgSetGainScope") {
                continue;
            }
            Attach(type);
            EXPECT_EQ(Nothing(), Run([&] { return primitive.set(kUnset); })) << name;
        }
        EXPECT_EQ(Nothing(), Run([] { return SonyImgSetShutterScope(0, kUnset, kUnset); }));
        EXPECT_EQ(Nothing(), Run([] { return SonyImgSetGainScope(0, kUnset, kUnset); }));
    }
}

// These two compare the limited value, which is never -1.
TEST_F(ImageCacheTest, AValueThatIsLimitedBeforeItIsComparedIsNeverUnknown) {
    Attach(kKova);
    EXPECT_EQ(
        Sends({"55 00 00 0F 0F"}).Logs("WARN SonySetDenoise3D: ulDenoise3D[4294967295] out of 0 ~ 255\n"),
        Run([] { return SonySetDenoise3D(0, kUnset); }));
    EXPECT_EQ(Sends({"2D 00 00 00 09"})
                  .Logs("WARN SonyImgSetWDRLevel: ulWdrLevel[4294967295] too big, change to 9\n"),
              Run([] { return SonyImgSetWDRLevel(0, kUnset); }));
}

TEST_F(ImageCacheTest, LaterMinusOneIsAValueLikeAnyOther) {
    Attach(kKova);
    Shutter(500);
    EXPECT_EQ(Sends({"CB 0F 0F 0F 0F"}), Shutter(kUnset));
    EXPECT_EQ(Nothing(), Shutter(kUnset));
    Set("SonySetExpComp", false);
    EXPECT_EQ(Sends({"3E 02", "4E 00 00 00 07"}), Run([] { return SonySetExpComp(0, -1); }));
    Attach(kSony1);
    Shutter(500);
    EXPECT_EQ(Nothing().Logs("ERROR SonyImgSetShutter: shutter[4294967295] not supported, fail exit\n"),
              Shutter(kUnset));
}

// What is remembered belongs to the camera on the line, whatever its family: the type is asked for afresh.
TEST_F(ImageCacheTest, TheModuleTypeIsAskedForOnEachCall) {
    Attach(kSony1);
    EXPECT_EQ(Sends({"4A 00 00 00 0D"}), Shutter(500));
    EXPECT_EQ(Nothing(), Set("SonySetVideoBrightness", false));
    Exchange(kKova);
    EXPECT_EQ(Nothing(), Shutter(500));
    EXPECT_EQ(Sends({"CB 00 00 03 0C"}), Shutter(60));
    EXPECT_EQ(Sends({"A1 00 00 08 00"}), Set("SonySetVideoBrightness", false))
        << "a Sony block left it unknown";
    Exchange(kSony1);
    EXPECT_EQ(Sends({"4A 00 00 00 0D"}), Shutter(500));
}

TEST_F(ImageCacheTest, RefusalOfTheLinkItselfIsReportedByTheFunctionToo) {
    for (const Primitive &primitive : Primitives()) {
        Attach(kKova);
        ViscaSetCamCanCtrl(0);
        const Outcome outcome = Ask(primitive, false);
        EXPECT_EQ(1U, outcome.result) << primitive.name;
        EXPECT_EQ(Lines(), outcome.packets);
        EXPECT_EQ("WARN ViscaEnQueueCmd: Cam Can't Ctrl return directly\n", outcome.log.front());
        ViscaSetCamCanCtrl(1);
        ViscaMarkExportLog(1);
        EXPECT_EQ(1U, Ask(primitive, false).result) << primitive.name;
        ViscaMarkExportLog(0);
        EXPECT_EQ(Sends(primitive.kova_a), Ask(primitive, false)) << primitive.name;
    }
}

struct EntryRow {
    const char *function, *arguments;
    uint32_t (*call)();
};

const EntryRow kEntryRows[] = {
    {"SonySetExposureMode", "ulChannelID[9] ulExposureMode[77]", [] { return SonySetExposureMode(9, 77); }},
    {"SonyImgSetShutter", "ulChannelID[9] ulShutter[5]", [] { return SonyImgSetShutter(9, 5); }},
    {"SonyImgSetGain", "ulChannelID[9] ulGain[30]", [] { return SonyImgSetGain(9, 30); }},
    {"SonyImgSetIris", "ulChannelID[9] ulIris[1]", [] { return SonyImgSetIris(9, 1); }},
    {"SonyImgSetShutterScope", "ulChannelID[9] ulSlowShutter[7] ulFastShutter[6]",
     [] { return SonyImgSetShutterScope(9, 7, 6); }},
    {"SonyImgSetGainScope", "ulChannelID[9] ulMinGain[7] ulMaxGain[6]",
     [] { return SonyImgSetGainScope(9, 7, 6); }},
    {"SonyImgSetAutoSlowShutter", "ulChannelID[9] bIsAutoSlowShutter[1]",
     [] { return SonyImgSetAutoSlowShutter(9, 1); }},
    {"SonyImgSetAutoSlowShutterLimit", "ulChannelID[9] ulMaxSlowShutter[4]",
     [] { return SonyImgSetAutoSlowShutterLimit(9, 4); }},
    {"SonySetExpComp", "ulChannelID[9] lExpCompValue[-20]", [] { return SonySetExpComp(9, -20); }},
    {"SonySetAEMetering", "ulChannelID[9] ulMeteringMode[1]", [] { return SonySetAEMetering(9, 1); }},
    {"SonySetVideoWBMode", "ulChannelID[9] enAWBMode[14]", [] { return SonySetVideoWBMode(9, 14); }},
    {"SonySetManualWB", "ulChannelID[9] sROffset[-5] sBOffset[6]", [] { return SonySetManualWB(9, -5, 6); }},
    {"SonySetVideoBrightness", "ulChannelID[9] ulBrightness[3]", [] { return SonySetVideoBrightness(9, 3); }},
    {"SonySetVideoContrast", "ulChannelID[9] ulContrast[3]", [] { return SonySetVideoContrast(9, 3); }},
    {"SonySetVideoSaturation", "ulChannelID[9] ulSaturation[3]", [] { return SonySetVideoSaturation(9, 3); }},
    {"SonySetVideoSharpness", "ulChannelID[9] ulSharpness[3]", [] { return SonySetVideoSharpness(9, 3); }},
    {"SonySetDenoise2D", "ulChannelID[9] ulDenoise2D[3]", [] { return SonySetDenoise2D(9, 3); }},
    {"SonySetDenoise3D", "ulChannelID[9] ulDenoise3D[3]", [] { return SonySetDenoise3D(9, 3); }},
    {"SonySetDefogMode", "ulChannelID[9] ulMode[3]", [] { return SonySetDefogMode(9, 3); }},
    {"SonySetDefogSense", "ulChannelID[9] ulSense[3]", [] { return SonySetDefogSense(9, 3); }},
    {"SonySetBlackWhiteMode", "ulChannelID[9] ulBlackWhiteMode[2]",
     [] { return SonySetBlackWhiteMode(9, 2); }},
    {"SonyImgSetWDR", "ulChannelID[9] ulWdr[1]", [] { return SonyImgSetWDR(9, 1); }},
    {"SonyImgSetWDRLevel", "ulChannelID[9] ulWdrLevel[5]", [] { return SonyImgSetWDRLevel(9, 5); }},
};

// On entry, also when nothing is sent afterwards.
TEST_F(ImageCacheTest, EachSettingLogsItsArgumentsFirst) {
    for (uint32_t type : {kKova, kSony1}) {
        Attach(type);
        for (int round = 0; round < 2; ++round) {
            for (const EntryRow &row : kEntryRows) {
                Host().Forget();
                row.call();
                const std::string line = std::string("DEBUG ") + row.function + ": " + kEntry + row.arguments;
                EXPECT_EQ(line + "\n", Host().Log().at(0));
            }
        }
    }
}

} // namespace
} // namespace unit
