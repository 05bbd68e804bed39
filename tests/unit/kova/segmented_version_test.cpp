// Versions that come in segments: the program version of modules that can, and the extension version.
#include "tests/unit/kova/module_test.h"

#include <ostream>

namespace unit {
namespace {

struct Version {
    const char *name, *inquiry, *label, *null_message;
    uint32_t (*read)(char *);
    uint32_t ability;
};
std::ostream &operator<<(std::ostream &out, const Version &version) {
    return out << version.name;
}
const Version kProgram = {"KovaGetCurKovaProgramVer", "71 09 04 B2 FF", "pcKovaProgramVer", "ptr == NULL\n",
                          KovaGetCurKovaProgramVer,   kSegmented};
const Version kExtension = {"KovaGetExtVer",      "71 09 04 B5 FF", "pcExtVer",
                            "pcExtVer == NULL\n", KovaGetExtVer,    kExtVersion};

class SegmentedVersionTest : public ModuleTest, public ::testing::WithParamInterface<Version> {
  protected:
    SegmentedVersionTest() { Attach(kKova, GetParam().ability); }

    uint32_t Read() { return GetParam().read(m_version.data()); }
    std::string Line(const std::string &level, const std::string &message) const {
        return level + " " + GetParam().name + ": " + message;
    }
    std::string Closing(const std::string &text) const {
        return Line("INFO", std::string(GetParam().label) + "[" + text + "]\n");
    }
    CallersBuffer<100> m_version;
};

TEST_P(SegmentedVersionTest, ACountOfZeroIsTheEmptyTextAndASuccess) {
    AnswerCount(0);
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("", m_version.text());
    EXPECT_THAT(Host().Sent(), ElementsAre(GetParam().inquiry));
    EXPECT_THAT(Host().Log(), ElementsAre(Line("INFO", "ulSegCnt[0]\n"), Closing("")));
}

TEST_P(SegmentedVersionTest, OneSegmentIsAskedForWithTheSameInquiry) {
    AnswerCount(1);
    Host().AnswerInquiry("90 50 04 05 06 FF");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("456", m_version.text());
    EXPECT_THAT(Host().Sent(), ElementsAre(GetParam().inquiry, GetParam().inquiry));
    EXPECT_THAT(Host().Log(), ElementsAre(Line("INFO", "ulSegCnt[1]\n"), Closing("456")));
}

TEST_P(SegmentedVersionTest, SegmentsAreStrungTogetherBeforeTheyAreDecoded) {
    AnswerCount(4);
    for (const char *reply : {"90 50 0A FF", "90 50 01 02 07 FF", "90 50 FF", "90 50 00 FF"}) {
        Host().AnswerInquiry(reply);
    }
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("M70", m_version.text());
    EXPECT_THAT(Host().Sent(), SizeIs(5));
}

TEST_P(SegmentedVersionTest, OnlyLowNibblesCountInTheNumberAndInTheData) {
    Host().AnswerInquiry("90 50 F0 E0 D0 C1 FF");
    Host().AnswerInquiry("90 50 31 42 5A 60 72 FF");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("12C", m_version.text());
}

TEST_P(SegmentedVersionTest, TheNumberOfSegmentsIsFourNibblesTheHighestFirst) {
    AnswerCount(0x1234);
    Host().AnswerEveryInquiry("90 50 FF");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("", m_version.text());
    EXPECT_THAT(Host().Sent(), SizeIs(1 + 4660));
    EXPECT_EQ(Line("INFO", "ulSegCnt[4660]\n"), Host().Log().front());
}

TEST_P(SegmentedVersionTest, ASegmentEndsAtItsTerminator) {
    AnswerCount(1);
    Host().AnswerInquiry("90 50 01 02 FF 03 04 05");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("12", m_version.text());
}

TEST_P(SegmentedVersionTest, ASegmentWithoutTerminatorEndsWithItsPacket) {
    AnswerCount(1);
    Host().AnswerInquiry("90 50 01 02 03 04 05 06 07 08 09 00 01 02 03 04");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("12345678901234", m_version.text());
}

TEST_P(SegmentedVersionTest, AFailedRepetitionTakesThePreviousAnswerOnceMore) {
    AnswerCount(4);
    for (const char *reply : {"90 50 07 08 FF", kErrorReply, kErrorReply, "90 50 09 FF"}) {
        Host().AnswerInquiry(reply);
    }
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("7878789", m_version.text());
    EXPECT_THAT(Host().Sent(), SizeIs(5));
    const std::string failed = Line("ERROR", "ViscaInquiry failed not exit\n");
    EXPECT_THAT(Complained(), ElementsAre(failed, failed));
}

TEST_P(SegmentedVersionTest, AFirstRepetitionThatFailsTakesTheNumberItself) {
    AnswerCount(1);
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("0001", m_version.text());
}

TEST_P(SegmentedVersionTest, ARepetitionThatIsRefusedIsNotFatalEither) {
    AnswerCount(2);
    Host().AnswerInquiry("90 50 07 FF");
    Host().Fail(Call::Send, 3);
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("77", m_version.text());
    EXPECT_EQ(1U, Host().CountLogged(VISCA_LOG_ERROR, GetParam().name, "ViscaInquiry failed not exit\n"));
}

TEST_P(SegmentedVersionTest, ASilentRepetitionTakesThePreviousAnswerWithoutAWordOfItsOwn) {
    AnswerCount(2);
    Host().AnswerInquiry("90 50 05 FF");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("55", m_version.text());
    EXPECT_THAT(Complained(), ElementsAre(m_time_out));
}

TEST_P(SegmentedVersionTest, ASilentModuleHasNoSegments) {
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("", m_version.text());
    EXPECT_THAT(Host().Log(), ElementsAre(m_time_out, Line("INFO", "ulSegCnt[0]\n"), Closing("")));
    EXPECT_THAT(Host().Sent(), SizeIs(1));
}

TEST_P(SegmentedVersionTest, AFailedFirstInquiryLeavesTheBuffer) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Host().Log(), ElementsAre(Line("ERROR", "ViscaInquiry failed exit\n")));
    EXPECT_TRUE(m_version.untouched());
    EXPECT_THAT(Host().Sent(), SizeIs(1));
}

