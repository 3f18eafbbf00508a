// POSIX: the file beside, from its first byte to its rename.
#include "runtime/configuration/posix/unfinished_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <vector>

namespace korvex::runtime::configuration::posix {

using process::FileDescriptor;

namespace {

struct FolderReader {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

std::vector<std::string> entriesOf(int folder) {
    // Opened anew, for the position in a folder belongs to the open one.
    const int descriptor = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) raiseSystemError(errno);
    const std::unique_ptr<DIR, FolderReader> reader(::fdopendir(descriptor));
    if (!reader) {
        const FileDescriptor closed(descriptor);
        raiseSystemError(errno);
    }
    std::vector<std::string> entries;
    while (const dirent* entry = ::readdir(reader.get())) {
        entries.emplace_back(static_cast<const char*>(entry->d_name));
    }
    return entries;
}

std::string prefixOfUnfinished(const std::string& name) { return name + ".writing-"; }

bool isUnfinished(std::string_view entry, std::string_view prefix) noexcept {
    return entry.starts_with(prefix) && entry.size() > prefix.size() &&
           entry.find_first_not_of("0123456789-", prefix.size()) == std::string_view::npos;
}

}  // namespace

UnfinishedFile::UnfinishedFile(int folder, std::string name) : folder_(folder), name_(std::move(name)) {
    const std::string prefix = prefixOfUnfinished(name_) + std::to_string(::getpid()) + '-';
    for (unsigned number = 1; !file_; ++number) {
        unfinishedName_ = prefix + std::to_string(number);
        file_ = FileDescriptor(::openat(folder_, unfinishedName_.c_str(),
                                        O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!file_ && errno != EEXIST) raiseSystemError(errno);
    }
}

UnfinishedFile::~UnfinishedFile() {
    if (!unfinishedName_.empty()) ::unlinkat(folder_, unfinishedName_.c_str(), 0);
}

void UnfinishedFile::write(std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(file_.get(), content.data(), content.size());
        if (count == 0) raiseSystemError(ENOSPC);
        if (count > 0) {
            content.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            raiseSystemError(errno);
        }
    }
}

void UnfinishedFile::finish(const ::timespec& changed) {
    const std::array<::timespec, 2> times{{changed, changed}};
    if (::futimens(file_.get(), times.data()) != 0) raiseSystemError(errno);
    if (::fsync(file_.get()) != 0) raiseSystemError(errno);
    if (::renameat(folder_, unfinishedName_.c_str(), folder_, name_.c_str()) != 0) raiseSystemError(errno);
    unfinishedName_.clear();
}

FileStamp UnfinishedFile::stamp() const {
    struct ::stat status {};
    if (::fstat(file_.get(), &status) != 0) raiseSystemError(errno);
    return stampOf(status);
}

void removeUnfinishedFiles(int folder, const std::string& name) {
    const std::string prefix = prefixOfUnfinished(name);
    for (const std::string& entry : entriesOf(folder)) {
        if (isUnfinished(entry, prefix)) ::unlinkat(folder, entry.c_str(), 0);
    }
}

}  // namespace korvex::runtime::configuration::posix
