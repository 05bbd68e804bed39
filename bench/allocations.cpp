#include "bench/allocations.h"

#include <atomic>
#include <cstddef>

// The linker hands every call to these (--wrap).
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *memory, size_t size);
}

namespace bench {

namespace {

std::atomic<uint64_t> g_allocations{0};

} // namespace

uint64_t allocations() {
    return g_allocations.load();
}

extern "C" {

void *__wrap_malloc(size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __real_malloc(size);
}

void *__wrap_calloc(size_t count, size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __real_calloc(count, size);
}

void *__wrap_realloc(void *memory, size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __real_realloc(memory, size);
}
}

} // namespace bench
