// Local times: the offset is that of the moment, in every zone, and nothing is lost on the way.
#include "platform/time_zone.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using boost::posix_time::ptime;
using boost::posix_time::time_from_string;
using fl::i18n::time_zone::from_utc;
using fl::i18n::time_zone::timezone;

/// Both as "2024-03-05 14:07:09".
std::string localTime(const std::string& utc, const std::string& zone) {
    return to_iso_extended_string(from_utc(time_from_string(utc), timezone(zone))).replace(10, 1, " ");
}

TEST(TimeZoneTest, OffsetIsThatOfTheMoment) {
    EXPECT_EQ(localTime("2024-03-05 13:07:09", "Europe/Berlin"), "2024-03-05 14:07:09");
    EXPECT_EQ(localTime("2024-08-05 12:07:09", "Europe/Berlin"), "2024-08-05 14:07:09");
    EXPECT_EQ(localTime("2024-03-05 13:07:09", "UTC"), "2024-03-05 13:07:09");
    EXPECT_EQ(localTime("2024-03-05 13:07:09", "Asia/Kolkata"), "2024-03-05 18:37:09");
    EXPECT_EQ(localTime("2024-03-05 03:07:09", "America/New_York"), "2024-03-04 22:07:09");
}

TEST(TimeZoneTest, ChangeHappensWithTheSecond) {
    EXPECT_EQ(localTime("2024-03-31 00:59:59", "Europe/Berlin"), "2024-03-31 01:59:59");
    EXPECT_EQ(localTime("2024-03-31 01:00:00", "Europe/Berlin"), "2024-03-31 03:00:00");
    EXPECT_EQ(localTime("2024-10-27 00:59:59", "Europe/Berlin"), "2024-10-27 02:59:59");
    EXPECT_EQ(localTime("2024-10-27 01:00:00", "Europe/Berlin"), "2024-10-27 02:00:00");
    EXPECT_EQ(localTime("2024-10-05 15:29:59", "Australia/Lord_Howe"), "2024-10-06 01:59:59");
    EXPECT_EQ(localTime("2024-10-05 15:30:00", "Australia/Lord_Howe"), "2024-10-06 02:30:00");
}

TEST(TimeZoneTest, ChangesOfThePastCount) {
    // A day that a country left out.
    EXPECT_EQ(localTime("2011-12-30 09:59:59", "Pacific/Apia"), "2011-12-29 23:59:59");
    EXPECT_EQ(localTime("2011-12-30 10:00:00", "Pacific/Apia"), "2011-12-31 00:00:00");
    EXPECT_EQ(localTime("1946-07-01 12:00:00", "Europe/Berlin"), "1946-07-01 14:00:00");
    EXPECT_EQ(localTime("1979-07-01 12:00:00", "Europe/Berlin"), "1979-07-01 13:00:00");
    EXPECT_EQ(localTime("1850-01-01 00:00:00", "America/New_York"), "1849-12-31 19:03:58");
}

TEST(TimeZoneTest, RulesGoOnInTheFuture) {
    EXPECT_EQ(localTime("2099-07-01 12:00:00", "Europe/Berlin"), "2099-07-01 14:00:00");
    EXPECT_EQ(localTime("2100-07-01 12:00:00", "Europe/Berlin"), "2100-07-01 14:00:00");
    EXPECT_EQ(localTime("9000-01-01 12:00:00", "Europe/Berlin"), "9000-01-01 13:00:00");
    EXPECT_EQ(localTime("9000-07-01 12:00:00", "Europe/Berlin"), "9000-07-01 14:00:00");
    // The last Sundays of March and October, in years of every kind.
    for (const char* day : {"2128-03-28", "2129-03-27", "2130-03-26", "2131-03-25", "2132-03-30",
                            "2133-03-29", "2400-03-26", "9996-03-31"}) {
        EXPECT_EQ(localTime(std::string(day) + " 00:59:59", "Europe/Berlin"), std::string(day) + " 01:59:59");
        EXPECT_EQ(localTime(std::string(day) + " 01:00:00", "Europe/Berlin"), std::string(day) + " 03:00:00");
    }
    EXPECT_EQ(localTime("2131-10-28 00:59:59", "Europe/Berlin"), "2131-10-28 02:59:59");
    EXPECT_EQ(localTime("2131-10-28 01:00:00", "Europe/Berlin"), "2131-10-28 02:00:00");
    EXPECT_EQ(localTime("2130-12-31 23:30:00", "Australia/Sydney"), "2131-01-01 10:30:00");
}

TEST(TimeZoneTest, FractionsStayAndMomentsBefore1970AreCutDownwards) {
    EXPECT_EQ(localTime("2024-03-05 23:59:59.999999", "UTC"), "2024-03-05 23:59:59.999999");
    EXPECT_EQ(localTime("1969-12-31 23:59:59.999999", "Asia/Kolkata"), "1970-01-01 05:29:59.999999");
    // The last microsecond of summer time, before 1970.
    EXPECT_EQ(localTime("1969-10-26 05:59:59.999999", "America/New_York"), "1969-10-26 01:59:59.999999");
    EXPECT_EQ(localTime("1969-10-26 06:00:00", "America/New_York"), "1969-10-26 01:00:00");
}

TEST(TimeZoneTest, SpecialTimesStayWhatTheyAre) {
    const timezone zone("Europe/Berlin");
    EXPECT_TRUE(from_utc(ptime(boost::date_time::not_a_date_time), zone).is_not_a_date_time());
    EXPECT_TRUE(from_utc(ptime(boost::date_time::pos_infin), zone).is_pos_infinity());
    EXPECT_TRUE(from_utc(ptime(boost::date_time::neg_infin), zone).is_neg_infinity());
}

TEST(TimeZoneTest, DayOutsideOfTheCalendarCannotBeTakenApart) {
    const ptime late = from_utc(time_from_string("9999-12-31 23:30:00"), timezone("Europe/Berlin"));
    EXPECT_THROW(late.date().year_month_day(), std::out_of_range);
    const ptime early = from_utc(time_from_string("1400-01-01 00:30:00"), timezone("America/New_York"));
    EXPECT_THROW(early.date().year_month_day(), std::out_of_range);
    EXPECT_EQ(localTime("9999-12-31 23:30:00", "America/New_York"), "9999-12-31 18:30:00");
}

TEST(TimeZoneTest, UnknownNameIsRefused) {
    EXPECT_THROW(timezone("Europe/Nowhere"), std::invalid_argument);
    EXPECT_THROW(timezone("GMT+3"), std::invalid_argument);
    EXPECT_THROW(timezone("\xFF"), std::invalid_argument);
}

TEST(TimeZoneTest, EmptyNameIsTheMachinesZone) { EXPECT_NO_THROW(timezone("")); }

TEST(TimeZoneTest, CopyHasTheSameRules) {
    const timezone zone("Asia/Kolkata");
    const timezone copy = zone;
    EXPECT_EQ(&copy.rules(), &zone.rules());
}

}  // namespace
