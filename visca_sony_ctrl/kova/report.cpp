// Reports that a Kova module sends unasked, and the host's callbacks for them. The callbacks run on the
// receiver thread: every reply behind the report waits until they return.
#include "visca_que/log.h"
#include "visca_que/shared_word.h"
#include "visca_sony_ctrl/setting.h"
#include "viscacam.h"

using namespace viscacam;

ViscaStatusCallback gpfnReportZoomStatus = nullptr;
ViscaStatusCallback gpfnReportFocusStatus = nullptr;
ViscaReconfigCallback gpfnReconfigKovaImgParam = nullptr;

namespace {

constexpr uint8_t REPORT_MARK = 0x07; // low nibble of the second byte
constexpr uint8_t REPORT_ZOOM = 0xAE;
constexpr uint8_t REPORT_FOCUS = 0xAF;
constexpr uint8_t REPORT_RECONFIG = 0xEF;

constexpr uint32_t SIGNAL_ZOOM = 0;
constexpr uint32_t SIGNAL_FOCUS = 1;
constexpr uint32_t RESULT_UNKNOWN_SIGNAL = 2;

// A byte of a report; 0 where the report is too short to have it.
uint8_t ReportByte(const ViscaPkt *pstReport, uint32_t ulIndex) {
    return ulIndex < pstReport->ulLength && ulIndex < VISCA_PKT_MAX ? pstReport->aucData[ulIndex] : 0;
}

void ReportStatus(const ViscaStatusCallback &rpfnCallback, const ViscaPkt *pstReport) {
    const ViscaStatusCallback pfnCallback = WordGet(rpfnCallback); // it may be replaced meanwhile
    if (pfnCallback != nullptr) {
        pfnCallback((ReportByte(pstReport, 4) & 0x0FU) != 0 ? 1 : 0);
    }
}

// Reports on or off, and the callback kept once the module is told.
uint32_t SetStatusCallback(uint8_t ucReport, ViscaStatusCallback &rpfnCallback, ViscaStatusCallback fCallBack,
                           const LogPlace &rCaller) {
    const uint8_t ucSwitch = fCallBack != nullptr ? 0x02 : 0x03;
    if (SendSetting({0x01, 0x04, ucReport, ucSwitch}, rCaller) != VISCA_SUCCESS) {
        return VISCA_FAILURE;
    }
    WordSet(rpfnCallback, fCallBack);
    return VISCA_SUCCESS;
}

} // namespace

uint32_t KovaSetZoomStatusCallback(ViscaStatusCallback fCallBack) {
    return SetStatusCallback(REPORT_ZOOM, gpfnReportZoomStatus, fCallBack, LOG_HERE);
}

uint32_t KovaSetFocusStatusCallback(ViscaStatusCallback fCallBack) {
    return SetStatusCallback(REPORT_FOCUS, gpfnReportFocusStatus, fCallBack, LOG_HERE);
}

uint32_t KOVA_SetStatusCallback(uint32_t ulSigType, ViscaStatusCallback fCallBack) {
    switch (ulSigType) {
    case SIGNAL_ZOOM:
        return KovaSetZoomStatusCallback(fCallBack);
    case SIGNAL_FOCUS:
        return KovaSetFocusStatusCallback(fCallBack);
    default:
        LOG_ERROR("input param invalid, sigtype:%lu \n", UL(ulSigType));
        return RESULT_UNKNOWN_SIGNAL;
    }
}

void KOVA_SetRecfgImgParamCallback(ViscaReconfigCallback fCallBack) {
    WordSet(gpfnReconfigKovaImgParam, fCallBack);
}

void KovaDealReport(const ViscaPkt *pstReport) {
    if ((ReportByte(pstReport, 1) & 0x0FU) != REPORT_MARK) {
        LOG_WARN("Invalid ack, fail exit\n");
        ViscaPrintPkt(pstReport, 0);
        return;
    }
    const uint8_t ucReport = ReportByte(pstReport, 3);
    switch (ucReport) {
    case REPORT_ZOOM:
        ReportStatus(gpfnReportZoomStatus, pstReport);
        break;
    case REPORT_FOCUS:
        ReportStatus(gpfnReportFocusStatus, pstReport);
        break;
    case REPORT_RECONFIG: {
        const ViscaReconfigCallback pfnReconfig = WordGet(gpfnReconfigKovaImgParam);
        if (pfnReconfig != nullptr) {
            pfnReconfig();
        }
        break;
    }
    default:
        LOG_WARN("Not support %d yet\n", ucReport);
        break;
    }
}
