// A folder for one test: unique, empty at first, gone with everything in it at the end.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korvex::tests {

class ScratchFolder {
public:
    /// Makes the folder below the system's temporary folder. Raises `std::filesystem::filesystem_error`.
    explicit ScratchFolder();
    /// Removes it, also what a test has taken write permission from.
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// Absolute, without links in it.
    const std::filesystem::path& path() const noexcept { return path_; }
    /// The same as a native path in 16-bit units.
    std::u16string text() const { return path_.u16string(); }

    /// Writes a file below the folder, and the folders on the way; an earlier file goes. Raises
    /// `std::runtime_error` when it cannot be written.
    std::filesystem::path writeFile(const std::filesystem::path& name, std::string_view content = {}) const;
    /// Makes a folder below the folder, and those on the way.
    std::filesystem::path makeFolder(const std::filesystem::path& name) const;

private:
    std::filesystem::path path_;
};

}  // namespace korvex::tests
