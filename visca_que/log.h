// Log lines. Each is one call of the host's logging service: a fixed prefix that names time, file, function,
// line and level, then the message, which the macros paste behind the prefix so that the compiler checks
// every format against its arguments.
//
// A line is logged in the function that it names. A helper that logs on behalf of a caller takes the caller's
// name (LOG_*_AS).
#ifndef VISCACAM_VISCA_QUE_LOG_H
#define VISCACAM_VISCA_QUE_LOG_H

#include <stdint.h>

#include "viscacam_host.h"

#ifndef __FILE_NAME__
#    define __FILE_NAME__ viscacam::LogBaseName(__FILE__)
#endif

// What every line begins with.
#define LOG_PREFIX "%.4d-%.2d-%.2d %.2d:%.2d:%.2d %.6lu %-20s@fun:%-30sline:%-6d--[%.5s]"

namespace viscacam {

constexpr uint32_t LOG_FORMAT_MAX = 256;

// Prefix and message. Each stands once in the library: pasted together by the compiler, the prefix would be a
// fifth of it.
void LogBuildFormat(char (&szFormat)[LOG_FORMAT_MAX], const char *pcMessage);

struct LogStamp {
    int iYear, iMonth, iDay, iHour, iMinute, iSecond;
    unsigned long ulMicroseconds;
};

// Where a line is logged.
struct LogPlace {
    const char *pcFile;
    const char *pcFunction;
    int iLine;
};

// The local time now.
void LogTakeStamp(LogStamp *pstStamp);

constexpr const char *LogBaseName(const char *pcPath) {
    const char *pcBase = pcPath;
    for (const char *pc = pcPath; *pc != '\0'; ++pc) {
        if (*pc == '/') {
            pcBase = pc + 1;
        }
    }
    return pcBase;
}

// The formats say %lu, %lx and %ld. A 32-bit value is widened so that a 64-bit workstation prints what a
// board prints; a signed value under %lu or %lx therefore goes through uint32_t first.
constexpr unsigned long UL(uint32_t ulValue) {
    return ulValue;
}
constexpr long SL(int32_t lValue) {
    return lValue;
}

// What a line is: its level, its tag, and which of the host's two logs it goes to.
enum LogKind : uint32_t {
    LOG_KIND_ERROR,
    LOG_KIND_WARN,
    LOG_KIND_INFO,
    LOG_KIND_DEBUG,
    LOG_KIND_VERBO,
    LOG_KIND_DUMP
};

struct LogKindFacts {
    uint32_t ulLevel;
    char szTag[6];
    bool bCamera;
};
inline constexpr LogKindFacts LOG_KINDS[] = {
    {VISCA_LOG_ERROR, "ERROR", false}, {VISCA_LOG_WARN, "WARN", false},   {VISCA_LOG_INFO, "INFO", false},
    {VISCA_LOG_DEBUG, "DEBUG", false}, {VISCA_LOG_VERBO, "VERBO", false}, {VISCA_LOG_DEBUG, "INFO", true},
};
static_assert(sizeof(LOG_KINDS) / sizeof(LOG_KINDS[0]) == LOG_KIND_DUMP + 1, "one for each kind");

// Line and kind in one word: with it, what most lines say of themselves fits into four registers.
constexpr uint32_t LogWhere(LogKind enKind, int iLine) {
    return static_cast<uint32_t>(iLine) << 3U | enKind;
}

// Never called: lets the compiler check a format.
void LogCheckFormat(const char *pcFormat, ...) __attribute__((format(printf, 1, 2)));

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// One for each sequence of argument types, and not inlined: the library logs in some four hundred places, and
// what they have in common would be half of it on a small board.
template <typename... Arguments>
__attribute__((noinline)) void LogLine(uint32_t ulWhere, const char *pcFile, const char *pcFunction,
                                       const char *pcMessage, Arguments... arguments) {
    char szFormat[LOG_FORMAT_MAX];
    LogBuildFormat(szFormat, pcMessage);
    LogStamp st;
    LogTakeStamp(&st);
    const LogKindFacts &stKind = LOG_KINDS[ulWhere & 7U];
    (stKind.bCamera ? DRV_Common_Print_Cam : DRV_Common_Print)(
        stKind.ulLevel, szFormat, st.iYear, st.iMonth, st.iDay, st.iHour, st.iMinute, st.iSecond,
        st.ulMicroseconds, pcFile, pcFunction, static_cast<int>(ulWhere >> 3U), stKind.szTag, arguments...);
}
#pragma GCC diagnostic pop

} // namespace viscacam

#define LOG_LINE_AT(kind, file, function, line, message, ...)                                                \
    do {                                                                                                     \
        if (false) {                                                                                         \
            viscacam::LogCheckFormat(message, ##__VA_ARGS__);                                                \
        }                                                                                                    \
        static_assert(sizeof(LOG_PREFIX) + sizeof(message) <= viscacam::LOG_FORMAT_MAX, "");                 \
        viscacam::LogLine(viscacam::LogWhere(viscacam::kind, line), file, function, message, ##__VA_ARGS__); \
    } while (0)

#define LOG_LINE(kind, function, message, ...)                                                               \
    LOG_LINE_AT(kind, __FILE_NAME__, function, __LINE__, message, ##__VA_ARGS__)

// For a helper in a file of its own: the line is logged where LOG_HERE was written.
#define LOG_HERE (viscacam::LogPlace{__FILE_NAME__, __func__, __LINE__})
#define LOG_ERROR_AT(place, message, ...)                                                                    \
    LOG_LINE_AT(LOG_KIND_ERROR, (place).pcFile, (place).pcFunction, (place).iLine, message, ##__VA_ARGS__)

#define LOG_ERROR_AS(function, message, ...) LOG_LINE(LOG_KIND_ERROR, function, message, ##__VA_ARGS__)
#define LOG_WARN_AS(function, message, ...)  LOG_LINE(LOG_KIND_WARN, function, message, ##__VA_ARGS__)
#define LOG_INFO_AS(function, message, ...)  LOG_LINE(LOG_KIND_INFO, function, message, ##__VA_ARGS__)
#define LOG_DEBUG_AS(function, message, ...) LOG_LINE(LOG_KIND_DEBUG, function, message, ##__VA_ARGS__)
#define LOG_VERBO_AS(function, message, ...) LOG_LINE(LOG_KIND_VERBO, function, message, ##__VA_ARGS__)

#define LOG_ERROR(message, ...) LOG_ERROR_AS(__func__, message, ##__VA_ARGS__)
#define LOG_WARN(message, ...)  LOG_WARN_AS(__func__, message, ##__VA_ARGS__)
#define LOG_INFO(message, ...)  LOG_INFO_AS(__func__, message, ##__VA_ARGS__)
#define LOG_DEBUG(message, ...) LOG_DEBUG_AS(__func__, message, ##__VA_ARGS__)
#define LOG_VERBO(message, ...) LOG_VERBO_AS(__func__, message, ##__VA_ARGS__)

// The camera log takes packet dumps: level 7, tagged "INFO", so that a host can keep the traffic without the
// rest of the DEBUG lines.
#define LOG_DUMP(message, ...) LOG_LINE(LOG_KIND_DUMP, __func__, message, ##__VA_ARGS__)

#endif
