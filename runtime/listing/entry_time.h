// Time stamps of entries.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstdint>

namespace korvex::runtime::listing {

/// A moment given in seconds since 1970 and nanoseconds (0 to 999999999) behind them, cut to the microsecond.
/// Infinity outside of the years 1400 to 9999.
boost::posix_time::ptime entryTime(std::int64_t seconds, std::int64_t nanoseconds);

}  // namespace korvex::runtime::listing
