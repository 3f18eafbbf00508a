// Changes that times do not tell apart.
#include "runtime/storage/providers/local/posix/clock_step.h"

#include <cstdint>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/local_times.h"

namespace korvex::runtime::storage::posix {

namespace {

constexpr long stepOfWaiting = 1'000'000;

/// Some file systems keep whole seconds, or every second one.
constexpr time_t coarsestStep = 2;

/// Whether a change that is still to come could get the same time.
bool isFresh(const struct ::timespec& changed) noexcept {
    struct ::timespec step {};
    struct ::timespec now {};
    if (::clock_getres(CLOCK_REALTIME_COARSE, &step) != 0 ||
        ::clock_gettime(CLOCK_REALTIME_COARSE, &now) != 0)
        return false;
    const time_t age = now.tv_sec - changed.tv_sec;
    if (changed.tv_nsec == 0 && age >= 0 && age < coarsestStep) return true;
    const time_t seconds = -age;
    // Times that are far ahead come from another clock.
    if (seconds < 0 || seconds > 1) return false;
    const std::int64_t ahead = seconds * nanosecondsInSecond + changed.tv_nsec - now.tv_nsec;
    return ahead >= 0 && ahead < step.tv_nsec;
}

}  // namespace

bool awaitClockStep(const struct ::timespec& changed) noexcept {
    if (!isFresh(changed)) return false;
    while (isFresh(changed) && !interpreter::isInterruptPending()) {
        const struct ::timespec wait { 0, stepOfWaiting };
        ::nanosleep(&wait, nullptr);
    }
    return true;
}

}  // namespace korvex::runtime::storage::posix
