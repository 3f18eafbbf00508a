// Times of files as a number of nanoseconds.
#include "runtime/storage/providers/local/posix/local_times.h"

#include <limits>

namespace korvex::runtime::storage::posix {

std::int64_t nanosecondsOf(const struct timespec& time) noexcept {
    using Limits = std::numeric_limits<std::int64_t>;
    // The last second at either end is given up, so that the fraction cannot overflow.
    if (time.tv_sec <= Limits::min() / nanosecondsInSecond) return Limits::min();
    if (time.tv_sec >= Limits::max() / nanosecondsInSecond) return Limits::max();
    return time.tv_sec * nanosecondsInSecond + time.tv_nsec;
}

struct timespec timeOf(std::int64_t nanoseconds) noexcept {
    const std::int64_t seconds = nanoseconds / nanosecondsInSecond;
    const std::int64_t rest = nanoseconds % nanosecondsInSecond;
    // Rounds down, also below zero, as times before 1970 need it.
    if (rest < 0) return {seconds - 1, rest + nanosecondsInSecond};
    return {seconds, rest};
}

}  // namespace korvex::runtime::storage::posix
