// Copies and moves between two providers.
#include "runtime/storage/transfers.h"

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

constexpr const char16_t* preparing = u"preparing a transfer";
constexpr const char16_t* listingName = u"a name that is a path elsewhere";
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

/// Copies files, one after the other, through the same buffer.
class FileCopier {
public:
    FileCopier(Provider& from, Provider& to, ReplacementPolicy policy)
        : from_(from), to_(to), policy_(policyForFiles(policy)) {}

    void copy(const AbsoluteIRI& source, const AbsoluteIRI& destination) {
        stopIfInterrupted(source);
        if (&from_ == &to_) {
            from_.copyFile(source, destination, policy_);
        } else {
            stream(source, destination);
        }
        progress_.finished(1, 0, [&] { return source; });
    }

    ProgressCounter& progress() noexcept { return progress_; }

private:
    void stream(const AbsoluteIRI& source, const AbsoluteIRI& destination) {
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
    }

    Provider& from_;
    Provider& to_;
    const ReplacementPolicy policy_;
    std::vector<std::byte> buffer_;
    ProgressCounter progress_;
};

/// Copies a tree. The two present folders move down and up together; what is still to be done in each folder
/// above them waits on a stack.
class FolderCopier {
public:
    FolderCopier(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy)
        : from_(source.provider),
          to_(destination.provider),
          source_(source.location),
          destination_(destination.location),
          policy_(policy),
          files_(from_, to_, policy) {}

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
        if (!entry.isFolder) return files_.copy(source, destination);
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
        source_ = source_.getParent();
        destination_ = destination_.getParent();
    }

    Provider& from_;
    Provider& to_;
    AbsoluteIRI source_;
    AbsoluteIRI destination_;
    const ReplacementPolicy policy_;
    FileCopier files_;
    std::vector<OpenFolder> open_;
};

}  // namespace

void copyFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy) {
    requireWriting(destination);
    FileCopier copier(source.provider, destination.provider, policy);
    copier.progress().found(1, 0);
    copier.copy(source.location, destination.location);
}

void moveFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy) {
    requireWriting(destination);
    requireWriting(source);
    requireNoLink(source.provider, source.location);
    copyFileBetween(source, destination, policy);
    source.provider.removeFile(source.location);
}

void copyFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy) {
    requireWriting(destination);
    const bool isOneProvider = &source.provider == &destination.provider;
    const bool isOwnSubtree =
        source.location == destination.location || source.location.isAncestorOf(destination.location);
    if (isOneProvider && isOwnSubtree)
        throw vfs::Exception(vfs::invalidLocation, destination.location, preparing);
    FolderCopier(source, destination, policy).copy();
}

void moveFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy) {
    requireWriting(destination);
    requireWriting(source);
    requireNoLink(source.provider, source.location);
    copyFolderBetween(source, destination, policy);
    source.provider.removeFolder(source.location, vfs::RemoveWithContents);
}

}  // namespace korvex::runtime::storage
