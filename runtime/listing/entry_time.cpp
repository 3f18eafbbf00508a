// Time stamps of entries.
#include "runtime/listing/entry_time.h"

namespace korvex::runtime::listing {

namespace {

using boost::gregorian::date;
using boost::posix_time::ptime;

constexpr std::int64_t microsecondsInSecond = 1'000'000;
constexpr std::int64_t nanosecondsInMicrosecond = 1000;

/// The years of the calendar that the time stamps are kept in.
constexpr std::int64_t firstSecond = -17'987'443'200;    // 1 January 1400
constexpr std::int64_t secondsBehind = 253'402'300'800;  // 1 January 10000

}  // namespace

ptime entryTime(std::int64_t seconds, std::int64_t nanoseconds) {
    if (seconds < firstSecond) return ptime(boost::date_time::neg_infin);
    if (seconds >= secondsBehind) return ptime(boost::date_time::pos_infin);
    static const ptime beginning(date(1970, 1, 1));
    const std::int64_t microseconds = seconds * microsecondsInSecond + nanoseconds / nanosecondsInMicrosecond;
    return beginning + boost::posix_time::microseconds(microseconds);
}

}  // namespace korvex::runtime::listing
