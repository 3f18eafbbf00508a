// fl::i18n::time_zone: the local time of a moment.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <memory>
#include <string>

namespace fl::i18n::time_zone {

/// The rules of one time zone, as they are when the object is made. Cheap to copy; any thread may use it.
class timezone {
public:
    /// A zone of the time zone database, as "Europe/Berlin". The empty name is the zone that the machine is
    /// set to. Raises `std::invalid_argument` for a name that is none.
    explicit timezone(const std::string& name);

    class Rules;
    const Rules& rules() const noexcept { return *rules_; }

private:
    std::shared_ptr<const Rules> rules_;
};

/// The local time at a moment given in UTC, with the offset that held, or will hold, at that moment.
/// Not-a-date-time and the infinities stay what they are. A local time outside of the years 1400 to 9999 is
/// handed out all the same; taking its date apart raises what Boost raises for such a year.
boost::posix_time::ptime from_utc(const boost::posix_time::ptime& utc, const timezone& zone);

}  // namespace fl::i18n::time_zone
