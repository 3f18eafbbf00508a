// Files of the project, as tests read them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace korvex::tests {

/// A file or folder of the project, by its path from the root.
std::filesystem::path projectPath(const std::filesystem::path& name);

/// The content of a file of the project. Raises `std::runtime_error` when it cannot be read.
std::string projectText(const std::filesystem::path& name);

/// The lines, without their ends.
std::vector<std::string> linesOf(const std::string& text);

}  // namespace korvex::tests
