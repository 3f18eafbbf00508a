// POSIX: the new content of a file while it is being written, under a name of its own beside it.
#pragma once

#include <time.h>

#include <string>
#include <string_view>

#include "runtime/configuration/posix/system_calls.h"
#include "runtime/process/posix/file_descriptor.h"

namespace korvex::runtime::configuration::posix {

/// Gone with the object unless it was finished. Every operation raises `std::runtime_error` with the system's
/// words.
class UnfinishedFile {
public:
    /// An empty file for the user alone, beside `name`.
    UnfinishedFile(int folder, std::string name);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    void write(std::string_view content);
    /// Brings it to the disk and gives it the name of the file that it replaces.
    void finish(const ::timespec& changed);
    FileStamp stamp() const;

private:
    int folder_;
    std::string name_;
    std::string unfinishedName_;
    process::FileDescriptor file_;
};

/// Removes what killed processes have left of a file. To be called by the one who may change it.
void removeUnfinishedFiles(int folder, const std::string& name);

}  // namespace korvex::runtime::configuration::posix
