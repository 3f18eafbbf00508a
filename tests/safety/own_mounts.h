// File systems that the safety tests mount for themselves, seen by nobody else, gone with the process.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "platform/storage_vfs.h"

namespace korvex::tests {

/// A large tmpfs, in which most tests work.
const std::filesystem::path& workDisk();
/// Another one, so that a move between the two cannot be a renaming.
const std::filesystem::path& otherDisk();
/// One of 2 MiB.
const std::filesystem::path& smallDisk();
/// Makes the small disk read-only, or writable again.
void setSmallDiskReadOnly(bool isReadOnly);

/// How often to repeat: the environment variable's value, or `usual`.
int repetitions(const char* variable, int usual);

foundation::storage::vfs::File fileAt(const std::filesystem::path& path);
foundation::storage::vfs::Folder folderAt(const std::filesystem::path& path);

std::string contentOf(const std::filesystem::path& path);
void writeContent(const std::filesystem::path& path, const std::string& content);

/// The code of the `vfs::Exception` that the operation raises, or -1; `where` is its location's path.
template <class Operation>
int codeRaisedBy(const Operation& operation, std::filesystem::path* where = nullptr) {
    try {
        operation();
    } catch (const foundation::storage::vfs::Exception& error) {
        if (where != nullptr) *where = foundation::storage::vfs::fromAbsoluteIRI(error.getLocation()).text();
        return error.getErrorCode();
    }
    return -1;
}

}  // namespace korvex::tests
