// How the memory provider copies, moves and removes.
#include <mutex>
#include <utility>

#include "runtime/storage/providers/memory/memory_folder_steps.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr const char16_t* transferringFile = u"transferring a file";
constexpr const char16_t* transferringFolder = u"transferring a folder";
constexpr const char16_t* takingAway = u"taking something out of a folder";

}  // namespace

void MemoryProvider::copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                              ReplacementPolicy policy) {
    const std::unique_lock lock(guard_);
    stopIfInterrupted(source);
    ProgressCounter progress;
    const MemoryNode& file = fileAt(source);
    const std::uint64_t bytes = file.size();
    progress.found(1, bytes);
    const MemoryEntry place = hosts_.entryAt(destination);
    if (const auto obstacle = obstacleToFile(place, policy))
        throw vfs::Exception(*obstacle, destination, transferringFile);
    if (place.node != &file) place.put(file.copy());
    progress.finished(1, bytes, [&] { return source; });
}

void MemoryProvider::moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                              ReplacementPolicy policy) {
    const std::unique_lock lock(guard_);
    stopIfInterrupted(source);
    ProgressCounter progress;
    const MemoryEntry file = takenAt(source, provider::AsFile);
    const std::uint64_t bytes = file.node->size();
    progress.found(1, bytes);
    const MemoryEntry place = hosts_.entryAt(destination);
    if (const auto obstacle = obstacleToFile(place, policy))
        throw vfs::Exception(*obstacle, destination, transferringFile);
    if (place.node != file.node) place.put(file.take());
    progress.finished(1, bytes, [&] { return source; });
}

void MemoryProvider::copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                ReplacementPolicy policy) {
    const std::unique_lock lock(guard_);
    stopIfInterrupted(source);
    ProgressCounter progress;
    folderAt(source);
    MemoryNode& folder = *hosts_.entryAt(source).node;
    const MemoryEntry place = placeOfFolder(folder, destination, policy);
    progress.found(1, 0);
    if (place.node != nullptr)
        return copyFolderContents({folder, source}, {*place.node, destination}, policy, progress);
    auto made = std::make_unique<MemoryNode>();
    MemoryNode& copy = *made;
    place.put(std::move(made));
    copyFolderContents({folder, source}, {copy, destination}, policy, progress);
    copy.isWritable = folder.isWritable;
    copy.changed = folder.changed;
}

void MemoryProvider::moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                ReplacementPolicy policy) {
    const std::unique_lock lock(guard_);
    stopIfInterrupted(source);
    ProgressCounter progress;
    const MemoryEntry folder = takenAt(source, provider::AsFolder);
    const MemoryEntry place = placeOfFolder(*folder.node, destination, policy);
    progress.found(1, 0);
    if (place.node == nullptr) {
        place.put(folder.take());
        progress.finished(1, 0, [&] { return source; });
        return;
    }
    refuseMergeOntoItself(source, *folder.node, destination, *place.node);
    const LocatedFolder emptied{*folder.node, source};
    copyFolderContents(emptied, {*place.node, destination}, policy, progress);
    removeFolderContents(emptied, progress);
    folder.take();
}

void MemoryProvider::removeFile(const AbsoluteIRI& file) {
    const std::unique_lock lock(guard_);
    stopIfInterrupted(file);
    takenAt(file, provider::AsFile).take();
}

void MemoryProvider::removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy) {
    const std::unique_lock lock(guard_);
    // What was made in vain is taken back after an interrupt too, and that is asked for with this policy.
    if (policy != vfs::RemoveEmptyFolder) stopIfInterrupted(folder);
    ProgressCounter progress;
    const MemoryEntry removed = takenAt(folder, provider::AsFolder);
    if (policy == vfs::RemoveEmptyFolder && !removed.node->children.empty())
        throw vfs::Exception(vfs::folderNotEmpty, folder, takingAway);
    const bool isTold = policy == vfs::RemoveWithContents;
    if (isTold) progress.found(1, 0);
    removeFolderContents({*removed.node, folder}, progress);
    removed.take();
    if (isTold) progress.finished(1, 0, [&] { return folder; });
}

MemoryEntry MemoryProvider::takenAt(const AbsoluteIRI& location, ExistenceType wanted) {
    if (wanted == provider::AsFile) {
        fileAt(location);
    } else {
        folderAt(location);
    }
    MemoryEntry entry = hosts_.entryAt(location);
    if (entry.folder == nullptr || isDots(location.getName()))
        throw vfs::Exception(vfs::invalidLocation, location, takingAway);
    if (!entry.folder->isWritable) throw vfs::Exception(vfs::permissionDenied, location, takingAway);
    return entry;
}

MemoryEntry MemoryProvider::placeOfFolder(const MemoryNode& source, const AbsoluteIRI& destination,
                                          ReplacementPolicy policy) {
    MemoryEntry place = hosts_.entryAt(destination);
    if (place.node == &source || hosts_.isBelow(destination, source))
        throw vfs::Exception(vfs::invalidLocation, destination, transferringFolder);
    if (const auto obstacle = obstacleToFolder(place, policy))
        throw vfs::Exception(*obstacle, destination, transferringFolder);
    return place;
}

void MemoryProvider::refuseMergeOntoItself(const AbsoluteIRI& source, MemoryNode& folder,
                                           const AbsoluteIRI& destination, const MemoryNode& above) const {
    const auto way = hosts_.find(source)->namesBelow(above);
    if (way.empty()) return;
    MemoryWalk met(folder);
    std::u16string path;
    for (const std::u16string_view name : way) {
        if (!met.step(name)) return;
        path.append(path.empty() ? u"" : u"/").append(name);
    }
    if (met.node().isFolder)
        throw vfs::Exception(vfs::invalidLocation, AbsoluteIRI(destination, path), transferringFolder);
}

}  // namespace korvex::runtime::storage