TEST_P(SegmentedVersionTest, ARefusedFirstInquiryLeavesTheBuffer) {
    ViscaMarkExportLog(1);
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Host().Log(), ElementsAre("DEBUG ViscaInquiry: ViscaIsExportLog true\n",
                                          Line("ERROR", "ViscaInquiry failed exit\n")));
    EXPECT_TRUE(m_version.untouched());
}

TEST_P(SegmentedVersionTest, ANullBufferIsRefusedWithoutTraffic) {
    EXPECT_EQ(1U, GetParam().read(nullptr));
    EXPECT_THAT(Host().Story({Call::Log, Call::Send}), ElementsAre(Line("ERROR", GetParam().null_message)));
}

TEST_P(SegmentedVersionTest, DigitsAreThemselves) {
    AnswerCodes({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("0123456789", m_version.text());
}

TEST_P(SegmentedVersionTest, LettersAreCountedFromAInTwoDecimalDigits) {
    Bytes codes;
    for (uint8_t letter = 0; letter < 26; ++letter) {
        codes.insert(codes.end(),
                     {kLetter, static_cast<uint8_t>(letter / 10), static_cast<uint8_t>(letter % 10)});
    }
    AnswerCodes(codes);
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("ABCDEFGHIJKLMNOPQRSTUVWXYZ", m_version.text());
}

TEST_P(SegmentedVersionTest, ALetterThatIsCutOffReadsTheMissingDigitsAsZero) {
    AnswerCodes({1, kLetter});
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("1A", m_version.text());
    AnswerCodes({kLetter, 2});
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("U", m_version.text());
}

TEST_P(SegmentedVersionTest, UnknownCodesFailAndLeaveTheBuffer) {
    for (uint8_t code : {12, 13, 14, 15}) {
        for (const Bytes &codes : {Bytes{code}, Bytes{1, 2, code}, Bytes{kLetter, 0, 0, code, 1}}) {
            Host().Forget();
            AnswerCodes(codes);
            EXPECT_EQ(1U, Read());
            EXPECT_EQ(Line("ERROR", "Serial Transmit error, please try again\n"), Host().Log().back());
            EXPECT_TRUE(m_version.untouched());
        }
    }
}

TEST_P(SegmentedVersionTest, InsideALetterEveryCodeIsADigit) {
    AnswerCodes({kLetter, 15, 15, kLetter, kLetter, 12});
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("\xE6\xB1", m_version.text()); // 65 + 150 + 15, 65 + 100 + 12
}

TEST_P(SegmentedVersionTest, HundredAndNinetySixCodesAreKept) {
    // Sixty-five letters are 195 codes. The last one kept begins a letter whose digits are lost.
    AnswerCodes(Repeat(65, {kLetter, 0, 1}, {kLetter, 0, 2, 12}));
    EXPECT_EQ(0U, Read());
    EXPECT_EQ(std::string(65, 'B') + "A", m_version.text());
    EXPECT_THAT(Host().Sent(), SizeIs(1 + 16));
}

TEST_P(SegmentedVersionTest, TheHundredAndNinetySixthCodeStillCounts) {
    AnswerCodes(Repeat(65, {kLetter, 0, 1}, {7}));
    EXPECT_EQ(0U, Read());
    EXPECT_EQ(std::string(65, 'B') + "7", m_version.text());
    AnswerCodes(Repeat(65, {kLetter, 0, 1}, {12}));
    EXPECT_EQ(1U, Read());
}

TEST_P(SegmentedVersionTest, WithAFullBufferTheModuleIsAskedToTheEnd) {
    AnswerCount(40);
    Host().AnswerEveryInquiry(Reply({kLetter, 0, 3}));
    EXPECT_EQ(0U, Read());
    EXPECT_EQ(std::string(40, 'D'), m_version.text());
    AnswerCount(100);
    EXPECT_EQ(0U, Read());
    EXPECT_EQ(std::string(65, 'D') + "A", m_version.text());
    EXPECT_THAT(Host().Sent(), SizeIs(41 + 101));
}

TEST_P(SegmentedVersionTest, ATextOfNinetyNineCharactersFits) {
    AnswerCodes(Bytes(99, 5));
    EXPECT_EQ(0U, Read());
    EXPECT_EQ(std::string(99, '5'), m_version.text());
    EXPECT_TRUE(m_version.intact());
    EXPECT_THAT(Complained(), IsEmpty());
}

TEST_P(SegmentedVersionTest, ALongerTextIsCutWithAWarning) {
    for (size_t length : {100U, 150U, 196U, 230U}) {
        Host().Forget();
        AnswerCodes(Bytes(length, 5));
        EXPECT_EQ(0U, Read());
        EXPECT_EQ(std::string(99, '5'), m_version.text());
        EXPECT_TRUE(m_version.intact());
        EXPECT_THAT(Complained(), ElementsAre(Line("WARN", "Version text too long, cut to 99 characters\n")));
        EXPECT_EQ(Closing(std::string(99, '5')), Host().Log().back());
    }
}

TEST_P(SegmentedVersionTest, AnUnknownCodeBehindTheCutStillFails) {
    AnswerCodes(Repeat(150, {5}, {12}));
    EXPECT_EQ(1U, Read());
    EXPECT_TRUE(m_version.untouched());
}

TEST_P(SegmentedVersionTest, NoByteOfASegmentWritesOutsideTheText) {
    for (size_t at = 0; at < 14; ++at) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            AnswerCount(1);
            Host().AnswerInquiry(Reply(OneByte(14, at, value)));
            CallersBuffer<15> version; // fourteen characters at the most
            const uint32_t result = GetParam().read(version.data());
            EXPECT_TRUE(version.intact());
            EXPECT_TRUE(result == 0 || (result == 1 && version.untouched()));
        }
    }
}

