// The storage layer: everything on any storage is addressed by location and reached through a handle.
//
// A location (`AbsoluteIRI`) is "scheme://host/path". Local files have the scheme "file". Its text
// percent-encodes what cannot stand in it (blank, `%`, `?`, `#`, controls, bytes that are no valid UTF-8);
// `getName` gives decoded text, and the constructor from parent and name encodes. A location carries no
// separator at its end, but for a root; a web location keeps its path and query as they were typed. Locations
// are cheap to copy and may be shared between threads.
//
// Every operation of a handle raises `UnsupportedIRISchemeException` for a scheme that nobody serves, unless
// it says that it raises nothing. Listing, transferring and removing, but for one empty folder, raise
// `vfs::Exception` with `unknownError` while an interrupt is pending; the interrupt stays pending. So does
// taking protection off on disks.
#pragma once

#include <boost/variant.hpp>
#include <exception>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/user_exceptions.h"

namespace foundation::storage::provider {

/// What stands at a location, links followed.
enum ExistenceType { AsFile = 0, AsFolder = 1, AsNeither = 2 };

/// What stands at a location, links told apart.
enum ExistenceTypeExtended {
    ExtendedFile = 0,
    ExtendedLinkToFile = 1,
    ExtendedFolder = 2,
    ExtendedDevice = 3,  ///< device, pipe or socket
    ExtendedLinkToFolder = 4,
    ExtendedBrokenLink = 5,
    ExtendedNothing = 6,
};

/// What a transfer may replace.
enum ReplacementPolicy {
    /// A file that may be written; never a folder.
    ReplaceWritable = 1,
    /// Whatever file stands there. A folder goes into a folder that exists, each file as here.
    ReplaceAny = 2,
    /// The contents of a folder go into one that exists, each file as under `ReplaceWritable`.
    MergeFolder = 3,
};

/// Attributes of a folder.
class FolderAttributes {
public:
    explicit FolderAttributes(bool isWritable) : isWritable_(isWritable) {}
    bool isWritable() const noexcept { return isWritable_; }

private:
    bool isWritable_;
};

std::ostream& operator<<(std::ostream& stream, ExistenceType type);
std::ostream& operator<<(std::ostream& stream, ExistenceTypeExtended type);
std::ostream& operator<<(std::ostream& stream, ReplacementPolicy policy);

}  // namespace foundation::storage::provider

namespace foundation::storage::vfs {

/// Why an operation failed. Any other number is an unknown error.
enum ErrorCode : int {
    folderNotEmpty = 0,
    invalidLocation = 1,
    permissionDenied = 2,
    resourceAlreadyExists = 3,
    resourceNotFound = 4,
    readOnlyProvider = 5,
    fileTooLarge = 6,
    resourceInUse = 7,
    noSpaceLeft = 8,
    ioError = 9,
    internalError = 10,
    unsupportedOperation = 11,
    unknownError = 12,
};

/// What the removal of a folder takes with it.
enum FolderRemovalPolicy {
    RemoveEmptyFolder = 0,   ///< a folder that holds anything raises `folderNotEmpty`
    RemoveWithContents = 1,  ///< the folder with all it holds; links in it go, what they lead to stays
};

/// The message of an error code, "KORVEX:virtualfilesystem:...", with the path that the caller prepared as
/// its argument.
resource_core::BaseMsgID messageOf(ErrorCode code, const std::u16string& path);

class AbsoluteIRI {
public:
    /// Parses a text with a scheme; the scheme's case is ignored, and reads in small letters afterwards.
    /// Raises `InvalidIRIException`.
    explicit AbsoluteIRI(const std::u16string& text);
    /// The child of `parent` with that name, not encoded. A name with separators leads further down.
    AbsoluteIRI(const AbsoluteIRI& parent, const std::u16string& name);

    std::u16string getScheme() const;
    /// The last path component, decoded; "/" for a location with nothing behind its host.
    const std::u16string& getName() const;
    bool hasParent() const;
    /// Raises `vfs::Exception` with `invalidLocation` when there is none.
    AbsoluteIRI getParent() const;
    /// Whether `other` lies below this location, by whole components. No location is its own ancestor.
    bool isAncestorOf(const AbsoluteIRI& other) const;
    /// The location's text.
    const std::u16string& toString() const;

