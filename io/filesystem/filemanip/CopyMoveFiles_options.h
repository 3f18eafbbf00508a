// The option words of `copyfile` and `movefile`, compared unit by unit.
#pragma once

#include <boost/optional.hpp>
#include <cstddef>
#include <string>
#include <vector>

#include "io/filesystem/filemanip/CopyMoveFiles.h"

namespace korvex::filemanip {

/// Whether the option is one of "F", "f", "writable"; for a removal, one of "S", "s".
bool isForceOption(const std::vector<std::u16string>& options, std::size_t index, bool isForRemoval);

/// What "preserve", "resolve" or "osdefault" stands for; nothing for any other text.
boost::optional<LinkBehavior> parseLinkBehavior(const std::vector<std::u16string>& options,
                                                std::size_t index);

}  // namespace korvex::filemanip
