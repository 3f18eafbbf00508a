// Listing through any storage provider, on the caller's thread.
#pragma once

#include <memory>

#include "runtime/listing/listing_storage.h"

namespace korvex::runtime::listing {

/// `provider` must live as long.
std::unique_ptr<ListingStorage> makeProviderListing(storage::Provider& provider);

}  // namespace korvex::runtime::listing
