// Somebody who keeps exchanging two entries.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <latch>
#include <thread>
#include <utility>

namespace korvex::tests {

/// Exchanges what stands at two paths, again and again, for as long as the object lives.
class Swapping {
public:
    Swapping(std::filesystem::path a, std::filesystem::path b)
        : thread_([this, a = std::move(a), b = std::move(b)] {
              for (std::size_t attempt = 0; !isOver_; ++attempt) {
                  if (::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0) ++swaps_;
                  if (attempt == 0) hasBegun_.count_down();
              }
          }) {
        hasBegun_.wait();
    }
    ~Swapping() {
        isOver_ = true;
        thread_.join();
        EXPECT_GT(swaps_, 0) << "Nothing was exchanged.";
    }
    Swapping(const Swapping&) = delete;
    Swapping& operator=(const Swapping&) = delete;

private:
    std::atomic<bool> isOver_{false};
    std::latch hasBegun_{1};
    int swaps_ = 0;
    std::thread thread_;
};

}  // namespace korvex::tests
