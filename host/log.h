/**
 * @file log.h
 * The host's own lines in the general log, in the same form as the library's. Inside the host only.
 */
#ifndef VISCACAM_HOST_LOG_H
#define VISCACAM_HOST_LOG_H

#include "host/host.h"

namespace host {

/** Use HOST_LOG. */
void LogHere(uint32_t ulLevel, const char *pcFile, const char *pcFunction, int iLine, const char *pcFormat,
             ...) __attribute__((format(printf, 5, 6)));

} // namespace host

/** Log one line; the format has no newline at its end. */
#define HOST_LOG(ulLevel, ...) host::LogHere(ulLevel, HOST_FILE_NAME, __func__, __LINE__, __VA_ARGS__)

#if defined(__FILE_NAME__)
#    define HOST_FILE_NAME __FILE_NAME__
#else
#    define HOST_FILE_NAME __FILE__
#endif

#endif
