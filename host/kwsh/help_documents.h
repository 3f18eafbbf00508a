// The manual pages of docs/, which the build puts into the program.
#pragma once

#include <string_view>

namespace korvex::host {

/// docs/commands.md, in UTF-8.
std::string_view commandsDocument() noexcept;
/// docs/kwsh.md, in UTF-8.
std::string_view hostDocument() noexcept;

}  // namespace korvex::host
