// Dates as serial numbers.
#include "platform/serial_date.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace korvex::timefun::utilities {

namespace {

constexpr double secondsInDay = 86400;
constexpr double monthsInYear = 12;

/// Days of the year before each month, in a year that is no leap year.
constexpr std::array<double, 12> daysBeforeMonth{0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

/// From 1 January of year 0 to that of `year`. Every fourth year is a leap year, but of those that end in 00
/// only every fourth; year 0 is one.
double daysBeforeYear(double year) {
    return 365 * year + std::ceil(year / 4) - std::ceil(year / 100) + std::ceil(year / 400);
}

bool isLeapYear(double year) {
    return std::fmod(year, 4) == 0 && (std::fmod(year, 100) != 0 || std::fmod(year, 400) == 0);
}

}  // namespace

double calcDatenum(double year, double month, double day, double hour, double minute, double second) {
    for (const double part : {year, month, day, hour, minute, second}) {
        if (!std::isfinite(part)) return std::numeric_limits<double>::quiet_NaN();
    }
    const double monthsFromJanuary = std::trunc(month) - 1;
    const double yearsFromMonths = std::floor(monthsFromJanuary / monthsInYear);
    const double wholeYear = std::trunc(year) + yearsFromMonths;
    const auto monthIndex = static_cast<std::size_t>(monthsFromJanuary - yearsFromMonths * monthsInYear);
    const double leapDay = monthIndex > 1 && isLeapYear(wholeYear) ? 1 : 0;

    const double seconds = (hour * 60 + minute) * 60 + second;
    return daysBeforeYear(wholeYear) + daysBeforeMonth.at(monthIndex) + leapDay + day +
           seconds / secondsInDay;
}

}  // namespace korvex::timefun::utilities
