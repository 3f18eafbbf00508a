// The locale that the process was started under.
#pragma once

#include <string>

namespace korvex::runtime::messages {

/// As "de_DE", without a character set; "en" when the process has none.
std::string processLocaleName();

}  // namespace korvex::runtime::messages
