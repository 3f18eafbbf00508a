// Time stamps of entries: cut to the microsecond, also before 1970, infinite outside of the calendar.
#include "runtime/listing/entry_time.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <limits>
#include <string>

namespace {

using korvex::runtime::listing::entryTime;

std::string shown(std::int64_t seconds, std::int64_t nanoseconds) {
    return to_iso_extended_string(entryTime(seconds, nanoseconds));
}

TEST(EntryTimeTest, CountsFrom1970) {
    EXPECT_EQ(shown(0, 0), "1970-01-01T00:00:00");
    EXPECT_EQ(shown(1709647629, 0), "2024-03-05T14:07:09");
}

TEST(EntryTimeTest, FractionIsCutToTheMicrosecond) {
    EXPECT_EQ(shown(0, 999'999'999), "1970-01-01T00:00:00.999999");
    EXPECT_EQ(shown(0, 999), "1970-01-01T00:00:00");
    EXPECT_EQ(shown(-1, 999'999'999), "1969-12-31T23:59:59.999999");
}

TEST(EntryTimeTest, ReachesFrom1400To9999) {
    EXPECT_EQ(shown(-17987443200, 0), "1400-01-01T00:00:00");
    EXPECT_EQ(shown(253402300799, 999'999'999), "9999-12-31T23:59:59.999999");
}

TEST(EntryTimeTest, IsInfiniteOutsideOfThat) {
    EXPECT_TRUE(entryTime(-17987443201, 999'999'999).is_neg_infinity());
    EXPECT_TRUE(entryTime(253402300800, 0).is_pos_infinity());
    EXPECT_TRUE(entryTime(std::numeric_limits<std::int64_t>::min(), 0).is_neg_infinity());
    EXPECT_TRUE(entryTime(std::numeric_limits<std::int64_t>::max(), 0).is_pos_infinity());
}

}  // namespace
