// The removal of a folder with all it holds by single operations of its provider.
#pragma once

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

/// Lists each folder, removes what is in it in the order of names, then the folder itself. Links are removed
/// and not followed.
void removeFolderByItems(Provider& provider, const AbsoluteIRI& folder);

}  // namespace korvex::runtime::storage
