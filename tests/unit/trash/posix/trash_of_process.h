// The trash of a test program, in a folder of its own: that of the user who runs the tests is never touched.
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace korvex::tests {

/// To be asked for before a test moves anything to a trash: where it is, is read from the process's
/// environment once. The home folder lies beside the tests' scratch folders, for the trash takes what is on
/// its own disk.
class TrashOfProcess {
public:
    static const TrashOfProcess& get() {
        static const TrashOfProcess trash;
        return trash;
    }

    std::filesystem::path folder() const { return dataFolder() / "Trash"; }
    /// What is in it, by the names that it has there, sorted.
    std::vector<std::string> names() const { return namesIn(folder() / "files"); }
    /// The names of the information records, sorted.
    std::vector<std::string> records() const { return namesIn(folder() / "info"); }
    std::filesystem::path file(const std::string& name) const { return folder() / "files" / name; }
    /// The value of a key in the record of what has that name in the trash.
    std::string recorded(const std::string& name, const std::string& key) const {
        std::ifstream record(folder() / "info" / (name + ".trashinfo"));
        for (std::string line; std::getline(record, line);) {
            if (line.starts_with(key + '=')) return line.substr(key.size() + 1);
        }
        return {};
    }

    void empty() const { std::filesystem::remove_all(folder()); }
    /// Leaves no place for a trash until it is emptied.
    void block() const {
        std::filesystem::create_directories(dataFolder());
        std::ofstream(folder()) << "no folder";
    }

private:
    TrashOfProcess() {
        std::filesystem::create_directories(dataFolder());
        ::setenv("HOME", home_.path().c_str(), 1);
        ::setenv("XDG_DATA_HOME", dataFolder().c_str(), 1);
    }

    std::filesystem::path dataFolder() const { return home_.path() / "data"; }
    static std::vector<std::string> namesIn(const std::filesystem::path& folder) {
        std::vector<std::string> names;
        if (!std::filesystem::exists(folder)) return names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    ScratchFolder home_;
};

/// What a path stands for in a record: each "%XX" is a byte.
inline std::string withoutEscapes(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%') {
            bytes += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

}  // namespace korvex::tests
