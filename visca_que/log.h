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

namespace viscacam {

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

} // namespace viscacam

#define LOG_PREFIX "%.4d-%.2d-%.2d %.2d:%.2d:%.2d %.6lu %-20s@fun:%-30sline:%-6d--[%.5s]"

#define LOG_LINE_AT(print, level, tag, file, function, line, message, ...)                                   \
    do {                                                                                                     \
        viscacam::LogStamp stStamp_;                                                                         \
        viscacam::LogTakeStamp(&stStamp_);                                                                   \
        print(level, LOG_PREFIX message, stStamp_.iYear, stStamp_.iMonth, stStamp_.iDay, stStamp_.iHour,     \
              stStamp_.iMinute, stStamp_.iSecond, stStamp_.ulMicroseconds, file, function, line, tag,        \
              ##__VA_ARGS__);                                                                                \
    } while (0)

#define LOG_LINE(print, level, tag, function, message, ...)                                                  \
    LOG_LINE_AT(print, level, tag, __FILE_NAME__, function, __LINE__, message, ##__VA_ARGS__)

// For a helper in a file of its own: the line is logged where LOG_HERE was written.
#define LOG_HERE (viscacam::LogPlace{__FILE_NAME__, __func__, __LINE__})
#define LOG_ERROR_AT(place, message, ...)                                                                    \
    LOG_LINE_AT(DRV_Common_Print, VISCA_LOG_ERROR, "ERROR", (place).pcFile, (place).pcFunction,              \
                (place).iLine, message, ##__VA_ARGS__)

#define LOG_ERROR_AS(function, message, ...)                                                                 \
    LOG_LINE(DRV_Common_Print, VISCA_LOG_ERROR, "ERROR", function, message, ##__VA_ARGS__)
#define LOG_WARN_AS(function, message, ...)                                                                  \
    LOG_LINE(DRV_Common_Print, VISCA_LOG_WARN, "WARN", function, message, ##__VA_ARGS__)
#define LOG_INFO_AS(function, message, ...)                                                                  \
    LOG_LINE(DRV_Common_Print, VISCA_LOG_INFO, "INFO", function, message, ##__VA_ARGS__)
#define LOG_DEBUG_AS(function, message, ...)                                                                 \
    LOG_LINE(DRV_Common_Print, VISCA_LOG_DEBUG, "DEBUG", function, message, ##__VA_ARGS__)
#define LOG_VERBO_AS(function, message, ...)                                                                 \
    LOG_LINE(DRV_Common_Print, VISCA_LOG_VERBO, "VERBO", function, message, ##__VA_ARGS__)

#define LOG_ERROR(message, ...) LOG_ERROR_AS(__func__, message, ##__VA_ARGS__)
#define LOG_WARN(message, ...)  LOG_WARN_AS(__func__, message, ##__VA_ARGS__)
#define LOG_INFO(message, ...)  LOG_INFO_AS(__func__, message, ##__VA_ARGS__)
#define LOG_DEBUG(message, ...) LOG_DEBUG_AS(__func__, message, ##__VA_ARGS__)
#define LOG_VERBO(message, ...) LOG_VERBO_AS(__func__, message, ##__VA_ARGS__)

// The camera log takes packet dumps: level 7, tagged "INFO", so that a host can keep the traffic without the
// rest of the DEBUG lines.
#define LOG_DUMP(message, ...)                                                                               \
    LOG_LINE(DRV_Common_Print_Cam, VISCA_LOG_DEBUG, "INFO", __func__, message, ##__VA_ARGS__)

#endif
