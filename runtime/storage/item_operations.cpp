// What files and folders can do: handed to the provider that serves them, or, between two providers, to the
// transfers.
#include <utility>
#include <vector>

#include "platform/storage_vfs.h"
#include "runtime/storage/location.h"
#include "runtime/storage/storage_system.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/storage/transfers.h"

namespace foundation::storage::vfs {

namespace storage = korvex::runtime::storage;

namespace {

/// Raises `UnsupportedIRISchemeException`.
template <class Handle>
storage::ServedLocation served(const Handle& handle) {
    const AbsoluteIRI& location = handle.getLocation();
    return {handle.storage().system().provider(location), location};
}

using OwnTransfer = void (storage::Provider::*)(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                                provider::ReplacementPolicy policy);
using TransferBetween = void (*)(const storage::ServedLocation& source,
                                 const storage::ServedLocation& destination,
                                 provider::ReplacementPolicy policy);

/// A provider knows best how to transfer within itself.
template <class Handle>
void transfer(const Handle& from, const Handle& to, provider::ReplacementPolicy policy, OwnTransfer within,
              TransferBetween between) {
    const storage::ServedLocation source = served(from);
    const storage::ServedLocation destination = served(to);
    if (&source.provider == &destination.provider) {
        (source.provider.*within)(source.location, destination.location, policy);
    } else {
        between(source, destination, policy);
    }
}

using Comparison = bool (storage::Provider::*)(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept;

template <class Handle>
bool areSame(const Handle& one, const Handle& other, Comparison comparison) {
    const AbsoluteIRI& location = one.getLocation();
    if (location == other.getLocation()) return true;
    storage::Provider* const provider = one.storage().system().find(location);
    const bool isServedTogether =
        provider != nullptr && provider == other.storage().system().find(other.getLocation());
    return isServedTogether && (provider->*comparison)(location, other.getLocation());
}

}  // namespace

bool File::operator==(const File& other) const {
    return areSame(*this, other, &storage::Provider::isSameFile);
}

void File::copyFile(const File& destination, const provider::ReplacementPolicy& policy) const {
    transfer(*this, destination, policy, &storage::Provider::copyFile, storage::copyFileBetween);
}

void File::moveFile(const File& destination, const provider::ReplacementPolicy& policy) const {
    transfer(*this, destination, policy, &storage::Provider::moveFile, storage::moveFileBetween);
}

void File::removeFile() const {
    const storage::ServedLocation file = served(*this);
    file.provider.removeFile(file.location);
    storage::tellOfOneItem([&] { return file.location; });
}

void File::setWritable(bool isWritable) const {
    const storage::ServedLocation file = served(*this);
    file.provider.setWritable(file.location, isWritable);
}

provider::FolderAttributes Folder::getAttributes() const {
    const storage::ServedLocation folder = served(*this);
    if (folder.provider.existence(folder.location) != provider::AsFolder)
        throw Exception(resourceNotFound, folder.location, u"attributes of a folder");
    return provider::FolderAttributes(folder.provider.isWritable(folder.location));
}

bool Folder::operator==(const Folder& other) const {
    return areSame(*this, other, &storage::Provider::isSameFolder);
}

void Folder::copyFolder(const Folder& destination, const provider::ReplacementPolicy& policy) const {
    transfer(*this, destination, policy, &storage::Provider::copyFolder, storage::copyFolderBetween);
}

void Folder::moveFolder(const Folder& destination, const provider::ReplacementPolicy& policy) const {
    transfer(*this, destination, policy, &storage::Provider::moveFolder, storage::moveFolderBetween);
}

void Folder::removeFolder(const FolderRemovalPolicy& policy) const {
    const storage::ServedLocation folder = served(*this);
    folder.provider.removeFolder(folder.location, policy);
    // Of a tree the provider has told.
    if (policy == RemoveEmptyFolder) storage::tellOfOneItem([&] { return folder.location; });
}

void Folder::createFolder() const {
    const storage::ServedLocation folder = served(*this);
    folder.provider.createFolder(folder.location);
}

void Folder::createFolderRecursive() const {
    const storage::ServedLocation folder = served(*this);
    folder.provider.createFolderRecursive(folder.location);
}

void Folder::setWritable(bool isWritable) const {
    const storage::ServedLocation folder = served(*this);
    folder.provider.setWritable(folder.location, isWritable);
}

FolderListing<ListEntry> Folder::listAll(std::u16string pattern) const {
    const storage::ServedLocation folder = served(*this);
    std::vector<storage::ListedEntry> found = folder.provider.list(folder.location, pattern);
    std::vector<ListEntry> entries;
    entries.reserve(found.size());
    for (storage::ListedEntry& entry : found) {
        const AbsoluteIRI location =
            entry.found ? storage::foundLocation(folder.location, entry.name, std::move(entry.found))
                        : AbsoluteIRI(folder.location, entry.name);
        location.parts().isKnownFile = entry.isPlainFile;
        entries.emplace_back(entry.isFolder ? Item(Folder(location, storage_))
                                            : Item(File(location, storage_)));
    }
    return FolderListing<ListEntry>(std::move(entries));
}

const AbsoluteIRI& ListEntry::getLocation() const {
    return item_.which() == 0 ? boost::get<File>(item_).getLocation()
                              : boost::get<Folder>(item_).getLocation();
}

bool isWritable(const Item& item) {
    const storage::ServedLocation place =
        boost::apply_visitor([](const auto& handle) { return served(handle); }, item);
    return place.provider.isWritable(place.location);
}

}  // namespace foundation::storage::vfs
