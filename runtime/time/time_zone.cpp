// Time zones by the rules of ICU.
#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <stdexcept>

#include "runtime/time/zone_rules.h"

namespace korvex::runtime::time {

namespace {

UDate toDate(ZoneRules::Moment moment) { return static_cast<UDate>(moment.time_since_epoch().count()); }
ZoneRules::Moment toMoment(UDate date) {
    return ZoneRules::Moment(std::chrono::milliseconds(static_cast<std::int64_t>(date)));
}

class IcuRules : public TabledRules {
public:
    explicit IcuRules(const icu::BasicTimeZone& zone) {
        constexpr Moment earliest = std::chrono::sys_days(std::chrono::year(1400) / 1 / 1);
        add(earliest, offsetIn(zone, earliest));
        icu::TimeZoneTransition change;
        for (UDate place = toDate(earliest); zone.getNextTransition(place, false, change) != 0;) {
            place = change.getTime();
            if (toMoment(place) >= knownUntil) break;
            const icu::TimeZoneRule& rule = *change.getTo();
            add(toMoment(place), Offset(rule.getRawOffset() + rule.getDSTSavings()));
        }
    }

private:
    static Offset offsetIn(const icu::BasicTimeZone& zone, Moment utc) {
        std::int32_t standard = 0;
        std::int32_t daylightSaving = 0;
        UErrorCode status = U_ZERO_ERROR;
        zone.getOffset(toDate(utc), false, standard, daylightSaving, status);
        if (U_FAILURE(status) != 0) throw std::runtime_error(u_errorName(status));
        return Offset(standard + daylightSaving);
    }
};

}  // namespace

ZoneRules::Offset TabledRules::offsetAt(Moment utc) const {
    const Moment known = utc < knownUntil ? utc : inKnownYear(utc);
    const auto next =
        std::upper_bound(changes_.begin() + 1, changes_.end(), known,
                         [](Moment moment, const Change& change) { return moment < change.since; });
    return std::prev(next)->offset;
}

ZoneRules::Moment TabledRules::inKnownYear(Moment utc) {
    using namespace std::chrono;
    // Every kind of year is among these 28: the leap day that a century leaves out is not.
    constexpr year firstKnown{2101};
    constexpr year lastKnown{2128};
    const auto firstDayOf = [](year any) { return sys_days(any / January / 1); };
    const year wanted = year_month_day(floor<days>(utc)).year();
    year same = firstKnown;
    while (same < lastKnown &&
           (same.is_leap() != wanted.is_leap() || weekday(firstDayOf(same)) != weekday(firstDayOf(wanted)))) {
        ++same;
    }
    return utc - (firstDayOf(wanted) - firstDayOf(same));
}

std::unique_ptr<const ZoneRules> namedZone(const std::string& name) {
    const icu::UnicodeString id = icu::UnicodeString::fromUTF8(name);
    // Asked for first: of a name that it does not know ICU makes a zone all the same, and of "GMT+3" one of
    // its own with the sign that the system's settings do not mean.
    icu::UnicodeString canonical;
    UBool isInDatabase = 0;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(id, canonical, isInDatabase, status);
    if (U_FAILURE(status) != 0 || isInDatabase == 0) return nullptr;
    const std::unique_ptr<const icu::TimeZone> zone(icu::TimeZone::createTimeZone(id));
    // All zones of the database are of this class.
    const auto* const withChanges = dynamic_cast<const icu::BasicTimeZone*>(zone.get());
    return withChanges == nullptr ? nullptr : std::make_unique<IcuRules>(*withChanges);
}

}  // namespace korvex::runtime::time

namespace fl::i18n::time_zone {

namespace {

using boost::posix_time::ptime;

timezone::Rules::Moment momentOf(const ptime& utc) {
    static const ptime beginning(boost::gregorian::date(1970, 1, 1));
    const std::chrono::microseconds elapsed((utc - beginning).total_microseconds());
    return timezone::Rules::Moment(std::chrono::floor<std::chrono::milliseconds>(elapsed));
}

std::unique_ptr<const timezone::Rules> rulesOf(const std::string& name) {
    auto rules = name.empty() ? korvex::runtime::time::machineZone() : korvex::runtime::time::namedZone(name);
    if (!rules) throw std::invalid_argument("there is no time zone of the name \"" + name + '"');
    return rules;
}

}  // namespace

timezone::timezone(const std::string& name) : rules_(rulesOf(name)) {}

ptime from_utc(const ptime& utc, const timezone& zone) {
    if (utc.is_special()) return utc;
    return utc + boost::posix_time::milliseconds(zone.rules().offsetAt(momentOf(utc)).count());
}

}  // namespace fl::i18n::time_zone
