// The ERROR and WARN lines that the library's sources can log.
#ifndef VISCACAM_TESTS_DOCS_LOG_TEXTS_H
#define VISCACAM_TESTS_DOCS_LOG_TEXTS_H

#include <set>
#include <string>
#include <utility>

namespace docs {

/// Level ("ERROR", "WARN") and format, without newline and blanks at its ends.
using LogText = std::pair<std::string, std::string>;

/// The log calls in a C++ source. A call without a literal format is told as the format "(no literal)".
std::set<LogText> LogTextsIn(const std::string &source);

} // namespace docs

#endif
