// korvex::timefun::utilities: dates as serial numbers.
#pragma once

namespace korvex::timefun::utilities {

/// Days since the day before 1 January of year 0, by the Gregorian calendar carried back, with the time of
/// day as a fraction: 1 January 1970, 12:00 is 719529.5. A month outside of 1 to 12 counts on into other
/// years; day, hour, minute and second may be any numbers. What is left of a year or month behind its point
/// is dropped. Not a number for anything that is not finite.
double calcDatenum(double year, double month, double day, double hour, double minute, double second);

}  // namespace korvex::timefun::utilities