TEST_P(SegmentedVersionTest, NoSegmentOfOneValueWritesOutsideTheText) {
    for (unsigned value = 0; value <= 0xFF; ++value) {
        Host().Forget();
        AnswerCount(20);
        for (unsigned segment = 0; segment < 20; ++segment) {
            Host().AnswerInquiry(Reply(Bytes(14, static_cast<uint8_t>(value))));
        }
        CallersBuffer<100> version;
        const uint32_t result = GetParam().read(version.data());
        EXPECT_TRUE(version.intact());
        EXPECT_TRUE(result == 0 || (result == 1 && version.untouched()));
    }
}

INSTANTIATE_TEST_SUITE_P(Versions, SegmentedVersionTest, ::testing::Values(kProgram, kExtension));

class ExtensionVersionTest : public ModuleTest {
  protected:
    ExtensionVersionTest() { Attach(kKova, kExtVersion); }
    /** What the module answers when it is asked for a version, in one segment. */
    static void AnswerOneSegment(const std::string &reply) {
        Host().AnswerInquiry("90 50 00 00 00 01 FF");
        Host().AnswerInquiry(reply);
    }
    CallersBuffer<100> m_version;
};

TEST_F(ExtensionVersionTest, AModuleWithoutOneIsUnknownAndIsNotAsked) {
    for (uint32_t ability : {0U, ~kExtVersion}) {
        Attach(kKova, ability);
        CallersBuffer<8> version;
        EXPECT_EQ(0U, KovaGetExtVer(version.data()));
        EXPECT_EQ("UNKNOWN", version.text());
        EXPECT_TRUE(version.intact());
        EXPECT_THAT(Host().Story({Call::Send, Call::Log}), IsEmpty());
    }
}

