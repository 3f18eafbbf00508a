// The structure array that `dir` returns.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/kx.h"
#include "platform/listing.h"

namespace korvex::filemanip {

/// The indexes of the entries by the text of their folder and then by name, each unit by unit, the shorter
/// text first on a common prefix. Capital letters come before small ones, on every platform.
std::vector<std::size_t> sortedIndex(const std::vector<FileNameWithStatLight>& entries);

/// N-by-1 with the fields "name", "folder", "date", "bytes", "isdir", "datenum", sorted by folder and name.
matrix::ArrayOwner makeListingStructure(const std::vector<FileNameWithStatLight>& entries);

}  // namespace korvex::filemanip
