#include "bench/library.h"

#include <stdexcept>

#include "bench/services.h"
#include "viscacam.h"

namespace bench {

void startLibrary(const std::string &device, uint32_t moduleType) {
    serve(device, moduleType);
    VISCA_SetCamModuleType(moduleType);
    if (VISCA_Init(0) != VISCA_SUCCESS || ViscaIsCamCanCtrl() != 1)
        throw std::runtime_error("the library did not find the camera");
    (void)ViscaWaitCmdQueueEmpty(5);
    uint32_t position = 0;
    (void)VISCA_GetZoomPos(&position); // answered after the last command
}

} // namespace bench
