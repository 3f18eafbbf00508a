// Sums over operations, and rates over a few seconds.
#include "host/kwsh/progress_pace.h"

#include <algorithm>
#include <cmath>

namespace korvex::host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds firstShownAfter(500);
constexpr milliseconds shownAgainAfter(100);
constexpr milliseconds betweenSamples(200);
constexpr milliseconds longestMemory(5000);

/// Whether the numbers are those of another operation. Each report of one has more items than the report
/// before it or, of a file under way, more items known than done.
bool isNextOperation(const OperationCounts& before, const OperationCounts& now) {
    if (now.itemsDone < before.itemsDone || now.bytesDone < before.bytesDone) return true;
    return now.itemsDone == before.itemsDone && now.itemsDone == now.itemsKnown && now.itemsDone > 0;
}

double perSecond(std::uint64_t count, ProgressTime::duration time) {
    const double seconds = std::chrono::duration<double>(time).count();
    return seconds > 0 ? static_cast<double>(count) / seconds : 0;
}

}  // namespace

void ProgressPace::begin(ProgressTime now) {
    *this = ProgressPace();
    begin_ = now;
    samples_.push_back({now});
}

void ProgressPace::record(const OperationCounts& counts, ProgressTime now) {
    if (isNextOperation(present_, counts)) {
        earlier_.itemsDone += present_.itemsDone;
        earlier_.bytesDone += present_.bytesDone;
    }
    present_ = counts;
    if (samples_.empty() || now - samples_.back().time >= betweenSamples) {
        samples_.push_back({now, items(), bytes()});
    }
    while (samples_.size() > 2 && now - samples_[1].time >= longestMemory)
        samples_.pop_front();
}

bool ProgressPace::isDue(ProgressTime now) const {
    return now - begin_ >= firstShownAfter && (!shownAt_ || now - *shownAt_ >= shownAgainAfter);
}

ProgressView ProgressPace::view(ProgressTime now) const {
    ProgressView view;
    view.items = items();
    view.bytes = bytes();
    if (!samples_.empty()) {
        const Sample& oldest = samples_.front();
        view.itemsPerSecond = perSecond(view.items - oldest.items, now - oldest.time);
        view.bytesPerSecond = perSecond(view.bytes - oldest.bytes, now - oldest.time);
    }
    const bool isOneFile = present_.itemsKnown == 1 && present_.itemsDone == 0 && present_.bytesKnown > 0;
    if (!isOneFile) return view;
    const std::uint64_t done = std::min(present_.bytesDone, present_.bytesKnown);
    const double share = static_cast<double>(done) / static_cast<double>(present_.bytesKnown);
    view.percent = static_cast<unsigned>(100 * share);
    if (view.bytesPerSecond >= 1) {
        const double left = static_cast<double>(present_.bytesKnown - done) / view.bytesPerSecond;
        view.secondsLeft = static_cast<std::uint64_t>(std::ceil(left));
    }
    return view;
}

}  // namespace korvex::host
