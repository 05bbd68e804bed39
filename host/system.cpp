#include <cstdlib>

#include "host/host.h"

// The shell inherits the camera's descriptor: file-transfer programs are told its number or the device path.
uint32_t COMDRV_System(const char *pcCommand) {
    if (pcCommand == nullptr) {
        return 1;
    }
    return static_cast<uint32_t>(std::system(pcCommand));
}
