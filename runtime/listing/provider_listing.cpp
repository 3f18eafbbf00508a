// Listing through any storage provider: one folder after the other, files asked for their size and time.
#include "runtime/listing/provider_listing.h"

#include <chrono>
#include <utility>
#include <vector>

#include "runtime/listing/entry_time.h"

namespace korvex::runtime::listing {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using storage::AbsoluteIRI;

boost::posix_time::ptime timeOf(std::chrono::sys_time<std::chrono::nanoseconds> moment) {
    const auto second = std::chrono::floor<std::chrono::seconds>(moment);
    return entryTime(second.time_since_epoch().count(), (moment - second).count());
}

/// It has gone, is no folder any more, or may not be read. Whatever else keeps a folder closed would leave a
/// listing with gaps that nobody knows of.
bool mayBePassedOver(vfs::ErrorCode code) noexcept {
    return code == vfs::resourceNotFound || code == vfs::invalidLocation || code == vfs::permissionDenied;
}

class ProviderListing : public ListingStorage {
public:
    explicit ProviderListing(storage::Provider& provider) : provider_(provider) {}

    FileNameWithStatLight describe(const AbsoluteIRI& location, Detail detail) override {
        FileNameWithStatLight entry;
        entry.name = location.getName();
        if (detail != Detail::sizeAndTime) return entry;
        try {
            const storage::FileAttributes attributes = provider_.read(location)->attributes();
            entry.sizeKnown = attributes.size.has_value();
            if (attributes.size) entry.size = *attributes.size;
            if (attributes.changed) entry.modified = timeOf(*attributes.changed);
        } catch (const vfs::Exception&) {
            // What may not be read is there all the same.
        }
        return entry;
    }

    bool walk(const AbsoluteIRI& folder, const GlobPattern& pattern, Detail detail,
              ListedFolder& top) override {
        if (provider_.existence(folder) != provider::AsFolder) return false;
        std::vector<Pending> pending;
        list({&top, folder}, provider_.list(folder, u""), pattern, detail, pending);
        while (!pending.empty()) {
            const Pending next = std::move(pending.back());
            pending.pop_back();
            try {
                list(next, provider_.list(next.location, u""), pattern, detail, pending);
            } catch (const vfs::Exception& failure) {
                if (!mayBePassedOver(failure.getErrorCode())) throw;
            }
        }
        return true;
    }

private:
    struct Pending {
        ListedFolder* folder;
        AbsoluteIRI location;
    };

    void list(const Pending& place, const std::vector<storage::ListedEntry>& found,
              const GlobPattern& pattern, Detail detail, std::vector<Pending>& pending) {
        ListedFolder& folder = *place.folder;
        folder.wasListed = true;
        for (const storage::ListedEntry& entry : found) {
            const AbsoluteIRI location(place.location, entry.name);
            if (!entry.isFolder) {
                if (pattern.listsFile(folder.positions, entry.name))
                    folder.entries.push_back(describe(location, detail));
                continue;
            }
            GlobPattern::Match match = matchFolder(pattern, folder.positions, entry.name, location);
            if (match.isListed) folder.entries.push_back(describeFolder(entry.name));
            if (match.next.empty()) continue;
            folder.folders.push_back(std::make_unique<ListedFolder>(entry.name, std::move(match.next)));
            pending.push_back({folder.folders.back().get(), location});
        }
        folder.sort();
    }

    GlobPattern::Match matchFolder(const GlobPattern& pattern, const GlobPattern::Positions& positions,
                                   const std::u16string& name, const AbsoluteIRI& location) {
        GlobPattern::Match match = pattern.match(positions, name, EntryShape::folder);
        if (match.next.empty()) return match;
        const bool isLink = provider_.extendedExistence(location) == provider::ExtendedLinkToFolder;
        return isLink ? pattern.match(positions, name, EntryShape::linkToFolder) : match;
    }

    static FileNameWithStatLight describeFolder(const std::u16string& name) {
        FileNameWithStatLight entry;
        entry.name = name;
        entry.isDirectory = true;
        entry.sizeKnown = true;
        return entry;
    }

    storage::Provider& provider_;
};

}  // namespace

std::unique_ptr<ListingStorage> makeProviderListing(storage::Provider& provider) {
    return std::make_unique<ProviderListing>(provider);
}

}  // namespace korvex::runtime::listing
