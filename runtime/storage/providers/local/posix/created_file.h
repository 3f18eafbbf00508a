// Entries that this program makes: they go again when what was to become of them fails.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>

#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

/// Removes an entry that this program made, at the end of a scope, unless it is kept.
class RemovedUnlessKept {
public:
    /// The entry as it stands there. Its name must live as long.
    explicit RemovedUnlessKept(EntryAt entry) noexcept;
    /// An entry that is open as `file`.
    RemovedUnlessKept(EntryAt entry, int file) noexcept;
    /// An entry whose status is known.
    RemovedUnlessKept(EntryAt entry, const struct ::stat& made) noexcept : entry_(entry), made_(made) {}
    /// An entry that is open as `file`, and is asked which file it is only when it goes: it is kept, too,
    /// when it has been closed by then.
    RemovedUnlessKept(EntryAt entry, const FileDescriptor& file, const struct ::stat& expected) noexcept
        : entry_(entry), made_(expected), file_(&file) {}
    ~RemovedUnlessKept();
    RemovedUnlessKept(const RemovedUnlessKept&) = delete;
    RemovedUnlessKept& operator=(const RemovedUnlessKept&) = delete;

    void keep() noexcept { isKept_ = true; }
    const struct ::stat& made() const noexcept { return made_; }

private:
    EntryAt entry_;
    struct ::stat made_ {};
    const FileDescriptor* file_ = nullptr;
    bool isKept_ = false;
};

/// A file that did not exist before, open for writing under its name; removed again at the end of a scope
/// unless it is kept.
class CreatedFile {
public:
    CreatedFile(EntryAt entry, mode_t mode) noexcept;
    /// The same where it is known what the file will be like: `made()` is what was expected then. The file
    /// has to be one whose closing cannot fail.
    CreatedFile(EntryAt entry, mode_t mode, const struct ::stat& expected) noexcept;
    CreatedFile(const CreatedFile&) = delete;
    CreatedFile& operator=(const CreatedFile&) = delete;
    /// 0 or the errno of the creation.
    int systemError() const noexcept { return systemError_; }
    FileDescriptor& file() noexcept { return file_; }
    const struct ::stat& made() const noexcept { return removed_->made(); }
    void keep() noexcept { removed_->keep(); }

private:
    FileDescriptor file_;
    int systemError_;
    std::optional<RemovedUnlessKept> removed_;
};

/// A file that has no name until it is whole: what is left of it when the process dies, nobody ever sees. Not
/// every file system has such files.
class UnnamedFile {
public:
    /// In the folder in which `beside` stands or would stand.
    UnnamedFile(EntryAt beside, mode_t mode);
    /// 0 or the errno of the creation.
    int systemError() const noexcept { return systemError_; }
    FileDescriptor& file() noexcept { return file_; }
    const struct ::stat& made() const noexcept { return made_; }
    /// What is written reaches the file system, which may find errors only then: 0 or the errno.
    int flush() const noexcept;
    /// Gives it a name that nobody has: 0 or the errno, EEXIST when somebody has it, ENOENT where the
    /// process cannot name its open files.
    int giveName(EntryAt name) const noexcept;

private:
    FileDescriptor file_;
    struct ::stat made_ {};
    int systemError_ = 0;
};

}  // namespace korvex::runtime::storage::posix
