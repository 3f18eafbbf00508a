// What `delete` does with one name: the checks in their order, the wildcard, the recycle bin, and the
// removal.
#include "io/filesystem/filemanip/delete_recycle_items.h"

#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "io/filesystem/filemanip/delete_recycle_state.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "platform/dispatcher.h"
#include "platform/filesystem_core.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "platform/packages.h"
#include "platform/path_management.h"
#include "platform/storage_utility.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace core = korvex::io::filesystem::core;
using provider::ExistenceTypeExtended;
using vfs::AbsoluteIRI;
using vfs::File;
using vfs::Folder;

namespace {

/// Names of this length in 16-bit units, and longer ones, are refused.
constexpr std::size_t nameLimit = 1024;

/// A name as it was given, and what is known of it.
struct GivenName {
    explicit GivenName(const std::u16string& givenText)
        : text(givenText),
          hasWildcard(givenText.find(u'*') != std::u16string::npos),
          endsWithSeparator(filesystemSharedFcns::isPathSeparator(givenText.back())),
          isIRI(vfs::hasIRIPrefix(givenText)) {}

    const std::u16string& text;
    const bool hasWildcard;
    const bool endsWithSeparator;
    /// It has a scheme: failures are told in the storage's words.
    const bool isIRI;
};

vfs::StorageSystemReference storageSystem() {
    return Velquist::KorvexStorageSystem::GetStorageSystemReference();
}

// --- the interpreter's picture ---

/// Makes the interpreter forget what it read from this file. Of an extension that it does not execute it has
/// read nothing.
void clearCachedFunction(const std::u16string& path) {
    Kdispatcher& kdispatcher = Kdispatcher::getDispatcher();
    const kdLoadLmBuiltinAllowedProtected guard(kdispatcher);
    const std::u16string extension = u'.' + fl::filesystem::detail::extract_extension(path);
    const dispatcher::ustring_namehash::Key key = kdispatcher.namehash.insert(extension);
    if (key != nullptr && kdispatcher.get_iExtension(key, false) == -1) return;
    kdClearFunctionsByName(path.c_str());
}

void tellPathEntriesAbove(const AbsoluteIRI& location) {
    Velquist::PathManagement::NotifyUpstreamPathEntriesOfPossibleSpecialSubfolderChanges(
        location, GetPerKVMEventManager());
}

/// Asked before the file is gone: afterwards the question makes no sense.
void noticeDeletion(const File& file) {
    if (const auto notice = noticeFileInPackage(file, PackageNoticeMode::fromPackage)) {
        kxWarningMsgId(KORVEX::DELETE::DeletedFileFromPackage(notice->itemText, notice->packageName));
    }
}

/// With links resolved, what goes may lie in another folder.
bool mayBelongToPackage(const Folder& folder, const DeletionOptions& options) {
    return options.resolveLinks ? Velquist::KorvexComponents::KPMFeature::IsOn() : mayGiveNotices(folder);
}

// --- one item ---

/// How an item goes.
struct ItemDeletion {
    bool isIRI;
    bool recycle;
    bool resolveLinks;
    bool mayBelongToPackage;
};

template <class Handle>
Handle removalTarget(const AbsoluteIRI& location, bool resolveLinks) {
    Handle handle(location, storageSystem());
    return resolveLinks ? Handle(handle.getCanonicalLocation(), storageSystem()) : handle;
}

/// Takes the protection off what is to go; a refusal is swallowed, the removal will tell. A link has none of
/// its own, and what it leads to keeps its own as long as it is the link that goes.
template <class Handle>
void makeWritable(const Handle& handle, bool isLink) {
    if (isLink) return;
    try {
        handle.setWritable(true);
    } catch (const vfs::Exception&) {
    }
}

/// Removes for good. A link to a folder is a folder to the storage layer.
void removeItem(const AbsoluteIRI& location, ExistenceTypeExtended kind, const ItemDeletion& deletion) {
    const bool isLink = core::isSymlink(kind) && !deletion.resolveLinks;
    if (kind == provider::ExtendedLinkToFolder) {
        const Folder folder = removalTarget<Folder>(location, deletion.resolveLinks);
        makeWritable(folder, isLink);
        folder.removeFolder(vfs::RemoveEmptyFolder);
        return;
    }
    const File file = removalTarget<File>(location, deletion.resolveLinks);
    makeWritable(file, isLink);
    if (deletion.mayBelongToPackage) noticeDeletion(file);
    file.removeFile();
}

void recycleItem(const AbsoluteIRI& location, const std::u16string& path, const ItemDeletion& deletion) {
    if (deletion.mayBelongToPackage) noticeDeletion(File(location, storageSystem()));
    if (moveToRecycleBin(path)) return;
    if (deletion.isIRI) return kxWarningMsgId(KORVEX::virtualfilesystem::ioError(path));
    kxWarningMsgId(KORVEX::DELETE::Permission());
}

void deleteExistingItem(const AbsoluteIRI& location, ExistenceTypeExtended kind,
                        const ItemDeletion& deletion) {
    if (kind == provider::ExtendedFolder) {
        return kxWarningMsgId(KORVEX::DELETE::DirectoryDeletion(locationText(location, deletion.isIRI)));
    }
    if (isRemoteLocation(location)) return removeItem(location, kind, deletion);
    const vfs::NativePath path = vfs::fromAbsoluteIRI(location);
    clearCachedFunction(path.text());
    if (deletion.recycle) {
        // The bin gets the path as it stands: links are not resolved for it, on purpose.
        recycleItem(location, path.text(), deletion);
    } else {
        removeItem(location, kind, deletion);
    }
    tellPathEntriesAbove(location);
}

// --- one name ---

void warnNotFound(const GivenName& name) {
    if (name.isIRI) return kxWarningMsgId(KORVEX::virtualfilesystem::resourceNotFound(name.text));
    kxWarningMsgId(KORVEX::DELETE::FileNotFound(name.text));
}

void deleteMatches(const AbsoluteIRI& location, const GivenName& name, const DeletionOptions& options) {
    if (!location.hasParent()) {
        return kxWarningMsgId(KORVEX::virtualfilesystem::invalidLocation(name.text));
    }
    const Folder parent(location.getParent(), storageSystem());
    const std::u16string pattern = location.getName();
    const auto listing = parent.listAll(pattern);
    const bool isPattern = pattern.find(u'*') != std::u16string::npos;
    if ((listing.empty() && !isPattern) || pattern == u"." || pattern == u"..") return warnNotFound(name);
    if (listing.empty()) return;
    const ItemDeletion deletion{name.isIRI, options.recycle, options.resolveLinks,
                                mayBelongToPackage(parent, options)};
    for (const vfs::ListEntry& entry : listing) {
        const AbsoluteIRI& found = entry.getLocation();
        deleteExistingItem(found, core::getExtendedExistenceType(found, true), deletion);
    }
}

/// The name, ready to become a location. No other test of a text with a scheme is made than that it parses.
std::u16string preparedName(const GivenName& name) {
    if (name.isIRI) return normalizeHttpLocation(name.text);
    std::u16string path = name.text;
    foundation::storage::utility::handleWindowsTrailingDotsAndSpaces(path);
    return path.empty() ? fl::filesystem::get_current_path() : fl::filesystem::absolute(path, u"");
}

void refuseWebLocation() {
    trace(severity::error, "HTTP/S URLs are read only.");
    traceCurrentException();
    kxWarningMsgId(KORVEX::virtualfileio::stream::writeNotAllowed());
}

void deleteNamed(const GivenName& name, const DeletionOptions& options) {
    const std::u16string prepared = preparedName(name);
    if (name.isIRI && isHttpLocation(prepared)) return refuseWebLocation();
    const AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(prepared);
    const ExistenceTypeExtended kind = core::getExtendedExistenceType(location, true);
    // With a separator behind it a link is taken for the folder that it stands for, be it there or not.
    const bool maybeFolder = kind == provider::ExtendedLinkToFolder || kind == provider::ExtendedBrokenLink;
    if (kind == provider::ExtendedFolder || (maybeFolder && name.endsWithSeparator)) {
        return kxWarningMsgId(KORVEX::DELETE::DirectoryDeletion(name.text));
    }
    if (kind == provider::ExtendedNothing) return deleteMatches(location, name, options);
    deleteExistingItem(location, kind, {name.isIRI, options.recycle, options.resolveLinks, true});
}

void warnOfFailure(const vfs::Exception& failure, const GivenName& name, bool resolveLinks) {
    const vfs::ErrorCode code = failure.getErrorCode();
    // Nothing there to match is no failure of a pattern.
    const bool isNothing = code == vfs::invalidLocation || code == vfs::resourceNotFound;
    if (name.hasWildcard && isNothing) return;
    if (name.isIRI) return kxWarningMsgId(vfs::messageOf(code, name.text));
    switch (code) {
        case vfs::folderNotEmpty:
            // Without the link option it reads as not found, on purpose.
            if (!resolveLinks) break;
            return kxWarningMsgId(KORVEX::DELETE::FolderNotEmpty(name.text));
        case vfs::permissionDenied:
        case vfs::readOnlyProvider:
        case vfs::ioError: return kxWarningMsgId(KORVEX::DELETE::Permission());
        default: break;
    }
    kxWarningMsgId(KORVEX::DELETE::FileNotFound(name.text));
}

}  // namespace

void deleteOneName(const std::u16string& givenName, const DeletionOptions& options) {
    if (givenName.empty()) return kxWarningMsgId(KORVEX::DELETE::FileNotFound(givenName));
    if (givenName.size() >= nameLimit) raise(KORVEX::DELETE::pathnameTooLong(givenName));
    const GivenName name(givenName);
    try {
        deleteNamed(name, options);
    } catch (const vfs::InvalidIRIException&) {
        kxWarningMsgId(KORVEX::virtualfilesystem::invalidIRI(givenName));
    } catch (const vfs::UnsupportedIRISchemeException&) {
        kxWarningMsgId(KORVEX::virtualfilesystem::unsupportedProvider(givenName));
    } catch (const vfs::Exception& failure) {
        warnOfFailure(failure, name, options.resolveLinks);
    }
}

}  // namespace korvex::filemanip