TEST_F(ExtensionVersionTest, ANullBufferIsRefusedEvenWithoutTheAbility) {
    Attach(kKova, 0);
    EXPECT_EQ(1U, KovaGetExtVer(nullptr));
    EXPECT_THAT(Host().Log(), ElementsAre("ERROR KovaGetExtVer: pcExtVer == NULL\n"));
}

TEST_F(ExtensionVersionTest, DependsOnItsOwnBitAlone) {
    Attach(kKova, kExtVersion); // the program version is in the old form then
    AnswerOneSegment("90 50 01 0A 00 02 0B 00 03 FF");
    EXPECT_EQ(0U, KovaGetExtVer(m_version.data()));
    EXPECT_EQ("1C-3", m_version.text());
}

TEST_F(ExtensionVersionTest, TheProgramVersionKnowsNoSeparators) {
    Attach(kKova, kSegmented);
    AnswerOneSegment("90 50 01 0A 00 02 0B 00 03 FF");
    EXPECT_EQ(1U, KovaGetCurKovaProgramVer(m_version.data()));
    EXPECT_THAT(Complained(),
                ElementsAre("ERROR KovaGetCurKovaProgramVer: Serial Transmit error, please try again\n"));
    EXPECT_TRUE(m_version.untouched());
}

TEST_F(ExtensionVersionTest, ASeparatorIsADashForZeroAndAnUnderscoreForAllElse) {
    for (uint8_t code = 0; code <= 15; ++code) {
        AnswerOneSegment(Reply({1, kSeparator, code, 2}));
        EXPECT_EQ(0U, KovaGetExtVer(m_version.data()));
        EXPECT_EQ(code == 0 ? "1-2" : "1_2", m_version.text());
    }
}

TEST_F(ExtensionVersionTest, ASeparatorThatIsCutOffIsADash) {
    AnswerOneSegment("90 50 01 0B FF");
    EXPECT_EQ(0U, KovaGetExtVer(m_version.data()));
    EXPECT_EQ("1-", m_version.text());
}

TEST_F(ExtensionVersionTest, ASeparatorAtTheEndOfAFullBufferIsADash) {
    AnswerCodes(Repeat(65, {kLetter, 0, 1}, {kSeparator, 1}));
    EXPECT_EQ(0U, KovaGetExtVer(m_version.data()));
    EXPECT_EQ(std::string(65, 'B') + "-", m_version.text());
}

TEST_F(ExtensionVersionTest, BothNamesReadIt) {
    AnswerOneSegment("90 50 01 0B 01 02 FF");
    EXPECT_EQ(0U, KOVA_GetExtVer(m_version.data()));
    EXPECT_EQ("1_2", m_version.text());
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(1U, KOVA_GetExtVer(m_version.data()));
    EXPECT_EQ(1U, KOVA_GetExtVer(nullptr));
}

} // namespace
} // namespace unit
