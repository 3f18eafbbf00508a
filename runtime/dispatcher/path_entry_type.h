// What a folder is to the search path, by its name.
#pragma once

#include <string_view>

#include "platform/path_management.h"
#include "runtime/paths/path_style.h"

namespace korvex::runtime::dispatcher {

/// As `GetPathEntryTypeFromBaseName`, by the rules of either style.
Velquist::PathManagement::PathEntryType pathEntryType(std::u16string_view name, paths::PathStyle style);

}  // namespace korvex::runtime::dispatcher
