// Steps that transfers between providers share.
#include "runtime/storage/transfer_steps.h"

#include <utility>

#include "runtime/storage/location.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

WalkedFolder listForWalk(Provider& provider, const AbsoluteIRI& folder) {
    WalkedFolder walked{.entries = provider.list(folder, {}), .kept = nullptr};
    if (!walked.entries.empty()) walked.kept = walked.entries.front().found;
    for (ListedEntry& entry : walked.entries)
        entry.found.reset();
    return walked;
}

AbsoluteIRI itemIn(const AbsoluteIRI& folder, const KeptFolder& kept, const std::u16string& name) {
    AbsoluteIRI item(folder, name);
    const bool isOneName = name != u"." && name != u".." && item.getParent() == folder;
    // Where the name alone counts, it must not end earlier for the system than for us.
    const bool isCutShort = kept && name.find(u'\0') != std::u16string::npos;
    if (!isOneName || isCutShort)
        throw vfs::Exception(vfs::invalidLocation, std::move(item), u"a name that is a path elsewhere");
    return kept ? foundLocation(folder, item.getName(), kept) : item;
}

void requireNoLink(Provider& provider, const AbsoluteIRI& location) {
    switch (provider.extendedExistence(location)) {
        case provider::ExtendedFile:
        case provider::ExtendedFolder:
        case provider::ExtendedNothing: return;
        default:
            throw vfs::Exception(vfs::unsupportedOperation, location,
                                 u"a link or device, taken to another storage");
    }
}

bool isLink(ExistenceTypeExtended kind) noexcept {
    return kind == provider::ExtendedLinkToFile || kind == provider::ExtendedLinkToFolder ||
           kind == provider::ExtendedBrokenLink;
}

}  // namespace korvex::runtime::storage
