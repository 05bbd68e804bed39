/**
 * @file observer.h
 * Where the services report what they do. Inside the host only.
 */
#ifndef VISCACAM_HOST_OBSERVER_H
#define VISCACAM_HOST_OBSERVER_H

#include "host/host.h"

namespace host {

/**
 * Stamp an event with the time, let the traffic record see it (which fills bUnasked), then tell the
 * observers. The caller holds no lock.
 */
void Report(Event stEvent);

} // namespace host

#endif
