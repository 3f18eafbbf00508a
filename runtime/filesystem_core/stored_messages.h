// Messages that are stored in a status by their identifier, as it is known at run time only.
#pragma once

#include <string>
#include <string_view>

#include "platform/filesystem_core.h"

namespace korvex::runtime::filesystem_core {

/// Stores the message of this identifier with `argument`, under that identifier; leaves the code alone.
/// False, with nothing stored, when the vocabulary has no message of that identifier that takes one text.
bool storeMessageOfOneArgument(io::filesystem::core::Status& status, std::string_view identifier,
                               const std::u16string& argument);

}  // namespace korvex::runtime::filesystem_core