    bool operator==(const AbsoluteIRI& other) const;

    /// The components behind the text, for the storage system and its providers.
    struct Parts;
    explicit AbsoluteIRI(std::shared_ptr<const Parts> parts) : parts_(std::move(parts)) {}
    const Parts& parts() const noexcept { return *parts_; }

private:
    std::shared_ptr<const Parts> parts_;
};

bool operator==(const std::u16string& text, const AbsoluteIRI& location);

/// A location in canonical form: links resolved, no dots, names as they are stored.
class CanonicalAbsoluteIRI : public AbsoluteIRI {
public:
    /// For providers, which know that the location is canonical.
    explicit CanonicalAbsoluteIRI(const AbsoluteIRI& canonical) : AbsoluteIRI(canonical) {}
    CanonicalAbsoluteIRI getParent() const { return CanonicalAbsoluteIRI(AbsoluteIRI::getParent()); }
};

namespace detail {

/// A text that is made when somebody reads it: most storage failures are handled unread.
class LazyText {
public:
    explicit LazyText(std::function<std::string()> make);
    /// In UTF-8, the same for all copies, valid as long as one of them lives.
    const char* get() const noexcept;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace detail

/// A failed operation.
class Exception : public core::except::IException, public std::exception {
public:
    /// `context` names what was going on; `systemText` holds the operating system's own words, if any.
    Exception(ErrorCode code, AbsoluteIRI location, std::u16string context = {}, std::string systemText = {});

    ErrorCode getErrorCode() const noexcept { return code_; }
    /// Where it happened; need not be the location that the caller named.
    const AbsoluteIRI& getLocation() const noexcept { return location_; }
    const std::u16string& getExceptionContextsString() const noexcept { return context_; }
    /// The operating system's own words in UTF-8; empty when it had none.
    const std::string& getSystemText() const noexcept { return systemText_; }

    std::unique_ptr<IException> copyToHeap() const override;
    [[noreturn]] void throwCopy() const override;
    const char* what() const noexcept override { return text_.get(); }

private:
    ErrorCode code_;
    AbsoluteIRI location_;
    std::u16string context_;
    std::string systemText_;
    detail::LazyText text_;
};

/// A text is no valid location.
class InvalidIRIException : public core::except::IException, public std::exception {
public:
    explicit InvalidIRIException(std::u16string text);
    const std::u16string& getInvalidIRIString() const noexcept { return invalidText_; }

    std::unique_ptr<IException> copyToHeap() const override;
    [[noreturn]] void throwCopy() const override;
    const char* what() const noexcept override { return text_.get(); }

private:
    std::u16string invalidText_;
    detail::LazyText text_;
};

/// A location's scheme has no provider.
class UnsupportedIRISchemeException : public core::except::IException, public std::exception {
public:
    explicit UnsupportedIRISchemeException(std::u16string scheme);
    const std::u16string& getScheme() const noexcept { return scheme_; }

    std::unique_ptr<IException> copyToHeap() const override;
    [[noreturn]] void throwCopy() const override;
    const char* what() const noexcept override { return text_.get(); }

private:
    std::u16string scheme_;
    detail::LazyText text_;
};

class ListEntry;

template <class Entry>
using FolderListingIterator = typename std::vector<Entry>::const_iterator;

/// The result of listing a folder.
template <class Entry>
class FolderListing {
public:
    FolderListing() = default;
    explicit FolderListing(std::vector<Entry> entries)
        : entries_(std::make_shared<const std::vector<Entry>>(std::move(entries))) {}

    bool empty() const noexcept { return !entries_ || entries_->empty(); }
    FolderListingIterator<Entry> begin() const { return entries_ ? entries_->begin() : none().begin(); }
    FolderListingIterator<Entry> end() const { return entries_ ? entries_->end() : none().end(); }

private:
    static const std::vector<Entry>& none() {
        static const std::vector<Entry> nothing;
        return nothing;
    }

