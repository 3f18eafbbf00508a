// How many files the process may have open, and what share of them is for folders.
#pragma once

#include <cstddef>

namespace korvex::runtime::storage::posix {

/// 0 when the system does not say.
std::size_t limitOfOpenFiles() noexcept;

/// Open folders for one walk or one listing: a folder may have two sides, so they take a third of the limit.
std::size_t openFoldersFor(std::size_t limit) noexcept;

}  // namespace korvex::runtime::storage::posix
