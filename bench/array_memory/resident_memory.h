// How much memory the process occupies.
#pragma once

#include <cstddef>

namespace korvex::bench {

/// Bytes of this process that are in memory. Raises `std::runtime_error` when the system does not tell.
std::size_t residentBytes();

}  // namespace korvex::bench
