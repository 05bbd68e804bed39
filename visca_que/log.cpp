#include "visca_que/log.h"

#include <sys/time.h>
#include <time.h>

namespace viscacam {

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
