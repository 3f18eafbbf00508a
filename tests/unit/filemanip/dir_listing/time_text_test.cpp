// What becomes of the answer of the C runtime when a date is made a text: over a stand-in for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wchar.h>

#include <algorithm>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <string>

#include "io/filesystem/filemanip/dir_listing_time_stamps.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace {

/// What the C runtime is asked, and what it answers.
struct FakeRuntime {
    std::wstring text;
    /// Of the units that were written; no more than there are.
    std::size_t reported = 0;

    std::wstring format;
    std::size_t capacity = 0;
    bool wasBufferZero = false;
    int daylightSaving = 0;
};

FakeRuntime& fakeRuntime() {
    static FakeRuntime runtime;
    return runtime;
}

}  // namespace

extern "C" std::size_t wcsftime(wchar_t* buffer, std::size_t capacity, const wchar_t* format,
                                const struct tm* time) noexcept {
    FakeRuntime& runtime = fakeRuntime();
    runtime.format = format;
    runtime.capacity = capacity;
    runtime.wasBufferZero = std::all_of(buffer, buffer + capacity, [](wchar_t unit) { return unit == 0; });
    runtime.daylightSaving = time->tm_isdst;
    std::copy(runtime.text.begin(), runtime.text.end(), buffer);
    return runtime.reported;
}

namespace korvex::filemanip::tests {
namespace {

DateFields fieldsFor(const std::wstring& text, std::size_t reported) {
    fakeRuntime() = FakeRuntime();
    fakeRuntime().text = text;
    fakeRuntime().reported = reported;
    return makeDateFields(boost::posix_time::time_from_string("2024-03-05 14:07:09"));
}

TEST(TimeTextTest, RuntimeIsAskedForTheFormWithAnEmptyBufferOfFiftyUnits) {
    fieldsFor(L"x", 1);
    EXPECT_EQ(fakeRuntime().format, L"%d-%b-%Y %H:%M:%S");
    EXPECT_EQ(fakeRuntime().capacity, 50U);
    EXPECT_TRUE(fakeRuntime().wasBufferZero);
    EXPECT_EQ(fakeRuntime().daylightSaving, -1);
}

TEST(TimeTextTest, TextIsWhatTheRuntimeWritesWhateverItsLanguage) {
    EXPECT_EQ(textOf(fieldsFor(L"05-M\u00E4r-2024 14:07:09", 20).date.get()), "05-M\xC3\xA4r-2024 14:07:09");
    EXPECT_EQ(textOf(fieldsFor(L"05-3\u6708-2024", 10).date.get()), "05-3\xE6\x9C\x88-2024");
}

TEST(TimeTextTest, ACharacterBeyondSixteenBitsIsAPairOfUnits) {
    EXPECT_EQ(textOf(fieldsFor(L"05-\U0001D400-2024", 9).date.get()), "05-\xF0\x9D\x90\x80-2024");
}

TEST(TimeTextTest, OnlyTheUnitsThatAreReportedCount) {
    EXPECT_EQ(textOf(fieldsFor(L"05-Mar-2024 14:07:09", 11).date.get()), "05-Mar-2024");
}

TEST(TimeTextTest, NothingReportedIsAnEmptyTextWithANumber) {
    const DateFields fields = fieldsFor(L"something", 0);
    EXPECT_EQ(kxGetClassID(fields.date.get()), kxCHAR_CLASS);
    EXPECT_TRUE(kxIsEmpty(fields.date.get()));
    EXPECT_NEAR(kxGetScalar(fields.datenum.get()), 739316.5, 1.1);
}

}  // namespace
}  // namespace korvex::filemanip::tests
