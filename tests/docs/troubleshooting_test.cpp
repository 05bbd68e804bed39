// docs/troubleshooting.md explains each ERROR and WARN text of the library, and no other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/docs/log_texts.h"
#include "tests/docs/page.h"

using docs::LogText;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

std::set<LogText> LibraryTexts() {
    std::set<LogText> texts;
    for (const char *folder : {"visca_que", "visca_sony_ctrl", "visca_common"})
        for (const std::string &file : docs::FilesUnder(folder, {".cpp", ".h"}))
            texts.merge(docs::LogTextsIn(docs::ReadSource(file)));
    return texts;
}

/// Rows whose first cell is a level. A wording can stand in several groups, where it means several things.
std::set<LogText> PageTexts() {
    std::set<LogText> texts;
    for (const docs::Cells &row : docs::TableRows(docs::ReadSource("docs/troubleshooting.md"), ""))
        if (row[0] == "ERROR" || row[0] == "WARN")
            texts.emplace(row[0], docs::Trimmed(docs::CodeIn(row[1])));
    return texts;
}

docs::Lines Missing(const std::set<LogText> &from, const std::set<LogText> &in) {
    docs::Lines lines;
    for (const LogText &text : in)
        if (from.count(text) == 0)
            lines.push_back("| " + text.first + " | `" + text.second + "` |");
    return lines;
}

} // namespace

TEST(Troubleshooting, ExplainsEveryErrorAndWarningOfTheLibrary) {
    const std::set<LogText> library = LibraryTexts();
    ASSERT_THAT(library, Not(IsEmpty()));
    EXPECT_THAT(Missing(PageTexts(), library), IsEmpty());
}

TEST(Troubleshooting, ExplainsNothingThatTheLibraryDoesNotSay) {
    EXPECT_THAT(Missing(LibraryTexts(), PageTexts()), IsEmpty());
}

TEST(Troubleshooting, SaysOfEveryTextWhatItMeansAndWhatToDo) {
    for (const docs::Cells &row : docs::TableRows(docs::ReadSource("docs/troubleshooting.md"), ""))
        if (row[0] == "ERROR" || row[0] == "WARN") {
            ASSERT_EQ(4U, row.size()) << row[1];
            EXPECT_THAT(row[2], Not(IsEmpty())) << row[1];
            EXPECT_THAT(row[3], Not(IsEmpty())) << row[1];
        }
}

TEST(LogTexts, AreFoundInCallsOfEveryForm) {
    const std::string source = "LOG_ERROR(\"a[%lu] \\n\", UL(x));\n"
                               "LOG_WARN_AS(pcCaller,\n    \"b \"\n    \"c\\n\");\n"
                               "LOG_ERROR_AT(rCaller, \"say \\\"d\\\"\\n\\n\");\n"
                               "#define LOG_WARN(message, ...) LOG_WARN_AS(__func__, message, \"e\")\n"
                               "LOG_INFO(\"f\\n\");\nMY_LOG_WARN(\"g\\n\");\nLOG_WARN(pcText);\n";
    EXPECT_THAT(docs::LogTextsIn(source),
                ElementsAre(LogText("ERROR", "a[%lu]"), LogText("ERROR", "say \"d\""),
                            LogText("WARN", "(no literal)"), LogText("WARN", "b c")));
}
