// The capability word that a Kova module reports at start-up.
#include "visca_sony_ctrl/kova/ability.h"

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "visca_que/shared_word.h"

using namespace viscacam;

namespace {

uint32_t g_ulCamAbility = 0;

} // namespace

uint32_t KovaGetCamAbility(void) {
    return WordGet(g_ulCamAbility);
}

uint32_t KovaSetCamAbility(uint32_t ulAbility) {
    WordSet(g_ulCamAbility, ulAbility);
    LOG_INFO("Set g_ulCamAbility[%#x]\n", ulAbility);
    return VISCA_SUCCESS;
}

uint32_t KovaDetectCamAbility(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    ViscaPkt stReply;
    if (Inquire({0x09, 0x04, 0xAB}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaInquiry failed exit\n");
        return VISCA_FAILURE;
    }
    // Eight nibbles from byte 3 on, the highest first; byte 2 is no part of the word.
    uint32_t ulAbility = 0;
    for (uint32_t i = 3; i <= 10; ++i) {
        ulAbility = (ulAbility << 4U) | (stReply.aucData[i] & 0x0FU);
    }
    return KovaSetCamAbility(ulAbility);
}

uint32_t KOVA_HasCamAbility(uint32_t ulMask) {
    return (KovaGetCamAbility() & ulMask) == ulMask ? 1 : 0;
}
