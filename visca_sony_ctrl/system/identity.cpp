// Who made the camera, which model it is, which firmware it runs.
#include <stdio.h>

#include "visca_que/command.h"
#include "visca_que/log.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

// Texts of known identifiers end in a blank, deliberately.
struct IdRow {
    uint32_t ulId;
    const char *pcText;
};
constexpr IdRow VENDORS[] = {{0x0020, "SONY "}, {0x8026, "TALVERO "}};
constexpr IdRow MODELS[] = {{0x0467, "sony 7500 "}, {0xA000, "CAM7K3FHD40Z "}, {0xB000, "CAM7K3HD40Z "}};

template <uint32_t N>
const char *FindText(const IdRow (&astRows)[N], uint32_t ulId) {
    for (const IdRow &rRow : astRows) {
        if (rRow.ulId == ulId) {
            return rRow.pcText;
        }
    }
    return nullptr;
}

uint32_t ReplyId(const ViscaPkt &rReply, uint32_t ulFirst) {
    return (static_cast<uint32_t>(rReply.aucData[ulFirst]) << 8U) + rReply.aucData[ulFirst + 1];
}

} // namespace

uint32_t SONY_GetCamInfo(uint32_t ulChannelID, CameraInfo *pstCameraInfo) {
    LOG_DEBUG("FUN_ENTRY--param:ulChannelID[%lu] pstCameraInfo[%p]\n", UL(ulChannelID),
              static_cast<void *>(pstCameraInfo));
    ViscaPkt stReply;
    if (Inquire({0x09, 0x00, 0x02}, &stReply) != VISCA_SUCCESS) {
        LOG_ERROR("ViscaGetInquiryData failed exit\n");
        return VISCA_FAILURE;
    }
    CameraInfo &rInfo = *pstCameraInfo;
    const uint32_t ulVendor = ReplyId(stReply, 2);
    const char *pcVendor = FindText(VENDORS, ulVendor);
    if (pcVendor != nullptr) {
        (void)snprintf(rInfo.szVendor, sizeof(rInfo.szVendor), "%s", pcVendor);
    } else {
        (void)snprintf(rInfo.szVendor, sizeof(rInfo.szVendor), "Unknow Vender ID 0x%lx", UL(ulVendor));
    }
    const uint32_t ulModel = ReplyId(stReply, 4);
    const char *pcModel = FindText(MODELS, ulModel);
    if (pcModel != nullptr) {
        (void)snprintf(rInfo.szModel, sizeof(rInfo.szModel), "%s", pcModel);
    } else {
        (void)snprintf(rInfo.szModel, sizeof(rInfo.szModel), "Unknow Model ID 0x%lx ", UL(ulModel));
    }
    (void)snprintf(rInfo.szFirmware, sizeof(rInfo.szFirmware), "%lx ", UL(ReplyId(stReply, 6)));
    return VISCA_SUCCESS;
}
