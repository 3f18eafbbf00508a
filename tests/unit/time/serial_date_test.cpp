// Serial date numbers: their beginning, the calendar's rules, what counts on.
#include "platform/serial_date.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>

namespace {

using korvex::timefun::utilities::calcDatenum;

double midnight(double year, double month, double day) { return calcDatenum(year, month, day, 0, 0, 0); }

TEST(SerialDateTest, FirstOfJanuaryOfYearZeroIsOne) { EXPECT_EQ(midnight(0, 1, 1), 1); }

TEST(SerialDateTest, KnownDaysHaveTheirNumbers) {
    EXPECT_EQ(midnight(1970, 1, 1), 719529);
    EXPECT_EQ(midnight(2000, 1, 1), 730486);
    EXPECT_EQ(midnight(2024, 3, 5), 739316);
    EXPECT_EQ(midnight(1582, 10, 4), 578091);
    EXPECT_EQ(midnight(-1, 12, 31), 0);
}

TEST(SerialDateTest, EveryDayOfTheTimeStampsCalendarFollowsTheOneBefore) {
    using namespace std::chrono;
    double expected = midnight(1400, 1, 1);
    for (sys_days day = year(1400) / 1 / 1; day <= sys_days(year(9999) / 12 / 31); day += days(1)) {
        const year_month_day date(day);
        const double number = midnight(int(date.year()), unsigned(date.month()), unsigned(date.day()));
        ASSERT_EQ(number, expected) << int(date.year()) << '-' << unsigned(date.month()) << '-'
                                    << unsigned(date.day());
        ++expected;
    }
}

TEST(SerialDateTest, TimeOfDayIsAFraction) {
    EXPECT_EQ(calcDatenum(1970, 1, 1, 12, 0, 0), 719529.5);
    EXPECT_DOUBLE_EQ(calcDatenum(2024, 3, 5, 14, 7, 9), 739316 + (14 * 3600 + 7 * 60 + 9) / 86400.0);
}

TEST(SerialDateTest, MonthsOutsideOfTheYearCountOn) {
    EXPECT_EQ(midnight(2023, 13, 1), midnight(2024, 1, 1));
    EXPECT_EQ(midnight(2024, 0, 31), midnight(2023, 12, 31));
    EXPECT_EQ(midnight(2024, -11, 1), midnight(2023, 1, 1));
    EXPECT_EQ(midnight(2020, 38, 29), midnight(2023, 2, 29));
}

TEST(SerialDateTest, DaysHoursMinutesAndSecondsMayBeAnyNumbers) {
    EXPECT_EQ(midnight(2024, 2, 30), midnight(2024, 3, 1));
    EXPECT_EQ(midnight(2023, 2, 29), midnight(2023, 3, 1));
    EXPECT_EQ(calcDatenum(2024, 1, 1, -24, 0, 0), midnight(2023, 12, 31));
    EXPECT_EQ(calcDatenum(2024, 1, 1, 0, 60, 0), calcDatenum(2024, 1, 1, 1, 0, 0));
    EXPECT_EQ(midnight(2024, 1, 1.5), midnight(2024, 1, 1) + 0.5);
}

TEST(SerialDateTest, FractionsOfYearsAndMonthsAreDropped) {
    EXPECT_EQ(midnight(2024.9, 3.9, 5), midnight(2024, 3, 5));
}

TEST(SerialDateTest, CenturiesAreLeapYearsOnlyEveryFourthTime) {
    EXPECT_EQ(midnight(1900, 3, 1) - midnight(1900, 2, 1), 28);
    EXPECT_EQ(midnight(2000, 3, 1) - midnight(2000, 2, 1), 29);
    EXPECT_EQ(midnight(0, 3, 1) - midnight(0, 2, 1), 29);
    EXPECT_EQ(midnight(-100, 3, 1) - midnight(-100, 2, 1), 28);
    EXPECT_EQ(midnight(-4, 3, 1) - midnight(-4, 2, 1), 29);
}

TEST(SerialDateTest, WhatIsNotFiniteHasNoNumber) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(midnight(std::nan(""), 1, 1)));
    EXPECT_TRUE(std::isnan(midnight(2024, infinity, 1)));
    EXPECT_TRUE(std::isnan(calcDatenum(2024, 1, 1, 0, 0, -infinity)));
}

}  // namespace
