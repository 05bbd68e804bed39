// Which files an upgrade sends, and whether it starts at all.
#include "tests/unit/field/field_test.h"

namespace unit {
namespace {

class UpgradeDecisionTest : public FieldTest {
  protected:
    TestFile m_patch{kPatchFile}, m_version_file{kVersionFile};

    /** What the four readers find: uImage and program of the package, then of the module. */
    static void Tell(const std::string &new_uimage, const std::string &new_program,
                     const std::string &cur_uimage, const std::string &cur_program) {
        g_versions = {
            {false, 0, new_uimage}, {false, 0, new_program}, {false, 0, cur_uimage}, {false, 0, cur_program}};
    }
    static uint32_t Update() { return KOVA_UpdateKova(CallBack); }
    static Lines Compared(const std::string &new_uimage, const std::string &new_program,
                          const std::string &cur_uimage, const std::string &cur_program) {
        const std::string debug = "DEBUG KOVA_UpdateKova: ";
        return {debug + "KovaGetNewKovaUimageVer szNewImagebuf is " + new_uimage + " ",
                debug + "KovaGetNewKovaProgramVer szNewImagebuf is " + new_program + " ",
                debug + "KovaGetCurKovaUimageVer szCurImagebuf is " + cur_uimage + " ",
                debug + "KovaGetCurKovaProgramVer szCurProgrambuf is " + cur_program};
    }
    static Lines Started(const std::string &word) {
        return {"INFO KOVA_UpdateKova: gulUpdateFileforKova is " + word, "thread create", "thread detach"};
    }
    /** Nothing was started, nothing will be, and the host hears nothing of it. */
    static void ExpectNothingStarted() {
        EXPECT_EQ(0U, gulUpdateFileforKova);
        EXPECT_THAT(Clib().ThreadStarts(), IsEmpty());
        EXPECT_EQ(0U, CountStarting("callback"));
        EXPECT_EQ(0U, ViscaIsUpdatingCam());
    }
};

// Needs a process of its own, as ctest gives it.
TEST(UpgradeAtLoad, NoFileIsToBeSent) {
    EXPECT_EQ(0U, gulUpdateFileforKova);
}

TEST_F(UpgradeDecisionTest, WithoutACallbackNothingStarts) {
    m_patch.Write("patch");
    EXPECT_EQ(1U, KOVA_UpdateKova(nullptr));
    EXPECT_EQ((Lines{"ERROR KOVA_UpdateKova: fCallBack == NULL"}), Story());
    ExpectNothingStarted();
}

TEST_F(UpgradeDecisionTest, WithoutACallbackARunningUpgradeIsNotLookedAt) {
    gulUpdateFileforKova = 2;
    EXPECT_EQ(1U, KOVA_UpdateKova(nullptr));
    EXPECT_EQ((Lines{"ERROR KOVA_UpdateKova: fCallBack == NULL"}), Story());
    EXPECT_EQ(2U, gulUpdateFileforKova);
}

TEST_F(UpgradeDecisionTest, APatchGoesAloneAndNoVersionIsAskedFor) {
    m_patch.Write("");
    EXPECT_EQ(0U, Update());
    EXPECT_EQ(Join({{"INFO KOVA_UpdateKova: patch update kova"}, Started("0x400")}), Story());
    EXPECT_EQ(0x400U, gulUpdateFileforKova);
}

TEST_F(UpgradeDecisionTest, ThePatchIsOnlyLookedForAndClosedAgain) {
    m_patch.Write("patch");
    const size_t before = OpenDescriptors();
    EXPECT_EQ(0U, Update());
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(UpgradeDecisionTest, TheWorkerGetsTheCallbackAndDefaultAttributes) {
    m_patch.Write("patch");
    EXPECT_EQ(0U, Update());
    const std::vector<ThreadStart> starts = Clib().ThreadStarts();
    ASSERT_THAT(starts, SizeIs(1));
    EXPECT_EQ(KovaUpgradeThread, starts[0].body);
    EXPECT_EQ(reinterpret_cast<void *>(CallBack), starts[0].argument);
    EXPECT_TRUE(starts[0].default_attributes);
}

TEST_F(UpgradeDecisionTest, AnyDifferenceOfAVersionSendsItsFile) {
    const std::string ten = "0123456789", twenty = "01234567890123456789";
    const struct {
        std::string new_uimage, new_program, cur_uimage, cur_program;
        uint32_t word;
        const char *logged;
    } cases[] = {
        {"1.23", "D013", "1.23", "D013", 0, "0"},
        {"1.24", "D013", "1.23", "D013", 1, "0x1"},
        {"1.22", "D013", "1.23", "D013", 1, "0x1"},
        {"1.23", "D014", "1.23", "D013", 2, "0x2"},
        {"1.23", "D012", "1.23", "D013", 2, "0x2"},
        {"1.24", "D014", "1.23", "D013", 3, "0x3"},
        {"1.2", "D013", "1.23", "D013", 1, "0x1"},
        {"1.23", "D013SP01", "1.23", "D013", 2, "0x2"},
        {"", "", "", "", 0, "0"},
        {"", "", "1.23", "", 1, "0x1"},
        {"", "d013", "", "D013", 2, "0x2"},
        // The tenth character counts, the eleventh does not; the twentieth, not the twenty-first.
        {"012345678a", "D013", "012345678b", "D013", 1, "0x1"},
        {ten + "a", "D013", ten + "b", "D013", 0, "0"},
        {ten, "D013", ten + "b", "D013", 0, "0"},
        {"1.23", "0123456789012345678a", "1.23", "0123456789012345678b", 2, "0x2"},
        {"1.23", twenty + "a", "1.23", twenty + "b", 0, "0"},
        {"1.23", twenty, "1.23", twenty + "b", 0, "0"},
        {"1.23", ten + "a", "1.23", ten + "b", 2, "0x2"},
    };
    for (const auto &test : cases) {
        Restart();
        Tell(test.new_uimage, test.new_program, test.cur_uimage, test.cur_program);
        EXPECT_EQ(0U, Update());
        EXPECT_EQ(test.word, gulUpdateFileforKova);
        EXPECT_EQ(Join({Compared(test.new_uimage, test.new_program, test.cur_uimage, test.cur_program),
                        Started(test.logged)}),
                  Story());
    }
}

TEST_F(UpgradeDecisionTest, VersionsOfNinetyNineCharactersAreCompared) {
    const std::string longest(99, '7');
    Tell(longest, longest, longest, longest);
    EXPECT_EQ(0U, Update());
    EXPECT_EQ(Join({Compared(longest, longest, longest, longest), Started("0")}), Story());
}

TEST_F(UpgradeDecisionTest, EqualVersionsStillStartTheWorkerWhichTouchesNothing) {
    Tell("1.23", "D013", "1.23", "D013");
    EXPECT_EQ(0U, Update());
    ForgetStory();
    const ThreadStart worker = Clib().ThreadStarts().at(0);
    EXPECT_EQ(nullptr, worker.body(worker.argument));
    EXPECT_EQ((Lines{"DEBUG KovaUpgradeThread: FUN_ENTRY--param:",
                     "INFO KovaUpgradeThread: No need update kova", "callback 0"}),
              Story());
}

TEST_F(UpgradeDecisionTest, EachVersionThatCannotBeReadEndsIt) {
    const Lines compared = Compared("1.24", "D014", "1.23", "D013");
    const char *const readers[] = {"KovaGetNewKovaUimageVer", "KovaGetNewKovaProgramVer",
                                   "KovaGetCurKovaUimageVer", "KovaGetCurKovaProgramVer"};
    for (long failing = 0; failing < 4; ++failing) {
        Restart();
        Tell("1.24", "D014", "1.23", "D013");
        VersionAnswer *const answers[] = {&g_versions.new_uimage, &g_versions.new_program,
                                          &g_versions.cur_uimage, &g_versions.cur_program};
        answers[failing]->result = 1;
        EXPECT_EQ(1U, Update());
        EXPECT_EQ(Join({Lines(compared.begin(), compared.begin() + failing),
                        {std::string("ERROR KOVA_UpdateKova: ") + readers[failing] + " fail exit"}}),
                  Story());
        ExpectNothingStarted();
    }
}

TEST_F(UpgradeDecisionTest, AFailedReadDoesNotBarTheNextTry) {
    EXPECT_EQ(1U, Update()) << "neither patch nor version file";
    EXPECT_TRUE(HasLine("ERROR KovaGetNewKovaUimageVer: fopen the QDM_VERSION fail exit"));
    ExpectNothingStarted();
    Tell("1.24", "D013", "1.23", "D013");
    EXPECT_EQ(0U, Update());
    EXPECT_EQ(1U, gulUpdateFileforKova);
}

// From a package and a module as they are.
TEST_F(UpgradeDecisionTest, PackageFirstThenModuleUimageBeforeProgram) {
    m_version_file.Write("package\nuImage VER_NEW: 1.24 \nprogram VER_NEW:QDMV100R001B01D013 \n");
    Host().AnswerInquiry("90 50 00 01 02 04 FF"); // 1.24
    Host().AnswerInquiry("90 50 00 0C 00 00 FF"); // D012
    During("send 71 09 04 B2 FF", [] { EXPECT_EQ(0U, gulUpdateFileforKova) << "written at the end only"; });
    EXPECT_EQ(0U, Update());
    EXPECT_EQ(2U, gulUpdateFileforKova);
    EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 B1 FF", "71 09 04 B2 FF"));
    Lines own;
    for (const std::string &line : Story()) {
        if (line.find(" KOVA_UpdateKova: ") != std::string::npos) {
            own.push_back(line);
        }
    }
    EXPECT_EQ(Join({Compared("1.24", "D013", "1.24", "D012"), {Started("0x2").front()}}), own);
}

TEST_F(UpgradeDecisionTest, AProgramVersionInSegmentsIsComparedOverTwentyCharacters) {
    for (const char last_code : {'4', '5'}) {
        Restart();
        KovaSetCamAbility(0x04);
        m_version_file.Write("package\nVER_NEW: 1.23 \nVER_NEW:QDMV100R001B01"
                             "1234567890123456789"
                             "4x \n");
        Host().AnswerInquiry("90 50 00 01 02 03 FF");
        Host().AnswerInquiry("90 50 00 00 00 02 FF");
        Host().AnswerInquiry("90 50 01 02 03 04 05 06 07 08 09 00 01 02 03 FF");
        Host().AnswerInquiry(std::string("90 50 04 05 06 07 08 09 0") + last_code + " 01 FF");
        EXPECT_EQ(0U, Update());
        EXPECT_EQ(last_code == '4' ? 0U : 2U, gulUpdateFileforKova);
    }
}

TEST_F(UpgradeDecisionTest, AModuleThatRefusesItsVersionStartsNothing) {
    m_version_file.Write("package\nVER_NEW: 1.24 \nVER_NEW:QDMV100R001B01D013 \n");
    Host().AnswerInquiry("90 50 00 01 02 03 FF");
    Host().AnswerInquiry("90 60 41 FF");
    EXPECT_EQ(1U, Update());
    EXPECT_EQ("ERROR KOVA_UpdateKova: KovaGetCurKovaProgramVer fail exit", Story().back());
    ExpectNothingStarted();
}

TEST_F(UpgradeDecisionTest, AStartedUpgradeIsNotStartedAgainUntilTheHostClearsTheWord) {
    m_patch.Write("patch");
    EXPECT_EQ(0U, Update());
    ForgetStory();
    EXPECT_EQ(0U, Update());
    EXPECT_EQ((Lines{"WARN KOVA_UpdateKova: Upgrading..., ignore this cmd"}), Story());
    EXPECT_EQ(0x400U, gulUpdateFileforKova);
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(1));
    gulUpdateFileforKova = 0;
    EXPECT_EQ(0U, Update());
    EXPECT_THAT(Clib().ThreadStarts(), SizeIs(2));
}

TEST_F(UpgradeDecisionTest, AnyBitOfTheWordMeansStarted) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        Restart();
        gulUpdateFileforKova = 1U << bit;
        EXPECT_EQ(0U, Update());
        EXPECT_EQ((Lines{"WARN KOVA_UpdateKova: Upgrading..., ignore this cmd"}), Story());
        EXPECT_EQ(1U << bit, gulUpdateFileforKova);
    }
}

