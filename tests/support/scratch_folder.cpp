// A folder for one test. The name is drawn by chance, so that test programs may run side by side.
#include "tests/support/scratch_folder.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>

namespace korvex::tests {

namespace filesystem = std::filesystem;

namespace {

filesystem::path makeUniqueFolder() {
    const filesystem::path parent = filesystem::canonical(filesystem::temp_directory_path());
    std::random_device random;
    for (;;) {
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "korvex-%08x%08x", random(), random());
        if (filesystem::create_directory(parent / name.data())) return parent / name.data();
    }
}

/// Nothing can be removed from a folder that may not be written.
void makeFoldersWritable(const filesystem::path& folder) {
    std::error_code ignored;
    filesystem::permissions(folder, filesystem::perms::owner_all, filesystem::perm_options::add, ignored);
    for (const filesystem::directory_entry& entry : filesystem::directory_iterator(folder, ignored)) {
        if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) makeFoldersWritable(entry.path());
    }
}

}  // namespace

ScratchFolder::ScratchFolder() : path_(makeUniqueFolder()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    makeFoldersWritable(path_);
    filesystem::remove_all(path_, ignored);
}

filesystem::path ScratchFolder::writeFile(const filesystem::path& name, std::string_view content) const {
    const filesystem::path file = path_ / name;
    filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
    return file;
}

filesystem::path ScratchFolder::makeFolder(const filesystem::path& name) const {
    filesystem::create_directories(path_ / name);
    return path_ / name;
}

}  // namespace korvex::tests
