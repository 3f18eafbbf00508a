// Measuring two ways of doing the same side by side: A B A B ..., medians, one ratio.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace korvex::bench {

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Work>
double secondsFor(Work&& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

struct Medians {
    double ours;
    double peer;
};

/// Runs both once to warm up and then in turns; medians in seconds.
template <class Ours, class Peer>
Medians interleaved(int rounds, Ours&& ours, Peer&& peer) {
    ours();
    peer();
    std::vector<double> oursSeconds, peerSeconds;
    for (int round = 0; round < rounds; ++round) {
        oursSeconds.push_back(secondsFor(ours));
        peerSeconds.push_back(secondsFor(peer));
    }
    return {median(oursSeconds), median(peerSeconds)};
}

}  // namespace korvex::bench
