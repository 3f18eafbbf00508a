// How fast a long command is: from what the storage layer tells, to what a person wants to know.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace korvex::host {

using ProgressTime = std::chrono::steady_clock::time_point;

/// What one operation of the storage layer has told; a command may consist of many operations.
struct OperationCounts {
    std::uint64_t itemsDone = 0;
    std::uint64_t itemsKnown = 0;
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesKnown = 0;

    bool operator==(const OperationCounts&) const = default;
};

/// What a progress line shows.
struct ProgressView {
    /// Of the whole command so far.
    std::uint64_t items = 0;
    std::uint64_t bytes = 0;
    /// Of the last few seconds.
    double itemsPerSecond = 0;
    double bytesPerSecond = 0;
    /// What was finished last, or is under way.
    std::u16string name;
    /// Of the one file under way, when it is the whole operation: how much of it is done, in percent, and how
    /// long it will take. Of trees nobody knows how much there is before it is done.
    std::optional<unsigned> percent;
    std::optional<std::uint64_t> secondsLeft;
};

class ProgressPace {
public:
    /// A command begins.
    void begin(ProgressTime now);
    void record(const OperationCounts& counts, ProgressTime now);

    /// Whether it is time to show something: the command has lasted for half a second, and nothing was shown
    /// for a tenth of one.
    bool isDue(ProgressTime now) const;
    void shown(ProgressTime now) { shownAt_ = now; }

    /// All but the name.
    ProgressView view(ProgressTime now) const;

private:
    struct Sample {
        ProgressTime time;
        std::uint64_t items = 0;
        std::uint64_t bytes = 0;
    };

    std::uint64_t items() const noexcept { return earlier_.itemsDone + present_.itemsDone; }
    std::uint64_t bytes() const noexcept { return earlier_.bytesDone + present_.bytesDone; }

    ProgressTime begin_;
    std::optional<ProgressTime> shownAt_;
    OperationCounts earlier_;  ///< of all operations that are over
    OperationCounts present_;
    /// Of the last seconds, the oldest one first.
    std::deque<Sample> samples_;
};

}  // namespace korvex::host
