// The date fields of `dir`, in several zones: each in a process of its own, for the module reads the zone
// once.
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <clocale>
#include <cstdlib>
#include <iomanip>
#include <iostream>

#include "io/filesystem/filemanip/dir_listing_time_stamps.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

using boost::posix_time::ptime;
using boost::posix_time::time_from_string;

/// Both fields on standard error, and the end of the process.
[[noreturn]] void showAndExit(const std::vector<std::string>& moments) {
    for (const std::string& utc : moments) {
        const DateFields fields = makeDateFields(time_from_string(utc));
        std::cerr << '[' << textOf(fields.date.get()) << ' ';
        if (!kxIsEmpty(fields.datenum.get())) {
            std::cerr << std::fixed << std::setprecision(8) << kxGetScalar(fields.datenum.get());
        }
        std::cerr << ']';
    }
    std::exit(EXIT_SUCCESS);
}

/// The zone is set for the child processes of a test, which begin anew.
class TimeStampsTest : public testing::Test {
protected:
    TimeStampsTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~TimeStampsTest() override { hadZone_ ? ::setenv("TZ", zone_.c_str(), 1) : ::unsetenv("TZ"); }

    static void setZone(const char* zone) { ::setenv("TZ", zone, 1); }

private:
    const bool hadZone_ = std::getenv("TZ") != nullptr;
    const std::string zone_ = hadZone_ ? std::getenv("TZ") : "";
};

using TimeStampsDeathTest = TimeStampsTest;

TEST_F(TimeStampsDeathTest, TimeIsThatOfTheZone) {
    setZone("UTC");
    EXPECT_EXIT(showAndExit({"2024-03-05 14:07:09"}), testing::ExitedWithCode(0),
                "\\[05-Mar-2024 14:07:09 739316.58829861\\]");
    setZone("Europe/Berlin");
    EXPECT_EXIT(showAndExit({"2024-03-05 13:07:09"}), testing::ExitedWithCode(0),
                "\\[05-Mar-2024 14:07:09 739316.58829861\\]");
    setZone("America/New_York");
    EXPECT_EXIT(showAndExit({"2024-03-06 03:07:09"}), testing::ExitedWithCode(0),
                "\\[05-Mar-2024 22:07:09 739316.92163194\\]");
    setZone("Asia/Kolkata");
    EXPECT_EXIT(showAndExit({"2024-03-05 18:30:00"}), testing::ExitedWithCode(0),
                "\\[06-Mar-2024 00:00:00 739317.00000000\\]");
}

TEST_F(TimeStampsDeathTest, DaylightSavingIsThatOfTheStamp) {
    setZone("Europe/Berlin");
    EXPECT_EXIT(showAndExit({"2024-03-31 00:59:59", "2024-03-31 01:00:00", "2024-12-01 00:00:00"}),
                testing::ExitedWithCode(0),
                "\\[31-Mar-2024 01:59:59 .*\\]\\[31-Mar-2024 03:00:00 .*\\]\\[01-Dec-2024 01:00:00 .*\\]");
}

TEST_F(TimeStampsDeathTest, FractionOfASecondIsDroppedNotRounded) {
    setZone("UTC");
    EXPECT_EXIT(showAndExit({"2024-03-05 23:59:59.999999"}), testing::ExitedWithCode(0),
                "\\[05-Mar-2024 23:59:59 739316.99998843\\]");
    setZone("Asia/Kolkata");
    EXPECT_EXIT(showAndExit({"1969-12-31 23:59:59.999999"}), testing::ExitedWithCode(0),
                "\\[01-Jan-1970 05:29:59 719529.22915509\\]");
}

TEST_F(TimeStampsDeathTest, EdgesOfTheCalendarAreShown) {
    setZone("UTC");
    EXPECT_EXIT(showAndExit({"1400-01-01 00:00:00", "9999-12-31 23:59:59"}), testing::ExitedWithCode(0),
                "\\[01-Jan-1400 00:00:00 511341.00000000\\]\\[31-Dec-9999 23:59:59 3652425.99998843\\]");
}

TEST_F(TimeStampsDeathTest, YearThatTheZoneMovesOutOfTheCalendarGivesNothing) {
    setZone("Asia/Kolkata");
    EXPECT_EXIT(showAndExit({"9999-12-31 23:00:00", "9999-12-31 01:00:00"}), testing::ExitedWithCode(0),
                "\\[ \\]\\[31-Dec-9999 06:30:00 .*\\]");
    setZone("America/New_York");
    EXPECT_EXIT(showAndExit({"1400-01-01 01:00:00"}), testing::ExitedWithCode(0), "\\[ \\]");
}

TEST_F(TimeStampsDeathTest, ChangeOfTheZoneIsNotSeenAfterTheFirstCall) {
    setZone("UTC");
    EXPECT_EXIT(
        {
            makeDateFields(time_from_string("2024-03-05 14:07:09"));
            setZone("Asia/Kolkata");
            ::tzset();
            showAndExit({"2024-03-05 14:07:09"});
        },
        testing::ExitedWithCode(0), "\\[05-Mar-2024 14:07:09 ");
}

TEST_F(TimeStampsTest, FieldsAreACharacterRowAndADouble) {
    const DateFields fields = makeDateFields(time_from_string("2024-03-05 14:07:09"));
    EXPECT_EQ(kxGetClassID(fields.date.get()), kxCHAR_CLASS);
    EXPECT_EQ(dimensions(fields.date), (std::vector<std::size_t>{1, 20}));
    EXPECT_EQ(kxGetClassID(fields.datenum.get()), kxDOUBLE_CLASS);
    EXPECT_EQ(dimensions(fields.datenum), (std::vector<std::size_t>{1, 1}));
}

TEST_F(TimeStampsTest, WhatIsNoTimeGivesTwoEmptyArraysOfItsOwn) {
    using namespace boost::date_time;
    for (const special_values special : {not_a_date_time, pos_infin, neg_infin}) {
        const DateFields fields = makeDateFields(ptime(special));
        EXPECT_EQ(kxGetClassID(fields.date.get()), kxCHAR_CLASS);
        EXPECT_EQ(dimensions(fields.date), (std::vector<std::size_t>{0, 0}));
        EXPECT_EQ(kxGetClassID(fields.datenum.get()), kxDOUBLE_CLASS);
        EXPECT_EQ(dimensions(fields.datenum), (std::vector<std::size_t>{0, 0}));
        EXPECT_EQ(kxGetReferenceCount(fields.date.get()), 1U);
    }
}

TEST_F(TimeStampsTest, NumberAgreesWithTheTextToTheSecond) {
    const DateFields fields = makeDateFields(time_from_string("2024-03-05 14:07:09"));
    const DateFields next = makeDateFields(time_from_string("2024-03-05 14:07:10"));
    EXPECT_NEAR(kxGetScalar(next.datenum.get()) - kxGetScalar(fields.datenum.get()), 1 / 86400.0, 1e-9);
}

}  // namespace
}  // namespace korvex::filemanip::tests
