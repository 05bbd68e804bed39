// White-balance mode and manual offsets.
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/image/settings_cache.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Command 01 04 35 ww, the same for all modules.
constexpr CodeRow WB_MODES[] = {
    {0, 0x00},  // auto
    {6, 0x01},  // indoor
    {7, 0x02},  // outdoor
    {8, 0x08},  // sodium lamp
    {10, 0x05}, // manual
    {11, 0x04}, // auto tracing
    {12, 0x06}, // outdoor auto
    {13, 0x07}, // sodium vapour lamp auto
    {14, 0x03}, // one-push
};
static_assert(HasUniqueValues(WB_MODES));

constexpr int16_t OFFSET_MAX = 127;

// -127 gives 0x00, 0 gives 0x7F, 127 gives 0xFE.
constexpr uint16_t OffsetCode(int16_t sOffset) {
    return static_cast<uint16_t>(sOffset + OFFSET_MAX);
}
static_assert(OffsetCode(-127) == 0x00 && OffsetCode(0) == 0x7F && OffsetCode(127) == 0xFE);

constexpr bool IsOffsetInRange(int16_t sOffset) {
    return OffsetCode(sOffset) < 255;
}

} // namespace

uint32_t SonySetVideoWBMode(uint32_t ulChannelID, int32_t enAWBMode) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] enAWBMode[%d]\n", UL(ulChannelID), enAWBMode);
    if (enAWBMode == WordGet(g_stImageCache.enAWBMode)) {
        return VISCA_SUCCESS;
    }
    uint8_t ucMode = 0;
    if (!FindCode(WB_MODES, static_cast<uint32_t>(enAWBMode), &ucMode)) {
        LOG_ERROR("unsupport AWBMode[%d], fail exit\n", enAWBMode);
        return VISCA_FAILURE;
    }
    if (SendSetting({0x01, 0x04, 0x35, ucMode}, LOG_HERE) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.enAWBMode, enAWBMode);
    return VISCA_SUCCESS;
}

uint32_t SonySetManualWB(uint32_t ulChannelID, int16_t sROffset, int16_t sBOffset) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] sROffset[%d] sBOffset[%d]\n", UL(ulChannelID), sROffset,
              sBOffset);
    // Whichever side an offset leaves the range on, it becomes +127, deliberately.
    if (!IsOffsetInRange(sROffset)) {
        sROffset = OFFSET_MAX;
        LOG_WARN("sROffset[%d] out of -127 ~ 127\n", sROffset);
    }
    if (!IsOffsetInRange(sBOffset)) {
        sBOffset = OFFSET_MAX;
        LOG_WARN("sBOffset[%d] out of -127 ~ 127\n", sBOffset);
    }
    const uint16_t usRed = OffsetCode(sROffset);
    const uint16_t usBlue = OffsetCode(sBOffset);
    if (QueueCommand({0x01, 0x04, 0x43, 0x00, 0x00, Nibble(usRed, 1), Nibble(usRed, 0)}) != VISCA_SUCCESS) {
        LOG_ERROR("DRV_SetManualWB Rgain fail exit\n");
        return VISCA_FAILURE;
    }
    if (SendSetting({0x01, 0x04, 0x44, 0x00, 0x00, Nibble(usBlue, 1), Nibble(usBlue, 0)}, LOG_HERE) !=
        VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(g_stImageCache.sROffset, sROffset);
    WordSet(g_stImageCache.sBOffset, sBOffset);
    return VISCA_SUCCESS;
}
