// Files of the project, as tests read them.
#include "tests/packaging/text_files.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace korvex::tests {

std::filesystem::path projectPath(const std::filesystem::path& name) {
    return std::filesystem::path(KORVEX_SOURCE_FOLDER) / name;
}

std::string projectText(const std::filesystem::path& name) {
    std::ifstream file(projectPath(name), std::ios::binary);
    if (!file) throw std::runtime_error(name.string() + " cannot be read");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace korvex::tests
