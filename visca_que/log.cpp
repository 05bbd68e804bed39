#include "visca_que/log.h"

#include <string.h>
#include <sys/time.h>
#include <time.h>

namespace viscacam {

void LogBuildFormat(char (&szFormat)[LOG_FORMAT_MAX], const char *pcMessage) {
    constexpr size_t ulPrefix = sizeof(LOG_PREFIX) - 1;
    memcpy(szFormat, LOG_PREFIX, ulPrefix);
    strcpy(szFormat + ulPrefix, pcMessage); // the place that logs has proved that it fits
}

void LogTakeStamp(LogStamp *pstStamp) {
    struct timeval stNow = {};
    struct tm stLocal = {};
    (void)gettimeofday(&stNow, nullptr);
    const time_t lSeconds = stNow.tv_sec;
    (void)localtime_r(&lSeconds, &stLocal);

    pstStamp->iYear = stLocal.tm_year + 1900;
    pstStamp->iMonth = stLocal.tm_mon + 1;
    pstStamp->iDay = stLocal.tm_mday;
    pstStamp->iHour = stLocal.tm_hour;
    pstStamp->iMinute = stLocal.tm_min;
    pstStamp->iSecond = stLocal.tm_sec;
    pstStamp->ulMicroseconds = static_cast<unsigned long>(stNow.tv_usec);
}

} // namespace viscacam
