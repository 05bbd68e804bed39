// A page of docs/ as a test reads it.
#ifndef VISCACAM_TESTS_DOCS_PAGE_H
#define VISCACAM_TESTS_DOCS_PAGE_H

#include <string>
#include <vector>

namespace docs {

using Lines = std::vector<std::string>;
using Cells = std::vector<std::string>;

/// A file of the source tree, "docs/bench.md"; the test fails when it cannot be read.
std::string ReadSource(const std::string &path);

/// The lines of a text, without newlines.
Lines LinesOf(const std::string &text);

/// The files of a folder of the source tree and of those below it that end in one of the endings, sorted, as
/// "docs/bench.md".
Lines FilesUnder(const std::string &folder, const Lines &endings);

/// The rows of all tables of a page below the heading, up to the next one of any depth; head and rule left
/// out. Cells are trimmed. An empty heading takes the whole page.
std::vector<Cells> TableRows(const std::string &page, const std::string &heading);

/// The text between the first pair of backquotes; empty when there is none.
std::string CodeIn(const std::string &cell);

/// Without blanks at both ends.
std::string Trimmed(const std::string &text);

} // namespace docs

#endif
