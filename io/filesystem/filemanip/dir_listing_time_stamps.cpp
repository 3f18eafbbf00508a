// The two fields of `dir` that tell when an entry was last changed.
#include "io/filesystem/filemanip/dir_listing_time_stamps.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <cwchar>
#include <string>
#include <string_view>

#include "platform/serial_date.h"
#include "platform/time_zone.h"

namespace korvex::filemanip {

namespace {

using boost::posix_time::ptime;

const fl::i18n::time_zone::timezone& machineZone() {
    static const fl::i18n::time_zone::timezone zone{std::string()};
    return zone;
}

/// Raises what Boost raises for a year outside of its calendar. A fraction of a second is dropped.
std::tm calendarTime(const ptime& local) {
    constexpr std::int64_t microsecondsInSecond = 1'000'000;
    const auto day = local.date().year_month_day();
    const auto secondOfDay =
        static_cast<int>(local.time_of_day().total_microseconds() / microsecondsInSecond);
    std::tm time{};
    time.tm_year = day.year - 1900;
    time.tm_mon = day.month - 1;
    time.tm_mday = day.day;
    time.tm_hour = secondOfDay / 3600;
    time.tm_min = secondOfDay / 60 % 60;
    time.tm_sec = secondOfDay % 60;
    time.tm_isdst = -1;
    return time;
}

/// In 16-bit units; the names of months may be written in any script.
std::u16string toUnits(std::wstring_view text) {
    std::u16string units;
    units.reserve(text.size());
    for (const wchar_t character : text) {
        const auto codePoint = static_cast<char32_t>(character);
        if (codePoint <= 0xFFFF) {
            units += static_cast<char16_t>(codePoint);
        } else {
            units += static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
            units += static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
        }
    }
    return units;
}

std::u16string dateText(const std::tm& time) {
    std::array<wchar_t, 50> buffer{};
    const std::size_t length = std::wcsftime(buffer.data(), buffer.size(), L"%d-%b-%Y %H:%M:%S", &time);
    return toUnits({buffer.data(), length});
}

double dateNumber(const std::tm& time) {
    return timefun::utilities::calcDatenum(time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour,
                                           time.tm_min, time.tm_sec);
}

DateFields emptyFields() {
    return {matrix::create(std::u16string_view()), matrix::ArrayOwner(kxCreateDoubleMatrix(0, 0))};
}

}  // namespace

DateFields makeDateFields(const ptime& modified) {
    if (modified.is_special()) return emptyFields();
    try {
        const std::tm time = calendarTime(fl::i18n::time_zone::from_utc(modified, machineZone()));
        return {matrix::create(dateText(time)), matrix::ArrayOwner(kxCreateDoubleScalar(dateNumber(time)))};
    } catch (...) {
        // A time that cannot be shown is no reason to lose the entry.
        return emptyFields();
    }
}

}  // namespace korvex::filemanip
