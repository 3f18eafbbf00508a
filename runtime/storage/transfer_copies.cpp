// The copying part of transfers between two providers.
#include "runtime/storage/transfer_copies.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <span>
#include <thread>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/location.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/storage/transfer_steps.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

/// The clocks from which file systems take their times go on at least every hundredth of a second; twice as
/// long, since a busy system is late with it.
constexpr auto longestClockStep = std::chrono::milliseconds(20);
/// Some file systems keep whole seconds, or every second one.
constexpr auto coarsestStep = std::chrono::seconds(2);
constexpr auto stepOfWaiting = std::chrono::milliseconds(1);
/// How often a file may change at the very moment at which it is looked at.
constexpr int mostLooks = 3;

constexpr const char16_t* copying = u"copying between storages";

/// A single file lands on one that exists in the same way whether a folder is merged or not.
ReplacementPolicy policyForFiles(ReplacementPolicy policy) noexcept {
    return policy == provider::MergeFolder ? provider::ReplaceWritable : policy;
}

using Instant = std::chrono::sys_time<std::chrono::nanoseconds>;

/// Whether a change that is still to come could get the same time.
bool isFresh(Instant changed) noexcept {
    const Instant now = std::chrono::system_clock::now();
    const bool mayBeCoarse = changed == std::chrono::floor<std::chrono::seconds>(changed);
    const std::chrono::nanoseconds step = mayBeCoarse ? coarsestStep : longestClockStep;
    // A time further ahead comes from another clock.
    return changed > now - step && changed <= now + longestClockStep;
}

/// For a file that says that it changed at that time. False when a change that is still to come will show;
/// otherwise waits until that is so, or until an interrupt is pending, and the file is to be looked at again.
bool awaitClockStep(const FileAttributes& attributes) {
    if (!attributes.changed || !isFresh(*attributes.changed)) return false;
    while (isFresh(*attributes.changed) && !interpreter::isInterruptPending())
        std::this_thread::sleep_for(stepOfWaiting);
    return true;
}

/// A link at the place of a copy that was named leads on; one in a folder means nothing but itself.
enum class Place { named, inFolder };

/// Copies files, one after the other, through the same buffer.
class FileCopier {
public:
    FileCopier(Provider& from, Provider& to, ReplacementPolicy policy, SourceFate fate)
        : from_(from), to_(to), policy_(policyForFiles(policy)), fate_(fate) {}

    CopiedFile copy(const AbsoluteIRI& source, const AbsoluteIRI& destination, Place place) {
        stopIfInterrupted(source);
        OpenSource opened = open(source, place);
        // Only a location that a listing gave stands for the link itself, and only for a stream.
        const bool isOneProvider = &from_ == &to_;
        const bool mayLeadOn = place == Place::inFolder && (isOneProvider || !destination.parts().found);
        const bool isOntoLink = mayLeadOn && isLink(to_.extendedExistence(destination));
        if (isOntoLink && !destination.parts().found)
            throw vfs::Exception(vfs::resourceAlreadyExists, destination, copying);
        if (isOneProvider && !isOntoLink) {
            from_.copyFile(source, destination, policy_);
        } else {
            stream(source, opened, destination);
        }
        progress_.finished(1, 0, [&] { return source; });
        return {opened.attributes.size, opened.attributes.changed, opened.isSettled};
    }

    ProgressCounter& progress() noexcept { return progress_; }

private:
    struct OpenSource {
        std::unique_ptr<InputStream> input;
        FileAttributes attributes;
        bool isSettled = false;
    };

    OpenSource open(const AbsoluteIRI& source, Place place) {
        OpenSource opened;
        int looks = 0;
        do {
            opened.input = from_.read(source);
            opened.attributes = opened.input->attributes();
            opened.isSettled = fate_ == SourceFate::stays || !awaitClockStep(opened.attributes);
            if (!opened.isSettled) stopIfInterrupted(source);
        } while (!opened.isSettled && ++looks < mostLooks);
        // A link that came in the file's place has been followed.
        if (place == Place::inFolder && from_.extendedExistence(source) != provider::ExtendedFile)
            throw vfs::Exception(vfs::resourceInUse, source, copying);
        return opened;
    }

    void stream(const AbsoluteIRI& source, OpenSource& opened, const AbsoluteIRI& destination) {
        const auto output = to_.write(destination, policy_);
        progress_.found(0, opened.attributes.size.value_or(0));
        buffer_.resize(bufferSize);
        while (const std::size_t count = opened.input->read(buffer_)) {
            output->write(std::span<const std::byte>(buffer_).first(count));
            if (!opened.attributes.size) progress_.found(0, count);
            progress_.finished(0, count, [&] { return source; });
            stopIfInterrupted(source);
        }
        output->setAttributes(opened.attributes);
        output->commit();
    }

