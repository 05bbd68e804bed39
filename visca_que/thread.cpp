#include "visca_que/thread.h"

#include <pthread.h>

namespace viscacam {

int StartDetached(void *(*pfnBody)(void *), void *pArg) {
    pthread_t stThread;
    const int iRet = pthread_create(&stThread, nullptr, pfnBody, pArg);
    if (iRet == 0) {
        (void)pthread_detach(stThread);
    }
    return iRet;
}

} // namespace viscacam
