// How much memory the process has occupied.
#pragma once

#include <cstddef>

namespace korvex::bench {

struct MemoryUse {
    std::size_t now;   ///< bytes
    std::size_t peak;  ///< bytes, since the process began
};

/// Raises `std::runtime_error` when the system does not tell.
MemoryUse memoryUse();

}  // namespace korvex::bench
