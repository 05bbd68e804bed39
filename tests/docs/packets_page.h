// docs/packets.md, made from the decoder's table.
#ifndef VISCACAM_TESTS_DOCS_PACKETS_PAGE_H
#define VISCACAM_TESTS_DOCS_PACKETS_PAGE_H

#include <string>

namespace docs {

/// The whole page.
std::string PacketsPage();

} // namespace docs

#endif