    std::shared_ptr<const std::vector<Entry>> entries_;
};

/// The handle of the storage system: which provider serves which scheme.
class StorageSystem;
class StorageSystemReference {
public:
    explicit StorageSystemReference(std::shared_ptr<const StorageSystem> system)
        : system_(std::move(system)) {}
    StorageSystemReference(const StorageSystemReference&) = default;
    StorageSystemReference(StorageSystemReference&&) = default;
    StorageSystemReference& operator=(const StorageSystemReference&) = default;
    StorageSystemReference& operator=(StorageSystemReference&&) = default;
    virtual ~StorageSystemReference() = default;

    const StorageSystem& system() const noexcept { return *system_; }

private:
    std::shared_ptr<const StorageSystem> system_;
};

class Folder;
class File;
using Item = boost::variant<File, Folder>;

/// A handle of a file. Making one touches nothing: the file need not exist, nor the scheme have a provider.
class File {
public:
    File(const AbsoluteIRI& location, StorageSystemReference storage);
    /// By a name or relative path below a folder.
    File(const Folder& parent, const std::u16string& name);
    File(const File&) = default;
    File(File&&) = default;
    File& operator=(const File&) = default;
    File& operator=(File&&) = default;
    virtual ~File() = default;

    virtual const AbsoluteIRI& getLocation() const { return location_; }
    const std::u16string& getName() const { return location_.getName(); }
    Folder getParent() const;
    /// Raises `vfs::Exception`: `resourceNotFound` when nothing is there.
    CanonicalAbsoluteIRI getCanonicalLocation() const;

    /// Copies the content, the permission bits, the time of last change and, where both sides have them, the
    /// extended attributes; a link is followed. What stands at the destination is replaced as the policy
    /// says, and stays whole until the copy is complete: a failure leaves the old file or none, never a part.
    /// A new file of more than 4096 bytes, or with holes, is written under a temporary name beside it and
    /// gets its own, replacing nothing, when it is whole; a smaller one is made in place and written at once,
    /// so that a kill leaves it whole, empty or not there. Raises `resourceAlreadyExists` when a folder
    /// stands there, `permissionDenied` at the destination for a file that may not be replaced and at the
    /// source for one that may not be read, `resourceNotFound` when the source or the destination's parent is
    /// not there, `readOnlyProvider`, `noSpaceLeft`, ...
    void copyFile(const File& destination, const provider::ReplacementPolicy& policy) const;
    /// Moves the file, or the link, to the destination; a failure leaves the source whole. Raises as
    /// `copyFile`.
    void moveFile(const File& destination, const provider::ReplacementPolicy& policy) const;
    /// Removes a file or a link, whatever its permission bits. Raises `invalidLocation` for a folder,
    /// `resourceNotFound`, `permissionDenied`, ...
    void removeFile() const;
    /// Sets or clears the write bits: the owner's when set, all when cleared. Links are followed, but one
    /// that a listing gave is left alone: what it leads to may lie elsewhere. Raises `resourceNotFound`,
    /// `permissionDenied`, ...
    void setWritable(bool isWritable) const;
    const StorageSystemReference& storage() const noexcept { return storage_; }

    /// Whether both lead to one file, whatever the spelling and the links on the way. Two names of one file
    /// that are no links are two files. Raises nothing: what cannot be told is different.
    bool operator==(const File& other) const;

private:
    AbsoluteIRI location_;
    StorageSystemReference storage_;
};

/// A handle of a folder. Making one touches nothing.
class Folder {
public:
    Folder(const AbsoluteIRI& location, StorageSystemReference storage);
    /// By a name or relative path below a folder.
    Folder(const Folder& parent, const std::u16string& name);
    Folder(const Folder&) = default;
    Folder(Folder&&) = default;
    Folder& operator=(const Folder&) = default;
    Folder& operator=(Folder&&) = default;
    virtual ~Folder() = default;

    virtual const AbsoluteIRI& getLocation() const { return location_; }
    const std::u16string& getName() const { return location_.getName(); }
    bool hasParent() const { return location_.hasParent(); }
    Folder getParent() const;
    bool folderExists() const;
    /// Raises `vfs::Exception`: `resourceNotFound` when nothing is there.
    CanonicalAbsoluteIRI getCanonicalLocation() const;
    /// Raises `resourceNotFound` when no folder is there.
    provider::FolderAttributes getAttributes() const;

