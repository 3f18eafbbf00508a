// Listing of local folders, past the provider: relative to open handles, with several threads, each entry
// read once.
#pragma once

#include <memory>

#include "runtime/listing/listing_storage.h"

namespace korvex::runtime::listing {

std::unique_ptr<ListingStorage> makeLocalListing();

}  // namespace korvex::runtime::listing
