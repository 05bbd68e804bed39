/**
 * @file unit_test.h
 * Fixture of the unit tests: a fresh host, virtual time and a link as at load, except that the camera answers
 * (can-control is 1) and the port is open. After each test it checks what holds for every call: the prefix of
 * each log line, level and tag, queue type and element size.
 */
#ifndef VISCACAM_UNIT_UNIT_TEST_H
#define VISCACAM_UNIT_UNIT_TEST_H

#include "tests/unit/recording_host.h"
#include "tests/unit/wrapped_libc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace unit {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr uint32_t kUnset = 0xFFFFFFFF;
constexpr uint32_t kSonyTypes[] = {0x02000001, 0x02000003, 0x02000004, 0x02000005};

class UnitTest : public ::testing::Test {
  protected:
    UnitTest() {
        Host().Reset();
        Clib().Reset();
        ViscaSetCamComFd(Host().PortFd());
        ViscaSetCamCanCtrl(1);
        ViscaMarkUpdatingCam(0);
        ViscaMarkExportLog(0);
        VISCA_SetCamModuleType(kUnset);
        Host().Forget();
    }

    ~UnitTest() override {
        EXPECT_THAT(Host().Complaints(), IsEmpty());
        ViscaSetCamComFd(-1);
    }

    /** As before the port was opened. */
    static void AsAtLoad() {
        ViscaSetCamComFd(-1);
        ViscaSetCamCanCtrl(0);
    }
};

} // namespace unit

#endif
