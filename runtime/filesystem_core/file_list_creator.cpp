// The expansion of a name into the files that it stands for.
#include <algorithm>
#include <set>

#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "runtime/filesystem_core/stored_messages.h"
#include "runtime/storage/location.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::io::filesystem::core {

namespace internal = korvex::runtime::filesystem_core;
namespace storage = korvex::runtime::storage;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

using Location = vfs::AbsoluteIRI;
using Base = boost::optional<vfs::CanonicalAbsoluteIRI>;

bool isLocal(const Location& location) { return location.getScheme() == storage::localScheme; }

Location locationOf(const std::u16string& name, const Base& base) {
    if (base && !isLocal(*base) && !fl::filesystem::detail::is_absolute(name)) return Location(*base, name);
    const std::u16string folder = base && isLocal(*base) ? vfs::fromAbsoluteIRI(*base).text() : u"";
    return Velquist::PathManagement::GetIRIFromString(fl::filesystem::absolute(name, folder));
}

bool isFolder(provider::ExistenceTypeExtended type) noexcept {
    return type == provider::ExtendedFolder || type == provider::ExtendedLinkToFolder;
}

class Expansion {
public:
    Expansion(std::vector<std::u16string>& files, Status& status, bool followsLinks, bool includesFolders)
        : files_(files), status_(status), followsLinks_(followsLinks), includesFolders_(includesFolders) {}

    void addNameOrMatches(const Location& named) {
        const provider::ExistenceTypeExtended type = typeOf(named);
        if (type != provider::ExtendedNothing) return addTree(named, type);
        if (!named.hasParent()) return;
        for (const vfs::ListEntry& entry : listing(named.getParent(), named.getName()))
            addItem(entry.getLocation(), typeOf(entry));
    }

private:
    /// Keeps its own list of what is still to be visited, so that no depth of a tree is too much.
    void addTree(const Location& top, provider::ExistenceTypeExtended typeOfTop) {
        addItem(top, typeOfTop);
        std::vector<vfs::ListEntry> pending;
        if (isWalkedInto(top, typeOfTop)) pushEntries(top, pending);
        while (!pending.empty()) {
            const vfs::ListEntry entry = std::move(pending.back());
            pending.pop_back();
            const provider::ExistenceTypeExtended type = typeOf(entry);
            addItem(entry.getLocation(), type);
            if (isWalkedInto(entry.getLocation(), type)) pushEntries(entry.getLocation(), pending);
        }
    }

    void addItem(const Location& location, provider::ExistenceTypeExtended type) {
        if (type == provider::ExtendedNothing || (isFolder(type) && !includesFolders_)) return;
        files_.push_back(Velquist::PathManagement::GetStringFromIRI(location));
    }

    /// With links followed a folder may be reached by several ways, and from itself.
    bool isWalkedInto(const Location& location, provider::ExistenceTypeExtended type) {
        if (!followsLinks_) return type == provider::ExtendedFolder;
        if (!isFolder(type)) return false;
        try {
            return walkedInto_.insert(vfs::Folder(location, storage_).getCanonicalLocation().toString())
                .second;
        } catch (const vfs::Exception& failure) {
            record(failure);
            return false;
        }
    }

    void pushEntries(const Location& folder, std::vector<vfs::ListEntry>& pending) {
        storage::stopIfInterrupted(folder);
        const std::size_t before = pending.size();
        const vfs::FolderListing<vfs::ListEntry> entries = listing(folder, std::u16string());
        pending.insert(pending.end(), entries.begin(), entries.end());
        std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(before), pending.end());
    }

    vfs::FolderListing<vfs::ListEntry> listing(const Location& folder, const std::u16string& pattern) {
        try {
            return vfs::Folder(folder, storage_).listAll(pattern);
        } catch (const vfs::Exception& failure) {
            // A folder that is not there has no matches; that is no failure of the expansion.
            if (failure.getErrorCode() != vfs::resourceNotFound) record(failure);
            return {};
        }
    }

    /// A listing has told already what is no folder and leads to none; which kind of that does not matter.
    provider::ExistenceTypeExtended typeOf(const vfs::ListEntry& entry) {
        const bool isFile = entry.getFileOrFolder().which() == 0;
        return isFile ? provider::ExtendedFile : typeOf(entry.getLocation());
    }

    provider::ExistenceTypeExtended typeOf(const Location& location) {
        try {
            return vfs::existsExtended(location, storage_);
        } catch (const vfs::Exception& failure) {
            record(failure);
            return provider::ExtendedNothing;
        }
    }

    void record(const vfs::Exception& failure) {
        if (status_.code != Status::success) return;
        const std::u16string path = Velquist::PathManagement::GetStringFromIRI(failure.getLocation());
        const std::string identifier = vfs::messageOf(failure.getErrorCode(), path).identifier();
        internal::storeMessageOfOneArgument(status_, identifier, path);
        status_.code = Status::failure;
    }

    std::vector<std::u16string>& files_;
    Status& status_;
    const bool followsLinks_;
    const bool includesFolders_;
    const vfs::StorageSystemReference storage_ = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    std::set<std::u16string> walkedInto_;
};

}  // namespace

FileListCreator::FileListCreator() = default;

// The signature is the interface's.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void FileListCreator::AddFiles(std::u16string name, Base base, bool followsLinks, bool includesFolders,
                               bool failsWithoutMatch) {
    const std::size_t before = files_.size();
    if (!name.empty()) {
        Expansion(files_, status_, followsLinks, includesFolders).addNameOrMatches(locationOf(name, base));
    }
    if (!failsWithoutMatch || files_.size() > before || status_.code != Status::success) return;
    using NothingFound = foundation::core::except::Exception<KORVEX::FILEATTRIB::CannotFindFile>;
    status_.exception = boost::copy_exception(NothingFound(KORVEX::FILEATTRIB::CannotFindFile()));
    status_.code = Status::failure;
}

std::vector<std::u16string> FileListCreator::GetFiles() { return files_; }

Status FileListCreator::GetStatus() { return status_; }

}  // namespace korvex::io::filesystem::core
