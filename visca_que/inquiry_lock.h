// The inquiry mutex: held from just before an inquiry is written until its answer was taken, and by whoever
// wants to know whether the command queue is empty. Always taken before the send mutex of the port, never the
// other way round.
#ifndef VISCACAM_VISCA_QUE_INQUIRY_LOCK_H
#define VISCACAM_VISCA_QUE_INQUIRY_LOCK_H

#include <pthread.h>

namespace viscacam {

extern pthread_mutex_t g_stInquiryMutex;

} // namespace viscacam

#endif