TEST_F(UpgradeDecisionTest, AWorkerThatCannotBeCreatedIsReportedBothWaysAndTheWordIsKept) {
    m_patch.Write("patch");
    Host().Fail(Call::ThreadCreate);
    EXPECT_EQ(1U, Update());
    EXPECT_EQ((Lines{"INFO KOVA_UpdateKova: patch update kova",
                     "INFO KOVA_UpdateKova: gulUpdateFileforKova is 0x400", "thread create",
                     "ERROR KOVA_UpdateKova: create thread ExportLogThread fail exit", "callback 1"}),
              Story());
    EXPECT_EQ(0x400U, gulUpdateFileforKova);
    EXPECT_EQ(0U, Update()) << "ignored, as after any started upgrade";
    EXPECT_THAT(Clib().ThreadStarts(), IsEmpty());
}

TEST_F(UpgradeDecisionTest, OnceTheWordIsClearedAnUpgradeGoesThroughFromTheFirstCall) {
    m_patch.Write("patch");
    Host().Fail(Call::ThreadCreate);
    EXPECT_EQ(1U, Update());
    gulUpdateFileforKova = 0;
    EXPECT_EQ(0U, Update());
    Host().AnswerEveryInquiry("90 50 00 04 FF");
    const ThreadStart worker = Clib().ThreadStarts().at(0);
    worker.body(worker.argument);
    EXPECT_EQ("callback 0", Story().back());
    EXPECT_EQ(0x400U, gulUpdateFileforKova) << "the library never clears it";
}

} // namespace
} // namespace unit
