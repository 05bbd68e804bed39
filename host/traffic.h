/**
 * @file traffic.h
 * The record of what passes through the services. Inside the host only.
 */
#ifndef VISCACAM_HOST_TRAFFIC_H
#define VISCACAM_HOST_TRAFFIC_H

#include "host/host.h"

namespace host {

/**
 * Enter an event that happens on the calling thread.
 * @return for an answer put on the inquiry-result queue: whether no inquiry waits for it; else false
 */
bool RecordTraffic(const Event &stEvent);

/** Enter a line of the general log by its format, whether it passes the filter or not. */
void RecordLogLine(const char *pcFormat);

} // namespace host

#endif
