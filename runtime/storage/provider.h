// A storage provider: what serves the locations of one scheme.
//
// A further provider is one class and one line in provider_registry.cpp. Every provider passes the contract
// tests in tests/contract, the parts left out that it declares it does not have. Providers may be called from
// several threads at once.
//
// What a provider does not override it does not do: it then refuses to write with `readOnlyProvider`, and to
// list with `unsupportedOperation`. All operations raise `vfs::Exception` with the location at which it
// happened.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

using foundation::storage::provider::ExistenceType;
using foundation::storage::provider::ExistenceTypeExtended;
using foundation::storage::provider::ReplacementPolicy;
using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::FolderRemovalPolicy;

class FoundPlace;

/// One name in a folder. A link to a folder counts as a folder.
struct ListedEntry {
    std::u16string name;
    bool isFolder = false;
    /// Known to be a plain file: no link, device or pipe.
    bool isPlainFile = false;
    /// Where the provider keeps more of the folder than its path; then `name` is one path component.
    std::shared_ptr<const FoundPlace> found = nullptr;
};

/// What is known of a file beside its content, and what a copy keeps of it.
struct FileAttributes {
    std::optional<std::uint64_t> size = std::nullopt;
    /// A time of last change that does not fit, before 1678 or after 2261, is the first or last one that
    /// does. Without any, a move to another storage cannot see that a file of the same size has changed
    /// while it was copied.
    std::optional<std::chrono::sys_time<std::chrono::nanoseconds>> changed = std::nullopt;
    /// Whether its write bits are not all clear.
    std::optional<bool> isWritable = std::nullopt;
};

/// The bytes of a file, from front to back. Must not outlive its provider.
class InputStream {
public:
    virtual ~InputStream() = default;
    /// Fills the buffer as far as there are bytes; 0 at the end.
    virtual std::size_t read(std::span<std::byte> buffer) = 0;
    /// What was known when the file was opened.
    virtual FileAttributes attributes() const { return {}; }
};

/// New content for a file. Nothing stands under the file's name, or the old file does, until `commit`; a
/// stream that is destroyed without it leaves no trace. Must not outlive its provider.
class OutputStream {
public:
    virtual ~OutputStream() = default;
    virtual void write(std::span<const std::byte> bytes) = 0;
    /// What the file is to have from `commit` on, as far as its storage keeps such a thing. The size is not
    /// looked at.
    virtual void setAttributes(const FileAttributes&) {}
    virtual void commit() = 0;
};

/// Source and destination.
using FilePair = std::pair<AbsoluteIRI, AbsoluteIRI>;

/// Work that was begun ahead; what nobody has asked for is taken back when it ends.
class WorkAhead {
public:
    virtual ~WorkAhead() = default;
};

class Provider {
public:
    virtual ~Provider() = default;

    /// What is there, links followed: a folder, nothing, or else a file. A name that the storage cannot hold,
    /// or a component on the way that is a file, is nothing there. Raises `vfs::Exception` when the storage
    /// cannot answer: `permissionDenied`, `ioError`, ...
    virtual ExistenceType existence(const AbsoluteIRI& location) = 0;

    /// The same, links told apart.
    virtual ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) = 0;

    /// The location with its links resolved and its dots gone. Raises `vfs::Exception`: `resourceNotFound`
    /// when nothing is there.
    virtual CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) = 0;

    /// As the comparisons of `File` and `Folder`, for two locations of this provider that read differently.
    /// By default no two such locations are one place.
    virtual bool isSameFile(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept;
    virtual bool isSameFolder(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept;

    /// Whether it refuses everything that writes, so that a transfer need not begin in vain.
    virtual bool onlyReads() const noexcept { return false; }

    /// As the free `isWritable`.
    virtual bool isWritable(const AbsoluteIRI& location);
    /// As `vfs::firstUnwritable`; by default each is asked for.
    virtual std::size_t firstUnwritable(std::span<const AbsoluteIRI> locations,
                                        const std::function<void()>& onFailure);
    virtual void setWritable(const AbsoluteIRI& location, bool isWritable);

    /// The entries whose names match the pattern (NamePattern), sorted by 16-bit unit. This and the removals,
    /// but for `RemoveEmptyFolder`, look at a pending interrupt first.
    virtual std::vector<ListedEntry> list(const AbsoluteIRI& folder, std::u16string_view pattern);

    /// Keeps a folder as a listing does, so that entries which `foundLocation` names in it are found there
    /// and nowhere else. Null, as by default: entries go by path. Of a folder that is itself kept or known to
    /// be one, a link in its place is not followed.
    virtual std::shared_ptr<const FoundPlace> hold(const AbsoluteIRI& folder);

    /// The content of a file, links followed. `resourceNotFound` when nothing is there, `invalidLocation` for
    /// a folder.
    virtual std::unique_ptr<InputStream> read(const AbsoluteIRI& file);
    /// New content for a file. What the policy or the storage does not allow is refused at once, and again
    /// when the stream is committed.
    virtual std::unique_ptr<OutputStream> write(const AbsoluteIRI& file, ReplacementPolicy policy);

    /// Both locations are of this provider. As the operations of `File` and `Folder`.
    virtual void copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                          ReplacementPolicy policy);
    /// As `vfs::CopiesAhead`, for files of this provider; null, as by default: nothing is done ahead.
    virtual std::unique_ptr<WorkAhead> copyAhead(std::vector<FilePair> files, ReplacementPolicy policy);
    virtual void moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                          ReplacementPolicy policy);
    virtual void copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                            ReplacementPolicy policy);
    virtual void moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                            ReplacementPolicy policy);
    virtual void removeFile(const AbsoluteIRI& file);
    virtual void removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy);
    virtual void createFolder(const AbsoluteIRI& folder);
    virtual void createFolderRecursive(const AbsoluteIRI& folder);

    /// Returns when what was written so far at and below the location, its name included, outlives a loss of
    /// power. By default nothing is to be done for that. A move calls it before it removes the source.
    virtual void makeDurable(const AbsoluteIRI& location);
};

}  // namespace korvex::runtime::storage
