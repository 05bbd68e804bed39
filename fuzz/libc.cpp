// The calls of libc that the library makes, wrapped by the linker. Outside a run, and on other threads, they
// are the real ones: the fuzzer itself makes them too.
#include "fuzz/law.h"
#include "fuzz/world.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

using fuzz::Inside;
using fuzz::NO_FD;
using fuzz::Now;
using fuzz::PORT_FD;
using fuzz::SECOND;
using fuzz::Span;

namespace {

constexpr size_t MOST_FILES = 4;
fuzz::MemoryFile *g_file[MOST_FILES];

/** One reader of a file in memory. */
struct Reader {
    fuzz::MemoryFile *file;
    size_t position;
};

ssize_t ReadCookie(void *cookie, char *to, size_t size) {
    auto *reader = static_cast<Reader *>(cookie);
    const Span content = reader->file->content;
    const size_t left = reader->position < content.size ? content.size - reader->position : 0;
    const size_t piece = size < left ? size : left;
    if (piece > 0)
        memcpy(to, content.bytes + reader->position, piece);
    reader->position += piece;
    return static_cast<ssize_t>(piece);
}

int SeekCookie(void *cookie, off64_t *offset, int whence) {
    auto *reader = static_cast<Reader *>(cookie);
    off64_t from = 0;
    if (whence == SEEK_CUR)
        from = static_cast<off64_t>(reader->position);
    else if (whence == SEEK_END)
        from = static_cast<off64_t>(reader->file->content.size);
    if (from + *offset < 0)
        return -1;
    *offset += from;
    reader->position = static_cast<size_t>(*offset);
    return 0;
}

int CloseCookie(void *cookie) {
    auto *reader = static_cast<Reader *>(cookie);
    reader->file->handle = nullptr;
    delete reader;
    return 0;
}

FILE *OpenMemory(fuzz::MemoryFile *file) {
    ++file->opened;
    if (file->missing) {
        errno = ENOENT;
        return nullptr;
    }
    file->handle = fopencookie(new Reader{file, 0}, "r", {ReadCookie, nullptr, SeekCookie, CloseCookie});
    return file->handle;
}

uint64_t Micros(const timeval *timeout) {
    return timeout == nullptr
               ? fuzz::NEVER
               : static_cast<uint64_t>(timeout->tv_sec) * SECOND + static_cast<uint64_t>(timeout->tv_usec);
}

uint64_t After(uint64_t micros) {
    return micros == fuzz::NEVER ? fuzz::NEVER : Now() + micros;
}

} // namespace

namespace fuzz {

void PlaceFile(MemoryFile *file) {
    for (MemoryFile *&place : g_file) {
        if (place == nullptr || strcmp(place->path, file->path) == 0) {
            place = file;
            return;
        }
    }
    Broken(__FILE__, __LINE__, "few files");
}

void RemoveFiles() {
    for (MemoryFile *&place : g_file)
        place = nullptr;
}

} // namespace fuzz

extern "C" {

int __real_select(int nfds, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout);
ssize_t __real_read(int fd, void *data, size_t size);
ssize_t __real_write(int fd, const void *data, size_t size);
int __real_fcntl(int fd, int command, ...);
int __real_usleep(useconds_t micros);
unsigned __real_sleep(unsigned seconds);
int __real_clock_gettime(clockid_t clock, timespec *now);
int __real_gettimeofday(timeval *now, void *zone);
tm *__real_localtime_r(const time_t *time, tm *result);
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                          void *argument);
int __real_pthread_detach(pthread_t thread);
FILE *__real_fopen(const char *path, const char *mode);

int __wrap_select(int nfds, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout) {
    if (!Inside())
        return __real_select(nfds, reads, writes, errors, timeout);
    LAW(nfds > 0 && nfds <= FD_SETSIZE && reads != nullptr && writes == nullptr && errors == nullptr);
    LAW(FD_ISSET(nfds - 1, reads));
    const bool readable = fuzz::WaitUntil(nfds - 1, After(Micros(timeout)));
    if (!readable)
        FD_ZERO(reads);
    return readable ? 1 : 0;
}

ssize_t __wrap_read(int fd, void *data, size_t size) {
    if (!Inside() || fd != PORT_FD)
        return __real_read(fd, data, size);
    return static_cast<ssize_t>(fuzz::ReadPort(static_cast<uint8_t *>(data), size));
}

ssize_t __wrap_write(int fd, const void *data, size_t size) {
    if (!Inside() || fd != PORT_FD)
        return __real_write(fd, data, size);
    return static_cast<ssize_t>(size);
}

int __wrap_fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return Inside() && fd == PORT_FD ? 0 : __real_fcntl(fd, command, argument);
}

int __wrap_usleep(useconds_t micros) {
    if (!Inside())
        return __real_usleep(micros);
    (void)fuzz::WaitUntil(NO_FD, After(micros));
    return 0;
}

unsigned __wrap_sleep(unsigned seconds) {
    if (!Inside())
        return __real_sleep(seconds);
    (void)fuzz::WaitUntil(NO_FD, After(seconds * SECOND));
    return 0;
}

int __wrap_clock_gettime(clockid_t clock, timespec *now) {
    if (!Inside())
        return __real_clock_gettime(clock, now);
    *now = {static_cast<time_t>(Now() / SECOND), static_cast<long>(Now() % SECOND * 1000)};
    return 0;
}

int __wrap_gettimeofday(timeval *now, void *zone) {
    if (!Inside())
        return __real_gettimeofday(now, zone);
    *now = {static_cast<time_t>(Now() / SECOND), static_cast<suseconds_t>(Now() % SECOND)};
    return 0;
}

tm *__wrap_localtime_r(const time_t *time, tm *result) {
    if (!Inside())
        return __real_localtime_r(time, result);
    *result = tm();
    result->tm_year = 126;
    return result;
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                          void *argument) {
    if (!Inside())
        return __real_pthread_create(thread, attributes, body, argument);
    *thread = pthread_self();
    fuzz::StartFiber(body, argument);
    return 0;
}

int __wrap_pthread_detach(pthread_t thread) {
    return Inside() ? 0 : __real_pthread_detach(thread);
}

FILE *__wrap_fopen(const char *path, const char *mode) {
    if (Inside()) {
        for (fuzz::MemoryFile *file : g_file) {
            if (file != nullptr && strcmp(file->path, path) == 0)
                return OpenMemory(file);
        }
    }
    return __real_fopen(path, mode);
}

} // extern "C"
