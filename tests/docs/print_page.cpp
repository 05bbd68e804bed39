// Prints docs/packets.md as it should be; scripts/docs writes it there.
#include <cstdio>

#include "tests/docs/packets_page.h"

int main() {
    return std::fputs(docs::PacketsPage().c_str(), stdout) < 0 ? 1 : 0;
}
