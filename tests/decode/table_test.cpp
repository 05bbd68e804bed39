// Laws of the table itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "decode/pattern.h"
#include "decode/table.h"
#include "decode/words.h"

using namespace decode;

namespace {

std::vector<const Row *> AllRows() {
    std::vector<const Row *> rows;
    for (const Subject &subject : Table())
        for (std::size_t i = 0; i < subject.count; ++i)
            rows.push_back(&subject.rows[i]);
    return rows;
}

bool StandsAlone(const Row &row) {
    return row.kind != Kind::Answer || row.fallback;
}

std::string LettersOf(const std::string &pattern) {
    std::string letters;
    std::copy_if(pattern.begin(), pattern.end(), std::back_inserter(letters), IsLetter);
    return letters;
}

std::string Sorted(std::string text) {
    std::sort(text.begin(), text.end());
    return text;
}

void ExpectToldApart(const Row &a, const Row &b) {
    if (!Overlap(a.pattern, b.pattern))
        return;
    EXPECT_NE(Precision(a.pattern), Precision(b.pattern)) << a.pattern << " and " << b.pattern;
}

void ExpectAllToldApart(const std::vector<const Row *> &rows) {
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = i + 1; j < rows.size(); ++j)
            if (rows[i]->direction == rows[j]->direction && rows[i]->form == rows[j]->form)
                ExpectToldApart(*rows[i], *rows[j]);
}

} // namespace

TEST(Table, NoTwoRowsFitTheSamePacketEquallyWell) {
    std::vector<const Row *> rows;
    for (const Row *row : AllRows())
        if (StandsAlone(*row))
            rows.push_back(row);
    ExpectAllToldApart(rows);
}

TEST(Table, NoTwoAnswersToOneInquiryFitEquallyWell) {
    for (const Row *row : AllRows())
        ExpectAllToldApart(AnswersOf(*row));
}

TEST(Table, EveryInquiryHasAnAnswer) {
    for (const Row *row : AllRows())
        if (row->kind == Kind::Inquiry && !row->fallback) {
            EXPECT_FALSE(AnswersOf(*row).empty()) << row->pattern;
        }
}

TEST(Table, EveryAnswerBelongsToAnInquiry) {
    std::set<const Row *> owned;
    for (const Row *row : AllRows())
        for (const Row *answer : AnswersOf(*row))
            owned.insert(answer);
    for (const Row *row : AllRows())
        if (!StandsAlone(*row)) {
            EXPECT_EQ(owned.count(row), 1U) << row->name;
        }
}

TEST(Table, PatternsFitTheDirectionAndTheFraming) {
    for (const Row *row : AllRows()) {
        const std::string pattern = row->pattern;
        const std::string start = pattern.substr(0, 2);
        if (row->direction == Direction::ToCamera) {
            EXPECT_TRUE(start == "81" || start == "71" || start == "88") << pattern;
        } else {
            EXPECT_TRUE(start == "90" || start == "88" || start == "66") << pattern;
        }
        if (row->kind != Kind::Debug) {
            EXPECT_EQ(pattern.substr(pattern.size() - 2), "FF") << pattern;
        }
        EXPECT_LE((pattern.size() + 1) / 3, 16U) << pattern;
    }
}

TEST(Table, EveryParameterIsExplainedAndShown) {
    for (const Row *row : AllRows()) {
        std::string explained, shown;
        for (const Parameter &parameter : ParametersOf(*row)) {
            EXPECT_FALSE(parameter.meaning.empty()) << row->pattern;
            explained += parameter.letters;
        }
        for (const Placeholder &placeholder : PlaceholdersOf(row->words))
            if (placeholder.letters != "segment")
                shown += placeholder.letters;
        const std::string letters = LettersOf(row->pattern);
        EXPECT_EQ(Sorted(explained), Sorted(letters)) << row->pattern;
        if (row->kind != Kind::Answer) {
            EXPECT_EQ(Sorted(shown), Sorted(letters)) << row->pattern << " " << row->words;
        }
    }
}

