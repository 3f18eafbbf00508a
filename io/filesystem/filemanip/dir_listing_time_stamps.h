// The two fields of `dir` that tell when an entry was last changed.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include "platform/kx.h"

namespace korvex::filemanip {

struct DateFields {
    /// A character row, as "05-Mar-2024 14:07:09"; the month's name as the C runtime has it.
    matrix::ArrayOwner date;
    /// The serial date number.
    matrix::ArrayOwner datenum;
};

/// The fields for a time stamp in UTC, in the machine's time zone as it was at the first call. Both are
/// 0-by-0 for a time stamp that cannot be shown: not-a-date-time, an infinity, a year outside of 1400 to
/// 9999.
DateFields makeDateFields(const boost::posix_time::ptime& modified);

}  // namespace korvex::filemanip
