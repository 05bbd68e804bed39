// The binary interface of the public headers: sizes and places of fields, values of the constants.
#include "viscacam.h"
#include "viscacam_host.h"

#include <cstddef>
#include <gtest/gtest.h>

static_assert(sizeof(ViscaPkt) == 20 && offsetof(ViscaPkt, aucData) == 0 &&
              offsetof(ViscaPkt, ulLength) == 16);
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