    /// Copies the folder with all it holds, its links as links. The first failure stops it; files copied
    /// before stay, and none is left in part. Raises `resourceAlreadyExists` when something stands at the
    /// destination that the policy does not let it go into, `invalidLocation` for a destination inside of the
    /// source, and as `File::copyFile`.
    void copyFolder(const Folder& destination, const provider::ReplacementPolicy& policy) const;
    /// Moves the folder. Nothing leaves the source before it stands whole at the destination. Raises as
    /// `copyFolder`; what is left in the source is whole.
    void moveFolder(const Folder& destination, const provider::ReplacementPolicy& policy) const;
    /// Never leaves the folder's own tree: a link in it is removed and not followed. Raises `folderNotEmpty`,
    /// `resourceNotFound`, ... ; what could be removed before the failure is gone.
    void removeFolder(const FolderRemovalPolicy& policy) const;
    /// Raises `resourceAlreadyExists` when something stands there, `resourceNotFound` when the parent is
    /// missing.
    void createFolder() const;
    /// The same with every missing folder above it. `resourceAlreadyExists` carries the location of what
    /// stood in the way.
    void createFolderRecursive() const;
    /// As `File::setWritable`.
    void setWritable(bool isWritable) const;
    /// The entries whose names match, sorted by 16-bit unit: `*` stands for any run of units and `?` for one;
    /// the empty pattern lists everything, one without wildcard just that name. Raises `resourceNotFound`
    /// when the folder is not there.
    FolderListing<ListEntry> listAll(std::u16string pattern) const;
    const StorageSystemReference& storage() const noexcept { return storage_; }

    /// Whether both are one folder, whatever the spelling and the links on the way; a link that is named
    /// itself is not the folder that it leads to. Raises nothing: what cannot be told is different.
    bool operator==(const Folder& other) const;

private:
    AbsoluteIRI location_;
    StorageSystemReference storage_;
};

/// One entry of a listing: a `Folder` for a folder and for a link to one, a `File` for everything else.
class ListEntry {
public:
    explicit ListEntry(Item item) : item_(std::move(item)) {}
    const AbsoluteIRI& getLocation() const;
    const Item& getFileOrFolder() const noexcept { return item_; }

private:
    Item item_;
};

/// Whether an entry of the kind of the handle is there, links followed: a `File` handle answers for anything
/// that is no folder. False for a scheme without a provider: nothing can be there. Raises `vfs::Exception`
/// when the storage fails.
bool exists(const Item& item);
/// What is there, links followed. Raises `vfs::Exception` when the storage fails and
/// `UnsupportedIRISchemeException`.
provider::ExistenceType exists(const AbsoluteIRI& location, const StorageSystemReference& storage);
/// The same, links told apart.
provider::ExistenceTypeExtended existsExtended(const AbsoluteIRI& location,
                                               const StorageSystemReference& storage);

/// The write bits are not all clear and the process may write. For what does not exist: whether the folder
/// that would hold it is writable. Raises `vfs::Exception`.
bool isWritable(const Item& item);

std::u16string getName(const Item& item);
AbsoluteIRI getLocation(const Item& item);

/// A letter, one or more letters, digits, `+`, `-` or `.`, then `:` and `/`. So a drive letter is none.
bool hasIRIPrefix(const std::u16string& text);

/// A native path, as text.
class NativePath {
public:
    explicit NativePath(std::u16string text) : text_(std::move(text)) {}
    operator std::u16string() const { return text_; }
    const std::u16string& text() const noexcept { return text_; }

private:
    std::u16string text_;
};

/// The native path of a local location. Of any other scheme, its path part.
NativePath fromAbsoluteIRI(const AbsoluteIRI& location);

std::ostream& operator<<(std::ostream& stream, const AbsoluteIRI& location);
std::ostream& operator<<(std::ostream& stream, const File& file);
std::ostream& operator<<(std::ostream& stream, const Folder& folder);

}  // namespace foundation::storage::vfs

namespace Velquist {

/// The environment's storage system.
class KorvexStorageSystem {
public:
    static foundation::storage::vfs::StorageSystemReference GetStorageSystemReference();
};

}  // namespace Velquist
