#include "fuzz/allocations.h"

#include <cstddef>

// A sanitizer owns malloc and offers hooks; without one malloc is replaced by glibc's own under its other
// name.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#    define VISCACAM_FUZZ_HOOKS
#elif defined(__has_feature)
#    if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#        define VISCACAM_FUZZ_HOOKS
#    endif
#endif

namespace {

thread_local bool t_counting = false;
thread_local unsigned long t_count = 0;

void Note() {
    if (t_counting)
        ++t_count;
}

} // namespace

#ifdef VISCACAM_FUZZ_HOOKS

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void *, size_t),
                                                         void (*)(const volatile void *));

namespace {

const int g_installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void *, size_t) { Note(); }, [](const volatile void *) {});

} // namespace

#else

extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *memory, size_t size);

void *malloc(size_t size) {
    Note();
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    Note();
    return __libc_calloc(count, size);
}

void *realloc(void *memory, size_t size) {
    Note();
    return __libc_realloc(memory, size);
}

} // extern "C"

#endif

namespace fuzz {

Allocations::Allocations() {
#ifdef VISCACAM_FUZZ_HOOKS
    (void)g_installed;
#endif
    t_count = 0;
    t_counting = true;
}

Allocations::~Allocations() {
    t_counting = false;
}

unsigned long Allocations::Count() const {
    return t_count;
}

} // namespace fuzz
