// The machine's time zone on Windows: ICU finds it.
#include <unicode/timezone.h>

#include <memory>
#include <string>
#include <utility>

#include "runtime/time/zone_rules.h"

namespace korvex::runtime::time {

std::unique_ptr<const ZoneRules> machineZone() {
    const std::unique_ptr<const icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString id;
    std::string name;
    zone->getID(id).toUTF8String(name);
    std::unique_ptr<const ZoneRules> rules = namedZone(name);
    return rules ? std::move(rules) : namedZone("UTC");
}

}  // namespace korvex::runtime::time
