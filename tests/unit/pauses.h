// The pauses of a thread whose waits or reads fail again and again: short at first, growing, never above a
// second.
#ifndef VISCACAM_UNIT_PAUSES_H
#define VISCACAM_UNIT_PAUSES_H

#include "tests/unit/unit_test.h"

#include <algorithm>

namespace unit {

inline void ExpectGrowingToASecond(const std::vector<uint64_t> &pauses) {
    ASSERT_GE(pauses.size(), 8U);
    EXPECT_GE(pauses.front(), 5000U);
    EXPECT_LE(pauses.front(), 100000U);
    EXPECT_TRUE(std::is_sorted(pauses.begin(), pauses.end()));
    EXPECT_EQ(1000000U, pauses.back());
}

} // namespace unit

#endif
