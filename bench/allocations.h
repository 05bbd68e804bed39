#ifndef VISCACAM_BENCH_ALLOCATIONS_H
#define VISCACAM_BENCH_ALLOCATIONS_H

#include <cstdint>

namespace bench {

/* Calls of malloc, calloc and realloc in this process so far, by whomever. */
uint64_t allocations();

} // namespace bench

#endif
