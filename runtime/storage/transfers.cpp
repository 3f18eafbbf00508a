// Copies and moves between two providers.
#include "runtime/storage/transfers.h"

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "runtime/storage/location.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

constexpr const char16_t* preparing = u"preparing a transfer";
constexpr const char16_t* listingName = u"a name that is a path elsewhere";
constexpr const char16_t* removingSource = u"removing what was moved";
constexpr const char16_t* keepingLink = u"a link or device, taken to another storage";

void requireWriting(const ServedLocation& served) {
    if (served.provider.onlyReads()) throw vfs::Exception(vfs::readOnlyProvider, served.location, preparing);
}

void requireNoLink(Provider& provider, const AbsoluteIRI& location) {
    switch (provider.extendedExistence(location)) {
        case provider::ExtendedFile:
        case provider::ExtendedFolder:
        case provider::ExtendedNothing: return;
        default: throw vfs::Exception(vfs::unsupportedOperation, location, keepingLink);
    }
}

/// What goes by its dots could be emptied and not removed.
void requireOwnName(const AbsoluteIRI& location) {
    if (location.getName() == u"." || location.getName() == u"..")
        throw vfs::Exception(vfs::invalidLocation, location, preparing);
}

/// What nobody may take away from its place in the end is not copied in the first place.
void requireLeaving(const ServedLocation& source) {
    if (!source.location.hasParent() || source.provider.existence(source.location) == provider::AsNeither)
        return;
    if (!source.provider.isWritable(source.location.getParent()))
        throw vfs::Exception(vfs::permissionDenied, source.location, preparing);
}

/// The child of that name, and nothing else: what one provider lists as a name must not lead a second one out
/// of the folder.
AbsoluteIRI childOf(const AbsoluteIRI& folder, const std::u16string& name) {
    AbsoluteIRI child(folder, name);
    if (name == u"." || name == u".." || !(child.getParent() == folder))
        throw vfs::Exception(vfs::invalidLocation, std::move(child), listingName);
    return child;
}

/// A single file lands on one that exists in the same way whether a folder is merged or not.
ReplacementPolicy policyForFiles(ReplacementPolicy policy) noexcept {
    return policy == provider::MergeFolder ? provider::ReplaceWritable : policy;
}

/// Removes a file that was copied when it had these attributes, and has them still.
void removeCopied(Provider& provider, const AbsoluteIRI& file, const FileAttributes& copied) {
    const FileAttributes now = provider.read(file)->attributes();
    const bool isUnchanged = now.size == copied.size && now.changed == copied.changed;
    if (!isUnchanged) throw vfs::Exception(vfs::resourceInUse, file, removingSource);
    provider.removeFile(file);
}

/// Copies files, one after the other, through the same buffer.
class FileCopier {
public:
    FileCopier(Provider& from, Provider& to, ReplacementPolicy policy)
        : from_(from), to_(to), policy_(policyForFiles(policy)) {}

    /// Gives the attributes of the source as they were before its content was read.
    FileAttributes copy(const AbsoluteIRI& source, const AbsoluteIRI& destination) {
        stopIfInterrupted(source);
        const FileAttributes attributes =
            &from_ == &to_ ? copyWithin(source, destination) : stream(source, destination);
        progress_.finished(1, 0, [&] { return source; });
        return attributes;
    }

    ProgressCounter& progress() noexcept { return progress_; }

private:
    FileAttributes copyWithin(const AbsoluteIRI& source, const AbsoluteIRI& destination) {
        const FileAttributes attributes = from_.read(source)->attributes();
        from_.copyFile(source, destination, policy_);
        return attributes;
    }

