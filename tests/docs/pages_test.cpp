// What holds for all pages together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>

#include "tests/docs/page.h"

using ::testing::IsEmpty;

namespace {

/// The anchor that a browser of the sources makes of a heading.
std::string Anchor(const std::string &heading) {
    std::string anchor;
    for (const char c : heading) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_')
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        else if (c == ' ')
            anchor += '-';
    }
    return anchor;
}

std::set<std::string> Anchors(const std::string &page) {
    std::set<std::string> anchors;
    for (const std::string &line : docs::LinesOf(page))
        if (!line.empty() && line[0] == '#')
            anchors.insert(Anchor(docs::Trimmed(line.substr(line.find_first_not_of('#')))));
    return anchors;
}

/// Empty, or why the link of a page leads nowhere.
std::string Broken(const std::string &page, const std::string &link) {
    namespace fs = std::filesystem;
    const std::size_t hash = link.find('#');
    const std::string file = link.substr(0, hash);
    const std::string target =
        file.empty() ? page : (fs::path(page).parent_path() / file).lexically_normal().string();
    if (!fs::exists(fs::path(VISCACAM_SOURCE_FOLDER) / target))
        return page + ": " + link;
    if (hash != std::string::npos && Anchors(docs::ReadSource(target)).count(link.substr(hash + 1)) == 0)
        return page + ": " + link;
    return "";
}

/// What the first group of an expression matched, all over a text.
std::set<std::string> Matches(const std::string &text, const std::regex &expression) {
    std::set<std::string> matches;
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at)
        matches.insert((*at)[1]);
    return matches;
}

docs::Lines BrokenLinks(const std::string &page) {
    static const std::regex kLink("\\]\\(([^)\\s]+)\\)");
    docs::Lines broken;
    for (const std::string &link : Matches(docs::ReadSource(page), kLink)) {
        const std::string why = link.compare(0, 4, "http") == 0 ? "" : Broken(page, link);
        if (!why.empty())
            broken.push_back(why);
    }
    return broken;
}

docs::Lines Pages() {
    docs::Lines pages = docs::FilesUnder("docs", {".md"});
    pages.insert(pages.end(), {"README.md", "CONTRIBUTING.md", "CHANGELOG.md"});
    return pages;
}

} // namespace

TEST(Pages, HaveNoLinkThatLeadsNowhere) {
    for (const std::string &page : Pages())
        EXPECT_THAT(BrokenLinks(page), IsEmpty());
}

TEST(Pages, AllStandInTheIndex) {
    const std::string index = docs::ReadSource("docs/README.md");
    for (const std::string &page : docs::FilesUnder("docs", {".md"})) {
        const std::string name = page.substr(5);
        if (name != "README.md") {
            EXPECT_NE(std::string::npos, index.find("(" + name + ")")) << name;
        }
    }
}

/// A block that nobody runs is a listing, and is marked as text.
TEST(Pages, HaveNoBlockOfAKindThatIsNotRun) {
    static const std::set<std::string> kKinds = {"sh", "sh beside", "sh root", "c", "text"};
    for (const std::string &page : docs::FilesUnder("docs", {".md"})) {
        bool inside = false;
        for (const std::string &line : docs::LinesOf(docs::ReadSource(page)))
            if (line.compare(0, 3, "```") == 0) {
                inside = !inside;
                EXPECT_TRUE(!inside || kKinds.count(line.substr(3)) == 1) << page << ": " << line;
            }
    }
}

TEST(Integrating, NamesEveryFunctionOfTheLibrary) {
    static const std::regex kFunction("\\b((?:VISCA|SONY|KOVA|Sony|Kova|Visca|AF|Adapt)[A-Za-z0-9_]*)\\(");
    const std::set<std::string> functions = Matches(docs::ReadSource("include/viscacam.h"), kFunction);
    static const std::regex kCode("`([A-Za-z0-9_]+)`");
    const std::set<std::string> named = Matches(docs::ReadSource("docs/integrating.md"), kCode);
    EXPECT_GT(functions.size(), 150U);
    for (const std::string &name : functions)
        EXPECT_TRUE(named.count(name) == 1 || name == "VISCACAM_NONNULL") << name;
}
