#include "tests/docs/packets_page.h"

#include <gtest/gtest.h>

#include "tests/docs/page.h"

TEST(PacketsPage, SaysWhatTheDecodersTableSays) {
    const std::string page = docs::PacketsPage();
    const std::string committed = docs::ReadSource("docs/packets.md");
    EXPECT_TRUE(committed == page) << "docs/packets.md differs from the decoder's table: run scripts/docs, "
                                      "look at the difference, commit it";
}

TEST(PacketsPage, HoldsAKnownCommandWithItsValues) {
    const std::string line =
        "| `81 01 04 07 2p FF` | command | zoom tele at speed | both | `p` 0 slow to 7 fast |\n";
    EXPECT_NE(std::string::npos, docs::PacketsPage().find(line));
}

TEST(PacketsPage, LinksAValueToItsNames) {
    const std::string page = docs::PacketsPage();
    EXPECT_NE(std::string::npos, page.find("`p` digital zoom [switch](#switch)"));
    EXPECT_NE(std::string::npos, page.find("\n### switch\n\n| Value | Name |\n|---|---|\n| `0x02` | on |\n"));
}
