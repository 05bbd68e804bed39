// The binary interface of the public headers: sizes and places of fields, values of the constants.
#include "viscacam.h"
#include "viscacam_host.h"

#include <cstddef>
#include <gtest/gtest.h>

static_assert(sizeof(ViscaPkt) == 20 && offsetof(ViscaPkt, aucData) == 0 &&
              offsetof(ViscaPkt, ulLength) == 16);
static_assert(sizeof(VideoNormParam) == 12);
static_assert(offsetof(VideoNormParam, ulWidth) == 0 && offsetof(VideoNormParam, ulFrameRate) == 8);
static_assert(sizeof(CameraInfo) == 96);
static_assert(offsetof(CameraInfo, szModel) == 32 && offsetof(CameraInfo, szFirmware) == 64);
static_assert(sizeof(ExposureParam) == 88);
static_assert(offsetof(ExposureParam, lExpCompValue) == 4 && offsetof(ExposureParam, ulGain) == 16);
static_assert(offsetof(ExposureParam, ulSlowShutter) == 28 && offsetof(ExposureParam, ulWdr) == 52);
static_assert(offsetof(ExposureParam, TopX) == 64 && offsetof(ExposureParam, ulBlackWhiteMode) == 80);
static_assert(sizeof(WhiteBalanceParam) == 12);
static_assert(offsetof(WhiteBalanceParam, lBlueOffset) == 4 && offsetof(WhiteBalanceParam, lRedOffset) == 8);
static_assert(sizeof(ImageEnhanceParam) == 32);
static_assert(offsetof(ImageEnhanceParam, ulSharpness) == 20 &&
              offsetof(ImageEnhanceParam, ulDenoise3D) == 28);
static_assert(sizeof(ImgDetectParam) == 16);
static_assert(offsetof(ImgDetectParam, lWbMode) == 4 && offsetof(ImgDetectParam, lBlueOffset) == 8 &&
              offsetof(ImgDetectParam, lRedOffset) == 12);
static_assert(sizeof(DrvMsgInfo) == 32);
static_assert(offsetof(DrvMsgInfo, ulMsgCmd) == 4 && offsetof(DrvMsgInfo, ulMsgLen) == 20 &&
              offsetof(DrvMsgInfo, aucMsgData) == 24);
static_assert(sizeof(DrvComParam) == 16);
static_assert(offsetof(DrvComParam, ulBaudRate) == 8 && offsetof(DrvComParam, ucDataBits) == 12);
static_assert(offsetof(DrvComParam, ucStopBits) == 13 && offsetof(DrvComParam, ucParam3) == 15);
static_assert(sizeof(ManuInfo) == 512 && offsetof(ManuInfo, szDeviceModel) == 128);
static_assert(sizeof(ManuInfo::szDeviceModel) == 64);

namespace {

TEST(Header, ConstantsAreThoseOfTheBinaryInterface) {
    EXPECT_EQ(0U, VISCA_SUCCESS);
    EXPECT_EQ(1U, VISCA_FAILURE);
    EXPECT_EQ(2U, VISCA_NULL_POINTER);
    EXPECT_EQ(0U, VISCA_CMD_QUEUE_ID);
    EXPECT_EQ(1U, VISCA_CMD_RESULT_QUEUE_ID);
    EXPECT_EQ(3U, VISCA_INQUIRY_RESULT_QUEUE_ID);
    EXPECT_EQ(3U, VISCA_QUEUE_TYPE);
    EXPECT_EQ(20U, VISCA_QUEUE_ELEM_SIZE);
    EXPECT_EQ(2U, VISCA_FLUSH_BOTH);
    EXPECT_EQ(3U, VISCA_LOG_ERROR);
    EXPECT_EQ(4U, VISCA_LOG_WARN);
    EXPECT_EQ(6U, VISCA_LOG_INFO);
    EXPECT_EQ(7U, VISCA_LOG_DEBUG);
    EXPECT_EQ(8U, VISCA_LOG_VERBO);
}

} // namespace
