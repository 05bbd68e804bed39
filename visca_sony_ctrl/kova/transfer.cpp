#include "visca_sony_ctrl/kova/transfer.h"

#include "visca_que/log.h"
#include "visca_que/wait.h"
#include "viscacam.h"

namespace viscacam {

void SwitchLineToTransfer() {
    SleepMs(100); // the module gets ready after the packet that announced the transfer
    (void)COMDRV_System("echo -w 0x09 0x01 > /proc/driver/cpld");
    SleepMs(10);
}

void SwitchLineBack() {
    (void)COMDRV_System("echo -w 0x09 0x00 > /proc/driver/cpld");
    SleepMs(10);
}

void FlushLine(const char *pcCaller) {
    while (ViscaCamComFlush(VISCA_FLUSH_BOTH) != 0) {
        LOG_WARN_AS(pcCaller, "ViscaCamComFlush fail, try it again\n");
        SleepMs(100);
    }
}

} // namespace viscacam
