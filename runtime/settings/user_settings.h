// "settings.json" in the configuration folder: the values that the user has set, from one run to the next.
//
//     {"korvex": {"DeleteFilesPermanently": false}}
//
// Groups and keys that this version does not know stay as they are. A file in which a setting that it does
// know has a value of another type is a damaged one.
#pragma once

#include <optional>
#include <string_view>

#include "runtime/settings/settings_tree.h"

namespace korvex::runtime::settings_tree {

/// What stands in the file now; nothing when the setting was never set. Raises
/// `configuration::ConfigurationError` when the file cannot be read.
std::optional<bool> userValue(const BooleanSetting& setting);

/// On disk when this returns. Raises `configuration::ConfigurationError` when the file cannot be written; the
/// old value stays then.
void setUserValue(const BooleanSetting& setting, bool value);

}  // namespace korvex::runtime::settings_tree
