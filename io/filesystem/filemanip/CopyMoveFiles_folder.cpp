// A folder as source, or a name that is not there and may be a wildcard: which folder they go to, what has to
// be made first, and whether they go as a whole or item by item.
#include <algorithm>
#include <boost/optional.hpp>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/CopyMoveFiles_steps.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/dispatcher.h"
#include "platform/many_files.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

namespace {

/// The place of an item inside a folder, under its own name; of the same alternative as the item.
vfs::Item targetInFolder(const vfs::Item& item, const vfs::Folder& destination) {
    return boost::apply_visitor(
        [&](const auto& handle) {
            using Handle = std::decay_t<decltype(handle)>;
            return vfs::Item(Handle(destination, handle.getName()));
        },
        item);
}

/// The end of the run of files that begins there; a folder is a run of its own.
std::size_t endOfRun(const std::vector<const vfs::Item*>& items, std::size_t begin) {
    const auto isFile = [](const vfs::Item* item) { return boost::get<vfs::File>(item) != nullptr; };
    if (!isFile(items[begin])) return begin + 1;
    const auto end =
        std::find_if_not(items.begin() + static_cast<std::ptrdiff_t>(begin), items.end(), isFile);
    return static_cast<std::size_t>(end - items.begin());
}

/// Shorter runs of files are dealt with one by one.
constexpr std::size_t longRun = 32;

std::vector<std::pair<const vfs::File*, const vfs::File*>> filePairs(
    const std::vector<const vfs::Item*>& items, const std::vector<vfs::Item>& targets, std::size_t begin,
    std::size_t end) {
    std::vector<std::pair<const vfs::File*, const vfs::File*>> pairs;
    pairs.reserve(end - begin);
    for (std::size_t i = begin; i < end; ++i)
        pairs.emplace_back(boost::get<vfs::File>(items[i]), boost::get<vfs::File>(&targets[i]));
    return pairs;
}

void removeEmptyFolder(const vfs::Folder& folder) { folder.removeFolder(vfs::RemoveEmptyFolder); }

}  // namespace

bool CopyMoveFiles::ProcessDirectory(const AbsoluteIRI& source, const std::u16string& sourceText,
                                     const AbsoluteIRI& destination, const std::u16string& destinationText,
                                     const ExistenceType& sourceKind) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    const Folder destinationFolder(destination, storageSystem());
    const ExistenceType kind = vfs::exists(destination, storageSystem());
    trace(severity::workingValue, [&](auto& record) { record << "Destination exist status: " << kind; });
    if (kind == provider::AsFile && sourceKind == provider::AsFolder) {
        if (isIRI_) {
            reportInvalidLocation(destination, status_);
        } else {
            setStatusException("OSError", KORVEX::FILE::DestNotAFolder(destinationText));
        }
        return false;
    }
    // Set when the destination's parent had to be made: it goes again when the transfer fails. Folders higher
    // up stay, on purpose.
    boost::optional<Folder> createdParent;
    if (kind == provider::AsNeither && !doesParentExist(destination) &&
        !createMissingParent(destinationFolder, createdParent)) {
        return false;
    }
    if (sourceKind == provider::AsFolder) {
        return processExistingFolder(Folder(source, storageSystem()), destinationFolder, kind, createdParent);
    }
    const bool done = processMatches(source, sourceText, destinationFolder, kind);
    if (!done && createdParent) {
        trace(severity::flowOfControl, [&](auto& record) {
            record << "Performing operation: Removing (deleting) the Folder: " << *createdParent;
        });
        removeEmptyFolder(*createdParent);
    }
    return done;
}

bool CopyMoveFiles::createMissingParent(const Folder& destination, boost::optional<Folder>& createdParent) {
    try {
        const Folder parent = destination.getParent();
        parent.createFolderRecursive();
        createdParent = parent;
        trace(severity::flowOfControl, [&](auto& record) {
            record << "Parent does not exist, created the parent, value: " << parent;
        });
        return true;
    } catch (const vfs::Exception& failure) {
        trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
        const std::u16string text = displayText(failure.getLocation());
        if (!SetErrorExceptionContext(failure.getExceptionContextsString(), text)) {
            reportStorageFailure(failure, text);
        }
        return false;
    }
}

bool CopyMoveFiles::processExistingFolder(const Folder& source, const Folder& destination,
                                          const ExistenceType& destinationKind,
                                          const boost::optional<Folder>& createdParent) {
    const bool destinationExists = destinationKind == provider::AsFolder;
    if (destinationExists && source.getLocation().isAncestorOf(destination.getLocation())) {
        setStatusException("SourceIsAncestorOfDestination", KORVEX::FILE::SourceIsAncestorOfDestination());
        return false;
    }
    const bool done = preprocessFolder(source, destination, destinationExists);
    if (!done && createdParent) removeEmptyFolder(*createdParent);
    return done;
}

