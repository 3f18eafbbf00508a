// Steps that transfers between providers share. Below the folder that was named they go by what a listing
// keeps of a folder, where the provider keeps something: a link that comes in the place of a folder is not
// followed then.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

/// What a listing keeps of a folder; null where the provider keeps nothing.
using KeptFolder = std::shared_ptr<const FoundPlace>;

struct WalkedFolder {
    std::vector<ListedEntry> entries;
    /// Of all entries, which have none of their own any more. Null, too, for an empty folder.
    KeptFolder kept;
};

WalkedFolder listForWalk(Provider& provider, const AbsoluteIRI& folder);

/// The item of that name in the folder, and nothing else: what one provider lists as a name must not lead a
/// second one out of the folder, nor to another item. Raises `vfs::Exception` with `invalidLocation`.
AbsoluteIRI itemIn(const AbsoluteIRI& folder, const KeptFolder& kept, const std::u16string& name);

/// Links and devices mean something only to the provider that has them: raises `vfs::Exception` with
/// `unsupportedOperation` for one.
void requireNoLink(Provider& provider, const AbsoluteIRI& location);

bool isLink(ExistenceTypeExtended kind) noexcept;

}  // namespace korvex::runtime::storage