TEST(Table, EveryFormatExists) {
    for (const Row *row : AllRows())
        for (const Placeholder &placeholder : PlaceholdersOf(row->words))
            EXPECT_TRUE(IsFormat(placeholder.format)) << row->words;
}

TEST(Table, SubjectsHaveTitlesAndRowsHaveNames) {
    for (const Subject &subject : Table()) {
        EXPECT_STRNE(subject.title, "");
        EXPECT_GT(subject.count, 0U);
    }
    for (const Row *row : AllRows())
        EXPECT_STRNE(row->name, "") << row->pattern;
}

TEST(Table, ParametersComeWithTheirFormatsAndNamedValues) {
    const Bytes write = {0x81, 0x01, 0x04, 0x24, 0x72, 0x00, 0x06, 0xFF};
    const std::vector<Parameter> parameters =
        ParametersOf(*FindRow(Direction::ToCamera, write.data(), write.size()));
    ASSERT_EQ(parameters.size(), 2U);
    EXPECT_EQ(parameters[0].letters, "rr");
    EXPECT_EQ(parameters[0].format, "register");
    EXPECT_EQ(parameters[1].meaning, "value");
    const std::vector<NamedValue> values = ValuesOf("register");
    ASSERT_EQ(values.size(), 5U);
    EXPECT_EQ(values[3].value, 0x72U);
    EXPECT_STREQ(values[3].name, "monitor mode");
    EXPECT_TRUE(ValuesOf("hex").empty());
}

TEST(Pattern, WellFormedPatternsHaveTwoCharactersAByte) {
    static_assert(IsWellFormed("81 01 04 07 2p FF"));
    static_assert(IsWellFormed("90 50 *t FF"));
    static_assert(!IsWellFormed(""));
    static_assert(!IsWellFormed("8"));
    static_assert(!IsWellFormed("81 0"));
    static_assert(!IsWellFormed("81 01 "));
    static_assert(!IsWellFormed("81  01"));
    static_assert(!IsWellFormed("81 0? FF"));
    static_assert(!IsWellFormed("8p 01 FF"));
    static_assert(!IsWellFormed("81 +t *u FF"));
}

TEST(Pattern, ARunTakesWhatTheFixedBytesLeave) {
    const Bytes bytes = {0x90, 0x50, 1, 2, 3, 0xFF};
    Captures captures;
    ASSERT_TRUE(Matches("90 50 +t FF", bytes.data(), bytes.size(), &captures));
    EXPECT_EQ(*captures.Run('t'), (Bytes{1, 2, 3}));
    const Bytes none = {0x90, 0x50, 0xFF};
    EXPECT_FALSE(Matches("90 50 +t FF", none.data(), none.size(), nullptr));
    EXPECT_TRUE(Matches("90 50 *t FF", none.data(), none.size(), nullptr));
    EXPECT_FALSE(Matches("90 50 *t FF", none.data(), 2, nullptr));
}

TEST(Pattern, ALetterThatComesTwiceIsSpeltTwice) {
    const Bytes bytes = {0x81, 0x72, 0x05, 0xFF};
    Captures captures;
    ASSERT_TRUE(Matches("81 rr 0p FF", bytes.data(), bytes.size(), &captures));
    EXPECT_EQ(captures.Number("rr", 2), 0x72U);
    EXPECT_EQ(captures.Number("p", 1), 5U);
    EXPECT_FALSE(captures.Number("pp", 2));
}

TEST(Pattern, OverlapIsFoundAcrossRuns) {
    EXPECT_TRUE(Overlap("90 5p FF", "90 50 *t FF"));
    EXPECT_FALSE(Overlap("90 5p FF", "90 50 +t FF"));
    EXPECT_FALSE(Overlap("90 50 0p FF", "90 50 1p FF"));
    EXPECT_TRUE(Overlap("81 09 04 B4 0b FF", "81 09 04 B4 03 FF"));
}