bool CopyMoveFiles::processMatches(const AbsoluteIRI& source, const std::u16string& sourceText,
                                   const Folder& destination, const ExistenceType& destinationKind) {
    if (!source.hasParent()) {
        if (isIRI_) {
            reportInvalidLocation(source, status_);
        } else {
            reportByKey("OSError");
        }
        return false;
    }
    // The last component serves as the pattern, so that a plain name that is not there matches nothing.
    const Folder parent(source.getParent(), storageSystem());
    const FolderListing listing = parent.listAll(source.getName());
    if (listing.empty()) {
        if (isIRI_) {
            storeFailure(status_, KORVEX::virtualfilesystem::resourceNotFound(displayText(source)));
        } else {
            setStatusException("FileNotFound", KORVEX::FILE::FileNotFound(sourceText));
        }
        return false;
    }
    if (destinationKind == provider::AsNeither && !createDestination(source, destination)) return false;
    return processFolderContents(listing, destination);
}

bool CopyMoveFiles::createDestination(const AbsoluteIRI& source, const Folder& destination) {
    trace(severity::flowOfControl,
          "Performing operation: Creating a new (empty) folder as the status is "
          "vfs::ExistenceType::AsNeither i.e. destination does not exist.");
    try {
        destination.createFolder();
        return true;
    } catch (const vfs::Exception& failure) {
        trace(severity::error, [&](auto& record) {
            record << "Exception while explicitly creating destination which does not exist\n"
                   << failure.ToUstring();
        });
        const std::u16string destinationPath = displayText(destination.getLocation());
        if (SetErrorExceptionContext(failure.getExceptionContextsString(), destinationPath)) {
            status_.code = Status::failure;
        } else if (failure.getErrorCode() == vfs::permissionDenied) {
            // The identifier of `copyfile` for both commands, and the source in the text: both on purpose.
            storeFailure(status_, KORVEX::virtualfilesystem::permissionDenied(displayText(source)),
                         "KORVEX:COPYFILE:ReadOnlyDestination");
        } else {
            reportStorageFailure(failure, destinationPath);
        }
        return false;
    }
}

bool CopyMoveFiles::preprocessFolder(const Folder& source, const Folder& destination,
                                     bool destinationExists) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    const Folder current = Kdispatcher::getDispatcher().GetCurrentWorkingFolder().get();
    // The folder that one stands in never goes as a whole, nor a folder into its own subtree.
    const bool byContents = current == source || source.getLocation().isAncestorOf(destination.getLocation());
    if (!byContents) return processFolder(source, destination, destinationExists);
    if (!destinationExists) {
        try {
            destination.createFolder();
        } catch (const vfs::Exception& failure) {
            trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
            reportStorageFailure(failure, displayText(destination.getLocation()));
            status_.code = Status::failure;
            return false;
        }
    }
    return processFolderContents(source.listAll(u""), destination);
}

bool CopyMoveFiles::processFolderContents(const FolderListing& listing, const Folder& destination) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    std::vector<const Item*> items;
    for (const ListEntry& entry : listing)
        items.push_back(&entry.getFileOrFolder());
    std::vector<Item> targets;
    if (!force_ && !targetsAreWritable(items, destination, targets)) return false;
    boost::optional<vfs::CopiesAhead> ahead;
    for (std::size_t i = 0, end = 0; i < items.size(); ++i) {
        const Item& item = *items[i];
        if (i == end) {
            ahead = boost::none;
            end = endOfRun(items, i);
            // With force, what stands at a target is made writable before its turn: nothing may stand there
            // yet.
            const bool isLong = end - i >= longRun;
            mayGiveNotices_ = !isLong || mayGiveNoticesOf(boost::get<File>(item), destination);
            if (isLong && isCopy() && !force_)
                ahead.emplace(filePairs(items, targets, i, end), provider::ReplaceWritable);
        }
        if (!callVfsAPI(item, force_ ? targetInFolder(item, destination) : targets[i])) return false;
    }
    return true;
}

// All files of a run come from one folder and go to one.
bool CopyMoveFiles::mayGiveNoticesOf(const File& first, const Folder& destination) const {
    return mayGiveNotices(destination) || (!isCopy() && mayGiveNotices(first.getParent()));
}

// Everything is looked at before anything is done.
bool CopyMoveFiles::targetsAreWritable(const std::vector<const Item*>& items, const Folder& destination,
                                       std::vector<Item>& targets) {
    targets.reserve(items.size());
    for (const Item* const item : items)
        targets.push_back(targetInFolder(*item, destination));
    const std::size_t first = vfs::firstUnwritable(targets, [] { traceCurrentException(); });
    if (first == targets.size()) return true;
    reportReadOnly(displayText(vfs::getLocation(targets[first])));
    return false;
}

}  // namespace korvex::filemanip
