// Times of files as a number of nanoseconds.
#pragma once

#include <time.h>

#include <cstdint>

namespace korvex::runtime::storage::posix {

inline constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;

/// Nanoseconds since 1970. A time that does not fit, before 1678 or after 2261, becomes the first or the last
/// one that does.
std::int64_t nanosecondsOf(const struct timespec& time) noexcept;

struct timespec timeOf(std::int64_t nanoseconds) noexcept;

}  // namespace korvex::runtime::storage::posix
