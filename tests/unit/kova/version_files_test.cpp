// The version files that are written through the host's shell.
#include "tests/unit/kova/module_test.h"

#include <cctype>

namespace unit {
namespace {

const char kOldProgram[] = "90 50 00 0C 00 03 FF"; // D012SP03
const char kUimage[] = "90 50 00 01 02 03 FF";     // 1.23

class VersionFilesTest : public ModuleTest {
  protected:
    static Lines Shell() { return Host().Story({Call::System}); }
    static bool IsPlain(int byte) {
        return byte < 0x80 && (isalnum(byte) != 0 || byte == '.' || byte == '-' || byte == '_');
    }
    /** The shell lines for these two versions. */
    static Lines Written(const std::string &program, const std::string &uimage) {
        return {"system echo QDMV100R001B01" + program + " > /tmp/kova_interversion",
                "system echo QDM_730_842-" + program + " > /tmp/kova_version",
                "system echo \"Kernel  version: V" + uimage + "\" > /tmp/kova_kversion"};
    }
    const std::string m_entry = "DEBUG KovaDumpVerInfo: FUN_ENTRY--param:\n";
    const std::string m_no_program = "WARN KovaDumpVerInfo: KovaGetCurKovaProgramVer fail not exit\n";
    const std::string m_no_uimage = "WARN KovaDumpVerInfo: KovaGetCurKovaUimageVer fail not exit\n";
};

TEST_F(VersionFilesTest, ThreeFilesAreWrittenEachAfterItsInquiry) {
    Host().AnswerInquiry(kOldProgram);
    Host().AnswerInquiry(kUimage);
    EXPECT_EQ(0U, KovaDumpVerInfo());
    EXPECT_THAT(Host().Story({Call::ModuleType, Call::Send, Call::System}),
                ElementsAre("module type", "send 71 09 04 B2 FF",
                            "system echo QDMV100R001B01D012SP03 > /tmp/kova_interversion",
                            "system echo QDM_730_842-D012SP03 > /tmp/kova_version", "send 71 09 04 B1 FF",
                            "system echo \"Kernel  version: V1.23\" > /tmp/kova_kversion"));
    EXPECT_EQ(m_entry, Host().Log().front());
    EXPECT_THAT(Complained(), IsEmpty());
}

TEST_F(VersionFilesTest, TheSecondGenerationHasItsOwnStampAndModel) {
    for (uint32_t type : {0x02012A00U, 0x02012A01U, 0x02012A02U, 0x02012AFFU}) {
        Attach(type);
        Host().AnswerInquiry(kOldProgram);
        Host().AnswerInquiry(kUimage);
        EXPECT_EQ(0U, KovaDumpVerInfo());
        EXPECT_THAT(Shell(), ElementsAre("system echo QDMV200R001B02D012SP03 > /tmp/kova_interversion",
                                         "system echo QDM_K4410-D012SP03 > /tmp/kova_version",
                                         "system echo \"Kernel  version: V1.23\" > /tmp/kova_kversion"));
    }
}

TEST_F(VersionFilesTest, EveryOtherTypeHasThoseOfTheFirst) {
    for (uint32_t type : {0x02012000U, 0x02012005U, 0x02012100U, 0x02012200U, 0x020129FFU, 0x02012B00U}) {
        Attach(type);
        Host().AnswerInquiry(kOldProgram);
        Host().AnswerInquiry(kUimage);
        EXPECT_EQ(0U, KovaDumpVerInfo());
        EXPECT_EQ(Written("D012SP03", "1.23"), Shell()) << std::hex << type;
    }
}

TEST_F(VersionFilesTest, WithoutAProgramVersionNothingIsWrittenOrAskedFor) {
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(0U, KovaDumpVerInfo());
    EXPECT_THAT(Shell(), IsEmpty());
    EXPECT_THAT(Host().Sent(), ElementsAre("71 09 04 B2 FF"));
    EXPECT_EQ(m_no_program, Host().Log().back());
}

TEST_F(VersionFilesTest, WithoutAUimageVersionTheLastFileIsNotWritten) {
    Host().AnswerInquiry(kOldProgram);
    Host().AnswerInquiry(kErrorReply);
    EXPECT_EQ(0U, KovaDumpVerInfo());
    EXPECT_THAT(Shell(), SizeIs(2));
    EXPECT_EQ(m_no_uimage, Host().Log().back());
}

TEST_F(VersionFilesTest, ASilentModulesVersionsAreZero) {
    EXPECT_EQ(0U, KovaDumpVerInfo());
    EXPECT_EQ(Written("D000", "0.0"), Shell());
    EXPECT_THAT(Complained(), ElementsAre(m_time_out, m_time_out));
}

TEST_F(VersionFilesTest, AShellThatFailsStopsNothing) {
    Host().Fail(Call::System, 1, kForEver);
    Host().AnswerInquiry(kOldProgram);
    Host().AnswerInquiry(kUimage);
    EXPECT_EQ(0U, KovaDumpVerInfo());
    EXPECT_EQ(Written("D012SP03", "1.23"), Shell());
    EXPECT_THAT(Complained(), IsEmpty());
}

TEST_F(VersionFilesTest, TheProgramVersionIsCutToSixteenCharacters) {
    const struct {
        size_t length, written;
    } cases[] = {{0, 0}, {15, 15}, {16, 16}, {17, 16}, {99, 16}, {150, 16}};
    for (const auto &test : cases) {
        Attach(kKova, kSegmented);
        AnswerCodes(Bytes(test.length, 7));
        Host().AnswerInquiry(kUimage);
        EXPECT_EQ(0U, KovaDumpVerInfo());
        EXPECT_EQ(Written(std::string(test.written, '7'), "1.23"), Shell()) << test.length;
    }
}

TEST_F(VersionFilesTest, LettersAndDigitsOfASegmentedVersionAreWritten) {
    Attach(kKovaGen2, kSegmented);
    AnswerCodes({kLetter, 0, 3, 0, 1, 3, kLetter, 1, 8, kLetter, 1, 5});
    Host().AnswerInquiry(kUimage);
    EXPECT_EQ(0U, KovaDumpVerInfo());
    EXPECT_EQ("system echo QDM_K4410-D013SP > /tmp/kova_version", Shell().at(1));
}

TEST_F(VersionFilesTest, EveryCharacterOfAUimageVersionThatIsNotPlainKeepsItFromTheShell) {
    for (unsigned value = 0; value <= 0xFF; ++value) {
        Host().Forget();
        Host().AnswerInquiry(kOldProgram);
        Host().AnswerInquiry(Reply({0, static_cast<uint8_t>(value), 2, 3}));
        EXPECT_EQ(0U, KovaDumpVerInfo());
        const int byte = static_cast<int>((0x30 + value) & 0xFF); // the digit, not checked
        Lines expected = Written("D012SP03", std::string(1, static_cast<char>(byte)) + ".23");
        if (byte == 0) {
            expected = Written("D012SP03", ""); // the text ends with it
        } else if (!IsPlain(byte)) {
            expected.pop_back();
            EXPECT_EQ(m_no_uimage, Host().Log().back()) << value;
        }
        EXPECT_EQ(expected, Shell()) << value;
    }
}

TEST_F(VersionFilesTest, EveryCharacterOfAProgramVersionThatIsNotPlainKeepsItFromTheShell) {
    Attach(kKova, kSegmented);
    for (unsigned tens = 0; tens <= 15; ++tens) {
        for (unsigned units = 0; units <= 15; ++units) {
            Host().Forget();
            AnswerCodes({1, kLetter, static_cast<uint8_t>(tens), static_cast<uint8_t>(units)});
            EXPECT_EQ(0U, KovaDumpVerInfo());
            const int byte = static_cast<int>(0x41 + tens * 10 + units);
            if (IsPlain(byte)) {
                EXPECT_EQ(Written(std::string("1") + static_cast<char>(byte), "0.0"), Shell());
            } else {
                EXPECT_THAT(Shell(), IsEmpty()) << byte;
                EXPECT_EQ(m_no_program, Host().Log().back());
                EXPECT_EQ(2U, Host().Sent().size()) << "the uImage version is not asked for";
            }
        }
    }
}

TEST_F(VersionFilesTest, WhateverTheModuleAnswersTheShellSeesPlainVersionsOnly) {
    const std::string before[] = {"system echo QDMV100R001B01", "system echo QDM_730_842-",
                                  "system echo \"Kernel  version: V"};
    const std::string behind[] = {" > /tmp/kova_interversion", " > /tmp/kova_version",
                                  "\" > /tmp/kova_kversion"};
    for (size_t at = 0; at < 4; ++at) {
        for (unsigned value = 0; value <= 0xFF; ++value) {
            Host().Forget();
            Host().AnswerEveryInquiry(Reply(OneByte(4, at, value)));
            EXPECT_EQ(0U, KovaDumpVerInfo());
            const Lines shell = Shell();
            ASSERT_LE(shell.size(), 3U);
            for (size_t i = 0; i < shell.size(); ++i) {
                const size_t fixed = before[i].size() + behind[i].size();
                ASSERT_GE(shell[i].size(), fixed);
                const std::string version = shell[i].substr(before[i].size(), shell[i].size() - fixed);
                EXPECT_EQ(before[i] + version + behind[i], shell[i]);
                EXPECT_LE(version.size(), 16U);
                for (char character : version) {
                    EXPECT_TRUE(IsPlain(static_cast<unsigned char>(character))) << shell[i];
                }
            }
        }
    }
}

} // namespace
} // namespace unit