    FileAttributes stream(const AbsoluteIRI& source, const AbsoluteIRI& destination) {
        const auto input = from_.read(source);
        const auto output = to_.write(destination, policy_);
        const FileAttributes attributes = input->attributes();
        progress_.found(0, attributes.size.value_or(0));
        buffer_.resize(bufferSize);
        while (const std::size_t count = input->read(buffer_)) {
            output->write(std::span<const std::byte>(buffer_).first(count));
            if (!attributes.size) progress_.found(0, count);
            progress_.finished(0, count, [&] { return source; });
            stopIfInterrupted(source);
        }
        output->setAttributes(attributes);
        output->commit();
        return attributes;
    }

    Provider& from_;
    Provider& to_;
    const ReplacementPolicy policy_;
    std::vector<std::byte> buffer_;
    ProgressCounter progress_;
};

/// What was copied of a folder, in the order of a walk: each folder before what is in it, and a row without a
/// name behind it.
struct CopiedItem {
    std::u16string name;
    bool isFolder = false;
    FileAttributes attributes = {};
};
using CopiedItems = std::vector<CopiedItem>;

/// Copies a tree. The two present folders move down and up together; what is still to be done in each folder
/// above them waits on a stack.
class FolderCopier {
public:
    /// `copied` is filled when there is one.
    FolderCopier(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy,
                 CopiedItems* copied)
        : from_(source.provider),
          to_(destination.provider),
          source_(source.location),
          destination_(destination.location),
          policy_(policy),
          files_(from_, to_, policy),
          copied_(copied) {}

    void copy() {
        files_.progress().found(1, 0);
        enter();
        while (!open_.empty()) {
            OpenFolder& folder = open_.back();
            if (folder.next == folder.entries.size()) {
                leave();
            } else {
                copyEntry(folder.entries[folder.next++]);
            }
        }
    }

private:
    struct OpenFolder {
        std::vector<ListedEntry> entries;
        std::size_t next = 0;
        bool becomesReadOnly = false;
    };

    void copyEntry(const ListedEntry& entry) {
        AbsoluteIRI source = childOf(source_, entry.name);
        AbsoluteIRI destination = childOf(destination_, entry.name);
        requireNoLink(from_, source);
        if (!entry.isFolder) return remember({entry.name, false, files_.copy(source, destination)});
        remember({entry.name, true});
        source_ = std::move(source);
        destination_ = std::move(destination);
        enter();
    }

    void enter() {
        stopIfInterrupted(source_);
        OpenFolder folder{.entries = from_.list(source_, {})};
        const ExistenceType standing = to_.existence(destination_);
        const bool isMerged = standing == provider::AsFolder && policy_ != provider::ReplaceWritable;
        if (standing != provider::AsNeither && !isMerged)
            throw vfs::Exception(vfs::resourceAlreadyExists, destination_, preparing);
        if (!isMerged) {
            // Protected only when everything is in it.
            folder.becomesReadOnly = !from_.isWritable(source_);
            to_.createFolder(destination_);
        }
        files_.progress().found(folder.entries.size(), 0);
        open_.push_back(std::move(folder));
    }

    void leave() {
        if (open_.back().becomesReadOnly) to_.setWritable(destination_, false);
        files_.progress().finished(1, 0, [&] { return source_; });
        open_.pop_back();
        if (open_.empty()) return;
        remember({});
        source_ = source_.getParent();
        destination_ = destination_.getParent();
    }

    void remember(CopiedItem item) {
        if (copied_ != nullptr) copied_->push_back(std::move(item));
    }

    Provider& from_;
    Provider& to_;
    AbsoluteIRI source_;
    AbsoluteIRI destination_;
    const ReplacementPolicy policy_;
    FileCopier files_;
    CopiedItems* const copied_;
    std::vector<OpenFolder> open_;
};

/// A folder from which all that was copied is gone. What came meanwhile is what stands in the way.
void removeEmptied(Provider& provider, const AbsoluteIRI& folder) {
    try {
        provider.removeFolder(folder, vfs::RemoveEmptyFolder);
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() != vfs::folderNotEmpty) throw;
        const std::vector<ListedEntry> left = provider.list(folder, {});
        throw vfs::Exception(vfs::resourceInUse,
                             left.empty() ? folder : AbsoluteIRI(folder, left.front().name), removingSource);
    }
}

