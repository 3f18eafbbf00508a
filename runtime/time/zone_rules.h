// The rules behind a time zone, and where they come from.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/time_zone.h"

namespace fl::i18n::time_zone {

class timezone::Rules {
public:
    using Moment = std::chrono::sys_time<std::chrono::milliseconds>;
    using Offset = std::chrono::milliseconds;

    virtual ~Rules() = default;
    /// What has to be added to UTC at that moment. Any thread may ask.
    virtual Offset offsetAt(Moment utc) const = 0;
};

}  // namespace fl::i18n::time_zone

namespace korvex::runtime::time {

using ZoneRules = fl::i18n::time_zone::timezone::Rules;

/// Rules that know the changes once and for all: asking for each time stamp anew would take longer than
/// everything else that is done with it, and might give the rules of another zone by then.
class TabledRules : public ZoneRules {
public:
    Offset offsetAt(Moment utc) const final;

protected:
    /// For the constructors of derived classes. The first offset holds from the beginning of time; then
    /// follow the changes, in their order, up to `knownUntil`.
    void add(Moment since, Offset offset) { changes_.push_back({since, offset}); }
    /// From then on each year has the changes of an earlier one that has the same days of the week. No rule
    /// that is known by now ends after the year 2100.
    static constexpr Moment knownUntil = std::chrono::sys_days(std::chrono::year(2129) / 1 / 1);

private:
    struct Change {
        Moment since;
        Offset offset;
    };

    static Moment inKnownYear(Moment utc);

    std::vector<Change> changes_;
};

/// The rules of a zone of the time zone database; null when it has none of that name.
std::unique_ptr<const ZoneRules> namedZone(const std::string& name);

/// The rules of the zone that the machine is set to; UTC where it is set to nothing.
std::unique_ptr<const ZoneRules> machineZone();

}  // namespace korvex::runtime::time
