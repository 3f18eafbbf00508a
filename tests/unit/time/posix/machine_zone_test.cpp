// The zone that the machine is set to: what the C library says of it. Run in a process for each of many
// settings of TZ.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <string>
#include <vector>

#include "platform/time_zone.h"

namespace {

using boost::posix_time::ptime;
using fl::i18n::time_zone::from_utc;
using fl::i18n::time_zone::timezone;

constexpr ::time_t day = 86400;

ptime utc(::time_t second) {
    return ptime(boost::gregorian::date(1970, 1, 1)) + boost::posix_time::seconds(second);
}

ptime asTheSystemSays(::time_t second) {
    struct ::tm local {};
    ::localtime_r(&second, &local);
    return boost::posix_time::ptime_from_tm(local);
}

TEST(MachineZoneTest, LocalTimeIsThatOfTheSystemAtAnyMomentFrom1970To2037) {
    const timezone zone("");
    constexpr ::time_t step = 2 * day + 5003;
    for (::time_t second = 0; second < 68 * 365 * day; second += step) {
        ASSERT_EQ(from_utc(utc(second), zone), asTheSystemSays(second)) << second;
    }
}

TEST(MachineZoneTest, LocalTimeIsThatOfTheSystemInTheCenturiesToCome) {
    const timezone zone("");
    constexpr ::time_t begin = 4102444800;  // 1 January 2100
    constexpr ::time_t end = begin + 420 * 365 * day;
    constexpr ::time_t step = 9 * day + 5003;  // not the same day of the week each time
    for (::time_t second = begin; second < end; second += step) {
        ASSERT_EQ(from_utc(utc(second), zone), asTheSystemSays(second)) << second;
    }
}

TEST(MachineZoneTest, ChangeOfTheZoneIsNotSeenByAnObjectThatIsThere) {
    // In the years 2024, 2150 and 9000.
    constexpr ::time_t seconds[] = {1720000000, 5696000000, 221846000000};
    const timezone zone("");
    std::vector<ptime> before;
    for (const ::time_t second : seconds)
        before.push_back(from_utc(utc(second), zone));
    const char* const earlier = ::getenv("TZ");
    const std::string setting = earlier == nullptr ? "" : earlier;
    ::setenv("TZ", "Pacific/Kiritimati", 1);
    ::tzset();
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(from_utc(utc(seconds[i]), zone), before[i]);
    earlier == nullptr ? ::unsetenv("TZ") : ::setenv("TZ", setting.c_str(), 1);
    ::tzset();
}

}  // namespace
