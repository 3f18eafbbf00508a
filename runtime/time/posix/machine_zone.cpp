// The machine's time zone on POSIX systems: the one of the variable TZ, or else the system's own.
#include <time.h>
#include <unicode/timezone.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "runtime/time/zone_rules.h"

namespace korvex::runtime::time {

namespace {

using std::chrono::seconds;

using Moment = ZoneRules::Moment;
using Offset = ZoneRules::Offset;

/// By the C library, which reads the system's own database and any form of TZ.
Offset systemOffset(Moment utc) {
    const ::time_t second = std::chrono::floor<seconds>(utc).time_since_epoch().count();
    struct ::tm local {};
    return ::localtime_r(&second, &local) == nullptr ? Offset(0) : Offset(seconds(local.tm_gmtoff));
}

/// The C library's rules as they were when this was made: it may read TZ and its files anew at any time.
class SystemRules : public TabledRules {
public:
    SystemRules() {
        // No zone of the database has kept an offset for less than that.
        constexpr std::chrono::days step{3};
        Moment known = std::chrono::sys_days(std::chrono::year(1850) / 1 / 1);
        Offset offset = systemOffset(known);
        add(known, offset);
        while (known < knownUntil) {
            const Offset next = systemOffset(known + step);
            if (next != offset) add(changeBetween(known, known + step), next);
            known += step;
            offset = next;
        }
    }

private:
    static Moment changeBetween(Moment before, Moment behind) {
        const Offset offset = systemOffset(before);
        while (behind - before > seconds(1)) {
            const Moment middle = std::chrono::floor<seconds>(before + (behind - before) / 2);
            (systemOffset(middle) == offset ? before : behind) = middle;
        }
        return behind;
    }
};

/// The name under which the database may know the zone.
std::string nameOfZone() {
    if (const char* const variable = std::getenv("TZ")) {
        const std::string setting = variable;
        return setting.starts_with(':') ? setting.substr(1) : setting;
    }
    const std::unique_ptr<const icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString id;
    std::string name;
    return zone->getID(id).toUTF8String(name);
}

/// Whether the rules are the system's at many moments of the time for which its database goes into detail.
bool agreeWithSystem(const ZoneRules& rules) {
    constexpr std::chrono::days step{10};
    constexpr Moment end = std::chrono::sys_days(std::chrono::year(2038) / 1 / 1);
    for (Moment moment{}; moment < end; moment += step) {
        if (rules.offsetAt(moment) != systemOffset(moment)) return false;
    }
    return true;
}

}  // namespace

// Where the database of ICU is older than the system's, governments have changed their rules in between, and
// what `ls` shows is right.
std::unique_ptr<const ZoneRules> machineZone() {
    ::tzset();
    std::unique_ptr<const ZoneRules> zone = namedZone(nameOfZone());
    if (zone && agreeWithSystem(*zone)) return zone;
    return std::make_unique<SystemRules>();
}

}  // namespace korvex::runtime::time
