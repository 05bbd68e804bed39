#include "tests/docs/page.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace docs {
namespace {

bool EndsWith(const std::string &text, const std::string &ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

/// "| a | b |" in two cells. No cell of ours holds a '|'.
Cells Split(const std::string &line) {
    Cells cells;
    std::stringstream stream(line.substr(1));
    for (std::string cell; std::getline(stream, cell, '|');)
        cells.push_back(Trimmed(cell));
    return cells;
}

bool IsRule(const std::string &line) {
    return line.find_first_not_of("|-: ") == std::string::npos;
}

} // namespace

std::string ReadSource(const std::string &path) {
    std::ifstream file(std::string(VISCACAM_SOURCE_FOLDER) + "/" + path);
    EXPECT_TRUE(file.good()) << path;
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

Lines LinesOf(const std::string &text) {
    Lines lines;
    std::stringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Lines FilesUnder(const std::string &folder, const Lines &endings) {
    namespace fs = std::filesystem;
    const fs::path root(VISCACAM_SOURCE_FOLDER);
    Lines files;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root / folder)) {
        const std::string path = fs::relative(entry.path(), root).string();
        if (entry.is_regular_file() &&
            std::any_of(endings.begin(), endings.end(),
                        [&](const std::string &ending) { return EndsWith(path, ending); }))
            files.push_back(path);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Cells> TableRows(const std::string &page, const std::string &heading) {
    std::vector<Cells> rows;
    bool inside = heading.empty();
    bool in_table = false;
    for (const std::string &line : LinesOf(page)) {
        if (!heading.empty() && !line.empty() && line[0] == '#')
            inside = Trimmed(line.substr(line.find_first_not_of('#'))) == heading;
        const bool row = inside && !line.empty() && line[0] == '|';
        if (row && IsRule(line))
            in_table = true;
        else if (row && in_table)
            rows.push_back(Split(line));
        in_table = in_table && row;
    }
    return rows;
}

std::string CodeIn(const std::string &cell) {
    const std::size_t begin = cell.find('`');
    const std::size_t end = begin == std::string::npos ? begin : cell.find('`', begin + 1);
    return end == std::string::npos ? "" : cell.substr(begin + 1, end - begin - 1);
}

std::string Trimmed(const std::string &text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    const std::size_t end = text.find_last_not_of(" \t\r\n");
    return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

} // namespace docs
