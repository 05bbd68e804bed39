#include "fuzz/law.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {

void Broken(const char *file, int line, const char *law) {
    std::fprintf(stderr, "%s:%d: broken law: %s\n", file, line, law);
    std::abort();
}

} // namespace fuzz