    Provider& from_;
    Provider& to_;
    const ReplacementPolicy policy_;
    const SourceFate fate_;
    std::vector<std::byte> buffer_;
    ProgressCounter progress_;
};

/// Copies a tree. The two present folders move down and up together; what is still to be done in each folder
/// above them waits on a stack.
class FolderCopier {
public:
    FolderCopier(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy,
                 CopiedItems* copied)
        : from_(source.provider),
          to_(destination.provider),
          source_(source.location),
          destination_(destination.location),
          policy_(policy),
          files_(from_, to_, policy, copied != nullptr ? SourceFate::goes : SourceFate::stays),
          copied_(copied) {}

    void copy() {
        files_.progress().found(1, 0);
        enter(source_, destination_);
        while (!open_.empty()) {
            if (open_.back().pending.empty()) {
                leave();
                continue;
            }
            const ListedEntry entry = std::move(open_.back().pending.back());
            open_.back().pending.pop_back();
            copyEntry(entry);
        }
    }

private:
    struct OpenFolder {
        /// What is still to be copied, the next one last.
        std::vector<ListedEntry> pending;
        KeptFolder source = nullptr;
        KeptFolder destination = nullptr;
        /// The destination, of one that becomes read-only when everything is in it.
        std::optional<AbsoluteIRI> becomesReadOnly = std::nullopt;
    };

    void copyEntry(const ListedEntry& entry) {
        const AbsoluteIRI source = itemIn(source_, open_.back().source, entry.name);
        const AbsoluteIRI destination = itemIn(destination_, open_.back().destination, entry.name);
        requireNoLink(from_, source);
        if (!entry.isFolder) {
            const CopiedFile copied = files_.copy(source, destination, Place::inFolder);
            return remember({CopiedItem::Kind::file, entry.name, copied});
        }
        remember({CopiedItem::Kind::folder, entry.name});
        enter(source, destination);
    }

    void enter(const AbsoluteIRI& source, const AbsoluteIRI& destination) {
        stopIfInterrupted(source);
        WalkedFolder listed = listForWalk(from_, source);
        std::reverse(listed.entries.begin(), listed.entries.end());
        OpenFolder folder{.pending = std::move(listed.entries), .source = std::move(listed.kept)};
        const bool isNew = !isMerged(destination);
        if (isNew) {
            if (!from_.isWritable(source)) folder.becomesReadOnly = destination;
            to_.createFolder(destination);
        }
        if (!folder.pending.empty()) folder.destination = keep(destination, isNew);
        files_.progress().found(folder.pending.size(), 0);
        open_.push_back(std::move(folder));
        source_ = source;
        destination_ = destination;
    }

    /// False where nothing stands. Only the destination that was named may be a link to a folder.
    bool isMerged(const AbsoluteIRI& destination) {
        bool isThere = true;
        bool isFolder = false;
        if (open_.empty()) {
            const ExistenceType standing = to_.existence(destination);
            isThere = standing != provider::AsNeither;
            isFolder = standing == provider::AsFolder;
        } else {
            const ExistenceTypeExtended standing = to_.extendedExistence(destination);
            isThere = standing != provider::ExtendedNothing;
            isFolder = standing == provider::ExtendedFolder;
        }
        if (isThere && !(isFolder && policy_ != provider::ReplaceWritable))
            throw vfs::Exception(vfs::resourceAlreadyExists, destination, copying);
        return isThere;
    }

    /// What the provider keeps of the destination, so that what goes into it goes nowhere else.
    KeptFolder keep(const AbsoluteIRI& folder, bool isNew) {
        // What has been seen to be a folder is not entered through a link that comes in its place.
        if (isNew && to_.extendedExistence(folder) != provider::ExtendedFolder)
            throw vfs::Exception(vfs::resourceInUse, folder, copying);
        KeptFolder kept = to_.hold(folder);
        const bool isInKeptFolder = folder.parts().found != nullptr;
        if (isInKeptFolder && !kept) throw vfs::Exception(vfs::resourceInUse, folder, copying);
        return kept;
    }

    void leave() {
        if (open_.back().becomesReadOnly) to_.setWritable(*open_.back().becomesReadOnly, false);
        files_.progress().finished(1, 0, [&] { return source_; });
        open_.pop_back();
        if (open_.empty()) return;
        remember({CopiedItem::Kind::endOfFolder});
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

}  // namespace

CopiedFile copyNamedFile(const ServedLocation& source, const ServedLocation& destination,
                         ReplacementPolicy policy, SourceFate fate) {
    FileCopier copier(source.provider, destination.provider, policy, fate);
    copier.progress().found(1, 0);
    return copier.copy(source.location, destination.location, Place::named);
}

void copyTree(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy,
              CopiedItems* copied) {
    FolderCopier(source, destination, policy, copied).copy();
}

}  // namespace korvex::runtime::storage
