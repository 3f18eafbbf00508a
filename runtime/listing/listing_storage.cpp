// How the lister reads a storage.
#include "runtime/listing/listing_storage.h"

#include <typeinfo>

#include "runtime/listing/local_listing.h"
#include "runtime/listing/provider_listing.h"
#include "runtime/storage/providers/local/local_provider.h"

namespace korvex::runtime::listing {

std::unique_ptr<ListingStorage> listingStorageOf(storage::Provider& provider) {
    // Just that class: whoever derives from it, or wraps it, wants to be asked.
    if (typeid(provider) == typeid(storage::LocalProvider)) return makeLocalListing();
    return makeProviderListing(provider);
}

}  // namespace korvex::runtime::listing
