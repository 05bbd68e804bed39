// Threads of the library: detached, default attributes, never stopped.
#ifndef VISCACAM_VISCA_QUE_THREAD_H
#define VISCACAM_VISCA_QUE_THREAD_H

namespace viscacam {

// 0, or the error number of what failed.
int StartDetached(void *(*pfnBody)(void *), void *pArg);

} // namespace viscacam

#endif
