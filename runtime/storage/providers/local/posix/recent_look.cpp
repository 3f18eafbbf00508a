// What a look at an entry of a listing has told a moment ago.
#include "runtime/storage/providers/local/posix/recent_look.h"

#include <time.h>

#include <atomic>
#include <cstdint>

namespace korvex::runtime::storage::posix {

namespace {

/// Steps of the coarse clock are at most 10 ms long.
constexpr std::uint64_t longestAge = 10'000'000;

std::atomic<std::uint64_t> lastProtection{1};

/// In nanoseconds. Going in steps is good enough, and costs next to nothing.
std::uint64_t now() noexcept {
    struct ::timespec time {};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace

void rememberWritable(const AbsoluteIRI& location) noexcept {
    if (!location.parts().found) return;
    location.parts().writableSince = now();
    location.parts().writableBefore = lastProtection.load();
}

bool isJustSeenWritable(const AbsoluteIRI& location) noexcept {
    const std::uint64_t protection = location.parts().writableBefore.exchange(0);
    return protection != 0 && protection == lastProtection.load() &&
           now() - location.parts().writableSince.load() <= longestAge;
}

void forgetWritable() noexcept { ++lastProtection; }

}  // namespace korvex::runtime::storage::posix
