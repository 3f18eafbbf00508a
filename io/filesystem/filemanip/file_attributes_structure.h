// The result of a query of `fileattrib`.
#pragma once

#include <string>
#include <vector>

#include "platform/kx.h"

namespace korvex::filemanip {

/// A 1-by-N structure array with the fourteen fields, an element for each path (absolute, native). Raises
/// what `fl::filesystem::status` raises.
matrix::ArrayOwner attributeStructure(const std::vector<std::u16string>& paths);

}  // namespace korvex::filemanip
