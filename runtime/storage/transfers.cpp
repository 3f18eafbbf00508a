// Copies and moves between two providers.
#include "runtime/storage/transfers.h"

#include <string>

#include "runtime/storage/location.h"
#include "runtime/storage/transfer_copies.h"
#include "runtime/storage/transfer_removals.h"
#include "runtime/storage/transfer_steps.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr const char16_t* preparing = u"preparing a transfer";

void requireWriting(const ServedLocation& served) {
    if (served.provider.onlyReads()) throw vfs::Exception(vfs::readOnlyProvider, served.location, preparing);
}

/// What goes by its dots could be emptied and not removed.
void requireOwnName(const AbsoluteIRI& location) {
    if (location.getName() == u"." || location.getName() == u"..")
        throw vfs::Exception(vfs::invalidLocation, location, preparing);
}

/// What nobody may take away from its place in the end is not copied in the first place.
void requireLeaving(const ServedLocation& source) {
    if (!source.location.hasParent() || source.provider.existence(source.location) == provider::AsNeither)
        return;
    if (!source.provider.isWritable(source.location.getParent()))
        throw vfs::Exception(vfs::permissionDenied, source.location, preparing);
}

/// By whatever spelling: the copy would find itself on the way.
bool isInOwnSubtree(Provider& provider, const AbsoluteIRI& source, const AbsoluteIRI& destination) {
    AbsoluteIRI existing = destination;
    while (provider.existence(existing) == provider::AsNeither) {
        if (!existing.hasParent()) return false;
        existing = existing.getParent();
    }
    const CanonicalAbsoluteIRI from = provider.canonicalLocation(source);
    const CanonicalAbsoluteIRI to = provider.canonicalLocation(existing);
    return from == to || from.isAncestorOf(to);
}

void transferFolder(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy,
                    CopiedItems* copied) {
    const bool isOneProvider = &source.provider == &destination.provider;
    if (isOneProvider && isInOwnSubtree(source.provider, source.location, destination.location))
        throw vfs::Exception(vfs::invalidLocation, destination.location, preparing);
    copyTree(source, destination, policy, copied);
}

}  // namespace

void copyFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy) {
    requireWriting(destination);
    copyNamedFile(source, destination, policy, SourceFate::stays);
}

void moveFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy) {
    requireWriting(destination);
    requireWriting(source);
    requireNoLink(source.provider, source.location);
    requireLeaving(source);
    const CopiedFile copied = copyNamedFile(source, destination, policy, SourceFate::goes);
    destination.provider.makeDurable(destination.location);
    removeCopiedFile(source, copied);
}

void copyFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy) {
    requireWriting(destination);
    transferFolder(source, destination, policy, nullptr);
}

void moveFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy) {
    requireWriting(destination);
    requireWriting(source);
    requireNoLink(source.provider, source.location);
    requireOwnName(source.location);
    requireLeaving(source);
    const bool isOneProvider = &source.provider == &destination.provider;
    if (isOneProvider && policy != provider::ReplaceWritable)
        refuseMergeOntoItself(source.provider, source.location, destination.location);
    CopiedItems copied;
    transferFolder(source, destination, policy, &copied);
    destination.provider.makeDurable(destination.location);
    removeCopiedTree(source, copied);
}

void refuseMergeOntoItself(Provider& provider, const AbsoluteIRI& source, const AbsoluteIRI& destination) {
    if (provider.existence(destination) != provider::AsFolder) return;
    const CanonicalAbsoluteIRI from = provider.canonicalLocation(source);
    const CanonicalAbsoluteIRI to = provider.canonicalLocation(destination);
    if (!to.isAncestorOf(from)) return;
    const std::u16string& above = to.parts().path;
    const std::u16string way =
        from.parts().path.substr(above.ends_with(u'/') ? above.size() : above.size() + 1);
    if (provider.extendedExistence(AbsoluteIRI(source, way)) == provider::ExtendedFolder)
        throw vfs::Exception(vfs::invalidLocation, AbsoluteIRI(destination, way), preparing);
}

}  // namespace korvex::runtime::storage