void removeCopiedItems(const ServedLocation& source, const CopiedItems& copied) {
    AbsoluteIRI folder = source.location;
    for (const CopiedItem& item : copied) {
        stopIfInterrupted(folder);
        if (item.isFolder) {
            folder = AbsoluteIRI(folder, item.name);
        } else if (item.name.empty()) {
            removeEmptied(source.provider, folder);
            folder = folder.getParent();
        } else {
            removeCopied(source.provider, AbsoluteIRI(folder, item.name), item.attributes);
        }
    }
    removeEmptied(source.provider, folder);
}

FileAttributes transferFile(const ServedLocation& source, const ServedLocation& destination,
                            ReplacementPolicy policy) {
    FileCopier copier(source.provider, destination.provider, policy);
    copier.progress().found(1, 0);
    return copier.copy(source.location, destination.location);
}

/// By whatever spelling: the copy would find itself on the way.
bool isInOwnSubtree(Provider& provider, const AbsoluteIRI& source, const AbsoluteIRI& destination) {
    const bool isThere = provider.existence(destination) != provider::AsNeither;
    const AbsoluteIRI existing = isThere || !destination.hasParent() ? destination : destination.getParent();
    if (provider.existence(existing) == provider::AsNeither) return false;
    const CanonicalAbsoluteIRI from = provider.canonicalLocation(source);
    const CanonicalAbsoluteIRI to = provider.canonicalLocation(existing);
    return from == to || from.isAncestorOf(to);
}

void transferFolder(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy,
                    CopiedItems* copied) {
    const bool isOneProvider = &source.provider == &destination.provider;
    if (isOneProvider && isInOwnSubtree(source.provider, source.location, destination.location))
        throw vfs::Exception(vfs::invalidLocation, destination.location, preparing);
    FolderCopier(source, destination, policy, copied).copy();
}

}  // namespace

void copyFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy) {
    requireWriting(destination);
    transferFile(source, destination, policy);
}

void moveFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy) {
    requireWriting(destination);
    requireWriting(source);
    requireNoLink(source.provider, source.location);
    requireLeaving(source);
    const FileAttributes copied = transferFile(source, destination, policy);
    destination.provider.makeDurable(destination.location);
    removeCopied(source.provider, source.location, copied);
}

void copyFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy) {
    requireWriting(destination);
    transferFolder(source, destination, policy, nullptr);
}

void moveFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy) {
    requireWriting(destination);
    requireWriting(source);
    requireNoLink(source.provider, source.location);
    requireOwnName(source.location);
    requireLeaving(source);
    const bool isOneProvider = &source.provider == &destination.provider;
    if (isOneProvider && policy != provider::ReplaceWritable)
        refuseMergeOntoItself(source.provider, source.location, destination.location);
    CopiedItems copied;
    transferFolder(source, destination, policy, &copied);
    destination.provider.makeDurable(destination.location);
    removeCopiedItems(source, copied);
}

void refuseMergeOntoItself(Provider& provider, const AbsoluteIRI& source, const AbsoluteIRI& destination) {
    if (provider.existence(destination) != provider::AsFolder) return;
    const CanonicalAbsoluteIRI from = provider.canonicalLocation(source);
    const CanonicalAbsoluteIRI to = provider.canonicalLocation(destination);
    if (!to.isAncestorOf(from)) return;
    const std::u16string& above = to.parts().path;
    const std::u16string way =
        from.parts().path.substr(above.ends_with(u'/') ? above.size() : above.size() + 1);
    if (provider.extendedExistence(AbsoluteIRI(source, way)) == provider::ExtendedFolder)
        throw vfs::Exception(vfs::invalidLocation, AbsoluteIRI(destination, way), preparing);
}

}  // namespace korvex::runtime::storage
