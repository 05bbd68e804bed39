// The whole search for a camera that is not there, with pauses of a hundredth.
#include "tests/e2e/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Search, EndsAfterTwentyAttempts) {
    Setting quick;
    quick.preload = VISCACAM_QUICK_SLEEP;
    Command demo({"demo", "--camera", "sony1", "--fault", "mute"}, quick);
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: no camera answered in 20 attempts at 9600, 19200 and 38400 bit/s\n");
    EXPECT_THAT(demo.out(), HasSubstr("ERROR  AdaptCamComBaudRate fail 20 times, try it after 1 sec\n"));
    EXPECT_THAT(demo.out(), Not(HasSubstr("fail 21 times")));
}

} // namespace e2e
