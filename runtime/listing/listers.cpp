// The listers: from a location and a pattern to entries.
#include <utility>

#include "platform/listing.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/storage_utility.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/listing/delivery.h"
#include "runtime/listing/glob_pattern.h"
#include "runtime/listing/listing_storage.h"
#include "runtime/storage/location.h"
#include "runtime/storage/storage_system.h"

namespace korvex::runtime::listing {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using vfs::AbsoluteIRI;

constexpr char16_t locationSeparator = u'/';

std::u16string_view separatorsOf(bool isIri) {
    constexpr bool hasBackslash = paths::isSeparator(u'\\', paths::nativeStyle);
    return hasBackslash && !isIri ? u"/\\" : u"/";
}

bool isLocal(const AbsoluteIRI& location) { return location.parts().scheme == storage::localScheme; }

/// The text under which entries know their folder.
std::u16string folderText(const AbsoluteIRI& location) {
    std::u16string text = Velquist::PathManagement::GetStringFromIRI(location);
    if (!isLocal(location)) foundation::storage::utility::decodeURL(text);
    return text;
}

char16_t separatorIn(const AbsoluteIRI& location) {
    return isLocal(location) ? paths::preferredSeparator(paths::nativeStyle) : locationSeparator;
}

/// One look at what a pattern asks of a storage.
class Listing {
public:
    Listing(storage::Provider& provider, const GlobPattern& pattern, const Receiver& receiver)
        : provider_(provider),
          pattern_(pattern),
          receiver_(receiver),
          storage_(listingStorageOf(provider)),
          detail_(receiver.display == nullptr ? Detail::sizeAndTime : Detail::none) {}

    bool list(const AbsoluteIRI& folder) {
        AbsoluteIRI location = folder;
        for (const std::u16string& name : pattern_.leadingNames())
            location = AbsoluteIRI(location, name);
        return pattern_.isPath() ? listItem(location) : listFolder(location);
    }

private:
    bool listFolder(const AbsoluteIRI& location) {
        auto top = std::make_unique<ListedFolder>(std::u16string(), pattern_.start());
        if (!storage_->walk(location, pattern_, detail_, *top)) return false;
        return deliver(std::move(top), pattern_, folderText(location), separatorIn(location), receiver_);
    }

    /// What a pattern without wildcards names: a folder is opened, anything else is the one entry.
    bool listItem(const AbsoluteIRI& location) {
        switch (provider_.extendedExistence(location)) {
            case provider::ExtendedNothing: return false;
            case provider::ExtendedFolder:
            case provider::ExtendedLinkToFolder: return listFolder(location);
            default: break;
        }
        auto above = std::make_unique<ListedFolder>();
        above->wasListed = true;
        above->entries.push_back(storage_->describe(location, detail_));
        const AbsoluteIRI holder = location.hasParent() ? location.getParent() : location;
        return deliver(std::move(above), pattern_, folderText(holder), separatorIn(holder), receiver_);
    }

    storage::Provider& provider_;
    const GlobPattern& pattern_;
    const Receiver receiver_;
    const std::unique_ptr<ListingStorage> storage_;
    const Detail detail_;
};

/// Where `?` may stand in a name, a pattern without `*` may be the path of a folder just as it is.
bool isPathOfFolder(storage::Provider& provider, const AbsoluteIRI& folder, std::u16string_view pattern) {
    const bool mayBePath =
        pattern.find(u'?') != std::u16string_view::npos && pattern.find(u'*') == std::u16string_view::npos;
    if (!mayBePath) return false;
    try {
        return provider.existence(AbsoluteIRI(folder, std::u16string(pattern))) == provider::AsFolder;
    } catch (const vfs::Exception&) {
        return false;  // what may not be looked at may still be listed
    }
}

/// Nothing was found. Perhaps because the current folder has gone: that is an error.
void requireCurrentFolder(storage::Provider& provider, const AbsoluteIRI& folder,
                          const std::u16string& currentFolder) {
    using CurrentFolderIsGone = foundation::core::except::Exception<KORVEX::services::cwdIsInvalid>;
    const bool isCurrent = Velquist::PathManagement::GetStringFromIRI(folder) == currentFolder;
    if (isCurrent && provider.existence(folder) != provider::AsFolder) {
        throw CurrentFolderIsGone(KORVEX::services::cwdIsInvalid());
    }
}

}  // namespace

}  // namespace korvex::runtime::listing

bool ioGetDirListRecursive(const foundation::storage::vfs::AbsoluteIRI& folder, std::u16string_view pattern,
                           std::vector<FileNameWithStatLight>& entries, const std::u16string& prefix,
                           bool isIri, ListingDisplay display, const std::u16string& currentFolder) {
    using namespace korvex::runtime;
    namespace vfs = foundation::storage::vfs;

    const std::u16string_view separators = listing::separatorsOf(isIri);
    listing::GlobPattern glob(pattern, separators, paths::nativeStyle);
    const auto system = storage::currentStorageSystem();
    storage::Provider& provider = system->provider(folder);
    if (listing::isPathOfFolder(provider, folder, pattern)) {
        glob = listing::GlobPattern::ofPath(pattern, separators);
    }
    try {
        if (listing::Listing(provider, glob, {entries, display, prefix}).list(folder)) return true;
    } catch (const vfs::Exception&) {
        // A request of the web that the user has ended: the interrupt itself is what the user gets to see.
        if (!interpreter::isInterruptPending()) throw;
        return false;
    }
    listing::requireCurrentFolder(provider, folder, currentFolder);
    return false;
}

void ioGetDirListVFS(const std::u16string& folder, std::u16string_view pattern,
                     std::vector<FileNameWithStatLight>& entries) {
    using namespace korvex::runtime;
    namespace vfs = foundation::storage::vfs;

    const vfs::AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(folder);
    const auto names = listing::GlobPattern::overNames(pattern, paths::nativeStyle);
    const auto system = storage::currentStorageSystem();
    auto top = std::make_unique<listing::ListedFolder>(std::u16string(), names.start());
    const auto storage = listing::listingStorageOf(system->provider(location));
    if (!storage->walk(location, names, listing::Detail::linkedFolders, *top)) {
        throw vfs::Exception(vfs::resourceNotFound, location, u"listing");
    }
    listing::deliver(std::move(top), names, listing::folderText(location), listing::separatorIn(location),
                     {entries, nullptr, folder});
}
