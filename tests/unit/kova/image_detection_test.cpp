// The image detection after a norm change: once in a process, what it sets, what it holds back, and its end.
#include "tests/unit/kova/behaviour_test.h"

#include "visca_sony_ctrl/image/settings_cache.h"

namespace unit {
namespace {

uint32_t Held() {
    return viscacam::g_stImageCache.bDetectImgHold;
}

void ExpectPending(int32_t mode, int32_t white_balance) {
    EXPECT_EQ(mode, gstImgDetectParam.lBlackWhiteMode);
    EXPECT_EQ(white_balance, gstImgDetectParam.lWbMode);
}

const Steps kDetection = {
    Pause(1000), Put("51 03"),          Put("01 03"),          Put("35 05"),
    Pause(500),  Put("43 00 00 00 00"), Put("44 00 00 0F 0E"), Pause(1500),
};

// Each test of it needs a process of its own, which ctest gives it.
class DetectionTest : public KovaTest {
  protected:
    void SetUp() override {
        if (IsDetectionUsedUp()) {
            GTEST_SKIP() << "the detection starts once in a process";
        }
        MarkDetectionUsedUp();
    }
    static void AnswerRegisters(const std::string &monitor_mode) {
        Answers({monitor_mode, "90 50 00 03 FF", "90 50 02 FF"});
    }
    static Lines Tail(size_t count) {
        const Lines story = Story();
        return {story.end() - static_cast<long>(std::min(count, story.size())), story.end()};
    }
};

TEST_F(DetectionTest, ItSetsDayModeAndAFixedWhiteBalanceAndHoldsBoth) {
    gstImgDetectParam = {7, 8, 9, 10};
    Host().OnRecord([](const Event &event) {
        if (event.call == Call::Put) {
            EXPECT_EQ(event.text == Put("51 03").event || event.text == Put("01 03").event ? 0U : 1U, Held())
                << event.text << ": held from the white balance on";
        }
    });
    KovaSetDetectImgParam(kKova);
    EXPECT_EQ(Events(kDetection), Story());
    EXPECT_EQ(1U, Held());
    ExpectPending(-1, -1);
    EXPECT_EQ(3000000U, Clib().Slept());
}

TEST_F(DetectionTest, ItAndItsEndSpeakOfChannelZero) {
    KovaSetDetectImgParam(kKova);
    gstImgDetectParam.lBlackWhiteMode = 1;
    EXPECT_EQ(0U, KOVA_ResumeDetectImgParam());
    const std::string entry = ": FUN_ENTRY--param:ulChannelID[0] ";
    const std::string day_night = "DEBUG SonySetBlackWhiteMode" + entry;
    EXPECT_EQ((Lines{day_night + "ulBlackWhiteMode[1]", day_night + "ulBlackWhiteMode[2]",
                     day_night + "ulBlackWhiteMode[1]"}),
              LogOf("SonySetBlackWhiteMode"));
    EXPECT_EQ((Lines{"DEBUG SonySetVideoWBMode" + entry + "enAWBMode[10]"}), LogOf("SonySetVideoWBMode"));
    EXPECT_EQ((Lines{"DEBUG SonySetManualWB" + entry + "sROffset[-127] sBOffset[127]"}),
              LogOf("SonySetManualWB"));
}

TEST_F(DetectionTest, ItStartsOnceInAProcess) {
    KovaSetDetectImgParam(0x02012FFF);
    EXPECT_EQ(1U, Held());
    EXPECT_EQ(0U, KOVA_ResumeDetectImgParam());
    Host().Forget();
    for (uint32_t type : kKovaTypes) {
        KovaSetDetectImgParam(type);
    }
    EXPECT_EQ(Lines(), Story());
    EXPECT_EQ(0U, Held());
}

TEST_F(DetectionTest, CallerTwoSkipsItButUsesItUp) {
    Host().SetCaller(2);
    KovaSetDetectImgParam(kKova);
    EXPECT_EQ(Lines(), Story());
    EXPECT_EQ(0U, Held());
    Host().SetCaller(0);
    KovaSetDetectImgParam(kKova);
    EXPECT_EQ(Lines(), Story());
    EXPECT_EQ(0U, Held());
}

TEST_F(DetectionTest, OtherModulesNeitherStartItNorUseItUp) {
    for (uint32_t type : kOtherTypes) {
        KovaSetDetectImgParam(type);
    }
    EXPECT_EQ(Lines(), Story());
    Host().SetModuleType(0x02000001); // the argument counts
    Host().SetCaller(1);              // and no caller but 2
    KovaSetDetectImgParam(0x02012000);
    EXPECT_EQ(Events(kDetection), Story());
}

TEST_F(DetectionTest, WhatTheModuleHasAlreadyIsNotSentAgain) {
    SonySetBlackWhiteMode(0, 1);
    SonySetVideoWBMode(0, 10);
    Host().Forget();
    KovaSetDetectImgParam(kKova);
    EXPECT_EQ(Events({Pause(1000), Pause(500), Put("43 00 00 00 00"), Put("44 00 00 0F 0E"), Pause(1500)}),
              Story());
}

TEST_F(DetectionTest, ANormChangeIsFollowedByIt) {
    AnswerRegisters("90 50 00 06 FF");
    const VideoNormParam norm = {1920, 1080, 25};
    EXPECT_EQ(0U, SONY_SetVin(&norm));
    EXPECT_EQ(Packets({"00 03", "24 72 00 08", "00 02", "51 03", "01 03", "35 05", "43 00 00 00 00",
                       "44 00 00 0F 0E"}),
              Host().Commands());
    EXPECT_EQ(Events(kDetection), Tail(kDetection.size()));
    EXPECT_EQ(1U, Held());
}

TEST_F(DetectionTest, ItStartsAlsoWhenTheModuleIsInTheNormAlready) {
    AnswerRegisters("90 50 00 06 FF");
    const VideoNormParam norm = {1920, 1080, 30};
    EXPECT_EQ(0U, SONY_SetVin(&norm));
    EXPECT_EQ(Events(Steps{Says("INFO SONY_SetVin: No Need Change Norm or Output or SyncMode")} + kDetection),
              Tail(kDetection.size() + 1));
}

TEST_F(DetectionTest, AFailedNormChangeDoesNotStartIt) {
    AnswerRegisters("90 50 00 06 FF");
    const VideoNormParam norm = {1920, 1080, 25};
    RefusePut(3);
    EXPECT_EQ(1U, SONY_SetVin(&norm));
    EXPECT_EQ(0U, Held());
    Host().Forget();
    KovaSetDetectImgParam(kKova);
    EXPECT_EQ(Events(kDetection), Story()) << "and does not use it up";
}

// A step that fails is logged and the next one follows.
struct FailingStep {
    const char *name;
    unsigned put;
    Steps story;
};

class DetectionFailureTest : public DetectionTest, public ::testing::WithParamInterface<FailingStep> {};

TEST_P(DetectionFailureTest, IsLoggedAndTheNextStepFollows) {
    gstImgDetectParam = {7, 8, 9, 10};
    RefusePut(GetParam().put);
    KovaSetDetectImgParam(kKova);
    EXPECT_EQ(Events(GetParam().story), Story());
    EXPECT_EQ(1U, Held());
    ExpectPending(-1, -1);
}

Step Wail(const std::string &line) {
    return Says("ERROR KovaSetDetectImgParam: " + line);
}

const Steps kWhiteBalance = {Put("35 05"), Pause(500), Put("43 00 00 00 00"), Put("44 00 00 0F 0E"),
                             Pause(1500)};
const Steps kDayMode = {Pause(1000), Put("51 03"), Put("01 03")};
const Step kNoDayMode = Wail("SonySetBlackWhiteMode(0, 1) fail exit");
const Step kNoOffsets = Wail("SonySetManualWB(0, -127, 127) fail exit");

INSTANTIATE_TEST_SUITE_P(
    Refused, DetectionFailureTest,
    ::testing::Values(
        FailingStep{"AutoIcr", 1,
                    Steps{Pause(1000), Put("51 03"),
                          Says("ERROR SonySetBlackWhiteMode: Switch to Auto ICR OFF fail exit"), kNoDayMode} +
                        kWhiteBalance},
        FailingStep{"Icr", 2,
                    kDayMode +
                        Steps{Says("ERROR SonySetBlackWhiteMode: ViscaEnQueueCmd() fail exit"), kNoDayMode} +
                        kWhiteBalance},
        FailingStep{"WhiteBalanceMode", 3,
                    kDayMode + Steps{Put("35 05"),
                                     Says("ERROR SonySetVideoWBMode: ViscaEnQueueCmd() fail exit"),
                                     Wail("SonySetVideoWBMode(0, 10) fail exit"), Pause(500),
                                     Put("43 00 00 00 00"), Put("44 00 00 0F 0E"), Pause(1500)}},
        FailingStep{"Red", 4,
                    kDayMode + Steps{Put("35 05"), Pause(500), Put("43 00 00 00 00"),
                                     Says("ERROR SonySetManualWB: DRV_SetManualWB Rgain fail exit"),
                                     kNoOffsets, Pause(1500)}},
        FailingStep{"Blue", 5,
                    kDayMode + Steps{Put("35 05"), Pause(500), Put("43 00 00 00 00"), Put("44 00 00 0F 0E"),
                                     Says("ERROR SonySetManualWB: ViscaEnQueueCmd() fail exit"), kNoOffsets,
                                     Pause(1500)}}),
    [](const auto &step) { return step.param.name; });

// --- held back, and the end

class HoldTest : public KovaTest {
  protected:
    /** As the detection leaves it. */
    static void Hold(ImgDetectParam pending = {-1, -1, 0, 0}) {
        Attach(kKova);
        viscacam::g_stImageCache.bDetectImgHold = 1;
        gstImgDetectParam = pending;
    }
    static void Ends(const Steps &steps) {
        EXPECT_EQ(0U, KOVA_ResumeDetectImgParam());
        EXPECT_EQ(Events(steps), Story());
        EXPECT_EQ(0U, Held());
    }
    const Steps m_night = {Put("51 03"), Put("01 02"), Pause(500)};
};

TEST_F(HoldTest, TheEndSetsNightMode) {
    Hold();
    Ends(m_night);
    Host().Forget();
    Ends({});
}

TEST_F(HoldTest, WithoutAHoldOrForCallerTwoThereIsNoEnd) {
    for (uint32_t flag : {0U, 2U, 0xFFFFFFFFU}) {
        Hold({1, 0, 0, 0});
        viscacam::g_stImageCache.bDetectImgHold = flag;
        EXPECT_EQ(0U, KOVA_ResumeDetectImgParam());
        EXPECT_EQ(flag, Held());
        EXPECT_EQ(Lines(), Story());
    }
    Hold({1, 0, 0, 0});
    Host().SetCaller(2);
    EXPECT_EQ(0U, KOVA_ResumeDetectImgParam());
    EXPECT_EQ(1U, Held());
    EXPECT_EQ(Lines(), Story());
}

TEST_F(HoldTest, RequestsAreHeldBackTheLastOneCounts) {
    Hold();
    const WhiteBalanceParam first = {0, 1, 2}, last = {1, 5, -5};
    EXPECT_EQ(0U, SonySetBlackWhiteMode(0, 1));
    EXPECT_EQ(0U, SonySetBlackWhiteMode(0, 3));
    EXPECT_EQ(0U, SONY_SetBlackWhiteMode(0, 0));
    EXPECT_EQ(0U, SONY_SetWhiteBalance(0, 0, &first));
    EXPECT_EQ(0U, SONY_SetWhiteBalance(0, 0, &last));
    EXPECT_EQ(Lines(), Story());
    ExpectPending(0, 1);
    EXPECT_EQ(5, gstImgDetectParam.lBlueOffset);
    EXPECT_EQ(-5, gstImgDetectParam.lRedOffset);
    Ends(m_night + Steps{Put("51 02"), Put("35 05"), Put("43 00 00 07 0A"),
                         Put("44 00 00 08 04")}); // 122 red, 132 blue
}

TEST_F(HoldTest, ThePendingDayNightModeIsAppliedAfterNightMode) {
    Hold({1, -1, 0, 0});
    Ends(m_night + Steps{Put("51 03"), Put("01 03")});
    Hold({2, -1, 0, 0});
    Ends(m_night);
    Hold({3, -1, 0, 0});
    Ends(m_night + Steps{Says("ERROR SonySetBlackWhiteMode: ulBlackWhiteMode[3] invalid, fail exit")});
}

TEST_F(HoldTest, ThePendingWhiteBalanceIsAppliedByItsMode) {
    const struct {
        int32_t mode;
        const char *packet;
    } rows[] = {{0, "35 04"}, {2, "35 00"}, {3, "35 04"}, {6, "35 07"}};
    for (const auto &row : rows) {
        Hold({-1, row.mode, 9, 9});
        Ends(m_night + Steps{Put(row.packet)});
    }
}

TEST_F(HoldTest, AFailureAtTheEndIsLoggedAndTheRestFollows) {
    const auto said = [](const std::string &line) {
        return Says("ERROR KOVA_ResumeDetectImgParam: " + line);
    };
    const Step auto_icr = Says("ERROR SonySetBlackWhiteMode: Switch to Auto ICR OFF fail exit");
    const Step icr = Says("ERROR SonySetBlackWhiteMode: ViscaEnQueueCmd() fail exit");
    const Steps rest = {Put("51 02"), Put("35 04")};
    const Step no_night = said("SonySetBlackWhiteMode(0, 2) fail exit");
    const Steps stories[] = {
        Steps{Put("51 03"), auto_icr, no_night, Pause(500)} + rest,
        Steps{Put("51 03"), Put("01 02"), icr, no_night, Pause(500)} + rest,
        m_night + Steps{Put("51 02"), icr, said("SonySetBlackWhiteMode failed"), Put("35 04")},
        m_night + rest +
            Steps{Says("ERROR SonySetVideoWBMode: ViscaEnQueueCmd() fail exit"),
                  Says("ERROR SONY_SetWhiteBalance: SonySetVideoWBMode(0, 11) fail exit"),
                  said("SONY_SetWhiteBalance failed")},
    };
    for (unsigned put = 1; put <= 4; ++put) {
        Hold({0, 0, 0, 0});
        RefusePut(put);
        Ends(stories[put - 1]);
    }
}

} // namespace
} // namespace unit
