// Lines cut into commands and words.
#include "tool/ctl/words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tool::ctl {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Words, AreSeparatedByBlanks) {
    EXPECT_THAT(commandsOf(std::string("  zoom\tin   2s ")), ElementsAre(ElementsAre("zoom", "in", "2s")));
}

TEST(Words, OfSeveralCommandsAreSeparatedBySemicolons) {
    EXPECT_THAT(commandsOf(std::string("zoom in;zoom stop ; ;")),
                ElementsAre(ElementsAre("zoom", "in"), ElementsAre("zoom", "stop")));
}

TEST(Words, BehindAHashAreAComment) {
    EXPECT_THAT(commandsOf(std::string("info # who; is it")), ElementsAre(ElementsAre("info")));
    EXPECT_THAT(commandsOf(std::string("#info")), IsEmpty());
    EXPECT_THAT(commandsOf(std::string("a#b")), ElementsAre(ElementsAre("a#b")));
}

TEST(Words, InQuotesBelongTogether) {
    EXPECT_THAT(commandsOf(std::string("kova export-log '/tmp/a b;#c' \"\"")),
                ElementsAre(ElementsAre("kova", "export-log", "/tmp/a b;#c", "")));
    EXPECT_THROW(commandsOf(std::string("info 'never ended")), UsageError);
}

TEST(Words, ThatAShellHasCutAreNotCutAgain) {
    EXPECT_THAT(commandsOf(Words{"zoom", "in", "2s;", "kova", "export-log", "a b", ";", "info"}),
                ElementsAre(ElementsAre("zoom", "in", "2s"), ElementsAre("kova", "export-log", "a b"),
                            ElementsAre("info")));
    EXPECT_THAT(commandsOf(Words{"zoom in; info"}),
                ElementsAre(ElementsAre("zoom", "in"), ElementsAre("info")));
}

TEST(Words, OfALineThatIsBeingTypedHaveAnUnfinishedOne) {
    const Unfinished unfinished = unfinishedCommandOf("info; zoom i");
    EXPECT_THAT(unfinished.words, ElementsAre("zoom"));
    EXPECT_EQ(unfinished.begun, "i");
    EXPECT_EQ(unfinishedCommandOf("zoom ").begun, "");
    EXPECT_THAT(unfinishedCommandOf("zoom # in").words, IsEmpty());
}

TEST(Words, AreJoinedSoThatTheyCanBeCutAgain) {
    EXPECT_EQ(joined({"kova", "export-log", "a b", ""}), "kova export-log 'a b' ''");
    EXPECT_EQ(joined({"it's me"}), "\"it's me\"");
}

} // namespace tool::ctl
