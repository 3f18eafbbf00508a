// The texts of `help`.
#pragma once

#include <string>
#include <string_view>

namespace korvex::host {

/// All commands and functions, one line each.
std::string helpOverview();

/// The forms of one command or function. Raises `HostError` "noHelp" when there is none of that name.
std::string helpOf(std::string_view name);

}  // namespace korvex::host
