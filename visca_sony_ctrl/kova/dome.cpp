// The dome type: a second-generation module is told in which housing it sits, which the device model says.
#include <string.h>

#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// "ITC" before "IT", which it contains, and "WH" before "IR".
uint8_t DomeType(const char *pcModel) {
    const bool bItc = strstr(pcModel, "ITC") != nullptr;
    if (!bItc && strstr(pcModel, "IT") == nullptr) {
        return 0;
    }
    if (strstr(pcModel, "WH") != nullptr) {
        return bItc ? 1 : 3;
    }
    if (strstr(pcModel, "IR") != nullptr) {
        return bItc ? 2 : 4;
    }
    return 0;
}

} // namespace

void KovaSetDomeTypeToCam(void) {
    ManuInfo stManuInfo = {};
    (void)COMDRV_GetManuinfo(&stManuInfo);
    char szModel[sizeof(stManuInfo.szDeviceModel) + 1] = {}; // the host may have filled the text to its end
    memcpy(szModel, stManuInfo.szDeviceModel, sizeof(stManuInfo.szDeviceModel));
    (void)SendSetting({0x01, 0x04, 0xD1, 0x00, 0x00, 0x00, DomeType(szModel)}, LOG_HERE);
}
