// The versions of an upgrade package, from its version file /tmp/update/QDM_VERSION.
#include "tests/unit/kova/module_test.h"

#include <cstdio>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

namespace unit {
namespace {

const char kFolder[] = "/tmp/update", kFile[] = "/tmp/update/QDM_VERSION", kKept[] = "/tmp/update/kept";

// What stands between the word and the version: two separators, or a stamp of fourteen characters and one.
const std::string kBeforeUimage = "VER_NEW: ", kBeforeProgram = "VER_NEW:QDMV200R001B02";

struct Reader {
    const char *name;
    uint32_t (*read)(char *);
    unsigned line;
    const std::string &before;
    const char *no_file, *no_mark;
};
std::ostream &operator<<(std::ostream &out, const Reader &reader) {
    return out << reader.name;
}
const Reader kUimage = {"KovaGetNewKovaUimageVer",
                        KovaGetNewKovaUimageVer,
                        2,
                        kBeforeUimage,
                        "fopen the QDM_VERSION fail exit\n",
                        "the buffer no VER_NEW info, fail exit\n"};
const Reader kProgram = {"KovaGetNewKovaProgramVer",      KovaGetNewKovaProgramVer,       3, kBeforeProgram,
                         "fopen the QDM_VERSION fail!\n", "the buffer no need VER_NEW!\n"};

const char kPackage[] = "package of May\n"
                        "uImage VER_NEW: 1.24 uImage.bin\n"
                        "program VER_NEW:QDMV200R001B02D013SP01 program.bin\n"
                        "end VER_NEW:QDMV200R001B02D999 \n";

/** The package's folder with no version file; one that stands there already is put aside meanwhile. */
class PackageVersionTest : public ModuleTest, public ::testing::WithParamInterface<Reader> {
  protected:
    PackageVersionTest() : m_made(mkdir(kFolder, 0777) == 0), m_kept(rename(kFile, kKept) == 0) {}
    ~PackageVersionTest() override {
        unlink(kFile);
        if (m_kept) {
            rename(kKept, kFile);
        }
        if (m_made) {
            rmdir(kFolder);
        }
    }
    static void Write(const std::string &content) {
        FILE *file = fopen(kFile, "w");
        ASSERT_NE(nullptr, file);
        fwrite(content.data(), 1, content.size(), file);
        fclose(file);
    }
    /** A file whose line for this reader is the one given. */
    static void WriteLine(const std::string &line) {
        Write((GetParam().line == 2 ? "first line\n" : "first line\nsecond line\n") + line);
    }
    uint32_t Read() { return GetParam().read(m_version.data()); }
    std::string Line(const std::string &level, const std::string &message) const {
        return level + " " + GetParam().name + ": " + message;
    }
    std::string Content(unsigned number, const std::string &content) const {
        return Line("DEBUG",
                    "QDM_VESION the line " + std::to_string(number) + " content is " + content + "\n");
    }
    CallersBuffer<100> m_version;

  private:
    bool m_made, m_kept;
};

TEST_P(PackageVersionTest, TheVersionStandsBehindTheMarkUpToTheNextBlank) {
    WriteLine("image " + GetParam().before + "D013SP01 of May\n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("D013SP01", m_version.text());
    EXPECT_TRUE(m_version.intact());
    EXPECT_THAT(Host().Story({Call::Send, Call::Put}), IsEmpty());
}

TEST_P(PackageVersionTest, EveryLineReadIsLoggedAndTheVersionTwice) {
    Write(kPackage);
    EXPECT_EQ(0U, Read());
    const std::string start = "QDM_VESION new ver is ";
    Lines log = {Content(1, "package of May\n"), Content(2, "uImage VER_NEW: 1.24 uImage.bin\n")};
    if (GetParam().line == 2) {
        log.push_back(Line("DEBUG", start + "1.24 uImage.bin\n\n"));
        log.push_back(Line("DEBUG", start + "1.24\n"));
    } else {
        log.push_back(Content(3, "program VER_NEW:QDMV200R001B02D013SP01 program.bin\n"));
        log.push_back(Line("DEBUG", start + "D013SP01 program.bin\n\n"));
        log.push_back(Line("DEBUG", start + "D013SP01\n"));
    }
    EXPECT_EQ(log, Host().Log());
}

TEST_P(PackageVersionTest, AMissingFileFailsAndLeavesTheBuffer) {
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Host().Log(), ElementsAre(Line("ERROR", GetParam().no_file)));
    EXPECT_TRUE(m_version.untouched());
}

TEST_P(PackageVersionTest, ALineWithoutTheMarkFailsAndLeavesTheBuffer) {
    WriteLine("VER_NE W: D013 ver_new\n" + GetParam().before + "behind it \n");
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Complained(), ElementsAre(Line("ERROR", GetParam().no_mark)));
    EXPECT_TRUE(m_version.untouched());
}

TEST_P(PackageVersionTest, AnEmptyFileHasNoMark) {
    Write("");
    EXPECT_EQ(1U, Read());
    EXPECT_THAT(Host().Log(), ElementsAre(Line("ERROR", GetParam().no_mark)));
    EXPECT_TRUE(m_version.untouched());
}

TEST_P(PackageVersionTest, OfAFileThatIsTooShortTheLastLineIsSearched) {
    Write(GetParam().before + "D013 \n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("D013", m_version.text());
    Write("first line\n");
    EXPECT_EQ(1U, Read());
}

TEST_P(PackageVersionTest, MarksOfEarlierLinesDoNotCount) {
    const std::string marked = GetParam().before + "old ";
    Write(GetParam().line == 2 ? marked + "\nnone\n" : marked + "\n" + marked + "\nnone\n");
    EXPECT_EQ(1U, Read());
}

TEST_P(PackageVersionTest, TheFirstMarkOfALineCounts) {
    WriteLine(GetParam().before + "1.1 " + GetParam().before + "2.2 \n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("1.1", m_version.text());
}

TEST_P(PackageVersionTest, WithoutABlankTheVersionEndsInFrontOfTheNewline) {
    WriteLine(GetParam().before + "1.24\nmore of it \n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("1.24", m_version.text());
}

TEST_P(PackageVersionTest, WithoutANewlineItEndsWithTheFile) {
    WriteLine(GetParam().before + "1.24");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("1.24", m_version.text());
    EXPECT_TRUE(m_version.intact());
}

TEST_P(PackageVersionTest, AVersionThatBeginsWithABlankIsEmpty) {
    WriteLine(GetParam().before + " 1.24 \n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("", m_version.text());
}

TEST_P(PackageVersionTest, AVersionBehindTheEndOfTheLineIsEmpty) {
    for (const char *line : {"VER_NEW", "VER_NEW\n", "VER_NEW:\n", "x VER_NEW: \nVER_NEW: VER_NEW"}) {
        WriteLine(line);
        EXPECT_EQ(0U, Read()) << line;
        EXPECT_EQ("", m_version.text());
    }
    for (size_t length = 7; length <= GetParam().before.size(); ++length) {
        WriteLine(GetParam().before.substr(0, length) + "\n");
        EXPECT_EQ(0U, Read());
        EXPECT_EQ("", m_version.text());
    }
}

TEST_P(PackageVersionTest, AVersionOfNinetyNineCharactersFits) {
    WriteLine(GetParam().before + std::string(99, '7') + " \n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ(std::string(99, '7'), m_version.text());
    EXPECT_TRUE(m_version.intact());
    EXPECT_THAT(Complained(), IsEmpty());
}

TEST_P(PackageVersionTest, ALongerVersionIsCutWithAWarning) {
    for (size_t length : {100U, 200U, 300U, 4000U}) {
        Host().Forget();
        WriteLine(GetParam().before + std::string(length, '7') + " \n");
        EXPECT_EQ(0U, Read());
        EXPECT_EQ(std::string(99, '7'), m_version.text());
        EXPECT_TRUE(m_version.intact());
        EXPECT_THAT(Complained(), ElementsAre(Line("WARN", "Version text too long, cut to 99 characters\n")));
    }
}

TEST_P(PackageVersionTest, WhatWasReadIsLoggedBeforeItIsCutAndAfterwards) {
    WriteLine(GetParam().before + std::string(100, '7') + " \n");
    EXPECT_EQ(0U, Read());
    const Lines log = Host().Log();
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ((Lines{Line("DEBUG", "QDM_VESION new ver is " + std::string(100, '7') + " \n\n"),
                     Line("WARN", "Version text too long, cut to 99 characters\n"),
                     Line("DEBUG", "QDM_VESION new ver is " + std::string(99, '7') + "\n")}),
              Lines(log.end() - 3, log.end()));
}

TEST_P(PackageVersionTest, ALineIsReadUpToItsTwoHundredAndFiftyFourthCharacter) {
    const struct {
        size_t start; // of the version in its line
        const char *version;
    } cases[] = {{251, "12"}, {252, "12"}, {253, "1"}, {254, ""}, {256, ""}};
    for (const auto &test : cases) {
        const std::string filler(test.start - GetParam().before.size(), 'x');
        WriteLine(filler + GetParam().before + "12 \n");
        EXPECT_EQ(0U, Read());
        EXPECT_EQ(test.version, m_version.text()) << test.start;
    }
    WriteLine(std::string(248, 'x') + "VER_NEW: 12 \n");
    EXPECT_EQ(1U, Read()) << "only VER_NE is within reach";
}

TEST_P(PackageVersionTest, AFirstLineOfTwoHundredAndFiftyThreeCharactersIsOneLine) {
    const std::string second = GetParam().line == 2 ? "" : "second\n";
    Write(std::string(253, 'x') + "\n" + second + GetParam().before + "1.24 \n");
    EXPECT_EQ(0U, Read());
    EXPECT_EQ("1.24", m_version.text());
}

TEST_P(PackageVersionTest, TheRestOfALongerLineCountsAsTheNext) {
    for (size_t length : {254U, 255U, 256U}) {
        const std::string second = GetParam().line == 2 ? "" : "second\n";
        Host().Forget();
        Write(std::string(length, 'x') + "\n" + second + GetParam().before + "1.24 \n");
        EXPECT_EQ(1U, Read());
        EXPECT_EQ(Content(1, std::string(254, 'x')), Host().Log().at(0));
        EXPECT_EQ(Content(2, std::string(length - 254, 'x') + "\n"), Host().Log().at(1));
    }
}

TEST_P(PackageVersionTest, TheFileIsClosedWhateverCameOfIt) {
    const size_t before = OpenDescriptors();
    WriteLine(GetParam().before + "1.24 \n");
    EXPECT_EQ(0U, Read());
    WriteLine("nothing\n");
    EXPECT_EQ(1U, Read());
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_P(PackageVersionTest, AFolderInPlaceOfTheFileHasNoMark) {
    ASSERT_EQ(0, mkdir(kFile, 0777));
    EXPECT_EQ(1U, Read());
    EXPECT_TRUE(m_version.untouched());
    rmdir(kFile);
}

TEST_P(PackageVersionTest, EveryOtherCharacterIsPartOfTheVersion) {
    for (int byte = 1; byte <= 0xFF; ++byte) {
        const char character = static_cast<char>(byte);
        if (character == ' ' || character == '\n') {
            continue;
        }
        Host().Forget();
        WriteLine(GetParam().before + "1" + character + "2 3\n");
        EXPECT_EQ(0U, Read());
        EXPECT_EQ(std::string("1") + character + "2", m_version.text()) << byte;
    }
}

TEST_P(PackageVersionTest, AnyContentStaysWithinTheBuffer) {
    for (int byte = 0; byte <= 0xFF; ++byte) {
        const char character = static_cast<char>(byte);
        const std::string filler(300, character);
        for (const std::string &content :
             {filler, GetParam().before + filler, "a\n" + GetParam().before + filler + "\n" + filler,
              "a\nb\n" + filler.substr(0, 100) + GetParam().before + filler}) {
            Host().Forget();
            Write(content);
            CallersBuffer<100> version;
            const uint32_t result = GetParam().read(version.data());
            EXPECT_TRUE(version.intact());
            EXPECT_TRUE(result == 0 || (result == 1 && version.untouched()));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Versions, PackageVersionTest, ::testing::Values(kUimage, kProgram));

} // namespace
} // namespace unit
